// Common ground of the anomaly tests: a populated appliance on which every operation is called by its row
// in the operation table and its set-ups, watched from the statement hook.
//
// No call leaves anything behind: when one gets as far as COMMIT, the database as it would be stored is
// looked at, and then the COMMIT is refused. So one database serves all calls, and any two can be compared.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "anomaly/setups.h"
#include "call.h"
#include "fixture/fixture.h"
#include "fixture/machine.h"
#include "fixture/paths.h"
#include "user_changes/list_file.h"

namespace test {

/// A directory that knows one user and one group.
struct Directory {
    static int32_t uid(void *, const char *name)
    {
        return strcmp(name, "EXAMPLE\\fred") == 0 ? 10010 : strcmp(name, "EXAMPLE\\live") == 0 ? 10011 : -1;
    }
    static int32_t gid(void *, const char *name) { return strcmp(name, "EXAMPLE\\domain users") == 0 ? 10020 : -1; }
    static int user_name(void *, int32_t uid, char *name, size_t size)
    {
        return uid == 10010 || uid == 10011 ? snprintf(name, size, "EXAMPLE\\%s", uid == 10010 ? "fred" : "live") <= 0
                                            : 1;
    }
    static int group_name(void *, int32_t gid, char *name, size_t size)
    {
        return gid == 10020 ? snprintf(name, size, "EXAMPLE\\domain users") <= 0 : 1;
    }
    static void install(qbdb_t *qbdb)
    {
        const qbdb_directory_hooks hooks{nullptr, uid, gid, user_name, group_name};
        qbdb_set_directory_hooks(qbdb, &hooks);
    }
};

inline std::string name_of(const Trial &setup)
{
    return std::string(setup.operation) + (*setup.label ? std::string(" (") + setup.label + ")" : "");
}

inline const QbobjOperation &operation_of(const Trial &setup)
{
    const QbobjOperation *row = qbobj_find_operation(setup.operation);
    if (!row) ADD_FAILURE() << "there is no operation " << setup.operation, abort();
    return *row;
}

/// The records of one call, made anew from the set-up each time: operations write into them.
struct Prepared {
    qbcli::StandardInput input;
    qbcli::Arguments arguments;
    std::unique_ptr<qbcli::Call> call;

    explicit Prepared(const Trial &setup) : arguments(operation_of(setup), input)
    {
        try {
            arguments.take(qbcli::parse_json(setup.arguments, name_of(setup)));
            call = std::make_unique<qbcli::Call>(operation_of(setup), arguments);
        } catch (const std::exception &failure) {
            ADD_FAILURE() << name_of(setup) << ": " << failure.what();
            abort();
        }
    }
};

/// What came out of a call as text; empty when nothing can.
inline std::string text_of_outcome(const qbcli::Json &json)
{
    return json.is_discarded() ? "" : json.dump();
}

/// Whether two outcomes of a call tell of other contents of the caller's variables and records: the value that an
/// operation returns is not part of them.
inline bool differ(const qbcli::Json &before, qbcli::Json after)
{
    if (before.is_discarded() || after.is_discarded()) return before.is_discarded() != after.is_discarded();
    if (after.is_object() && after.contains(qbcli::kReturned)) after[qbcli::kReturned] = before.at(qbcli::kReturned);
    return before != after;
}

/// Whether a code stands in an operation's list.
inline bool documents(const QbobjOperation &operation, uint32_t code)
{
    return (" " + std::string(operation.codes) + " ").find(" " + std::to_string(code) + " ") != std::string::npos;
}

/// The operations without the prefix hand a failed COMMIT to their caller, with an empty error record.
inline bool tells_of_commit(const Trial &setup)
{
    return strncmp(operation_of(setup).name, "qbobj_", 6) != 0;
}

/// What a call returns when its COMMIT fails with a code.
inline uint32_t after_refused_commit(const Trial &setup, int rc)
{
    return setup.code == 0 && tells_of_commit(setup) ? static_cast<uint32_t>(rc) : setup.code;
}

/// Whether a family's list names a set-up's operation.
inline bool is_listed(std::span<const Exempt> list, const Trial &setup)
{
    return std::any_of(list.begin(), list.end(), [&](const Exempt &row) { return !strcmp(row.what, setup.operation); });
}

/// Everything in a database, page by page; inside a transaction with what it has written so far.
inline std::string image_of(sqlite3 *db)
{
    sqlite3_int64 size = 0;
    unsigned char *pages = sqlite3_serialize(db, "main", &size, 0);
    if (!pages) return ADD_FAILURE() << "no image of the database", "";
    std::string image(reinterpret_cast<char *>(pages), static_cast<size_t>(size));
    sqlite3_free(pages);
    return image;
}

inline void set_accounts(sqlite3 *db, Accounts accounts)
{
    const char *sql = accounts == Accounts::local       ? "UPDATE service_cifs SET security='user',no_sync_ads=0"
                      : accounts == Accounts::directory ? "UPDATE service_cifs SET security='ads',no_sync_ads=0"
                                                        : "UPDATE service_cifs SET security='ads',no_sync_ads=1";
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
}

/// What a call came to.
struct Outcome {
    uint32_t rc = 0;
    uint32_t code = 0;    // of the error record
    std::string message;  // of the error record
    std::string outputs;
    bool wrote_outputs = false;
    bool committing = false;  // got as far as COMMIT
    std::string stored;       // the database at COMMIT
    std::vector<std::string> statements;
};

/// The tests of one family.
inline std::string name_of_family(const testing::TestParamInfo<const Family *> &info)
{
    return info.param->name;
}
inline std::vector<const Family *> families()
{
    std::vector<const Family *> all;
    for (const Family &family : kFamilies) all.push_back(&family);
    return all;
}

struct Anomaly : Database {
    const Family &family;
    std::optional<ListFile> list;  // one place for the whole machine: who does not need it keeps nobody waiting
    std::function<void(bool)> pause = [](bool) {};  // what is made to fail has to leave the test's own work alone
    std::string before;                             // the database that all calls of a set-up begin with

    explicit Anomaly(const Family &tested) : family(tested)
    {
        for (const Trial &trial : family.trials)
            if (!strcmp(trial.operation, "checkUserList") && !list) list.emplace().write(kUserList);
        sql(kPopulation);
        sql(family.population);
        Directory::install(qbdb);
        plug_in(directory.path, "vdb", "S4", 2);
        qbdb_set_statement_hook(qbdb, see_statement, this);
        qbdb_set_log_hook(qbdb, see_log, this);
        qbdb_set_timeout(qbdb, 0);
    }

    void begin(const Trial &setup)
    {
        set_accounts(db, setup.accounts);
        before = image_of(db);
    }

    /// A change of the temporary schema has every prepared statement prepare itself again, the rollback too.
    static bool changes_temporary_schema(const Trial &setup) { return !strcmp(setup.operation, "copyShare"); }

    /// Without any memory that rollback was not possible. The next begin makes it.
    void make_owed_rollback()
    {
        EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, __FILE__, __LINE__), 0u);
        EXPECT_EQ(qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__), 0u);
    }

    /// Calls the operation. The n-th statement fails (0: none does), BEGIN and COMMIT counted.
    Outcome run(const Trial &setup, int nth = 0, int rc = SQLITE_ERROR, const std::function<void(bool)> &around = {})
    {
        EXPECT_EQ(qbdb_request_begin(qbdb), 0);
        Prepared prepared(setup);
        note_untouched(setup, *prepared.call);
        outcome_ = {};
        nth_ = nth;
        rc_ = rc;
        ErrorInfo info{99, "unset", 99, "unset"};
        if (around) around(true);
        outcome_.rc = prepared.call->invoke(qbdb, db, &info);
        if (around) around(false);
        outcome_.code = info.code;
        outcome_.message = info.message ? info.message : "";
        qbcli::Json outputs = prepared.call->outcome();
        outcome_.outputs = text_of_outcome(outputs);
        outcome_.wrote_outputs = differ(untouched_, std::move(outputs));
        if (!sqlite3_get_autocommit(db) && changes_temporary_schema(setup)) make_owed_rollback();
        EXPECT_TRUE(sqlite3_get_autocommit(db)) << "a transaction is open";
        return std::move(outcome_);
    }

private:
    Outcome outcome_;
    std::string set_up_;  // what untouched_ is of
    qbcli::Json untouched_;
    int nth_ = 0;
    int rc_ = 0;

    /// What stands in the caller's records before the call. It is the same for each call of a set-up, of which there
    /// are thousands.
    void note_untouched(const Trial &setup, const qbcli::Call &call)
    {
        std::string text = std::string(setup.operation) + setup.arguments;
        if (text == set_up_) return;
        set_up_ = std::move(text);
        untouched_ = call.outcome();
    }

    static void see_log(void *self, const char *, uint32_t, uint32_t, uint32_t, const char *) { (void)self; }
    static int see_statement(void *self, const char *sql, const char *, uint32_t, const char **text)
    {
        auto *anomaly = static_cast<Anomaly *>(self);
        anomaly->pause(true);
        const int rc = anomaly->judge(sql, text);
        anomaly->pause(false);
        return rc;
    }
    int judge(const std::string &sql, const char **text)
    {
        if (sql == "ROLLBACK") return 0;
        outcome_.statements.push_back(sql);
        *text = "injected";
        if (static_cast<int>(outcome_.statements.size()) == nth_) return rc_;
        if (sql != "COMMIT") return 0;
        outcome_.committing = true;
        outcome_.stored = image_of(db);
        return SQLITE_FULL;
    }
};

}  // namespace test

/// Salts come from one place, so that two runs of a call leave the same database.
extern "C" uint32_t __wrap_qbdb_rand(void);
// SPDX-License-Identifier: Apache-2.0
