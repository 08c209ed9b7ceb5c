// How long reading calls take while others write, what a second process adds, and what opening a handle costs. See
// docs/performance.md.
//
//   qbobj_readers [SECONDS]    of each measurement, 5 unless it is given
//
// The database lies where TMPDIR says, in memory unless it is set, so that no disk has a part in the figures.
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "data.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr int kMostThreads = 32;
constexpr size_t kMostCalls = 2'000'000;  // kept of each thread
constexpr auto kLockHeld = milliseconds(250);
constexpr auto kLockFree = milliseconds(50);

/// The calls of one thread, in nanoseconds.
struct Calls {
    size_t reads;
    size_t writes;
    size_t failed;
    uint32_t nanoseconds[kMostCalls];  // of reads
};

/// What all processes see alike.
struct Shared {
    std::atomic<bool> stop;
    std::atomic<int> ready;
    std::atomic<int> locks;  // how often the long writer had it
    Calls threads[kMostThreads];
};

Shared *share_memory()
{
    constexpr int kShared = MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE;
    void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, kShared, -1, 0);
    if (memory == MAP_FAILED) perror("mmap"), exit(1);
    return static_cast<Shared *>(memory);
}

struct Handle {
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    ErrorInfo err{};

    explicit Handle(const std::string &path)
    {
        char why[256] = "";
        if (qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &qbdb, &db, why, sizeof why))
            fprintf(stderr, "%s\n", why), _exit(1);
        qbdb->log_level = 0;
    }
    ~Handle() { qbdb_close(qbdb); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
};

uint32_t read_something(Handle &at, unsigned which)
{
    const int32_t id = bench::kFirstUser + static_cast<int32_t>(which % 1000);
    switch (which % 4) {
        case 0: {
            User user{};
            user.UserId = user.resource_id = id;
            return qbobj_getUser(at.qbdb, at.db, &user, &at.err);
        }
        case 1: {
            AccountDefault defaults{};
            return qbobj_getAccountDefault(at.qbdb, at.db, &defaults, &at.err);
        }
        case 2: {
            const char *value = nullptr;
            return getServiceEntry(at.qbdb, at.db, "LANGUAGE", &value, &at.err);
        }
        default: {
            const char *name = nullptr;
            return qbobj_getUserName(at.qbdb, at.db, id, &name, &at.err);
        }
    }
}

/// Calls without a pause until it is told to stop.
void call(Shared *shared, const std::string &path, int thread, unsigned reads_of_hundred)
{
    Handle at(path);
    Calls &calls = shared->threads[thread];
    unsigned dice = 12345u + static_cast<unsigned>(thread) * 7919u;
    for (unsigned i = 0; i < 4; i++) read_something(at, i);  // statements are prepared now
    shared->ready++;
    while (!shared->stop) {
        dice = dice * 1664525u + 1013904223u;
        qbdb_request_begin(at.qbdb);
        if ((dice >> 16) % 100 >= reads_of_hundred) {
            calls.failed += qbobj_addLog(at.qbdb, at.db, 0, "info", "account", "LOGMSG_LOGIN", "<a/>", &at.err) != 0;
            calls.writes++;
            continue;
        }
        const auto since = Clock::now();
        calls.failed += read_something(at, dice >> 20) != 0;
        const auto took = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - since).count();
        if (calls.reads < kMostCalls)
            calls.nanoseconds[calls.reads] = static_cast<uint32_t>(std::min<int64_t>(took, UINT32_MAX));
        calls.reads++;
    }
}

/// An import of 10,000 users again and again, each a transaction that keeps the lock for a quarter of a second.
void import_without_end(Shared *shared, const std::string &path)
{
    Handle at(path);
    shared->ready++;
    const auto run = [&](const char *sql, auto... values) {
        if (qbdb_sql_exec_mprintf(at.qbdb, at.db, nullptr, __FILE__, __LINE__, sql, values...)) _exit(2);
    };
    while (!shared->stop) {
        if (qbdb_sql_begin(at.qbdb, at.db, 0, __FILE__, __LINE__)) continue;  // others had the lock all the time
        const auto since = Clock::now();
        run("DELETE FROM `$user` WHERE id>=%d", 100000);
        for (int i = 0; i < 10000; i++)
            run("INSERT INTO `$user` (id,uname,group_id,is_privileged) VALUES(%d,'imported'||%d,99,0)", 100000 + i, i);
        std::this_thread::sleep_until(since + kLockHeld);
        if (qbdb_sql_commit(at.qbdb, at.db, 0, __FILE__, __LINE__)) _exit(2);
        shared->locks++;
        std::this_thread::sleep_for(kLockFree);
    }
}

struct Load {
    int processes;
    int threads;  // of each
    unsigned reads_of_hundred;
    bool import;
};

/// Puts the load on a database for a while; the seconds that it lasted.
double run(Shared *shared, const std::string &path, const Load &load, int seconds)
{
    std::vector<pid_t> children;
    for (int process = 0; process < load.processes + load.import; process++) {
        children.push_back(fork());
        if (children.back()) continue;
        if (process == load.processes) import_without_end(shared, path), _exit(0);
        std::vector<std::thread> threads;
        threads.reserve(static_cast<size_t>(load.threads));
        for (int i = 0; i < load.threads; i++)
            threads.emplace_back(call, shared, path, process * load.threads + i, load.reads_of_hundred);
        for (std::thread &each : threads) each.join();
        _exit(0);
    }
    while (shared->ready < load.processes * load.threads + load.import) std::this_thread::sleep_for(milliseconds(1));
    const auto since = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    shared->stop = true;
    const double lasted = std::chrono::duration<double>(Clock::now() - since).count();
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status)) fprintf(stderr, "a process failed\n"), exit(1);
    }
    return lasted;
}

/// Processor time of all processes that have ended, in seconds.
double processor_time()
{
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](const timeval &t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// How many reads were made.
struct Reads {
    double a_second;
    double a_processor_second;  // what other programs leave of the machine has no part in it
};

/// Runs a load and prints what it came to.
Reads measure(const std::string &path, const Load &load, int seconds)
{
    Shared *shared = share_memory();
    const double used_before = processor_time();
    const double lasted = run(shared, path, load, seconds);
    const double used = processor_time() - used_before;
    std::vector<uint32_t> reads;
    size_t read = 0;
    size_t written = 0;
    size_t failed = 0;
    for (const Calls &calls : shared->threads) {
        reads.insert(reads.end(), calls.nanoseconds, calls.nanoseconds + std::min(calls.reads, kMostCalls));
        read += calls.reads;
        written += calls.writes;
        failed += calls.failed;
    }
    std::sort(reads.begin(), reads.end());
    const auto at = [&](double share) {
        return static_cast<double>(reads[static_cast<size_t>(share * static_cast<double>(reads.size() - 1))]) / 1e6;
    };
    const double per_second = static_cast<double>(read) / lasted;
    printf("%d x %d, %u %% reads%s: %.0f reads a second, p50 %.3f ms, p99 %.3f ms, p99.9 %.3f ms, worst %.1f ms; ",
           load.processes, load.threads, load.reads_of_hundred, load.import ? ", an import" : "", per_second, at(0.5),
           at(0.99), at(0.999), at(1));
    printf("%.0f writes a second, %zu calls failed", static_cast<double>(written) / lasted, failed);
    if (load.import) printf(", lock kept %d times", shared->locks.load());
    printf("\n");
    munmap(shared, sizeof *shared);
    return {per_second, static_cast<double>(read) / used};
}

/// Opens the database again and again, as programs do that live for one request, and prints what one costs.
void measure_opening(const std::string &path)
{
    constexpr size_t kTimes = 500;
    std::vector<double> opened;
    std::vector<double> called;
    for (size_t i = 0; i < kTimes; i++) {
        const auto since = Clock::now();
        Handle at(path);
        const auto open = Clock::now();
        if (read_something(at, 3)) fprintf(stderr, "a call failed\n"), exit(1);
        opened.push_back(std::chrono::duration<double, std::micro>(open - since).count());
        called.push_back(std::chrono::duration<double, std::micro>(Clock::now() - open).count());
    }
    std::sort(opened.begin(), opened.end());
    std::sort(called.begin(), called.end());
    printf("opening a handle: median %.0f us, fastest quarter %.0f us; its first call %.0f us\n", opened[kTimes / 2],
           opened[kTimes / 4], called[kTimes / 2]);
}

}  // namespace

int main(int argc, char **argv)
{
    const int seconds = argc > 1 ? atoi(argv[1]) : 5;
    if (seconds <= 0) return fprintf(stderr, "usage: qbobj_readers [SECONDS]\n"), 2;
    setvbuf(stdout, nullptr, _IOLBF, 0);
    setenv("TMPDIR", "/dev/shm", 0);
    std::string path = (std::filesystem::temp_directory_path() / "qbobj-readers-XXXXXX").string();
    if (!mkdtemp(path.data())) return perror(path.c_str()), 1;
    const std::string directory = path;
    path += "/readers.db";
    bench::write_database(path, {.users = 1000});
    measure_opening(path);
    printf("processes x threads, %d s each\n", seconds);
    const Reads one = measure(path, {1, 1, 100, false}, seconds);
    const Reads two = measure(path, {2, 1, 100, false}, seconds);
    printf("two processes / one: reads a second %.2f, reads a second of processor time %.2f\n",
           two.a_second / one.a_second, two.a_processor_second / one.a_processor_second);
    measure(path, {8, 4, 70, false}, seconds);
    measure(path, {8, 4, 70, true}, seconds);
    measure(path, {1, 1, 100, true}, seconds);
    std::filesystem::remove_all(directory);
    return 0;
}
// SPDX-License-Identifier: Apache-2.0
