// Look-ups: POSIX ids, users, keys, the SMB user-name map, a few settings.
#include <apr_strings.h>
#include <grp.h>
#include <pwd.h>

#include <cstring>

#include "directory.h"
#include "handle.h"

const char *const TABLE_SMB_USERNAME_MAP = "smb_username_map";
const char *const TABLE_SMB_USERNAME_MAP_TYPE_UNAME = "uname";

namespace {

constexpr size_t kNameSize = 1024;  // longest name that a directory hook may give, with its end

/// What tells users from groups when a directory is asked.
struct Directory {
    const char *name_of_id;  // statement: stored name of a database id
    int32_t (*id_by_name)(const qbdb_private *internal, const char *name);
    int (*name_by_id)(const qbdb_private *internal, int32_t id, char *name, size_t size);
};

int copy_name(char *name, size_t size, const char *source)
{
    const size_t length = strlen(source);
    if (length >= size) return -1;
    memcpy(name, source, length + 1);
    return 0;
}

const Directory kUsers = {
    "SELECT uname FROM `$user` WHERE id=%d",
    [](const qbdb_private *internal, const char *name) -> int32_t {
        const qbdb_directory_hooks &hooks = internal->directory;
        if (hooks.uid_by_name) return hooks.uid_by_name(hooks.context, name);
        int32_t id = -1;
        qdb::ask_name_service(getpwnam_r, name,
                              [&id](const passwd &entry) { id = static_cast<int32_t>(entry.pw_uid); });
        return id;
    },
    [](const qbdb_private *internal, int32_t uid, char *name, size_t size) -> int {
        const qbdb_directory_hooks &hooks = internal->directory;
        if (hooks.name_by_uid) return hooks.name_by_uid(hooks.context, uid, name, size);
        int rc = -1;
        if (uid < 0) return rc;
        qdb::ask_name_service(getpwuid_r, static_cast<uid_t>(uid),
                              [&](const passwd &entry) { rc = copy_name(name, size, entry.pw_name); });
        return rc;
    },
};

const Directory kGroups = {
    "SELECT gname FROM `$group` WHERE id=%d",
    [](const qbdb_private *internal, const char *name) -> int32_t {
        const qbdb_directory_hooks &hooks = internal->directory;
        if (hooks.gid_by_name) return hooks.gid_by_name(hooks.context, name);
        int32_t id = -1;
        qdb::ask_name_service(getgrnam_r, name, [&id](const group &entry) { id = static_cast<int32_t>(entry.gr_gid); });
        return id;
    },
    [](const qbdb_private *internal, int32_t gid, char *name, size_t size) -> int {
        const qbdb_directory_hooks &hooks = internal->directory;
        if (hooks.name_by_gid) return hooks.name_by_gid(hooks.context, gid, name, size);
        int rc = -1;
        if (gid < 0) return rc;
        qdb::ask_name_service(getgrgid_r, static_cast<gid_t>(gid),
                              [&](const group &entry) { rc = copy_name(name, size, entry.gr_name); });
        return rc;
    },
};

int32_t posix_id_by_name(const Directory &directory, const qbdb_t *qbdb, const char *name, int32_t *out)
{
    const int32_t id = name && *name ? directory.id_by_name(qbdb->internal, name) : -1;
    if (out) *out = id < 0 ? -1 : id;
    return id;
}

int32_t posix_id(const Directory &directory, qbdb_t *qbdb, sqlite3 *db, int32_t id)
{
    if (id >= 0) return id;
    const char *name = nullptr;
    const char *text = nullptr;
    if (qbdb_sql_get_scaler_mprintf(qbdb, db, &text, __FILE__, __LINE__, &name, directory.name_of_id, id)) return -1;
    return posix_id_by_name(directory, qbdb, name, nullptr);
}

int name_by_posix_id(const Directory &directory, const qbdb_t *qbdb, int32_t id, const char **name)
{
    char buffer[kNameSize] = "";
    *name = nullptr;
    if (directory.name_by_id(qbdb->internal, id, buffer, sizeof buffer) != 0) return -1;
    buffer[sizeof buffer - 1] = '\0';
    if (!*buffer) return -1;
    *name = qdb::copy_text(qdb::pool_of(qbdb), buffer);
    return *name ? 0 : -1;
}

}  // namespace

int32_t qbdb_util_get_posix_uid(qbdb_t *qbdb, sqlite3 *db, int32_t id)
{
    return posix_id(kUsers, qbdb, db, id);
}

int32_t qbdb_util_get_posix_gid(qbdb_t *qbdb, sqlite3 *db, int32_t id)
{
    return posix_id(kGroups, qbdb, db, id);
}

int32_t qbdb_util_get_posix_uid_by_name(qbdb_t *qbdb, sqlite3 *, const char *name, int32_t *uid)
{
    return posix_id_by_name(kUsers, qbdb, name, uid);
}

int32_t qbdb_util_get_posix_gid_by_name(qbdb_t *qbdb, sqlite3 *, const char *name, int32_t *gid)
{
    return posix_id_by_name(kGroups, qbdb, name, gid);
}

int qbdb_util_get_domain_uname_by_uid(qbdb_t *qbdb, sqlite3 *, int32_t uid, const char **name)
{
    return name_by_posix_id(kUsers, qbdb, uid, name);
}

int qbdb_util_get_domain_gname_by_gid(qbdb_t *qbdb, sqlite3 *, int32_t gid, const char **name)
{
    return name_by_posix_id(kGroups, qbdb, gid, name);
}

int qbdb_find_user_id(qbdb_t *qbdb, sqlite3 *db, int32_t id)
{
    int32_t found = 0;
    const int rc = qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &found, nullptr,
                                              "SELECT 1 FROM `$user` WHERE id=%d AND is_privileged IS NOT -1", id);
    return rc ? -1 : found;
}

int qbdb_find_ssh_public_key_id(qbdb_t *qbdb, sqlite3 *db, int32_t id)
{
    int32_t found = 0;
    const int rc = qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &found, nullptr,
                                              "SELECT 1 FROM ssh_public_key WHERE id=%d", id);
    return rc ? -1 : found;
}

int qbdb_find_ssh_public_key_user_id_key(qbdb_t *qbdb, sqlite3 *db, int32_t user_id, const char *key)
{
    int32_t found = 0;
    const int rc =
        qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &found, nullptr,
                                   "SELECT 1 FROM ssh_public_key WHERE user_id=%d AND key=%Q LIMIT 1", user_id, key);
    return rc ? -1 : found;
}

int32_t qbdb_get_number_of_ssh_public_key(qbdb_t *qbdb, sqlite3 *db)
{
    int32_t count = 0;
    const int rc = qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &count, nullptr,
                                              "SELECT COUNT(*) FROM ssh_public_key");
    return rc ? -1 : count;
}

int qbdb_delete_ssh_public_key_by_uid(qbdb_t *qbdb, sqlite3 *db, int32_t user_id)
{
    return qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, "DELETE FROM ssh_public_key WHERE user_id=%d",
                                 user_id);
}

int qbdb_valid_smb_username_map_type(const char *type)
{
    return type && strcmp(type, TABLE_SMB_USERNAME_MAP_TYPE_UNAME) == 0;
}

int32_t qbdb_get_no_sync_ads(qbdb_t *qbdb, sqlite3 *db)
{
    int32_t value = 0;
    const int rc = qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &value, nullptr,
                                              "SELECT no_sync_ads FROM service_cifs LIMIT 1");
    return rc ? -1 : value != 0;
}

int qbdb_is_timemachine_path_valid(qbdb_t *qbdb, sqlite3 *db)
{
    int32_t found = 0;
    qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, __FILE__, __LINE__, &found, nullptr,
                               "SELECT 1 FROM account_default A INNER JOIN _volume V ON V.id=A.home_volume_id LIMIT 1");
    return found;
}
// SPDX-License-Identifier: Apache-2.0
