// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text forms of hardware addresses.
#include "Core/K7MacAddressFormatter.h"

#include <algorithm>

namespace Kivo {

K7MacAddressFormatter::K7MacAddressFormatter(const J3String& separator, bool upperCase, uint32 bytesPerGroup,
                                             uint32 byteCount)
    : _separator(separator), _upperCase(upperCase), _bytesPerGroup(bytesPerGroup),
      _byteCount(std::min(byteCount, K7MacAddress::SIZE))
{}

J3String K7MacAddressFormatter::formatAddress(const K7MacAddress& address) const
{
    J3String text;
    for (uint32 i = 0; i < _byteCount; ++i) {
        if (i > 0 && _bytesPerGroup > 0 && i % _bytesPerGroup == 0)
            text += _separator;
        text.appendf(_upperCase ? L"%02X" : L"%02x", address.bytes()[i]);
    }
    return text;
}

} // namespace Kivo
