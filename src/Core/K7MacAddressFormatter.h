// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text forms of hardware addresses.
#pragma once

#include "Core/K7MacAddress.h"

namespace Kivo {

/// Writes hardware addresses in one form: "00-11-22-AA-BB-CC", "0011.22aa.bbcc", "00:11:22".
/// *Threads*: any number at once.
class K7CORE_API K7MacAddressFormatter {
public:
    /// @param separator     the text between two groups
    /// @param upperCase     whether the hexadecimal digits are in upper case
    /// @param bytesPerGroup bytes that stand together, 1 for the usual form; 0 separates nothing
    /// @param byteCount     how many bytes are written, from the first on; more than there are is all of them
    K7MacAddressFormatter(const J3String& separator, bool upperCase, uint32 bytesPerGroup, uint32 byteCount);

    [[nodiscard]] J3String formatAddress(const K7MacAddress& address) const;

private:
    J3String _separator;
    bool _upperCase;
    uint32 _bytesPerGroup;
    uint32 _byteCount;
};

} // namespace Kivo
