// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files: their attributes, contents and names.
#include "OS/System/FS.h"

#include "Foundation/J3Assert.h"
#include "Foundation/J3TickUtil.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/DirectoryWalk_p.h"
#include "OS/System/Platform/Linux/detail/Directory_p.h"
#include "OS/System/Platform/Linux/detail/FileCopy_p.h"
#include "OS/System/Platform/Linux/detail/FileDigest_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"
#include "OS/System/Shell.h"

#include <algorithm>

#include <sys/stat.h>
#include <sys/vfs.h>

namespace Kivo {

namespace {

using FS = K7SystemUtil::FS;

constexpr const char* SOURCE = "OS/System/Platform/Linux/FS";
constexpr const char* NO_PATH = "no path";
constexpr mode_t PERMISSIONS = 07777;

struct stat attributesOf(const char* path)
{
    require(hasText(path), NO_PATH);
    struct stat status {};
    requireCall(retried([&] { return ::stat(path, &status); }) == 0, "stat() failed", path);
    return status;
}

/// The same for a path that may lead nowhere, which is an answer.
bool findAttributes(const char* path, struct stat* status)
{
    try {
        *status = attributesOf(path);
        return true;
    } catch (const Reason& reason) {
        if (reason.errorCode != ENOENT && reason.errorCode != ENOTDIR)
            throw;
        return false;
    }
}

bool storeDigest(const char* operation, DigestKind kind, J3String* hex, const char* path, const ProgressReport& report)
{
    return attempt(operation, [&] {
        require(hex, "hex is null");
        require(hasText(path), NO_PATH);
        *hex = toWide(digestOfFile(kind, path, report));
    });
}

/// Write 256 KiB of zeros into a new file.
void fillDummyFile(int fd, const char* path)
{
    constexpr int BLOCK_COUNT = 256;
    constexpr char BLOCK[1024] = {};
    for (int i = 0; i < BLOCK_COUNT; ++i)
        for (std::size_t done = 0; done < sizeof BLOCK;) {
            const ssize_t count = retried([&] { return ::write(fd, BLOCK + done, sizeof BLOCK - done); });
            requireCall(count > 0, "write() failed", path);
            done += static_cast<std::size_t>(count);
        }
}

} // namespace

bool FS::FileStatInfo::isRegular() const { return S_ISREG(_mode); }
bool FS::FileStatInfo::isDirectory() const { return S_ISDIR(_mode); }
bool FS::FileStatInfo::isSocket() const { return S_ISSOCK(_mode); }
bool FS::FileStatInfo::isSymbolicLink() const { return S_ISLNK(_mode); }
bool FS::FileStatInfo::isBlkDev() const { return S_ISBLK(_mode); }
bool FS::FileStatInfo::isCharDev() const { return S_ISCHR(_mode); }
bool FS::FileStatInfo::isFifo() const { return S_ISFIFO(_mode); }
bool FS::FileStatInfo::isOwnerR() const { return (_mode & S_IRUSR) != 0; }
bool FS::FileStatInfo::isOwnerW() const { return (_mode & S_IWUSR) != 0; }
bool FS::FileStatInfo::isOwnerX() const { return (_mode & S_IXUSR) != 0; }
bool FS::FileStatInfo::isGroupR() const { return (_mode & S_IRGRP) != 0; }
bool FS::FileStatInfo::isGroupW() const { return (_mode & S_IWGRP) != 0; }
bool FS::FileStatInfo::isGroupX() const { return (_mode & S_IXGRP) != 0; }
bool FS::FileStatInfo::isOtherR() const { return (_mode & S_IROTH) != 0; }
bool FS::FileStatInfo::isOtherW() const { return (_mode & S_IWOTH) != 0; }
bool FS::FileStatInfo::isOtherX() const { return (_mode & S_IXOTH) != 0; }

uint64 FS::totalSize(const char* targetDir) { return totalSize(targetDir, nullptr); }

uint64 FS::totalSize(const char* targetDir, uint32* milliseconds)
{
    static_cast<void>(J3_REQUIRE(targetDir, "got NULL pointer!", SOURCE));
    const uint32 begin = J3TickUtil::currentTick();
    uint64 total = 0;
    attempt("FS::totalSize", [&] {
        require(hasText(targetDir), NO_PATH);
        return sumSizes(targetDir, &total);
    });
    if (milliseconds)
        *milliseconds = J3TickUtil::diffTick(begin, J3TickUtil::currentTick());
    return total;
}

uint64 FS::getFreeSpace(const char* path)
{
    return attemptOr("FS::getFreeSpace", uint64{0}, [path] {
        require(hasText(path), NO_PATH);
        requireLiveSystem();
        struct statfs status {};
        requireCall(retried([&] { return ::statfs(path, &status); }) == 0, "statfs() failed", path);
        return static_cast<uint64>(status.f_bsize) * status.f_bavail;
    });
}

bool FS::checkExistence(const char* path)
{
    return attempt("FS::checkExistence", [path] {
        struct stat status {};
        return findAttributes(path, &status);
    });
}

bool FS::dirExistence(const char* path)
{
    return attempt("FS::dirExistence", [path] {
        struct stat status {};
        return findAttributes(path, &status) && S_ISDIR(status.st_mode);
    });
}

bool FS::getFileSize(uint64* size, const char* path)
{
    return attempt("FS::getFileSize", [&] {
        require(size, "size is null");
        *size = static_cast<uint64>(attributesOf(path).st_size);
    });
}

bool FS::setPermOtherReadAccess(const char* path)
{
    return attempt("FS::setPermOtherReadAccess", [path] {
        const mode_t mode = (attributesOf(path).st_mode & PERMISSIONS) | S_IROTH;
        requireCall(retried([&] { return ::chmod(path, mode); }) == 0, "chmod() failed", path);
    });
}

bool FS::getFileNameExceptExt(char* out, const char* name)
{
    if (!out)
        return false;
    const std::string_view whole(name ? name : "");
    const std::size_t dot = whole.rfind('.');
    const std::size_t size = dot == std::string_view::npos ? 0 : dot;
    std::memmove(out, whole.data(), size);
    out[size] = '\0';
    return dot != std::string_view::npos;
}

J3Time FS::fileModificationTime(const char* path)
{
    J3Time time;
    attempt("FS::fileModificationTime", [&] { time.setUtcTime(static_cast<uint32>(attributesOf(path).st_mtime)); });
    return time;
}

bool FS::getFileStat(FileStatInfo* result, const J3String& path)
{
    static_cast<void>(J3_REQUIRE_ARGUMENT(result, SOURCE));
    return attempt("FS::getFileStat", [&] {
        require(result, "result is Null!");
        const struct stat status = attributesOf(path.to_string().c_str());
        *result = {static_cast<int32>(status.st_uid), static_cast<int32>(status.st_gid), status.st_mode,
                   static_cast<uint32>(status.st_size), static_cast<uint32>(status.st_mtime)};
    });
}

bool FS::copyFile(const char* destPath, const char* srcPath) { return copyFile(destPath, srcPath, nullptr, nullptr); }

bool FS::copyFile(const char* destPath, const char* srcPath, Progress progress, void* context)
{
    return attempt("FS::copyFile", [&] {
        require(hasText(destPath), "invalid dest pathName");
        require(hasText(srcPath), "invalid source pathName");
        copyContents(destPath, srcPath, {progress, context});
    });
}

bool FS::getMD5Sum(J3String* hex, const char* path) { return getMD5Sum(hex, path, nullptr, nullptr); }

bool FS::getMD5Sum(J3String* hex, const char* path, Progress progress, void* context)
{
    return storeDigest("FS::getMD5Sum", DigestKind::MD5, hex, path, {progress, context});
}

bool FS::getSHA256Sum(J3String* hex, const char* path) { return getSHA256Sum(hex, path, nullptr, nullptr); }

bool FS::getSHA256Sum(J3String* hex, const char* path, Progress progress, void* context)
{
    return storeDigest("FS::getSHA256Sum", DigestKind::SHA256, hex, path, {progress, context});
}

bool FS::checkAndCreateDummyFile(const char* path)
{
    return attempt("FS::checkAndCreateDummyFile", [path] {
        struct stat status {};
        if (findAttributes(path, &status))
            return true;
        constexpr int FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
        const UniqueFd file(retried([path] { return ::open(path, FLAGS, 0666); }));
        requireCall(static_cast<bool>(file), "can't make the file", path);
        try {
            fillDummyFile(file.get(), path);
        } catch (const Reason&) {
            ::unlink(path); // half a file would pass for a whole one the next time
            throw;
        }
        return true;
    });
}

bool FS::deleteFile(const char* path)
{
    return attempt("FS::deleteFile", [path] {
        require(hasText(path), NO_PATH);
        return Shell::runCommand(L"rm -f %s", path) == 0;
    });
}

bool FS::clearPath(const char* dir)
{
    return attempt("FS::clearPath", [dir] {
        require(hasText(dir), NO_PATH);
        return clearDirectory(dir, MAX_DIR_DEPTH);
    });
}

std::vector<J3String> FS::listDirectory(const char* dir)
{
    std::vector<J3String> names;
    attempt("FS::listDirectory", [&] {
        require(S_ISDIR(attributesOf(dir).st_mode), "is not a directory", dir);
        Directory directory(AT_FDCWD, dir, 0);
        requireCall(static_cast<bool>(directory), "opendir() failed", dir);
        std::vector<J3String> found;
        while (const char* name = directory.next()) {
            require(found.size() != MAX_NAMES, "holds too many names", dir);
            found.push_back(J3String::from_string(std::string_view(name)));
        }
        requireCall(errno == 0, "readdir() failed", dir);
        std::sort(found.begin(), found.end());
        names = std::move(found);
    });
    return names;
}

} // namespace Kivo
