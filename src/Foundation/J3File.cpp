// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A file that is closed with its object.
#include "Foundation/J3File.h"

#include "Base/UniqueFd_p.h"

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Kivo {

namespace {

bool isDirectory(int descriptor)
{
    struct stat status {};

    return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

J3File::J3File(J3File&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}

J3File& J3File::operator=(J3File&& other) noexcept
{
    J3File moved(std::move(other));
    std::swap(_descriptor, moved._descriptor);
    return *this;
}

J3File::~J3File() { close(); }

bool J3File::open(const J3String& path, Mode mode)
{
    close();
    if (mode != READ) {
        errno = EINVAL;
        return false;
    }
    const std::string name = path.to_string();
    UniqueFd opened(retried([&] { return ::open(name.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!opened)
        return false;
    if (isDirectory(opened.get())) {
        errno = EISDIR;
        return false;
    }
    _descriptor = opened.release();
    return true;
}

uint32 J3File::read(void* out, uint32 count)
{
    auto* const bytes = static_cast<uint8*>(out);
    uint32 done = 0;
    while (isOpen() && done < count) {
        const ssize_t got = retried([&] { return ::read(_descriptor, bytes + done, count - done); });
        if (got <= 0)
            break;
        done += static_cast<uint32>(got);
    }
    return done;
}

void J3File::close() { const UniqueFd closed(std::exchange(_descriptor, -1)); }

} // namespace Kivo
