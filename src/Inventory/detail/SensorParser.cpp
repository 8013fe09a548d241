// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The names of sensors' attributes.
#include "Inventory/detail/SensorParser_p.h"

#include <tuple>

namespace Kivo::Inventory {

std::optional<NumberedName> parseNumberedName(std::string_view name)
{
    const std::size_t begin = std::min(name.find_first_of("0123456789"), name.size());
    const std::size_t end = std::min(name.find_first_not_of("0123456789", begin), name.size());
    const auto number = wholeNumber<uint32>(name.substr(begin, end - begin));
    if (begin == 0 || !number)
        return std::nullopt;
    return NumberedName{name.substr(0, begin), *number, name.substr(end)};
}

bool standsBefore(std::string_view left, std::string_view right)
{
    const auto rank = [](std::string_view name) {
        const NumberedName parts = parseNumberedName(name).value_or(NumberedName{name, 0, {}});
        return std::tuple(parts.prefix, parts.number, name);
    };
    return rank(left) < rank(right);
}

} // namespace Kivo::Inventory
