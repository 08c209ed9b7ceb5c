// When snapshots of a share are taken and how long they are kept, changed.
#include "shares/share_change.h"
#include "storage/snapshots.h"

namespace qb {
namespace {

/// Of several rules each is found by its kind.
uint32_t change_rules(const ShareChange &change, const SnapshotRetentionRules *rule)
{
    for (; rule; rule = rule->next)
        TRY(execute(change.ctx, change.db,
                    "UPDATE snapshot_management SET lifetime=%d,number=%d WHERE share_id=%d AND retention_rule=%d",
                    rule->Lifetime, rule->Number, change.id, rule->Type)
                .or_report(change.ctx, "Failed DB Query for 'UPDATE snapshot_management'. %s\n"));
    return 0;
}

}  // namespace

uint32_t change_snapshot_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, const Schedule &schedule)
{
    TRY(execute(ctx, db,
                "INSERT OR IGNORE INTO snapshot_schedule (share_id,enabled,minute,hour,day_of_month,day_of_week,month,"
                "last_taken,purge_manual_snapshot,last_daily_taken, last_weekly_taken) "
                "VALUES(%d,1,'0','*','*','*','*',0,1,0,0)",
                share_id)
            .or_report(ctx, "Failed DB Query for 'INSERT snapshot_schedule'. %s"));
    ShareSet set;
    Schedule given = schedule;
    given.Month = nullptr;  // a share's is always that of its default
    assign_schedule(&set, given);
    TRY_MEMORY(ctx);
    return execute(ctx, db, "UPDATE snapshot_schedule SET %s WHERE share_id=%d", +set.text, share_id)
        .or_report(ctx, "Failed DB Query for 'UPDATE snapstho_schedule'. %s");
}

/// The policy stands in the row of each retention rule. It is given with a rule or a schedule: its other fields are
/// plain numbers, which a record that is about something else holds, too.
uint32_t change_snapshot_policy(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    const SnapshotRetentionRules *rule = given->SnapshotRetentionRules;
    if (!rule && !given->CustomSnapshotSchedule) return 0;
    const bool several = stored.SnapshotRetentionRules && stored.SnapshotRetentionRules->next;
    ShareSet set;
    set.add("enabled=%d", given->CustomSnapshotManagement);
    if (rule && !several) {
        set.add("retention_rule=%d", rule->Type);
        set.add("lifetime=%d", rule->Lifetime);
        set.add("number=%d", rule->Number);
    }
    if (given->CustomSnapshotSchedule) set.add("schedule=%Q", given->CustomSnapshotSchedule);
    set.add("nonempty_snapshots=%d", given->NonEmptySnapshots);
    set.add("prev_versions=%d", given->PrevVersions);
    TRY_MEMORY(ctx);
    log_dropped(change, set);
    TRY(execute(ctx, db, "UPDATE snapshot_management SET %s WHERE share_id=%d", +set.text, id)
            .or_report(ctx, "Failed DB Query for 'UPDATE snapshot_management'. %s\n"));
    return several ? change_rules(change, rule) : 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
