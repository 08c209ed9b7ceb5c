// How much a Time Machine backup takes, measured on bundles on disk.
#include <unistd.h>

#include <filesystem>

#include "fixture/files.h"
#include "users/users.h"

using namespace test;

namespace {

struct TimeMachine : testing::Test {
    TemporaryDirectory directory;
    std::string bundle = directory.path + "/laptop.sparsebundle";
    uint64_t used() const { return get_tm_used_mb(directory.path.c_str()); }
    void describe(const std::string &lines) const { write_file(bundle + "/Info.plist", lines); }
};

TEST_F(TimeMachine, CountsBandsOfTheirFullSize)
{
    make_bundle(bundle, 8388608, 10);
    for (int i = 0; i < 10; i++) std::filesystem::resize_file(bundle + "/bands/" + std::to_string(i), 8388608);
    EXPECT_EQ(used(), 83u);
}

TEST_F(TimeMachine, RoundsDownToDecimalMegabytes)
{
    struct Case {
        uint64_t band_size;
        int bands;
        uint64_t used;
    };
    for (const Case &each : {Case{999999, 1, 0}, Case{1000000, 1, 1}, Case{600000, 3, 1}, Case{8388608, 0, 0},
                             Case{1ull << 40, 5, 5497558}}) {
        std::filesystem::remove_all(bundle);
        make_bundle(bundle, each.band_size, each.bands);
        EXPECT_EQ(used(), each.used) << each.bands << " bands of " << each.band_size;
    }
}

TEST_F(TimeMachine, TakesAnyNameWithTheWordInIt)
{
    make_bundle(directory.path + "/old.sparsebundle.copy", 1000000, 7);
    EXPECT_EQ(used(), 7u);
}

TEST_F(TimeMachine, CountsWhateverLiesAmongTheBands)
{
    make_bundle(bundle, 1000000, 2);
    write_file(bundle + "/bands/.hidden", "");
    mkdir((bundle + "/bands/folder").c_str(), 0755);
    EXPECT_EQ(used(), 4u);
}

TEST_F(TimeMachine, FindsTheBandSizeOnlyInItsExactForm)
{
    make_bundle(bundle, 1, 5);
    const std::string key = "\t<key>band-size</key>\n";
    const std::string number = "\t<integer>2000000</integer>\n";
    struct Case {
        std::string lines;
        uint64_t used;
    };
    const Case cases[] = {
        {key + number, 10},
        {key + "\t<integer>2000000", 10},
        {key + "\t<integer>2000000abc", 10},
        {std::string(9000, 'x') + "\n" + key + number, 10},
        {"", 0},
        {"\n", 0},
        {number, 0},
        {key, 0},
        {key + key + number, 10},
        {key + "\n" + number, 0},
        {"<key>band-size</key>\n" + number, 0},
        {"\t<key>band-size</key>\r\n" + number, 0},
        {"\t<key>Band-Size</key>\n" + number, 0},
        {key + "<integer>2000000</integer>\n", 0},
        {key + "\t<string>2000000</string>\n", 0},
        {key + "\t<integer> \t 2000000 </integer>\n", 10},
        {key + "\t<integer>+2000000</integer>\n", 10},
        {key + "\t<integer>  </integer>\n", 0},
        {key + "\t<integer>+ 2000000</integer>\n", 0},
        {key + "\t<integer></integer>\n", 0},
        {key + "\t<integer>-1</integer>\n", 0},
        {key + "\t<integer>99999999999999999999999</integer>\n", 0},
    };
    for (const Case &each : cases) {
        describe(each.lines);
        EXPECT_EQ(used(), each.used) << each.lines.substr(0, 80);
    }
}

TEST_F(TimeMachine, MissingPartsMeasureNothing)
{
    EXPECT_EQ(get_tm_used_mb(nullptr), 0u);
    EXPECT_EQ(get_tm_used_mb(""), 0u);
    EXPECT_EQ(get_tm_used_mb((directory.path + "/nowhere").c_str()), 0u);
    EXPECT_EQ(used(), 0u) << "no bundle";

    make_bundle(bundle, 1000000, 3);
    ASSERT_EQ(used(), 3u);
    EXPECT_EQ(get_tm_used_mb((bundle + "/Info.plist").c_str()), 0u) << "not a folder";
    std::filesystem::remove(bundle + "/Info.plist");
    EXPECT_EQ(used(), 0u) << "no description";
    make_bundle(bundle, 1000000, 3);
    ASSERT_EQ(used(), 3u);
    std::filesystem::remove_all(bundle + "/bands");
    EXPECT_EQ(used(), 0u) << "no bands";
}

TEST_F(TimeMachine, DoesNotWaitForAPipe)
{
    make_bundle(bundle, 1000000, 3);
    std::filesystem::remove(bundle + "/Info.plist");
    ASSERT_EQ(mkfifo((bundle + "/Info.plist").c_str(), 0644), 0);
    EXPECT_EQ(used(), 0u);
}

TEST_F(TimeMachine, ReadsNoDevice)
{
    make_bundle(bundle, 1000000, 3);
    std::filesystem::remove(bundle + "/Info.plist");
    std::filesystem::create_symlink("/dev/zero", bundle + "/Info.plist");
    EXPECT_EQ(used(), 0u);
}

TEST_F(TimeMachine, ReadsNoEndlessDescription)
{
    make_bundle(bundle, 1, 5);
    const std::string key = "\t<key>band-size</key>\n\t<integer>2000000</integer>\n";
    describe(std::string(9000, '\n') + key);
    EXPECT_EQ(used(), 10u);
    describe(std::string(10000, '\n') + key);
    EXPECT_EQ(used(), 0u);
}

TEST_F(TimeMachine, PathsTooLongMeasureNothing)
{
    make_bundle(bundle, 1000000, 3);
    std::string path = directory.path;
    while (path.size() < 4050) path += "/.";
    EXPECT_EQ(get_tm_used_mb(path.c_str()), 3u);  // ".../laptop.sparsebundle/Info.plist" still fits
    // One byte too long: cut, it would name another file.
    const size_t fits = 4095 - strlen("/laptop.sparsebundle/Info.plist");
    while (path.size() + 1 < fits) path += "/.";
    while (path.size() < fits) path += "/";
    EXPECT_EQ(get_tm_used_mb(path.c_str()), 3u);
    std::filesystem::copy(bundle + "/Info.plist", bundle + "/Info.plis");
    path += "/";
    EXPECT_EQ(get_tm_used_mb(path.c_str()), 0u);
    while (path.size() < 5000) path += "/";
    EXPECT_EQ(get_tm_used_mb(path.c_str()), 0u);
}

TEST_F(TimeMachine, ClosesWhatItOpens)
{
    make_bundle(bundle, 1000000, 3);
    const auto before = test::open_files();
    for (int i = 0; i < 10; i++) ASSERT_EQ(used(), 3u);
    std::filesystem::remove_all(bundle + "/bands");
    for (int i = 0; i < 10; i++) ASSERT_EQ(used(), 0u);
    EXPECT_EQ(test::open_files(), before);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
