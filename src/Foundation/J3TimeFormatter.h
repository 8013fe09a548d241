// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text of a time in a given form.
#pragma once

#include "Foundation/J3String.h"

namespace Kivo {

class J3Time;

/// Prints times in one form. Names of days and months are those of the process's C locale.
/// *Threads*: any, at the same time.
class J3_API J3TimeFormatter {
public:
    /// The longest text that is made, in characters.
    static constexpr std::size_t MAX_LENGTH = 65536;

    /// @param format as strftime takes it, "%Y%m%d%H%M%S"
    explicit J3TimeFormatter(const J3String& format);

    /// @return @p time as local time; empty for an invalid time, for a year that the calendar does not reach and for a
    /// text of more than MAX_LENGTH characters. *Source*: localtime_r, wcsftime
    [[nodiscard]] J3String formatTime(const J3Time& time) const;

private:
    std::wstring _format;
};

} // namespace Kivo
