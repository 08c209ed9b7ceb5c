// Many processes and threads on one database: nothing is lost, nobody gives up waiting for a lock, and how
// long calls take.
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>
#include <thread>

#include "stress/stress.h"

namespace {

using stress::Clock;
using stress::Directory;
using stress::Handle;
using stress::Random;

int64_t nanoseconds_since(Clock::time_point since)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - since).count();
}

/// How often calls took how long, in steps of a sixteenth of a power of two: an error below 5 %.
struct Latencies {
    static constexpr int kSteps = 16;
    std::atomic<uint32_t> counts[40 * kSteps]{};
    std::atomic<int64_t> worst{0};

    void add(int64_t nanoseconds)
    {
        const int at = static_cast<int>(std::log2(static_cast<double>(std::max<int64_t>(nanoseconds, 1))) * kSteps);
        counts[std::min(at, 40 * kSteps - 1)]++;
        for (int64_t known = worst; known < nanoseconds && !worst.compare_exchange_weak(known, nanoseconds);) {
        }
    }
    uint64_t count() const
    {
        uint64_t all = 0;
        for (const auto &each : counts) all += each;
        return all;
    }
    /// Milliseconds that this share of the calls did not exceed.
    double quantile(double share) const
    {
        const auto wanted = static_cast<uint64_t>(share * static_cast<double>(count()));
        uint64_t seen = 0;
        for (int i = 0; i < 40 * kSteps; i++)
            if ((seen += counts[i]) > wanted) return std::exp2((i + 0.5) / kSteps) / 1e6;
        return static_cast<double>(worst) / 1e6;
    }
};

enum Kind { kLog, kUser, kGroup, kSetting, kShare, kJob, kKinds };

/// What all workers share: counts of what succeeded, and the first failure.
struct Shared {
    std::atomic<bool> stop{false};
    std::atomic<long> done[kKinds]{};
    std::atomic<long> failed{0};
    char failure[512] = "";
    Latencies reads;
    Latencies writes;

    void fail(const char *operation, uint32_t rc, const char *why)
    {
        if (failed++ == 0) snprintf(failure, sizeof failure, "%s: %u %s", operation, rc, why ? why : "(no message)");
    }
};

/// Memory that this process and its children see alike.
struct SharedMemory {
    Shared *shared;
    SharedMemory()
    {
        void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        shared = new (memory) Shared;
    }
    ~SharedMemory() { munmap(shared, sizeof(Shared)); }
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;
};

/// One caller with a handle of its own.
struct Worker {
    Shared &shared;
    Handle handle;
    Random random;
    int id;
    int made = 0;

    Worker(Shared &all, const std::string &path, int number)
        : shared(all), handle(path, QBDB_OPEN_EXISTING), random(static_cast<uint64_t>(number) + 1), id(number)
    {
        if (handle.rc) shared.fail("qbdb_open", static_cast<uint32_t>(handle.rc), handle.why);
    }

    std::string name(const char *kind) { return kind + std::to_string(id) + "x" + std::to_string(++made); }

    template <class Make>
    bool timed(const char *operation, Latencies &latencies, Make make)
    {
        const auto since = Clock::now();
        const uint32_t rc = make();
        latencies.add(nanoseconds_since(since));
        if (rc) shared.fail(operation, rc, handle.err.message);
        return rc == 0;
    }

    void read()
    {
        const bool ok = timed("a read", shared.reads, [&]() -> uint32_t {
            switch (random.below(6)) {
                case 0: {
                    User user{};
                    user.UserId = 100;
                    return qbobj_getUser(handle.qbdb, handle.db, &user, &handle.err);
                }
                case 1: {
                    NetworkInterfaceCollection all{};
                    return qbobj_getNetworkInterfaceCollection(handle.qbdb, handle.db, &all, &handle.err);
                }
                case 2: {
                    AccountDefault defaults{};
                    return qbobj_getAccountDefault(handle.qbdb, handle.db, &defaults, &handle.err);
                }
                case 3: {
                    Share share{};
                    share.ShareName = "first";
                    return qbobj_getShare(handle.qbdb, handle.db, &share, &handle.err);
                }
                case 4: {
                    const char *value = nullptr;
                    return getServiceEntry(handle.qbdb, handle.db, "LANGUAGE", &value, &handle.err);
                }
                default: {
                    int32_t uid = 0;
                    return qbobj_getUID(handle.qbdb, handle.db, "first", &uid, &handle.err);
                }
            }
        });
        (void)ok;
    }

    uint32_t write(Kind kind)
    {
        switch (kind) {
            case kUser: {
                const std::string user_name = name("u");
                User user{};
                user.UserName = user_name.c_str();
                return qbobj_addUser(handle.qbdb, handle.db, &user, &handle.err);
            }
            case kGroup: {
                const std::string group_name = name("g");
                Group group{};
                group.GroupName = group_name.c_str();
                return qbobj_addGroup(handle.qbdb, handle.db, &group, &handle.err);
            }
            case kShare: {
                const std::string share_name = name("s");
                NfsShareOption nfs{};
                nfs.DefaultAccess = "ReadOnly";
                Share share{};
                share.ShareName = share_name.c_str();
                share.VolumeId = "tank";
                share.Nfs = &nfs;
                return qbobj_addShare(handle.qbdb, handle.db, &share, &handle.err);
            }
            case kJob: {
                const std::string job_name = name("j");
                BackupJob_SourceOrDestination from{};
                from.Type = "share";
                from.ShareNameOrProtocol = "media";
                BackupJob_SourceOrDestination to{};
                to.Type = "remote";
                to.ShareNameOrProtocol = "rsync";
                BackupJob_Schedule schedule{};
                BackupJob_Option option{};
                BackupJob job{};
                job.JobName = job_name.c_str();
                job.Source = &from;
                job.Destination = &to;
                job.Schedule = &schedule;
                job.Option = &option;
                return qbobj_addBackupJob(handle.qbdb, handle.db, &job, &handle.err);
            }
            case kSetting:
                return setServiceEntry(handle.qbdb, handle.db, "ANTIVIRUS", random.below(2) ? "1" : "0", &handle.err);
            default:
                return qbobj_addLog(handle.qbdb, handle.db, 0, "info", "disk", "LOGMSG_DISK_ADDED", "<a>1</a>",
                                    &handle.err);
        }
    }

    void write()
    {
        const uint32_t dice = random.below(100);
        const Kind kind = dice < 8    ? kUser
                          : dice < 12 ? kGroup
                          : dice < 16 ? kShare
                          : dice < 20 ? kJob
                          : dice < 50 ? kSetting
                                      : kLog;
        if (timed("a write", shared.writes, [&] { return write(kind); })) shared.done[kind]++;
    }

    void run()
    {
        while (handle.rc == 0 && !shared.stop) {
            qbdb_request_begin(handle.qbdb);
            if (random.below(100) < 70) read();
            else write();
        }
    }
};

void work_in_threads(Shared &shared, const std::string &path, int first, int threads)
{
    std::vector<std::thread> all;
    for (int i = 0; i < threads; i++)
        all.emplace_back([&shared, &path, number = first + i] { Worker(shared, path, number).run(); });
    for (std::thread &each : all) each.join();
}

/// A database with one user, who is there for reading.
std::string prepare(const Directory &directory)
{
    const std::string path = directory.file("busy.db");
    Handle handle(path, QBDB_OPEN_CREATE, "tank");
    EXPECT_EQ(handle.rc, 0) << handle.why;
    User user{};
    user.UserName = "first";
    EXPECT_EQ(qbobj_addUser(handle.qbdb, handle.db, &user, &handle.err), 0u);
    Share share{};
    share.ShareName = "first";
    share.VolumeId = "tank";
    EXPECT_EQ(qbobj_addShare(handle.qbdb, handle.db, &share, &handle.err), 0u);
    return path;
}

void print(const char *what, const Latencies &latencies, double seconds)
{
    printf("%s: %.0f a second; p50 %.3f ms, p99 %.3f ms, worst %.3f ms\n", what,
           static_cast<double>(latencies.count()) / seconds, latencies.quantile(0.5), latencies.quantile(0.99),
           static_cast<double>(latencies.worst) / 1e6);
}

/// Nothing failed, and what every worker counted adds up to what is in the database.
void expect_nothing_lost(const Shared &shared, const std::string &path)
{
    EXPECT_EQ(shared.failed, 0) << shared.failure;
    for (const auto &count : shared.done) EXPECT_GT(count, 0) << "a kind of write was never made";
    const Handle handle(path, QBDB_OPEN_EXISTING);
    ASSERT_EQ(handle.rc, 0) << handle.why;
    EXPECT_EQ(handle.value("PRAGMA integrity_check"), "ok");
    const long users = shared.done[kUser];
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM `$log`"), shared.done[kLog]);
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM `$user` WHERE uname LIKE 'u%x%'"), users);
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM `$home_folder`"), users + 1);
    EXPECT_EQ(handle.number("SELECT next_uid FROM account_default"), 100 + 1 + users);
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM `$group` WHERE gname LIKE 'g%x%'"), shared.done[kGroup]);
    const long shares = shared.done[kShare];
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM share"), shares + 1);
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM nfs_share_option"), shares);
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM zfs_attr"), shares + 1);
    EXPECT_EQ(handle.number("SELECT COUNT(*) FROM backup"), shared.done[kJob]);
}

TEST(Concurrency, ProcessesAndThreadsLoseNoUpdate)
{
    if (stress::kThreadSanitizer) GTEST_SKIP() << "forked processes are no matter for ThreadSanitizer";
    const long processes = stress::amount("QBOBJ_PROCESSES", 8, 8);
    const long threads = stress::amount("QBOBJ_THREADS", 4, 4);
    const long seconds = stress::amount("QBOBJ_SECONDS", 20, 5);
    const Directory directory;
    const std::string path = prepare(directory);
    const SharedMemory memory;
    Shared &shared = *memory.shared;

    const auto since = Clock::now();
    std::vector<pid_t> children;
    for (int i = 0; i < processes; i++) {
        const pid_t child = fork();
        if (child == 0) {
            work_in_threads(shared, path, i * 100, static_cast<int>(threads));
            _exit(0);
        }
        children.push_back(child);
    }
    sleep(static_cast<unsigned>(seconds));
    shared.stop = true;
    for (const pid_t child : children) {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    const double lasted = stress::seconds_since(since);
    printf("%ld processes of %ld threads, %.1f s\n", processes, threads, lasted);
    print("reads ", shared.reads, lasted);
    print("writes", shared.writes, lasted);
    expect_nothing_lost(shared, path);
}

TEST(Concurrency, ThreadsLoseNoUpdate)
{
    const long seconds = stress::amount("QBOBJ_SECONDS", 3, 3);
    const Directory directory;
    const std::string path = prepare(directory);
    Shared shared;
    const auto since = Clock::now();
    std::thread clock([&] {
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        shared.stop = true;
    });
    work_in_threads(shared, path, 0, 4);
    clock.join();
    const double lasted = stress::seconds_since(since);
    printf("4 threads, %.1f s\n", lasted);
    print("reads ", shared.reads, lasted);
    print("writes", shared.writes, lasted);
    expect_nothing_lost(shared, path);
}

/// How long after the holder's commit a waiting caller goes on, in microseconds: ascending, one for each round.
std::vector<double> waits_behind_a_lock(const std::string &path, int held_us)
{
    Handle holder(path, QBDB_OPEN_EXISTING);
    Handle waiter(path, QBDB_OPEN_EXISTING);
    EXPECT_EQ(holder.rc | waiter.rc, 0);
    std::vector<double> delays;
    for (int rounds = std::min(200, 1000000 / held_us); rounds > 0 && !testing::Test::HasFailure(); rounds--) {
        std::atomic<bool> waiting{false};
        Clock::time_point going_on;
        uint32_t rc = 1;
        EXPECT_EQ(qbdb_sql_begin(holder.qbdb, holder.db, 0, __FILE__, __LINE__), 0u);
        std::thread thread([&] {
            waiting = true;
            rc = qbdb_sql_begin(waiter.qbdb, waiter.db, 0, __FILE__, __LINE__);
            going_on = Clock::now();
            qbdb_sql_commit(waiter.qbdb, waiter.db, 0, __FILE__, __LINE__);
        });
        while (!waiting) std::this_thread::yield();
        // A holder works: were it to sleep, the system would wake both with the same timer.
        for (const auto since = Clock::now(); nanoseconds_since(since) < held_us * 1000;) {
        }
        EXPECT_EQ(qbdb_sql_commit(holder.qbdb, holder.db, 0, __FILE__, __LINE__), 0u);
        const auto committed = Clock::now();
        thread.join();
        EXPECT_EQ(rc, 0u);
        delays.push_back(std::max(0.0, std::chrono::duration<double, std::micro>(going_on - committed).count()));
    }
    std::sort(delays.begin(), delays.end());
    return delays;
}

/// With locks of different lengths. A waiter that sleeps too long does so in each round; one that the system is too
/// busy to run, with other programs on its processors, is given more rounds.
TEST(Concurrency, WaiterGoesOnSoonAfterTheCommit)
{
    const Directory directory;
    const std::string path = prepare(directory);
    for (const int held_us : {100, 500, 2000, 10000}) {
        double quartile = 0;
        for (int tries = 0; tries < 10 && (tries == 0 || quartile >= 1000); tries++) {
            const std::vector<double> delays = waits_behind_a_lock(path, held_us);
            ASSERT_FALSE(delays.empty());
            quartile = delays[delays.size() / 4];
            printf(
                "a lock of %5d us: the waiter goes on %4.0f us after the commit (median; a quarter %4.0f us, p90 "
                "%4.0f us)\n",
                held_us, delays[delays.size() / 2], quartile, delays[delays.size() * 9 / 10]);
            if (stress::kSanitizer) break;
        }
        if (!stress::kSanitizer) {
            EXPECT_LT(quartile, 1000) << "of a lock of " << held_us << " us";
        }
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
