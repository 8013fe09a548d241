// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Sheets as text for a person, by their columns alone.
#include "Render.h"

#include "Text.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;

namespace {

constexpr const char* UNKNOWN = "-";
constexpr const char* NONE = "none";

/// Enough of a list for a cell.
constexpr std::size_t CELL_TEXT = 4 * Table::CELL_WIDTH;

bool isSize(Unit unit) { return unit == Unit::BYTES || unit == Unit::KIBIBYTES; }

/// Shorter times have decimals where they were measured.
constexpr float64 SHORT = 10;

std::string numberText(float64 number, const std::string& plain, Unit unit)
{
    switch (unit) {
    case Unit::BYTES:
        return sizeText(number);
    case Unit::KIBIBYTES:
        return sizeText(number * 1024);
    case Unit::SECONDS:
        return number > -SHORT && number < SHORT ? plain + " s" : durationText(number);
    default:
        return *symbolOf(unit) ? plain + " " + symbolOf(unit) : plain;
    }
}

/// Join the texts of some parts, as far as a cell shows them.
template <class Parts, class Text>
std::string joined(const Parts& parts, const char* separator, Text&& text)
{
    std::string result;
    for (const auto& part : parts) {
        if (result.size() > CELL_TEXT)
            break;
        const std::string next = text(part);
        result += result.empty() || next.empty() ? "" : separator;
        result += next;
    }
    return result;
}

struct CellMaker {
    const ColumnInfo& column;

    std::string operator()(std::monostate) const { return UNKNOWN; }
    std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
    std::string operator()(const std::string& text) const { return text.empty() ? UNKNOWN : text.substr(0, CELL_TEXT); }
    std::string operator()(const Real& real) const
    {
        return std::isfinite(real.value)
                   ? numberText(real.value, formatted("%.*f", real.decimals, real.value), column.unit)
                   : UNKNOWN;
    }
    std::string operator()(const List& list) const
    {
        return list.empty() ? NONE : joined(list, ", ", [&](const Value& value) { return cellText(value, column); });
    }
    std::string operator()(const Row& row) const
    {
        return row.empty() || !column.nested ? UNKNOWN : cellText(row.front().value, column.nested().front());
    }
    template <class Integer>
    std::string operator()(Integer number) const
    {
        return numberText(static_cast<float64>(number), std::to_string(number), column.unit);
    }
};

using Indices = std::vector<std::size_t>;

bool isKnown(const Sheet& sheet, std::size_t column)
{
    return std::any_of(sheet.data.rows.begin(), sheet.data.rows.end(),
                       [&](const std::vector<Value>& row) { return row[column].isKnown(); });
}

/// The columns that a text of the sheet shows.
Indices shownColumns(const Sheet& sheet, const View& view)
{
    Indices shown;
    for (std::size_t i = 0; i < sheet.columns.size(); ++i) {
        const ColumnInfo& column = sheet.columns[i];
        if (view.detail != Detail::USUAL ||
            (!column.has(DETAIL) && (view.live || !column.has(LIVE_ONLY) || isKnown(sheet, i))))
            shown.push_back(i);
    }
    return shown;
}

/// The records that a text of the sheet shows: all, or those whose first counter is largest.
Indices shownRows(const Sheet& sheet, const View& view)
{
    Indices rows(sheet.data.rows.size());
    std::iota(rows.begin(), rows.end(), 0U);
    const auto counter = std::find_if(sheet.columns.begin(), sheet.columns.end(),
                                      [](const ColumnInfo& column) { return column.has(COUNTER); });
    std::size_t most = view.detail != Detail::USUAL ? 0 : sheet.busiest;
    if (view.room > 0 && (most == 0 || view.room < most))
        most = view.room;
    if (most == 0 || most >= rows.size())
        return rows;
    if (counter != sheet.columns.end()) {
        const auto index = static_cast<std::size_t>(counter - sheet.columns.begin());
        const auto count = [&](std::size_t row) { return sheet.data.rows[row][index].number().value_or(-1); };
        std::stable_sort(rows.begin(), rows.end(),
                         [&](std::size_t left, std::size_t right) { return count(left) > count(right); });
    }
    rows.resize(most);
    return rows;
}

/// What stands in the place of a list without records.
const char* emptyText(const Sheet& sheet, const View& view)
{
    if (sheet.data.known)
        return NONE;
    if (!sheet.data.problems.empty())
        return "could not be read";
    return view.live ? "not available on this system" : "not captured";
}

/// Draws the sizes that change as parts of the constant size before them.
class SizeBars {
public:
    std::string next(const ColumnInfo& column, const Value& value)
    {
        const auto number = value.number();
        if (!isSize(column.unit))
            return "";
        if (!column.has(VOLATILE)) {
            _whole = number;
            return "";
        }
        if (!number || !_whole || *_whole <= 0)
            return "";
        return bar(*number, *_whole) + formatted(" %3.0f %%", 100 * std::clamp(*number / *_whole, 0.0, 1.0));
    }

private:
    std::optional<float64> _whole;
};

/// The fields of a nested record, a line each.
void addFields(Table* table, const ColumnInfo& column, const Row& row)
{
    const std::vector<ColumnInfo> columns = column.nested();
    for (std::size_t i = 0; i < std::min(row.size(), columns.size()); ++i)
        table->add({std::string(column.heading) + " " + columns[i].heading, cellText(row[i].value, columns[i])});
}

/// Nested records, a line each.
void addRecords(Table* table, const ColumnInfo& column, const List& list)
{
    if (list.empty())
        table->add({column.heading, NONE});
    const std::vector<ColumnInfo> columns = column.nested();
    for (std::size_t i = 0; i < list.size(); ++i) {
        std::string text;
        if (const Row* const row = list[i].as<Row>())
            for (std::size_t field = 0; field < std::min(row->size(), columns.size()); ++field)
                text += (field == 0 ? "" : " ") + cellText((*row)[field].value, columns[field]);
        table->add({i == 0 ? column.heading : "", text});
    }
}

} // namespace

std::string cellText(const Value& value, const ColumnInfo& column)
{
    return std::visit(CellMaker{column}, value.storage());
}

std::string recordText(const Sheet& sheet, const std::vector<Value>& row, const View& view)
{
    Table table({"", "", ""});
    SizeBars bars;
    for (const std::size_t i : shownColumns(sheet, view)) {
        const ColumnInfo& column = sheet.columns[i];
        if (const Row* const nested = row[i].as<Row>(); nested && column.nested)
            addFields(&table, column, *nested);
        else if (const List* const list = row[i].as<List>(); list && column.nested)
            addRecords(&table, column, *list);
        else
            table.add({column.heading, cellText(row[i], column), bars.next(column, row[i])});
    }
    return table.text();
}

std::string sheetText(const Sheet& sheet, const View& view)
{
    const std::vector<std::vector<Value>>& rows = sheet.data.rows;
    if (!sheet.data.known || rows.empty())
        return std::string("  ") + emptyText(sheet, view) + "\n";
    if (sheet.shape == Shape::RECORD || view.detail == Detail::ONE_RECORD)
        return recordText(sheet, rows.front(), view);

    const Indices columns = shownColumns(sheet, view);
    std::vector<std::string> headings;
    std::vector<Align> aligns;
    for (const std::size_t i : columns) {
        headings.emplace_back(sheet.columns[i].heading);
        aligns.push_back(sheet.columns[i].align);
    }
    Table table(std::move(headings), std::move(aligns));
    const Indices shown = shownRows(sheet, view);
    for (const std::size_t row : shown) {
        std::vector<std::string> cells;
        for (const std::size_t i : columns)
            cells.push_back(cellText(rows[row][i], sheet.columns[i]));
        table.add(std::move(cells), view.style ? view.style(row) : Style::PLAIN);
    }
    const std::size_t more = rows.size() - shown.size();
    return table.text() + (more == 0 ? "" : styled(Style::DIM, "  and " + std::to_string(more) + " more") + "\n");
}

std::string documentText(const Document& document, const View& view)
{
    std::string text;
    for (const Sheet& sheet : document)
        if (const std::string body = sheetText(sheet, view); !body.empty())
            text += (text.empty() ? "" : "\n") + styled(Style::HEADING, sheet.heading) + "\n" + body;
    return text;
}

} // namespace K7Tool
