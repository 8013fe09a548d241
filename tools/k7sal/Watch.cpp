// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Rates per second, look after look; k7sal watch.
#include "Watch.h"

#include "Interrupt.h"
#include "Rates.h"
#include "Render.h"

#include <algorithm>
#include <iostream>

namespace K7Tool {

using namespace Kivo::Inventory;

namespace {

/// How many records of each list find room in so many lines.
std::size_t roomOf(const Document& document, std::size_t height)
{
    constexpr std::size_t AROUND_LIST = 4; // a blank line, two headings, "and 3 more"
    std::size_t lists = 0;
    std::size_t used = 0;
    for (const Sheet& sheet : document) {
        const bool isList = sheet.shape == Shape::LIST;
        lists += isList ? 1 : 0;
        used += isList ? AROUND_LIST : 2 + sheet.columns.size();
    }
    return lists == 0 ? 0 : std::max<std::size_t>(1, (height - std::min(height, used)) / lists);
}

std::vector<std::string> watchableKeys()
{
    std::vector<std::string> keys;
    for (const Section& section : sections())
        keys.emplace_back(section.key);
    return keys;
}

} // namespace

void WatchOptions::declare(CLI::App& command, CLI::Option* needed)
{
    constexpr double SHORTEST = 0.1;
    constexpr double LONGEST = 3600;
    CLI::Option* const options[] = {
        command.add_option("--interval", interval, "Seconds between two looks, 0.1 to 3600 (default: 1)")
            ->type_name("SECONDS")
            ->check(CLI::Range(SHORTEST, LONGEST).description("")),
        command.add_option("--count", count, "End after so many looks (default: when interrupted)")
            ->type_name("N")
            ->check(CLI::PositiveNumber.description("")),
    };
    for (CLI::Option* const option : options)
        if (needed)
            option->needs(needed);
}

int watch(const Session& session, const WatchOptions& options, const std::function<Document()>& collect)
{
    if (!session.isLive())
        throw CLI::ValidationError("--root", "a captured tree does not change and cannot be watched");
    const Interrupt interrupt;
    const auto interval = std::chrono::milliseconds(static_cast<int>(options.interval * 1000));
    Rates rates;
    Screen screen;
    // The first reading only gives the counters to start from.
    Document shown = rates.update(collect(), Rates::Clock::now());
    for (int look = 0; (options.count == 0 || look < options.count) && Interrupt::sleep(interval); ++look) {
        shown = rates.update(collect(), Rates::Clock::now());
        const View view{true, false, screen.redraws() ? roomOf(shown, screen.height()) : 0};
        const bool written = session.json ? (std::cout << jsonText(toJson(shown), -1) << std::endl).good()
                                          : screen.show(documentText(shown, view));
        if (!written)
            break;
    }
    return reportProblems(problemsOf(shown));
}

void declareWatch(CLI::App& command, Session& session)
{
    struct Options {
        std::vector<std::string> keys;
        WatchOptions watch;
    };
    const auto options = std::make_shared<Options>();
    command.add_option("section", options->keys, "Watch these sections only")
        ->check(CLI::IsMember(watchableKeys()).description(""));
    options->watch.declare(command);
    command.callback([&session, options] {
        const Sections sections = options->keys.empty() ? reportSections() : sectionsNamed(options->keys);
        session.exitCode = watch(session, options->watch, [&] { return collectDocument(sections); });
    });
}

} // namespace K7Tool
