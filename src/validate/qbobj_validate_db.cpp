// Checks against the database. Each is a row of a table; one function runs them.
#include "frame/query.h"
#include "qbobj/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

constexpr Sql<const char *> name_statement(NameCheck check)
{
    switch (check) {
        case NameCheck::domain_user:
            return "SELECT id FROM `$user` WHERE uname=%Q COLLATE BINARY AND (rid IS NOT NULL OR is_privileged=1) "
                   "ORDER BY "
                   "is_privileged DESC";
        case NameCheck::local_user: return "SELECT id FROM `$user` WHERE uname=%Q AND rid IS NULL";
        case NameCheck::share_name: return "SELECT id FROM share WHERE name=%Q";
        case NameCheck::share_of_path: break;  // names its argument twice
        case NameCheck::share_dataset: return "SELECT id FROM share WHERE zfs_name=%Q";
        case NameCheck::share_application:
            return "SELECT app_name FROM '$application_on_share' WHERE zfs_name=%Q limit 1";
        case NameCheck::volume_id: return "SELECT id FROM _volume WHERE id=%Q";
        case NameCheck::volume_name: return "SELECT id FROM _volume WHERE lv_name=%Q";
        case NameCheck::domain_group:
            return "SELECT id FROM `$group` WHERE gname=%Q COLLATE BINARY AND (rid IS NOT NULL OR is_privileged=1) "
                   "ORDER BY "
                   "is_privileged DESC";
        case NameCheck::local_group: return "SELECT id FROM `$group` WHERE gname=%Q AND rid IS NULL";
        case NameCheck::backup_job: return "SELECT id FROM backup WHERE name=%Q";
        case NameCheck::lun: return "SELECT rowid FROM `$iscsi_lun` WHERE name=%Q";
        case NameCheck::lun_group: return "SELECT rowid FROM `$iscsi_lun_group` WHERE name=%Q";
        case NameCheck::initiator: return "SELECT rowid FROM `$iscsi_initiator` WHERE name=%Q";
        case NameCheck::alias: return "SELECT unix_uname FROM 'smb_username_map' WHERE smb_uname=%Q limit 1";
    }
    return "SELECT NULL WHERE %Q IS NULL";
}

constexpr Sql<const char *, const char *> kShareOfPath = "SELECT id FROM share WHERE %Q=path OR %Q LIKE path||'/%%'";

}  // namespace

Failure find_name(CallContext *ctx, sqlite3 *db, NameCheck what, const char *name, bool &found)
{
    int32_t unused = 0;
    return find_name(ctx, db, what, name, found, unused);
}

Failure find_name(CallContext *ctx, sqlite3 *db, NameCheck what, const char *name, bool &found, int32_t &id)
{
    id = 0;
    found = false;
    if (!name) return {};
    if (what == NameCheck::share_of_path) return find_int32(ctx, db, id, found, kShareOfPath, name, name);
    return find_int32(ctx, db, id, found, name_statement(what), name);
}

Failure find_name(CallContext *ctx, sqlite3 *db, NameCheck what, const char *name, bool &found, const char *&text)
{
    text = nullptr;
    found = false;
    if (!name) return {};
    Rows rows;
    const Failure bad = what == NameCheck::share_of_path ? select(ctx, db, rows, kShareOfPath, name, name)
                                                         : select(ctx, db, rows, name_statement(what), name);
    found = !bad && rows.count > 0;
    if (found) text = rows.word(ctx, 0, 0);
    return bad;
}

Failure find_id(CallContext *ctx, sqlite3 *db, IdCheck what, int32_t id, bool &found)
{
    int32_t unused = 0;
    return what == IdCheck::user ? find_int32(ctx, db, unused, found, "SELECT id FROM `$user` WHERE id=%d", id)
                                 : find_int32(ctx, db, unused, found, "SELECT id FROM `$group` WHERE id=%d", id);
}

Failure find_volume(CallContext *ctx, sqlite3 *db, const char *volume, bool &found)
{
    const Failure bad = find_name(ctx, db, NameCheck::volume_id, volume, found);
    return bad || found ? bad : find_name(ctx, db, NameCheck::volume_name, volume, found);
}

Failure find_volume(CallContext *ctx, sqlite3 *db, const char *volume, bool &found, const char *&id)
{
    const Failure bad = find_name(ctx, db, NameCheck::volume_id, volume, found, id);
    return bad || found ? bad : find_name(ctx, db, NameCheck::volume_name, volume, found, id);
}

Failure count_rsync_keys(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t &count)
{
    count = 0;
    return select_int32(ctx, db, count, "SELECT COUNT(*) FROM ssh_public_key WHERE user_id=%d AND serve_for='rsync'",
                        user_id);
}

Failure count_timemachine_quotas(CallContext *ctx, sqlite3 *db, int32_t &count)
{
    count = 0;
    return select_int32(ctx, db, count, "SELECT COUNT(*) FROM '$timemachine_quota'");
}

}  // namespace qb

int32_t qbobj_validate_db_sharename(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id)
{
    ErrorInfo unused{};
    qb::CallContext ctx{qbdb, &unused};
    bool found = false;
    int32_t row = 0;
    const qb::Failure bad = qb::find_name(&ctx, db, qb::NameCheck::share_name, name, found, row);
    if (id && found) *id = row;
    return bad ? -1 : !found;
}
// SPDX-License-Identifier: Apache-2.0
