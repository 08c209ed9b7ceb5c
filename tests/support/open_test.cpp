// Opening, creating, closing; the handle's pools.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;

std::string content_of(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

void raw_sql(const std::string &path, const char *statements)
{
    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    char *why = nullptr;
    EXPECT_EQ(sqlite3_exec(db, statements, nullptr, nullptr, &why), SQLITE_OK) << why;
    sqlite3_free(why);
    EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
}

struct Open : testing::Test {
    test::TemporaryDirectory directory;
    std::string path = directory.path + "/appliance.db";
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    char why[512] = "untouched";

    ~Open() override { qbdb_close(qbdb); }

    int open(unsigned mode, const char *volume = nullptr)
    {
        return qbdb_open(path.c_str(), mode, volume, &qbdb, &db, why, sizeof why);
    }
    void close()
    {
        qbdb_close(qbdb);
        qbdb = nullptr;
        db = nullptr;
    }
    void create(const char *volume = nullptr)
    {
        ASSERT_EQ(open(QBDB_OPEN_CREATE, volume), 0) << why;
        close();
    }
    std::string value(const std::string &query)
    {
        const char *text = nullptr;
        EXPECT_EQ(qbdb_sql_get_scaler_mprintf(qbdb, db, nullptr, "f", 1, &text, "%s", query.c_str()), 0);
        return text ? text : "NULL";
    }
    int exec(const char *statement) { return qbdb_sql_exec_mprintf(qbdb, db, nullptr, "f", 1, "%s", statement); }

    /// Every file in the directory with its size and a hash of its bytes; of the shared memory of open
    /// connections only that it is there.
    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> all;
        for (const auto &entry : fs::directory_iterator(directory.path)) {
            const std::string bytes = entry.is_regular_file() ? content_of(entry.path()) : "";
            const bool shared = entry.path().string().ends_with("-shm");
            all[entry.path().filename()] =
                shared ? "" : std::to_string(bytes.size()) + " " + std::to_string(std::hash<std::string>{}(bytes));
        }
        return all;
    }
    void expect_refusal(unsigned mode, int rc, const std::string &text)
    {
        SCOPED_TRACE("mode " + std::to_string(mode));
        const auto before = files();
        qbdb = reinterpret_cast<qbdb_t *>(1);
        db = reinterpret_cast<sqlite3 *>(1);
        strcpy(why, "untouched");
        EXPECT_EQ(open(mode), rc);
        EXPECT_EQ(qbdb, nullptr);
        EXPECT_EQ(db, nullptr);
        EXPECT_THAT(std::string(why), HasSubstr(text));
        EXPECT_EQ(files(), before);
    }
};

constexpr unsigned kModes[] = {QBDB_OPEN_EXISTING, QBDB_OPEN_CREATE, QBDB_OPEN_READONLY};

TEST_F(Open, CreatesWhatAFreshApplianceHolds)
{
    ASSERT_EQ(open(QBDB_OPEN_CREATE), 0) << why;
    EXPECT_STREQ(why, "untouched");
    EXPECT_EQ(qbdb->log_level, 2u);
    EXPECT_NE(qbdb->pool, nullptr);
    EXPECT_EQ(qbdb->request_pool, nullptr);
    EXPECT_EQ(value("SELECT group_concat(id || uname) FROM (SELECT * FROM `$user` WHERE id IN (0,96,98) ORDER BY id)"),
              "0root,96Quillbox,98admin");
    EXPECT_EQ(value("SELECT COUNT(*) FROM _volume"), "0");
    EXPECT_EQ(value("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(value("PRAGMA synchronous"), "2");
    EXPECT_EQ(value("PRAGMA user_version"), std::to_string(QBDB_SCHEMA_VERSION));
    EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
    close();
    EXPECT_EQ(files().size(), 1u) << "closing puts everything into the one file";
}

TEST_F(Open, CreatesAVolume)
{
    ASSERT_EQ(open(QBDB_OPEN_CREATE, "ta'nk"), 0) << why;
    EXPECT_EQ(value("SELECT id || '|' || lv_name FROM _volume"), "ta'nk|ta'nk");
    EXPECT_EQ(value("SELECT home_volume_id FROM account_default"), "ta'nk");
}

TEST_F(Open, CreatesInAnEmptyFile)
{
    write(path, "");
    create();
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0) << why;
}

TEST_F(Open, OpensAgain)
{
    create("tank");
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0) << why;
    ASSERT_EQ(exec("UPDATE account_default SET next_uid=4711"), 0);
    close();
    ASSERT_EQ(open(QBDB_OPEN_EXISTING, "other"), 0) << why;
    EXPECT_EQ(value("SELECT next_uid FROM account_default"), "4711");
    EXPECT_EQ(value("SELECT COUNT(*) FROM _volume WHERE id='other'"), "0");
    EXPECT_EQ(value("PRAGMA journal_mode"), "wal");
}

TEST_F(Open, ReadsOnly)
{
    create("tank");
    const std::string before = content_of(path);
    ASSERT_EQ(open(QBDB_OPEN_READONLY), 0) << why;
    EXPECT_EQ(value("SELECT id FROM _volume"), "tank");
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    EXPECT_EQ(value("SELECT id FROM _volume"), "tank");
    EXPECT_EQ(exec("DELETE FROM _volume"), 8);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "f", 1), 0u);
    close();
    EXPECT_TRUE(content_of(path) == before);
}

TEST_F(Open, ANameIsAFilesName)
{
    const std::string old = fs::current_path();
    fs::current_path(directory.path);
    for (const char *name : {"file:x?mode=memory", ":memory:", "plain", "a b%41'\"#"}) {
        SCOPED_TRACE(name);
        path = name;
        create("tank");
        EXPECT_TRUE(fs::is_regular_file(directory.path + "/" + name));
        EXPECT_EQ(open(QBDB_OPEN_EXISTING), 0) << why;
        close();
    }
    EXPECT_EQ(files().size(), 4u);
    fs::current_path(old);
}

// ---- Refusals: a code, a text, nothing touched

TEST_F(Open, RefusesNoSuchFile)
{
    expect_refusal(QBDB_OPEN_EXISTING, 14, path + ": no such database");
    expect_refusal(QBDB_OPEN_READONLY, 14, path + ": no such database");
}

TEST_F(Open, RefusesNoName)
{
    path = "";
    for (const unsigned mode : kModes) expect_refusal(mode, 14, "");
}

TEST_F(Open, RefusesAPathThatDoesNotExist)
{
    path = directory.path + "/no/such/place.db";
    for (const unsigned mode : kModes) expect_refusal(mode, 14, path + ": ");
    path = directory.path + "/" + std::string(5000, 'x');
    for (const unsigned mode : kModes) expect_refusal(mode, 14, "xxx");
    write(directory.path + "/file", "x");
    path = directory.path + "/file/x.db";
    for (const unsigned mode : kModes) expect_refusal(mode, 14, "Not a directory");
}

TEST_F(Open, RefusesAnEmptyFile)
{
    write(path, "");
    expect_refusal(QBDB_OPEN_EXISTING, 26, path + ": is not an appliance database");
    expect_refusal(QBDB_OPEN_READONLY, 26, path + ": is not an appliance database");
}

TEST_F(Open, RefusesOtherFiles)
{
    for (const std::string &bytes : {std::string("hello"), std::string(10000, 'x'), std::string(10000, '\0'),
                                     std::string("SQLite format 3"), std::string("SQLite format 3\0", 16)}) {
        write(path, bytes);
        for (const unsigned mode : kModes) expect_refusal(mode, 26, path + ": is not an appliance database");
    }
}

TEST_F(Open, RefusesOtherDatabases)
{
    raw_sql(path, "CREATE TABLE t (a); INSERT INTO t VALUES(1)");
    for (const unsigned mode : kModes) expect_refusal(mode, 26, path + ": is not an appliance database");
    raw_sql(path, "PRAGMA journal_mode=WAL; PRAGMA application_id=7; PRAGMA user_version=1; INSERT INTO t VALUES(1)");
    for (const unsigned mode : kModes) expect_refusal(mode, 26, path + ": is not an appliance database");
}

TEST_F(Open, RefusesANewerSchema)
{
    create();
    raw_sql(path, "PRAGMA user_version=2");
    for (const unsigned mode : kModes)
        expect_refusal(mode, 26, path + ": has schema version 2; this library reads version 1");
    raw_sql(path, "PRAGMA user_version=0");
    expect_refusal(QBDB_OPEN_EXISTING, 26, "has schema version 0; this library reads version 1");
}

TEST_F(Open, RefusesANewerSchemaThatIsStillInTheLog)
{
    create();
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "PRAGMA user_version=2", nullptr, nullptr, nullptr), SQLITE_OK);
    expect_refusal(QBDB_OPEN_EXISTING, 26, "has schema version 2");
    expect_refusal(QBDB_OPEN_READONLY, 26, "has schema version 2");
    sqlite3_close(other);
}

TEST_F(Open, RefusesToCreateOverAnApplianceDatabase)
{
    create("tank");
    expect_refusal(QBDB_OPEN_CREATE, 14, path + ": is an appliance database already");
    // A stray file of a journal's name does not make it an interrupted creation.
    write(path + "-journal", "stray");
    const std::string before = content_of(path);
    EXPECT_EQ(open(QBDB_OPEN_CREATE), 14);
    EXPECT_THAT(std::string(why), HasSubstr("is an appliance database already"));
    EXPECT_TRUE(content_of(path) == before);
}

TEST_F(Open, RefusesWhatIsNoFile)
{
    path = directory.path;
    for (const unsigned mode : kModes) expect_refusal(mode, 14, path + ": is a directory");
    path = directory.path + "/pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    for (const unsigned mode : kModes) expect_refusal(mode, 14, path + ": is not a file");
}

TEST_F(Open, RefusesAnUnknownMode)
{
    expect_refusal(3, 21, path + ": unknown way to open");
    create();
    expect_refusal(99, 21, path + ": unknown way to open");
}

TEST_F(Open, RefusesADamagedFile)
{
    create();
    const std::string whole = content_of(path);
    std::string damaged = whole;
    for (size_t i = 100; i < 4096; i++) damaged[i] = static_cast<char>(0xA5);
    write(path, damaged);
    for (const unsigned mode : {QBDB_OPEN_EXISTING, QBDB_OPEN_READONLY}) {
        EXPECT_EQ(open(mode), 11);
        EXPECT_THAT(std::string(why), HasSubstr(path + ": database disk image is malformed"));
        EXPECT_EQ(qbdb, nullptr);
        EXPECT_TRUE(content_of(path) == damaged);
    }
    // Cut short in the middle of the schema.
    write(path, whole.substr(0, 5000));
    EXPECT_EQ(open(QBDB_OPEN_EXISTING), 11);
    EXPECT_THAT(std::string(why), HasSubstr("malformed"));
    // Damage further on shows when it is read.
    damaged = whole;
    for (size_t i = whole.size() / 2; i < whole.size(); i++) damaged[i] = static_cast<char>(0xA5);
    write(path, damaged);
    const int rc = open(QBDB_OPEN_EXISTING);
    if (rc == 0) {
        const char *text = nullptr;
        const char *result = nullptr;
        const int read = qbdb_sql_get_scaler_mprintf(qbdb, db, &text, "f", 1, &result, "PRAGMA integrity_check");
        EXPECT_TRUE(read == 11 ? text != nullptr : result && strcmp(result, "ok") != 0);
    } else {
        EXPECT_EQ(rc, 11);
        EXPECT_THAT(std::string(why), HasSubstr("malformed"));
    }
}

/// Runs something as a user without rights in a process of its own; its answer is the exit status.
template <class Action>
int as_nobody(Action action)
{
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && seteuid(65534) != 0) _exit(250);
        _exit(action());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 251;
}

TEST_F(Open, RefusesWhereItMayNotWrite)
{
    create();
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(chmod(directory.path.c_str(), 0555), 0);
    const auto before = files();
    EXPECT_EQ(
        as_nobody([this] { return open(QBDB_OPEN_EXISTING) == 8 && strstr(why, "may not be written to") ? 0 : 1; }), 0);
    ASSERT_EQ(chmod(path.c_str(), 0400), 0);
    if (geteuid() == 0) {  // an owner may read it still
        EXPECT_EQ(as_nobody([this] { return open(QBDB_OPEN_EXISTING) == 14 && strlen(why) > path.size() ? 0 : 1; }), 0);
    }
    path = directory.path + "/fresh.db";
    EXPECT_EQ(as_nobody([this] { return open(QBDB_OPEN_CREATE) == 14 && strlen(why) > path.size() ? 0 : 1; }), 0);
    EXPECT_EQ(files(), before);
    ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
}

// ---- A process that dies while it creates

const sqlite3_io_methods *real_methods;
sqlite3_io_methods counting_methods;
sqlite3_vfs *real_vfs;
int steps_left;

void step()
{
    if (--steps_left == 0) _exit(9);
}

int counting_open(sqlite3_vfs *, const char *name, sqlite3_file *file, int flags, int *out)
{
    const int rc = real_vfs->xOpen(real_vfs, name, file, flags, out);
    if (!file->pMethods) return rc;
    if (!real_methods) {
        real_methods = file->pMethods;
        counting_methods = *real_methods;
        counting_methods.xWrite = [](sqlite3_file *f, const void *data, int size, sqlite3_int64 at) {
            step();
            return real_methods->xWrite(f, data, size, at);
        };
        counting_methods.xSync = [](sqlite3_file *, int) {
            step();  // nothing but the process dies here: what was written stays written
            return SQLITE_OK;
        };
        counting_methods.xTruncate = [](sqlite3_file *f, sqlite3_int64 size) {
            step();
            return real_methods->xTruncate(f, size);
        };
    }
    if (file->pMethods == real_methods) file->pMethods = &counting_methods;
    return rc;
}

int counting_delete(sqlite3_vfs *, const char *name, int sync)
{
    step();
    return real_vfs->xDelete(real_vfs, name, sync);
}

/// Creates a database in a process that dies at the n-th write. Answers whether it did.
bool die_while_creating(const std::string &path, int n)
{
    const pid_t child = fork();
    if (child == 0) {
        static sqlite3_vfs vfs;
        real_vfs = sqlite3_vfs_find(nullptr);
        vfs = *real_vfs;
        vfs.zName = "counting";
        vfs.xOpen = counting_open;
        vfs.xDelete = counting_delete;
        sqlite3_vfs_register(&vfs, 1);
        steps_left = n;
        qbdb_t *qbdb;
        sqlite3 *db;
        _exit(qbdb_open(path.c_str(), QBDB_OPEN_CREATE, "tank", &qbdb, &db, nullptr, 0));
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 9 || WEXITSTATUS(status) == 0)) << status;
    return WEXITSTATUS(status) == 9;
}

// ---- Who may read it: the database holds password hashes

unsigned mode_of(const std::string &path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

struct Private : Open {
    const mode_t before = umask(0);
    ~Private() override { umask(before); }
};

TEST_F(Private, AFreshDatabaseIsItsCreatorsAlone)
{
    ASSERT_EQ(open(QBDB_OPEN_CREATE), 0) << why;
    ASSERT_EQ(exec("UPDATE account_default SET next_uid=4711"), 0);
    for (const char *file : {"", "-wal", "-shm"}) EXPECT_EQ(mode_of(path + file), 0600u) << file;
}

TEST_F(Private, SoIsTheJournalOfItsCreation)
{
    ASSERT_TRUE(die_while_creating(path, 20));
    ASSERT_TRUE(fs::exists(path + "-journal"));
    EXPECT_EQ(mode_of(path), 0600u);
    EXPECT_EQ(mode_of(path + "-journal"), 0600u);
}

TEST_F(Private, AnEmptyFileKeepsItsModeAndItsJournalsTakeIt)
{
    write(path, "");
    ASSERT_EQ(chmod(path.c_str(), 0660), 0);
    ASSERT_EQ(open(QBDB_OPEN_CREATE), 0) << why;
    ASSERT_EQ(exec("UPDATE account_default SET next_uid=4711"), 0);
    for (const char *file : {"", "-wal", "-shm"}) EXPECT_EQ(mode_of(path + file), 0660u) << file;
}

TEST_F(Private, ALinkThatLeadsNowhereIsNotFollowed)
{
    const std::string target = directory.path + "/target.db";
    fs::create_symlink(target, path);
    EXPECT_EQ(open(QBDB_OPEN_CREATE), 14);
    EXPECT_THAT(std::string(why), HasSubstr(path + ": is a link that leads nowhere"));
    EXPECT_FALSE(fs::exists(target));
}

// ---- Reading a copy where nothing may be written: a backup, a snapshot

struct Copy : Open {
    ~Copy() override { chmod(directory.path.c_str(), 0755); }

    /// Leaves a database that anybody may read, in a folder that only its owner may write to.
    void put(const std::string &name)
    {
        path = directory.path + "/" + name;
        create("tank");
        ASSERT_EQ(chmod(path.c_str(), 0444), 0);
        ASSERT_EQ(chmod(directory.path.c_str(), 0555), 0);
    }
    /// Exit status of a stranger who opens it for reading: 0 done, else 100 and the result code.
    int read_by_stranger()
    {
        return as_nobody([this] {
            if (const int rc = open(QBDB_OPEN_READONLY)) return 100 + rc;
            return value("SELECT id FROM _volume") == "tank" && exec("DELETE FROM _volume") == 8 ? 0 : 1;
        });
    }
};

TEST_F(Copy, IsReadByWhoMayOnlyReadIt)
{
    for (const char *name : {"plain.db", "a b%41'\"#?mode=rwc&x", "file:x"}) {
        SCOPED_TRACE(name);
        put(name);
        const auto before = files();
        EXPECT_EQ(read_by_stranger(), 0);
        EXPECT_EQ(files(), before);
        ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
    }
}

TEST_F(Copy, IsReadByItsNameFromTheWorkingDirectoryAndThroughSlashes)
{
    put("copy.db");
    const std::string old = fs::current_path();
    fs::current_path(directory.path);
    path = "copy.db";
    EXPECT_EQ(read_by_stranger(), 0);
    fs::current_path(old);
    path = "//" + directory.path + "//copy.db";
    EXPECT_EQ(read_by_stranger(), 0);
}

TEST_F(Copy, IsReadByNobodyWhileAJournalLiesBesideIt)
{
    for (const char *journal : {"-wal", "-journal"}) {
        SCOPED_TRACE(journal);
        put("copy" + std::string(journal));
        ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
        write(path + journal, "changes that are not in the file yet");
        ASSERT_EQ(chmod(directory.path.c_str(), 0555), 0);
        EXPECT_EQ(as_nobody([this] {
                      return open(QBDB_OPEN_READONLY) == 14 && strstr(why, "a journal lies beside it") ? 0 : 1;
                  }),
                  0);
        ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
    }
}

TEST_F(Open, TheTextIsCutToFitAndMayBeLeftOut)
{
    char small[8] = "1234567";
    EXPECT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &qbdb, &db, small, sizeof small), 14);
    EXPECT_EQ(std::string(small), path.substr(0, 7));
    EXPECT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &qbdb, &db, small, 0), 14);
    EXPECT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &qbdb, &db, nullptr, 100), 14);
    ASSERT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_CREATE, nullptr, &qbdb, &db, nullptr, 0), 0);
}

TEST_F(Open, FailsInAFullPlace)
{
    // A limit on the size of files stands for a full disk.
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100000, 100000};
        setrlimit(RLIMIT_FSIZE, &limit);
        const int rc = open(QBDB_OPEN_CREATE);
        _exit((rc == 10 || rc == 13) && !qbdb && strlen(why) > path.size() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(open(QBDB_OPEN_CREATE), 0) << why << ": it can be created when there is room";
    EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
}

// ---- A creation that is interrupted

TEST_F(Open, ACreationIsWholeOrCanBeRepeated)
{
    int whole = 0;
    int repeated = 0;
    int n = 1;
    for (bool died = true; died; n += n < 20 ? 1 : n / 10) {
        SCOPED_TRACE("dies at write " + std::to_string(n));
        path = directory.path + "/" + std::to_string(n) + ".db";
        died = die_while_creating(path, n);
        if (open(QBDB_OPEN_EXISTING) == 0) {
            whole++;
        } else if (n % 2) {  // also without anybody trying to open it first
            repeated++;
            ASSERT_EQ(open(QBDB_OPEN_CREATE, "tank"), 0) << why;
        } else {
            path += "2";
            EXPECT_EQ(die_while_creating(path, n), true);
            repeated++;
            ASSERT_EQ(open(QBDB_OPEN_CREATE, "tank"), 0) << why;
        }
        EXPECT_EQ(value("SELECT id FROM _volume"), "tank");
        EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
        EXPECT_EQ(value("PRAGMA user_version"), std::to_string(QBDB_SCHEMA_VERSION));
        close();
    }
    EXPECT_GT(repeated, 10);
    EXPECT_GE(whole, 1);
}

// ---- Handles side by side, closing, pools

TEST_F(Open, LookingAtADatabaseLeavesTheLocksOfOtherHandlesAlone)
{
    create();
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0);
    EXPECT_EQ(value("SELECT COUNT(*) FROM _volume"), "0");
    const auto locked = [this] {
        return as_nobody([this] {
                   const int fd = ::open(path.c_str(), O_RDONLY);
                   struct flock lock {};
                   lock.l_type = F_WRLCK;
                   lock.l_start = 0x40000002;
                   lock.l_len = 510;
                   return fd >= 0 && fcntl(fd, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK ? 1 : 0;
               }) == 1;
    };
    ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    ASSERT_TRUE(locked()) << "a connection in WAL mode holds its lock all the time";
    qbdb_t *second = nullptr;
    sqlite3 *second_db = nullptr;
    EXPECT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_CREATE, nullptr, &second, &second_db, nullptr, 0), 14);
    EXPECT_TRUE(locked());
    EXPECT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &second, &second_db, nullptr, 0), 0);
    qbdb_close(second);
    EXPECT_TRUE(locked());
}

TEST_F(Open, ClosingRollsBack)
{
    create("tank");
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0);
    ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    ASSERT_EQ(exec("DELETE FROM _volume"), 0);
    close();
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0);
    EXPECT_EQ(value("SELECT COUNT(*) FROM _volume"), "1");
}

TEST_F(Open, ClosingRollsBackUnderAStatementThatIsStillOpen)
{
    create("tank");
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0);
    ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    ASSERT_EQ(exec("DELETE FROM _volume"), 0);
    sqlite3_stmt *left = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "SELECT * FROM `$user`", -1, &left, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(left), SQLITE_ROW);
    close();
    ASSERT_EQ(open(QBDB_OPEN_EXISTING), 0);
    EXPECT_EQ(value("SELECT COUNT(*) FROM _volume"), "1");
    EXPECT_EQ(exec("DELETE FROM _volume"), 0) << "no lock is left";
    sqlite3_finalize(left);
}

TEST(Close, OfNothingDoesNothing)
{
    qbdb_close(nullptr);
}

TEST_F(Open, RequestPool)
{
    ASSERT_EQ(open(QBDB_OPEN_CREATE), 0);
    qbdb_request_end(qbdb);
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    apr_pool_t *const pool = qbdb->request_pool;
    ASSERT_NE(pool, nullptr);
    EXPECT_NE(pool, qbdb->pool);
    EXPECT_EQ(apr_pool_parent_get(pool), qbdb->pool);
    bool cleaned = false;
    apr_pool_cleanup_register(
        pool, &cleaned,
        [](void *flag) {
            *static_cast<bool *>(flag) = true;
            return APR_SUCCESS;
        },
        apr_pool_cleanup_null);
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    EXPECT_TRUE(cleaned) << "beginning again empties the pool";
    EXPECT_EQ(qbdb->request_pool, pool);
    qbdb_request_end(qbdb);
    EXPECT_EQ(qbdb->request_pool, nullptr);
    qbdb_request_end(qbdb);
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);  // and closing the handle frees it
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
