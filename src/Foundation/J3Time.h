// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A point in calendar time.
#pragma once

#include "Foundation/J3Record.h"

#include <compare>
#include <ctime>
#include <limits>

namespace Kivo {

/// A point in calendar time in whole seconds since 1970 (UTC), or no time at all: an invalid one, which is what a new
/// object holds and what sorts before every other.
class J3_API J3Time : public J3Record<J3Time> {
public:
    J3Time() = default;

    [[nodiscard]] static J3Time from_time_t(std::time_t seconds);

    /// Seconds since 1970; -1 for an invalid time.
    [[nodiscard]] std::time_t to_time_t() const { return isValid() ? _seconds : -1; }

    void setUtcTime(std::time_t seconds) { _seconds = seconds; }

    void makeInvalid() { _seconds = INVALID; }

    [[nodiscard]] bool isValid() const { return _seconds != INVALID; }

    [[nodiscard]] J3Time* clone() const override;

    /// Local time as "YYYY-MM-DD HH:MM:SS"; empty for an invalid time.
    [[nodiscard]] J3String toString() const override;

    friend std::strong_ordering operator<=>(const J3Time& left, const J3Time& right)
    {
        return left._seconds <=> right._seconds;
    }

    static auto fields(auto& self) { return std::tie(self._seconds); }

private:
    static constexpr int64 INVALID = std::numeric_limits<int64>::min();

    int64 _seconds = INVALID;
};

} // namespace Kivo
