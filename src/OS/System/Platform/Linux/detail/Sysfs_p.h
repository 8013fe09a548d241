// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Paths below /sys that are formed from names and numbers, and what is read there.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Foundation/J3String.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"

#include <cstring>

namespace Kivo {

/// Form a path as J3String::format() does.
template <class... Arguments>
std::string pathOf(const wchar_t* format, Arguments... arguments)
{
    return J3String().format(format, arguments...).to_string();
}

/// Raise a reason unless @p dev can be the name of an entry in /sys/block, which no path may lead out of.
inline void requireDeviceName(const char* dev)
{
    require(hasText(dev), "invalid input parameters");
    const std::string_view name = dev;
    require(name.find('/') == std::string_view::npos && name != "." && name != "..",
            "is not the name of a block device", name);
}

/// Whether the current errno says that there is no such file or link, rather than that it could not be looked at.
inline bool isAbsent() { return errno == ENOENT || errno == ENOTDIR || errno == EINVAL; }

/// Read the first line of a file, cut at @p size - 1 bytes, without its line feed.
inline std::string requireLine(const std::string& path, std::size_t size)
{
    std::string line;
    requireCall(readFirstLine(path.c_str(), size, &line), "can't read the file", path);
    return line;
}

/// Read the target of a symbolic link, cut at 511 bytes.
inline std::string requireLink(const std::string& path)
{
    constexpr std::size_t LINK_SIZE = 511;
    std::string target;
    requireCall(readSystemLink(path.c_str(), &target), "can't read the link", path);
    return target.substr(0, LINK_SIZE);
}

/// Look whether there is a symbolic link. A link that cannot be looked at is raised as a reason.
inline bool isLink(const std::string& path)
{
    std::string target;
    const bool isRead = readSystemLink(path.c_str(), &target);
    requireCall(isRead || isAbsent(), "can't read the link", path);
    return isRead;
}

/// Put @p text, terminated, into a caller's buffer of @p size bytes; one that is too long is raised as a reason.
inline void putText(char* out, std::string_view text, std::size_t size)
{
    require(text.size() < size, "is too long", text);
    std::memcpy(out, text.data(), text.size());
    out[text.size()] = '\0';
}

} // namespace Kivo
