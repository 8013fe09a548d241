// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/meminfo.
#include "OS/System/Platform/Linux/detail/MeminfoParser_p.h"

namespace Kivo {

namespace {

constexpr bool separates(char c) { return c == ':' || c == ' ' || c == '\t'; }

/// A row's name and number; by hand, for the file is read once a second and every scan over it counts.
bool parseRow(std::string_view line, MeminfoRow* row)
{
    const char* const end = line.data() + line.size();
    const char* const name = std::find_if_not(line.data(), end, separates);
    const char* const nameEnd = std::find_if(name, end, separates);
    const char* const value = std::find_if_not(nameEnd, end, separates);
    if (value == end)
        return false;
    row->name = {name, nameEnd};
    row->value = leadingNumber<uint64>({value, end});
    return true;
}

} // namespace

// MemTotal:        1003932 kB
// HugePages_Total:       0
bool MeminfoParser::next(MeminfoRow* row)
{
    while (!_text.empty()) {
        std::string_view line = _text.substr(0, _text.find('\n'));
        line = line.substr(0, line.find('\r')); // ends a line, too
        _text.remove_prefix(std::min(line.size() + 1, _text.size()));
        if (parseRow(line, row))
            return true;
    }
    return false;
}

} // namespace Kivo
