// Every read, write, sync, lock and so on of every operation is refused: once, from there to the end of the
// call, and from there until the database is closed. Then everything is as it was before or as it is after.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>

#include "anomaly/anomaly.h"
#include "anomaly/failing_vfs.h"

using namespace test;

namespace {

// ---- Files as bytes

std::string bytes_of(const std::string &path)
{
    std::string bytes;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return bytes;
    struct stat status;
    EXPECT_EQ(fstat(file, &status), 0);
    bytes.resize(static_cast<size_t>(status.st_size));
    EXPECT_EQ(::read(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(file);
    return bytes;
}

void put_bytes(const std::string &path, const std::string &bytes)
{
    if (bytes.empty()) {
        unlink(path.c_str());
        return;
    }
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_EQ(write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_EQ(ftruncate(file, static_cast<off_t>(bytes.size())), 0);
    close(file);
}

/// A database as a process that dies leaves it behind.
struct Files {
    std::string database, log, journal;

    static Files at(const std::string &path)
    {
        return {bytes_of(path), bytes_of(path + "-wal"), bytes_of(path + "-journal")};
    }
    void put(const std::string &path) const
    {
        unlink((path + "-shm").c_str());
        put_bytes(path, database);
        put_bytes(path + "-wal", log);
        put_bytes(path + "-journal", journal);
    }
};

/// Reads files as the next process would: what is in them, or why they are not in order. What two sets of
/// the same bytes hold is read once.
class Reader {
public:
    Reader(std::string path, const char *vfs) : path_(std::move(path)), vfs_(vfs) {}

    const std::string &content(const Files &files)
    {
        const std::hash<std::string> hash;
        const auto key = std::to_string(hash(files.database)) + " " + std::to_string(hash(files.log)) + " " +
                         std::to_string(hash(files.journal));
        auto at = known_.find(key);
        if (at == known_.end()) at = known_.emplace(key, read(files)).first;
        return at->second;
    }
    size_t read() const { return known_.size(); }

private:
    std::string read(const Files &files)
    {
        files.put(path_);
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READWRITE, vfs_), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr), SQLITE_OK);
        std::string text = joined(rows(db, "PRAGMA integrity_check"));
        text = text == "ok\n" ? "" : "DAMAGED " + text;
        text += joined(rows(db, "SELECT type,name,sql FROM sqlite_schema ORDER BY type,name"));
        for (const std::string &table : rows(db, "SELECT name FROM sqlite_schema WHERE type='table' ORDER BY name"))
            text += "== " + table + "\n" + joined(rows(db, "SELECT rowid,* FROM \"" + table + "\" ORDER BY rowid"));
        sqlite3_close(db);
        return text;
    }
    static std::vector<std::string> rows(sqlite3 *db, const std::string &sql)
    {
        std::vector<std::string> all;
        sqlite3_stmt *stmt = nullptr;
        int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
        while (stmt && (rc = sqlite3_step(stmt)) == SQLITE_ROW) {
            std::string row;
            for (int i = 0; i < sqlite3_column_count(stmt); i++) {
                const auto *cell = reinterpret_cast<const char *>(sqlite3_column_text(stmt, i));
                row += (i ? "|" : "") + std::string(cell ? cell : "NULL");
            }
            all.push_back(row);
        }
        if (rc != SQLITE_DONE) all.push_back(std::string("DAMAGED ") + sqlite3_errmsg(db));
        sqlite3_finalize(stmt);
        return all;
    }
    static std::string joined(const std::vector<std::string> &rows)
    {
        std::string text;
        for (const std::string &row : rows) text += row + "\n";
        return text;
    }

    std::string path_;
    const char *vfs_;
    std::unordered_map<std::string, std::string> known_;
};

// ---- What is refused, on what, for how long

/// How the database keeps its changes until they are in their place.
enum class Journal { log, checkpoint, rollback };

struct Way {
    Journal journal;
    const char *name;
    const char *text;
};

constexpr Way kWays[] = {
    {Journal::log, "log", "a write-ahead log that holds everything"},
    {Journal::checkpoint, "checkpoint", "a write-ahead log that each commit empties"},
    {Journal::rollback, "rollback", "a rollback journal"},
};

struct Trouble {
    const char *name;
    Refusal refusal;
};

constexpr Trouble kTroubles[] = {
    {"open", {Request::open, SQLITE_CANTOPEN}},
    {"access", {Request::access, SQLITE_IOERR_ACCESS}},
    {"remove", {Request::remove, SQLITE_IOERR_DELETE}},
    {"read", {Request::read, SQLITE_IOERR_READ, true}},
    {"write", {Request::write, SQLITE_IOERR_WRITE}},
    {"full", {Request::write, SQLITE_FULL, true}},
    {"sync", {Request::sync, SQLITE_IOERR_FSYNC}},
    {"truncate", {Request::truncate, SQLITE_IOERR_TRUNCATE}},
    {"size", {Request::file_size, SQLITE_IOERR_FSTAT}},
    {"lock", {Request::lock, SQLITE_IOERR_LOCK}},
    {"locked", {Request::lock, SQLITE_BUSY}},
    {"index_map", {Request::index_map, SQLITE_IOERR_SHMMAP}},
    {"index_lock", {Request::index_lock, SQLITE_IOERR_SHMLOCK}},
    {"index_locked", {Request::index_lock, SQLITE_BUSY}},
};

enum class Span { once, call, close };

struct Case {
    Way way;
    Trouble trouble;
};

void PrintTo(const Case &each, std::ostream *out)
{
    *out << each.way.name << " " << each.trouble.name;
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    for (const Way &way : kWays)
        for (const Trouble &trouble : kTroubles) all.push_back({way, trouble});
    return all;
}

// ---- The figures

struct Figures {
    long calls = 0;    // with a refusal in them
    long answered = 0; // as if nothing had happened
    long failed = 0;   // and said so
    long commits = 0;  // failed
    long late = 0;     // failed commits that a process which dies then finds stored
};

struct Summary : testing::Environment {
    std::map<std::string, Figures> figures;
    void TearDown() override
    {
        Figures all;
        for (const auto &[name, each] : figures) {
            print(name, each);
            all = {all.calls + each.calls, all.answered + each.answered, all.failed + each.failed,
                   all.commits + each.commits, all.late + each.late};
        }
        if (!figures.empty()) print("all", all);
    }
    static void print(const std::string &name, const Figures &each)
    {
        printf("%-24s %7ld refused: %6ld succeeded, %6ld failed, %5ld commits failed (%ld of them whole on the disk)\n",
               name.c_str(), each.calls, each.answered, each.failed, each.commits, each.late);
    }
};

Summary &summary = *static_cast<Summary *>(testing::AddGlobalTestEnvironment(new Summary));

// ---- A call

/// What a call came to.
struct Answer {
    uint32_t rc = 0;
    uint32_t code = 0;
    std::string message;
    std::string outputs;

    bool operator==(const Answer &) const = default;
};

/// A handle as a front end has it.
struct Handle {
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    bool worked = false;  // a statement after BEGIN ran
    int failed_commits = 0;

    Handle(const std::string &path, Journal journal)
    {
        sqlite3_randomness(0, nullptr);  // salts come anew from the layer
        char why[256] = "";
        EXPECT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &qbdb, &db, why, sizeof why), 0) << why;
        qbdb_set_log_hook(qbdb, see_log, this);
        qbdb_set_statement_hook(qbdb, see_statement, this);
        qbdb_set_timeout(qbdb, 0);
        test::Directory::install(qbdb);
        EXPECT_EQ(qbdb_request_begin(qbdb), 0);
        if (journal == Journal::checkpoint) sqlite3_wal_autocheckpoint(db, 1);
        if (journal == Journal::rollback) {
            EXPECT_EQ(sqlite3_exec(db, "PRAGMA journal_mode=DELETE", nullptr, nullptr, nullptr), SQLITE_OK);
        }
    }
    ~Handle() { qbdb_close(qbdb); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    Answer call(const Trial &setup)
    {
        Prepared prepared(setup);
        ErrorInfo info{99, "unset", 99, "unset"};
        Answer answer;
        answer.rc = prepared.call->invoke(qbdb, db, &info);
        answer.code = info.code;
        answer.message = info.message ? info.message : "";
        answer.outputs = prepared.outputs();
        EXPECT_TRUE(sqlite3_get_autocommit(db)) << "a transaction is open";
        return answer;
    }

private:
    static void see_log(void *self, const char *, uint32_t, uint32_t level, uint32_t flag, const char *text)
    {
        const bool commit = level == 2 && flag == 0 && strncmp(text, "Failed to commit", 16) == 0;
        static_cast<Handle *>(self)->failed_commits += commit;
    }
    static int see_statement(void *self, const char *sql, const char *, uint32_t, const char **)
    {
        const bool frame = strncmp(sql, "BEGIN", 5) == 0 || strcmp(sql, "ROLLBACK") == 0;
        static_cast<Handle *>(self)->worked |= !frame;
        return 0;
    }
};

// ---- The tests

struct InputOutput : testing::TestWithParam<Case> {
    TemporaryDirectory directory;
    FailingFiles files;
    const std::string path = directory.path + "/appliance.db";
    Reader reader{directory.path + "/copy.db", files.undisturbed()};
    std::map<Accounts, Files> appliances;
    std::map<std::string, long> odd;
    Figures &figures = summary.figures[std::string(GetParam().way.name) + " " + GetParam().trouble.name];

    /// What a set-up's call does when nothing is refused.
    struct Reference {
        Answer answer;
        long requests = 0;  // of the kind that is refused
        std::string before, after;
        std::string before_and_next, after_and_next;  // with one more change by the same handle
    };

    InputOutput()
    {
        const std::string template_path = directory.path + "/template.db";
        for (const Accounts accounts : {Accounts::local, Accounts::directory, Accounts::live}) {
            Files{}.put(template_path);
            qbdb_t *qbdb = nullptr;
            sqlite3 *db = nullptr;
            EXPECT_EQ(qbdb_open(template_path.c_str(), QBDB_OPEN_CREATE, "tank", &qbdb, &db, nullptr, 0), 0);
            EXPECT_EQ(sqlite3_exec(db, kPopulation, nullptr, nullptr, nullptr), SQLITE_OK);
            set_accounts(db, accounts);
            Files open = Files::at(template_path);
            qbdb_close(qbdb);
            appliances[accounts] = GetParam().way.journal == Journal::log ? open : Files::at(template_path);
        }
    }

    const std::string &stored() { return reader.content(Files::at(path)); }

    /// The next call of a handle.
    static void expect_next_call_works(const Handle &handle)
    {
        ErrorInfo info{};
        EXPECT_EQ(setRegistryEntry(handle.qbdb, handle.db, "next", "1", &info), 0u) << info.message;
    }

    Reference refer(const Trial &setup)
    {
        Reference reference;
        appliances[setup.accounts].put(path);
        reference.before = stored();
        {
            const Handle handle(path, GetParam().way.journal);
            expect_next_call_works(handle);
        }
        reference.before_and_next = stored();
        appliances[setup.accounts].put(path);
        {
            Handle handle(path, GetParam().way.journal);
            files.start(GetParam().trouble.refusal, 0, false);
            reference.answer = handle.call(setup);
            files.stop();
            reference.requests = files.count(GetParam().trouble.refusal.request);
            EXPECT_EQ(reference.answer.rc, setup.code) << reference.answer.message;
            EXPECT_EQ(handle.failed_commits, 0);
            reference.after = stored();
            expect_next_call_works(handle);
        }
        reference.after_and_next = stored();
        EXPECT_EQ(reference.before.find("DAMAGED"), std::string::npos);
        EXPECT_EQ(reference.after.find("DAMAGED"), std::string::npos);
        return reference;
    }

    void note(const Trial &setup, const Answer &answer, const std::string &what)
    {
        odd[name_of(setup) + ": " + what + " " + std::to_string(answer.rc) + " \"" + answer.message + "\""]++;
    }

    /// A failure that its documentation tells of.
    void check_failure(const Trial &setup, const Answer &answer, bool worked)
    {
        const QbobjOperation &operation = operation_of(setup);
        if (!worked && answer.code == 0) {  // it could not begin
            const int rc = GetParam().trouble.refusal.rc & 0xFF;
            if (answer.rc != static_cast<uint32_t>(rc)) note(setup, answer, "begins with");
            return;
        }
        bool known;
        if (operation.returns == QBOBJ_RETURNS_CODE) known = answer.rc == 5 && answer.code == 5 && !answer.message.empty();
        else known = (answer.rc == 0xFFFFFFFF || (operation.returns == QBOBJ_RETURNS_ANSWER && answer.rc == 1)) && answer.code == 0;
        if (!known) note(setup, answer, "fails with");
    }

    void refuse(const Trial &setup, const Reference &reference, long nth, Span span)
    {
        SCOPED_TRACE(name_of(setup) + ", request " + std::to_string(nth) +
                     (span == Span::once   ? ", once"
                      : span == Span::call ? ", to the end of the call"
                                           : ", until closed"));
        appliances[setup.accounts].put(path);
        std::optional<Handle> handle;
        handle.emplace(path, GetParam().way.journal);
        files.start(GetParam().trouble.refusal, nth, span != Span::once);
        const Answer answer = handle->call(setup);
        if (span != Span::close) files.stop();
        EXPECT_TRUE(files.refused());
        const std::string &left = stored();  // by a process that dies now
        if (span != Span::close) expect_next_call_works(*handle);
        const bool worked = handle->worked;
        const bool commit_failed = handle->failed_commits > 0;
        handle.reset();
        files.stop();
        EXPECT_EQ(files.held(), 0);
        const std::string &closed = stored();
        const std::string &before = span == Span::close ? reference.before : reference.before_and_next;
        const std::string &after = span == Span::close ? reference.after : reference.after_and_next;

        figures.calls++;
        Answer expected = reference.answer;
        if (commit_failed && tells_of_commit(setup)) {
            EXPECT_NE(answer.rc, 0u);
            expected.rc = answer.rc;
        }
        if (answer.rc != expected.rc || answer.code != expected.code) {
            figures.failed++;
            check_failure(setup, answer, worked);
            EXPECT_TRUE(left == reference.before);
            EXPECT_TRUE(closed == before);
            return;
        }
        if (!(answer == expected)) note(setup, answer, "succeeds with other results");
        if (!commit_failed) {
            figures.answered++;
            if (left != reference.after || closed != after) note(setup, answer, "stores something else");
            return;
        }
        figures.commits++;
        figures.late += left == reference.after && left != reference.before;
        EXPECT_TRUE(left == reference.before || left == reference.after);
        EXPECT_TRUE(closed == before || (span == Span::close && closed == after));
    }
};

TEST_P(InputOutput, EachFails)
{
    for (const Trial &setup : kSetups) {
        std::optional<ListFile> list;
        if (!strcmp(setup.operation, "checkUserList")) list.emplace().write(kUserList);
        const Reference reference = refer(setup);
        for (const Span span : {Span::once, Span::call, Span::close})
            for (long n = 1; n <= reference.requests; n++) refuse(setup, reference, n, span);
    }
    for (const auto &[what, times] : odd) printf("ODD %s (%ld times)\n", what.c_str(), times);
    printf("%s: %ld requests refused, %zu different states read\n", GetParam().trouble.name, figures.calls, reader.read());
}

INSTANTIATE_TEST_SUITE_P(, InputOutput, testing::ValuesIn(cases()), [](const auto &info) {
    return std::string(info.param.way.name) + "_" + info.param.trouble.name;
});

}  // namespace
