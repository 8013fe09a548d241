// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Hardware address value.
#include "Core/K7MacAddress.h"

#include "Base/TextScanner_p.h"
#include "Core/K7AsciiText_p.h"
#include "Core/K7MacAddressFormatter.h"

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
        const std::string_view pair(text + 3 * i, 2);
        const std::optional<uint8> byte = wholeNumber<uint8>(pair, 16);
        if (!byte || (i > 0 && pair.data()[-1] != text[2]))
            return false;
        bytes[i] = *byte;
    }
    _bytes = bytes;
    return true;
}

void K7MacAddress::setBytes(const uint8* bytes)
{
    if (!J3_REQUIRE_ARGUMENT(bytes, "Core/K7MacAddress"))
        return;
    std::copy_n(bytes, SIZE, _bytes.begin());
}

} // namespace Kivo
