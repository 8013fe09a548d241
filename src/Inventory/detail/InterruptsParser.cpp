// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/interrupts.
#include "Inventory/detail/InterruptsParser_p.h"

namespace Kivo::Inventory {

//            CPU0       CPU2
InterruptsParser::InterruptsParser(std::string_view text) : _lines(text)
{
    std::string_view heading;
    _lines.line(&heading);
    TextScanner words(heading);
    for (std::string_view word; words.word(&word) && word.starts_with("CPU");)
        ++_columns;
}

//  19:          8          0       MSI 16384 Edge      ahci[0000:00:01.0]
// IPI1:1794000000 1723000000       Function call interrupts
// Err:          0
bool InterruptsParser::next(InterruptRow* row)
{
    for (std::string_view line; _lines.line(&line);) {
        TextScanner words(line);
        std::string_view label;
        if (!words.until(':', &label) || trimmed(label).empty())
            continue;
        row->label = trimmed(label);
        row->count = 0;
        row->description.clear();
        std::size_t column = 0;
        for (std::string_view word; words.word(&word); ++column) {
            const auto count = column < _columns ? wholeNumber<uint64>(word) : std::nullopt;
            if (count) {
                row->count += *count;
                continue;
            }
            column = _columns;
            if (!row->description.empty())
                row->description += ' ';
            row->description += word;
        }
        return true;
    }
    return false;
}

} // namespace Kivo::Inventory
