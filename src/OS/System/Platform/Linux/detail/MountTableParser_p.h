// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/mounts.
#pragma once

#include "Base/TextScanner_p.h"

#include <string>

namespace Kivo {

/// One mount; blanks and the like in its texts are still escaped, "\040".
struct MountRow {
    std::string_view device;
    std::string_view directory;
    std::string_view type;
    std::string_view options;
};

/// Delivers the rows of /proc/mounts, the oldest mount first. Comments and rows without a directory are passed over.
class MountTableParser {
public:
    explicit MountTableParser(std::string_view text) : _text(text) {}

    /// @return false at the end
    bool next(MountRow* row);

private:
    TextScanner _text;
};

/// A text of the mount table with its escapes, a backslash and three octal digits, replaced by what they stand for.
std::string unescapedMountText(std::string_view text);

/// Whether @p escaped is @p plain once it is unescaped.
bool isMountText(std::string_view escaped, std::string_view plain);

} // namespace Kivo
