// Common ground of the user tests: accounts of every kind, and a directory that answers from a table.
#pragma once

#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <map>

#include "fixture/fixture.h"

namespace test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Records that arrive through the interface, as text for comparisons: null is "(null)".
inline std::string text(const char *value)
{
    return value ? value : "(null)";
}

struct Users : Database {
    UserCollection users{};
    User user{};
    std::map<std::string, int32_t> uids;  // the directory
    std::map<std::string, int32_t> gids;

    Users()
    {
        const qbdb_directory_hooks hooks{this, uid_by_name, gid_by_name, name_by_uid, name_by_gid};
        qbdb_set_directory_hooks(qbdb, &hooks);
    }

    void add_user(int32_t id, const std::string &name, const std::string &group = "99",
                  const std::string &more = "is_privileged=0")
    {
        sql("INSERT INTO `$user` (id,uname,group_id,is_privileged) VALUES(" + std::to_string(id) + ",'" + name + "'," +
            group + ",0); UPDATE `$user` SET " + more + " WHERE id=" + std::to_string(id));
    }

    void directory_mode(bool on = true)
    {
        sql(on ? "UPDATE service_cifs SET security='ads'" : "UPDATE service_cifs SET security='user'");
    }

    /// Lists users, which has to succeed, and returns their names.
    std::vector<std::string> list(AccountQuery *query, int32_t with_password = 0)
    {
        users = {};
        EXPECT_EQ(qbobj_getUserCollection(qbdb, db, &users, query, with_password, &err), 0u) << text(err.message);
        return names();
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const User *each : elements(users.User)) all.push_back(text(each->UserName));
        return all;
    }

    static int32_t find(const std::map<std::string, int32_t> &ids, const char *name)
    {
        const auto found = ids.find(name);
        return found == ids.end() ? -1 : found->second;
    }
    static int name_of(const std::map<std::string, int32_t> &ids, int32_t id, char *name, size_t size)
    {
        for (const auto &[known, its_id] : ids)
            if (its_id == id) return snprintf(name, size, "%s", known.c_str()) < static_cast<int>(size) ? 0 : 1;
        return 1;
    }
    static int32_t uid_by_name(void *self, const char *name) { return find(static_cast<Users *>(self)->uids, name); }
    static int32_t gid_by_name(void *self, const char *name) { return find(static_cast<Users *>(self)->gids, name); }
    static int name_by_uid(void *self, int32_t uid, char *name, size_t size)
    {
        return name_of(static_cast<Users *>(self)->uids, uid, name, size);
    }
    static int name_by_gid(void *self, int32_t gid, char *name, size_t size)
    {
        return name_of(static_cast<Users *>(self)->gids, gid, name, size);
    }
};

/// Writes a file, its folders made where they are missing.
inline void write_file(const std::string &path, const std::string &content)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        mkdir(path.substr(0, slash).c_str(), 0755);
    std::ofstream file(path, std::ios::binary);
    file << content;
    EXPECT_TRUE(file.good()) << path;
}

/// A sparse bundle with bands of a size as its description gives it.
inline void make_bundle(const std::string &path, uint64_t band_size, int bands)
{
    write_file(path + "/Info.plist",
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
               "\t<key>CFBundleInfoDictionaryVersion</key>\n\t<string>6.0</string>\n"
               "\t<key>band-size</key>\n\t<integer>" +
                   std::to_string(band_size) +
                   "</integer>\n\t<key>size</key>\n\t<integer>1</integer>\n</dict>\n</plist>\n");
    mkdir((path + "/bands").c_str(), 0755);
    for (int i = 0; i < bands; i++) write_file(path + "/bands/" + std::to_string(i), "");
}

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
