// Common ground of the tests that change shares: calls made of JSON records, as the command line makes them, on shares
// as the operations leave them.
#pragma once

#include <memory>

#include "call.h"
#include "shares_add/new_share.h"

namespace test {

/// A share that has all nine blocks, with lists and whatever else creating one stores.
inline constexpr char kWholeShare[] = R"({"share":{"ShareName":"media","VolumeId":"tank","Comment":"films",
    "VisibleSnapshot":1,"VisibleSnapFolder":".snap","QuotaMB":1000,"ReserveMB":20,"RefQuotaMB":300,"RefReserveMB":40,
    "Compression":1,"BitRotProtection":0,"Dedup":1,"LogBias":"latency",
    "Stat":{"User":{"resource_id":100},"Group":{"resource_id":110},"UserAccess":"ReadWrite","GroupAccess":"ReadOnly",
        "EveryoneAccess":"Disabled","NonOwnerDelete":1},
    "Cifs":{"DefaultAccess":"ReadOnly","AllowGuestAccess":1,"ShareDisplayOption":1,"EnableDFS":1,
        "FileCreateGroupRights":"ReadWrite","FileCreateEveryoneRights":"ReadOnly",
        "FolderCreateGroupRights":"ReadWrite","FolderCreateEveryoneRights":"Disabled",
        "HostAcl":[{"Host":{"HostId":1},"Access":"ReadWrite"},{"Host":{"HostName":"desk"},"Access":"ReadWrite"}],
        "UserAcl":[{"User":{"resource_id":100},"Access":"ReadWrite"},{"User":{"resource_id":101},"Access":"Disabled"}],
        "GroupAcl":[{"Group":{"resource_id":110},"Access":"Disabled"}],
        "DfolderAcl":[{"Name":"link","Address":"10.0.0.9","RemoteShare":"films"},
            {"Name":"link","Address":"10.0.0.9","RemoteShare":"films"}]},
    "Afp":{"NotAvailable":1,"DefaultAccess":"ReadWrite","AllowGuestAccess":0,"NewFileFolderPermAutoset":1,
        "FileCreateGroupRights":"ReadWrite","FileCreateEveryoneRights":"ReadOnly",
        "FolderCreateGroupRights":"ReadWrite","FolderCreateEveryoneRights":"Disabled",
        "UserAcl":[{"User":{"resource_id":101},"Access":"ReadOnly"}],
        "GroupAcl":[{"Group":{"resource_id":110},"Access":"ReadOnly"}]},
    "Nfs":{"DefaultAccess":"ReadOnly","HostAcl":[{"Host":{"HostId":1},"Access":"Disabled","Root":1},
        {"Host":{"HostId":2},"Access":"ReadWrite"}]},
    "Ftp":{"DefaultAccess":"ReadWrite","NewFileFolderPermAutoset":1,
        "FileCreateGroupRights":"ReadWrite","FileCreateEveryoneRights":"ReadOnly",
        "FolderCreateGroupRights":"ReadOnly","FolderCreateEveryoneRights":"Disabled",
        "HostAcl":[{"Host":{"HostId":1},"Access":"ReadWrite"},{"Host":{"HostId":2},"Access":"ReadOnly"}],
        "UserAcl":[{"User":{"resource_id":101},"Access":"ReadOnly"}]},
    "Dlna":{"DefaultAccess":"ReadOnly","MediaType":"Photo"},"Daap":{"NotAvailable":1},
    "Rsync":{"DefaultAccess":"ReadOnly","PasswordProtection":"Enabled",
        "HostAcl":[{"Host":{"HostId":1},"Access":"ReadOnly"}],
        "UserPasswordAcl":[{"UserName":"backup","Password":"secret"},{"UserName":"mirror","Password":"hidden"}]},
    "Http":{"DefaultAccess":"ReadOnly","EnableWebDav":1,"UserAcl":[{"User":{"resource_id":100},"Access":"ReadWrite"}],
        "GroupAcl":[{"Group":{"resource_id":111},"Access":"Disabled"}]},
    "Zvol":{"SizeKB":2048,"IsSparse":1},
    "SnapshotSchedule":{"Enabled":1,"Minute":"5","Hour":"4","DayOfMonth":"3","DayOfWeek":"2","Month":"1",
        "LastTaken":11,"PurgeManualSnapshot":1,"LastDailyTaken":13,"LastWeeklyTaken":14},
    "CustomSnapshotManagement":1,"CustomSnapshotSchedule":"0101","NonEmptySnapshots":1,"PrevVersions":1,
    "SnapshotRetentionRules":[{"Type":1,"Number":2,"Lifetime":3},{"Type":2,"Number":5,"Lifetime":6}]}})";

struct ShareChanges : NewShares {
    qbcli::StandardInput input;
    std::unique_ptr<qbcli::Call> last;

    ShareChanges()
    {
        sql("UPDATE _volume SET blk_free=1024*1024");
        sql("UPDATE account_default SET diskquota_warn=80");
    }

    /// Calls an operation with a JSON object of its arguments.
    uint32_t call(const char *operation, const std::string &arguments)
    {
        const QbobjOperation &row = *qbobj_find_operation(operation);
        try {
            qbcli::Arguments given(row, input);
            given.take(qbcli::parse_json(arguments, operation));
            last = std::make_unique<qbcli::Call>(row, given);
        } catch (const std::exception &failure) {
            ADD_FAILURE() << operation << ": " << failure.what();
            return 999;
        }
        return last->invoke(qbdb, db, &err);
    }
    void expect_done(const char *operation, const std::string &arguments)
    {
        EXPECT_EQ(call(operation, arguments), 0u) << text(err.message) << " for " << arguments;
    }

    /// Share 1 has everything, share 2 nothing.
    void add_both()
    {
        expect_done("addShare", kWholeShare);
        expect_done("addShare", R"({"share":{"ShareName":"bare","VolumeId":"tank"}})");
        regenerated.clear();
    }

    /// Changes share 1 to the fields of a JSON object.
    static std::string record(const std::string &fields, int id = 1)
    {
        return R"({"share":{"ShareId":")" + std::to_string(id) + "\"" + (fields.empty() ? "" : ",") + fields + "}}";
    }
    void change(const std::string &fields, int id = 1) { expect_done("modifyShare", record(fields, id)); }
    void refuse(uint32_t code, const std::string &message, const std::string &fields, int id = 1)
    {
        SCOPED_TRACE(fields);
        expect_failure(code, message, [&] { return call("modifyShare", record(fields, id)); });
    }
    /// The record that the last call changed.
    qbcli::Json answer(const std::string &field = "") const
    {
        const qbcli::Json json = last->outcome();
        const qbcli::Json share = json.is_array() ? json[0] : json;
        return field.empty() ? share : share.value(field, qbcli::Json());
    }
    /// The protocols whose Changed is raised.
    std::vector<std::string> changed() const
    {
        std::vector<std::string> all;
        for (const char *block : {"Cifs", "Afp", "Nfs", "Ftp", "Dlna", "Daap", "Rsync", "Http"}) {
            const qbcli::Json read = answer(block);
            if (read.is_object() && read.value("Changed", 0)) all.emplace_back(block);
        }
        return all;
    }
    /// All tables, the rows of each in an order of their own.
    std::map<std::string, std::vector<std::string>> tables() const
    {
        std::map<std::string, std::vector<std::string>> all;
        for (const std::string &table : rows("SELECT name FROM sqlite_schema WHERE type='table'")) {
            all[table] = rows("SELECT * FROM `" + table + "`");
            std::sort(all[table].begin(), all[table].end());
        }
        return all;
    }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
