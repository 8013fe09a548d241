// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Numbers with decimals, as the kernel writes them.
#include "Inventory/detail/NumberParser_p.h"

namespace Kivo::Inventory {

std::optional<Real> parseReal(std::string_view text)
{
    const auto isPart = [](char c) { return isDecimalDigit(c) || c == '.' || c == '-'; };
    const auto value = wholeNumber<float64>(text);
    if (!value || !std::all_of(text.begin(), text.end(), isPart))
        return std::nullopt;
    constexpr std::size_t MOST_DECIMALS = 9;
    const std::size_t point = std::min(text.find('.'), text.size() - 1);
    return Real{*value, static_cast<int>(std::min(text.size() - 1 - point, MOST_DECIMALS))};
}

Real thousandths(int64 number, int leastDecimals)
{
    int decimals = 3;
    for (int64 rest = number; decimals > leastDecimals && rest % 10 == 0; rest /= 10)
        --decimals;
    return {static_cast<float64>(number) / 1000, decimals};
}

} // namespace Kivo::Inventory
