// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What two readings of machines do not have in common.
#include "Diff.h"

#include "Render.h"
#include "Replay.h"
#include "Terminal.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

constexpr const char* ADDED = "added";
constexpr const char* REMOVED = "removed";
constexpr const char* CHANGED = "changed";
constexpr ColumnInfo NO_COLUMN{"", "", ""};

constexpr Column<Difference> COLUMNS[] = {
    column<&Difference::section>({"section", "section", "Where the difference is"}),
    column<&Difference::record>({"record", "record", "What tells the record from others of its section"}),
    column<&Difference::change>({"change", "change", "\"added\", \"removed\" or \"changed\""}),
    column<&Difference::column>({"column", "column", "What changed; null for a whole record"}),
    column<&Difference::before>({"before", "before", "What it was"}),
    column<&Difference::after>({"after", "after", "What it is"}),
};

using Record = std::vector<Value>;

/// A value without the volatile fields of the records that it holds.
Value stable(const Value& value, const ColumnInfo& column)
{
    if (!column.nested)
        return value;
    if (const auto* const list = value.as<List>()) {
        List result;
        for (const Value& element : *list)
            result.push_back(stable(element, column));
        return result;
    }
    const auto* const row = value.as<Row>();
    if (!row)
        return value;
    Row result;
    const std::vector<ColumnInfo> columns = column.nested();
    for (const Field& field : *row) {
        const auto info = std::find_if(columns.begin(), columns.end(), [&](const ColumnInfo& candidate) {
            return std::string_view(candidate.key) == field.key;
        });
        if (info == columns.end() || !info->has(VOLATILE))
            result.push_back(field);
    }
    return result;
}

/// Compares the two sheets of one section.
class SheetDiff {
public:
    SheetDiff(const Sheet& before, const Sheet& after, bool all, std::vector<Difference>* differences)
        : _before(before), _after(after), _all(all), _differences(differences)
    {}

    void compare()
    {
        if (_before.data.known != _after.data.known) {
            const auto count = [](const Sheet& sheet) {
                return sheet.data.known ? Value(sheet.data.rows.size()) : Value();
            };
            _differences->push_back(
                {_before.key, std::nullopt, CHANGED, nullptr, count(_before), count(_after), NO_COLUMN});
        } else if (_before.shape == Shape::LIST) {
            compareLists();
        } else if (!_before.data.rows.empty() && !_after.data.rows.empty()) {
            compareRecords(std::nullopt, _before.data.rows.front(), _after.data.rows.front());
        }
    }

private:
    void compareLists()
    {
        std::multimap<std::string, const Record*> rest;
        for (const Record& record : _after.data.rows)
            rest.emplace(identityOf(_after.columns, record), &record);
        for (const Record& record : _before.data.rows) {
            const std::string identity = identityOf(_before.columns, record);
            const auto match = rest.lower_bound(identity); // the first of several with one identity
            if (match == rest.end() || match->first != identity) {
                _differences->push_back({_before.key, identity, REMOVED, nullptr, rowOf(record), {}, NO_COLUMN});
                continue;
            }
            compareRecords(identity, record, *match->second);
            rest.erase(match);
        }
        for (const Record& record : _after.data.rows) {
            const std::string identity = identityOf(_after.columns, record);
            for (auto [at, end] = rest.equal_range(identity); at != end; ++at) {
                if (at->second != &record)
                    continue;
                _differences->push_back({_before.key, identity, ADDED, nullptr, {}, rowOf(record), NO_COLUMN});
                break;
            }
        }
    }

    void compareRecords(const std::optional<std::string>& identity, const Record& before, const Record& after)
    {
        for (std::size_t i = 0; i < _before.columns.size() && i < before.size() && i < after.size(); ++i) {
            const ColumnInfo& column = _before.columns[i];
            if (!isCompared(column))
                continue;
            if (column.has(LIVE_ONLY) && (!before[i].isKnown() || !after[i].isKnown()))
                continue; // a captured tree cannot tell, which is no difference of the machines
            const Value first = _all ? before[i] : stable(before[i], column);
            const Value second = _all ? after[i] : stable(after[i], column);
            if (!(first == second) && toJson(first) != toJson(second))
                _differences->push_back({_before.key, identity, CHANGED, column.key, first, second, column});
        }
    }

    [[nodiscard]] bool isCompared(const ColumnInfo& column) const { return _all || !column.has(VOLATILE); }

    /// What is compared of a record.
    [[nodiscard]] Value rowOf(const Record& record) const
    {
        Row row;
        for (std::size_t i = 0; i < _before.columns.size() && i < record.size(); ++i)
            if (isCompared(_before.columns[i]))
                row.push_back({_before.columns[i].key, _all ? record[i] : stable(record[i], _before.columns[i])});
        return row;
    }

    const Sheet& _before;
    const Sheet& _after;
    bool _all;
    std::vector<Difference>* _differences;
};

std::string changeText(const Difference& difference)
{
    const std::string before = cellText(difference.before, difference.info);
    const std::string after = cellText(difference.after, difference.info);
    return before + " -> " + after;
}

} // namespace

std::vector<Difference> differencesOf(const Document& before, const Document& after, bool all)
{
    std::vector<Difference> differences;
    for (const Sheet& first : before) {
        const auto second = std::find_if(after.begin(), after.end(),
                                         [&](const Sheet& sheet) { return std::string_view(sheet.key) == first.key; });
        if (second != after.end())
            SheetDiff(first, *second, all, &differences).compare();
    }
    return differences;
}

Sheet differenceSheet(const std::vector<Difference>& differences)
{
    Sheet sheet{"differences", "Differences", Shape::LIST, 0, {}, {true, {}, {}}};
    for (const Column<Difference>& column : COLUMNS)
        sheet.columns.push_back(column.info);
    for (const Difference& difference : differences) {
        Record row;
        for (const Column<Difference>& column : COLUMNS)
            row.push_back(column.read(difference));
        sheet.data.rows.push_back(std::move(row));
    }
    return sheet;
}

std::string differenceText(const std::vector<Difference>& differences)
{
    std::string text;
    for (auto at = differences.begin(); at != differences.end();) {
        const auto end = std::find_if(at, differences.end(), [&](const Difference& other) {
            return std::string_view(other.section) != at->section;
        });
        text += (text.empty() ? "" : "\n") + styled(Style::HEADING, at->section) + "\n";
        Table table({"", "", "", ""});
        for (; at != end; ++at) {
            const bool isAdded = std::string_view(at->change) == ADDED;
            const bool isRemoved = std::string_view(at->change) == REMOVED;
            table.add({isAdded     ? "+"
                       : isRemoved ? "-"
                                   : "~",
                       at->record.value_or(""), at->column ? at->column : "",
                       isAdded || isRemoved ? at->change : changeText(*at)},
                      isAdded     ? Style::GOOD
                      : isRemoved ? Style::BAD
                                  : Style::PLAIN);
        }
        text += table.text();
    }
    return text;
}

} // namespace K7Tool
