// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the library asks of mount(2) and umount(2).
#pragma once

#include <string>
#include <vector>

namespace K7Test {

/// Stands before the kernel's two calls, for this process alone, for as long as it lives: notes them and does nothing.
class MountCalls {
public:
    /// What the calls that follow give: 0 for success, or an errno; the first ones first, the last one for ever.
    std::vector<int> results{0};

    MountCalls();
    ~MountCalls();
    MountCalls(const MountCalls&) = delete;
    MountCalls& operator=(const MountCalls&) = delete;

    /// "mount DEVICE DIRECTORY TYPE FLAGS OPTIONS", flags in hexadecimal digits, or "umount DIRECTORY"
    [[nodiscard]] const std::vector<std::string>& noted() const { return _noted; }

    int take(const std::string& call);

private:
    std::vector<std::string> _noted;
};

} // namespace K7Test
