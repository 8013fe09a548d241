// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a captured machine said of itself, for what its files alone cannot tell.
#include "Replay.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

Json s_report;

Value valueOf(const Json& json, const std::vector<ColumnInfo>& nested);

/// The fields that the columns know; their keys outlive the text.
Value rowValue(const Json& json, const std::vector<ColumnInfo>& columns)
{
    Row row;
    for (const ColumnInfo& column : columns)
        if (const auto found = json.find(column.key); found != json.end())
            row.push_back({column.key, valueOf(*found, column.nested ? column.nested() : std::vector<ColumnInfo>())});
    return row;
}

/// As many decimals as the text has.
Value realValue(const Json& json)
{
    const std::string text = json.dump();
    const std::size_t point = text.find('.');
    const bool isPlain = point != std::string::npos && text.find('e') == std::string::npos;
    return Real{json.get<double>(), isPlain ? static_cast<int>(text.size() - point - 1) : 0};
}

Value valueOf(const Json& json, const std::vector<ColumnInfo>& nested)
{
    switch (json.type()) {
    case Json::value_t::boolean:
        return json.get<bool>();
    case Json::value_t::number_integer:
        return json.get<std::int64_t>();
    case Json::value_t::number_unsigned:
        return json.get<std::uint64_t>();
    case Json::value_t::number_float:
        return realValue(json);
    case Json::value_t::string:
        return json.get<std::string>();
    case Json::value_t::array: {
        List list;
        for (const Json& element : json)
            list.push_back(valueOf(element, nested));
        return list;
    }
    case Json::value_t::object:
        return rowValue(json, nested);
    default:
        return {};
    }
}

std::vector<Value> recordOf(const Json& json, const std::vector<ColumnInfo>& columns)
{
    std::vector<Value> record;
    for (const ColumnInfo& column : columns) {
        const auto found = json.find(column.key);
        record.push_back(found == json.end()
                             ? Value()
                             : valueOf(*found, column.nested ? column.nested() : std::vector<ColumnInfo>()));
    }
    return record;
}

bool complete(std::vector<Value>* row, const std::vector<Value>& captured)
{
    bool taken = false;
    for (std::size_t i = 0; i < row->size() && i < captured.size(); ++i) {
        if ((*row)[i].isKnown() || !captured[i].isKnown())
            continue;
        (*row)[i] = captured[i];
        taken = true;
    }
    return taken;
}

/// The records of a section in the captured report.
std::vector<std::vector<Value>> capturedRecords(const Section& section, const std::vector<ColumnInfo>& columns)
{
    std::vector<std::vector<Value>> records;
    const auto found = s_report.is_object() ? s_report.find(section.key) : s_report.end();
    if (found == s_report.end())
        return records;
    if (found->is_object())
        records.push_back(recordOf(*found, columns));
    else if (found->is_array())
        for (const Json& json : *found)
            if (json.is_object())
                records.push_back(recordOf(json, columns));
    return records;
}

} // namespace

Json parseBounded(const std::string& text)
{
    constexpr int DEEPEST = 16;
    constexpr std::size_t MOST_VALUES = 500000;
    std::size_t count = 0;
    const auto check = [&](int depth, Json::parse_event_t, const Json&) {
        if (depth > DEEPEST || ++count > 2 * MOST_VALUES)
            throw std::runtime_error("is not a report: too deep or too large");
        return true;
    };
    try {
        return Json::parse(text, check);
    } catch (const Json::exception&) {
        throw std::runtime_error("is not JSON");
    }
}

void setCapturedReport(Json report) { s_report = std::move(report); }

std::string identityOf(const std::vector<ColumnInfo>& columns, const std::vector<Value>& row)
{
    std::string identity;
    for (std::size_t i = 0; i < columns.size() && i < row.size(); ++i) {
        if (!columns[i].has(IDENTITY))
            continue;
        const Json json = toJson(row[i]);
        identity += identity.empty() ? "" : " ";
        identity += json.is_null()     ? "-"
                    : json.is_string() ? json.get<std::string>()
                                       : json.dump(-1, ' ', false, Json::error_handler_t::replace);
    }
    return identity;
}

bool completeFromCapture(const Section& section, Collected* data)
{
    const std::vector<ColumnInfo> columns = section.columns();
    std::multimap<std::string, std::vector<Value>> captured;
    for (std::vector<Value>& record : capturedRecords(section, columns)) {
        std::string identity = identityOf(columns, record);
        captured.emplace(std::move(identity), std::move(record));
    }
    bool taken = false;
    for (std::vector<Value>& row : data->rows) {
        const auto match = captured.find(identityOf(columns, row));
        if (match == captured.end() || (match->first.empty() && section.shape == Shape::LIST))
            continue;
        taken |= complete(&row, match->second);
        captured.erase(match);
    }
    return taken;
}

bool listFromCapture(const Section& section, Collected* data)
{
    const auto found = s_report.is_object() ? s_report.find(section.key) : s_report.end();
    if (section.shape != Shape::LIST || found == s_report.end() || !found->is_array())
        return false;
    data->rows = capturedRecords(section, section.columns());
    return data->known = true;
}

} // namespace K7Tool
