// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The terminal: colour where it is wanted, tables of text, and views that are redrawn in place.
#pragma once

#include "Inventory/Column.h"

#include <string>
#include <vector>

namespace K7Tool {

enum class Style { PLAIN, HEADING, DIM, GOOD, WARNING, BAD };

enum class Colour { AUTO, ALWAYS, NEVER };

/// Whether styles are drawn. AUTO, the default: on a terminal that is not dumb, unless NO_COLOR is set.
void setColour(Colour colour);

/// Whether standard output is a terminal.
[[nodiscard]] bool onTerminal();

/// @p text in a style, or as it is where styles are not drawn.
[[nodiscard]] std::string styled(Style style, const std::string& text);

/// Rows of cells in aligned columns.
class Table {
public:
    using Align = Kivo::Inventory::Align;
    using enum Kivo::Inventory::Align;

    /// How many columns of the terminal a cell takes at most.
    static constexpr std::size_t CELL_WIDTH = 64;

    /// @param headings one per column; all empty for a table without a heading row
    /// @param aligns   one per column, LEFT where none is given
    explicit Table(std::vector<std::string> headings, std::vector<Align> aligns = {});

    /// Append a row. Cells are made printable, and cut where they are too wide for a table.
    void add(std::vector<std::string> cells, Style style = Style::PLAIN);

    /// The table's lines, each led by @p indent.
    [[nodiscard]] std::string text(const std::string& indent = "  ") const;

private:
    struct Line {
        std::vector<std::string> cells;
        Style style;
    };

    std::vector<Align> _aligns;
    std::vector<Line> _lines;
};

/// A text that takes the place of the one before, inside the window; one after the other where standard output is not a
/// terminal, or a dumb one.
class Screen {
public:
    Screen();

    /// Whether a text takes the place of the one before.
    [[nodiscard]] bool redraws() const { return _redraws; }

    /// How many lines the window has room for; a great many where nothing is redrawn.
    [[nodiscard]] std::size_t height() const;

    /// Show lines of plain text, cut to the window. @return false when standard output cannot be written
    bool show(const std::string& text);

    /// Take what is shown away, as far as it can be.
    void clear();

private:
    bool _redraws;
    std::size_t _shown = 0; ///< lines
};

} // namespace K7Tool
