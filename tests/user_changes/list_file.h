// The list file has one fixed place, so tests that use it take turns, across programs and processes.
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

/// Holds the turn; the file that it makes goes away with it. A file of somebody else is never touched.
struct ListFile {
    static constexpr char kPath[] = "/tmp/user_list.txt";

    ListFile()
    {
        turn = open("/tmp/user_list.txt.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (turn < 0 || flock(turn, LOCK_EX) != 0) ADD_FAILURE() << "lock: " << strerror(errno);
        // An import that runs elsewhere on the machine takes no turns, but it is over soon.
        for (int waits = 0; waits < 100 && access(kPath, F_OK) == 0; waits++) usleep(100000);
        EXPECT_NE(access(kPath, F_OK), 0) << kPath << " is somebody else's: remove it";
    }
    ListFile(const ListFile &) = delete;
    ListFile &operator=(const ListFile &) = delete;
    ~ListFile()
    {
        remove();
        close(turn);
    }

    void write(const std::string &text)
    {
        remove();
        const int file = open(kPath, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        ASSERT_GE(file, 0) << kPath << ": " << strerror(errno);
        mine = true;
        EXPECT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(file);
    }
    void make_directory()
    {
        remove();
        ASSERT_EQ(mkdir(kPath, 0700), 0) << strerror(errno);
        mine = true;
    }
    void make_pipe()
    {
        remove();
        ASSERT_EQ(mkfifo(kPath, 0600), 0) << strerror(errno);
        mine = true;
    }
    void make_link(const char *target)
    {
        remove();
        ASSERT_EQ(symlink(target, kPath), 0) << strerror(errno);
        mine = true;
    }
    void resize(off_t size)
    {
        ASSERT_TRUE(mine);
        ASSERT_EQ(truncate(kPath, size), 0) << strerror(errno);
    }
    void remove()
    {
        if (!mine) return;
        EXPECT_EQ(::remove(kPath), 0) << strerror(errno);
        mine = false;
    }

private:
    int turn = -1;
    bool mine = false;
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
