// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Owner of one open directory.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/UniqueFd_p.h"

#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>

namespace Kivo {

/// Delivers the names in a directory, without "." and "..", in the order of the file system.
class Directory {
public:
    /// Take over an open directory; errno tells why it cannot be read.
    explicit Directory(UniqueFd fd) : _stream(fd ? ::fdopendir(fd.get()) : nullptr, ::closedir)
    {
        if (_stream)
            static_cast<void>(fd.release());
    }

    /// Open a directory by its name in another one, AT_FDCWD for none. @param flags such as O_NOFOLLOW
    Directory(int parent, const char* name, int flags)
        : Directory(UniqueFd(
              retried([&] { return ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | flags); })))
    {}

    explicit operator bool() const { return static_cast<bool>(_stream); }
    [[nodiscard]] int get() const { return ::dirfd(_stream.get()); }

    /// @return the next name, valid until the next call; null at the end, with errno 0, and on an error
    const char* next()
    {
        for (;;) {
            errno = 0; // the end of a directory leaves it alone
            const dirent* const entry = ::readdir(_stream.get());
            if (!entry)
                return nullptr;
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                return entry->d_name;
        }
    }

    void rewind() { ::rewinddir(_stream.get()); }

private:
    std::unique_ptr<DIR, int (*)(DIR*)> _stream;
};

} // namespace Kivo
