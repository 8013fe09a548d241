// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/interrupts.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Base/TextScanner_p.h"
#include "Foundation/J3Types.h"

#include <string>

namespace Kivo::Inventory {

struct InterruptRow {
    std::string_view label;  ///< without its colon
    uint64 count;            ///< of all cores that are online
    std::string description; ///< its words with one blank between them
};

/// Delivers the rows of /proc/interrupts. The columns of the heading alone are counts: what stands behind them, such as
/// the number of a message-signalled interrupt, is not.
class InterruptsParser {
public:
    explicit InterruptsParser(std::string_view text);

    /// @return false at the end
    bool next(InterruptRow* row);

private:
    TextScanner _lines;
    std::size_t _columns = 0;
};

} // namespace Kivo::Inventory
