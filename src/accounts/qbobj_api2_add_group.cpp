// Creating groups.
#include "accounts/accounts.h"
#include "accounts/groups.h"
#include "accounts/lookup.h"
#include "accounts/quotas.h"
#include "accounts/workers.h"
#include "frame/pool.h"

namespace qb {
namespace {

/// Names of removed groups stay taken, so the count looks at every row.
uint32_t check_name_is_free(CallContext *ctx, sqlite3 *db, const char *name)
{
    int32_t count = 0;
    TRY(select_int32(ctx, db, count, "SELECT COUNT(*) FROM `$group` WHERE gname=%Q", name)
            .or_report(ctx, "Failed DB Query for 'group'. %s"));
    if (count > 0) return REPORT(ctx, 803, "Group (%s) already exists.", name);
    return 0;
}

/// The lowest id when it is free, else the first free successor of an id that is taken.
uint32_t allocate_id(CallContext *ctx, sqlite3 *db, int32_t *id)
{
    int32_t free_id = kNoId;
    bool found = false;
    Failure bad =
        find_int32(ctx, db, free_id, found, "SELECT 100 WHERE NOT EXISTS (SELECT * FROM `$group` WHERE id=100)");
    if (!bad && !found)
        bad = select_int32(ctx, db, free_id,
                           "SELECT G1.id+1 FROM `$group` G1 WHERE G1.id>=100-1 AND G1.id<32767 AND NOT EXISTS (SELECT "
                           "* FROM `$group` G2 WHERE G2.id=G1.id+1) LIMIT 1");
    TRY(bad.or_report(ctx, "Failed DB Query for group. %s"));
    if (free_id < kLowestId || free_id > kHighestId) return REPORT(ctx, 5, "No more gid available");
    *id = free_id;
    return 0;
}

uint32_t check_id_is_free(CallContext *ctx, sqlite3 *db, int32_t id)
{
    if (id < kLowestId || id > kHighestId)
        return REPORT(ctx, 8, "GroupId=%d is out of valid range (%d-%d).", id, kLowestId, kHighestId);
    int32_t count = 0;
    TRY(select_int32(ctx, db, count, "SELECT COUNT(*) FROM `$group` WHERE id=%d", id)
            .or_report(ctx, "Failed DB Query for group. %s"));
    if (count > 0) return REPORT(ctx, 804, "GroupId (%d) already exists.", id);
    return 0;
}

uint32_t choose_id(CallContext *ctx, sqlite3 *db, const Group *group, int32_t *id)
{
    if (group->GroupId < 1) return allocate_id(ctx, db, id);
    *id = group->GroupId;
    return check_id_is_free(ctx, db, *id);
}

/// The soft limit, hard limit times warning percentage, is stored undivided: in hundredths of a megabyte.
uint32_t insert_quota(CallContext *ctx, sqlite3 *db, int32_t group_id, const Quota *quota)
{
    const int32_t limit = limit_of(quota);
    return execute(ctx, db,
                   "INSERT INTO group_quota (group_id,share_id,mb_soft,mb_hard) VALUES(%d,(SELECT S.id FROM "
                   "share S WHERE zfs_name=%Q),%d*(SELECT diskquota_warn FROM account_default LIMIT 1),%d)",
                   group_id, quota->ShareId, limit, limit)
        .or_report(ctx, "Failed DB Query for 'INSERT group_quota'. %s");
}

uint32_t add_group(CallContext *ctx, sqlite3 *db, Group *group)
{
    const char *name = group->GroupName;
    if (!is_set(name)) return REPORT(ctx, 8, "GroupName is required for 'add'");
    TRY(check_given_group_name(ctx, name));
    TRY(check_name_is_free(ctx, db, name));
    int32_t id = kNoId;
    TRY(choose_id(ctx, db, group, &id));
    TRY(execute(ctx, db, "INSERT INTO `$group` (id,gname,is_privileged) VALUES(%d,%Q,0)", id, name)
            .or_report(ctx, "Failed DB Query for 'INSERT group'. %s"));
    for (const Quota *quota = group->GroupQuota; quota; quota = quota->next) TRY(insert_quota(ctx, db, id, quota));
    for (const User *member = group->SecondaryMember; member; member = member->next)
        TRY(add_member(ctx, db, id, member));
    group->resource_id = id;
    return 0;
}

}  // namespace

uint32_t x_qbobj_addGroup(CallContext *ctx, sqlite3 *db, Group *group)
{
    for (; group; group = group->next) TRY(add_group(ctx, db, group));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
