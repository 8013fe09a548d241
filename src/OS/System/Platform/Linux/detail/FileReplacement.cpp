// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Replaces a file so that its readers see the old or the new contents, never a part.
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/FileReplacement_p.h"
#include "OS/System/Platform/Linux/detail/SystemPath_p.h"

#include <atomic>
#include <cstdio>

namespace Kivo {

namespace {

constexpr int NAME_ATTEMPTS = 100;

/// The file that a path's links lead to, which need not be there yet.
struct Place {
    UniqueFd directory;
    std::string name;
};

Place findPlace(const std::string& path)
{
    UniqueFd top = openSystemPath("/", O_PATH | O_DIRECTORY);
    requireCall(static_cast<bool>(top), "can't open the root directory", path);
    RootWalk walk(top.get(), path);
    const bool exists = walk.toEnd();
    requireCall(exists || (errno == ENOENT && walk.atLastName()), "can't find the file", path);
    require(!exists || walk.isRegularFile(), "is not a regular file", path);
    const auto open = [&] { return ::openat(walk.directory(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC); };
    Place place{UniqueFd(retried(open)), walk.name()};
    requireCall(static_cast<bool>(place.directory), "can't open the file's directory", path);
    return place;
}

/// A file in the making beside the one to be replaced; it goes unless it is renamed.
class TemporaryFile {
public:
    TemporaryFile(const Place& place, mode_t mode) : _directory(place.directory.get())
    {
        static constinit std::atomic<unsigned int> s_count{0};
        for (int attempt = 0; attempt < NAME_ATTEMPTS && !_fd; ++attempt) {
            _name = "." + place.name + "." + std::to_string(::getpid()) + "." + std::to_string(++s_count);
            constexpr int FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
            _fd = UniqueFd(retried([&] { return ::openat(_directory, _name.c_str(), FLAGS, mode); }));
            if (!_fd && errno != EEXIST)
                break;
        }
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    ~TemporaryFile()
    {
        if (_fd && !_renamed)
            ::unlinkat(_directory, _name.c_str(), 0);
    }

    /// Whether it could be made; errno tells why not.
    explicit operator bool() const { return static_cast<bool>(_fd); }
    [[nodiscard]] int get() const { return _fd.get(); }

    /// @return false, with errno, when it cannot take the place
    bool renameTo(const std::string& name)
    {
        _renamed = ::renameat(_directory, _name.c_str(), _directory, name.c_str()) == 0;
        return _renamed;
    }

private:
    int _directory;
    std::string _name;
    UniqueFd _fd;
    bool _renamed = false;
};

void writeAll(int fd, std::string_view contents, const std::string& path)
{
    while (!contents.empty()) {
        const ssize_t written = retried([&] { return ::write(fd, contents.data(), contents.size()); });
        requireCall(written > 0, "can't write the file", path);
        contents.remove_prefix(static_cast<std::size_t>(written));
    }
}

void sync(int fd, const std::string& path)
{
    requireCall(retried([&] { return ::fsync(fd); }) == 0, "can't sync the file", path);
}

void writeOver(const Place& place, const std::string& path, std::string_view contents, mode_t mode)
{
    const auto open = [&] {
        return ::openat(place.directory.get(), place.name.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    };
    const UniqueFd file(retried(open));
    requireCall(static_cast<bool>(file), "can't write the file", path);
    const auto size = static_cast<off_t>(contents.size());
    const auto reserve = [&] { return ::fallocate(file.get(), FALLOC_FL_KEEP_SIZE, 0, size); };
    requireCall(size == 0 || retried(reserve) == 0 || errno == EOPNOTSUPP, "no room for the file", path);
    writeAll(file.get(), contents, path);
    requireCall(retried([&] { return ::ftruncate(file.get(), size); }) == 0, "can't cut the file", path);
    static_cast<void>(::fchmod(file.get(), mode)); // that of another owner's file stays
    sync(file.get(), path);
}

/// Whether a file may be written over where it cannot be replaced.
bool refusesReplacement(int error)
{
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
}

/// @return 0; the errno where the directory or the file refuses it
int replace(const Place& place, const std::string& path, std::string_view contents, mode_t mode)
{
    TemporaryFile file(place, mode);
    if (!file && refusesReplacement(errno))
        return errno;
    requireCall(static_cast<bool>(file), "can't make a file beside it", path);
    writeAll(file.get(), contents, path);
    requireCall(::fchmod(file.get(), mode) == 0 || errno == EPERM, "can't set the file's mode", path);
    sync(file.get(), path);
    if (!file.renameTo(place.name)) {
        const int error = errno;
        requireCall(refusesReplacement(error), "can't rename the file", path);
        return error;
    }
    // The new file is in force already: that its name is not on the medium yet is no failure.
    const auto open = [&] { return ::openat(place.directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); };
    static_cast<void>(::fsync(UniqueFd(retried(open)).get()));
    return 0;
}

} // namespace

void replaceFile(const std::string& path, std::string_view contents, mode_t mode)
{
    const Place place = findPlace(path);
    const int refusal = replace(place, path, contents, mode);
    if (refusal == 0)
        return;
    try {
        writeOver(place, path, contents, mode);
    } catch (Reason& reason) {
        // A file that is a mount of its own refuses only to be renamed: what failed is the writing.
        if (refusal != EBUSY && refusal != EXDEV)
            reason.errorCode = refusal;
        throw;
    }
}

} // namespace Kivo
