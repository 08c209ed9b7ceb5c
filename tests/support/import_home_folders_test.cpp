// What home folders use, beside what du and btrfs say of the same folders.
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "fixture/files.h"
#include "fixture/fixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct ImportHomes : test::Database {
    fs::path home = fs::path(directory.path) / "home";
    qbdb_import_options options{};

    ImportHomes() { options.root = directory.path.c_str(); }

    void user(int id, const std::string &path)
    {
        sql("INSERT INTO `$user` (id,uname,home,group_id,is_privileged) VALUES(" + std::to_string(id) + ",'u" +
            std::to_string(id) + "','" + path + "',99,0)");
    }
    /// A file of so many bytes in a folder of a home.
    void put(const std::string &name, size_t size) const
    {
        fs::create_directories((home / name).parent_path());
        std::ofstream(home / name) << std::string(size, 'x');
    }
    int import()
    {
        sql("BEGIN");
        const int rc = qbdb_hf_stats_import(qbdb, db);
        sql("COMMIT");
        return rc;
    }
    std::vector<std::string> used() const
    {
        return rows("SELECT user_id,used FROM _hf_zfs_stat WHERE user_id>=100 ORDER BY user_id");
    }
    static std::string du(const fs::path &folder)
    {
        const std::string output = test::run("du -sx --block-size=1 '" + folder.string() + "'").output;
        return output.substr(0, output.find('\t'));
    }
};

TEST_F(ImportHomes, CountsAsDuDoes)
{
    put("anna/letter", 10000);
    put("anna/deep/er/and/deeper/film", 3000000);
    put("anna/empty", 0);
    fs::create_hard_link(home / "anna/letter", home / "anna/deep/again");
    fs::create_hard_link(home / "anna/letter", home / "anna/deep/and again");
    put("bert/own", 50000);
    fs::create_directory_symlink(home / "bert", home / "anna/to bert");
    fs::create_symlink("/etc/passwd", home / "anna/to a file");
    ASSERT_EQ(truncate((home / "bert/own").c_str(), 1 << 30), 0) << "a hole uses nothing";
    ASSERT_EQ(mkfifo((home / "anna/pipe").c_str(), 0600), 0) << "must not wait for a writer";
    user(100, "/home/anna");
    user(101, "/home/bert");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|" + du(home / "anna"), "101|" + du(home / "bert")));
    EXPECT_GT(std::stoull(value("SELECT used FROM _hf_zfs_stat WHERE user_id=100")), 3010000u);
    put("bert/more", 200000);
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), testing::Contains("101|" + du(home / "bert"))) << "brought up to date";
    uint64_t bytes = 0;
    ASSERT_EQ(qbobj_getUserHomeFolderTotalConsumedInByte(qbdb, db, &bytes, &err), 0u);
    EXPECT_EQ(bytes, std::stoull(du(home / "anna")) + std::stoull(du(home / "bert")));
}

TEST_F(ImportHomes, ManyNamesOfManyFilesCountOnce)
{
    for (int i = 0; i < 300; i++) {
        put("anna/" + std::to_string(i), 5000);
        fs::create_hard_link(home / "anna" / std::to_string(i), home / "anna" / ("name " + std::to_string(i)));
    }
    user(100, "/home/anna");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|" + du(home / "anna")));
}

TEST_F(ImportHomes, WhoHasAHomeFolder)
{
    put("anna/a", 5000);
    put("gone/a", 5000);
    user(100, "/home/anna");
    user(101, "/home/anna");
    user(102, "/home/not there");
    user(103, "relative");
    user(104, "/home/gone");
    sql("UPDATE `$user` SET is_privileged=-1 WHERE id=104; INSERT INTO _hf_zfs_stat VALUES(104,77),(4711,78),(102,79)");
    ASSERT_EQ(import(), 0);
    const std::string anna = du(home / "anna");
    EXPECT_THAT(used(), ElementsAre("100|" + anna, "101|" + anna, "102|0"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM _hf_zfs_stat WHERE user_id=0"), "0") << "root has none";
    EXPECT_EQ(value("SELECT used FROM _hf_zfs_stat WHERE user_id=98"), "0") << "the administrator has one";
}

TEST_F(ImportHomes, AHomeThatIsALinkOrAFileKeepsItsFigure)
{
    put("anna/a", 5000);
    fs::create_directory_symlink(home / "anna", home / "bert");
    put("cora", 5000);
    user(100, "/home/bert");
    user(101, "/home/cora");
    sql("INSERT INTO _hf_zfs_stat VALUES(100,11),(101,12)");
    log.clear();
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|11", "101|12"));
    EXPECT_THAT(logged(2), ElementsAre(HasSubstr("The home folder /home/bert is not measured. "),
                                       HasSubstr("The home folder /home/cora is not measured. ")));
}

TEST_F(ImportHomes, AFolderBeyondTheBoundKeepsItsFigure)
{
    for (int i = 0; i < 20; i++) put("anna/" + std::to_string(i), 10);
    for (int i = 0; i < 5; i++) put("bert/" + std::to_string(i), 10);
    user(100, "/home/anna");
    user(101, "/home/bert");
    sql("INSERT INTO _hf_zfs_stat VALUES(100,11)");
    options.home_entries = 19;
    ASSERT_EQ(qbdb_set_import_options(qbdb, &options), 0);
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|11", "101|" + du(home / "bert")));
    EXPECT_THAT(logged(2), ElementsAre("The home folder /home/anna is not measured. It has too many files.\n"));
    options.home_entries = 20;
    ASSERT_EQ(qbdb_set_import_options(qbdb, &options), 0);
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), testing::Contains("100|" + du(home / "anna")));
}

TEST_F(ImportHomes, FoldersTooDeepInEachOther)
{
    fs::path deep = "anna";
    for (int i = 0; i < 255; i++) deep /= "d";
    put(deep / "file", 5000);
    user(100, "/home/anna");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|" + du(home / "anna")));
    sql("UPDATE _hf_zfs_stat SET used=11");
    put(deep / "d/file", 5000);
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|11"));
    EXPECT_THAT(logged(2), ElementsAre("The home folder /home/anna is not measured. Its folders lie too deep in each "
                                       "other.\n"));
}

TEST_F(ImportHomes, WhenTheTimeIsUpTheNextImportGoesOn)
{
    for (int i = 0; i < 20000; i++) put("anna/" + std::to_string(i), 0);
    put("bert/a", 5000);
    user(100, "/home/anna");
    user(101, "/home/bert");
    options.home_milliseconds = 1;
    ASSERT_EQ(qbdb_set_import_options(qbdb, &options), 0);
    sql("UPDATE `$user` SET home=NULL WHERE id=98");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), IsEmpty());
    EXPECT_THAT(logged(2), ElementsAre("The home folder /home/anna is not measured. The time is up.\n"));
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("101|" + du(home / "bert"))) << "it began behind the folder that takes too long";
    options.home_milliseconds = 0;
    ASSERT_EQ(qbdb_set_import_options(qbdb, &options), 0);
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|" + du(home / "anna"), "101|" + du(home / "bert")));
}

TEST_F(ImportHomes, AnUnreadableFolderKeepsItsFigure)
{
    put("anna/closed/a", 5000);
    fs::permissions(home / "anna/closed", fs::perms::none);
    constexpr auto kOpen =
        fs::perms::others_exec | fs::perms::others_read | fs::perms::group_exec | fs::perms::group_read;
    fs::permissions(directory.path, kOpen, fs::perm_options::add);
    user(100, "/home/anna");
    sql("INSERT INTO _hf_zfs_stat VALUES(100,11)");
    // Nothing is unreadable to root.
    const uid_t self = geteuid();
    ASSERT_EQ(seteuid(self == 0 ? 65534 : self), 0);
    const int rc = import();
    ASSERT_EQ(seteuid(self), 0);
    fs::permissions(home / "anna/closed", fs::perms::owner_all);
    EXPECT_EQ(rc, 0);
    EXPECT_THAT(used(), ElementsAre("100|11"));
    EXPECT_THAT(logged(2), ElementsAre("The home folder /home/anna is not measured. Permission denied\n"));
}

TEST_F(ImportHomes, FailingStatementsFailTheImport)
{
    put("anna/a", 5000);
    user(100, "/home/anna");
    for (int nth = 1; nth <= 4; nth++) {
        const std::string before = content();
        sql("BEGIN");
        fail_statement(nth, 13);
        EXPECT_EQ(qbdb_hf_stats_import(qbdb, db), 13) << nth;
        fail_statement(0);
        sql("ROLLBACK");
        EXPECT_EQ(content(), before);
    }
    options.root = "/does/not/exist";
    ASSERT_EQ(qbdb_set_import_options(qbdb, &options), 0);
    EXPECT_NE(qbdb_hf_stats_import(qbdb, db), 0);
}

/// A file system in a file, mounted below the test's directory.
struct Mounted {
    fs::path at;
    std::string why_not;
    Mounted(const fs::path &directory, const std::string &command) : at(directory)
    {
        fs::create_directories(at);
        const test::Outcome outcome = test::run(command);
        if (outcome.status != 0) why_not = outcome.output;
    }
    ~Mounted()
    {
        if (why_not.empty()) umount2(at.c_str(), MNT_DETACH);
    }
    Mounted(const Mounted &) = delete;
    Mounted &operator=(const Mounted &) = delete;
};

TEST_F(ImportHomes, OtherFileSystemsAreNotEntered)
{
    put("anna/a", 5000);
    const fs::path at = home / "anna/mounted";
    fs::create_directories(at);
    const Mounted mounted(at, "mount -t tmpfs none '" + at.string() + "' 2>&1");
    if (!mounted.why_not.empty()) GTEST_SKIP() << "nothing can be mounted here: " << mounted.why_not;
    put("anna/mounted/large", 1 << 20);
    user(100, "/home/anna");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|" + du(home / "anna")));
    EXPECT_LT(std::stoull(value("SELECT used FROM _hf_zfs_stat WHERE user_id=100")), 1u << 20);
}

TEST_F(ImportHomes, ASubvolumeUnderQuotaIsAskedOfBtrfs)
{
    const std::string image = directory.path + "/image";
    std::ofstream(image).close();
    ASSERT_EQ(truncate(image.c_str(), 256 << 20), 0);
    const Mounted mounted(
        home, "mkfs.btrfs -q '" + image + "' 2>&1 && mount -o loop '" + image + "' '" + home.string() + "' 2>&1");
    if (!mounted.why_not.empty()) GTEST_SKIP() << "no btrfs can be mounted here: " << mounted.why_not;
    const auto shell = [&](const std::string &command) {
        const test::Outcome outcome = test::run("cd '" + home.string() + "' && " + command + " 2>&1");
        EXPECT_EQ(outcome.status, 0) << outcome.output;
        return outcome.output;
    };
    shell("btrfs subvolume create anna && mkdir bert && btrfs quota enable . && (btrfs quota rescan -w . || true)");
    put("anna/a", 3000000);
    put("bert/a", 1000000);
    shell("btrfs subvolume snapshot anna bert/of_anna && sync && btrfs filesystem sync .");
    user(100, "/home/anna");
    user(101, "/home/bert");
    ASSERT_EQ(import(), 0);
    const std::string id = shell("btrfs subvolume list . | awk '$NF==\"anna\" {printf \"%s\", $2}'");
    const std::string referenced = shell("btrfs qgroup show --raw . | awk '$1==\"0/" + id + "\" {printf \"%s\", $2}'");
    EXPECT_GE(std::stoull(referenced), 3000000u);
    EXPECT_THAT(used(), ElementsAre("100|" + referenced, "101|" + du(home / "bert"))) << "bert's is a plain folder";
    shell("btrfs quota disable .");
    ASSERT_EQ(import(), 0);
    EXPECT_THAT(used(), ElementsAre("100|" + du(home / "anna"), "101|" + du(home / "bert")));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
