// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Plain files of the tool's own, written without a word lost.
#include "FileTools.h"

#include "Archive.h"

#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace K7Tool {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(int error, const char* what, const fs::path& path)
{
    throw std::system_error(error, std::generic_category(), std::string(what) + path.string());
}

} // namespace

FileWriter::FileWriter(fs::path path)
    : _path(std::move(path)), _fd(Kivo::retried([&] {
          return ::open(_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
      }))
{
    if (!_fd)
        fail(errno, "cannot make ", _path);
}

void FileWriter::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = Kivo::retried([&] { return ::write(_fd.get(), bytes.data(), bytes.size()); });
        if (count < 0)
            fail(errno, "cannot write ", _path);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void FileWriter::close()
{
    if (::close(_fd.release()) != 0 && errno != EINTR)
        fail(errno, "cannot write ", _path);
}

void writeFile(const fs::path& path, std::string_view contents)
{
    fs::create_directories(path.parent_path());
    FileWriter file(path);
    file.write(contents);
    file.close();
}

std::string contentsOf(const fs::path& path)
{
    const Kivo::UniqueFd fd(
        Kivo::retried([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC); }));
    struct stat status {};
    if (!fd || ::fstat(fd.get(), &status) != 0)
        fail(errno, "cannot open ", path);
    if (!S_ISREG(status.st_mode))
        fail(EINVAL, "not a file: ", path);
    if (static_cast<std::uint64_t>(status.st_size) > TreeLimits::FILE_BYTES)
        fail(EFBIG, "cannot read ", path);
    std::string contents(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    while (size < contents.size()) {
        const ssize_t count =
            Kivo::retried([&] { return ::read(fd.get(), contents.data() + size, contents.size() - size); });
        if (count < 0)
            fail(errno, "cannot read ", path);
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    contents.resize(size);
    return contents;
}

} // namespace K7Tool
