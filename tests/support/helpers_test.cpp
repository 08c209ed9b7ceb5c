// Small helpers, the log, the importer and the service hook.
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <thread>

#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

/// What the kernel gives as random bytes, when a test says so.
struct Kernel {
    std::optional<uint32_t> answer;
    size_t size = sizeof(uint32_t);
    int interruptions = 0;
    int error = 0;
    int calls = 0;
    unsigned flags = 77;
} kernel;

}  // namespace

// This stands before the C library's own for the whole program.
extern "C" ssize_t getrandom(void *bytes, size_t size, unsigned flags)
{
    kernel.calls++;
    kernel.flags = flags;
    if (kernel.interruptions > 0 && kernel.interruptions--) errno = EINTR;
    else errno = kernel.error;
    if (errno) return -1;
    if (!kernel.answer) return syscall(SYS_getrandom, bytes, size, flags);
    memcpy(bytes, &*kernel.answer, std::min(size, kernel.size));
    return static_cast<ssize_t>(std::min(size, kernel.size));
}

namespace {

struct Helpers : test::Database {
    std::string normal(const char *path)
    {
        const char *made = qbdb_normalize_smb_path(qbdb, path);
        return made ? made : "(null)";
    }
    std::vector<std::string> items(const char *csv)
    {
        std::vector<std::string> all;
        char **array = qbdb_csv_to_array(qbdb, csv);
        EXPECT_NE(array, nullptr);
        for (; array && *array; array++) all.emplace_back(*array);
        return all;
    }
};

TEST_F(Helpers, SmbPathsAreNormalised)
{
    const struct {
        const char *path;
        const char *normal;
    } cases[] = {{nullptr, "(null)"},
                 {"", ""},
                 {"share", "share"},
                 {"\\\\host\\share\\a b", "/host/share/a b"},
                 {"//h///s//", "/h/s/"},
                 {"a\\/\\/b", "a/b"},
                 {"/", "/"},
                 {"\\", "/"},
                 {"a/b", "a/b"},
                 {"\xC3\xA4\\\\x", "\xC3\xA4/x"}};
    for (const auto &each : cases) EXPECT_EQ(normal(each.path), each.normal);
    EXPECT_EQ(normal(normal("\\\\a\\\\b\\").c_str()), "/a/b/") << "twice is the same as once";
}

TEST_F(Helpers, DaysOfTheWeekConvertBothWays)
{
    for (int32_t days = 0; days < 128; days++) {
        const char *text = qbdb_i_to_dow(qbdb, days);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(qbdb_dow_to_i(text), days) << text;
    }
    EXPECT_STREQ(qbdb_i_to_dow(qbdb, 0), "");
    EXPECT_STREQ(qbdb_i_to_dow(qbdb, 1), "Sun");
    EXPECT_STREQ(qbdb_i_to_dow(qbdb, 127), "Sun,Mon,Tue,Wed,Thu,Fri,Sat");
    EXPECT_STREQ(qbdb_i_to_dow(qbdb, 0x100 | 2), "Mon");
    EXPECT_STREQ(qbdb_i_to_dow(qbdb, -1), "Sun,Mon,Tue,Wed,Thu,Fri,Sat");
}

TEST_F(Helpers, DaysOfTheWeekAreReadLeniently)
{
    const struct {
        const char *text;
        int32_t days;
    } cases[] = {{nullptr, 0},
                 {"", 0},
                 {",", 0},
                 {"never", 0},
                 {"Mond", 0},
                 {"Mon,Wed", 10},
                 {" mon , WED ,", 10},
                 {"Monday,sat", 66},
                 {"Mon,Mon", 2},
                 {"x,Fri,y", 32},
                 {"Mon Wed", 0},
                 {"2", 0}};
    for (const auto &each : cases) EXPECT_EQ(qbdb_dow_to_i(each.text), each.days) << each.text;
}

TEST_F(Helpers, ListsAreSplit)
{
    EXPECT_THAT(items(nullptr), IsEmpty());
    EXPECT_THAT(items(""), IsEmpty());
    EXPECT_THAT(items(" , ,\t,"), IsEmpty());
    EXPECT_THAT(items("a"), ElementsAre("a"));
    EXPECT_THAT(items(" 10.0.0.1 ,, b c\r\n,d,"), ElementsAre("10.0.0.1", "b c", "d"));
    std::string many = "x";
    for (int i = 1; i < 5000; i++) many += ",x";
    EXPECT_EQ(items(many.c_str()).size(), 5000u);
}

TEST_F(Helpers, RandomNumbersDiffer)
{
    std::set<uint32_t> seen;
    uint32_t ones = 0;
    uint32_t zeros = 0;
    for (int i = 0; i < 1000; i++) {
        const uint32_t number = qbdb_rand();
        seen.insert(number);
        ones |= number;
        zeros |= ~number;
    }
    EXPECT_GT(seen.size(), 990u);
    EXPECT_EQ(ones, UINT32_MAX) << "every bit is used";
    EXPECT_EQ(zeros, UINT32_MAX);
}

TEST_F(Helpers, RandomNumbersAreTheKernels)
{
    kernel = {};
    kernel.answer = 0xA5C30F96;
    EXPECT_EQ(qbdb_rand(), 0xA5C30F96u);
    EXPECT_EQ(kernel.calls, 1);
    EXPECT_EQ(kernel.flags, 0u) << "waits until the kernel has collected enough, from the source that never repeats";
    kernel.interruptions = 3;
    EXPECT_EQ(qbdb_rand(), 0xA5C30F96u);
    EXPECT_EQ(kernel.calls, 5) << "an interrupted call is made again";
    kernel = {};
}

using HelpersDeathTest = Helpers;

TEST_F(HelpersDeathTest, NoRandomNumberIsMadeUp)
{
    for (const int error : {ENOSYS, EPERM, EIO}) {
        kernel.error = error;
        EXPECT_EXIT(qbdb_rand(), testing::KilledBySignal(SIGABRT), "") << error;
    }
    kernel.error = 0;
    kernel.answer = 7;
    kernel.size = 3;
    EXPECT_EXIT(qbdb_rand(), testing::KilledBySignal(SIGABRT), "") << "part of a number";
    kernel = {};
}

// ---- Space figures

struct Space : Helpers {
    std::string folder = directory.path + "/data";
    Space() { fs::create_directories(folder + "/sub"); }
    void file(const std::string &name, size_t size) const
    {
        std::ofstream(folder + "/" + name) << std::string(size, 'x') << std::flush;
    }
    uint64_t bytes(const std::string &dataset, const char *attribute = "usedbydataset")
    {
        unsigned long value = 0;
        EXPECT_EQ(qbdb_fs_get_attr_scanf(qbdb, dataset.c_str(), attribute, "%lu", &value), 0) << dataset;
        return value;
    }
};

TEST_F(Space, OfAFolderIsAddedUp)
{
    const uint64_t empty = bytes(folder);
    file("a", 100000);
    const uint64_t one = bytes(folder);
    EXPECT_GE(one, empty + 100000);
    EXPECT_LT(one, empty + 100000 + 65536);
    file("sub/b", 300000);
    const uint64_t two = bytes(folder);
    EXPECT_GE(two, one + 300000);
    EXPECT_LT(two, one + 300000 + 65536);
    EXPECT_EQ(bytes(folder.substr(1)), two) << "without the leading slash";
    EXPECT_EQ(bytes(folder, "used"), two);
    ASSERT_EQ(link((folder + "/a").c_str(), (folder + "/sub/a").c_str()), 0);
    EXPECT_NEAR(static_cast<double>(bytes(folder)), static_cast<double>(two), 1) << "a second name is no second file";
    ASSERT_EQ(symlink("/", (folder + "/link").c_str()), 0);
    EXPECT_LT(bytes(folder), two + 65536) << "links are not followed";
    EXPECT_GE(bytes(folder + "/a"), 50000u) << "a file's own";
}

TEST_F(Space, OfAFileSystemIsItsOwnFigure)
{
    struct statvfs before;
    struct statvfs after;
    ASSERT_EQ(statvfs("/", &before), 0);
    const uint64_t used = bytes("/");
    ASSERT_EQ(statvfs("/", &after), 0);
    const auto used_of = [](const struct statvfs &space) {
        return static_cast<double>(space.f_blocks - space.f_bfree) * static_cast<double>(space.f_frsize);
    };
    EXPECT_NEAR(static_cast<double>(used), used_of(before), std::abs(used_of(after) - used_of(before)) + 64e6);
    ASSERT_EQ(statvfs(folder.c_str(), &before), 0);
    const uint64_t available = bytes(folder, "available");
    EXPECT_NEAR(static_cast<double>(available),
                static_cast<double>(before.f_bavail) * static_cast<double>(before.f_frsize), 64e6);
}

TEST_F(Space, StaysAsItWasOnFailure)
{
    unsigned long value = 77;
    const std::string long_name(5000, 'x');
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, "/no/such/place", "usedbydataset", "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, "/no/such/place", "available", "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, folder.c_str(), "colour", "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, folder.c_str(), nullptr, "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, nullptr, "used", "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, "", "used", "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, long_name.c_str(), "used", "%lu", &value), 0);
    EXPECT_NE(qbdb_fs_get_attr_scanf(qbdb, folder.c_str(), "used", "x%lu", &value), 0);
    EXPECT_EQ(value, 77u);
    rlimit old;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit none{0, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int rc = qbdb_fs_get_attr_scanf(qbdb, folder.c_str(), "used", "%lu", &value);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &old), 0);
    EXPECT_NE(rc, 0) << "part of a tree is no answer";
    EXPECT_EQ(value, 77u);
}

// ---- Snapshot folders

TEST_F(Space, SnapshotsAreFoundWhereTheyAre)
{
    for (const char *place : {"/.snapshot/", "/.snapshots/", "/.zfs/snapshot/"}) {
        const char *result = nullptr;
        EXPECT_NE(snapshot_get_path(folder.c_str(), "s1", &result), 0);
        EXPECT_EQ(result, nullptr);
        fs::create_directories(folder + place + "s1");
        EXPECT_EQ(snapshot_get_path(folder.c_str(), "s1", &result), 0);
        EXPECT_EQ(std::string(result ? result : "(none)"), folder + place + "s1");
        fs::remove_all(folder + place);
    }
}

TEST_F(Space, SnapshotsThatAreNone)
{
    fs::create_directories(folder + "/.snapshot/a/b");
    file(".snapshot/file", 1);
    const std::string long_name(5000, 'x');
    for (const char *name :
         {static_cast<const char *>(nullptr), "", ".", "..", "a/b", "../sub", "file", "missing", long_name.c_str()}) {
        const char *result = "old";
        EXPECT_NE(snapshot_get_path(folder.c_str(), name, &result), 0) << name;
        EXPECT_EQ(result, nullptr);
    }
    const char *result = "old";
    EXPECT_NE(snapshot_get_path(nullptr, "a", &result), 0);
    EXPECT_EQ(result, nullptr);
}

TEST_F(Space, SnapshotPathsBelongToTheirThread)
{
    fs::create_directories(folder + "/.snapshot/a");
    fs::create_directories(folder + "/.snapshot/b");
    const char *result = nullptr;
    ASSERT_EQ(snapshot_get_path(folder.c_str(), "a", &result), 0);
    std::thread([this] {
        const char *other = nullptr;
        EXPECT_EQ(snapshot_get_path(folder.c_str(), "b", &other), 0);
    }).join();
    EXPECT_EQ(std::string(result), folder + "/.snapshot/a");
}

// ---- The log

TEST_F(Helpers, TheLogHookReceivesEachLine)
{
    qbdb_log(qbdb, "a.cpp", 12, 2, 1, "%s %d\n", "text", 5);
    qbdb_log(qbdb, "b.cpp", 13, 5, 0, "plain");
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].file, "a.cpp");
    EXPECT_EQ(log[0].line, 12u);
    EXPECT_EQ(log[0].level, 2u);
    EXPECT_EQ(log[0].flag, 1u);
    EXPECT_EQ(log[0].text, "text 5\n");
    EXPECT_EQ(log[1].text, "plain");
    qbdb->log_level = 0;
    qbdb_log(qbdb, "b.cpp", 14, 5, 0, "not filtered");
    EXPECT_EQ(log.size(), 3u);
}

TEST_F(Helpers, LogLinesMayBeLong)
{
    for (const size_t size : {1022u, 1023u, 1024u, 1025u, 100000u}) {
        log.clear();
        const std::string text(size, 'x');
        qbdb_log(qbdb, "a.cpp", 1, 2, 0, "%s%s", text.c_str(), "!");
        ASSERT_EQ(log.size(), 1u);
        EXPECT_TRUE(log[0].text == text + "!") << size;
    }
}

TEST_F(Helpers, ALineThatCannotBeFormattedIsEmpty)
{
    const wchar_t wrong[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    qbdb_log(qbdb, "a.cpp", 1, 2, 0, "%ls", wrong);
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].text, "");
}

TEST_F(Helpers, TheDefaultSinkIsStandardError)
{
    qbdb_set_log_hook(qbdb, nullptr, nullptr);
    testing::internal::CaptureStderr();
    qbdb_log(qbdb, "a.cpp", 12, 2, 1, "failed %d", 5);
    qbdb_log(qbdb, "a.cpp", 13, 4, 0, "ended\n");
    qbdb_log(qbdb, "a.cpp", 14, 4, 0, "%s", "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a.cpp:12 <2> failed 5\na.cpp:13 <4> ended\na.cpp:14 <4> \n");
}

// ---- Importers and services

struct Called {
    std::vector<std::string> calls;
    int rc = 0;
    static int import(void *self, qbdb_t *qbdb, sqlite3 *db, int selector)
    {
        return static_cast<Called *>(self)->note(qbdb, db, std::to_string(selector));
    }
    static int service(void *self, qbdb_t *qbdb, sqlite3 *db, const char *protocol)
    {
        return static_cast<Called *>(self)->note(qbdb, db, protocol);
    }
    int note(qbdb_t *qbdb, sqlite3 *db, const std::string &what)
    {
        calls.push_back(what);
        return rc ? rc
                  : qbdb_sql_exec_mprintf(qbdb, db, nullptr, "f", 1, "INSERT INTO tag_names VALUES(%Q)", what.c_str());
    }
};

TEST_F(Helpers, ImportersAndServicesAreHooks)
{
    EXPECT_EQ(qbdb_import_nolock(qbdb, db, 1), 0) << "nothing known by this number";
    EXPECT_EQ(qbdb_service_update_setting_by_share(qbdb, db, "cifs"), 0);
    EXPECT_THAT(take_statements(), IsEmpty());
    sql("CREATE TABLE tag_names (a)");
    Called called;
    qbdb_set_import_hook(qbdb, Called::import, &called);
    qbdb_set_service_hook(qbdb, Called::service, &called);
    EXPECT_EQ(qbdb_import_nolock(qbdb, db, QBDB_IMPORT_DISKS), 0);
    EXPECT_EQ(qbdb_hf_stats_import(qbdb, db), 0);
    EXPECT_EQ(qbdb_service_update_setting_by_share(qbdb, db, "ftp"), 0);
    EXPECT_THAT(called.calls, ElementsAre("14", "15", "ftp"));
    EXPECT_THAT(rows("SELECT a FROM tag_names"), ElementsAre("14", "15", "ftp"));
    called.rc = 9;
    EXPECT_EQ(qbdb_import_nolock(qbdb, db, 1), 9);
    EXPECT_EQ(qbdb_hf_stats_import(qbdb, db), 9);
    EXPECT_EQ(qbdb_service_update_setting_by_share(qbdb, db, "http"), 9);
    qbdb_set_import_hook(qbdb, nullptr, nullptr);
    qbdb_set_service_hook(qbdb, nullptr, nullptr);
    EXPECT_EQ(qbdb_import_nolock(qbdb, db, 1), 0);
    EXPECT_EQ(qbdb_service_update_setting_by_share(qbdb, db, "http"), 0);
    EXPECT_EQ(called.calls.size(), 6u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
