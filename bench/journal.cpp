// What recording costs a transaction: not asked for, asked for, kept in the journal. See docs/journal.md.
//
//   qbobj_journal [ROUNDS]    of 500 transactions of each kind, 40 unless it is given
//
// The database lies where TMPDIR says, in memory unless it is set, so that no disk has a part in the figures.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "qbdb_journal.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kTransactions = 500;

struct Handle {
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;

    Handle(const std::string &path, unsigned mode)
    {
        char why[256] = "";
        if (qbdb_open(path.c_str(), mode, nullptr, &qbdb, &db, why, sizeof why)) fprintf(stderr, "%s\n", why), exit(1);
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { qbdb_close(qbdb); }
};

/// One transaction of one statement, in microseconds on average.
double measure(Handle &handle, const char *statement, bool watched = false)
{
    const auto since = Clock::now();
    for (int i = 0; i < kTransactions; i++) {
        const char *text = nullptr;
        qbdb_request_begin(handle.qbdb);
        if (watched) qbdb_changes_begin(handle.qbdb, 0);
        const bool failed = qbdb_sql_begin(handle.qbdb, handle.db, 0, __FILE__, __LINE__) ||
                            qbdb_sql_exec_mprintf(handle.qbdb, handle.db, &text, __FILE__, __LINE__, statement, i) ||
                            qbdb_sql_commit(handle.qbdb, handle.db, 0, __FILE__, __LINE__);
        if (failed) fprintf(stderr, "%s\n", text ? text : "failed"), exit(1);
        void *changes = nullptr;
        int size = 0;
        if (watched) qbdb_changes_end(handle.qbdb, &changes, &size);
        sqlite3_free(changes);
    }
    return std::chrono::duration<double, std::micro>(Clock::now() - since).count() / kTransactions;
}

/// The question that each beginning asks, in microseconds.
double measure_question(Handle &handle)
{
    sqlite3_stmt *stmt = nullptr;
    sqlite3_prepare_v2(handle.db, "PRAGMA data_version", -1, &stmt, nullptr);
    constexpr int kAsked = 20000;
    sqlite3_exec(handle.db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    const auto since = Clock::now();
    for (int i = 0; i < kAsked; i++) {
        sqlite3_step(stmt);
        sqlite3_reset(stmt);
    }
    const double each = std::chrono::duration<double, std::micro>(Clock::now() - since).count() / kAsked;
    sqlite3_exec(handle.db, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_finalize(stmt);
    return each;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char **argv)
{
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 40;
    const char *given = getenv("TMPDIR");
    std::string directory = std::string(given                      ? given
                                        : access("/dev/shm", W_OK) ? "/tmp"
                                                                   : "/dev/shm") +
                            "/qbobj-XXXXXX";
    if (!mkdtemp(directory.data())) return perror("mkdtemp"), 1;
    const struct {
        const char *name;
        const char *statement;
    } kinds[] = {{"a row of a table with a key", "INSERT INTO `$log` (tstamp,severity) VALUES(%d,'info')"},
                 {"a row of a table without a key", "UPDATE service_ssh SET port=%d"}};
    printf("%-32s %10s %10s %10s %10s %10s\n", "one transaction, us", "off", "recorded", "journal", "rec./off",
           "jour./off");
    for (const auto &kind : kinds) {
        Handle off(directory + "/off.db", QBDB_OPEN_CREATE);
        Handle recorded(directory + "/recorded.db", QBDB_OPEN_CREATE);
        Handle kept(directory + "/kept.db", QBDB_OPEN_CREATE);
        qbdb_journal_on(kept.qbdb, kept.db, 1 << 20, 0);
        std::vector<double> times[3];
        std::vector<double> question;
        for (int i = 0; i < rounds; i++) {
            times[0].push_back(measure(off, kind.statement));
            times[1].push_back(measure(recorded, kind.statement, true));
            times[2].push_back(measure(kept, kind.statement));
            question.push_back(measure_question(off));
        }
        const double base = median(times[0]);
        printf("%-32s %10.1f %10.1f %10.1f %10.2f %10.2f\n", kind.name, base, median(times[1]), median(times[2]),
               median(times[1]) / base, median(times[2]) / base);
        printf("  when off, the question whether there is a journal: %.2f us, %.1f %% of a transaction\n",
               median(question), 100 * median(question) / base);
        std::filesystem::remove_all(directory);
        std::filesystem::create_directory(directory);
    }
    std::filesystem::remove_all(directory);
}
// SPDX-License-Identifier: Apache-2.0
