// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Owner of one file descriptor, and the one loop around interrupted system calls.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace Kivo {

/// Closes its descriptor when it goes, keeping errno; -1 is none.
class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) noexcept : _fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : _fd(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(_fd, other._fd);
        return *this;
    }
    ~UniqueFd()
    {
        if (_fd < 0)
            return;
        const int before = errno;
        ::close(_fd); // never retried: Linux frees the descriptor even when a signal interrupts
        errno = before;
    }

    explicit operator bool() const noexcept { return _fd >= 0; }
    [[nodiscard]] int get() const noexcept { return _fd; }
    [[nodiscard]] int release() noexcept { return std::exchange(_fd, -1); }

private:
    int _fd;
};

/// Make a system call, retried as long as a signal interrupts it.
template <class Call>
auto retried(Call&& call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace Kivo
