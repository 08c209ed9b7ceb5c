// Listing subvolumes by means of the tool: how it is called, what becomes of its output, what when it fails.
#include "subvolumes/tool.h"

#include <sys/resource.h>
#include <unistd.h>

#include "fixture/allocations.h"
#include "fixture/files.h"

using subvolumes::Paths;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A directory with a program "btrfs" that notes its arguments, one a line, and runs a piece of shell.
struct Tool : subvolumes::Volumes {
    const std::string bin = directory.path + "/bin";

    Tool()
    {
        mkdir(bin.c_str(), 0700);
        path.set(bin + ":" + path.before);
    }
    void make(const std::string &script, mode_t mode = 0700) const
    {
        const std::string file = bin + "/btrfs";
        std::ofstream(file) << "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$@\" >> '" + directory.path + "/arguments'\n" +
                                   script + "\n";
        chmod(file.c_str(), mode);
    }
    /// A program with these subvolumes, the second half of them snapshots.
    void make_volume() const
    {
        make(
            "line() { echo \"ID 256 gen 7 top level 5 path $1\"; }\n"
            "[ \"$3\" = -r ] || { line media; line photos; }\nline snap1; line snap2");
    }
    std::vector<std::string> take_arguments() const
    {
        const std::string file = directory.path + "/arguments";
        if (access(file.c_str(), F_OK) != 0) return {};
        auto lines = test::lines_of(test::read_file(file));
        unlink(file.c_str());
        return lines;
    }
};

TEST_F(Tool, ListsAllWithTheRootLast)
{
    make_volume();
    EXPECT_EQ(full("tank"), (Paths{"/tank/media", "/tank/photos", "/tank/snap1", "/tank/snap2", "/tank"}));
    EXPECT_THAT(take_arguments(), ElementsAre("3", "subvolume", "list", "/tank/"));
}

TEST_F(Tool, ListsSnapshotsWithoutTheRoot)
{
    make_volume();
    EXPECT_EQ(snapshots("tank"), (Paths{"/tank/snap1", "/tank/snap2"}));
    EXPECT_THAT(take_arguments(), ElementsAre("4", "subvolume", "list", "-r", "/tank/"));
}

TEST_F(Tool, ListsDataInTheOrderOfTheFullList)
{
    make_volume();
    EXPECT_EQ(data("tank"), (Paths{"/tank/media", "/tank/photos", "/tank"}));
    EXPECT_THAT(take_arguments(),
                ElementsAre("3", "subvolume", "list", "/tank/", "4", "subvolume", "list", "-r", "/tank/"));
}

TEST_F(Tool, AVolumeWithoutSubvolumesHasItsRootAlone)
{
    make("exit 0");
    EXPECT_EQ(full("tank"), Paths{"/tank"});
    EXPECT_EQ(data("tank"), Paths{"/tank"});
    EXPECT_THAT(snapshots("tank"), IsEmpty());
}

TEST_F(Tool, WhatAToolTellsBeforeItFailsCounts)
{
    for (const char *end : {"exit 1", "kill -9 $$"}) {
        make(std::string("echo 'ID 256 gen 7 top level 5 path media'; echo ERROR: no path >&2; ") + end);
        EXPECT_EQ(full("tank"), (Paths{"/tank/media", "/tank"}));
        EXPECT_THAT(logged(2), IsEmpty());
    }
}

TEST_F(Tool, EntriesAreAppended)
{
    make_volume();
    SubvolumeCollection all{};
    for (auto *operation :
         {qbobj_getSubvolumeSnapshotCollection, qbobj_getSubvolumeDataCollection, qbobj_getSubvolumeFullCollection})
        EXPECT_EQ(operation(qbdb, db, "tank", &all, &err), 0u);
    EXPECT_EQ(subvolumes::paths_of(all), (Paths{"/tank/snap1", "/tank/snap2", "/tank/media", "/tank/photos", "/tank",
                                                "/tank/media", "/tank/photos", "/tank/snap1", "/tank/snap2", "/tank"}));
}

TEST_F(Tool, NoShellSeesTheNameOfAVolume)
{
    make_volume();
    const std::string trap = directory.path + "/trap";
    for (const std::string &volume : std::vector<std::string>{
             "tank; touch " + trap, "$(touch " + trap + ")", "`touch " + trap + "`", "tank | touch " + trap, "a b", "'",
             "\"", "*", "../" + directory.path, "-r", "", "a\nb"}) {
        SCOPED_TRACE(volume);
        EXPECT_EQ(snapshots(volume), (Paths{"/" + volume + "/snap1", "/" + volume + "/snap2"}));
        const std::string argument = "/" + volume + "/";
        std::vector<std::string> expected = {"4", "subvolume", "list", "-r"};
        for (const std::string &line : test::lines_of(argument)) expected.push_back(line);
        EXPECT_EQ(take_arguments(), expected);
        EXPECT_EQ(full(volume).back(), "/" + volume);
        take_arguments();
        EXPECT_NE(access(trap.c_str(), F_OK), 0);
    }
}

TEST_F(Tool, ASystemWithoutTheToolHasNoSubvolumes)
{
    path.set(bin);
    EXPECT_EQ(full("tank"), Paths{"/tank"});
    EXPECT_EQ(data("tank"), Paths{"/tank"});
    EXPECT_THAT(snapshots("tank"), IsEmpty());
    EXPECT_THAT(logged(2), IsEmpty());
}

TEST_F(Tool, AToolThatCannotBeStartedIsLogged)
{
    make_volume();
    const auto expect_logged = [&](const std::string &volume) {
        SCOPED_TRACE(volume.substr(0, 20));
        const auto line = [&](const char *flag) {
            return "_getSubvolumeCollection: Failed to call btrfs subvolume list! volume = " + volume +
                   ", only_snapshot = " + flag + "\n";
        };
        log.clear();
        EXPECT_EQ(full(volume), Paths{"/" + volume});
        EXPECT_THAT(logged(2), ElementsAre(line("0")));
        EXPECT_EQ(log.back().flag, 0u);
        log.clear();
        EXPECT_THAT(snapshots(volume), IsEmpty());
        EXPECT_THAT(logged(2), ElementsAre(line("1")));
        log.clear();
        EXPECT_EQ(data(volume), Paths{"/" + volume});
        EXPECT_THAT(logged(2), ElementsAre(line("0"), line("1")));
    };
    expect_logged(std::string(5000, 'v'));

    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    expect_logged("tank");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_THAT(take_arguments(), IsEmpty());
}

TEST_F(Tool, AnOutputLargerThanAPipeIsReadWhole)
{
    make(
        "[ \"$3\" = -r ] && n=10000 || n=20000\n"
        "i=0; while [ $i -lt $n ]; do echo \"ID 256 gen 7 top level 5 path folder/subvolume-$i\"; i=$((i+1)); done");
    const Paths all = full("tank");
    ASSERT_EQ(all.size(), 20001u);
    EXPECT_EQ(all[19999], "/tank/folder/subvolume-19999");
    const Paths left = data("tank");
    ASSERT_EQ(left.size(), 10001u);
    EXPECT_EQ(left.front(), "/tank/folder/subvolume-10000");
    EXPECT_EQ(left.back(), "/tank");
}

TEST_F(Tool, NothingIsLeftOpenAndNoChildBehind)
{
    make_volume();
    data("tank");  // the database opens its files at the first transaction
    const auto before = test::open_files();
    for (int i = 0; i < 3; i++) data("tank");
    path.set(bin + "/nothing");
    full("tank");
    path.set(path.before);
    EXPECT_EQ(test::open_files(), before);
    EXPECT_EQ(test::run("pgrep -P " + std::to_string(getpid()) + " btrfs").output, "");
}

TEST_F(Tool, WithoutMemoryTheCallSaysSo)
{
    make_volume();
    for (auto *operation : {qbobj_getSubvolumeFullCollection, qbobj_getSubvolumeDataCollection}) {
        const auto read = [&] {
            SubvolumeCollection all{};
            return operation(qbdb, db, "tank", &all, &err);
        };
        test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate resource.");
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
