// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A captured machine, read in place of this one.
#pragma once

#include "PrivateDirectory.h"

#include <filesystem>
#include <memory>
#include <string>

namespace K7Tool {

/// Where a capture keeps what is no part of the machine's tree, beside proc/ and sys/.
constexpr const char* CAPTURE_DIRECTORY = "k7sal";
constexpr const char* REPORT_FILE = "report.json";
constexpr const char* MANIFEST_FILE = "manifest.json";

/// The libraries read a captured tree for as long as this lives, and this machine afterwards.
class CapturedRoot {
public:
    /// @param name a directory that holds proc/ or sys/, or a tar archive of one, be it made by capture or by hand; an
    ///        archive is unpacked below a private temporary directory that goes with this object
    /// @throws std::runtime_error that says what is wrong with it
    explicit CapturedRoot(const std::string& name);
    ~CapturedRoot();
    CapturedRoot(const CapturedRoot&) = delete;
    CapturedRoot& operator=(const CapturedRoot&) = delete;

private:
    std::unique_ptr<PrivateDirectory> _unpacked;
};

} // namespace K7Tool
