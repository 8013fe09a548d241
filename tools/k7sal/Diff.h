// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What two readings of machines do not have in common.
#pragma once

#include "Document.h"

#include <optional>
#include <string>
#include <vector>

namespace K7Tool {

/// One thing that the second document has otherwise than the first.
struct Difference {
    const char* section;
    std::optional<std::string> record; ///< its IDENTITY values; none of a section that is a single record
    const char* change;                ///< "added", "removed", "changed"
    const char* column;                ///< what changed; null when the whole record, or the section, came or went
    Kivo::Inventory::Value before;
    Kivo::Inventory::Value after;
    Kivo::Inventory::ColumnInfo info; ///< how the values are shown
};

/// Compare two documents section by section, record by record.
/// @param all with what changes by itself: counters and other volatile columns
[[nodiscard]] std::vector<Difference> differencesOf(const Document& before, const Document& after, bool all);

/// The differences as a sheet, which has a JSON form.
[[nodiscard]] Sheet differenceSheet(const std::vector<Difference>& differences);

/// The differences for a person, section by section.
[[nodiscard]] std::string differenceText(const std::vector<Difference>& differences);

} // namespace K7Tool
