// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trees of system files for the library to read instead of the machine's.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace K7Test {

/// Reads a captured machine of tests/fixtures/ for as long as it lives.
class FixtureRoot {
public:
    explicit FixtureRoot(const std::string& machine);
    ~FixtureRoot();
    FixtureRoot(const FixtureRoot&) = delete;
    FixtureRoot& operator=(const FixtureRoot&) = delete;
};

/// A tree made by the test, below a temporary directory that goes with it; the system root unless told otherwise.
class TemporaryTree {
public:
    explicit TemporaryTree(bool isSystemRoot = true);
    ~TemporaryTree();
    TemporaryTree(const TemporaryTree&) = delete;
    TemporaryTree& operator=(const TemporaryTree&) = delete;

    /// Write a file under its system path ("/proc/meminfo"), with the directories above it.
    TemporaryTree& file(const std::string& path, std::string_view contents);
    TemporaryTree& link(const std::string& path, const std::string& target);
    TemporaryTree& directory(const std::string& path);

    [[nodiscard]] std::string contents(const std::string& path) const;

    /// Where a system path lies in the file system of the test.
    [[nodiscard]] std::filesystem::path real(const std::string& path) const;

private:
    std::filesystem::path _top;
    bool _isSystemRoot;
};

/// Open descriptors of this process, to be compared before and after.
std::size_t openDescriptors();

} // namespace K7Test

namespace Kivo {

/// Shows a text in a failed expectation.
void PrintTo(const J3String& text, std::ostream* out);

} // namespace Kivo
