// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Showing what was read, as text or JSON, with the columns that were asked for.
#include "Show.h"

#include <algorithm>
#include <iostream>

namespace K7Tool {

using namespace Kivo::Inventory;

void ColumnOption::declare(CLI::App& command)
{
    command
        .add_option_function<std::string>(
            "-o,--columns", [this](const std::string& text) { names = CLI::detail::split(text, ','); },
            "Show these columns only, in this order; \"-o help\" lists them")
        ->type_name("COLUMN,...");
}

void ColumnOption::applyTo(Sheet& sheet) const
{
    std::vector<std::size_t> chosen;
    for (const std::string& name : names) {
        const auto found = std::find_if(sheet.columns.begin(), sheet.columns.end(),
                                        [&](const ColumnInfo& column) { return column.key == name; });
        if (found == sheet.columns.end())
            throw CLI::ValidationError("-o",
                                       "\"" + name + "\" is not a column of " + sheet.key + "; \"-o help\" lists them");
        chosen.push_back(static_cast<std::size_t>(found - sheet.columns.begin()));
    }
    if (!chosen.empty())
        sheet.select(chosen);
}

int showColumns(const Sections& sections)
{
    for (const Section* const section : sections) {
        std::cout << styled(Style::HEADING, section->key) << ": " << section->help << "\n";
        Table table({"column", "heading", "unit", "meaning"});
        for (const ColumnInfo& column : section->columns())
            table.add({column.key, column.heading, symbolOf(column.unit), column.help});
        std::cout << table.text() << "\n";
    }
    return EXIT_DONE;
}

int showDocument(const Session& session, const Document& document, Detail detail)
{
    if (session.json)
        printJson(toJson(document));
    else
        std::cout << documentText(document, {session.isLive(), detail, 0, {}});
    return reportProblems(problemsOf(document));
}

} // namespace K7Tool
