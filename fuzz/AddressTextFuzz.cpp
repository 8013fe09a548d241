// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Texts of addresses: refused, or the same address again from the text that it prints.
#include "Core/K7InetAddress.h"
#include "Core/K7MacAddress.h"

#include <cstdlib>

using namespace Kivo;

namespace {

template <class Address>
void expectStable(const J3String& text)
{
    Address address;
    Address again;
    if (address.fromString(text) && !(again.fromString(address.toString()) && again == address))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* bytes, std::size_t size)
{
    const J3String text = J3String::from_string(std::string(bytes, bytes + size), STD_LOCALE_UTF8);
    expectStable<K7IPv4Address>(text);
    expectStable<K7IPv6Address>(text);
    expectStable<K7InetAddress>(text);
    expectStable<K7MacAddress>(text);
    return 0;
}
