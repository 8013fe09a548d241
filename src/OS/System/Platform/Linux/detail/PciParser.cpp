// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Names and identifiers of PCI functions.
#include "OS/System/Platform/Linux/detail/PciParser_p.h"

namespace Kivo {

namespace {

/// The hexadecimal number that @p text is, -1 for anything else.
int32 hexNumber(std::string_view text) { return std::max(wholeNumber<int32>(text, 16).value_or(-1), -1); }

} // namespace

// 0000:00:1f.2
K7SystemUtil::PCI::DeviceInfo::Address parsePciAddress(std::string_view name)
{
    TextScanner fields(name);
    std::string_view field;
    int32 numbers[4] = {};
    for (int32& number : numbers) {
        if (!fields.field(&field, ":."))
            return {};
        number = hexNumber(field);
    }
    if (fields.field(&field, ":."))
        return {};
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

// 0x8086
int32 parsePciIdentifier(std::string_view text)
{
    std::string_view line;
    std::string_view word;
    TextScanner(text).line(&line);
    TextScanner(line).field(&word);
    if (word.starts_with("0x"))
        word.remove_prefix(2);
    return hexNumber(word);
}

} // namespace Kivo
