// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor ranges and the rows of /proc/interrupts.
#include "OS/System/Platform/Linux/detail/ProcessorParser_p.h"

namespace Kivo {

// 0-3
int32 parseCoreCount(std::string_view present)
{
    TextScanner scanner(present);
    int64 first = 0;
    int64 last = 0;
    if (!scanner.number(&first) || !scanner.literal("-") || !scanner.number(&last) || last == 0)
        return 0;
    using Limits = std::numeric_limits<int32>;
    return static_cast<int32>(std::clamp<int64>(last, Limits::min(), Limits::max() - 1) + 1);
}

// A row is not sure to have a blank behind the colon: "IPI1:1794000000 1723000000       Function call interrupts".
bool takeInterruptLabel(std::string_view* row, std::string_view* label)
{
    if (!TextScanner(*row).field(label))
        return false;
    *label = label->substr(0, label->find(':'));
    row->remove_prefix(static_cast<std::size_t>(label->data() - row->data()) + label->size());
    if (row->starts_with(':'))
        row->remove_prefix(1);
    return true;
}

//            CPU0       CPU1
//  11:       2898       2900 GIC-0  27 Level     arch_timer
// IPI0:       132        262       Rescheduling interrupts
// Err:          0
InterruptsParser::InterruptsParser(std::string_view text) : _lines(text)
{
    std::string_view heading;
    _lines.line(&heading);
    std::string_view processor;
    for (TextScanner fields(heading); fields.field(&processor);)
        ++_columns;
}

bool InterruptsParser::next(InterruptRow* row)
{
    while (_lines.line(&row->counts)) {
        const bool isRow = row->counts.find(':') != std::string_view::npos;
        if (isRow && takeInterruptLabel(&row->counts, &row->label) && !row->label.empty())
            return true;
    }
    return false;
}

uint64 sumOfInterrupts(std::string_view counts, int32 columns)
{
    uint64 sum = 0;
    std::string_view word;
    for (TextScanner fields(counts); columns > 0 && fields.field(&word); --columns) {
        uint64 count = 0;
        TextScanner(word).number(&count);
        sum += count;
    }
    return sum;
}

uint64 takeInterrupts(std::string_view* counts, int32 columns)
{
    uint64 sum = 0;
    std::string_view word;
    for (TextScanner fields(*counts); columns > 0 && fields.field(&word); --columns) {
        const auto count = wholeNumber<uint64>(word);
        if (!count)
            break;
        sum += *count;
        *counts = fields.rest();
    }
    return sum;
}

std::string joinedWords(std::string_view text)
{
    std::string joined;
    std::string_view word;
    for (TextScanner words(text); words.word(&word);)
        joined.append(joined.empty() ? "" : " ").append(word);
    return joined;
}

} // namespace Kivo
