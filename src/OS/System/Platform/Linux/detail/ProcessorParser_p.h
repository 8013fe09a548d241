// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor ranges and the rows of /proc/interrupts.
#pragma once

#include "Base/TextScanner_p.h"
#include "Foundation/J3Types.h"

#include <string>

namespace Kivo {

/// The last number of the first range plus one, clamped to 32 bits; 0 when there is no range or it ends in 0.
int32 parseCoreCount(std::string_view present);

/// Cut the label, without its colon, off the front of a row. @return false, taking nothing, for an empty row
bool takeInterruptLabel(std::string_view* row, std::string_view* label);

struct InterruptRow {
    std::string_view label;  ///< without its colon
    std::string_view counts; ///< what follows it: one count for each core that is online, then words
};

/// Delivers the rows of /proc/interrupts.
class InterruptsParser {
public:
    explicit InterruptsParser(std::string_view text);

    /// The counts of a row: the processors that the heading names.
    [[nodiscard]] int32 columns() const { return _columns; }

    /// @return false at the end
    bool next(InterruptRow* row);

private:
    TextScanner _lines;
    int32 _columns = 0;
};

/// The sum of the first @p columns words, a word that is not a number counting 0.
uint64 sumOfInterrupts(std::string_view counts, int32 columns);

/// The sum of the numbers among the first @p columns words up to the first that is not one, and the words behind them.
uint64 takeInterrupts(std::string_view* counts, int32 columns);

/// The words of a text with one blank between them.
std::string joinedWords(std::string_view text);

} // namespace Kivo
