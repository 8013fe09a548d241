// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files that close themselves.
#include "Foundation/J3File.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

using namespace Kivo;

TEST(J3File, ReadsOnUpToTheEndAndOwnsOneDescriptor)
{
    const std::string path = testing::TempDir() + "J3FileTest." + std::to_string(getpid());
    std::ofstream(path) << "twelve bytes";
    const int free = dup(STDIN_FILENO); // the lowest that is free
    close(free);
    {
        J3File moved;
        ASSERT_TRUE(moved.open(path.c_str(), J3File::READ));
        ASSERT_TRUE(moved.open(path.c_str(), J3File::READ)) << "over an open one";
        EXPECT_EQ(fcntl(free, F_GETFD), FD_CLOEXEC);
        J3File file;
        file = std::move(moved);
        char text[20] = "";
        EXPECT_EQ(file.read(text, 7), 7U);
        EXPECT_STREQ(text, "twelve ");
        EXPECT_EQ(file.read(text, 20), 5U);
        EXPECT_FALSE(file.open("/", J3File::READ));
        EXPECT_EQ(errno, EISDIR);
        EXPECT_FALSE(file.open("/nowhere/at/all", J3File::READ));
        EXPECT_EQ(errno, ENOENT);
        EXPECT_TRUE(moved.open(path.c_str(), J3File::READ));
    }
    EXPECT_EQ(fcntl(free, F_GETFD), -1);
    std::remove(path.c_str());
}
