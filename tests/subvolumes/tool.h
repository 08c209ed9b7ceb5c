// Common ground of the subvolume tests: a stand-in for the btrfs tool in a PATH of the test's own, and short forms of
// the calls.
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "fixture/files.h"
#include "fixture/fixture.h"

namespace subvolumes {

using Paths = std::vector<std::string>;

/// The PATH for the time of a test.
struct SearchPath {
    const std::string before = getenv("PATH") ? getenv("PATH") : "";
    SearchPath() = default;
    SearchPath(const SearchPath &) = delete;
    SearchPath &operator=(const SearchPath &) = delete;
    ~SearchPath() { setenv("PATH", before.c_str(), 1); }
    void set(const std::string &path) const { setenv("PATH", path.c_str(), 1); }
};

inline Paths paths_of(const SubvolumeCollection &all)
{
    Paths paths;
    for (const Subvolume *each : test::elements(all.Subvolume)) {
        paths.emplace_back(each->Path);
        EXPECT_STREQ(each->key, each->Path);
    }
    return paths;
}

struct Volumes : test::Database {
    SearchPath path;

    using Operation = uint32_t(qbdb_t *, sqlite3 *, const char *, SubvolumeCollection *, ErrorInfo *);
    Paths ask(Operation *operation, const std::string &volume)
    {
        SubvolumeCollection all{};
        EXPECT_EQ(operation(qbdb, db, volume.c_str(), &all, &err), 0u) << (err.message ? err.message : "");
        EXPECT_EQ(err.code, 0u);
        return paths_of(all);
    }
    Paths full(const std::string &volume) { return ask(qbobj_getSubvolumeFullCollection, volume); }
    Paths snapshots(const std::string &volume) { return ask(qbobj_getSubvolumeSnapshotCollection, volume); }
    Paths data(const std::string &volume) { return ask(qbobj_getSubvolumeDataCollection, volume); }
};

/// What a shell makes of the tool's output, each line a name.
inline Paths filtered_by_shell(const std::string &command)
{
    return test::lines_of(test::run("{ " + command + "; } 2>/dev/null | grep path | awk '{print $9}'").output);
}

}  // namespace subvolumes
// SPDX-License-Identifier: Apache-2.0
