// Writing access lists: who may do what over a protocol.
#include "frame/name_set.h"
#include "shares/share_write.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// What an element of a list grants.
struct Flags {
    int32_t read = 0;
    int32_t write = 0;

    /// Whether it grants just what the default access does. Nothing counts as equal to a closed one.
    bool equal(int32_t level) const
    {
        return (level == kLevelReadOnly && read && !write) || (level == kLevelWriteable && read && write);
    }
};

/// A list on its way into the database.
struct Target {
    CallContext *ctx;
    sqlite3 *db;
    int32_t ads;
    int32_t share_id;
    const char *proto;
    int32_t level;
};

// ---- hosts

uint32_t require_known_host(const Target &target, int32_t id, const char *name)
{
    int32_t count = 0;
    CallContext *ctx = target.ctx;
    Failure bad;
    if (name)
        bad = select_int32(ctx, target.db, count, "SELECT COUNT(*) FROM `host` WHERE id=%d AND name=%Q", id, name);
    else bad = select_int32(ctx, target.db, count, "SELECT COUNT(*) FROM `host` WHERE id=%d", id);
    TRY(bad.or_report(ctx, "Failed DB Query for 'SELECT FROM host'. %s"));
    if (count == 1) return 0;
    return REPORT(ctx, 8, "Specified HostId (%d) and/or HostName (%s) conflict with db. ", id, name);
}

/// The id of a host or network; a name that is new gets one.
uint32_t choose_host(const Target &target, const Host *host, int32_t *id)
{
    CallContext *ctx = target.ctx;
    *id = host->HostId ? host->HostId : host->resource_id;
    if (*id) return require_known_host(target, *id, host->HostName);
    char network[network_text_size];
    const char *name = nullptr;
    if (check_host_or_network(host->HostName, network, &name) != 0)
        return REPORT(ctx, 8, "Invalid HostName or Network specified (%s).", host->HostName);
    TRY(execute(ctx, target.db, "INSERT OR IGNORE INTO `host` (name) VALUES(%Q)", name)
            .or_report(ctx, "Failed DB Query for 'INSERT host'. %s"));
    return select_int32(ctx, target.db, *id, "SELECT id FROM `host` WHERE name=%Q", name)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM host'. %s");
}

/// A row of the host list.
struct HostRow {
    Flags flags;
    int32_t root = 0;
    bool stored = true;
};

/// How a protocol stores what an element grants.
struct HostRule {
    const char *proto;
    void (*apply)(const Target &target, const HostAcl &acl, HostRow *row);
};

constexpr HostRule kHostRules[] = {
    // An SMB host list says who gets in at all.
    {"cifs",
     [](const Target &, const HostAcl &, HostRow *row) {
         row->flags = {1, 1};
     }},
    {"afp", [](const Target &, const HostAcl &, HostRow *row) { row->stored = false; }},
    {"nfs",
     [](const Target &target, const HostAcl &acl, HostRow *row) {
         row->root = acl.Root;
         if (acl.Root && !row->flags.read && !row->flags.write)
             row->flags = {target.level != kLevelClosed, target.level == kLevelWriteable};
     }},
    {"ftp",
     [](const Target &target, const HostAcl &, HostRow *row) {
         if (row->flags.equal(target.level)) row->flags = {};
     }},
};

uint32_t write_host(const Target &target, const HostAcl &acl)
{
    CallContext *ctx = target.ctx;
    if (!acl.Host) return REPORT(ctx, 8, "Invalid HostAcl->Host cannot be NULL");
    int32_t id = 0;
    TRY(choose_host(target, acl.Host, &id));
    HostRow row;
    if (map_access_flags(acl.Access, nullptr, &row.flags.read, &row.flags.write) != 0)
        return REPORT(ctx, 8, "Invalid HostAcl->Access (%s).", acl.Access);
    for (const HostRule &rule : kHostRules)
        if (strcmp(rule.proto, target.proto) == 0) rule.apply(target, acl, &row);
    if (!row.stored) return 0;
    return execute(ctx, target.db,
                   "INSERT OR REPLACE INTO `host_acl` (share_id,host_id,proto,read,write,root) "
                   "VALUES(%d,%d,%Q,%d,%d,%d)",
                   target.share_id, id, target.proto, row.flags.read, row.flags.write, row.root)
        .or_report(ctx, "Failed DB Query for 'INSERT host_acl'. %s");
}

// ---- users and groups

/// Whom an element of a list means.
struct Account {
    const char *kind;
    IdCheck check;
    int32_t (*id_by_name)(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id);
    int32_t id;
    const char *name;
};

/// Finds an account by its id or, in directory mode, by its name. Negative ids are the directory's.
uint32_t find_account(const Target &target, const Account &account, bool *found, int32_t *id)
{
    CallContext *ctx = target.ctx;
    *id = account.id;
    *found = account.id < 0;
    if (account.id == 0 && target.ads) *found = account.id_by_name(ctx->qbdb, target.db, account.name, id) >= 0;
    if (account.id < 1) return 0;
    return find_id(ctx, target.db, account.check, account.id, *found)
        .or_report(ctx, "Failed DB Query for 'SELECT %s'. %s", account.kind);
}

uint32_t require_user(const Target &target, const SystemUser *user, int32_t *id)
{
    bool found = false;
    TRY(find_account(target,
                     {"user", IdCheck::user, qbdb_util_get_posix_uid_by_name, user->resource_id, user->UserName},
                     &found, id));
    if (found) return 0;
    return REPORT(target.ctx, 8, "Invalid UserAcl->User (resource_id=%d, UserName=%s).", user->resource_id,
                  user->UserName);
}

uint32_t require_group(const Target &target, const SystemGroup *group, int32_t *id)
{
    bool found = false;
    TRY(find_account(target,
                     {"group", IdCheck::group, qbdb_util_get_posix_gid_by_name, group->resource_id, group->GroupName},
                     &found, id));
    if (found) return 0;
    return REPORT(target.ctx, 8, "Invalid GroupAcl->Group (resource_id=%d, GroupName=%s).", group->resource_id,
                  group->GroupName);
}

/// Whether a user belongs to the administrators or to the cloud, whose rows are always written.
bool is_always_written(const Target &target, int32_t user_id)
{
    int32_t one = 0;
    bool found = false;
    const Failure bad =
        find_int32(target.ctx, target.db, one, found,
                   "SELECT DISTINCT 1 FROM '$user' u, '$group' g WHERE u.group_id = g.id AND (g.gname = 'sky-loft' OR "
                   "g.gname = 'admin') AND u.id = '%d'",
                   user_id);
    if (bad) LOG_FAILURE(target.ctx, "ERROR:%s:%d Failed DB Query error: %s", __FILE_NAME__, __LINE__, bad.text);
    return found;
}

uint32_t write_user(const Target &target, const UserAcl &acl)
{
    CallContext *ctx = target.ctx;
    if (!acl.User) return REPORT(ctx, 8, "Invalid UserAcl->User cannot be NULL");
    int32_t id = 0;
    TRY(require_user(target, acl.User, &id));
    Flags flags;
    if (map_access_flags(acl.Access, nullptr, &flags.read, &flags.write) != 0)
        return REPORT(ctx, 8, "Invalid UserAcl->Access (%s).", acl.Access);
    if (flags.equal(target.level) && !is_always_written(target, id)) return 0;
    return execute(ctx, target.db, "INSERT INTO `user_acl` (share_id,user_id,proto,read,write) VALUES(%d,%d,%Q,%d,%d)",
                   target.share_id, id, target.proto, flags.read, flags.write)
        .or_report(ctx, "Failed DB Query for 'INSERT user_acl'. %s");
}

uint32_t write_group(const Target &target, const GroupAcl &acl)
{
    CallContext *ctx = target.ctx;
    if (!acl.Group) return REPORT(ctx, 8, "Invalid UserAcl->Group cannot be NULL");
    int32_t id = 0;
    TRY(require_group(target, acl.Group, &id));
    Flags flags;
    if (map_access_flags(acl.Access, nullptr, &flags.read, &flags.write) != 0)
        return REPORT(ctx, 8, "Invalid GroupAcl->Access (%s).", acl.Access);
    if (flags.equal(target.level)) return 0;
    return execute(ctx, target.db,
                   "INSERT INTO `group_acl` (share_id,group_id,proto,read,write) VALUES(%d,%d,%Q,%d,%d)",
                   target.share_id, id, target.proto, flags.read, flags.write)
        .or_report(ctx, "Failed DB Query for 'INSERT group_acl'. %s");
}

/// Writes the elements of a list, in order.
template <class Acl>
uint32_t write_elements(Target target, const Acl *head, uint32_t (*write)(const Target &, const Acl &))
{
    TRY(share_default_access_level(target.ctx, target.db, target.share_id, target.proto, &target.level));
    for (; head; head = head->next) TRY(write(target, *head));
    return 0;
}

// ---- rsync users

uint32_t delete_rsync_user(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *user)
{
    return execute(ctx, db, "DELETE FROM `rsync_user_password_acl` WHERE share_id=%d AND user=%Q", share_id, user)
        .or_report(ctx, "Failed DB Query for 'DELETE rsync_user_password_acl'. %s");
}

uint32_t write_rsync_user(CallContext *ctx, sqlite3 *db, int32_t share_id, const UserPasswordAcl &user)
{
    if (!user.UserName) return REPORT(ctx, 8, "Invalid UserPasswordAcl->UserName cannot be NULL");
    if (!user.Password || is_password_mask(user.Password)) return 0;
    TRY(delete_rsync_user(ctx, db, share_id, user.UserName));
    return execute(ctx, db, "INSERT INTO `rsync_user_password_acl` (share_id,user,password) VALUES(%d,%Q,%Q)", share_id,
                   user.UserName, user.Password)
        .or_report(ctx, "Failed DB Query for 'INSERT rsync_user_password_acl'. %s");
}

}  // namespace

uint32_t share_default_access_level(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *proto, int32_t *level)
{
    *level = kLevelClosed;
    return select_int32(ctx, db, *level,
                        "SELECT CASE WHEN O.%s_access='writeable' THEN %d WHEN O.%s_access='readonly' THEN %d ELSE %d "
                        "END FROM %s_share_option O WHERE share_id=%d",
                        proto, kLevelWriteable, proto, kLevelReadOnly, kLevelClosed, proto, share_id)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM %s_share_option'. %s", proto);
}

uint32_t share_write_host_acl(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *proto, const HostAcl *head)
{
    TRY(execute(ctx, db, "DELETE FROM `host_acl` WHERE share_id=%d AND proto=%Q", share_id, proto)
            .or_report(ctx, "Failed DB Query for 'DELETE host_acl'. %s"));
    return write_elements<HostAcl>({ctx, db, 0, share_id, proto, kLevelClosed}, head, write_host);
}

uint32_t share_write_user_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                              const UserAcl *head)
{
    TRY(execute(ctx, db, "DELETE FROM `user_acl` WHERE share_id=%d AND proto=%Q", share_id, proto)
            .or_report(ctx, "Failed DB Query for 'DELETE user_acl'. %s"));
    return write_elements<UserAcl>({ctx, db, ads, share_id, proto, kLevelClosed}, head, write_user);
}

uint32_t share_write_group_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                               const GroupAcl *head)
{
    TRY(execute(ctx, db, "DELETE FROM `group_acl` WHERE share_id=%d AND proto=%Q", share_id, proto)
            .or_report(ctx, "Failed DB Query for 'DELETE group_acl'. %s"));
    return write_elements<GroupAcl>({ctx, db, ads, share_id, proto, kLevelClosed}, head, write_group);
}

uint32_t share_write_dfs_links(CallContext *ctx, sqlite3 *db, int32_t share_id, const DfolderAcl *head)
{
    TRY(execute(ctx, db, "DELETE FROM `cifs_dfs_option` WHERE share_id=%d", share_id)
            .or_report(ctx, "Failed DB Query for 'DELETE cifs_dfs_option'. %s"));
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT S.volume_id,S.name FROM share S WHERE S.id=%d", share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    for (; head && rows.count > 0; head = head->next)
        TRY(execute(ctx, db,
                    "INSERT INTO `cifs_dfs_option` (share_id,volume,share,folder,address,remote_share) "
                    "VALUES(%d,%Q,%Q,%Q,%Q,%Q)",
                    share_id, rows.cell(0, 0), rows.cell(0, 1), head->Name, head->Address, head->RemoteShare)
                .or_report(ctx, "Failed DB Query for 'INSERT cifs_dfs_option'. %s"));
    return 0;
}

uint32_t share_write_rsync_users(CallContext *ctx, sqlite3 *db, int32_t share_id, const UserPasswordAcl *head)
{
    NameSet listed(ctx);
    for (const UserPasswordAcl *user = head; user; user = user->next) {
        TRY(write_rsync_user(ctx, db, share_id, *user));
        listed.add(user->UserName);
        TRY_MEMORY(ctx);
    }
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT U.user FROM rsync_user_password_acl U WHERE share_id=%d", share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM rsync_user_password_acl'. %s"));
    for (int i = 0; i < rows.count; i++)
        if (!listed.contains(rows.cell(i, 0))) TRY(delete_rsync_user(ctx, db, share_id, rows.cell(i, 0)));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
