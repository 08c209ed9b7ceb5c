// Common ground of the backup tests: jobs to begin with, and what they can read and write.
#pragma once

#include "fixture/fixture.h"

namespace test {

/// A job with its four parts in one place. Not to be copied: the job points to the parts.
struct WholeJob {
    BackupJob job{};
    BackupJob_SourceOrDestination source{};
    BackupJob_SourceOrDestination destination{};
    BackupJob_Schedule schedule{};
    BackupJob_Option option{};

    explicit WholeJob(const char *name = "nightly", int32_t id = 0)
    {
        job.resource_id = id;
        job.JobName = name;
        job.Source = &source;
        job.Destination = &destination;
        job.Schedule = &schedule;
        job.Option = &option;
        from("share", "media", "/films");
        to("remote", "rsync", "backup/films");
        destination.Login = "anna";
        destination.Password = "it's secret";
        destination.Port = 873;
        schedule.Enabled = 1;
        schedule.Frequency = 2;
        schedule.Start = 1;
        schedule.End = 5;
        schedule.DayOfWeek = "Mon,Fri";
        option.FullBackupFrequency = "weekly";
        option.RemovePreviousBackup = 7;
        option.ChownToShareOwner = -1;
        option.RsyncOption = 3;
        option.RsyncExclude = "*.tmp";
        option.EmailThisToAlertEmail = 4;
        option.MiscOption = 5;
        option.WolAddress = "00:11:22:33:44:55";
    }
    WholeJob(const WholeJob &) = delete;
    WholeJob &operator=(const WholeJob &) = delete;

    WholeJob &from(const char *type, const char *name, const char *path = "/")
    {
        source.Type = type;
        source.ShareNameOrProtocol = name;
        source.Path = path;
        return *this;
    }
    WholeJob &to(const char *type, const char *name, const char *path = "/")
    {
        destination.Type = type;
        destination.ShareNameOrProtocol = name;
        destination.Path = path;
        return *this;
    }
};

/// What WholeJob("nightly") is stored as, without its id.
inline constexpr char kNightly[] =
    "nightly|1|share|media|/films|||0|0|remote|rsync|backup/films|anna|it's secret|873|0|2|1|5|34|weekly|1|1|3|*.tmp|"
    "4|5|00:11:22:33:44:55";

struct Backup : Database {
    Backup()
    {
        sql("INSERT INTO share (id,name,zfs_name,type,path,volume_id) VALUES"
            "(1,'media','tank/media','share','/tank/media','tank'),(2,'photos','tank/photos','share','/tank/photos',"
            "'tank'),(3,'stick','media/stick','share','/media/stick','media')");
    }

    uint32_t add(BackupJob *job) { return qbobj_addBackupJob(qbdb, db, job, &err); }
    uint32_t add(WholeJob &job) { return add(&job.job); }
    uint32_t modify(BackupJob *job) { return qbobj_modifyBackupJob(qbdb, db, job, &err); }
    uint32_t modify(WholeJob &job) { return modify(&job.job); }
    uint32_t remove(BackupJob *job) { return qbobj_deleteBackupJob(qbdb, db, job, &err); }
    uint32_t get(BackupJob *job) { return qbobj_getBackupJob(qbdb, db, job, &err); }

    /// A job that is there; its id.
    int32_t given(const char *name)
    {
        WholeJob job(name);
        EXPECT_EQ(add(job), 0u) << err.message;
        return job.job.JobId;
    }
    std::vector<std::string> stored() const
    {
        return rows(
            "SELECT name,enabled,src_type,src_share_proto,src_path,src_login,src_password,src_port,src_eject,dst_type,"
            "dst_share_proto,dst_path,dst_login,dst_password,dst_port,dst_eject,sch_every,sch_start,sch_end,sch_dow,"
            "opt_full_backup_freq,opt_remove_previous_backup,opt_chown_to_share_owner,opt_rsync_options,"
            "opt_rsync_exclude,opt_email_this_to_alert_email,opt_misc_option,wol_addr FROM backup ORDER BY id");
    }
    std::vector<std::string> names() const { return rows("SELECT name FROM backup ORDER BY id"); }
    std::vector<std::string> button() const
    {
        return rows("SELECT `order`,backup_id FROM backup_button_jobs ORDER BY `order`,rowid");
    }
};

/// A source and a destination that do not go together, or do (no message).
struct Sides {
    const char *from[2];
    const char *to[2];
    const char *message;
};

inline constexpr Sides kSides[] = {
    {{"share", "media"}, {"share", "media"}, "Source/Destination cannot be the same share"},
    {{"share", "media"}, {"share", "photos"}, nullptr},
    {{"share", "media"}, {"share", "Media"}, nullptr},
    {{"share", "media"}, {"home", "media"}, nullptr},
    {{"home", "anna"}, {"home", "anna"}, "Source/Destination cannot be the same user's home"},
    {{"home", "*"}, {"home", "anna"}, "Cannot backup all homes to one's home"},
    {{"home", "*"}, {"home", "*"}, "Cannot backup all homes to one's home"},
    {{"home", "anna"}, {"home", "bob"}, nullptr},
    {{"home", "anna"}, {"home", "*"}, nullptr},
    {{"home", "*"}, {"share", "media"}, nullptr},
    {{"volume", "tank"}, {"volume", "tank"}, "Source/Destination cannot be the same volume"},
    {{"volume", "tank"}, {"volume", "pond"}, nullptr},
    {{"volume", "tank"}, {"share", "media"}, nullptr},
    {{"volume", "tank"}, {"share", "unknown"}, nullptr},
    {{"usb", "usb_port_1"}, {"usb", "usb_port_1"}, "Source/Destination cannot be the same usb port"},
    {{"usb", "usb_port_1"}, {"usb", "usb_port_2"}, nullptr},
    {{"usb", "usb_port_1"}, {"share", "usb_port_1"}, nullptr},
    {{"remote", "cifs"}, {"remote", "rsync"}, "Source/Destination cannot be remote"},
    {{"remote", "cifs"}, {"remote", "cifs"}, "Source/Destination cannot be remote"},
    {{"remote", "cifs"}, {"share", "media"}, nullptr},
    {{"", "x"}, {"", "x"}, nullptr},
    {{"Share", "media"}, {"Share", "media"}, nullptr},
    {{"timemachine", "~timemachine~"}, {"share", "media"}, nullptr},
};

/// A part of a job that is missing.
struct Missing {
    const char *message;
    void (*take)(WholeJob &job);
};

inline constexpr Missing kMissing[] = {
    {"Source, Destination, Schedule or Option is NULL", [](WholeJob &each) { each.job.Source = nullptr; }},
    {"Source, Destination, Schedule or Option is NULL", [](WholeJob &each) { each.job.Destination = nullptr; }},
    {"Source, Destination, Schedule or Option is NULL", [](WholeJob &each) { each.job.Schedule = nullptr; }},
    {"Source, Destination, Schedule or Option is NULL", [](WholeJob &each) { each.job.Option = nullptr; }},
    {"Source, Destination, Schedule or Option is NULL",
     [](WholeJob &each) { each.source.ShareNameOrProtocol = nullptr; }},
    {"Source, Destination, Schedule or Option is NULL",
     [](WholeJob &each) { each.destination.ShareNameOrProtocol = nullptr; }},
    {"Source->Type or  Destination->Type is NULL", [](WholeJob &each) { each.source.Type = nullptr; }},
    {"Source->Type or  Destination->Type is NULL", [](WholeJob &each) { each.destination.Type = nullptr; }},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
