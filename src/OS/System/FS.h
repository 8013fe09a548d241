// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// File systems, and files on them.
#pragma once

#include "Foundation/J3Time.h"
#include "OS/System/K7SystemUtilClass.h"

#include <vector>

namespace Kivo {

/// Makes, mounts, recognises and measures file systems, and copies, hashes, lists and deletes files.
///
/// Paths and devices are those of the running machine, whatever the system root; what is read about the system (the
/// mount table, the sizes of partitions) is read below it. A null or empty path is a failure of every operation.
/// Texts that are put into a command go to the shell unquoted: they must come from the application, never from outside.
///
/// *Threads*: any; there is no state. *Cost*: where nothing else is said, a few system calls.
class K7SAL_API K7SystemUtil::FS {
public:
    /// Most partitions considered on one disk.
    enum { MAX_PARTITION_COUNT = 8 };

    /// Kinds of file systems.
    enum {
        FS_TYPE_NONE = 0, ///< no file system
        FS_TYPE_EXT = 1,  ///< ext3
        FS_TYPE_VFAT = 2, ///< FAT, "vfat"
        FS_TYPE_NTFS = 3  ///< NTFS, by the user-space driver ntfs-3g
    };

    /// Deepest nesting of directories that clearPath() enters.
    enum { MAX_DIR_DEPTH = 20 };

    /// A file's attributes; those of a new object are nobody's.
    struct K7SAL_API FileStatInfo {
        int32 _uid = -1;   ///< owner
        int32 _gid = -1;   ///< group
        uint32 _mode = 0;  ///< type and permissions, the Linux st_mode bits
        uint32 _size = 0;  ///< the low 32 bits of the size in bytes
        uint32 _mtime = 0; ///< time of the last change of contents, in seconds since 1970

        /// @{ Tell the file's type.
        [[nodiscard]] bool isRegular() const;
        [[nodiscard]] bool isDirectory() const;
        [[nodiscard]] bool isSocket() const;
        [[nodiscard]] bool isSymbolicLink() const;
        [[nodiscard]] bool isBlkDev() const;
        [[nodiscard]] bool isCharDev() const;
        [[nodiscard]] bool isFifo() const;
        /// @}

        /// @{ Tell one permission (reading, writing, executing) of the owner, the group or the others.
        [[nodiscard]] bool isOwnerR() const;
        [[nodiscard]] bool isOwnerW() const;
        [[nodiscard]] bool isOwnerX() const;
        [[nodiscard]] bool isGroupR() const;
        [[nodiscard]] bool isGroupW() const;
        [[nodiscard]] bool isGroupX() const;
        [[nodiscard]] bool isOtherR() const;
        [[nodiscard]] bool isOtherW() const;
        [[nodiscard]] bool isOtherX() const;
        /// @}
    };

    /// One row of the mount table.
    struct MountInfo {
        J3String device;    ///< "/dev/sda1"; for a file system without one whatever was given
        J3String directory; ///< where
        J3String type;      ///< the kernel's name of the file system, "ext3"
        J3String options;   ///< "rw,relatime"
    };

    /// Told how far long work has come, and asked whether it goes on: false ends it as a failure ("was ended").
    /// @param context what was given with it
    /// @param done    bytes worked off so far
    /// @param total   bytes that there were when the work began; 0 where that is not known, as of a block device
    using Progress = bool (*)(void* context, uint64 done, uint64 total);

    FS() = delete;

    /// Make an ext3 file system: "mkfs.ext3 DEVICE", with " -L LABEL" when there is one.
    /// @param fsType  #FS_TYPE_EXT; any other is asserted against and makes nothing
    /// @param devPath the device
    /// @param label   the volume's name; may be null
    /// @return whether the command gave 0
    /// *Privilege*: that of the device, in the runner.
    static bool format(unsigned int fsType, const char* devPath, const char* label);

    /// Mount a device.
    /// @param dev        the device; null for a file system without one
    /// @param dir        where
    /// @param fsTypeName the kernel's name of the file system, "ext3"
    /// @param flags      those of mount(2)
    /// @param data       the file system's options; may be null
    /// @param retry      how often it is tried; below 1 not at all
    /// @return true at the first success; the failure's errno is the first attempt's
    /// *Privilege*: CAP_SYS_ADMIN. *Cost*: 500 ms after every attempt that fails, the last one too.
    static bool mount(const char* dev, const char* dir, const char* fsTypeName, long flags, const void* data,
                      int retry);

    /// Mount a device by its kind of file system.
    ///
    /// #FS_TYPE_VFAT as "vfat"; #FS_TYPE_EXT as "ext3" with the options "nocheck,errors=continue" in place of @p data;
    /// #FS_TYPE_NTFS by the command "ntfs-3g DEVICE DIRECTORY", with " -o noatime" when @p flags has MS_NOATIME (1024),
    /// once and without @p data. Any other kind is a failure.
    /// @param dev    the device
    /// @param dir    where
    /// @param fsType the kind
    /// @param flags  those of mount(2)
    /// @param data   the file system's options; may be null
    /// @param retry  how often it is tried; below 1 not at all
    static bool mount(const char* dev, const char* dir, int fsType, long flags, const void* data, int retry);

    /// Unmount what is mounted on a directory.
    /// @param dir   the directory
    /// @param retry how often it is tried; below 1 not at all
    /// *Privilege*: CAP_SYS_ADMIN. *Cost*: 500 ms after every attempt that fails, the last one too.
    static bool umount(const char* dir, int retry);

    /// Tell whether a device (or an image file) is there to be examined.
    /// *Source*: libblkid. *Privilege*: that of reading the device.
    static bool checkFileSystemExist(const char* dev);

    /// Tell whether the file system on a device (or in an image file) has a name.
    /// @param dev   the device
    /// @param label the whole name
    /// @return false, too, when nothing is recognised there, which is not a failure
    /// *Source*: libblkid. *Privilege*: that of reading the device. *Cost*: some dozen reads from the device.
    static bool checkFileSystemFormat(const char* dev, const char* label);

    /// Find where a device is mounted.
    /// @param mountDir becomes the directory: room for 4,096 bytes; null when it is not wanted
    /// @param dev      the device as the mount table names it
    /// @return false, with @p mountDir untouched, when it is not mounted or the table cannot be read, which is a
    /// failure *Source*: /proc/mounts, the first entry of that device.
    static bool getFileSystemMountedPath(char* mountDir, const char* dev);

    /// List what is mounted, the oldest mount first.
    /// @return false, with @p mounts untouched, when the table cannot be read
    /// *Source*: /proc/mounts.
    static bool listMounts(std::vector<MountInfo>* mounts);

    /// Find the partitions of a disk that can be mounted, by its master boot record.
    /// @param dev    the disk, "/dev/sda"
    /// @param usable becomes, for the four primary entries, whether it is FAT or NTFS; #MAX_PARTITION_COUNT entries
    /// @param sizes  becomes the partitions' sizes in bytes as the kernel knows them, 0 where there is none;
    ///               #MAX_PARTITION_COUNT entries
    /// @param fsType becomes the kind of the last usable one, #FS_TYPE_NTFS or #FS_TYPE_VFAT
    /// @return false, with all three untouched, when none is usable, and when the record cannot be read or has no
    ///     signature, which is a failure
    ///
    /// An extended partition is not entered, nor is a GPT behind a protective record.
    /// *Privilege*: that of reading and writing the device, which is opened for both.
    static bool readPartitionInfo(const char* dev, bool* usable, uint64* sizes, int* fsType);

    /// Have the kernel read a disk's partition table anew (BLKRPART).
    /// @return false when it cannot, as while a partition is in use
    /// *Privilege*: CAP_SYS_ADMIN.
    static bool reloadPartition(const char* devPath);

    /// Sum up the sizes of the regular files below a directory, each hard link once. Symbolic links are not followed.
    /// @param targetDir the directory, or a file, but not a symbolic link; null is asserted against
    /// @return the sum in bytes; what could not be looked at is left out and is a failure, as are directories nested
    ///     deeper than 256
    /// *Cost*: one stat(2) for each file.
    static uint64 totalSize(const char* targetDir);

    /// The same, with how long the walk took in @p milliseconds, which may be null.
    static uint64 totalSize(const char* targetDir, uint32* milliseconds);

    /// Measure the space that is left for users without privilege, in bytes; 0 when it cannot be told.
    /// Only of the running machine: it fails while a system root is set.
    static uint64 getFreeSpace(const char* path);

    /// Tell whether a path leads to anything; a link that leads nowhere does not.
    static bool checkExistence(const char* path);

    /// Tell whether a path leads to a directory.
    static bool dirExistence(const char* path);

    /// Read a file's size in bytes.
    static bool getFileSize(uint64* size, const char* path);

    /// Let others than owner and group read a file. *Privilege*: the file's owner.
    static bool setPermOtherReadAccess(const char* path);

    /// Cut a name at its last ".", the dot included.
    /// @param out  becomes what stands before it, or empty: room for the whole of @p name; may be @p name itself
    /// @param name the name, "backup.tar.gz"
    /// @return false when there is no dot
    static bool getFileNameExceptExt(char* out, const char* name);

    /// Tell when a file's contents last changed; an invalid time when that cannot be told.
    static J3Time fileModificationTime(const char* path);

    /// Read a file's attributes; of a link those of what it leads to.
    /// @param result becomes the attributes; null is asserted against
    /// @param path   the file
    static bool getFileStat(FileStatInfo* result, const J3String& path);

    /// Copy a regular file, the destination first.
    ///
    /// As much is copied as the source held at the beginning; one that shrinks or grows meanwhile is a failure. A new
    /// destination gets the source's mode, less the umask; one that is there is written over and cut to length. After a
    /// failure it holds what was copied so far. The source is never touched: a destination that is the same file, by
    /// whatever name, is refused.
    /// @return true once the copy is on the medium
    /// *Cost*: 8 KiB of memory; waits for the medium, and at most 100 ms a chunk for one that takes nothing.
    static bool copyFile(const char* destPath, const char* srcPath);

    /// The same; @p progress is called with @p context after each mebibyte.
    static bool copyFile(const char* destPath, const char* srcPath, Progress progress, void* context);

    /// @{
    /// Compute the digest of a regular file or a block device.
    ///
    /// Reading goes to the end, however the file grows meanwhile: let the progress function, which is called with its
    /// context after each mebibyte, end what could be without one. The text becomes the digest in lower-case
    /// hexadecimal digits, on success alone. *Cost*: a processor's time, with a pause of 10 ms after each mebibyte.
    static bool getMD5Sum(J3String* hex, const char* path);
    static bool getMD5Sum(J3String* hex, const char* path, Progress progress, void* context);
    static bool getSHA256Sum(J3String* hex, const char* path);
    static bool getSHA256Sum(J3String* hex, const char* path, Progress progress, void* context);
    /// @}

    /// Make a file of 256 KiB of zeros unless there is one by that name already, which stays as it is.
    /// @return whether the file is there; one that could not be written in full is removed
    static bool checkAndCreateDummyFile(const char* path);

    /// Delete a file, by the command "rm -f PATH". @return whether the command gave 0
    static bool deleteFile(const char* path);

    /// Delete everything in a directory, which itself stays. Symbolic links are deleted, not followed; nor is @p dir
    /// one. Other file systems mounted below it are left alone.
    /// @return false when anything is left: what cannot be deleted, and what lies more than #MAX_DIR_DEPTH directories
    ///     deep. The rest is deleted all the same.
    /// *Cost*: two system calls for each file.
    static bool clearPath(const char* dir);

    /// List the names in a directory, without "." and "..", in ascending order.
    /// @return nothing, too, when it is not a directory, cannot be read or holds more than 1,048,576, which are
    /// failures
    static std::vector<J3String> listDirectory(const char* dir);
};

} // namespace Kivo
