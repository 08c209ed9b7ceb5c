#include "database.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "failure.h"
#include "journal.h"
#include "qbobj.h"
#include "utf8.h"

namespace qbcli {
namespace {

/// Opens a database, or says why not.
void open_database(const std::string &path, unsigned mode, const char *volume, qbdb_t **qbdb, sqlite3 **db)
{
    char why[512] = "cannot be opened";
    if (qbdb_open(path.c_str(), mode, volume, qbdb, db, why, sizeof why)) throw Failure(why, Status::kFailed);
}

uint64_t failed_statements = 0;

/// Has SQLite tell of failing statements; possible only before its first use in the process.
void watch_statements()
{
    constexpr auto note = [](void *, int code, const char *) {
        constexpr int kPrimary = 0xFF;
        code &= kPrimary;
        const bool harmless = code == SQLITE_NOTICE || code == SQLITE_WARNING || code == SQLITE_SCHEMA;
        if (!harmless) failed_statements++;
    };
    static const int done = sqlite3_config(SQLITE_CONFIG_LOG, static_cast<void (*)(void *, int, const char *)>(note),
                                           static_cast<void *>(nullptr));
    (void)done;
}

const std::set<std::string_view> &names_of_secrets()
{
    static const std::set<std::string_view> names = [] {
        std::set<std::string_view> all;
        for (const QbobjType *type = qbobj_types(); type->name; type++)
            for (const QbobjField *field = type->fields + 1; field->kind != '.'; field++)
                if (qbobj_is_secret(type->fields, field)) all.insert(field->name);
        return all;
    }();
    return names;
}

/// Where the value begins in a dump's line "   s Password = value"; npos when the line is none of a secret.
size_t dumped_secret(std::string_view line)
{
    static constexpr std::string_view kKind = "s ";
    static constexpr std::string_view kSign = " = ";
    const size_t start = line.find_first_not_of(' ');
    if (start == std::string_view::npos || !line.substr(start).starts_with(kKind)) return std::string_view::npos;
    const size_t name = start + kKind.size();
    const size_t sign = line.find(kSign, name);
    const bool secret = sign != std::string_view::npos && names_of_secrets().contains(line.substr(name, sign - name));
    return secret ? sign + kSign.size() : std::string_view::npos;
}

constexpr uint32_t kFailureLevel = 2;
constexpr size_t kShortestHidden = 4;  // anything shorter is part of ordinary words

}  // namespace

Database::Database(const DatabaseOptions &options) : shown_level_(options.log_level)
{
    watch_statements();
    failures_before_ = failed_statements;
    open_database(options.path, options.read_only ? QBDB_OPEN_READONLY : QBDB_OPEN_EXISTING, nullptr, &qbdb_, &db_);
    qbdb_->log_level = std::max(options.log_level, kFailureLevel);
    qbdb_set_timeout(qbdb_, options.timeout_ms);
    qbdb_import_options import{};
    import.root = options.root.empty() ? nullptr : options.root.c_str();
    if (qbdb_set_import_options(qbdb_, &import) != 0) throw Failure("out of memory");
    if (qbdb_set_caller(qbdb_, options.who.empty() ? caller_name().c_str() : options.who.c_str()))
        throw Failure("out of memory");
    qbdb_set_log_hook(qbdb_, log, this);
    qbdb_set_statement_hook(qbdb_, see_statement, this);
    sqlite3_rollback_hook(
        db_, [](void *self) { static_cast<Database *>(self)->rolled_back_ = true; }, this);
}

void Database::log(void *self, const char *file, uint32_t line, uint32_t level, uint32_t, const char *text)
{
    auto *database = static_cast<Database *>(self);
    std::string_view message = text;
    while (message.ends_with('\n')) message.remove_suffix(1);
    const std::string shown = printable(redacted(message, database->secrets_));
    if (level <= kFailureLevel) database->logged_failure_ = shown;
    if (level <= database->shown_level_) fprintf(stderr, "%s:%u: [%u] %s\n", file, line, level, shown.c_str());
}

void Database::begin_call()
{
    failures_before_ = failed_statements;
    statements_ = 0;
    rolled_back_ = false;
    logged_failure_.clear();
    if (qbdb_request_begin(qbdb_) != 0) throw Failure("out of memory", Status::kMemory);
}

bool Database::statement_failed() const
{
    return failed_statements > failures_before_;
}

int Database::see_statement(void *self, const char *sql, const char *, uint32_t, const char **)
{
    if (!std::string_view(sql).starts_with("BEGIN")) static_cast<Database *>(self)->statements_++;
    return 0;
}

std::string why_not_begun(uint32_t rc, uint32_t timeout_ms)
{
    std::string why = sqlite3_errstr(static_cast<int>(rc));
    if (rc != SQLITE_BUSY) return why;
    return why + " by another process (waited " + std::to_string(timeout_ms) + " ms; see --timeout)";
}

void create_database(const std::string &path, const std::string &volume)
{
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    open_database(path, QBDB_OPEN_CREATE, volume.empty() ? nullptr : volume.c_str(), &qbdb, &db);
    qbdb_close(qbdb);
}

std::string redacted(std::string_view text, const std::vector<std::string_view> &secrets)
{
    if (const size_t value = dumped_secret(text); value != std::string_view::npos) {
        const std::string_view dumped = text.substr(value);
        const bool tells_nothing = dumped.empty() || dumped == "(null)";
        return std::string(text.substr(0, value)).append(tells_nothing ? dumped : masked_password);
    }
    std::string shown(text);
    for (const std::string_view secret : secrets) {
        if (secret.size() < kShortestHidden) continue;
        for (size_t at = 0; (at = shown.find(secret, at)) != std::string::npos;) {
            shown.replace(at, secret.size(), masked_password);
            at += std::string_view(masked_password).size();
        }
    }
    return shown;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
