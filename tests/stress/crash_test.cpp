// Kills a process that changes the database, at any moment, and looks at what it left behind.
//
// The writer is a child process. Each of its calls is made from a number; it reports the number through a
// pipe before the call ("about to") and after it ("acknowledged"). The test's own process keeps a second
// database that nobody kills and makes the acknowledged calls on it. After the kill both databases have to
// hold the same, row by row: with or without the one call that was under way, and never with a part of it.
#include <unistd.h>

#include <cstring>

#include "stress/kill.h"

namespace {

using stress::Clock;
using stress::Directory;
using stress::Handle;
using stress::Random;

/// What the calls so far left in a database: a call made from a number depends on it.
struct World {
    std::vector<int32_t> users;
    std::vector<int32_t> groups;
    std::vector<std::string> interfaces;
    std::vector<int32_t> jobs;
    int made = 0;  // names given so far
    int entries = 0;

    std::string name(const char *kind) { return kind + std::to_string(++made); }
};

/// Records of one call, as long as the call.
struct Call {
    Random random;
    std::vector<std::string> texts;
    User users[3] = {};
    Group groups[2] = {};
    Quota quotas[3] = {};
    User members[4] = {};
    UserHomeFolderSettings folder{};
    UserTimeMachineQuota allowance{};
    NetworkInterface nif{};
    Share shares[2] = {};
    NfsShareOption nfs{};
    HttpShareOption http{};
    Host host{};
    HostAcl host_acl{};
    SystemUser system_user{};
    UserAcl user_acl{};
    BackupJob jobs[2] = {};
    BackupJob_SourceOrDestination sides[2] = {};
    BackupJob_Schedule schedule{};
    BackupJob_Option option{};

    explicit Call(uint32_t seed) : random(seed) { texts.reserve(16); }
    const char *keep(std::string text)
    {
        texts.push_back(std::move(text));
        return texts.back().c_str();
    }
    template <class T>
    const T &any(const std::vector<T> &all)
    {
        return all[random.below(static_cast<uint32_t>(all.size()))];
    }

    void fill_settings(User *user)
    {
        user->Email = keep("u" + std::to_string(random.below(1000)) + "@example.com");
        user->SysHash = keep("$1$saltsalt$" + std::to_string(random.below(100000)));
        user->ShellAccess = static_cast<int32_t>(random.below(2));
        folder.SizeLimit = random.below(1u << 30);
        folder.SnapshotProtectionEnabled = 1;
        user->HomeFolderSettings = &folder;
        quotas[0].ShareId = "tank/a";
        quotas[0].HardMB = 1 + random.below(1000);
        quotas[0].next = &quotas[1];
        quotas[1].ShareId = "tank/b";
        quotas[1].HardMB = 1 + random.below(1000);
        user->UserQuota = quotas;
    }
    void fill_members(Group *group, const World &world)
    {
        for (size_t i = 0; i < 4 && i < world.users.size(); i++) {
            members[i].UserId = world.users[(world.made + i) % world.users.size()];
            members[i].UserName = "member";
            if (i) members[i - 1].next = &members[i];
            group->SecondaryMember = members;
        }
        quotas[2].ShareId = "tank/a";
        quotas[2].HardMB = 1 + random.below(1000);
        group->GroupQuota = &quotas[2];
    }
    /// Two jobs between the same places.
    void fill_jobs(World *world)
    {
        sides[0].Type = "share";
        sides[0].ShareNameOrProtocol = "a";
        sides[0].Path = keep("/" + std::to_string(random.below(1000)));
        sides[1].Type = "remote";
        sides[1].ShareNameOrProtocol = "cifs";
        schedule.Enabled = 1;
        schedule.DayOfWeek = "Mon";
        option.MiscOption = static_cast<int32_t>(random.below(1000));
        for (BackupJob &job : jobs) {
            job.JobName = keep(world->name("job"));
            job.Source = &sides[0];
            job.Destination = &sides[1];
            job.Schedule = &schedule;
            job.Option = &option;
        }
        jobs[0].next = &jobs[1];
    }
};

uint32_t add_log(Handle &handle, World &world, Call &call)
{
    const auto time = static_cast<int32_t>(1 + call.random.below(1u << 30));
    const uint32_t rc = qbobj_addLog(handle.qbdb, handle.db, time, "info", "disk", "LOGMSG_DISK_ADDED",
                                     call.keep(std::string(call.random.below(3000), 'x')), &handle.err);
    if (rc == 0) world.entries++;
    return rc;
}

uint32_t truncate_log(Handle &handle, World &world, Call &)
{
    world.entries = 0;
    return qbobj_truncateLog(handle.qbdb, handle.db, 10, &handle.err);
}

uint32_t add_users(Handle &handle, World &world, Call &call)
{
    const uint32_t count = 1 + call.random.below(3);
    for (uint32_t i = 0; i < count; i++) {
        call.users[i].UserName = call.keep(world.name("user"));
        if (i) call.users[i - 1].next = &call.users[i];
    }
    call.fill_settings(&call.users[0]);
    if (call.random.below(8) == 0) {
        call.allowance.Enabled = 1;
        call.allowance.CapacityMB = 1000;
        if (atoi(handle.value("SELECT COUNT(*) FROM `$timemachine_quota`").c_str()) < 16)
            call.users[0].TimeMachineQuota = &call.allowance;
    }
    const uint32_t rc = qbobj_addUser(handle.qbdb, handle.db, call.users, &handle.err);
    for (uint32_t i = 0; rc == 0 && i < count; i++) world.users.push_back(call.users[i].UserId);
    return rc;
}

uint32_t modify_user(Handle &handle, World &world, Call &call)
{
    if (world.users.empty()) return add_users(handle, world, call);
    User &user = call.users[0];
    user.UserId = call.any(world.users);
    call.fill_settings(&user);
    if (call.random.below(4) == 0) user.UserName = call.keep(world.name("renamed"));
    return qbobj_modifyUser(handle.qbdb, handle.db, &user, &handle.err);
}

uint32_t delete_users(Handle &handle, World &world, Call &call)
{
    if (world.users.size() < 10) return add_users(handle, world, call);
    for (int i = 0; i < 2; i++) {
        const size_t at = call.random.below(static_cast<uint32_t>(world.users.size()));
        call.users[i].UserId = world.users[at];
        world.users.erase(world.users.begin() + static_cast<long>(at));
    }
    call.users[0].next = &call.users[1];
    return qbobj_deleteUser(handle.qbdb, handle.db, call.users, &handle.err);
}

uint32_t add_groups(Handle &handle, World &world, Call &call)
{
    for (Group &group : call.groups) group.GroupName = call.keep(world.name("group"));
    call.groups[0].next = &call.groups[1];
    call.fill_members(&call.groups[0], world);
    const uint32_t rc = qbobj_addGroup(handle.qbdb, handle.db, call.groups, &handle.err);
    for (const Group &group : call.groups)
        if (rc == 0) world.groups.push_back(group.resource_id);
    return rc;
}

uint32_t modify_group(Handle &handle, World &world, Call &call)
{
    if (world.groups.empty()) return add_groups(handle, world, call);
    Group &group = call.groups[0];
    group.resource_id = call.any(world.groups);
    group.GroupName = call.keep(world.name("regroup"));
    call.fill_members(&group, world);
    return qbobj_modifyGroup(handle.qbdb, handle.db, &group, &handle.err);
}

uint32_t delete_group(Handle &handle, World &world, Call &call)
{
    if (world.groups.size() < 5) return add_groups(handle, world, call);
    call.groups[0].resource_id = world.groups.back();
    world.groups.pop_back();
    return qbobj_deleteGroup(handle.qbdb, handle.db, call.groups, &handle.err);
}

uint32_t add_interface(Handle &handle, World &world, Call &call)
{
    call.nif.Name = call.keep(world.name("eth"));
    call.nif.Mac = "00:11:22:33:44:55";
    call.nif.Protocol = "dhcp";
    call.nif.IP = call.nif.DNS1 = call.nif.DNS2 = call.nif.Gateway = call.nif.Subnet = "";
    world.interfaces.emplace_back(call.nif.Name);
    return qbobj_addNetworkInterface(handle.qbdb, handle.db, &call.nif, &handle.err);
}

uint32_t modify_interface(Handle &handle, World &world, Call &call)
{
    if (world.interfaces.empty()) return add_interface(handle, world, call);
    call.nif.Name = call.any(world.interfaces).c_str();
    call.nif.IP = call.keep("10.0.0." + std::to_string(1 + call.random.below(200)));
    return qbobj_modifyNetworkInterface(handle.qbdb, handle.db, &call.nif, &handle.err);
}

uint32_t delete_interface(Handle &handle, World &world, Call &call)
{
    if (world.interfaces.size() < 4) return add_interface(handle, world, call);
    const char *name = call.keep(world.interfaces.back());
    world.interfaces.pop_back();
    return qbobj_deleteNetworkInterface(handle.qbdb, handle.db, name, &handle.err);
}

/// A chain of two, of which the first has lists on two protocols.
uint32_t add_shares(Handle &handle, World &world, Call &call)
{
    for (Share &share : call.shares) {
        share.ShareName = call.keep(world.name("share"));
        share.VolumeId = "tank";
    }
    call.shares[0].next = &call.shares[1];
    call.host.HostName = call.keep("host" + std::to_string(call.random.below(1000)));
    call.host_acl.Host = &call.host;
    call.host_acl.Access = "ReadOnly";
    call.nfs.DefaultAccess = "ReadWrite";
    call.nfs.HostAcl = &call.host_acl;
    call.shares[0].Nfs = &call.nfs;
    call.http.DefaultAccess = "Disabled";
    call.system_user.resource_id = world.users.empty() ? 98 : call.any(world.users);
    call.user_acl.User = &call.system_user;
    call.user_acl.Access = "ReadOnly";
    call.http.UserAcl = &call.user_acl;
    call.shares[0].Http = &call.http;
    return qbobj_addShare(handle.qbdb, handle.db, call.shares, &handle.err);
}

uint32_t add_jobs(Handle &handle, World &world, Call &call)
{
    call.fill_jobs(&world);
    const uint32_t rc = qbobj_addBackupJob(handle.qbdb, handle.db, call.jobs, &handle.err);
    for (const BackupJob &job : call.jobs)
        if (rc == 0) world.jobs.push_back(job.JobId);
    return rc;
}

uint32_t modify_jobs(Handle &handle, World &world, Call &call)
{
    if (world.jobs.empty()) return add_jobs(handle, world, call);
    call.fill_jobs(&world);
    for (BackupJob &job : call.jobs) job.JobId = call.any(world.jobs);
    return qbobj_modifyBackupJob(handle.qbdb, handle.db, call.jobs, &handle.err);
}

uint32_t delete_job(Handle &handle, World &world, Call &call)
{
    if (world.jobs.size() < 5) return add_jobs(handle, world, call);
    call.jobs[0].JobId = world.jobs.back();
    world.jobs.pop_back();
    return qbobj_deleteBackupJob(handle.qbdb, handle.db, call.jobs, &handle.err);
}

uint32_t set_button(Handle &handle, World &world, Call &call)
{
    if (world.jobs.empty()) return add_jobs(handle, world, call);
    BackupButtonJob buttons[3] = {};
    for (int i = 0; i < 3; i++) {
        buttons[i].JobId = call.any(world.jobs);
        if (i) buttons[i - 1].next = &buttons[i];
    }
    BackupButtonJobCollection all{nullptr, buttons};
    return qbobj_setBackupButtonJobCollection(handle.qbdb, handle.db, &all, &handle.err);
}

/// Makes the call that a number stands for.
uint32_t make(Handle &handle, World &world, uint32_t seed)
{
    static constexpr decltype(&add_log) kCalls[] = {
        add_log,          add_log,    add_users,    add_users,    modify_user,   modify_user,
        delete_users,     add_groups, modify_group, delete_group, add_interface, modify_interface,
        delete_interface, add_shares, add_jobs,     modify_jobs,  delete_job,    set_button};
    Call call(seed);
    const auto which = call.random.below(sizeof kCalls / sizeof *kCalls);
    qbdb_request_begin(handle.qbdb);
    return world.entries > 100 ? truncate_log(handle, world, call) : kCalls[which](handle, world, call);
}

/// One report of the writer.
struct Report {
    char what;  // 'b' about to, 'a' acknowledged, 'f' failed
    uint32_t seed;
    char why[120];
};

bool send(int pipe, char what, uint32_t seed, const char *why = "")
{
    Report report{};
    report.what = what;
    report.seed = seed;
    std::string(why).copy(report.why, sizeof report.why - 1);
    return stress::send(pipe, report);
}

/// The writer: calls without end.
[[noreturn]] void write_until_killed(const std::string &path, World world, uint32_t seed, int pipe)
{
    Handle handle(path, QBDB_OPEN_EXISTING);
    if (handle.rc) {
        send(pipe, 'f', 0, handle.why);
        _exit(1);
    }
    for (Random seeds(seed);;) {
        const auto number = static_cast<uint32_t>(seeds.next());
        if (!send(pipe, 'b', number)) _exit(0);
        const uint32_t rc = make(handle, world, number);
        if (rc) send(pipe, 'f', number, handle.err.message ? handle.err.message : "no message");
        else send(pipe, 'a', number);
        if (rc) _exit(1);
    }
}

/// Everything in a database, row by row.
std::string content(const Handle &handle)
{
    std::string text;
    sqlite3_stmt *tables = nullptr;
    sqlite3_prepare_v2(handle.db, "SELECT name FROM sqlite_schema WHERE type='table' ORDER BY name", -1, &tables,
                       nullptr);
    while (sqlite3_step(tables) == SQLITE_ROW) {
        const std::string name = reinterpret_cast<const char *>(sqlite3_column_text(tables, 0));
        text += "== " + name + "\n";
        sqlite3_stmt *rows = nullptr;
        sqlite3_prepare_v2(handle.db, ("SELECT * FROM \"" + name + "\" ORDER BY rowid").c_str(), -1, &rows, nullptr);
        while (sqlite3_step(rows) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(rows); i++) {
                const auto *column = reinterpret_cast<const char *>(sqlite3_column_text(rows, i));
                text += column ? column : "NULL";
                text += '|';
            }
            text += '\n';
        }
        sqlite3_finalize(rows);
    }
    sqlite3_finalize(tables);
    return text;
}

/// The first line in which two contents differ.
std::string difference(const std::string &one, const std::string &other)
{
    size_t at = 0;
    while (at < one.size() && at < other.size() && one[at] == other[at]) at++;
    const size_t start = one.rfind('\n', at ? at - 1 : 0);
    const size_t from = start == std::string::npos ? 0 : start + 1;
    return "\n" + one.substr(from, 160) + "\n--- against\n" + other.substr(std::min(from, other.size()), 160);
}

struct Figures {
    long acknowledged = 0;
    long idle = 0;    // killed between two calls, or before the first
    long absent = 0;  // killed in a call that left nothing
    long whole = 0;   // killed in a call that was done but not acknowledged
};

/// A database under fire and its twin in safety.
struct Pair {
    Directory directory;
    World world;
    std::string path = directory.file("fire.db");
    std::unique_ptr<Handle> twin;

    Pair()
    {
        Handle fire(path, QBDB_OPEN_CREATE, "tank");
        twin = std::make_unique<Handle>(directory.file("twin.db"), QBDB_OPEN_CREATE, "tank");
        for (Handle *each : {&fire, twin.get()}) {
            EXPECT_EQ(each->rc, 0) << each->why;
            EXPECT_EQ(each->run("INSERT INTO share (id,name,zfs_name,update_ts) VALUES (1,'a','tank/a',0),"
                                "(2,'b','tank/b',0)"),
                      "");
            // When a share was changed is the one thing that the two cannot have in common.
            EXPECT_EQ(each->run("CREATE TRIGGER timeless AFTER INSERT ON share BEGIN UPDATE share SET update_ts=0 "
                                "WHERE id=NEW.id; END"),
                      "");
        }
    }

    /// Brings the twin up to date with the reports. The call under way, or null.
    const Report *follow(const std::vector<Report> &reports, Figures *figures)
    {
        const Report *under_way = nullptr;
        for (const Report &report : reports) {
            if (report.what == 'f') ADD_FAILURE() << "a call failed: " << report.why;
            under_way = report.what == 'b' ? &report : nullptr;
            if (report.what != 'a') continue;
            figures->acknowledged++;
            EXPECT_EQ(make(*twin, world, report.seed), 0u);
        }
        return under_way;
    }

    void compare(const Report *under_way, Figures *figures)
    {
        Handle fire(path, QBDB_OPEN_EXISTING);
        ASSERT_EQ(fire.rc, 0) << fire.why;
        ASSERT_EQ(fire.value("PRAGMA integrity_check"), "ok");
        const std::string found = content(fire);
        const std::string without = content(*twin);
        if (found == without) {
            (under_way ? figures->absent : figures->idle)++;
            return;
        }
        ASSERT_TRUE(under_way) << "acknowledged calls are not all there: " << difference(found, without);
        EXPECT_EQ(make(*twin, world, under_way->seed), 0u);
        const std::string with = content(*twin);
        ASSERT_EQ(found == with, true) << "neither with nor without the call under way: " << difference(found, with);
        figures->whole++;
    }
};

TEST(Crash, KilledWriterLosesNothingAndLeavesNothingHalf)
{
    constexpr int kKillsOfOneDatabase = 20;
    constexpr int kLongestLifeMicroseconds = 25000;
    const long kills = stress::amount("QBOBJ_KILLS", 500, 60);
    const char *given = getenv("QBOBJ_SEED");
    const auto seed = static_cast<uint32_t>(given ? atol(given) : 1);
    Random random(seed);
    Figures figures;
    const auto since = Clock::now();
    std::unique_ptr<Pair> pair;
    for (long i = 0; i < kills && !HasFailure(); i++) {
        SCOPED_TRACE("kill " + std::to_string(i));
        if (i % kKillsOfOneDatabase == 0) pair = std::make_unique<Pair>();
        const uint32_t writer_seed = static_cast<uint32_t>(random.next());
        const auto reports = stress::kill_after<Report>(
            static_cast<int>(random.below(kLongestLifeMicroseconds)),
            [&](int pipe) { write_until_killed(pair->path, pair->world, writer_seed, pipe); });
        pair->compare(pair->follow(reports, &figures), &figures);
    }
    printf(
        "%ld kills in %.1f s: %ld calls acknowledged, none lost; killed %ld times between calls, %ld times in a call "
        "that left nothing, %ld times in one that was whole\n",
        kills, stress::seconds_since(since), figures.acknowledged, figures.idle, figures.absent, figures.whole);
    EXPECT_EQ(figures.idle + figures.absent + figures.whole, kills);
    EXPECT_GT(figures.acknowledged, kills) << "the writer hardly wrote: the kills prove nothing";
    EXPECT_GE(figures.absent, kills / 20) << "hardly a kill hit a call";
}

TEST(Crash, KilledCreationCanBeRepeated)
{
    const long kills = stress::amount("QBOBJ_KILLS", 500, 60) / 5;
    Random random(2);
    long interrupted = 0;
    for (long i = 0; i < kills && !HasFailure(); i++) {
        const Directory directory;
        const std::string path = directory.file("new.db");
        stress::kill_after<Report>(static_cast<int>(random.below(10000)), [&](int) {
            const Handle handle(path, QBDB_OPEN_CREATE, "tank");
            pause();
            _exit(0);
        });
        bool whole;
        {
            const Handle left(path, QBDB_OPEN_EXISTING);
            whole = left.rc == 0;
        }
        if (!whole) {
            interrupted++;
            const Handle again(path, QBDB_OPEN_CREATE, "tank");
            ASSERT_EQ(again.rc, 0) << again.why;
        }
        const Handle handle(path, QBDB_OPEN_EXISTING);
        ASSERT_EQ(handle.rc, 0) << handle.why;
        EXPECT_EQ(handle.value("PRAGMA integrity_check"), "ok");
        EXPECT_EQ(handle.value("SELECT home_volume_id FROM account_default"), "tank");
    }
    printf("%ld creations killed, %ld of them interrupted and repeated\n", kills, interrupted);
    EXPECT_GE(interrupted, kills / 100) << "no kill hit a creation";
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
