// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text of a time in a given form.
#include "Foundation/J3TimeFormatter.h"

#include "Foundation/J3Time.h"

#include <algorithm>
#include <ctime>
#include <cwchar>

namespace Kivo {

// A leading character of our own tells an empty text, which wcsftime gives as 0, from one that did not fit.
J3TimeFormatter::J3TimeFormatter(const J3String& format) : _format(L' ' + format.wstring()) {}

J3String J3TimeFormatter::formatTime(const J3Time& time) const
{
    if (!time.isValid())
        return {};
    const std::time_t seconds = time.to_time_t();
    std::tm local{};
    tzset(); // a zone that was changed since the last call counts
    if (!localtime_r(&seconds, &local))
        return {};
    constexpr std::size_t LIMIT = MAX_LENGTH + 2; // our own character and the final zero
    std::wstring text(64, L'\0');
    for (;;) {
        const std::size_t length = std::wcsftime(text.data(), text.size(), _format.c_str(), &local);
        if (length > 0)
            return text.substr(1, length - 1);
        if (text.size() == LIMIT)
            return {};
        text.resize(std::min(4 * text.size(), LIMIT));
    }
}

} // namespace Kivo
