// What the tests of creating, changing and removing users have in common.
#pragma once

#include <crypt.h>

#include <cstring>
#include <functional>

#include "fixture/fixture.h"

namespace test {

struct Changes : Database {
    /// The first statements of an appliance with two shares, a group and nobody but the system's accounts.
    Changes()
    {
        sql("INSERT INTO share(id,name,zfs_name,type) VALUES(1,'media','tank/media','share'),"
            "(2,'docs','tank/docs','share')");
        sql("INSERT INTO `$group`(id,gname,is_privileged) VALUES(500,'staff',0)");
    }

    /// Puts an ordinary local user in.
    void put(int id, const std::string &name, int group = 99, const std::string &passwd = "$1$salt$hash")
    {
        sql("INSERT INTO `$user`(id,uname,passwd,email,home,group_id,shell) VALUES(" + std::to_string(id) + ",'" +
            name + "','" + passwd + "','" + name + "@x.com','/tank/home/" + name + "'," + std::to_string(group) +
            ",'/bin/false')");
    }
    void put_domain_user(int id, const std::string &name)
    {
        sql("INSERT INTO `$user`(id,uname,home,group_id,rid) VALUES(" + std::to_string(id) + ",'" + name +
            "','/home/AD/" + name + "',99,1)");
    }
    /// Time Machine allowances of users who are not in the user table.
    void put_allowances(int count, int enabled = 1)
    {
        for (int i = 0; i < count; i++)
            sql("INSERT INTO `$timemachine_quota` VALUES(" + std::to_string(20000 + i) + "," + std::to_string(enabled) +
                ",5)");
    }
    void directory_mode(bool no_sync = false)
    {
        sql(std::string("UPDATE service_cifs SET security='ads',no_sync_ads=") + (no_sync ? "1" : "0"));
    }

    /// Columns of a user, by name.
    std::string user(const std::string &name, const std::string &columns) const
    {
        const auto found = rows("SELECT " + columns + " FROM `$user` WHERE uname='" + name + "'");
        return found.empty() ? "" : found[0];
    }

    /// Expects that a chain is stored whole or not at all, wherever its bad element stands.
    template <class T>
    void expect_whole_or_nothing(uint32_t code, const std::string &message, const std::function<T(int)> &good,
                                 const std::function<T()> &bad, const std::function<uint32_t(T *)> &call)
    {
        for (int at = 0; at < 3; at++) {
            SCOPED_TRACE("bad element " + std::to_string(at));
            T chain[3] = {};
            for (int i = 0; i < 3; i++) chain[i] = i == at ? bad() : good(i);
            chain[0].next = &chain[1];
            chain[1].next = &chain[2];
            expect_failure(code, message, [&] { return call(chain); });
        }
    }
};

/// A statement that fails, and what is reported then.
struct FailingStatement {
    const char *part;
    const char *message;
};

inline bool verifies(const std::string &password, const std::string &hash)
{
    const char *again = crypt(password.c_str(), hash.c_str());
    return again && hash == again;
}

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
