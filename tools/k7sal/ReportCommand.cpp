// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal report: what the library sees of a machine.
#include "Command.h"
#include "Show.h"

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

struct ReportOptions {
    std::vector<std::string> keys;
    ColumnOption columns;
};

Sections allSections()
{
    Sections all;
    for (const Section& section : sections())
        all.push_back(&section);
    return all;
}

int report(const Session& session, const ReportOptions& options)
{
    const Sections named = namedSections(options.keys);
    if (options.columns.asksForHelp())
        return showColumns(named.empty() ? allSections() : named);
    if (options.columns.isGiven() && named.size() != 1)
        throw CLI::ValidationError("-o", "needs exactly one section");
    Document document = collectDocument(named.empty() ? reportSections() : named);
    if (options.columns.isGiven())
        options.columns.applyTo(document.front());
    return showDocument(session, document, options.columns.detail());
}

} // namespace

void declareReport(CLI::App& command, Session& session)
{
    const auto options = std::make_shared<ReportOptions>();
    command.add_option("section", options->keys, "Show these sections only; \"-o help\" lists them");
    options->columns.declare(command);
    command.callback([&session, options] { session.exitCode = report(session, *options); });
}

} // namespace K7Tool
