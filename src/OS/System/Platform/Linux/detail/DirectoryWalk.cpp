// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Walks over everything below a directory, by descriptors: whatever is renamed or linked meanwhile, they stay below it.
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/DirectoryWalk_p.h"
#include "OS/System/Platform/Linux/detail/Directory_p.h"

#include <set>
#include <vector>

#include <sys/stat.h>

namespace Kivo {

namespace {

constexpr int DEEPEST_SUM = 256;
constexpr std::size_t NAMES_AT_ONCE = 4096;

std::string joined(const std::string& directory, const char* name) { return directory + '/' + name; }

class SizeSum {
public:
    explicit SizeSum(uint64* total) : _total(total) {}

    [[nodiscard]] bool complete() const { return _complete; }

    void add(int parent, const char* name, const std::string& path, int depth)
    {
        struct stat status {};
        if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0)
            return leaveOut("stat() failed", path, depth);
        if (S_ISREG(status.st_mode) && isFirstLink(status))
            *_total += static_cast<uint64>(status.st_size);
        if (!S_ISDIR(status.st_mode))
            return;
        errno = ENAMETOOLONG;
        if (depth > DEEPEST_SUM)
            return leaveOut("directories are nested too deep", path, depth);
        Directory directory(parent, name, O_NOFOLLOW);
        if (!directory)
            return leaveOut("opendir() failed", path, depth);
        while (const char* entry = directory.next())
            add(directory.get(), entry, joined(path, entry), depth + 1);
        if (errno != 0)
            leaveOut("readdir() failed", path, depth);
    }

private:
    bool isFirstLink(const struct stat& status)
    {
        return status.st_nlink < 2 || _linked.emplace(status.st_dev, status.st_ino).second;
    }

    void leaveOut(const char* reason, const std::string& path, int depth)
    {
        if (errno == ENOENT && depth != 0) // deleted meanwhile
            return;
        noteFailure({reason, errno, path});
        _complete = false;
    }

    uint64* _total;
    bool _complete = true;
    std::set<std::pair<dev_t, ino_t>> _linked; // the files seen that have more than one name
};

class Clearing {
public:
    Clearing(dev_t device, int maxDepth) : _device(device), _maxDepth(maxDepth) {}

    bool clear(Directory& directory, const std::string& path, int depth)
    {
        bool cleared = true;
        for (;;) {
            const std::vector<std::string> names = nextNames(directory);
            if (names.empty() && errno != 0)
                return leave("readdir() failed", path);
            std::size_t removed = 0;
            for (const std::string& name : names)
                removed += remove(directory.get(), name.c_str(), joined(path, name.c_str()), depth + 1) ? 1U : 0U;
            cleared = cleared && removed == names.size();
            if (names.size() < NAMES_AT_ONCE)
                return cleared;
            if (removed != 0)
                directory.rewind(); // what deleting does to a directory being read is the file system's affair
        }
    }

private:
    static std::vector<std::string> nextNames(Directory& directory)
    {
        std::vector<std::string> names;
        while (names.size() < NAMES_AT_ONCE) {
            const char* const name = directory.next();
            if (!name)
                break;
            names.emplace_back(name);
        }
        return names;
    }

    bool remove(int parent, const char* name, const std::string& path, int depth)
    {
        if (::unlinkat(parent, name, 0) == 0 || errno == ENOENT)
            return true;
        const int error = errno; // of a directory EISDIR, on some file systems EPERM
        struct stat status {};
        const bool isDirectory = ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
        errno = error;
        return isDirectory ? removeDirectory(parent, name, path, depth) : leave("unlink() failed", path);
    }

    bool removeDirectory(int parent, const char* name, const std::string& path, int depth)
    {
        errno = ENAMETOOLONG;
        if (depth > _maxDepth)
            return leave("directories are nested too deep", path);
        Directory directory(parent, name, O_NOFOLLOW);
        struct stat status {};
        if (!directory || ::fstat(directory.get(), &status) != 0)
            return leave("opendir() failed", path);
        errno = EXDEV;
        if (status.st_dev != _device)
            return leave("another file system is mounted there", path);
        return clear(directory, path, depth) &&
               (::unlinkat(parent, name, AT_REMOVEDIR) == 0 || leave("rmdir() failed", path));
    }

    static bool leave(const char* reason, const std::string& path)
    {
        noteFailure({reason, errno, path});
        return false;
    }

    dev_t _device;
    int _maxDepth;
};

} // namespace

bool sumSizes(const std::string& path, uint64* total)
{
    SizeSum sum(total);
    struct stat status {};
    requireCall(::lstat(path.c_str(), &status) == 0, "stat() failed", path);
    require(S_ISDIR(status.st_mode) || S_ISREG(status.st_mode), "is not a directory or a file", path);
    sum.add(AT_FDCWD, path.c_str(), path, 0);
    return sum.complete();
}

bool clearDirectory(const std::string& path, int maxDepth)
{
    Directory directory(AT_FDCWD, path.c_str(), O_NOFOLLOW);
    struct stat status {};
    requireCall(directory && ::fstat(directory.get(), &status) == 0, "opendir() failed", path);
    return Clearing(status.st_dev, maxDepth).clear(directory, path, 0);
}

} // namespace Kivo
