// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal diff: tells two captures apart, or a capture and this machine.
#include "CapturedRoot.h"
#include "Command.h"
#include "Diff.h"
#include "Text.h"

#include <iostream>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

constexpr const char* THIS_MACHINE = "-";

struct DiffOptions {
    std::string before;
    std::string after = THIS_MACHINE;
    bool all = false;
};

Document read(const std::string& name, bool all)
{
    Sections chosen = reportSections();
    if (all) {
        chosen.clear();
        for (const Section& section : sections())
            chosen.push_back(&section);
    }
    if (name == THIS_MACHINE)
        return collectDocument(chosen);
    const CapturedRoot captured(name);
    return collectDocument(chosen);
}

int diff(const Session& session, const DiffOptions& options)
{
    if (!session.isLive())
        throw CLI::ValidationError("diff", "takes its captures as words, not with --root");
    const Document before = read(options.before, options.all);
    const Document after = read(options.after, options.all);
    const std::vector<Difference> differences = differencesOf(before, after, options.all);
    Sheet sheet = differenceSheet(differences);
    sheet.data.problems = problemsOf(before);
    const std::vector<Problem> rest = problemsOf(after);
    sheet.data.problems.insert(sheet.data.problems.end(), rest.begin(), rest.end());
    const std::vector<Problem> problems = sheet.data.problems;
    if (session.json)
        printJson(toJson(Document{std::move(sheet)}));
    else
        std::cout << differenceText(differences);
    return reportProblems(problems) == EXIT_DONE && differences.empty() ? EXIT_DONE : EXIT_FAILED;
}

} // namespace

void declareDiff(CLI::App& command, Session& session)
{
    const auto options = std::make_shared<DiffOptions>();
    command.add_option("before", options->before, "A captured tree or its archive; \"-\" is this machine")->required();
    command.add_option("after", options->after, "The other one; this machine when it is left out");
    command.add_flag("--all", options->all, "Compare processes, counters and what else changes by itself, too");
    command.footer("Exit codes: 0: no difference; 1: different, or something could not be read; 2: wrong usage");
    command.callback([&session, options] { session.exitCode = diff(session, *options); });
}

} // namespace K7Tool
