// Reading the tool's listings, recorded from real volumes.
#include "storage/snapshots.h"
#include "subvolumes/tool.h"

using subvolumes::Paths;
using testing::ElementsAre;

namespace {

struct Listing : test::Database {
    Paths read(const std::string &text, const char *volume = "tank")
    {
        FILE *file = fmemopen(const_cast<char *>(text.c_str()), text.size(), "r");
        qb::CallContext ctx{qbdb, &err};
        SubvolumeCollection all{};
        qb::List<Subvolume> list(&all.Subvolume);
        if (file) {
            EXPECT_EQ(qb::read_subvolumes(&ctx, file, volume, list), 0u);
            fclose(file);
        }
        return subvolumes::paths_of(all);
    }
    /// The same by the filters of the shell.
    Paths by_shell(const std::string &text)
    {
        const std::string file = directory.path + "/listing";
        std::ofstream(file) << text;
        Paths paths;
        for (const std::string &name : subvolumes::filtered_by_shell("cat " + file)) paths.push_back("/tank/" + name);
        return paths;
    }
};

constexpr char kOrdinary[] =
    "ID 256 gen 7 top level 5 path media\n"
    "ID 257 gen 12 top level 5 path photos\n"
    "ID 258 gen 7 top level 256 path media/films\n"
    "ID 259 gen 11 top level 5 path .snapshots/media-1\n";

TEST_F(Listing, EachLineIsASubvolume)
{
    EXPECT_THAT(read(kOrdinary),
                ElementsAre("/tank/media", "/tank/photos", "/tank/media/films", "/tank/.snapshots/media-1"));
    EXPECT_THAT(read(kOrdinary, "a b"), testing::Contains("/a b/media"));
}

TEST_F(Listing, ReadsAsTheShellsFiltersDo)
{
    const std::string listings[] = {
        kOrdinary,
        // Names with blanks end at the first one.
        "ID 256 gen 7 top level 5 path my films\nID 257 gen 7 top level 5 path  two\n",
        // Parents and older forms of the listing shift the fields.
        "ID 256 gen 7 parent 5 top level 5 path media\nID 256 top level 5 path media\n",
        // Headings and messages are no subvolumes, but for those that speak of a path.
        "ID\tgen\ttop level\tpath\n--\t---\t---------\t----\n256\t7\t5\t\tmedia\n",
        "ERROR: not a btrfs filesystem: /tank/\n",
        "ERROR: the path one two three four five six is none\n",
        // Lines that are too short, empty ones, tabs, blanks at the front.
        "path\n\n  path x\nID\t256 gen 7\ttop level 5 path\tmedia\n   ID 256 gen 7 top level 5 path front\n",
        "no end: ID 256 gen 7 top level 5 path",
        "ID 256 gen 7 top level 5 path last",
        "ID 256 gen 7 top level 5 path pathological\nID 257 gen 7 top level 5 PATH upper\n",
        "ID 256 gen 7 top level 5 path /absolute\nID 256 gen 7 top level 5 path <FS_TREE>/x\r\n",
        "ID 256 gen 7 top level 5 path 'quoted \"name\"$(x)\n",
    };
    for (const std::string &listing : listings) {
        SCOPED_TRACE(listing);
        EXPECT_EQ(read(listing), by_shell(listing));
    }
}

TEST_F(Listing, AShortLineGivesAnEmptyName)
{
    EXPECT_THAT(read("ID 256 gen 7 top level 5 path\n"), ElementsAre("/tank/"));
}

TEST_F(Listing, AnOverLongNameIsListedInPieces)
{
    const std::string begin = "ID 256 gen 7 top level 5 path ";
    const std::string longest(4095, 'l');
    EXPECT_THAT(read(begin + longest + "\n"), ElementsAre("/tank/" + longest));
    EXPECT_THAT(read(begin + longest + "xy\n" + begin + "z\n"), ElementsAre("/tank/" + longest, "/tank/xy", "/tank/z"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
