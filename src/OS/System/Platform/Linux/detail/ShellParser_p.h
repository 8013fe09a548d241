// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Process numbers and command lines.
#pragma once

#include "Base/TextScanner_p.h"
#include "Foundation/J3Types.h"

namespace Kivo {

/// The number in a pid file's line: decimal, hexadecimal after "0x", octal after "0"; 0 when there is none, clamped to
/// 32 bits.
int32 parsePidLine(std::string_view line);

/// The first argument of a process's command line, as far as C would read it as one line of text.
std::string_view parseProgramName(std::string_view commandLine);

/// Whether a name in /proc is a process's.
bool isProcessName(std::string_view name);

} // namespace Kivo
