// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The terminal: colour where it is wanted, tables of text, and views that are redrawn in place.
#include "Terminal.h"

#include "Text.h"

#include "Base/TextScanner_p.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace K7Tool {

namespace {

Colour s_colour = Colour::AUTO;

const char* escape(Style style)
{
    switch (style) {
    case Style::HEADING:
        return "\033[1m";
    case Style::DIM:
        return "\033[2m";
    case Style::GOOD:
        return "\033[32m";
    case Style::WARNING:
        return "\033[33m";
    case Style::BAD:
        return "\033[31m";
    case Style::PLAIN:
        break;
    }
    return "";
}

bool isDumb()
{
    const char* const terminal = std::getenv("TERM");
    return !terminal || !*terminal || std::string_view(terminal) == "dumb";
}

bool usesColour()
{
    if (s_colour != Colour::AUTO)
        return s_colour == Colour::ALWAYS;
    const char* const noColour = std::getenv("NO_COLOR");
    return onTerminal() && !isDumb() && !(noColour && *noColour);
}

struct Window {
    std::size_t rows = 24;
    std::size_t columns = 80;
};

Window window()
{
    winsize size{};
    Window window;
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        window.rows = size.ws_row > 0 ? size.ws_row : window.rows;
        window.columns = size.ws_col > 0 ? size.ws_col : window.columns;
    }
    return window;
}

constexpr const char* PLAIN_AGAIN = "\033[0m";

/// A line of text and styles in at most so many columns.
std::string fittedLine(std::string_view line, std::size_t width)
{
    const std::size_t begin = line.find('\033');
    if (begin == std::string_view::npos)
        return fitted(std::string(line), width);
    // styled() leaves one piece of a line in a style: an indent, "\033[1m", the text, "\033[0m", the rest.
    const std::size_t text = line.find('m', begin) + 1;
    const std::size_t end = std::min(line.find(PLAIN_AGAIN, text), line.size());
    const std::string indent(line.substr(0, std::min(begin, width)));
    return indent + std::string(line.substr(begin, text - begin)) +
           fitted(std::string(line.substr(text, end - text)), width - indent.size()) + PLAIN_AGAIN;
}

} // namespace

void setColour(Colour colour) { s_colour = colour; }

bool onTerminal()
{
    static const bool is = ::isatty(STDOUT_FILENO) == 1;
    return is;
}

std::string styled(Style style, const std::string& text)
{
    if (style == Style::PLAIN || text.empty() || !usesColour())
        return text;
    return escape(style) + text + PLAIN_AGAIN;
}

Table::Table(std::vector<std::string> headings, std::vector<Align> aligns) : _aligns(std::move(aligns))
{
    _aligns.resize(headings.size(), Align::LEFT);
    if (!std::all_of(headings.begin(), headings.end(), [](const std::string& text) { return text.empty(); }))
        add(std::move(headings), Style::DIM);
}

void Table::add(std::vector<std::string> cells, Style style)
{
    cells.resize(_aligns.size());
    for (std::string& cell : cells)
        cell = fitted(printable(cell), CELL_WIDTH);
    _lines.push_back({std::move(cells), style});
}

std::string Table::text(const std::string& indent) const
{
    std::vector<std::size_t> widths(_aligns.size(), 0);
    for (const Line& line : _lines)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], columnsOf(line.cells[i]));

    std::string result;
    for (const Line& line : _lines) {
        std::string text;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::string padding(widths[i] - columnsOf(line.cells[i]), ' ');
            text += i == 0 ? "" : "  ";
            text += _aligns[i] == Align::RIGHT ? padding + line.cells[i] : line.cells[i] + padding;
        }
        text.erase(text.find_last_not_of(' ') + 1);
        result += indent + styled(line.style, text) + "\n";
    }
    return result;
}

Screen::Screen() : _redraws(onTerminal() && !isDumb()) {}

std::size_t Screen::height() const
{
    constexpr std::size_t UNBOUNDED = 1U << 20U;
    return _redraws ? window().rows - 1 : UNBOUNDED;
}

bool Screen::show(const std::string& text)
{
    if (!_redraws)
        return (std::cout << text << std::flush).good();
    const std::size_t width = window().columns;
    const std::size_t room = height();
    std::string shown;
    std::size_t count = 0;
    Kivo::TextScanner lines(text);
    for (std::string_view line; count < room && lines.line(&line); ++count)
        shown += fittedLine(line, width) + "\n";
    clear();
    _shown = count;
    return (std::cout << shown << std::flush).good();
}

void Screen::clear()
{
    if (_shown > 0)
        std::cout << "\033[" << _shown << "A\033[J" << std::flush;
    _shown = 0;
}

} // namespace K7Tool
