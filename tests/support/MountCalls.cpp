// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the library asks of mount(2) and umount(2): it finds these functions before the system's.
#include "support/MountCalls.h"

#include <algorithm>
#include <cerrno>
#include <sstream>

#include <sys/syscall.h>
#include <unistd.h>

namespace K7Test {

namespace {

MountCalls* s_calls = nullptr;

const char* orDash(const void* text) { return text ? static_cast<const char*>(text) : "-"; }

} // namespace

MountCalls::MountCalls() { s_calls = this; }

MountCalls::~MountCalls() { s_calls = nullptr; }

int MountCalls::take(const std::string& call)
{
    const std::size_t index = std::min(_noted.size(), results.size() - 1);
    _noted.push_back(call);
    errno = results[index];
    return errno == 0 ? 0 : -1;
}

} // namespace K7Test

using K7Test::orDash;
using K7Test::s_calls;

extern "C" int mount(const char* source, const char* target, const char* type, unsigned long flags,
                     const void* data) noexcept
{
    if (!s_calls)
        return static_cast<int>(::syscall(SYS_mount, source, target, type, flags, data));
    std::ostringstream call;
    call << "mount " << orDash(source) << ' ' << target << ' ' << orDash(type) << ' ' << std::hex << flags << ' '
         << orDash(data);
    return s_calls->take(call.str());
}

extern "C" int umount(const char* target) noexcept
{
    if (!s_calls)
        return static_cast<int>(::syscall(SYS_umount2, target, 0));
    return s_calls->take("umount " + std::string(target));
}
