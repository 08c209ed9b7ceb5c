// Common ground of the stress tests: how much to do, where, and handles that any process or thread opens.
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "fixture/fixture.h"

namespace stress {

#if defined(__SANITIZE_THREAD__)
inline constexpr const char *kSanitizer = "ThreadSanitizer";
#elif defined(__SANITIZE_ADDRESS__)
inline constexpr const char *kSanitizer = "AddressSanitizer";
#else
inline constexpr const char *kSanitizer = nullptr;
#endif
inline constexpr bool kThreadSanitizer = kSanitizer && kSanitizer[0] == 'T';

/// How much of something to do: from the environment, else less under a sanitizer, which is printed.
inline long amount(const char *variable, long ordinary, long sanitized)
{
    if (const char *given = getenv(variable)) return atol(given);
    if (!kSanitizer || sanitized == ordinary) return ordinary;
    printf("%s: %ld instead of %ld under %s\n", variable, sanitized, ordinary, kSanitizer);
    return sanitized;
}

/// A directory in memory where the system has one. What a killed process wrote stays in the system's cache,
/// on a disk as in memory: only a crash of the whole machine tells the two apart.
struct Directory {
    std::string path;
    Directory()
    {
        const char *given = getenv("QBOBJ_STRESS_DIRECTORY");
        const std::filesystem::path shared = "/dev/shm";
        const bool usable = access(shared.c_str(), W_OK) == 0;
        std::filesystem::path base = usable ? shared : std::filesystem::temp_directory_path();
        if (given) base = given;
        path = (base / "qbobj-stress-XXXXXX").string();
        if (!mkdtemp(path.data())) abort();
    }
    ~Directory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;
    std::string file(const std::string &name) const { return path + "/" + name; }
};

/// A handle; not open when opening failed, and then `why` tells the reason.
struct Handle {
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    ErrorInfo err{};
    int rc = 0;
    char why[256] = "";

    Handle(const std::string &path, unsigned mode, const char *volume = nullptr)
    {
        rc = qbdb_open(path.c_str(), mode, volume, &qbdb, &db, why, sizeof why);
        if (!qbdb) return;
        qbdb_set_log_hook(
            qbdb, [](void *, const char *, uint32_t, uint32_t, uint32_t, const char *) {}, nullptr);
        const std::string root = path.substr(0, path.rfind('/'));
        qbdb_import_options options{};
        options.root = root.c_str();
        qbdb_set_import_options(qbdb, &options);
    }
    ~Handle() { qbdb_close(qbdb); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    /// The first column of the first row.
    std::string value(const char *sql) const
    {
        std::string text;
        sqlite3_stmt *stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) != SQLITE_OK) return sqlite3_errmsg(db);
        if (sqlite3_step(stmt) == SQLITE_ROW)
            if (const auto *column = sqlite3_column_text(stmt, 0)) text = reinterpret_cast<const char *>(column);
        sqlite3_finalize(stmt);
        return text;
    }
    long number(const char *sql) const { return atol(value(sql).c_str()); }
    /// Runs statements; "" or why they failed.
    std::string run(const std::string &sql) const
    {
        char *text = nullptr;
        sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &text);
        const std::string why_not = text ? text : "";
        sqlite3_free(text);
        return why_not;
    }
};

using Clock = std::chrono::steady_clock;
inline double seconds_since(Clock::time_point since)
{
    return std::chrono::duration<double>(Clock::now() - since).count();
}

/// Numbers that look random and come again for the same seed.
struct Random {
    uint64_t state;
    explicit Random(uint64_t seed) : state(seed * 0x9E3779B97F4A7C15u + 0x1234567u) {}
    uint64_t next()
    {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state * 0x2545F4914F6CDD1Du >> 16;
    }
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(next() % bound); }
};

}  // namespace stress
// SPDX-License-Identifier: Apache-2.0
