// A player makes random calls through the operation table. What it asks for is mostly sensible: it looks at what there
// is and names it; sometimes it names what is not there, is taken, or is refused.
#pragma once

#include <deque>
#include <map>
#include <random>

#include "call.h"
#include "json_text.h"
#include "sequences/invariants.h"

namespace test {

using qbcli::Json;

struct Player : Database {
    std::mt19937 random;
    int names = 0;
    std::deque<std::string> last;          // the calls that led here
    std::map<std::string, int> succeeded;  // by operation
    std::map<std::string, int> refused;    // by operation and code

    // ---- dice

    unsigned below(size_t n) { return static_cast<unsigned>(random() % n); }
    bool one_in(unsigned n) { return below(n) == 0; }
    std::string any(const std::vector<std::string> &all) { return all.empty() ? "none" : all[below(all.size())]; }
    /// One value of a query; now and then one that is not there.
    std::string some(const std::string &query) { return one_in(25) ? "none" : any(rows(query)); }
    /// Up to n values of a query, none of them twice.
    std::vector<std::string> several(const std::string &query, size_t n)
    {
        std::vector<std::string> all = rows(query);
        for (size_t i = 0; i < all.size(); i++) std::swap(all[i], all[i + below(all.size() - i)]);
        all.resize(std::min(all.size(), static_cast<size_t>(below(n + 1))));
        return all;
    }

    std::string share_name() { return some("SELECT name FROM share"); }
    std::string share_id() { return some("SELECT id FROM share"); }
    std::string data_set() { return some("SELECT zfs_name FROM share"); }
    std::string volume() { return any({"tank", "pool2", "v3"}); }
    int32_t user_id() { return atoi(any(rows("SELECT id FROM `$user` WHERE is_privileged=0")).c_str()); }
    int32_t group_id() { return atoi(any(rows("SELECT id FROM `$group` WHERE is_privileged=0 AND id<>99")).c_str()); }
    std::string user_name() { return some("SELECT uname FROM `$user` WHERE is_privileged=0"); }
    std::string group_name() { return some("SELECT gname FROM `$group` WHERE is_privileged=0"); }
    std::string new_name(const char *stem, const std::string &taken)
    {
        if (one_in(12)) return taken;
        if (one_in(30)) return any({"homes", "it's", "", "usb_1", std::string(40, 'n'), "ferrydock"});
        return stem + std::to_string(names++);
    }
    std::string new_share_name()
    {
        const std::string taken = share_name();
        return one_in(8) ? "S" + taken.substr(1) : new_name("s", taken);
    }
    std::string access() { return any({"ReadWrite", "ReadOnly", "Disabled"}); }

    // ---- parts of records

    Json quotas()
    {
        Json all = Json::array();
        for (const std::string &name : several("SELECT zfs_name FROM share", 3))
            all.push_back({{"ShareId", name}, {"HardMB", below(3) * 100}});
        return all;
    }
    Json account_quotas(const std::string &query)
    {
        Json all = Json::array();
        for (const std::string &id : several(query, 2))
            all.push_back({{"AccountId", atoi(id.c_str())}, {"HardMB", below(3) * 100}});
        return all;
    }
    void add_lists(Json &block)
    {
        for (const std::string &id : several("SELECT id FROM `$user` WHERE is_privileged=0", 3))
            block["UserAcl"].push_back({{"User", {{"resource_id", atoi(id.c_str())}}}, {"Access", access()}});
        for (const std::string &id : several("SELECT id FROM `$group` WHERE is_privileged=0", 2))
            block["GroupAcl"].push_back({{"Group", {{"resource_id", atoi(id.c_str())}}}, {"Access", access()}});
        add_hosts(block);
    }
    void add_hosts(Json &block)
    {
        for (unsigned i = below(3); i > 0; i--)
            block["HostAcl"].push_back({{"Host", {{"HostName", "10." + std::to_string(i)}}}, {"Access", access()}});
    }
    Json block()
    {
        Json made = {{"DefaultAccess", access()}, {"NotAvailable", below(2)}};
        for (const char *right : {"FileCreateGroupRights", "FileCreateEveryoneRights", "FolderCreateGroupRights",
                                  "FolderCreateEveryoneRights"})
            made[right] = access();
        return made;
    }
    void add_blocks(Json &share)
    {
        if (one_in(2)) {
            add_lists(share["Cifs"] = block());
            if (one_in(2))
                share["Cifs"]["DfolderAcl"] = {{{"Name", "l"}, {"Address", "10.0.0.9"}, {"RemoteShare", "r"}}};
        }
        if (one_in(4)) add_lists(share["Afp"] = block());
        if (one_in(4)) add_lists(share["Ftp"] = block());
        if (one_in(4)) add_hosts(share["Nfs"] = {{"DefaultAccess", access()}});
        if (one_in(4)) add_lists(share["Http"] = {{"DefaultAccess", access()}, {"NotAvailable", below(2)}});
        if (one_in(4)) share["Dlna"] = {{"DefaultAccess", "ReadOnly"}, {"MediaType", "All"}};
        if (one_in(6)) share["Daap"] = Json::object();
        if (one_in(4)) {
            Json &rsync = share["Rsync"] = {{"DefaultAccess", access()}, {"PasswordProtection", "Enabled"}};
            rsync["UserPasswordAcl"] = {{{"UserName", "r" + std::to_string(below(3))}, {"Password", "secret"}}};
            add_hosts(rsync);
        }
        if (one_in(8)) share["Zvol"] = {{"SizeKB", below(1000)}, {"IsSparse", below(2)}};
        if (one_in(6)) share["UsedBy"] = {{{"AppName", "a" + std::to_string(below(3))}}};
    }

    // ---- a call and what has to be said of it

    /// Calls an operation. Codes other than its own, and a failing database, are faults.
    uint32_t call(const char *name, const Json &arguments)
    {
        const QbobjOperation *operation = qbobj_find_operation(name);
        last.push_back(std::string(name) + " " + arguments.dump());
        if (last.size() > 12) last.pop_front();
        if (!operation) return ADD_FAILURE() << "there is no operation " << name, 0u;
        EXPECT_EQ(qbdb_request_begin(qbdb), 0);
        const std::string before = one_in(20) ? content() : "";
        qbcli::StandardInput input;
        qbcli::Arguments given(*operation, input);
        given.take(arguments);
        qbcli::Call made(*operation, given);
        const uint32_t rc = made.invoke(qbdb, db, &err);
        const std::string message = err.message ? err.message : "";
        last.back() += " = " + std::to_string(rc) + " " + message;
        if (rc == 0) succeeded[name]++;
        else refused[std::string(name) + " " + std::to_string(rc)]++;
        if (rc) {
            EXPECT_NE((" " + std::string(operation->codes) + " ").find(" " + std::to_string(rc) + " "),
                      std::string::npos)
                << name << " does not document " << rc;
            EXPECT_TRUE(rc != 5 || may_fail(message)) << message;
            EXPECT_NE(message, "");
            EXPECT_TRUE(before.empty() || content() == before) << "a refused call changed something";
        }
        EXPECT_TRUE(sqlite3_get_autocommit(db));
        return rc;
    }

    /// What the database may refuse, because nobody looks at it before.
    static bool may_fail(const std::string &message)
    {
        for (const char *known :
             {"Failed DB Query for 'INSERT process_on_share'. NOT NULL",       // a process on an unknown data set
              "Failed DB Query for 'INSERT $application_on_share'. NOT NULL",  // an application on an unknown data set
              "Error in 'UPDATE `$snapshot`'.",                                // the end of a migration without a mark
              "Error in 'UPDATE `$application_on_share`'.", "Error in 'UPDATE share'."})
            if (message.starts_with(known)) return true;
        return false;
    }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
