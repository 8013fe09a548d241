// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Sheets as text for a person, by their columns alone.
#pragma once

#include "Document.h"
#include "Terminal.h"

namespace K7Tool {

/// How a sheet is printed.
struct View {
    bool live = true;      ///< whether it tells of the running machine, and not of a captured tree
    bool detailed = false; ///< every column and every record
    std::size_t room = 0;  ///< how many records at most, those of the largest first counter; 0 for all
};

/// A value as a cell: "-" when it is not known.
[[nodiscard]] std::string cellText(const Kivo::Inventory::Value& value, Kivo::Inventory::Unit unit);

/// A record as lines, or a list as a table, without its heading.
[[nodiscard]] std::string sheetText(const Sheet& sheet, const View& view);

/// Every sheet below its heading, with a blank line between them.
[[nodiscard]] std::string documentText(const Document& document, const View& view);

/// One record as lines, a column each.
[[nodiscard]] std::string recordText(const Sheet& sheet, const std::vector<Kivo::Inventory::Value>& row,
                                     const View& view);

} // namespace K7Tool
