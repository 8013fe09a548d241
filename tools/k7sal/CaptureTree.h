// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The part of a machine's files that the library reads, copied.
#pragma once

#include "Manifest.h"

#include "OS/System/K7SystemUtilClass.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace K7Tool {

/// What the library opened, by its path without the system root.
using Reads = std::set<std::pair<Kivo::K7SystemUtil::ReadKind, std::string>>;

/// Copies what was read from below the system root into a directory, with the links that lead to it. Everything is read
/// by way of the library, so that a captured tree's links stay inside it here too.
class CaptureTree {
public:
    explicit CaptureTree(std::filesystem::path target) : _target(std::move(target)) {}

    /// Copy what was read. What is not there, cannot be read or is too large is noted.
    /// @throws std::system_error when the copy cannot be written
    void copy(const Reads& reads);

    /// Every file, link and directory of the copy, by its path; what could not be had.
    Manifest manifest;

private:
    void copyFile(const std::string& path);
    void copyNames(const std::string& path);
    void addMissingNames();
    std::optional<std::string> addLink(const std::string& path);
    std::optional<std::string> resolve(const std::string& path);
    bool reserve(const std::string& path, std::uint64_t size);
    void noteFailure(const std::string& path);
    [[nodiscard]] std::filesystem::path real(const std::string& path) const { return _target / path.substr(1); }

    std::filesystem::path _target;
    std::set<std::string> _notLinks;
    std::set<std::string> _unreadable;
    std::map<std::string, std::vector<std::string>> _names; ///< of the directories
    std::uint64_t _bytes = 0;
};

} // namespace K7Tool
