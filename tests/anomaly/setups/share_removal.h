// Calls that delete, migrate and copy shares.
#pragma once

#include "anomaly/setups/shares.h"

namespace test {

inline constexpr Trial kShareRemovalTrials[] = {
    {"deleteShare", "", R"({"share":{"ShareId":"4","Cifs":{}}})"},
    {"deleteShare", "used", R"({"share":{"ShareId":"3"}})", Accounts::local, 902},
    {"deleteShare", "two, the second unknown", R"({"share":[{"key":"4"},{"ShareId":"99"}]})", Accounts::local, 8},
    {"deleteZvol", "with everything", R"({"zfsName":"tank/films"})"},
    {"deleteZvol", "unknown", R"({"zfsName":"tank/none"})", Accounts::local, 6},
    {"deleteShareOnVolume", "", R"({"volumeId":"tank"})"},
    {"deleteShareProcess", "one", R"({"zfsName":"tank/films","pid":4711})"},
    {"deleteShareProcess", "all", R"({"zfsName":"tank/films","pid":0})"},
    {"deleteShareUsedBy", "", R"({"zfsName":"tank/films","usedby":{"AppName":"surveillance"}})"},
    {"preMigrateShare", "", R"({"zfsName":"tank/films","destVolumeId":"pool2"})"},
    {"preMigrateShare", "to where it is", R"({"zfsName":"tank/films","destVolumeId":"tank"})", Accounts::local, 8},
    {"copyShare", "", R"({"volumeName":"tank","shareName":"films","newShareName":"movies"})"},
    {"copyShare", "taken", R"({"volumeName":"tank","shareName":"films","newShareName":"Block"})", Accounts::local, 800},
};

/// A share on its way to another volume.
inline constexpr char kShareMigrationPopulation[] = R"sql(
INSERT INTO _volume (id,lv_name) VALUES('pool2','pool two');
UPDATE share SET migrate_to_volume_id='pool2' WHERE id=1;
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES('tank/media','a',1,1000),('tank/photos','a',1,1000);
INSERT INTO `$application_on_share` VALUES('tank/media','surveillance','camera 1');
)sql";

inline constexpr Trial kShareMigrationTrials[] = {
    {"preMigrateShare", "", R"({"zfsName":"tank/photos","destVolumeId":"pool2"})", Accounts::local, 815},
    {"postMigrateShare", "done", R"({"zfsName":"tank/media","success":1})"},
    {"postMigrateShare", "failed", R"({"zfsName":"tank/media","success":0})"},
    {"postMigrateShare", "without a mark", R"({"zfsName":"tank/photos","success":1})", Accounts::local, 5},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
