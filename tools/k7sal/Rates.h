// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Growth per second of whatever counts.
#pragma once

#include "Document.h"

#include <chrono>
#include <deque>
#include <map>
#include <optional>

namespace K7Tool {

/// Compares each reading of some sections with the one before it, record by record.
class Rates {
public:
    using Clock = std::chrono::steady_clock;

    /// @return the sections that count something: what tells their records apart, and the growth of each counter per
    ///         second; of seconds, the part of the time in percent. A rate is not known when the reading before lacks
    ///         the record or has counted further.
    Document update(const Document& now, Clock::time_point time);

private:
    /// Where a rate comes from.
    struct Counter {
        std::size_t column;
        std::optional<std::size_t> field; ///< of the nested record that the column holds
        bool isPart;                      ///< of the time, and so in percent
    };

    /// How a section becomes its rates.
    struct Plan {
        std::vector<std::size_t> labels; ///< the columns that are kept as they are
        std::vector<Counter> counters;
        std::vector<Kivo::Inventory::ColumnInfo> columns; ///< of the result
    };

    /// The counts of a record in the order of its plan.
    using Counts = std::vector<std::optional<Kivo::float64>>;

    /// The counts of a section by what tells its records apart.
    using CountsByName = std::map<std::string, Counts>;

    const Plan& planOf(const Sheet& sheet);
    void addCounter(Plan* plan, const Counter& counter, const Kivo::Inventory::ColumnInfo& column, std::string key,
                    const std::string& heading);
    const char* keep(std::string text);

    std::map<std::string, Plan> _plans;
    std::map<std::string, CountsByName> _last;
    std::optional<Clock::time_point> _lastTime;
    std::deque<std::string> _texts; ///< what the columns' keys and headings point to
};

} // namespace K7Tool
