// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Sheets as text for a person, by their columns alone.
#pragma once

#include "Document.h"
#include "Terminal.h"

#include <functional>

namespace K7Tool {

/// How much of a sheet is printed; JSON has everything always.
enum class Detail {
    USUAL,      ///< a table of the usual columns, and as many records as are useful
    ALL,        ///< every column and every record
    ONE_RECORD, ///< the one record that a list has, every column on a line
};

/// How a sheet is printed.
struct View {
    bool live = true; ///< whether it tells of the running machine, and not of a captured tree
    Detail detail = Detail::USUAL;
    std::size_t room = 0; ///< how many records at most, those of the largest first counter; 0 for all
    std::function<Style(std::size_t row)> style = {}; ///< of a list's records; plain when there is none
};

/// A value as a cell: "-" when it is not known, the first field of a nested record.
[[nodiscard]] std::string cellText(const Kivo::Inventory::Value& value, const Kivo::Inventory::ColumnInfo& column);

/// A record as lines, or a list as a table, without its heading.
[[nodiscard]] std::string sheetText(const Sheet& sheet, const View& view);

/// Every sheet below its heading, with a blank line between them.
[[nodiscard]] std::string documentText(const Document& document, const View& view);

/// One record as lines, one per column, and one per field of a nested record.
[[nodiscard]] std::string recordText(const Sheet& sheet, const std::vector<Kivo::Inventory::Value>& row,
                                     const View& view);

} // namespace K7Tool
