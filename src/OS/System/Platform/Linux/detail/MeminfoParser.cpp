// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/meminfo.
#include "OS/System/Platform/Linux/detail/MeminfoParser_p.h"

namespace Kivo {

// MemTotal:        1003932 kB
// HugePages_Total:       0
bool MeminfoParser::next(MeminfoRow* row)
{
    std::string_view line;
    while (_text.field(&line, "\n\r")) {
        TextScanner words(line);
        std::string_view value;
        if (!words.field(&row->name, ":\t ") || !words.field(&value, ":\t "))
            continue;
        row->value = leadingNumber<uint64>(value);
        return true;
    }
    return false;
}

} // namespace Kivo
