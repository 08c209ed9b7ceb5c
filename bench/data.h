// The databases that the measurements run on, and a handle on one.
#pragma once

#include <qbdb.h>
#include <qbobj.h>

#include <string>

namespace bench {

/// How much is in a database. Every user has a quota and a home-folder row, every tenth a Time Machine row; every
/// enclosure has kSensors sensors.
struct Amount {
    int users = 0;
    int groups = 0;
    int members = 0;  // of each group
    int entries = 0;  // of the log
    int texts = 0;    // of the user interface, in English and in German
    int enclosures = 0;
    int bays = 0;       // of each enclosure, each with a disk
    int shares = 0;     // each with all protocols, 5 users and 3 groups on two lists, 3 snapshots
    int datasets = 0;   // shares with nothing but a name
    int snapshots = 0;  // of these, in turn
};

/// First id of the users that a database is filled with.
inline constexpr int kFirstUser = 2000;

inline constexpr int kSensors = 24;

/// A database in a temporary directory, removed at the end.
struct Data {
    std::string directory;
    std::string path;
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    ErrorInfo err{};

    explicit Data(const Amount &amount);
    ~Data();
    Data(const Data &) = delete;
    Data &operator=(const Data &) = delete;

    /// Runs statements; a failure ends the program.
    void run(const char *sql) const;
    /// Ends the program when a call failed: a fast failure is no result.
    void check(uint32_t rc) const;
};

/// Fills a database of its own and leaves it at `path`, for peers in other processes.
void write_database(const std::string &path, const Amount &amount);

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
