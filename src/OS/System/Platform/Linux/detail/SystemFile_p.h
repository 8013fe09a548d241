// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Files, links and directories below the system root.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/UniqueFd_p.h"
#include "OS/System/K7SystemUtilClass.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>

namespace Kivo {

[[nodiscard]] bool hasSystemRoot();

/// Open an absolute path below the system root, close-on-exec, never waiting for a writer. Links of a captured tree
/// cannot lead out of it.
[[nodiscard]] UniqueFd openSystemPath(const char* path, int flags, mode_t mode = 0);

/// A file below the system root, read from its beginning on.
class SystemFile {
public:
    explicit SystemFile(const char* path);
    explicit SystemFile(const std::string& path) : SystemFile(path.c_str()) {}

    /// Whether the file could be opened; errno tells why not.
    explicit operator bool() const { return static_cast<bool>(_fd); }

    /// Read up to @p size bytes in one call of the kernel; what a generated file gives at once is one state of it.
    /// @return the bytes read; none at the end, with errno 0, and on an error
    std::string_view readInto(char* buffer, std::size_t size);

    /// Read to the end, at most @p limit bytes. @return false when reading fails
    bool readAll(std::string* text, std::size_t limit = MAX_SIZE);

    static constexpr std::size_t MAX_SIZE = 16U << 20U;

private:
    UniqueFd _fd;
};

/// The lines of a file below the system root, cut as fgets cuts them: a longer line comes in pieces.
class SystemLines {
public:
    /// @param size the buffer size that fgets would be given, 2 to BUFFER_SIZE: a piece has at most size - 1 bytes
    SystemLines(const char* path, std::size_t size) : _file(path), _size(size) {}

    explicit operator bool() const { return static_cast<bool>(_file); }

    /// Deliver the next line with its line feed; it is valid until the next call. @return false at the end
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

    static constexpr std::size_t BUFFER_SIZE = 16384;

private:
    /// The same for a line whose end is not in the buffer, or further away than a piece is long.
    bool nextUnfinished(std::string_view* line);

    SystemFile _file;
    std::size_t _size;
    std::size_t _begin = 0;
    std::size_t _end = 0;
    char _buffer[BUFFER_SIZE];
};

/// Hand the lines of a file, cut at 511 bytes, to @p take until it returns true.
/// @return false when the file cannot be opened or no line was taken
template <class Take>
bool anyLine(const char* path, Take&& take)
{
    SystemLines lines(path, 512);
    std::string_view line;
    while (lines && lines.next(&line))
        if (take(line))
            return true;
    return false;
}

/// Read the first line as fgets reads it, without its line feed. @return false when there is none
bool readFirstLine(const char* path, std::size_t size, std::string* line);

/// Read a symbolic link below the system root. @return false when there is none or it cannot be read
bool readSystemLink(const char* path, std::string* target);

/// The names in a directory below the system root, without "." and "..", in ascending order.
bool listSystemDirectory(const char* path, std::vector<std::string>* names);

/// Raise the "can't open" message of a reader whose file is not there, and remember it as the last failure.
[[noreturn]] void throwCantOpen(const char* path);
[[noreturn]] void throwCantRead(const char* path);

} // namespace Kivo
