// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files, links and directories below the system root.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/FileReplacement_p.h"
#include "OS/System/Platform/Linux/detail/SystemPath_p.h"

#include <cstring>
#include <memory>

namespace Kivo {

/// A file below the system root, read from its beginning on.
class SystemFile {
public:
    explicit SystemFile(std::string path);

    /// Whether the file could be opened; errno tells why not.
    explicit operator bool() const { return static_cast<bool>(_fd); }

    [[nodiscard]] const std::string& path() const { return _path; }

    /// Raise a reason, with the current errno, when the file could not be opened.
    const SystemFile& opened() const;

    /// Read up to @p size bytes in one call of the kernel; what a generated file gives at once is one state of it.
    /// @return the bytes read; none at the end, with errno 0, and on an error
    std::string_view readInto(char* buffer, std::size_t size);

    /// The same; raises a reason on an error.
    std::string_view readSome(char* buffer, std::size_t size);

    /// Read to the end, or @p limit bytes; of more than MAX_SIZE none. @return false, with errno, when reading fails
    bool readAll(std::string* text, std::size_t limit = MAX_SIZE);

    static constexpr std::size_t MAX_SIZE = 16U << 20U;

private:
    std::string _path;
    UniqueFd _fd;
};

/// The lines of a file below the system root, cut as fgets cuts them: a longer line comes in pieces.
class SystemLines {
public:
    /// @param size the buffer size that fgets would be given, 2 to BUFFER_SIZE: a piece has at most size - 1 bytes
    SystemLines(std::string path, std::size_t size) : _file(std::move(path)), _size(size) {}

    explicit operator bool() const { return static_cast<bool>(_file); }

    /// Raise a reason, with the current errno, when the file could not be opened.
    SystemLines& opened()
    {
        _file.opened();
        return *this;
    }

    /// Deliver the next line with its line feed; it is valid until the next call.
    /// @return false at the end, and when the file cannot be read or is larger than SystemFile::MAX_SIZE: the operation
    ///     under way has then failed
    bool next(std::string_view* line)
    {
        const char* const start = _buffer + _begin;
        const void* const feed = std::memchr(start, '\n', std::min(_end - _begin, _size - 1));
        if (!feed)
            return nextUnfinished(line);
        *line = {start, static_cast<const char*>(feed) + 1};
        _begin += line->size();
        return true;
    }

    /// Whether reading failed; next() has noted why.
    [[nodiscard]] bool failed() const { return _failed; }

    static constexpr std::size_t BUFFER_SIZE = 16384;

private:
    /// The same for a line whose end is not in the buffer, or further away than a piece is long.
    bool nextUnfinished(std::string_view* line);
    std::size_t fill();

    SystemFile _file;
    std::size_t _size;
    std::size_t _begin = 0;
    std::size_t _end = 0;
    std::size_t _total = 0;
    bool _failed = false;
    char _buffer[BUFFER_SIZE];
};

/// Hand the lines of a file, cut at 511 bytes, to @p take until it returns true.
/// @return whether a line was taken; when the file could not be opened or read, the operation under way has failed
template <class Take>
bool anyLine(const char* path, Take&& take)
{
    SystemLines lines(path, 512);
    if (!lines)
        noteFailure({"can't open the file", errno, path});
    std::string_view line;
    while (lines && lines.next(&line))
        if (take(line))
            return true;
    return false;
}

/// Read the first line as fgets reads it, without its line feed.
/// @return false, with errno, when it cannot be read; with errno 0 when the file is empty
bool readFirstLine(const char* path, std::size_t size, std::string* line);

/// Read a symbolic link below the system root. @return false, with errno, when there is none or it cannot be read
bool readSystemLink(const char* path, std::string* target);

/// List the names in a directory below the system root, without "." and "..", in ascending order.
/// @return false, with errno and @p names as they were, when it cannot be read or holds more than MAX_NAMES
bool listSystemDirectory(const char* path, std::vector<std::string>* names);

constexpr std::size_t MAX_NAMES = 1U << 20U;

/// Raise the "can't open" message of a reader whose file is not there, and remember it as the last failure.
[[noreturn]] void throwCantOpen(const char* path);
[[noreturn]] void throwCantRead(const char* path);

} // namespace Kivo
