// Every read, write, sync, lock and so on of every operation is refused: once, from there to the end of the
// call, and from there until the database is closed. Then everything is as it was before or as it is after.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>

#include "anomaly/anomaly.h"
#include "anomaly/failing_vfs.h"
#include "stress/stress.h"

using namespace test;

namespace {

// ---- Files as bytes

/// `bytes` may hold the same file of earlier, whose room is used again.
std::string bytes_of(const std::string &path, std::string bytes = "")
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return "";
    struct stat status;
    EXPECT_EQ(fstat(file, &status), 0);
    bytes.resize(static_cast<size_t>(status.st_size));
    EXPECT_EQ(::read(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(file);
    return bytes;
}

constexpr size_t kBlock = 4096;

/// Calls with each block of `bytes` that is not the same in `others`.
template <class Use>
void each_difference(const std::string &bytes, const std::string &others, Use use)
{
    for (size_t at = 0; at < bytes.size(); at += kBlock) {
        const std::string_view block = std::string_view(bytes).substr(at, kBlock);
        if (at >= others.size() || block != std::string_view(others).substr(at, kBlock)) use(at, block);
    }
}

/// Writes a file that holds `present`, so far as it is not the same already.
void put_bytes(const std::string &path, const std::string &bytes, const std::string &present = "")
{
    if (bytes.empty()) {
        unlink(path.c_str());
        return;
    }
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    each_difference(bytes, present, [&](size_t at, std::string_view block) {
        EXPECT_EQ(pwrite(file, block.data(), block.size(), static_cast<off_t>(at)), static_cast<ssize_t>(block.size()));
    });
    EXPECT_EQ(ftruncate(file, static_cast<off_t>(bytes.size())), 0);
    close(file);
}

/// A database as a process that dies leaves it behind.
struct Files {
    std::string database, log, journal;

    static Files at(const std::string &path, std::string room = "")
    {
        return {bytes_of(path, std::move(room)), bytes_of(path + "-wal"), bytes_of(path + "-journal")};
    }
    void put(const std::string &path, const std::string &present = "") const
    {
        unlink((path + "-shm").c_str());
        put_bytes(path, database, present);
        put_bytes(path + "-wal", log);
        put_bytes(path + "-journal", journal);
    }
};

/// Reads files as the next process would: what is in them, or why they are not in order. The same bytes are
/// read once.
class Reader {
public:
    Reader(std::string path, const char *vfs) : path_(std::move(path)), vfs_(vfs) {}

    /// `like` is what the files began as; the same object for the same files.
    const std::string &content(const Files &files, const Files &like)
    {
        Known &known = known_[&like];
        std::string key = difference(files.database, like.database) + " log" + difference(files.log, like.log) +
                          " journal" + difference(files.journal, "");
        auto at = known.files.find(key);
        if (at == known.files.end()) at = known.files.emplace(std::move(key), &recovered(files, known)).first;
        return *at->second;
    }

private:
    struct Known {
        std::unordered_map<std::string, const std::string *> files;  // by how they differ from what they began as
        std::unordered_map<std::string, std::string> contents;       // by how the database differs from the first
        std::string first;
    };

    static std::string difference(const std::string &bytes, const std::string &like)
    {
        std::string text = std::to_string(bytes.size());
        each_difference(bytes, like,
                        [&](size_t at, std::string_view block) { (text += " " + std::to_string(at) + " ") += block; });
        return text;
    }

    sqlite3 *open_copy() const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READWRITE, vfs_), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr), SQLITE_OK);
        return db;
    }

    /// Lets SQLite make one file of them, as it does when a database is opened after a crash and closed again.
    const std::string &recovered(const Files &files, Known &known)
    {
        files.put(path_, on_disk_);
        sqlite3 *db = open_copy();
        const int rc = sqlite3_exec(db, "BEGIN IMMEDIATE; COMMIT", nullptr, nullptr, nullptr);
        EXPECT_EQ(rc, SQLITE_OK) << sqlite3_errmsg(db);
        EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
        EXPECT_NE(::access((path_ + "-wal").c_str(), F_OK), 0);
        on_disk_ = bytes_of(path_, std::move(on_disk_));
        if (known.first.empty()) known.first = on_disk_;
        std::string key = difference(on_disk_, known.first);
        auto at = known.contents.find(key);
        if (at == known.contents.end()) at = known.contents.emplace(std::move(key), content()).first;
        return at->second;
    }

    std::string content() const
    {
        sqlite3 *db = open_copy();
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
    std::string on_disk_;
    std::map<const Files *, Known> known_;
};

// ---- What is refused, on what, for how long

/// How the database keeps its changes until they are in their place.
enum class Journal { log, checkpoint, rollback };

template <class... Requests>
constexpr unsigned set_of(Requests... requests)
{
    return (0u | ... | (1u << static_cast<unsigned>(requests)));
}

struct Way {
    Journal journal;
    const char *name;
    unsigned requests;  // that a call makes
};

using enum Request;

constexpr Way kWays[] = {
    // A write-ahead log from which everything is read and to which everything is added.
    {Journal::log, "log", set_of(read, write, sync, index_lock)},
    // A write-ahead log that each commit empties into the database.
    {Journal::checkpoint, "checkpoint", set_of(read, write, sync, truncate, file_size, index_lock)},
    // A journal of what was there before, as on a file system that cannot share memory.
    {Journal::rollback, "rollback", set_of(open, access, remove, read, write, sync, file_size, lock)},
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

/// Whether a result code is that of a refusal. Who never gets a lock of the index is told so in other words.
bool tells(int rc, const Refusal &refusal)
{
    return rc == (refusal.rc & 0xFF) || (rc == SQLITE_PROTOCOL && refusal.request == Request::index_lock);
}

enum class Span { once, call, close };

struct Case {
    Way way;
    Trouble trouble;
};

void PrintTo(const Case &each, std::ostream *out)
{
    *out << each.way.name << " " << each.trouble.name;
}

void PrintTo(const Trouble &trouble, std::ostream *out)
{
    *out << trouble.name;
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    for (const Way &way : kWays)
        for (const Trouble &trouble : kTroubles)
            if (way.requests & set_of(trouble.refusal.request)) all.push_back({way, trouble});
    return all;
}

// ---- The figures

struct Figures {
    long setups = 0;    // that make such a request
    long calls = 0;     // with a refusal in them
    long answered = 0;  // as if nothing had happened
    long failed = 0;    // and said so
    long commits = 0;   // failed
    long late = 0;      // failed commits that a process which dies then finds stored
};

struct Summary : testing::Environment {
    std::map<std::string, Figures> figures;
    void TearDown() override
    {
        Figures all;
        for (const auto &[name, each] : figures) {
            print(name, each);
            all.setups = std::max(all.setups, each.setups);
            all.calls += each.calls;
            all.answered += each.answered;
            all.failed += each.failed;
            all.commits += each.commits;
            all.late += each.late;
        }
        if (figures.size() > 1) print("all", all);
    }
    static void print(const std::string &name, const Figures &each)
    {
        printf(
            "%s: %ld requests refused in %ld set-ups: %ld calls succeeded, %ld failed, %ld lost their commit, %ld of "
            "which a process that died would have kept\n",
            name.c_str(), each.calls, each.setups, each.answered, each.failed, each.commits, each.late);
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
        const std::string root = path.substr(0, path.rfind('/'));
        qbdb_import_options options{};
        options.root = root.c_str();
        EXPECT_EQ(qbdb_set_import_options(qbdb, &options), 0);
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
        answer.outputs = text_of_outcome(prepared.call->outcome());
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

using FamilyCase = std::tuple<const Family *, Case>;

struct InputOutput : testing::TestWithParam<FamilyCase> {
    const Family &family = *std::get<const Family *>(GetParam());
    const Case tested = std::get<Case>(GetParam());
    const stress::Directory directory;  // in memory, where there is room for it
    FailingFiles files;
    const std::string path = directory.path + "/appliance.db";
    Reader reader{directory.path + "/copy.db", files.undisturbed()};
    std::map<Accounts, Files> appliances;
    std::map<Accounts, std::pair<std::string, std::string>> untouched;  // as they are, and after the next call
    const Files *start = nullptr;
    std::string on_disk;  // the database's file
    std::map<std::string, long> odd;
    Figures &figures = summary.figures[std::string(tested.way.name) + " " + tested.trouble.name];

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
        plug_in(directory.path, "vdb", "S4", 2);
        for (const Accounts accounts : {Accounts::local, Accounts::directory, Accounts::live}) {
            Files{}.put(template_path);
            qbdb_t *qbdb = nullptr;
            sqlite3 *db = nullptr;
            EXPECT_EQ(qbdb_open(template_path.c_str(), QBDB_OPEN_CREATE, "tank", &qbdb, &db, nullptr, 0), 0);
            for (const char *rows : {kPopulation, family.population})
                EXPECT_EQ(sqlite3_exec(db, rows, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
            set_accounts(db, accounts);
            Files open = Files::at(template_path);
            qbdb_close(qbdb);
            appliances[accounts] = tested.way.journal == Journal::log ? open : Files::at(template_path);
        }
    }

    /// The database that a set-up begins with, in its place.
    void put(const Trial &setup)
    {
        start = &appliances[setup.accounts];
        start->put(path, on_disk);
        on_disk = start->database;
    }

    /// What another process would read now.
    const std::string &stored()
    {
        Files now = Files::at(path, std::move(on_disk));
        const std::string &content = reader.content(now, *start);
        on_disk = std::move(now.database);
        return content;
    }

    /// The next call of a handle.
    static void expect_next_call_works(const Handle &handle)
    {
        ErrorInfo info{};
        EXPECT_EQ(setRegistryEntry(handle.qbdb, handle.db, "next", "1", &info), 0u) << info.message;
    }

    Reference refer(const Trial &setup)
    {
        Reference reference;
        auto &[before, before_and_next] = untouched[setup.accounts];
        if (before.empty()) {
            put(setup);
            before = stored();
            expect_next_call_works(Handle(path, tested.way.journal));
            before_and_next = stored();
        }
        reference.before = before;
        reference.before_and_next = before_and_next;
        put(setup);
        {
            Handle handle(path, tested.way.journal);
            files.start(tested.trouble.refusal, 0, false);
            reference.answer = handle.call(setup);
            files.stop();
            reference.requests = files.count(tested.trouble.refusal.request);
            for (unsigned i = 0; i < kRequests; i++)
                EXPECT_TRUE(files.count(static_cast<Request>(i)) == 0 || tested.way.requests & 1u << i) << i;
            EXPECT_EQ(reference.answer.rc, setup.code) << reference.answer.message;
            EXPECT_EQ(handle.failed_commits, 0);
            reference.after = stored();
            expect_next_call_works(handle);
        }
        reference.after_and_next = stored();
        for (const std::string &content : {reference.before, reference.after})
            EXPECT_EQ(content.find("DAMAGED"), std::string::npos);
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
            if (!tells(static_cast<int>(answer.rc), tested.trouble.refusal)) note(setup, answer, "begins with");
            return;
        }
        bool known;
        if (is_listed(family.silent, setup) && answer.code == 0) known = documents(operation, answer.rc);
        else if (operation.returns != QBOBJ_RETURNS_CODE)
            known = (answer.rc == 0xFFFFFFFF || (operation.returns == QBOBJ_RETURNS_ANSWER && answer.rc == 1) ||
                     (operation.returns == QBOBJ_RETURNS_TRUTH && answer.rc == 0)) &&
                    answer.code == 0;
        else if (answer.rc == 0 && is_listed(family.goes_on, setup)) known = answer.code == 5;
        else known = answer.rc == 5 && answer.code == 5 && !answer.message.empty() && documents(operation, 5);
        if (!known) note(setup, answer, "fails with");
    }

    void refuse(const Trial &setup, const Reference &reference, long nth, Span span)
    {
        SCOPED_TRACE(name_of(setup) + ", request " + std::to_string(nth) +
                     (span == Span::once   ? ", once"
                      : span == Span::call ? ", to the end of the call"
                                           : ", until closed"));
        put(setup);
        std::optional<Handle> handle;
        handle.emplace(path, tested.way.journal);
        files.start(tested.trouble.refusal, nth, span != Span::once);
        const Answer answer = handle->call(setup);
        if (span != Span::close) files.stop();
        EXPECT_TRUE(files.refused());
        const std::string &left = stored();  // by a process that dies now
        const bool worked = handle->worked;
        const bool commit_failed = handle->failed_commits > 0;
        if (span != Span::close) expect_next_call_works(*handle);
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
        if (answer.rc != expected.rc || answer.code != expected.code || answer.message != expected.message) {
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
        // Whole already when only the disk's word is missing that it holds it.
        const bool whole = tested.trouble.refusal.request == Request::sync && left == reference.after;
        EXPECT_TRUE(left == reference.before || whole);
        EXPECT_TRUE(closed == before || (span == Span::close && closed == after));
    }
};

TEST_P(InputOutput, EachFails)
{
    bool any_changes = false;
    for (const Trial &setup : family.trials) {
        const bool changes = operation_of(setup).changes;
        any_changes = any_changes || changes;
        if (!changes && tested.way.journal == Journal::rollback) continue;
        std::optional<ListFile> list;
        if (!strcmp(setup.operation, "checkUserList")) list.emplace().write(kUserList);
        const Reference reference = refer(setup);
        for (const Span span : {Span::once, Span::call, Span::close}) {
            // A call that changes nothing leaves nothing for closing to do.
            if (span == Span::close && (!changes || tested.way.journal == Journal::rollback)) continue;
            for (long n = 1; n <= reference.requests; n++) refuse(setup, reference, n, span);
        }
        figures.setups += reference.requests > 0;
    }
    if (any_changes) {
        EXPECT_GT(figures.calls, 0);
    }
    for (const auto &[what, times] : odd)
        if (std::none_of(family.odd_answers.begin(), family.odd_answers.end(),
                         [&](const Exempt &row) { return what.starts_with(row.what); }))
            ADD_FAILURE() << what << " (" << times << " times)";
}

INSTANTIATE_TEST_SUITE_P(, InputOutput, testing::Combine(testing::ValuesIn(families()), testing::ValuesIn(cases())),
                         [](const auto &info) {
                             const Case &tested = std::get<Case>(info.param);
                             return std::string(std::get<const Family *>(info.param)->name) + "_" + tested.way.name +
                                    "_" + tested.trouble.name;
                         });

// ---- Opening

/// What is found where a database is opened.
struct Found {
    const char *name;
    unsigned mode;
    bool log;   // the process before died
    bool file;  // there is a database
};

constexpr Found kFound[] = {
    {"closed", QBDB_OPEN_EXISTING, false, true},
    {"abandoned", QBDB_OPEN_EXISTING, true, true},
    {"closed, for reading", QBDB_OPEN_READONLY, false, true},
    {"abandoned, for reading", QBDB_OPEN_READONLY, true, true},
    {"nothing", QBDB_OPEN_CREATE, false, false},
};

struct Opening : testing::TestWithParam<Trouble> {
    const stress::Directory directory;
    FailingFiles files;
    const std::string path = directory.path + "/appliance.db";
    Reader reader{directory.path + "/copy.db", files.undisturbed()};
    std::map<std::string, Files> starts;
    Figures &figures = summary.figures[std::string("opening ") + GetParam().name];

    int open_database(unsigned mode, qbdb_t **qbdb, sqlite3 **db, std::string *why = nullptr) const
    {
        char text[256] = "";
        sqlite3_randomness(0, nullptr);
        const int rc = qbdb_open(path.c_str(), mode, "tank", qbdb, db, text, sizeof text);
        if (why) *why = text;
        return rc;
    }

    Files make(const Found &found) const
    {
        if (!found.file) return {};
        qbdb_t *qbdb = nullptr;
        sqlite3 *db = nullptr;
        Files{}.put(path);
        EXPECT_EQ(open_database(QBDB_OPEN_CREATE, &qbdb, &db), 0);
        EXPECT_EQ(sqlite3_exec(db, kPopulation, nullptr, nullptr, nullptr), SQLITE_OK);
        const Files open = Files::at(path);
        qbdb_close(qbdb);
        return found.log ? open : Files::at(path);
    }

    /// The database has to be usable, and to be what it would be without the failure.
    void expect_usable(const Found &found, const Files &start, const std::string &expected)
    {
        qbdb_t *qbdb = nullptr;
        sqlite3 *db = nullptr;
        std::string why;
        int rc = open_database(found.mode, &qbdb, &db, &why);
        if (found.mode == QBDB_OPEN_CREATE && rc == SQLITE_CANTOPEN)  // it was made whole before the failure
            rc = open_database(QBDB_OPEN_EXISTING, &qbdb, &db, &why);
        EXPECT_EQ(rc, 0) << why;
        if (rc == 0) {
            ErrorInfo info{};
            if (found.mode != QBDB_OPEN_READONLY) {
                EXPECT_EQ(setRegistryEntry(qbdb, db, "next", "1", &info), 0u);
            }
        }
        qbdb_close(qbdb);
        EXPECT_EQ(files.held(), 0);
        EXPECT_TRUE(reader.content(Files::at(path), start) == expected);
    }

    void refuse(const Found &found, const Files &start, const std::string &expected, long nth, bool on)
    {
        SCOPED_TRACE(std::string(found.name) + ", request " + std::to_string(nth) + (on ? " and all after it" : ""));
        start.put(path);
        qbdb_t *qbdb = nullptr;
        sqlite3 *db = nullptr;
        std::string why;
        files.start(GetParam().refusal, nth, on);
        const int rc = open_database(found.mode, &qbdb, &db, &why);
        files.stop();
        EXPECT_TRUE(files.refused());
        figures.calls++;
        (rc ? figures.failed : figures.answered)++;
        EXPECT_TRUE(rc == 0 || tells(rc, GetParam().refusal)) << rc << " " << why;
        EXPECT_EQ(rc == 0, qbdb != nullptr);
        EXPECT_EQ(rc == 0, db != nullptr);
        EXPECT_EQ(rc == 0, why.empty());
        EXPECT_EQ(rc == 0, files.held() > 0);
        qbdb_close(qbdb);
        expect_usable(found, start, expected);
    }
};

TEST_P(Opening, EachFails)
{
    for (const Found &found : kFound) {
        const Files &start = starts[found.name] = make(found);
        start.put(path);
        qbdb_t *qbdb = nullptr;
        sqlite3 *db = nullptr;
        files.start(GetParam().refusal, 0, false);
        EXPECT_EQ(open_database(found.mode, &qbdb, &db), 0);
        files.stop();
        const long requests = files.count(GetParam().refusal.request);
        qbdb_close(qbdb);
        start.put(path);
        if (found.mode == QBDB_OPEN_CREATE) {
            EXPECT_EQ(open_database(found.mode, &qbdb, &db), 0);
            qbdb_close(qbdb);
        }
        std::string expected = reader.content(Files::at(path), start);
        if (found.mode != QBDB_OPEN_READONLY) {
            EXPECT_EQ(open_database(QBDB_OPEN_EXISTING, &qbdb, &db), 0);
            ErrorInfo info{};
            EXPECT_EQ(setRegistryEntry(qbdb, db, "next", "1", &info), 0u);
            qbdb_close(qbdb);
            expected = reader.content(Files::at(path), start);
        }
        EXPECT_EQ(expected.find("DAMAGED"), std::string::npos);
        for (const bool on : {false, true}) {
            if (on && GetParam().refusal.rc == SQLITE_BUSY) continue;  // that is waiting until the time is over
            for (long n = 1; n <= requests; n++) refuse(found, start, expected, n, on);
        }
        figures.setups += requests > 0;
    }
    EXPECT_GT(figures.calls, 0);
}

/// Opening truncates nothing.
std::vector<Trouble> opening_troubles()
{
    std::vector<Trouble> all;
    for (const Trouble &trouble : kTroubles)
        if (trouble.refusal.request != Request::truncate) all.push_back(trouble);
    return all;
}

INSTANTIATE_TEST_SUITE_P(, Opening, testing::ValuesIn(opening_troubles()),
                         [](const auto &info) { return info.param.name; });

}  // namespace
// SPDX-License-Identifier: Apache-2.0
