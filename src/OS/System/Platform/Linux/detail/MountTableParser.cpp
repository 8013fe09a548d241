// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/mounts.
#include "OS/System/Platform/Linux/detail/MountTableParser_p.h"

namespace Kivo {

namespace {

constexpr std::size_t ESCAPE_SIZE = 4;

constexpr bool isOctalDigit(char c) { return c >= '0' && c <= '7'; }

bool isEscape(std::string_view text)
{
    return text.size() >= ESCAPE_SIZE && text[0] == '\\' && text[1] >= '0' && text[1] <= '3' && isOctalDigit(text[2]) &&
           isOctalDigit(text[3]);
}

/// Take the first character, or what the first escape stands for.
char takeCharacter(std::string_view* text)
{
    const bool escaped = isEscape(*text);
    const char c = escaped ? static_cast<char>(leadingNumber<unsigned char>(text->substr(1, 3), 8)) : text->front();
    text->remove_prefix(escaped ? ESCAPE_SIZE : 1);
    return c;
}

} // namespace

// /dev/sda1 /mnt/disk\040one ext3 rw,relatime 0 0
bool MountTableParser::next(MountRow* row)
{
    std::string_view line;
    while (_text.line(&line)) {
        TextScanner fields(line);
        *row = {};
        if (!fields.field(&row->device, " \t") || row->device.front() == '#' || !fields.field(&row->directory, " \t"))
            continue;
        fields.field(&row->type, " \t");
        fields.field(&row->options, " \t");
        return true;
    }
    return false;
}

std::string unescapedMountText(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty())
        plain += takeCharacter(&text);
    return plain;
}

bool isMountText(std::string_view escaped, std::string_view plain)
{
    for (; !escaped.empty() && !plain.empty(); plain.remove_prefix(1))
        if (takeCharacter(&escaped) != plain.front())
            return false;
    return escaped.empty() && plain.empty();
}

} // namespace Kivo
