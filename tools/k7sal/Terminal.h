// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text for a person: columns, bars, sizes, and colour where there is a terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace K7Tool {

enum class Style { PLAIN, HEADING, DIM, GOOD, WARNING, BAD };

/// Whether standard output is a terminal.
bool onTerminal();

/// @p text in a style, as it is when standard output is no terminal or NO_COLOR is set.
std::string styled(Style style, const std::string& text);

/// @p text with everything that is not printable replaced: what a device or a captured file says of itself must not
/// drive the reader's terminal.
std::string printable(std::string_view text);

/// How many columns a UTF-8 text takes, one a character.
std::size_t columns(std::string_view text);

/// "412.3 MiB"
std::string sizeText(std::uint64_t bytes);

/// "2 d 03 h 05 min", "14 s"
std::string durationText(double seconds);

/// "[####......]" for a part of a whole
std::string bar(double part, double whole, std::size_t width = 24);

/// Rows of cells in aligned columns.
class Table {
public:
    enum Align { LEFT, RIGHT };

    /// @param headings one a column; all empty for a table without a heading row
    /// @param aligns   one a column, LEFT where none is given
    explicit Table(std::vector<std::string> headings, std::vector<Align> aligns = {});

    void add(std::vector<std::string> cells, Style style = Style::PLAIN);

    /// The table's lines, each led by @p indent.
    [[nodiscard]] std::string text(const std::string& indent = "  ") const;

private:
    struct Row {
        std::vector<std::string> cells;
        Style style;
    };

    std::vector<Align> _aligns;
    std::vector<Row> _rows;
    bool _hasHeadings;
};

} // namespace K7Tool
