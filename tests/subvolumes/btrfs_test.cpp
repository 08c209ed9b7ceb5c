// Listing the subvolumes of a real btrfs file system in a file that is mounted for the test.
#include <unistd.h>

#include "subvolumes/tool.h"

using subvolumes::Paths;
using testing::ElementsAre;

namespace {

/// A file system in a file, unmounted and removed at the end. Where none can be mounted, `why` says so.
struct Mount {
    std::string folder;
    std::string why;

    explicit Mount(const std::string &directory) : folder(directory + "/volume")
    {
        const std::string image = directory + "/image";
        for (const std::string &command :
             std::vector<std::string>{"truncate -s 256M " + image, "mkfs.btrfs -q " + image, "mkdir " + folder,
                                      "mount -o loop " + image + " " + folder}) {
            const test::Outcome outcome = test::run(command + " 2>&1");
            if (outcome.status == 0) continue;
            why = command + ": " + outcome.output;
            folder.clear();
            return;
        }
    }
    Mount(const Mount &) = delete;
    Mount &operator=(const Mount &) = delete;
    ~Mount()
    {
        if (folder.empty()) return;
        EXPECT_EQ(test::run("umount " + folder).status, 0);
    }
};

struct Btrfs : subvolumes::Volumes {
    Mount mount{directory.path};
    const std::string volume = mount.folder.substr(mount.folder.empty() ? 0 : 1);

    void SetUp() override
    {
        if (!mount.why.empty()) GTEST_SKIP() << "no btrfs file system can be mounted here: " << mount.why;
    }
    void make(const std::string &command) const
    {
        const test::Outcome outcome = test::run("cd " + mount.folder + " && btrfs subvolume " + command + " 2>&1");
        ASSERT_EQ(outcome.status, 0) << outcome.output;
    }
    /// Names as the volume's own paths.
    Paths within(const Paths &names) const
    {
        Paths paths;
        for (const std::string &name : names) paths.push_back("/" + volume + (name.empty() ? "" : "/" + name));
        return paths;
    }
};

TEST_F(Btrfs, AFreshVolumeHasItsRootAlone)
{
    EXPECT_EQ(full(volume), within({""}));
    EXPECT_EQ(data(volume), within({""}));
    EXPECT_EQ(snapshots(volume), Paths{});
}

TEST_F(Btrfs, SubvolumesAndSnapshotsAreTold)
{
    make("create media");
    make("create media/films");
    make("create 'my photos'");
    make("snapshot -r media media-1");
    make("snapshot media media-writable");
    make("snapshot -r media media/.snapshot");
    EXPECT_EQ(full(volume), within({"media", "media/films", "my", "media-1", "media-writable", "media/.snapshot", ""}));
    EXPECT_EQ(snapshots(volume), within({"media-1", "media/.snapshot"}));
    EXPECT_EQ(data(volume), within({"media", "media/films", "my", "media-writable", ""}));
    EXPECT_EQ(snapshots(volume),
              within(subvolumes::filtered_by_shell("btrfs subvolume list -r " + mount.folder + "/")));
    Paths all = subvolumes::filtered_by_shell("btrfs subvolume list " + mount.folder + "/");
    all.emplace_back();
    EXPECT_EQ(full(volume), within(all));

    make("delete media-1");
    EXPECT_EQ(snapshots(volume), within({"media/.snapshot"}));
    EXPECT_THAT(logged(2), testing::IsEmpty());
}

TEST_F(Btrfs, TheSnapshotListKnowsWhereASnapshotLies)
{
    make("create media");
    ASSERT_EQ(test::run("mkdir " + mount.folder + "/media/.snapshots").status, 0);
    make("snapshot -r media media/.snapshots/daily");
    sql("UPDATE _volume SET lv_name='" + volume +
        "' WHERE id='tank';"
        "INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES(1,'media','tank/media','/tank/media','tank')");
    Snapshot snapshot{};
    snapshot.ShareName = "media";
    snapshot.VolumeName = volume.c_str();
    snapshot.SnapshotName = "daily";
    snapshot.Type = 1;
    ASSERT_EQ(qbobj_addSnapshot(qbdb, db, &snapshot, &err), 0u) << err.message;
    SnapshotCollection all{};
    ASSERT_EQ(qbobj_getSnapshotCollection(qbdb, db, &all, nullptr, nullptr, 0, 0, 0, nullptr, 0, 0, 0, &err), 0u);
    ASSERT_NE(all.Snapshot, nullptr);
    EXPECT_EQ(all.Snapshot->Path, mount.folder + "/media/.snapshots/daily");
}

TEST_F(Btrfs, AFolderOfAnotherFileSystemHasNoSubvolumes)
{
    EXPECT_EQ(full("proc"), Paths{"/proc"});
    EXPECT_EQ(snapshots("proc"), Paths{});
    EXPECT_EQ(full("no/such/volume"), Paths{"/no/such/volume"});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
