// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a ping test tells of its targets, as sheets.
#pragma once

#include "Document.h"
#include "Terminal.h"

#include "OS/Network/Testing/K7PingResult.h"

#include <optional>

namespace K7Tool {

/// A test as a whole.
struct PingTest {
    std::string interface;
    Kivo::uint32 rounds;   ///< that were asked for
    bool complete = false; ///< whether they were all made
};

/// The result of one target, or of a sender that is not a target.
struct Grade {
    std::optional<Kivo::int32> channel; ///< of a target only
    std::optional<std::string> address; ///< of a target only
    Kivo::K7PingResult result;

    explicit Grade(const Kivo::K7PingResult& reported);

    [[nodiscard]] bool isTarget() const { return channel.has_value(); }

    /// Whether it does not speak against the exit code 0.
    [[nodiscard]] bool isFine() const;

    [[nodiscard]] const char* word() const; ///< "great" to "worse"; null when it is not graded
    [[nodiscard]] Kivo::float64 lossPercent() const;
    [[nodiscard]] Style style() const;
};

using Grades = std::vector<Grade>;

/// @p results in the order of the targets, other senders last.
[[nodiscard]] Grades gradesOf(const std::vector<Kivo::K7PingResult>& results);

[[nodiscard]] Sheet sheetOf(const PingTest& test);
[[nodiscard]] Sheet sheetOf(const Grades& grades);

} // namespace K7Tool
