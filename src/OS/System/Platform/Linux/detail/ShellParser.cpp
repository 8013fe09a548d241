// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Process numbers and command lines.
#include "OS/System/Platform/Linux/detail/ShellParser_p.h"

namespace Kivo {

// 1234
int32 parsePidLine(std::string_view line)
{
    TextScanner scanner(line);
    scanner.skipSpace();
    const bool negative = scanner.literal("-");
    if (!negative)
        scanner.literal("+");
    std::string_view digits = scanner.rest();
    int base = digits.starts_with('0') ? 8 : 10;
    if (digits.size() > 2 && (digits.starts_with("0x") || digits.starts_with("0X")) && isHexaDigit(digits[2])) {
        base = 16;
        digits.remove_prefix(2);
    }
    const auto magnitude = static_cast<int64>(std::min<uint64>(leadingNumber<uint64>(digits, base), uint64{1} << 31U));
    const int64 number = negative ? -magnitude : magnitude;
    return static_cast<int32>(std::min<int64>(number, std::numeric_limits<int32>::max()));
}

// /usr/sbin/ntpd\0-g\0
// The arguments are separated by zero bytes, so that a text read as C reads it ends with the first. A kernel thread has
// no command line.
std::string_view parseProgramName(std::string_view commandLine)
{
    return commandLine.substr(0, commandLine.find_first_of(std::string_view("\0\n", 2)));
}

bool isProcessName(std::string_view name) { return std::all_of(name.begin(), name.end(), isDecimalDigit); }

} // namespace Kivo
