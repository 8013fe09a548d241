// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A directory for files on their way, which never stays behind.
#pragma once

#include "Base/UniqueFd_p.h"

#include <filesystem>

#include <sys/types.h>

namespace K7Tool {

/// A new directory of mode 0700 that goes with its owner, and with the process however that ends: a small process of
/// its own waits for the end and removes it, so that a signal, a crash or an exit on the way leaves nothing.
class PrivateDirectory {
public:
    /// @param parent where to make it
    /// @param prefix what its name begins with
    /// @throws std::system_error when it cannot be made
    PrivateDirectory(const std::filesystem::path& parent, const std::string& prefix);
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return _path; }

private:
    std::filesystem::path _path;
    Kivo::UniqueFd _lifeline; ///< closed by the kernel when this process ends
    pid_t _keeper = -1;
};

} // namespace K7Tool
