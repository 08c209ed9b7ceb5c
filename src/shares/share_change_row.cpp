// What a share's own row and its data set's attributes hold, changed.
#include "accounts/lookup.h"
#include "frame/pool.h"
#include "shares/share_change.h"

namespace qb {
namespace {

/// Reads how snapshots were shown so far. A folder that is what was read stays as it is stored: none at all is "", too.
uint32_t choose_snapshot_folder(const ShareChange &change, ShareSet *set)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    TRY(select_int32(ctx, db, answer->old_visible,
                     "SELECT CASE WHEN S.visible_snapdir IS NULL THEN 0 ELSE 1 END FROM share S WHERE S.id=%d", id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    const char *folder = given->VisibleSnapFolder;
    if (folder && strcmp(folder, or_empty(stored.VisibleSnapFolder)) != 0) set->add("visible_snapdir=%Q", folder);
    return 0;
}

/// A user goes by the id, else by a name that the appliance or the system knows.
uint32_t choose_user(const ShareChange &change, const SystemUser &user, ShareSet *set)
{
    const auto &[ctx, db, settings, given, answer, share, stored] = change;
    int32_t id = user.resource_id;
    if (id != 0) {
        if (posix_uid_of(ctx, db, id) < 0)
            return REPORT(ctx, 8, "Invalid stat->User (resource_id=%d, UserName=%s).", id, user.UserName);
    } else if (!user.UserName || (!find_user_id(ctx, db, settings.ads, user.UserName, &id) &&
                                  qbdb_util_get_posix_uid_by_name(ctx->qbdb, db, user.UserName, &id) < 0)) {
        return REPORT(ctx, 8, "Unknown User (%s).", user.UserName);
    }
    set->add("user_id=%d", id);
    return 0;
}

uint32_t choose_group(const ShareChange &change, const SystemGroup &group, ShareSet *set)
{
    const auto &[ctx, db, settings, given, answer, share, stored] = change;
    int32_t id = group.resource_id;
    if (id != 0) {
        if (posix_gid_of(ctx, db, id) < 0)
            return REPORT(ctx, 8, "Invalid stat->Group (resource_id=%d, GroupName=%s).", id, group.GroupName);
    } else if (!group.GroupName || (!find_group_id(ctx, db, group.GroupName, &id) &&
                                    qbdb_util_get_posix_gid_by_name(ctx->qbdb, db, group.GroupName, &id) < 0)) {
        return REPORT(ctx, 8, "Unknown Group (%s).", group.GroupName);
    }
    set->add("group_id=%d", id);
    return 0;
}

/// One of the three triplets of a folder's permissions.
struct Triplet {
    const char *FileStat::*word;
    Sql<int32_t> assignment;
    Complaint complaint;
};
constexpr Triplet kTriplets[] = {
    {&FileStat::UserAccess, "user_access=%d", "Invalid Stat->UserAccess (%s)."},
    {&FileStat::GroupAccess, "group_access=%d", "Invalid Stat->GroupAccess (%s)."},
    {&FileStat::EveryoneAccess, "everyone_access=%d", "Invalid Stat->EveryoneAccess (%s)."},
};

uint32_t choose_permissions(const ShareChange &change, const FileStat &stat, ShareSet *set)
{
    for (const Triplet &triplet : kTriplets) {
        int32_t bits = 0;
        if (!(stat.*triplet.word)) continue;
        TRY(choose_folder_bits(change.ctx, stat.*triplet.word, &bits, triplet.complaint));
        set->add(triplet.assignment, bits);
    }
    if (!stat.NonOwnerDelete_void) set->add("non_owner_delete=%d", stat.NonOwnerDelete);
    return 0;
}

/// A quota without snapshots has to leave room for what is there, and to find room on the volume. What lies on other
/// media is not bound to a volume.
uint32_t check_reference_quota(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    const bool given_any = !given->RefQuotaMB_void && given->RefQuotaMB != 0;
    if (!given_any || strncmp(or_empty(stored.Path), "/media/", sizeof "/media/" - 1) == 0) return 0;
    uint64_t free_kb = 0;
    uint64_t used = 0;
    TRY(select_uint64(ctx, db, free_kb,
                      "SELECT V.blk_free FROM share S LEFT JOIN _volume V ON V.id=S.volume_id WHERE S.zfs_name='%q'",
                      stored.ZfsName)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _volume'. %s"));
    TRY(select_uint64(ctx, db, used,
                      "SELECT Z.used FROM _zfs_stat Z LEFT JOIN share S ON Z.share_id=S.id WHERE S.zfs_name='%q'",
                      stored.ZfsName)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _zfs_stat'. %s"));
    const uint64_t used_mb = used >> 20;
    if (given->RefQuotaMB > used_mb && given->RefQuotaMB - used_mb <= free_kb >> 10) return 0;
    return REPORT(
        ctx, 835,
        "Invalid quota value. Need to be larger than Consumed Space and less than the total of Free Space and "
        "Consumed Space.");
}

/// The numbers of a data set, each with its indicator.
template <class T>
struct Attribute {
    int32_t Share::*is_void;
    T Share::*value;
    Sql<T> assignment;
};
constexpr Attribute<uint64_t> kSizes[] = {
    {&Share::QuotaMB_void, &Share::QuotaMB, "mb_quota=%llu"},
    {&Share::ReserveMB_void, &Share::ReserveMB, "mb_reservation=%llu"},
    {&Share::RefQuotaMB_void, &Share::RefQuotaMB, "mb_refquota=%llu"},
    {&Share::RefReserveMB_void, &Share::RefReserveMB, "mb_refreservation=%llu"},
};
constexpr Attribute<int32_t> kFlags[] = {
    {&Share::Compression_void, &Share::Compression, "compression=%d"},
    {&Share::BitRotProtection_void, &Share::BitRotProtection, "bit_rot_protection=%d"},
    {&Share::Dedup_void, &Share::Dedup, "dedup=%d"},
};

}  // namespace

void log_dropped(const ShareChange &change, const ShareSet &set)
{
    if (set.dropped) LOG_FAILURE(change.ctx, "Share %d is too long, not all of it is stored\n", change.id);
}

uint32_t choose_share_folder(const ShareChange &change, ShareSet *set)
{
    const Share *given = change.given;
    if (given->Comment) set->add("comment=%Q", given->Comment);
    TRY(choose_snapshot_folder(change, set));
    const FileStat *stat = given->Stat;
    if (!stat) return 0;
    if (stat->User) TRY(choose_user(change, *stat->User, set));
    if (stat->Group) TRY(choose_group(change, *stat->Group, set));
    return choose_permissions(change, *stat, set);
}

uint32_t change_share_attributes(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    // Where nothing is stored the way to write reads as "standard": that alone is no change.
    const bool sync_given = given->Sync && strcmp(given->Sync, or_empty(stored.Sync)) != 0;
    if (sync_given) TRY(check_sync(ctx, given->Sync));
    TRY(check_reference_quota(change));
    ShareSet set;
    for (const auto &[is_void, value, assignment] : kSizes)
        if (!(given->*is_void)) set.add(assignment, given->*value);
    for (const auto &[is_void, value, assignment] : kFlags)
        if (!(given->*is_void)) set.add(assignment, given->*value);
    if (given->LogBias) set.add("logbias=%Q", given->LogBias);
    if (sync_given) set.add("sync=%Q", given->Sync);
    TRY_MEMORY(ctx);
    log_dropped(change, set);
    if (set.empty()) return 0;
    return execute(ctx, db, "UPDATE zfs_attr SET %s WHERE share_id=%d", +set.text, id)
        .or_report(ctx, "Failed DB Query for 'UPDATE zfs_attr'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
