// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The tool's manual page, made of its commands' options and the column tables.
#include "ManPage.h"

#include "Command.h"
#include "Render.h"

#include "Inventory/Section.h"

#include <iostream>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

/// @p text with what roff takes for itself escaped.
std::string roff(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '\\' || c == '-')
            result += '\\';
        result += c;
    }
    // A line that begins with a dot or an apostrophe would be a request.
    return result.empty() || (result[0] != '.' && result[0] != '\'') ? result : "\\&" + result;
}

void printEntry(const std::string& term, const std::string& text)
{
    std::cout << ".TP\n\\fB" << roff(term) << "\\fR\n" << roff(text) << "\n";
}

void printOptions(const CLI::App& app)
{
    for (const CLI::Option* const option : app.get_options()) {
        if (option->get_group().empty())
            continue;
        std::string label = option->get_name(option->get_positional(), !option->get_positional());
        const std::string type =
            option->get_type_size() == 0 || option->get_positional() ? "" : option->get_type_name();
        if (!type.empty())
            label.append(" ").append(type);
        printEntry(label, option->get_description());
    }
}

void printCommand(const CLI::App& command, const std::string& path)
{
    std::cout << ".SS \"" << roff(path) << "\"\n" << roff(command.get_description()) << ".\n";
    printOptions(command);
    for (const CLI::App* const sub : command.get_subcommands([](const CLI::App*) { return true; }))
        printCommand(*sub, path + " " + sub->get_name());
}

void printColumns()
{
    for (const Section& section : sections()) {
        std::cout << ".SS \"" << roff(section.key) << "\"\n" << roff(section.help) << ".\n";
        if (section.onRequest)
            std::cout << "Not part of a report unless it is named.\n";
        for (const ColumnInfo& column : section.columns()) {
            const std::string unit = symbolOf(column.unit);
            printEntry(column.key, column.help + (unit.empty() ? "" : " (" + unit + ")"));
        }
    }
}

void printManPage(const CLI::App& app)
{
    std::cout << ".TH K7SAL 1 \"\" \"k7sal " << K7SAL_VERSION << "\"\n"
              << ".SH NAME\nk7sal \\- system facts and network tests of a recorder board\n"
              << ".SH SYNOPSIS\n\\fBk7sal\\fR [\\fIoptions\\fR] \\fIcommand\\fR [\\fIarguments\\fR]\n"
              << ".SH DESCRIPTION\n"
              << roff(app.get_description()) << "\n.SH OPTIONS\n";
    printOptions(app);
    std::cout << ".SH COMMANDS\n";
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        printCommand(*command, command->get_name());
    std::cout
        << ".SH \"SECTIONS AND COLUMNS\"\nA section's name is its key in JSON; a column's is its key there and its "
           "name for \\fB\\-o\\fR.\n";
    printColumns();
    std::cout << ".SH \"EXIT STATUS\"\n" << roff(app.get_footer()) << "\n";
}

} // namespace

void declareManOption(CLI::App& app)
{
    app.add_flag_callback(
           MAN_OPTION,
           [&app] {
               printManPage(app);
               throw CLI::Success();
           },
           "Print the manual page")
        ->group("");
}

} // namespace K7Tool
