// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/meminfo.
#pragma once

#include "Base/TextScanner_p.h"
#include "Foundation/J3Types.h"

namespace Kivo {

struct MeminfoRow {
    std::string_view name;
    uint64 value;
};

/// Delivers the rows of /proc/meminfo that have a number.
class MeminfoParser {
public:
    explicit MeminfoParser(std::string_view text) : _text(text) {}

    /// @return false at the end
    bool next(MeminfoRow* row);

private:
    std::string_view _text;
};

} // namespace Kivo
