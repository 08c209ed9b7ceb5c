// Calls of snapshots, clones, subvolumes and of the health of disks, enclosures and UPS units.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kSnapshotsPopulation[] = R"sql(
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES
    ('tank/media','daily',1,1000),('tank/media','weekly',2,2000),('tank/photos','daily',3,3000);
INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES
    ('films','daily','media'),('slides','daily','photos');
INSERT INTO `$disk_info` (id,controller,channel) VALUES('sda',0,1),('sdb',1,2);
INSERT INTO _disk_health (disk_id,temp,zpool_state) VALUES('sda',40,'ONLINE'),('sdb',41,NULL);
INSERT INTO _disk_enclosure (controller,name,nr_cpu,nr_fan,nr_psu,nr_volt) VALUES(0,'chassis',1,1,0,0),(1,'shelf',0,1,0,0);
INSERT INTO jbod_port (controller,label) VALUES(0,'HEAD'),(1,'JBOD-1');
INSERT INTO enclosure_health_spec (controller,name,devid,min,max,label) VALUES
    (0,'cpu','0',0,85,'CPU'),(0,'fan','1',1000,9000,'Rear fan'),(1,'fan','1',NULL,9000,NULL);
INSERT INTO _enclosure_health (controller,name,devid,value,value_prev1,value_prev2,value_prev3) VALUES
    (0,'cpu','0',40,41,42,43);
INSERT INTO _ups_config (name,host,ups_model) VALUES('ups','localhost','Back-UPS'),('ups2','10.0.0.5',NULL);
INSERT INTO _ups_health (name,host,ups_status,battery_charge) VALUES('ups','localhost','On Battery','80');
)sql";

inline constexpr Exempt kSnapshotsLeftOutputs[] = {
    {"getSnapshotCollection", "the snapshots read so far stay in the list"},
    {"getHfSnapshotCollection", "the snapshots read so far stay in the list"},
    {"getSnapshotClones", "the clones read so far stay in the list"},
    {"getSubvolumeFullCollection", "the subvolumes read so far stay in the list"},
    {"getSubvolumeSnapshotCollection", "the subvolumes read so far stay in the list"},
    {"addSnapshot", "the records before the failing one keep what they were given"},
    {"addHfSnapshot", "the records before the failing one keep what they were given"},
};

inline constexpr const char *kLookUp = "a look-up that fails is told as one that found nothing";

inline constexpr Exempt kSnapshotsOddAnswers[] = {
    {"addSnapshot (two): fails with 8 \"Specified ", kLookUp},
    {"addSnapshot (unknown share): fails with 8 \"Specified ", kLookUp},
    {"deleteSnapshot (all): fails with 8 \"Specified ", kLookUp},
    {"deleteSnapshot (newer than a snapshot): fails with 8 \"Specified ", kLookUp},
    {"deleteSnapshot (newer than a time): fails with 8 \"Specified ", kLookUp},
    {"deleteSnapshot (none): fails with 8 \"Specified ", kLookUp},
    {"deleteSnapshot (of a name): fails with 8 \"Specified ", kLookUp},
    {"deleteSnapshot (of a second): fails with 8 \"Specified ", kLookUp},
    {"setDiskHealth (two): fails with 8 \"Fail '", "a reading that cannot be stored counts as a bad one"},
    {"setEnclosureHealth (two): fails with 8 \"Fail '", "a reading that cannot be stored counts as a bad one"},
    {"setEnclosureHealthForTest (the middle of the limits): fails with 8 \"Fail '",
     "a reading that cannot be stored counts as a bad one"},
    {"setUpsHealth (two): fails with 8 \"Fail '", "a reading that cannot be stored counts as a bad one"},
};

inline constexpr Trial kSnapshotsTrials[] = {
    {"getSnapshotCollection", "all", R"({"type":0,"from":0,"to":0,"descending":0,"limit":0,"offset":0})"},
    {"getSnapshotCollection", "filtered page",
     R"({"shareName":"media","volumeName":"tank","type":1,"from":500,"to":2500,
        "sortColumn":"name","descending":1,"limit":2,"offset":0})"},
    {"getSnapshotCollection", "unknown column",
     R"({"type":0,"from":0,"to":0,"sortColumn":"colour","descending":0,"limit":0,"offset":0})", Accounts::local, 5},
    {"getSnapshotCollectionCount", "", R"({"shareName":"media","volumeName":"tank","type":0,"from":0,"to":0})"},
    {"addSnapshot", "two", R"({"snapshot":[{"ShareName":"media","VolumeName":"tank","SnapshotName":"new","Type":1,
        "CreatedOn":4000},{"ShareName":"photos","VolumeName":"tank","SnapshotName":"new","Type":2,"CreatedOn":4000}]})"},
    {"addSnapshot", "unknown share", R"({"snapshot":[{"ShareName":"media","VolumeName":"tank","SnapshotName":"new"},
        {"ShareName":"music","VolumeName":"tank","SnapshotName":"new"}]})",
     Accounts::local, 8},
    {"deleteSnapshot", "newer than a time", R"({"volumeName":"tank","shareName":"media","deleteNewer":1,"time":1500})"},
    {"deleteSnapshot", "newer than a snapshot",
     R"({"volumeName":"tank","shareName":"media","deleteNewer":2,"snapshotName":"daily","time":0})"},
    {"deleteSnapshot", "of a second", R"({"volumeName":"tank","deleteNewer":3,"time":2000})"},
    {"deleteSnapshot", "of a name", R"({"volumeName":"tank","deleteNewer":0,"snapshotName":"daily","time":0})"},
    {"deleteSnapshot", "all", R"({"volumeName":"tank","deleteNewer":0,"time":0})"},
    {"deleteSnapshot", "none", R"({"volumeName":"tank","deleteNewer":1,"time":9000})", Accounts::local, 6},

    {"getHfSnapshotCollection", "all", R"({"type":0,"from":0,"to":0,"descending":0,"limit":0,"offset":0})"},
    {"getHfSnapshotCollection", "filtered page", R"({"userName":"anna","homeDir":"/home/anna","type":1,"from":500,
        "to":2500,"sortColumn":"name","descending":1,"limit":2,"offset":0})"},
    {"getHfSnapshotCollectionCount", "", R"({"userName":"anna","homeDir":"/home/anna","type":0,"from":0,"to":0})"},
    {"addHfSnapshot", "two", R"({"snapshot":[{"UserName":"anna","HomeDir":"/home/anna","SnapshotName":"new","Type":1,
        "CreatedOn":4000},{"UserName":"bob","HomeDir":"/home/bob","SnapshotName":"new","Type":2,"CreatedOn":4000}]})"},
    {"deleteHfSnapshot", "newer than a time", R"({"homeDir":"/home/anna","deleteNewer":1,"time":500})"},
    {"deleteHfSnapshot", "newer than a snapshot",
     R"({"homeDir":"/home/anna","deleteNewer":2,"snapshotName":"daily","time":0})", Accounts::local, 6},
    {"deleteHfSnapshot", "of a second", R"({"homeDir":"/home/anna","deleteNewer":3,"time":1000})"},
    {"deleteHfSnapshot", "of a name", R"({"homeDir":"/home/anna","deleteNewer":0,"snapshotName":"daily","time":0})"},
    {"deleteHfSnapshot", "all", R"({"userName":"anna","homeDir":"/home/anna","deleteNewer":0,"time":0})"},
    {"getHfSnapshotSchedule", "", "{}"},
    {"addHfSnapshotSchedule", "", R"({"schedule":{"Enabled":1,"Minute":"5","Hour":"6","DayOfMonth":"7","DayOfWeek":"1",
        "Month":"2","LastTaken":10,"PurgeManualSnapshot":1,"LastDailyTaken":11,"LastWeeklyTaken":12}})"},
    {"modifyHfSnapshotSchedule", "", R"({"schedule":{"Enabled":0,"Minute":"5","Hour":"6","DayOfMonth":"7",
        "DayOfWeek":"1","Month":"2","LastTaken":10,"PurgeManualSnapshot":1,"LastDailyTaken":11,"LastWeeklyTaken":12}})"},

    {"getSnapshotClones", "of a snapshot", R"({"parentSnapshotName":"daily","parentzfsName":"media"})"},
    {"getSnapshotClones", "all", "{}"},
    {"addSnapshotClone", "", R"({"clonedzfsName":"copy","parentSnapshotName":"weekly","parentzfsName":"media"})"},
    {"deleteSnapshotClone", "", R"({"clonedzfsName":"films"})"},
    {"deleteSnapshotClone", "of nothing", "{}", Accounts::local, 5},

    {"getSubvolumeFullCollection", "", R"({"volumeName":"no volume of this name"})"},
    {"getSubvolumeSnapshotCollection", "", R"({"volumeName":"no volume of this name"})"},
    {"getSubvolumeDataCollection", "", R"({"volumeName":"no volume of this name"})"},

    {"getDiskHealthCollection", "", "{}"},
    {"setDiskHealth", "two", R"({"health":[{"DiskId":"sda","Temp":50,"ZpoolState":"ONLINE"},{"DiskId":"sdc"}]})"},
    {"getEnclosureHealth", "", R"({"health":{"Controller":0}})"},
    {"getEnclosureHealth", "unknown", R"({"health":{"Controller":9}})", Accounts::local, 6},
    {"getEnclosureHealthCollection", "", "{}"},
    {"setEnclosureHealth", "two",
     R"({"health":{"Controller":0,"Health":[{"Name":"cpu","DevId":"0","Value":45},{"Name":"fan","DevId":"1","Value":3}]}})"},
    {"setEnclosureHealthForTest", "the middle of the limits", "{}"},
    {"setEnclosureHealthForTest", "no file", R"({"path":"/no/such/file"})", Accounts::local, 8},
    {"getUpsHealthCollection", "", "{}"},
    {"setUpsHealth", "two",
     R"({"health":[{"UpsName":"ups","ServerHost":"localhost","UpsStatus":"OL"},{"UpsName":"ups2","ServerHost":"10.0.0.5"}]})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
