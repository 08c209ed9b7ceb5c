// Writing the defaults for new accounts.
#include "accounts/passwords.h"
#include "frame/query.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// A local group, else one of the directory or a system group: whichever has the name.
bool find_group(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    return check_name_id(ctx, db, NameCheck::local_group, name, id) == kFound ||
           check_name_id(ctx, db, NameCheck::domain_group, name, id) == kFound;
}

}  // namespace

uint32_t x_qbobj_setAccountDefault(CallContext *ctx, sqlite3 *db, AccountDefault *def)
{
    QB_ASSERT(def);
    if (check_volume(ctx, db, def->HomeVolumeId) != kFound) return REPORT(ctx, 8, "Invalid HomeVolumeId.");
    if (def->DiskQuotaWarn < 1 || def->DiskQuotaWarn > 99) return REPORT(ctx, 8, "Invalid DiskQuotaWarn. 1-99.");
    // The group is chosen by name; the record's own id is not looked at.
    int32_t group_id = 0;
    if (!find_group(ctx, db, def->GroupMembership, &group_id))
        return REPORT(ctx, 8, "Invalid group name (%s). Not exist.", def->GroupMembership);
    if (auto bad = execute(ctx, db,
                           "UPDATE account_default SET home_volume_id=%Q,diskquota_warn=%d,group_id=%d,"
                           "disallow_password_change=%d,home_folder_capacity_limit=%lu,group_membership=%Q,"
                           "private_time_machine=%d,private_time_machine_space=%d,snapshot_protection=%d",
                           def->HomeVolumeId, def->DiskQuotaWarn, group_id, def->DisallowPasswordChange,
                           def->HomeFolderCapacityLimit, def->GroupMembership, def->PrivateTimeMachine,
                           def->PrivateTimeMachineSpace, def->SnapshotProtection))
        return REPORT(ctx, 5, "Failed update account_default table. (%s)", bad.text);
    return 0;
}

}  // namespace qb
