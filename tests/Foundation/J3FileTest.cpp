// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files that close themselves.
#include "Foundation/J3File.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <type_traits>

#include <fcntl.h>
#include <unistd.h>

namespace Kivo {

namespace {

static_assert(std::is_nothrow_move_constructible_v<J3File> && !std::is_copy_constructible_v<J3File>);

/// A file with known contents that goes with the test.
class J3FileTest : public testing::Test {
protected:
    J3FileTest() { std::ofstream(_path) << "twelve bytes"; }

    ~J3FileTest() override { std::remove(_path.c_str()); }

    std::string _path = testing::TempDir() + "J3FileTest." + std::to_string(getpid());
};

/// The lowest descriptor that is free, which tells whether one was left open.
int freeDescriptor()
{
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(descriptor);
    return descriptor;
}

TEST_F(J3FileTest, ReadsOnUpToTheEnd)
{
    J3File file;
    ASSERT_TRUE(file.open(_path.c_str(), J3File::READ));
    char text[20] = "";
    EXPECT_EQ(file.read(text, 7), 7U);
    EXPECT_STREQ(text, "twelve ");
    EXPECT_EQ(file.read(text, 20), 5U);
    EXPECT_EQ(file.read(text, 20), 0U);
    file.close();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.read(text, 20), 0U);
}

TEST_F(J3FileTest, OpensNoDirectoryAndNothingThatIsNotThere)
{
    const int free = freeDescriptor();
    J3File file;
    EXPECT_FALSE(file.open("/", J3File::READ));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(file.open("/nowhere/at/all", J3File::READ));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(freeDescriptor(), free);
}

TEST_F(J3FileTest, OwnsOneDescriptorThatClosesOnExec)
{
    const int free = freeDescriptor();
    {
        J3File file;
        ASSERT_TRUE(file.open(_path.c_str(), J3File::READ));
        EXPECT_EQ(fcntl(free, F_GETFD), FD_CLOEXEC);
        ASSERT_TRUE(file.open(_path.c_str(), J3File::READ));
        J3File other;
        ASSERT_TRUE(other.open(_path.c_str(), J3File::READ));
        other = std::move(file);
        EXPECT_FALSE(file.isOpen());
        EXPECT_TRUE(other.isOpen());
        EXPECT_EQ(fcntl(free + 1, F_GETFD), -1) << "the one that was replaced is closed";
    }
    EXPECT_EQ(freeDescriptor(), free);
}

} // namespace

} // namespace Kivo
