// The TiVo service's state file has one fixed place, so tests that use it take turns, across programs and processes.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace test {

/// Holds the turn; the folder and the file that it makes go away with it. A file of a service that runs on this
/// machine is never touched.
struct StatusFile {
    static constexpr char kFolder[] = "/var/lib/kestrelcast";
    static constexpr char kPath[] = "/var/lib/kestrelcast/status";

    StatusFile()
    {
        turn = open("/tmp/kestrelcast.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (turn < 0 || flock(turn, LOCK_EX) != 0) ADD_FAILURE() << "lock: " << strerror(errno);
        folder_is_mine = mkdir(kFolder, 0755) == 0;
        usable = (folder_is_mine || errno == EEXIST) && access(kFolder, W_OK) == 0 && access(kPath, F_OK) != 0;
    }
    StatusFile(const StatusFile &) = delete;
    StatusFile &operator=(const StatusFile &) = delete;
    ~StatusFile()
    {
        remove();
        if (folder_is_mine) {
            EXPECT_EQ(rmdir(kFolder), 0) << strerror(errno);
        }
        close(turn);
    }

    /// False for a user who may not write there, and where a service has left its own file.
    bool usable = false;

    /// Puts the whole text in place at once, as a reader expects of the service.
    void write(const std::string &text)
    {
        const std::string fresh = std::string(kPath) + ".new";
        const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        ASSERT_GE(file, 0) << strerror(errno);
        EXPECT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(file);
        ASSERT_EQ(rename(fresh.c_str(), kPath), 0) << strerror(errno);
        mine = true;
    }
    void make_pipe()
    {
        remove();
        ASSERT_EQ(mkfifo(kPath, 0644), 0) << strerror(errno);
        mine = true;
    }
    void make_directory()
    {
        remove();
        ASSERT_EQ(mkdir(kPath, 0755), 0) << strerror(errno);
        mine = true;
    }
    void link_to(const char *target)
    {
        remove();
        ASSERT_EQ(symlink(target, kPath), 0) << strerror(errno);
        mine = true;
    }
    void remove()
    {
        if (mine) {
            EXPECT_EQ(::remove(kPath), 0) << strerror(errno);
        }
        mine = false;
    }

private:
    int turn = -1;
    bool folder_is_mine = false;
    bool mine = false;
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
