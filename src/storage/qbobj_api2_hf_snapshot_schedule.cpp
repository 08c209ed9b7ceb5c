// When snapshots of the home folders are taken: one row for all of them.
#include "frame/read_row.h"
#include "storage/snapshots.h"

namespace qb {
namespace {

struct TextPart {
    const char *Schedule::*field;
    Sql<const char *> assignment;
};

constexpr TextPart kTexts[] = {
    {&Schedule::Minute, "minute=%Q"},
    {&Schedule::Hour, "hour=%Q"},
    {&Schedule::DayOfMonth, "day_of_month=%Q"},
    {&Schedule::DayOfWeek, "day_of_week=%Q"},
    {&Schedule::Month, "month=%Q"},
};

struct NumberPart {
    int32_t Schedule::*field;
    Sql<int32_t> assignment;
};

constexpr NumberPart kNumbers[] = {
    {&Schedule::LastTaken, "last_taken=%d"},
    {&Schedule::PurgeManualSnapshot, "purge_manual_snapshot=%d"},
    {&Schedule::LastDailyTaken, "last_daily_taken=%d"},
    {&Schedule::LastWeeklyTaken, "last_weekly_taken=%d"},
};

}  // namespace

void assign_schedule(SetList<512> *set, const Schedule &schedule)
{
    set->add("enabled=%d", schedule.Enabled);
    for (const auto &[field, assignment] : kTexts)
        if (schedule.*field) set->add(assignment, schedule.*field);
    for (const auto &[field, assignment] : kNumbers)
        if (schedule.*field) set->add(assignment, schedule.*field);
}

uint32_t x_qbobj_getHfSnapshotSchedule(CallContext *ctx, sqlite3 *db, Schedule *schedule)
{
    QB_ASSERT(schedule);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT SS.enabled,SS.minute,SS.hour,SS.day_of_month,SS.day_of_week,SS.month,SS.last_taken,"
               "SS.purge_manual_snapshot,SS.last_daily_taken,SS.last_weekly_taken FROM "
               "`$home_folder_snapshot_schedule` SS")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $home_folder_snapshot_schedule'. %s"));
    if (rows.count == 0) return 0;
    Schedule read{};
    read_row(ctx, rows, 0, read.Enabled, empty(read.Minute), empty(read.Hour), empty(read.DayOfMonth),
             empty(read.DayOfWeek), empty(read.Month), read.LastTaken, read.PurgeManualSnapshot, read.LastDailyTaken,
             read.LastWeeklyTaken);
    TRY_MEMORY(ctx);
    *schedule = read;
    return 0;
}

uint32_t x_qbobj_addHfSnapshotSchedule(CallContext *ctx, sqlite3 *db, Schedule *schedule)
{
    QB_ASSERT(schedule);
    const Schedule &s = *schedule;
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO `$home_folder_snapshot_schedule` "
                   "(share_id,enabled,minute,hour,day_of_month,day_of_week,month,last_taken,purge_manual_snapshot,"
                   "last_daily_taken,last_weekly_taken) VALUES(0,%d,%Q,%Q,%Q,%Q,%Q,%d,%d,%d,%d)",
                   s.Enabled, s.Minute, s.Hour, s.DayOfMonth, s.DayOfWeek, s.Month, s.LastTaken, s.PurgeManualSnapshot,
                   s.LastDailyTaken, s.LastWeeklyTaken)
        .or_report(ctx, "Failed INSERT $home_folder_snapshot_schedule. (%s)");
}

uint32_t x_qbobj_modifyHfSnapshotSchedule(CallContext *ctx, sqlite3 *db, Schedule *schedule)
{
    QB_ASSERT(schedule);
    SetList<512> set;
    assign_schedule(&set, *schedule);
    TRY_MEMORY(ctx);
    TRY(execute(ctx, db,
                "INSERT OR IGNORE INTO `$home_folder_snapshot_schedule` "
                "(share_id,enabled,minute,hour,day_of_month,day_of_week,month,last_taken,purge_manual_snapshot,"
                "last_daily_taken, last_weekly_taken) VALUES(0,1,'0','*','*','*','*',0,1,0,0)")
            .or_report(ctx, "Failed DB Query for 'INSERT $home_folder_snapshot_schedule'. %s"));
    return execute(ctx, db, "UPDATE `$home_folder_snapshot_schedule` SET %s", +set.text)
        .or_report(ctx, "Failed DB Query for 'UPDATE $home_folder_snapshot_schedule'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
