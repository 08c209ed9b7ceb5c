// Checks against the database. Each is a row of a table; one function runs them.
#include <cstdlib>

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

int32_t answer(CallContext *ctx, const Failure &bad, const Rows &rows, const char **found)
{
    if (bad) return kCheckFailed;
    if (rows.count == 0) return kNotFound;
    if (!found) return kFound;
    *found = rows.word(ctx, 0, 0);
    return *found ? kFound : kCheckFailed;  // no memory: not to be taken for an id of 0, which is root's
}

}  // namespace

int32_t check_name(CallContext *ctx, sqlite3 *db, NameCheck check, const char *name, const char **found)
{
    if (found) *found = nullptr;
    if (!name) return kNotFound;
    Rows rows;
    const Failure bad =
        check == NameCheck::share_of_path
            ? select(ctx, db, rows, "SELECT id FROM share WHERE %Q=path OR %Q LIKE path||'/%%'", name, name)
            : select(ctx, db, rows, name_statement(check), name);
    return answer(ctx, bad, rows, found);
}

int32_t check_name_id(CallContext *ctx, sqlite3 *db, NameCheck check, const char *name, int32_t *id)
{
    const char *text = nullptr;
    const int32_t rc = check_name(ctx, db, check, name, &text);
    *id = rc == kFound ? atoi(text) : 0;
    return rc;
}

int32_t check_id(CallContext *ctx, sqlite3 *db, IdCheck check, int32_t id)
{
    Rows rows;
    const Failure bad = check == IdCheck::user ? select(ctx, db, rows, "SELECT id FROM `$user` WHERE id=%d", id)
                                               : select(ctx, db, rows, "SELECT id FROM `$group` WHERE id=%d", id);
    return answer(ctx, bad, rows, nullptr);
}

int32_t check_volume(CallContext *ctx, sqlite3 *db, const char *volume, const char **id)
{
    const int32_t rc = check_name(ctx, db, NameCheck::volume_id, volume, id);
    return rc == kNotFound ? check_name(ctx, db, NameCheck::volume_name, volume, id) : rc;
}

int32_t count_rsync_keys(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t *count)
{
    *count = 0;
    const auto bad = select_int32(
        ctx, db, *count, "SELECT COUNT(*) FROM ssh_public_key WHERE user_id=%d AND serve_for='rsync'", user_id);
    return bad ? kCheckFailed : kFound;
}

int32_t count_timemachine_quotas(CallContext *ctx, sqlite3 *db, int32_t *count)
{
    *count = 0;
    return select_int32(ctx, db, *count, "SELECT COUNT(*) FROM '$timemachine_quota'") ? kCheckFailed : kFound;
}

}  // namespace qb

int32_t qbobj_validate_db_sharename(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id)
{
    ErrorInfo unused{};
    qb::CallContext ctx{qbdb, &unused};
    int32_t found = 0;
    const int32_t rc = qb::check_name_id(&ctx, db, qb::NameCheck::share_name, name, &found);
    if (id && rc == qb::kFound) *id = found;
    return rc;
}
