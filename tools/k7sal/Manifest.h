// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a capture holds, and what it could not have.
#pragma once

#include "Document.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace K7Tool {

/// A file, link or empty directory of a capture.
struct CapturedEntry {
    std::optional<std::string> link;   ///< a link's target
    std::optional<std::uint64_t> size; ///< bytes of a file
    std::optional<std::string> sha256; ///< of a file's contents, hexadecimal

    void setContents(std::string_view contents);
};

/// What a capture holds, and what it could not have.
struct Manifest {
    bool redacted = false;
    std::string kernelRelease;
    std::map<std::string, CapturedEntry> entries; ///< by their paths on the captured machine
    std::set<std::string> missing;                ///< looked for, and not there
    std::vector<Kivo::Inventory::Problem> problems;
};

/// The manifest as a document, made now.
[[nodiscard]] Document manifestDocument(const Manifest& manifest);

} // namespace K7Tool
