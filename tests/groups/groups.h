// Common ground of the group tests: accounts to begin with, records, chains, a directory that knows one group.
#pragma once

#include <cstring>
#include <functional>
#include <initializer_list>
#include <string>

#include "fixture/fixture.h"

namespace test {

inline constexpr uint32_t kNothing = 0xFFFFFFFF;  // -1

inline Group group_of(int32_t resource_id, const char *name = nullptr)
{
    Group group{};
    group.resource_id = resource_id;
    group.GroupName = name;
    return group;
}

inline Group new_group(const char *name, int32_t id = 0)
{
    Group group{};
    group.GroupId = id;
    group.GroupName = name;
    return group;
}

inline User member_of(int32_t resource_id, const char *name = nullptr)
{
    User user{};
    user.resource_id = resource_id;
    user.UserName = name;
    return user;
}

inline Quota quota_of(const char *share, uint64_t hard_mb)
{
    Quota quota{};
    quota.ShareId = share;
    quota.HardMB = hard_mb;
    return quota;
}

/// Links records in the given order; the first is the chain.
template <class T>
T *chain(std::initializer_list<T *> records)
{
    T *next = nullptr;
    for (auto at = records.end(); at != records.begin();) {
        T *record = *--at;
        record->next = next;
        next = record;
    }
    return next;
}

/// A statement that fails, and what the caller then sees.
struct BadStatement {
    const char *part;
    const char *message;
};

struct GroupDatabase : Database {
    /// Users anna (101) and bert (102) in `users`; groups staff (100), guests of a domain "DOM\\sales" (-7, id in the
    /// directory 70007); shares media (1) and music (2).
    GroupDatabase()
    {
        sql("INSERT INTO `$group`(id,gname) VALUES(100,'staff');"
            "INSERT INTO `$group`(id,gname,rid) VALUES(-7,'DOM\\sales',1107);"
            "INSERT INTO `$user`(id,uname,passwd,email,home,group_id) VALUES"
            "(101,'anna','$6$hash','anna@example.org','/home/anna',99),(102,'Bert','',NULL,'/home/bert',99);"
            "INSERT INTO share(id,name,zfs_name) VALUES(1,'media','tank/media'),(2,'music','tank/music');");
        const qbdb_directory_hooks hooks{nullptr, nullptr, gid_by_name, nullptr, name_by_gid};
        qbdb_set_directory_hooks(qbdb, &hooks);
    }

    void switch_to_directory() { sql("UPDATE service_cifs SET security='ads'"); }

    std::vector<std::string> members(int32_t group_id) const
    {
        return rows("SELECT user_id FROM `$group_has_user` WHERE group_id=" + std::to_string(group_id) +
                    " ORDER BY user_id");
    }

    std::vector<std::string> quotas(int32_t group_id) const
    {
        return rows("SELECT share_id,mb_soft,mb_hard FROM group_quota WHERE group_id=" + std::to_string(group_id) +
                    " ORDER BY share_id");
    }

    std::vector<std::string> group_rows() const
    {
        return rows("SELECT id,gname,is_privileged,rid FROM `$group` WHERE id BETWEEN 99 AND 32767 ORDER BY id");
    }

    /// Lets each of the statements fail in turn and expects code 5 with its message.
    void expect_statement_failures(const std::vector<BadStatement> &statements, const std::function<uint32_t()> &call)
    {
        for (const BadStatement &bad : statements) {
            SCOPED_TRACE(bad.part);
            fail_statement(1, SQLITE_IOERR, "injected", bad.part);
            expect_failure(5, bad.message, call);
            fail_statement(0);
        }
    }

    static int32_t gid_by_name(void *, const char *name)
    {
        if (strcmp(name, "DOM\\sales") == 0) return 70007;
        return strcmp(name, "DOM\\unsynchronised") == 0 ? 70008 : -1;
    }

    static int name_by_gid(void *, int32_t gid, char *name, size_t size)
    {
        if (gid != 70008) return 1;
        snprintf(name, size, "DOM\\unsynchronised");
        return 0;
    }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
