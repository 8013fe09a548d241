// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// File systems: made, mounted, recognised, and the partitions that they are in.
#include "Foundation/J3Assert.h"
#include "Foundation/J3Thread.h"
#include "OS/System/FS.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/MbrParser_p.h"
#include "OS/System/Platform/Linux/detail/MountTableParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"
#include "OS/System/SCSI.h"
#include "OS/System/Shell.h"

#include <climits>

#include <algorithm>

#include <blkid/blkid.h>
#include <sys/ioctl.h>
#include <sys/mount.h>

namespace Kivo {

namespace {

using FS = K7SystemUtil::FS;

constexpr const char* SOURCE = "OS/System/Platform/Linux/FS";
constexpr const char* MOUNT_TABLE = "/proc/mounts";
constexpr const char* NO_DEVICE = "no device";
constexpr const char* EXT_OPTIONS = "nocheck,errors=continue";
constexpr uint32 RETRY_INTERVAL_MS = 500;

/// Make a system call until it succeeds, at most @p count times; every failure is slept over.
template <class Call>
void requireWithRetries(int count, const char* reason, const char* subject, Call&& call)
{
    int firstError = 0;
    for (int i = 0; i < count; ++i) {
        if (retried(call) == 0)
            return;
        firstError = firstError == 0 ? errno : firstError;
        J3Thread::sleep(RETRY_INTERVAL_MS);
    }
    errno = firstError;
    throw Reason{count < 1 ? "no attempt is allowed" : reason, firstError, subject};
}

bool mountByDriver(const char* dev, const char* dir, bool noAccessTimes)
{
    require(hasText(dev), NO_DEVICE);
    J3String command;
    command.format(L"ntfs-3g %s %s", dev, dir);
    if (noAccessTimes)
        command.appendf(L" -o noatime");
    return K7SystemUtil::Shell::runCommand(command) == 0;
}

using BlkidProbe = std::unique_ptr<std::remove_pointer_t<blkid_probe>, void (*)(blkid_probe)>;

BlkidProbe openProbe(const char* dev)
{
    require(hasText(dev), NO_DEVICE);
    errno = 0;
    BlkidProbe probe(::blkid_new_probe_from_filename(dev), ::blkid_free_probe);
    requireCall(static_cast<bool>(probe), "can't examine the device", dev);
    return probe;
}

bool hasValue(blkid_probe probe, std::string_view wantedName, std::string_view wanted)
{
    const int count = ::blkid_probe_numof_values(probe);
    for (int i = 0; i < count; ++i) {
        const char* name = nullptr;
        const char* data = nullptr;
        if (::blkid_probe_get_value(probe, i, &name, &data, nullptr) == 0 && name == wantedName && data == wanted)
            return true;
    }
    return false;
}

std::string readMountTable()
{
    SystemFile table(MOUNT_TABLE);
    std::string text;
    table.opened();
    requireCall(table.readAll(&text), "can't read the file", MOUNT_TABLE);
    return text;
}

std::array<PartitionKind, MBR_ENTRY_COUNT> readMbr(const char* dev)
{
    require(hasText(dev), NO_DEVICE);
    constexpr int FLAGS = O_RDWR | O_SYNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const UniqueFd device(retried([dev] { return ::open(dev, FLAGS); }));
    requireCall(static_cast<bool>(device), "open() failed", dev);
    requireCall(::lseek(device.get(), 0, SEEK_SET) == 0, "lseek() failed", dev);
    char record[MBR_SIZE];
    const ssize_t count = retried([&] { return ::read(device.get(), record, sizeof record); });
    requireCall(count >= 0, "read() failed", dev);
    const auto kinds = parseMbr({record, static_cast<std::size_t>(count)});
    require(kinds.has_value(), "has no master boot record", dev);
    return *kinds;
}

/// The size of a partition as the kernel knows it, 0 where it knows none.
uint64 sizeOfPartition(std::string_view dev, int partition)
{
    const std::string disk(dev.substr(dev.rfind('/') + 1));
    return K7SystemUtil::SCSI::getUsbStorageSize(disk.c_str(), partition);
}

} // namespace

bool FS::format(unsigned int fsType, const char* devPath, const char* label)
{
    if (fsType != FS_TYPE_EXT)
        J3_REPORT("false", "invalid file system type!", SOURCE);
    return attempt("FS::format", [&] {
        require(fsType == FS_TYPE_EXT, "invalid file system type!");
        require(hasText(devPath), NO_DEVICE);
        J3String command;
        command.format(L"mkfs.ext3 %s", devPath);
        if (label)
            command.appendf(L" -L %s", label);
        return Shell::runCommand(command) == 0;
    });
}

bool FS::mount(const char* dev, const char* dir, const char* fsTypeName, long flags, const void* data, int retry)
{
    return attempt("FS::mount", [&] {
        require(hasText(dir), "no directory");
        requireWithRetries(retry, "mount() failed", hasText(dev) ? dev : dir,
                           [&] { return ::mount(dev, dir, fsTypeName, static_cast<unsigned long>(flags), data); });
    });
}

bool FS::mount(const char* dev, const char* dir, int fsType, long flags, const void* data, int retry)
{
    return attempt("FS::mount", [&] {
        require(hasText(dir), "no directory");
        switch (fsType) {
        case FS_TYPE_VFAT:
            return mount(dev, dir, "vfat", flags, data, retry);
        case FS_TYPE_EXT:
            return mount(dev, dir, "ext3", flags, EXT_OPTIONS, retry);
        case FS_TYPE_NTFS:
            return mountByDriver(dev, dir, (flags & MS_NOATIME) != 0);
        default:
            throw Reason{"invalid file system type", 0, hasText(dev) ? dev : dir};
        }
    });
}

bool FS::umount(const char* dir, int retry)
{
    return attempt("FS::umount", [&] {
        require(hasText(dir), "no directory");
        requireWithRetries(retry, "umount() failed", dir, [dir] { return ::umount(dir); });
    });
}

bool FS::checkFileSystemExist(const char* dev)
{
    return attempt("FS::checkFileSystemExist", [dev] { openProbe(dev); });
}

bool FS::checkFileSystemFormat(const char* dev, const char* label)
{
    return attempt("FS::checkFileSystemFormat", [&] {
        const BlkidProbe probe = openProbe(dev);
        require(label, "no label");
        int found = 0;
        while ((found = ::blkid_do_probe(probe.get())) == 0)
            if (hasValue(probe.get(), "LABEL", label))
                return true;
        requireCall(found > 0, "can't read the device", dev);
        return false;
    });
}

bool FS::getFileSystemMountedPath(char* mountDir, const char* dev)
{
    return attempt("FS::getFileSystemMountedPath", [&] {
        require(hasText(dev), NO_DEVICE);
        const std::string table = readMountTable();
        MountTableParser rows(table);
        for (MountRow row; rows.next(&row);) {
            if (!isMountText(row.device, dev))
                continue;
            const std::string directory = unescapedMountText(row.directory);
            require(directory.size() < PATH_MAX, "the directory's name is too long", dev);
            if (mountDir)
                std::memcpy(mountDir, directory.c_str(), directory.size() + 1);
            return true;
        }
        return false;
    });
}

bool FS::listMounts(std::vector<MountInfo>* mounts)
{
    return attempt("FS::listMounts", [mounts] {
        require(mounts, "mounts is null");
        const std::string table = readMountTable();
        const auto text = [](std::string_view escaped) { return toWide(unescapedMountText(escaped)); };
        std::vector<MountInfo> found;
        MountTableParser rows(table);
        for (MountRow row; rows.next(&row);)
            found.push_back({text(row.device), text(row.directory), text(row.type), text(row.options)});
        *mounts = std::move(found);
    });
}

bool FS::readPartitionInfo(const char* dev, bool* usable, uint64* sizes, int* fsType)
{
    return attempt("FS::readPartitionInfo", [&] {
        require(usable && sizes && fsType, "an output is null");
        const auto kinds = readMbr(dev);
        const auto isUsable = [](PartitionKind kind) {
            return kind == PartitionKind::FAT || kind == PartitionKind::NTFS;
        };
        const auto last = std::find_if(kinds.rbegin(), kinds.rend(), isUsable);
        if (last == kinds.rend())
            return false;
        *fsType = *last == PartitionKind::NTFS ? FS_TYPE_NTFS : FS_TYPE_VFAT;
        std::fill_n(usable, MAX_PARTITION_COUNT, false);
        std::fill_n(sizes, MAX_PARTITION_COUNT, uint64{0});
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            usable[i] = isUsable(kinds[i]);
            if (kinds[i] != PartitionKind::EMPTY && kinds[i] != PartitionKind::EXTENDED)
                sizes[i] = sizeOfPartition(dev, static_cast<int>(i) + 1);
        }
        return true;
    });
}

bool FS::reloadPartition(const char* devPath)
{
    return attempt("FS::reloadPartition", [devPath] {
        require(hasText(devPath), NO_DEVICE);
        constexpr int FLAGS = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
        const UniqueFd device(retried([devPath] { return ::open(devPath, FLAGS); }));
        requireCall(static_cast<bool>(device), "open() failed", devPath);
        requireCall(retried([&] { return ::ioctl(device.get(), BLKRRPART); }) == 0, "ioctl(BLKRPART) failed", devPath);
    });
}

} // namespace Kivo
