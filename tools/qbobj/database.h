// The open database of one command, and what can be seen of a call from outside.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qbdb.h"

namespace qbcli {

struct DatabaseOptions {
    std::string path;
    bool read_only = false;
    uint32_t timeout_ms = QBDB_DEFAULT_TIMEOUT_MS;
    uint32_t log_level = 0;
    std::string who{};  // for the journal; empty for the user who runs the program
    std::string root;   // directory in which disks and home folders are looked for; empty for "/"
};

class Database {
public:
    explicit Database(const DatabaseOptions &options);
    ~Database() { qbdb_close(qbdb_); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    qbdb_t *handle() const { return qbdb_; }
    sqlite3 *connection() const { return db_; }
    /// Forgets what was seen of earlier calls, and gives back what they returned.
    void begin_call();
    /// Texts that must not appear in a log line.
    void hide(const std::vector<std::string_view> &secrets) { secrets_ = secrets; }

    /// Whether any statement but the one that begins a transaction ran.
    bool got_past_begin() const { return statements_ > 0; }
    /// Says that what is called is taken back.
    void set_trial(bool trial) { trial_ = trial; }
    /// Whether a transaction was rolled back that should not have been.
    bool rolled_back() const { return rolled_back_ && !trial_; }
    /// Whether a statement failed. A look-up that fails returns the same -1 as one that finds nothing.
    bool statement_failed() const;
    /// The last failure that the library logged; empty when it logged none.
    const std::string &logged_failure() const { return logged_failure_; }

private:
    static void log(void *self, const char *file, uint32_t line, uint32_t level, uint32_t flag, const char *text);
    static int see_statement(void *self, const char *sql, const char *file, uint32_t line, const char **text);

    qbdb_t *qbdb_ = nullptr;
    sqlite3 *db_ = nullptr;
    std::vector<std::string_view> secrets_;
    uint32_t shown_level_ = 0;
    std::string logged_failure_;
    uint64_t failures_before_ = 0;
    uint64_t statements_ = 0;
    bool rolled_back_ = false;
    bool trial_ = false;
};

/// Why a transaction could not begin.
/// @param rc         What SQLite returned.
/// @param timeout_ms How long another process's lock was waited for.
std::string why_not_begun(uint32_t rc, uint32_t timeout_ms);

/// Creates a fresh appliance database, with a first volume unless the name is empty.
void create_database(const std::string &path, const std::string &volume);

/// A text in which secrets are replaced by the mask: the given ones, and what a record dump ("s Password
/// = …") shows of a field that holds one.
std::string redacted(std::string_view text, const std::vector<std::string_view> &secrets);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
