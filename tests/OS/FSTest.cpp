// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Partition tables, mounts, and files: copied, hashed, measured, listed, deleted.
#include "OS/System/FS.h"

#include "support/AssertReports.h"
#include "support/MountCalls.h"
#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "OS/System/Platform/Linux/detail/MbrParser_p.h"
#include "OS/System/Platform/Linux/detail/MountTableParser_p.h"

#include <climits>

#include <array>
#include <csignal>
#include <cstring>
#include <fstream>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/time.h>

using namespace Kivo;
using namespace K7Test;
using FS = K7SystemUtil::FS;
using Calls = std::vector<std::string>;
namespace fs = std::filesystem;

namespace {

std::string masterBootRecord(std::array<int, 4> types)
{
    std::string record(512, '\0');
    for (std::size_t i = 0; i < types.size(); ++i) {
        record[446 + 16 * i + 4] = static_cast<char>(types[i]);
        record.replace(446 + 16 * i + 8, 8, 8, '\xFF'); // where it lies and how long it is: far beyond the disk
    }
    return record.replace(510, 2, "\x55\xAA");
}

/// A directory for files, which is not the system root.
class FSCaptured : public testing::Test {
protected:
    [[nodiscard]] std::string at(const std::string& name) const { return tree.real("/files/" + name); }

    std::string make(const std::string& name, std::string_view contents)
    {
        tree.file("/files/" + name, contents);
        return at(name);
    }

    [[nodiscard]] std::string contents(const std::string& name) const { return tree.contents("/files/" + name); }

    TemporaryTree tree{false};
};

using FSLive = FSCaptured;

std::string patterned(std::size_t size)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 2654435761U >> 11U);
    return text;
}

std::string reason() { return K7SystemUtil::lastFailure().reason.to_string(); }

/// Work that a test interferes with, once it has come a mebibyte far.
bool interfere(void* action, uint64, uint64) { return (*static_cast<std::function<bool()>*>(action))(); }

std::string firstWordOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
    char word[200] = "";
    return std::fscanf(output.get(), "%199s", word) == 1 ? word : "";
}

} // namespace

TEST(FS, TakesTheMasterBootRecordApart)
{
    using enum PartitionKind;
    const auto kinds = [](std::array<int, 4> types) { return parseMbr(masterBootRecord(types)).value(); };
    EXPECT_EQ(kinds({0x01, 0x04, 0x06, 0x07}), (std::array{FAT, FAT, FAT, NTFS}));
    EXPECT_EQ(kinds({0x0B, 0x0C, 0x0E, 0x00}), (std::array{FAT, FAT, FAT, EMPTY}));
    EXPECT_EQ(kinds({0x05, 0x0F, 0x85, 0x83}), (std::array{EXTENDED, EXTENDED, EXTENDED, OTHER}));
    EXPECT_EQ(kinds({0xEE, 0x82, 0x08, 0xFF}), (std::array{OTHER, OTHER, OTHER, OTHER}));
    const std::string record = masterBootRecord({});
    EXPECT_FALSE(parseMbr(std::string_view(record).substr(0, 511)));
    EXPECT_FALSE(parseMbr(std::string(512, '\0')));
}

TEST(FS, TakesTheMountTableApart)
{
    MountTableParser rows("# comment\n\n/dev/a\\040b\t/mnt/\\134\\011x ext3 rw 0 0\nlonely\nnone /cut");
    MountRow row;
    ASSERT_TRUE(rows.next(&row));
    EXPECT_EQ(unescapedMountText(row.device), "/dev/a b");
    EXPECT_EQ(unescapedMountText(row.directory), "/mnt/\\\tx");
    EXPECT_EQ(row.type, "ext3");
    EXPECT_EQ(row.options, "rw");
    ASSERT_TRUE(rows.next(&row));
    EXPECT_EQ(row.directory, "/cut");
    EXPECT_EQ(row.type, "");
    EXPECT_FALSE(rows.next(&row));
    EXPECT_EQ(unescapedMountText("\\04\\400\\08x\\"), "\\04\\400\\08x\\");
    EXPECT_TRUE(isMountText("a\\040b", "a b"));
    EXPECT_FALSE(isMountText("a\\040b", "a b "));
    EXPECT_FALSE(isMountText("a\\040b", "a"));
}

TEST(FS, CutsANameAtItsLastDot)
{
    char name[] = "backup.tar.gz";
    EXPECT_TRUE(FS::getFileNameExceptExt(name, name));
    EXPECT_STREQ(name, "backup.tar");
    EXPECT_FALSE(FS::getFileNameExceptExt(name, "README"));
    EXPECT_STREQ(name, "");
    EXPECT_FALSE(FS::getFileNameExceptExt(nullptr, "a.b"));
}

TEST(FS, TellsTypeAndPermissions)
{
    FS::FileStatInfo info;
    EXPECT_FALSE(info.isRegular());
    info._mode = S_IFSOCK | 0421;
    EXPECT_TRUE(info.isSocket());
    EXPECT_FALSE(info.isBlkDev()); // whose bits a socket's type has, too
    EXPECT_TRUE(info.isOwnerR());
    EXPECT_FALSE(info.isOwnerW());
    EXPECT_TRUE(info.isGroupW());
    EXPECT_FALSE(info.isGroupR());
    EXPECT_TRUE(info.isOtherX());
    EXPECT_FALSE(info.isOtherR());
}

TEST_F(FSCaptured, ReadsPartitionsWithTheKernelsSizes)
{
    TemporaryTree system;
    for (const char* partition : {"sda1", "sda2", "sda3"}) // of the fourth the kernel knows nothing
        system.file(std::string("/sys/block/sda/") + partition + "/size", "2048\n");
    const std::string disk = make("sda", masterBootRecord({0x0C, 0x83, 0x05, 0x07}));
    bool usable[FS::MAX_PARTITION_COUNT] = {false, true, true, true, true, true, true, true};
    uint64 sizes[FS::MAX_PARTITION_COUNT] = {};
    int fsType = FS::FS_TYPE_NONE;
    ASSERT_TRUE(FS::readPartitionInfo(disk.c_str(), usable, sizes, &fsType));
    EXPECT_EQ(std::vector<bool>(usable, usable + 8),
              (std::vector<bool>{true, false, false, true, false, false, false, false}));
    EXPECT_EQ(std::vector<uint64>(sizes, sizes + 4), (std::vector<uint64>{1U << 20U, 1U << 20U, 0, 0}));
    EXPECT_EQ(fsType, FS::FS_TYPE_NTFS);

    make("sda", masterBootRecord({0xEE, 0, 0, 0}));
    EXPECT_FALSE(FS::readPartitionInfo(disk.c_str(), usable, sizes, &fsType));
    EXPECT_EQ(reason(), ""); // none, which is an answer
    make("sda", std::string(400, 'x'));
    EXPECT_FALSE(FS::readPartitionInfo(disk.c_str(), usable, sizes, &fsType));
    EXPECT_EQ(reason(), "has no master boot record");
    EXPECT_FALSE(FS::readPartitionInfo(at("none").c_str(), usable, sizes, &fsType));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
    EXPECT_TRUE(usable[0]);
}

TEST_F(FSCaptured, FindsWhereADeviceIsMounted)
{
    TemporaryTree system;
    char directory[PATH_MAX] = "before";
    EXPECT_FALSE(FS::getFileSystemMountedPath(directory, "/dev/sda1"));
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/proc/mounts");
    std::string table =
        "/dev/sda10 /ten ext3 rw 0 0\n/dev/sda1 /mnt/disk\\040one ext3 rw 0 0\n/dev/sda1 /later ext3 rw 0 0\n";
    while (table.size() < 1U << 20U)
        table += "/dev/" + std::string(60, 'x') + "\\040\\040 /mnt ext3 rw 0 0\n";
    system.file("/proc/mounts", table + "/dev/last /" + std::string(PATH_MAX, 'd') + " ext3 rw 0 0\n");
    EXPECT_FALSE(FS::getFileSystemMountedPath(directory, "/dev/sdb1"));
    EXPECT_EQ(reason(), "");
    EXPECT_FALSE(FS::getFileSystemMountedPath(directory, "/dev/last"));
    EXPECT_STREQ(directory, "before");
    EXPECT_TRUE(FS::getFileSystemMountedPath(directory, "/dev/sda1"));
    EXPECT_STREQ(directory, "/mnt/disk one");
    EXPECT_TRUE(FS::getFileSystemMountedPath(nullptr, "/dev/sda1"));
    std::vector<FS::MountInfo> mounts;
    ASSERT_TRUE(FS::listMounts(&mounts));
    EXPECT_EQ(mounts.at(1).directory, L"/mnt/disk one");
    EXPECT_EQ(mounts.at(0).options, L"rw");
}

TEST_F(FSCaptured, RunsTheCommandsAsTheyAreWritten)
{
    const RecordingRunner runner;
    const AssertReports reports;
    EXPECT_TRUE(FS::format(FS::FS_TYPE_EXT, "/dev/sda1", nullptr));
    EXPECT_TRUE(FS::format(FS::FS_TYPE_EXT, "/dev/sda1", "REC1"));
    EXPECT_FALSE(FS::format(FS::FS_TYPE_VFAT, "/dev/sda1", "REC1"));
    EXPECT_TRUE(FS::mount("/dev/sda1", "/usbdisk", FS::FS_TYPE_NTFS, 0, nullptr, 0));
    EXPECT_TRUE(FS::mount("/dev/sda1", "/usbdisk", FS::FS_TYPE_NTFS, 1024 | 1, "x", 5));
    EXPECT_TRUE(FS::deleteFile("/tmp/x"));
    EXPECT_FALSE(FS::deleteFile(""));
    EXPECT_EQ(runner.commands(),
              (Calls{"mkfs.ext3 /dev/sda1", "mkfs.ext3 /dev/sda1 -L REC1", "ntfs-3g /dev/sda1 /usbdisk",
                     "ntfs-3g /dev/sda1 /usbdisk -o noatime", "rm -f /tmp/x"}));
    EXPECT_EQ(FS::totalSize(nullptr), 0U);
    EXPECT_FALSE(FS::getFileStat(nullptr, L"/"));
    const std::string path = "OS/System/Platform/Linux/FS, ";
    EXPECT_EQ(reports.texts, (Calls{path + "format: invalid file system type!", path + "totalSize: got NULL pointer!",
                                    path + "getFileStat: result is Null!"}));
}

TEST_F(FSCaptured, MountsByTheKernelAsOftenAsAllowed)
{
    MountCalls calls;
    EXPECT_TRUE(FS::mount("/dev/a", "/m", FS::FS_TYPE_EXT, 0xC0ED0000, "data", 1));
    EXPECT_TRUE(FS::mount("/dev/a", "/m", FS::FS_TYPE_VFAT, 1, "data", 1));
    EXPECT_FALSE(FS::mount("/dev/a", "/m", FS::FS_TYPE_NONE, 0, nullptr, 1));
    EXPECT_FALSE(FS::mount("/dev/a", "/m", "ext3", 0, nullptr, 0));
    EXPECT_FALSE(FS::umount("/m", 0));
    calls.results = {0, 0, ENODEV, EINTR, EBUSY}; // an interrupted call is no attempt
    EXPECT_FALSE(FS::mount("/dev/a", "/m", "xfs", 0, nullptr, 2));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENODEV);
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/dev/a");
    calls.results = {0, 0, 0, 0, 0, EBUSY, 0};
    EXPECT_TRUE(FS::umount("/m", 3));
    EXPECT_EQ(calls.noted(), (Calls{"mount /dev/a /m ext3 c0ed0000 nocheck,errors=continue",
                                    "mount /dev/a /m vfat 1 data", "mount /dev/a /m xfs 0 -", "mount /dev/a /m xfs 0 -",
                                    "mount /dev/a /m xfs 0 -", "umount /m", "umount /m"}));
}

TEST_F(FSCaptured, CopiesAndHashesFilesOfAnySize)
{
    const std::size_t before = openDescriptors();
    for (const std::size_t size : {0U, 1U, 4097U, 8193U, 5U << 20U}) {
        const std::string source = make("source", patterned(size));
        ::chmod(source.c_str(), 0640);
        fs::remove(at("copy"));
        EXPECT_TRUE(FS::copyFile(at("copy").c_str(), source.c_str())) << reason();
        EXPECT_TRUE(contents("copy") == patterned(size)) << size;
        EXPECT_EQ(fs::status(at("copy")).permissions(), fs::perms(0640));
        J3String digest(L"before");
        EXPECT_TRUE(FS::getMD5Sum(&digest, source.c_str()));
        EXPECT_EQ(digest.to_string(), firstWordOf("md5sum " + source));
        EXPECT_TRUE(FS::getSHA256Sum(&digest, source.c_str()));
        EXPECT_EQ(digest.to_string(), firstWordOf("sha256sum " + source));
    }
    make("shorter", "new");
    EXPECT_TRUE(FS::copyFile(at("copy").c_str(), at("shorter").c_str()));
    EXPECT_EQ(contents("copy"), "new");
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FSCaptured, CopyNeverTouchesItsSource)
{
    const std::string source = make("source", "precious");
    fs::create_hard_link(source, at("second-name"));
    fs::create_symlink("source", at("link"));
    for (const char* name : {"source", "second-name", "link"}) {
        EXPECT_FALSE(FS::copyFile(at(name).c_str(), source.c_str()));
        EXPECT_EQ(reason(), "source and destination are the same file");
    }
    EXPECT_FALSE(FS::copyFile(at("").c_str(), source.c_str())); // a directory
    EXPECT_FALSE(FS::copyFile("/dev/full", source.c_str()));
    EXPECT_EQ(reason(), "write() error");
    EXPECT_FALSE(FS::copyFile("", source.c_str()));
    EXPECT_EQ(reason(), "invalid dest pathName");
    EXPECT_FALSE(FS::copyFile(at("copy").c_str(), nullptr));
    EXPECT_EQ(reason(), "invalid source pathName");
    EXPECT_FALSE(FS::copyFile(at("copy").c_str(), at("").c_str()));
    EXPECT_FALSE(FS::checkExistence(at("copy").c_str()));
    EXPECT_EQ(contents("source"), "precious");
}

TEST_F(FSCaptured, CopyFailsWhenItsSourceChanges)
{
    constexpr std::size_t SIZE = (1U << 20U) + 100;
    const std::string source = make("source", patterned(SIZE));
    const auto copy = [&](std::function<bool()> action) {
        return FS::copyFile(at("copy").c_str(), source.c_str(), interfere, &action);
    };
    EXPECT_FALSE(copy([&] { return ::truncate(source.c_str(), 50) == 0; }));
    EXPECT_EQ(reason(), "read() timed-out!");
    make("source", patterned(SIZE));
    EXPECT_FALSE(copy([&] { return (std::ofstream(source, std::ios::app) << "more" << std::flush).good(); }));
    EXPECT_EQ(reason(), "write() failed");
    EXPECT_FALSE(copy([] { return false; }));
    EXPECT_EQ(reason(), "was ended");
    EXPECT_TRUE(copy([] { return true; }));
}

TEST_F(FSCaptured, SignalsDoNotDisturbACopy)
{
    struct sigaction ignored {};
    ignored.sa_handler = [](int) {}; // and system calls are not restarted
    struct sigaction before {};
    ::sigaction(SIGALRM, &ignored, &before);
    const itimerval often{{0, 300}, {0, 300}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    const std::string source = make("source", patterned(5U << 20U));
    EXPECT_TRUE(FS::copyFile(at("copy").c_str(), source.c_str())) << reason();
    J3String digest;
    EXPECT_TRUE(FS::getSHA256Sum(&digest, source.c_str()));
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before, nullptr);
    EXPECT_TRUE(contents("copy") == contents("source"));
}

TEST_F(FSCaptured, DigestsOfWhatHasNoneLeaveTheText)
{
    J3String digest(L"before");
    tree.directory("/files");
    ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0600), 0);
    for (const std::string& path : {at("fifo"), at(""), at("none"), std::string("/dev/zero"), std::string()})
        EXPECT_FALSE(FS::getMD5Sum(&digest, path.c_str())) << path;
    make("endless", "");
    fs::resize_file(at("endless"), 1ULL << 40U);
    std::function<bool()> end = [] { return false; };
    EXPECT_FALSE(FS::getSHA256Sum(&digest, at("endless").c_str(), interfere, &end));
    EXPECT_EQ(reason(), "was ended");
    EXPECT_EQ(digest, L"before");
    EXPECT_FALSE(FS::getMD5Sum(nullptr, at("endless").c_str()));
}

TEST_F(FSCaptured, ReadsAttributes)
{
    const std::string file = make("file", "12345");
    const timespec times[2] = {{0, 0}, {1234567890, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    ASSERT_EQ(::chmod(file.c_str(), 04710), 0);
    fs::create_symlink("nowhere", at("dangling"));
    EXPECT_EQ(FS::fileModificationTime(file.c_str()).to_time_t(), 1234567890);
    EXPECT_FALSE(FS::fileModificationTime(at("none").c_str()).isValid());
    EXPECT_TRUE(FS::setPermOtherReadAccess(file.c_str()));
    FS::FileStatInfo info;
    ASSERT_TRUE(FS::getFileStat(&info, J3String::from_string(std::string_view(file))));
    EXPECT_EQ(info._mode, S_IFREG | 04714U);
    EXPECT_EQ(info._size, 5U);
    EXPECT_EQ(info._uid, static_cast<int32>(::getuid()));
    uint64 size = 1;
    EXPECT_FALSE(FS::getFileSize(&size, at("none").c_str()));
    EXPECT_EQ(size, 1U);
    EXPECT_TRUE(FS::getFileSize(&size, file.c_str()));
    EXPECT_EQ(size, 5U);
    EXPECT_TRUE(FS::checkExistence(file.c_str()));
    EXPECT_FALSE(FS::checkExistence(at("dangling").c_str()));
    EXPECT_EQ(reason(), "");
    EXPECT_FALSE(FS::checkExistence(nullptr));
    EXPECT_FALSE(FS::dirExistence(file.c_str()));
    EXPECT_TRUE(FS::dirExistence(at("").c_str()));
}

TEST_F(FSCaptured, DummyFileIsMadeOnce)
{
    make("file", "kept");
    EXPECT_TRUE(FS::checkAndCreateDummyFile(at("file").c_str()));
    EXPECT_EQ(contents("file"), "kept");
    EXPECT_TRUE(FS::checkAndCreateDummyFile(at("dummy").c_str()));
    EXPECT_TRUE(contents("dummy") == std::string(256 * 1024, '\0'));
    EXPECT_FALSE(FS::checkAndCreateDummyFile(at("none/dummy").c_str()));
}

TEST_F(FSCaptured, ListsMeasuresAndClearsATree)
{
    TemporaryTree outside(false);
    outside.file("/kept", "12345678");
    make("b", "12345");
    make("a/one", "123");
    make("a/two/three", "1");
    fs::create_hard_link(at("b"), at("a/b-too"));
    fs::create_symlink(outside.real("/"), at("c-link"));
    EXPECT_EQ(FS::listDirectory(at("").c_str()), (std::vector<J3String>{L"a", L"b", L"c-link"}));
    EXPECT_EQ(FS::totalSize(at(".").c_str()), 9U);
    EXPECT_EQ(FS::totalSize(at("b").c_str()), 5U);
    EXPECT_EQ(FS::totalSize(at("c-link").c_str()), 0U);
    EXPECT_EQ(reason(), "is not a directory or a file");
    EXPECT_FALSE(FS::clearPath(at("c-link").c_str()));
    for (int i = 0; i < 5000; ++i) // more than are deleted in one go
        std::ofstream(at("a/two/" + std::to_string(i)));
    EXPECT_TRUE(FS::clearPath(at(".").c_str())) << reason();
    EXPECT_TRUE(fs::is_empty(at("")));
    EXPECT_EQ(outside.contents("/kept"), "12345678");
    EXPECT_EQ(FS::listDirectory(at("none").c_str()).size(), 0U);
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
}

TEST_F(FSCaptured, ClearingStopsWhereDirectoriesAreTooDeep)
{
    std::string deep = "d1";
    for (int i = 2; i <= FS::MAX_DIR_DEPTH; ++i)
        deep += "/d" + std::to_string(i);
    make(deep + "/file", "x");
    EXPECT_TRUE(FS::clearPath(at(".").c_str())) << reason();
    make(deep + "/d21/file", "x");
    make("other", "x");
    EXPECT_FALSE(FS::clearPath(at(".").c_str()));
    EXPECT_EQ(reason(), "directories are nested too deep");
    EXPECT_TRUE(fs::exists(at(deep + "/d21/file")));
    EXPECT_FALSE(fs::exists(at("other")));
}

TEST_F(FSCaptured, FreeSpaceIsTheRunningMachines)
{
    EXPECT_GT(FS::getFreeSpace("/"), 0U);
    EXPECT_EQ(FS::getFreeSpace(at("none").c_str()), 0U);
    const TemporaryTree system;
    EXPECT_EQ(FS::getFreeSpace("/"), 0U);
    EXPECT_EQ(reason(), "needs the live system");
}

TEST_F(FSLive, CopyOntoAMediumThatFillsUpFails)
{
    K7_REQUIRE_SANDBOX();
    tree.directory("/small");
    const std::string small = tree.real("/small");
    ASSERT_EQ(::mount("none", small.c_str(), "tmpfs", 0, "size=64k"), 0) << std::strerror(errno);
    EXPECT_EQ(FS::getFreeSpace(small.c_str()), 64U * 1024);
    const std::string source = make("source", patterned(100000));
    const std::size_t before = openDescriptors();
    EXPECT_FALSE(FS::copyFile((small + "/copy").c_str(), source.c_str()));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOSPC);
    EXPECT_FALSE(FS::checkAndCreateDummyFile((small + "/dummy").c_str()));
    EXPECT_FALSE(fs::exists(small + "/dummy"));
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(FS::clearPath(tree.real("/").c_str())); // the mount is another file system
    EXPECT_TRUE(fs::exists(small + "/copy"));
    EXPECT_TRUE(FS::umount(small.c_str(), 1));
}
