// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The system root, and the walk that keeps every path inside it.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/UniqueFd_p.h"
#include "Foundation/J3Types.h"

#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace Kivo {

[[nodiscard]] bool hasSystemRoot();

/// The root as it was set; empty for the running system.
[[nodiscard]] const std::string& systemRootPath();

/// Counts the changes of the root: what was read below an older one is another machine's.
[[nodiscard]] uint32 systemRootGeneration();

/// @param directory empty for the running system @return false, with errno and the old root in force, when it cannot be
///     opened
[[nodiscard]] bool changeSystemRoot(const std::string& directory);

/// Follows a path below a directory as the kernel would below a root: absolute links start at the directory again, ".."
/// never leaves it, and more than 40 links are a loop. It asks nothing of the kernel that old ones do not know.
class RootWalk {
public:
    /// @param root stays open and owned by the caller
    RootWalk(int root, std::string_view path) : _root(root), _rest(path) {}

    /// Walk to the path's end. @return false, with errno, when it leads nowhere
    bool toEnd(bool followsLastLink = true);

    /// Whether the walk came as far as the last name, be it there or not.
    [[nodiscard]] bool atLastName() const { return _rest.empty(); }

    /// The directory that the walk came to.
    [[nodiscard]] int directory() const { return _entered.empty() ? _root : _entered.back().get(); }

    /// The last name in it; "." for the directory itself.
    [[nodiscard]] const char* name() const { return _name.c_str(); }

    /// What the path leads to, opened for nothing but its identity.
    [[nodiscard]] UniqueFd takeEntry() { return std::move(_entry); }

    [[nodiscard]] bool isRegularFile() const { return S_ISREG(_mode); }
    [[nodiscard]] bool isDirectory() const { return S_ISDIR(_mode); }

private:
    bool nextName();
    bool look();
    bool enterLink();

    int _root;
    std::string _rest; // what is still to be walked
    std::string _name;
    std::vector<UniqueFd> _entered; // the directories below the root, the current one last
    UniqueFd _entry;
    mode_t _mode = 0;
    int _links = 0;
};

/// Open an absolute path below the system root, close-on-exec, never waiting for a writer. While a root is set, links
/// cannot lead out of it, and only regular files and directories are opened: errno is ENXIO for any other.
[[nodiscard]] UniqueFd openSystemPath(const char* path, int flags);

} // namespace Kivo
