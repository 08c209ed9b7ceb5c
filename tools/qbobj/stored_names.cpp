#include "stored_names.h"

#include <strings.h>

#include <algorithm>
#include <exception>

#include "database.h"
#include "tables.h"
#include "utf8.h"

namespace qbcli {
namespace {

constexpr const char *kUsers = "SELECT uname FROM `$user` WHERE is_privileged>=0";
constexpr const char *kGroups = "SELECT gname FROM `$group` WHERE is_privileged>=0";
constexpr const char *kShares = "SELECT name FROM share";
constexpr const char *kDataSets = "SELECT zfs_name FROM share";
constexpr const char *kVolumeIds = "SELECT id FROM _volume";
constexpr const char *kVolumes = "SELECT lv_name FROM _volume";
constexpr const char *kSnapshots = "SELECT DISTINCT name FROM `$snapshot`";
constexpr const char *kInterfaces = "SELECT name FROM network_if";
constexpr const char *kLunGroups = "SELECT name FROM `$iscsi_lun_group`";
constexpr const char *kInitiators = "SELECT name FROM `$iscsi_initiator`";
constexpr const char *kUpsUnits = "SELECT name FROM _ups_config";
constexpr const char *kJobs = "SELECT name FROM backup";

/// What names stand for. An empty `of` is any type and family; case does not count, for arguments begin with a small
/// letter.
constexpr struct {
    const char *of;
    const char *name;
    const char *statement;
} kNames[] = {
    {"", "UserName", kUsers},
    {"", "OldUserName", kUsers},
    {"", "UnixUserName", kUsers},
    {"", "oldUnixName", kUsers},
    {"", "newUnixName", kUsers},
    {"users", "name", kUsers},
    {"", "GroupName", kGroups},
    {"", "OldGroupName", kGroups},
    {"", "GroupMembership", kGroups},
    {"groups", "name", kGroups},
    {"", "ShareName", kShares},
    {"", "OldShareName", kShares},
    {"", "ParentShareName", kShares},
    {"", "zfsName", kDataSets},
    {"", "parentzfsName", kDataSets},
    {"", "VolumeId", kVolumeIds},
    {"", "HomeVolumeId", kVolumeIds},
    {"", "destVolumeId", kVolumeIds},
    {"", "MigrateToVolumeId", kVolumeIds},
    {"", "VolumeName", kVolumes},
    {"", "SnapshotName", kSnapshots},
    {"", "parentSnapshotName", kSnapshots},
    {"network interfaces", "name", kInterfaces},
    {"NetworkInterface", "Name", kInterfaces},
    {"", "lunGroup", kLunGroups},
    {"LunGroup", "Name", kLunGroups},
    {"", "initiator", kInitiators},
    {"Initiator", "Name", kInitiators},
    {"UpsConfig", "Name", kUpsUnits},
    {"", "JobName", kJobs},
};

std::vector<std::string> read_names(const Database &database, const char *statement, const std::string &beginning)
{
    constexpr size_t kMost = 500;
    std::vector<std::string> names;
    Statement rows(database, statement);
    while (names.size() < kMost && rows.next()) {
        const std::string name = rows.text(0);
        if (!name.empty() && name.starts_with(beginning) && printable(name) == name) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

const char *names_statement(std::string_view of, std::string_view name)
{
    const std::string own(name);
    for (const auto &row : kNames)
        if ((!*row.of || of == row.of) && strcasecmp(row.name, own.c_str()) == 0) return row.statement;
    return nullptr;
}

std::vector<std::string> stored_names(const std::string &path, const char *statement, const std::string &beginning)
{
    if (path.empty()) return {};
    try {
        DatabaseOptions options;
        options.path = path;
        options.read_only = true;
        options.timeout_ms = 0;
        return read_names(Database(options), statement, beginning);
    } catch (const std::exception &) {
        return {};
    }
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
