// Calls of the volumes, the disks, the spares and the volumes' jobs.
#pragma once

#include "anomaly/trial.h"

namespace test {

/// The machine has the disk vdb, on port 2: it was plugged in since, into a bay that a pulled disk left; sda was pulled.
inline constexpr char kVolumesPopulation[] = R"sql(
INSERT INTO _volume (id,lv_name,raid_type,blk_total,blk_free,blk_size,volume_health,keyfile) VALUES
    ('v2','Archive','RAID5',1000,500,4096,'ONLINE','');
INSERT INTO _disk_enclosure (controller,name,nr_row,nr_column,disk_horizontal,ses_device) VALUES
    (0,'Front',2,4,1,''),(1,'Shelf',2,4,1,'/dev/sg3');
INSERT INTO jbod_port VALUES(0,'internal'),(1,'A');
INSERT INTO disk_port VALUES(0,0,1,1),(0,1,2,1),(0,40002,3,1),(1,0,1,1);
INSERT INTO `$disk_info` (id,present,model,serial,rpm,sectors,capacity,controller,port,channel,hwif,volume_id,pool_type,
                          pool_state,pool_hostid) VALUES
    ('sda',1,'M','S1',7200,100,51200,0,0,0,'sata','tank','data','0',7),
    ('old',0,'M','S2',7200,100,51200,0,40002,40002,'sata','v2','data','0',7),
    ('sdc',1,'M','S3',7200,100,51200,1,0,0,'sas',NULL,NULL,NULL,NULL);
INSERT INTO _disk_health (disk_id,temp) VALUES('sda',30),('old',31),('sdc',32);
INSERT INTO `$volume_spares` VALUES('sdc');
INSERT INTO volume_schedule VALUES(1,'tank',1,2,'0','3','*','*','0'),(2,'tank',0,1,'0','4','*','*','1');
INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES('media','s','photos');
INSERT INTO process_on_share (share_id,pid,blocking,ts) VALUES(1,77,1,'2026-01-01');
UPDATE service_http SET share_name='photos';
)sql";

inline constexpr Exempt kVolumesLeftOutputs[] = {
    {"getVolumeCollection", "the volumes read so far stay in the list"},
    {"getDiskCollection", "the disks read so far stay in the list"},
    {"getDiskCollectionForController", "the disks read so far stay in the list"},
    {"getDiskEnclosureCollection", "the enclosures read so far stay in the list"},
    {"getDiskDiff", "the differences found so far stay in the list"},
    {"getDiskByDiskDiff", "the name of the disk that is looked for stays"},
    {"getVolumeSparesCollection", "the disks read so far stay in the list"},
    {"getVolumeScheduleCollection", "the jobs read so far stay in the list"},
};

inline constexpr Exempt kVolumesSilent[] = {
    {"deleteVolume", "that no volume can be chosen for the home folders is told by the code alone"},
    {"getDiskDiff", "that inventories cannot be compared is told by the code alone"},
};

inline constexpr Exempt kVolumesGoesOn[] = {
    {"getDiskDiff", "a disk is listed without the names of its place"},
    {"getDiskByDiskDiff", "a look-up that fails ends the search"},
};

inline constexpr MemoryException kVolumesMemoryExceptions[] = {
    {"deleteVolume", 3, "", "told by the code alone"},
    {"getDiskDiff", 3, "", "told by the code alone"},
};

inline constexpr Trial kVolumesTrials[] = {
    {"getVolumeCollection", "", "{}"},
    {"updateVolume", "", R"({"volume":{"VolumeId":"v2","BlockTotal":2000,"BlockFree":10,"BlockSize":4096,
        "VolumeHealth":"DEGRADED","SentResilverEvent":1,"SentScanEnd":1,"KeyFile":"/k","BalanceStatus":1,
        "DisktestStatus":2}})"},
    {"deleteVolume", "with shares and homes", R"({"volumeId":"tank"})"},
    {"deleteVolume", "empty", R"({"volumeId":"v2"})"},
    {"getDiskCollection", "", "{}"},
    {"getDiskCollectionForController", "", R"({"controller":1})"},
    {"getDiskEnclosureCollection", "", "{}"},
    {"getDiskEnclosurePort", "", R"({"controller":1})"},
    {"getDiskByDevname", "", R"({"disk":{"DevName":"sda"}})"},
    {"setDiskSpare", "", R"({"devname":"sda","flag":1})"},
    {"getDiskDiff", "one in, one out", "{}"},
    {"getDiskByDiskDiff", "", R"({"diff":{"Controller":0,"Channel":40002},"disk":{"DevName":"x"}})"},
    {"deleteDiskByDevname", "", R"({"disk":{"DevName":"sda"}})"},

    {"getVolumeSparesCollection", "", "{}"},
    {"addVolumeSpare", "", R"({"diskId":"sda"})"},
    {"deleteVolumeSpare", "", R"({"diskId":"sdc"})"},
    {"addVolumeSchedule", "", R"({"schedule":{"VolumeName":"v2","JobID":3,"Enabled":1,"Action":1,
        "Interval":{"Minute":"0","Hour":"5","DayOfMonth":"*","Month":"*","DayOfWeek":"*"}}})"},
    {"updateVolumeSchedule", "", R"({"schedule":{"JobID":2,"Enabled":1,"Action":3,
        "Interval":{"Minute":"30","Hour":"5","DayOfMonth":"1","Month":"*","DayOfWeek":"*"}}})"},
    {"deleteVolumeSchedule", "one", R"({"schedule":{"JobID":1}})"},
    {"deleteVolumeSchedule", "all of a volume", R"({"schedule":{"JobID":-1,"VolumeName":"tank"}})"},
    {"getVolumeScheduleCollection", "", "{}"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
