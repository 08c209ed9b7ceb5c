// Deleting a volume with what lies on it.
#include "frame/query.h"
#include "shares/share_purge.h"
#include "storage/volumes.h"

namespace qb {
namespace {

constexpr uint32_t kNotReassigned = 3;  // told by the code alone
constexpr char kWithoutVolume[] = "run";

/// The home folders go to another volume. What is stored is the volume's name, although ids are compared: callers have
/// come to rely on it.
uint32_t reassign_home_volume(CallContext *ctx, sqlite3 *db)
{
    TRACE(ctx, "Default share is deleted!!!\n");
    const char *name = nullptr;
    if (select_text(ctx, db, name, "SELECT V.lv_name FROM _volume V WHERE V.lv_name<>'media' LIMIT 1")
            .logged(ctx, "Failed to SELECT _volume.\n"))
        return kNotReassigned;
    if (!name) name = kWithoutVolume;
    TRACE(ctx, "Default share is reassign to %s.\n", name);
    if (execute(ctx, db, "UPDATE account_default SET home_volume_id=%Q", name)
            .logged(ctx, "Failed to UPDATE account_default.\n"))
        return kNotReassigned;
    return 0;
}

}  // namespace

uint32_t x_qbobj_deleteVolume(CallContext *ctx, sqlite3 *db, const char *volumeId)
{
    TRY(share_purge_volume(ctx, db, volumeId));
    TRY(execute(ctx, db, "DELETE FROM _volume WHERE id=%Q", volumeId)
            .or_report(ctx, "Failed DB Query for 'DELETE _volume'. %s"));
    // All allowances go, whichever volume they were for.
    TRY(execute(ctx, db, "DELETE FROM '$timemachine_quota'")
            .or_report(ctx, "Failed DB Query for 'DELETE $timemachine_quota'. %s"));
    int32_t homes = 0;
    TRY(select_int32(ctx, db, homes, "SELECT COUNT(*) FROM account_default WHERE home_volume_id=%Q", volumeId)
            .or_report(ctx, "Failed DB Query for 'SELECT account_default'. %s"));
    return homes == 0 ? 0 : reassign_home_volume(ctx, db);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
