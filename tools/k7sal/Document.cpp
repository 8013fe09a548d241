// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What was read of a machine, section by section, and its one JSON form.
#include "Document.h"

#include "Replay.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <iostream>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

/// The version of the form of every document: it grows when a key changes its meaning or goes.
constexpr int SCHEMA_VERSION = 1;

// The words of a document that stand in no column table.
constexpr const char* VERSION_KEY = "schema_version";
constexpr const char* PROBLEMS_KEY = "problems";
constexpr const char* COMPLETED_KEY = "completed_from_captured_report"; ///< sections, when there are any

Json problemJson(const Problem& problem)
{
    return {{"what", problem.what},
            {"reason", problem.reason},
            {"errno", problem.errorCode},
            {"subject", problem.subject.empty() ? Json(nullptr) : Json(problem.subject)}};
}

struct JsonMaker {
    Json operator()(std::monostate) const { return nullptr; }
    Json operator()(const Real& real) const
    {
        if (!std::isfinite(real.value))
            return nullptr;
        // The nearest number with so many decimals prints as just these.
        const double scale = std::pow(10.0, real.decimals);
        const double rounded = std::round(real.value * scale) / scale;
        return std::isfinite(rounded) ? rounded : real.value;
    }
    Json operator()(const List& list) const
    {
        Json array = Json::array();
        for (const Value& value : list)
            array.push_back(toJson(value));
        return array;
    }
    Json operator()(const Row& row) const
    {
        Json object = Json::object();
        for (const Field& field : row)
            object[field.key] = toJson(field.value);
        return object;
    }
    template <class Scalar>
    Json operator()(const Scalar& scalar) const
    {
        return scalar;
    }
};

Json rowJson(const std::vector<ColumnInfo>& columns, const std::vector<Value>& values)
{
    Json object = Json::object();
    for (std::size_t i = 0; i < columns.size() && i < values.size(); ++i)
        object[columns[i].key] = toJson(values[i]);
    return object;
}

} // namespace

void Sheet::select(const std::vector<std::size_t>& chosen)
{
    const auto pick = [&](auto& all) {
        std::remove_reference_t<decltype(all)> picked;
        for (const std::size_t index : chosen)
            picked.push_back(all.at(index));
        all = std::move(picked);
    };
    pick(columns);
    for (std::vector<Value>& row : data.rows)
        pick(row);
}

Sections reportSections()
{
    Sections result;
    for (const Section& section : sections())
        if (!section.onRequest)
            result.push_back(&section);
    return result;
}

Sections namedSections(const std::vector<std::string>& keys)
{
    Sections named;
    for (const std::string& key : keys) {
        const Section* const section = findSection(key);
        if (!section)
            throw CLI::ValidationError("section", "\"" + key + "\" is not a section; \"-o help\" lists them");
        named.push_back(section);
    }
    return named;
}

Sheet sheetOf(const Section& section, Collected collected)
{
    Sheet sheet{section.key, section.heading, section.shape, section.busiest, section.columns(), std::move(collected)};
    sheet.completed = completeFromCapture(section, &sheet.data);
    return sheet;
}

Sheet collectSheet(const Section& section)
{
    Collected collected = section.collect();
    const bool replaced = !collected.known && listFromCapture(section, &collected);
    Sheet sheet = sheetOf(section, std::move(collected));
    sheet.completed |= replaced;
    return sheet;
}

Document collectDocument(const Sections& sections)
{
    Document document;
    for (const Section* const section : sections)
        document.push_back(collectSheet(*section));
    return document;
}

std::vector<Problem> problemsOf(const Document& document)
{
    std::vector<Problem> problems;
    for (const Sheet& sheet : document)
        problems.insert(problems.end(), sheet.data.problems.begin(), sheet.data.problems.end());
    return problems;
}

Json toJson(const Value& value) { return std::visit(JsonMaker{}, value.storage()); }

Json toJson(const Sheet& sheet)
{
    if (!sheet.data.known)
        return nullptr;
    if (sheet.shape == Shape::RECORD)
        return sheet.data.rows.empty() ? Json(nullptr) : rowJson(sheet.columns, sheet.data.rows.front());
    Json array = Json::array();
    for (const std::vector<Value>& row : sheet.data.rows)
        array.push_back(rowJson(sheet.columns, row));
    return array;
}

Json emptyDocument(const std::vector<Problem>& problems)
{
    Json list = Json::array();
    for (const Problem& problem : problems)
        list.push_back(problemJson(problem));
    return {{VERSION_KEY, SCHEMA_VERSION}, {PROBLEMS_KEY, std::move(list)}};
}

Json toJson(const Document& document)
{
    Json json = emptyDocument(problemsOf(document));
    for (const Sheet& sheet : document) {
        json[sheet.key] = toJson(sheet);
        if (sheet.completed)
            json[COMPLETED_KEY].push_back(sheet.key);
    }
    return json;
}

std::string jsonText(const Json& json, int indent)
{
    return jsonSafe(json.dump(indent, ' ', false, Json::error_handler_t::replace));
}

void printJson(const Json& json) { std::cout << jsonText(json) << "\n"; }

} // namespace K7Tool
