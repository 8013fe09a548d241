// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Rates per second, look after look; k7sal watch.
#include "Watch.h"

#include "Interrupt.h"
#include "Rates.h"
#include "Render.h"

#include "Base/TextScanner_p.h"

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

bool isCounter(const ColumnInfo& column)
{
    const std::vector<ColumnInfo> nested = column.nested ? column.nested() : std::vector<ColumnInfo>();
    return column.has(COUNTER) || std::any_of(nested.begin(), nested.end(), isCounter);
}

bool countsSomething(const Section* section)
{
    const std::vector<ColumnInfo> columns = section->columns();
    return std::any_of(columns.begin(), columns.end(), isCounter);
}

/// The named sections, or those of a report, that count something.
Sections watchedSections(const std::vector<std::string>& keys)
{
    Sections watched;
    for (const Section* const section : keys.empty() ? reportSections() : namedSections(keys))
        if (countsSomething(section))
            watched.push_back(section);
        else if (!keys.empty())
            throw CLI::ValidationError("watch", std::string(section->key) + " does not count anything");
    return watched;
}

/// Refuses what is not a number of seconds between two looks.
std::string checkInterval(const std::string& text)
{
    constexpr double SHORTEST = 0.1;
    constexpr double LONGEST = 3600;
    const auto seconds = Kivo::wholeNumber<double>(text);
    return seconds && *seconds >= SHORTEST && *seconds <= LONGEST ? "" : "\"" + text + "\" is not 0.1 to 3600 seconds";
}

} // namespace

void WatchOptions::declare(CLI::App& command, CLI::Option* needed)
{
    CLI::Option* const options[] = {
        command.add_option("--interval", interval, "Seconds between two looks, 0.1 to 3600 (default: 1)")
            ->type_name("SECONDS")
            ->check(checkInterval),
        command.add_option("--count", count, "End after so many looks (default: when interrupted)")
            ->type_name("N")
            ->check(CLI::Range(1, 1'000'000).description("")),
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
    const auto collectNow = [&] {
        const auto time = Rates::Clock::now();
        return rates.update(collect(), time);
    };
    // The first reading only gives the counters to start from.
    Document shown = collectNow();
    for (int look = 0; (options.count == 0 || look < options.count) && Interrupt::sleep(interval); ++look) {
        shown = collectNow();
        const View view{true, Detail::USUAL, screen.redraws() ? roomOf(shown, screen.height()) : 0, {}};
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
    command.add_option("section", options->keys, "Watch these sections only");
    options->watch.declare(command);
    command.callback([&session, options] {
        const Sections sections = watchedSections(options->keys);
        session.exitCode = watch(session, options->watch, [&] { return collectDocument(sections); });
    });
}

} // namespace K7Tool
