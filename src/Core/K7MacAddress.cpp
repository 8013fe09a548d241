// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Hardware address value.
#include "Core/K7MacAddress.h"

#include "Core/K7AsciiText_p.h"
#include "Core/K7MacAddressFormatter.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace Kivo {

K7MacAddress* K7MacAddress::clone() const { return new K7MacAddress(*this); }

J3String K7MacAddress::toString() const { return K7MacAddressFormatter(L":", false, 1, SIZE).formatAddress(*this); }

bool K7MacAddress::fromString(const J3String& text) { return fromString(K7AsciiText(text).c_str()); }

bool K7MacAddress::fromString(const char* text)
{
    if (!text || std::strlen(text) != SIZE * 3 - 1 || (text[2] != ':' && text[2] != '-'))
        return false;
    std::array<uint8, SIZE> bytes{};
    for (std::size_t i = 0; i < SIZE; ++i) {
        const char* pair = text + 3 * i;
        const auto [end, error] = std::from_chars(pair, pair + 2, bytes[i], 16);
        if (error != std::errc() || end != pair + 2 || (i > 0 && pair[-1] != text[2]))
            return false;
    }
    _bytes = bytes;
    return true;
}

void K7MacAddress::setBytes(const uint8* bytes)
{
    if (!bytes) {
        J3_REPORT("bytes", "bytes is Null!", "Core/K7MacAddress");
        return;
    }
    std::copy_n(bytes, SIZE, _bytes.begin());
}

} // namespace Kivo
