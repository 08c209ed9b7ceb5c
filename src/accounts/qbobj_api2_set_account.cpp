// Writing the defaults for new accounts.
#include "accounts/workers.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

uint32_t require_volume(CallContext *ctx, sqlite3 *db, const char *volume)
{
    bool found = false;
    TRY(find_volume(ctx, db, volume, found).or_report(ctx, "Failed DB Query for _volume. %s"));
    return found ? 0 : REPORT(ctx, 8, "Invalid HomeVolumeId.");
}

/// Finds the default group by name: a local group first, then a domain or system group.
uint32_t require_default_group(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    bool found = false;
    Failure bad = find_name(ctx, db, NameCheck::local_group, name, found, *id);
    if (!bad && !found) bad = find_name(ctx, db, NameCheck::domain_group, name, found, *id);
    TRY(bad.or_report(ctx, "Failed DB Query for group. %s"));
    return found ? 0 : REPORT(ctx, 8, "Invalid group name (%s). Not exist.", name);
}

}  // namespace

uint32_t x_qbobj_setAccountDefault(CallContext *ctx, sqlite3 *db, AccountDefault *def)
{
    QB_ASSERT(def);
    TRY(require_volume(ctx, db, def->HomeVolumeId));
    if (def->DiskQuotaWarn < 1 || def->DiskQuotaWarn > 99) return REPORT(ctx, 8, "Invalid DiskQuotaWarn. 1-99.");
    // The name decides; the record's GroupId is ignored.
    int32_t group_id = 0;
    TRY(require_default_group(ctx, db, def->GroupMembership, &group_id));
    return execute(ctx, db,
                   "UPDATE account_default SET home_volume_id=%Q,diskquota_warn=%d,group_id=%d,"
                   "disallow_password_change=%d,home_folder_capacity_limit=%lu,group_membership=%Q,"
                   "private_time_machine=%d,private_time_machine_space=%d,snapshot_protection=%d",
                   def->HomeVolumeId, def->DiskQuotaWarn, group_id, def->DisallowPasswordChange,
                   def->HomeFolderCapacityLimit, def->GroupMembership, def->PrivateTimeMachine,
                   def->PrivateTimeMachineSpace, def->SnapshotProtection)
        .or_report(ctx, "Failed update account_default table. (%s)");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
