// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// File systems on loop devices: formatted, recognised, mounted; partition tables as sfdisk writes them.
#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "OS/System/FS.h"

#include <climits>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using FS = K7SystemUtil::FS;
namespace fs = std::filesystem;

namespace {

std::string reason() { return K7SystemUtil::lastFailure().reason.to_string(); }

bool kernelKnows(const std::string& fileSystem)
{
    std::ifstream file("/proc/filesystems");
    for (std::string word; file >> word;)
        if (word == fileSystem)
            return true;
    return false;
}

/// An image file of 64 MiB as a block device, which goes with the last one who has it open.
class LoopDevice {
public:
    explicit LoopDevice(const std::string& image)
    {
        if (!isSandboxed())
            return;
        std::ofstream(image).flush();
        fs::resize_file(image, 64U << 20U);
        const int file = ::open(image.c_str(), O_RDWR | O_CLOEXEC);
        const int control = ::open("/dev/loop-control", O_RDWR | O_CLOEXEC);
        for (int attempt = 0; control >= 0 && attempt < 10 && _fd < 0; ++attempt) // another one may be faster
            take(::ioctl(control, LOOP_CTL_GET_FREE), file);
        ::close(control);
        ::close(file);
    }
    ~LoopDevice() { ::close(_fd); }
    LoopDevice(const LoopDevice&) = delete;
    LoopDevice& operator=(const LoopDevice&) = delete;

    [[nodiscard]] bool isThere() const { return _fd >= 0; }
    [[nodiscard]] const char* path() const { return _path.c_str(); }

private:
    void take(int number, int file)
    {
        _path = "/dev/loop" + std::to_string(number);
        loop_info64 info{};
        info.lo_flags = LO_FLAGS_AUTOCLEAR | LO_FLAGS_PARTSCAN;
        _fd = ::open(_path.c_str(), O_RDWR | O_CLOEXEC);
        if (_fd >= 0 && (::ioctl(_fd, LOOP_SET_FD, file) != 0 || ::ioctl(_fd, LOOP_SET_STATUS64, &info) != 0)) {
            ::close(_fd);
            _fd = -1;
        }
    }

    std::string _path;
    int _fd = -1;
};

class FSDiskLive : public testing::Test {
protected:
    void SetUp() override
    {
        K7_REQUIRE_SANDBOX();
        if (!loop.isThere())
            GTEST_SKIP() << "no loop devices: the machine has none, or root of it is needed";
        tree.directory("/mnt");
        if (std::system("command -v sfdisk mkfs.ext3 >/dev/null") != 0)
            GTEST_SKIP() << "sfdisk or mkfs.ext3 is not installed";
        runner.behaviour = [](const std::string& command, K7SystemUtil::Shell::CoutListener*) {
            return std::system((command + " >/dev/null 2>&1 </dev/null").c_str());
        };
    }

    [[nodiscard]] bool partition(const std::string& table) const
    {
        return std::system(("printf '" + table + "' | sfdisk -q --no-reread --no-tell-kernel " + loop.path() +
                            " >/dev/null 2>&1")
                               .c_str()) == 0;
    }

    TemporaryTree tree{false};
    LoopDevice loop{tree.directory("/").real("/image")};
    const std::string mountPoint = tree.real("/mnt");
    RecordingRunner runner;
};

} // namespace

TEST_F(FSDiskLive, FormatsRecognisesAndMountsExt3)
{
    ASSERT_TRUE(FS::format(FS::FS_TYPE_EXT, loop.path(), "REC1")) << reason();
    EXPECT_TRUE(FS::checkFileSystemExist(loop.path()));
    EXPECT_TRUE(FS::checkFileSystemFormat(loop.path(), "REC1"));
    EXPECT_FALSE(FS::checkFileSystemFormat(loop.path(), "REC"));
    EXPECT_EQ(reason(), "");
    EXPECT_FALSE(FS::getFileSystemMountedPath(nullptr, loop.path()));

    ASSERT_TRUE(FS::mount(loop.path(), mountPoint.c_str(), FS::FS_TYPE_EXT, 0, nullptr, 1)) << reason();
    char directory[PATH_MAX];
    EXPECT_TRUE(FS::getFileSystemMountedPath(directory, loop.path()));
    EXPECT_EQ(directory, mountPoint);
    std::vector<FS::MountInfo> mounts;
    ASSERT_TRUE(FS::listMounts(&mounts));
    EXPECT_EQ(mounts.back().type, L"ext3");
    const uint64 free = FS::getFreeSpace(mountPoint.c_str());
    EXPECT_GT(free, 32U << 20U);
    EXPECT_TRUE(FS::checkAndCreateDummyFile((mountPoint + "/dummy").c_str()));
    EXPECT_LT(FS::getFreeSpace(mountPoint.c_str()), free);
    {
        const std::ofstream open(mountPoint + "/open");
        EXPECT_FALSE(FS::umount(mountPoint.c_str(), 1));
        EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, EBUSY);
    }
    EXPECT_TRUE(FS::umount(mountPoint.c_str(), 1));
}

TEST_F(FSDiskLive, RecognisesOtherExtFileSystems)
{
    EXPECT_FALSE(FS::checkFileSystemFormat(loop.path(), "DATA"));
    for (const char* const type : {"ext2", "ext4"}) {
        ASSERT_EQ(std::system((std::string("mkfs.") + type + " -q -F -L DATA " + loop.path()).c_str()), 0);
        EXPECT_TRUE(FS::checkFileSystemFormat(loop.path(), "DATA")) << type;
        EXPECT_TRUE(FS::mount(loop.path(), mountPoint.c_str(), type, 1, nullptr, 1)) << type << ": " << reason();
        EXPECT_TRUE(FS::umount(mountPoint.c_str(), 1));
    }
}

TEST_F(FSDiskLive, MountsFat)
{
    if (!kernelKnows("vfat") || std::system("command -v mkfs.vfat >/dev/null") != 0)
        GTEST_SKIP() << "the kernel has no vfat, or mkfs.vfat is not installed";
    ASSERT_EQ(std::system((std::string("mkfs.vfat -n STICK ") + loop.path() + " >/dev/null").c_str()), 0);
    EXPECT_TRUE(FS::checkFileSystemFormat(loop.path(), "STICK"));
    EXPECT_TRUE(FS::mount(loop.path(), mountPoint.c_str(), FS::FS_TYPE_VFAT, 0, nullptr, 1)) << reason();
    EXPECT_TRUE(FS::umount(mountPoint.c_str(), 1));
}

TEST_F(FSDiskLive, MountsNtfs)
{
    if (std::system("command -v ntfs-3g mkntfs >/dev/null") != 0 || !kernelKnows("fuseblk"))
        GTEST_SKIP() << "ntfs-3g is not installed, or the kernel has no fuse";
    ASSERT_EQ(std::system((std::string("mkntfs -q -Q -L STICK ") + loop.path() + " >/dev/null").c_str()), 0);
    EXPECT_TRUE(FS::checkFileSystemFormat(loop.path(), "STICK"));
    EXPECT_TRUE(FS::mount(loop.path(), mountPoint.c_str(), FS::FS_TYPE_NTFS, 1024, nullptr, 1)) << reason();
    EXPECT_TRUE(FS::umount(mountPoint.c_str(), 1));
}

TEST_F(FSDiskLive, ReadsPartitionTablesAsSfdiskWritesThem)
{
    bool usable[FS::MAX_PARTITION_COUNT] = {};
    uint64 sizes[FS::MAX_PARTITION_COUNT] = {};
    int fsType = FS::FS_TYPE_NONE;
    ASSERT_TRUE(partition("label: dos\\nsize=8MiB,type=c\\nsize=8MiB,type=83\\ntype=f\\nsize=4MiB,type=7\\n"));
    ASSERT_TRUE(FS::readPartitionInfo(loop.path(), usable, sizes, &fsType)) << reason();
    EXPECT_TRUE(usable[0]);
    EXPECT_EQ(std::count(usable, usable + FS::MAX_PARTITION_COUNT, true), 1); // the NTFS one is inside the extended one
    EXPECT_EQ(fsType, FS::FS_TYPE_VFAT);

    ASSERT_TRUE(partition("label: gpt\\nsize=8MiB\\n"));
    EXPECT_FALSE(FS::readPartitionInfo(loop.path(), usable, sizes, &fsType));
    EXPECT_EQ(reason(), "");
}

TEST_F(FSDiskLive, RereadsThePartitionTable)
{
    ASSERT_TRUE(partition("label: dos\\nsize=8MiB,type=c\\nsize=8MiB,type=83\\n"));
    EXPECT_FALSE(FS::reloadPartition((mountPoint + "/none").c_str()));
    EXPECT_EQ(reason(), "open() failed");
    EXPECT_FALSE(FS::reloadPartition(mountPoint.c_str()));
    EXPECT_EQ(reason(), "ioctl(BLKRPART) failed");
    EXPECT_TRUE(FS::reloadPartition(loop.path())) << reason();
    const std::string second = std::string(loop.path()) + "p2";
    if (!FS::checkExistence(second.c_str()))
        GTEST_SKIP() << "the kernel knows no DOS partition tables";
    ASSERT_EQ(std::system(("mkfs.ext3 -q -F " + second).c_str()), 0);
    ASSERT_TRUE(FS::mount(second.c_str(), mountPoint.c_str(), FS::FS_TYPE_EXT, 0, nullptr, 1)) << reason();
    EXPECT_FALSE(FS::reloadPartition(loop.path()));
    EXPECT_EQ(reason(), "ioctl(BLKRPART) failed");
    EXPECT_TRUE(FS::umount(mountPoint.c_str(), 1));
}
