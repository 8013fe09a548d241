// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversions on narrow byte strings, and random numbers.
#include "OS/System/Misc.h"

#include "Base/UniqueFd_p.h"
#include "Foundation/J3Assert.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <fcntl.h>

namespace Kivo {

namespace {

constexpr const char* SOURCE = "OS/System/Platform/Linux/Misc";
constexpr int32 DEVICE_TEXT_CAPACITY = 128;
constexpr int32 DEVICE_TEXT_LENGTH = 40;

bool isAlphanumeric(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool isControl(unsigned char c) { return c < ' ' || c == 0x7F; }

/// The value of a hexadecimal digit, -1 for any other character.
int32 digitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

uint32 randomSeed()
{
    uint32 seed = 1;
    const UniqueFd source(retried([] { return ::open("/dev/urandom", O_RDONLY | O_CLOEXEC); }));
    if (source)
        retried([&] { return ::read(source.get(), &seed, sizeof seed); });
    return seed;
}

} // namespace

char K7SystemUtil::Misc::_buffer[256];

void K7SystemUtil::Misc::swapAndTrim(char* dest, const char* src, int32 size)
{
    const bool toSomewhere = J3_REQUIRE_ARGUMENT(dest, SOURCE);
    const bool fromSomewhere = J3_REQUIRE_ARGUMENT(src, SOURCE);
    static_cast<void>(J3_REQUIRE(size > 0 && size < 128, "invalid size", SOURCE));
    if (!toSomewhere || !fromSomewhere)
        return;

    char work[DEVICE_TEXT_CAPACITY] = {};
    const int32 taken = std::min(size, DEVICE_TEXT_CAPACITY);
    for (int32 i = 0; i + 1 < taken; i += 2) {
        work[i] = src[i + 1];
        work[i + 1] = src[i];
    }

    int32 start = 0;
    while (start < DEVICE_TEXT_LENGTH && !isAlphanumeric(work[start]))
        ++start;
    int32 end = DEVICE_TEXT_LENGTH - 1;
    while (end > 0 && !isAlphanumeric(work[end]))
        --end;
    if (start > end) {
        *dest = '\0';
        return;
    }
    for (int32 i = start; i < end && work[i]; ++i)
        if (isControl(work[i]))
            work[i] = '.';
    const int32 length = end - start + 1;
    std::strncpy(dest, work + start, static_cast<std::size_t>(length));
}

int32 K7SystemUtil::Misc::fnComparator(const void* p1, const void* p2)
{
    const bool first = J3_REQUIRE_ARGUMENT(p1, SOURCE);
    const bool second = J3_REQUIRE_ARGUMENT(p2, SOURCE);
    if (!first || !second)
        return 0;
    return std::strcmp(static_cast<const char*>(p1), static_cast<const char*>(p2));
}

void K7SystemUtil::Misc::binaryToHexaString(char* dest, const uint8* src, int32 srcLength)
{
    const bool toSomewhere = J3_REQUIRE_ARGUMENT(dest, SOURCE);
    const bool fromSomewhere = J3_REQUIRE_ARGUMENT(src, SOURCE);
    static_cast<void>(J3_REQUIRE(srcLength > 0, "invalid srcLength", SOURCE));
    if (!toSomewhere || !fromSomewhere)
        return;

    constexpr const char* DIGITS = "0123456789ABCDEF";
    for (int32 i = 0; i < srcLength; ++i) {
        *dest++ = DIGITS[src[i] >> 4];
        *dest++ = DIGITS[src[i] & 15];
    }
    *dest = '\0';
}

int32 K7SystemUtil::Misc::hexaStringToBinary(uint8* dest, const char* src)
{
    const bool toSomewhere = J3_REQUIRE_ARGUMENT(dest, SOURCE);
    const bool fromSomewhere = J3_REQUIRE_ARGUMENT(src, SOURCE);
    if (!toSomewhere || !fromSomewhere)
        return 0;

    const std::size_t pairs = std::strlen(src) / 2;
    for (std::size_t i = 0; i < pairs; ++i) {
        const int32 high = digitValue(src[2 * i]);
        const int32 low = digitValue(src[2 * i + 1]);
        if (high < 0 || low < 0)
            return static_cast<int32>(i);
        dest[i] = static_cast<uint8>(high << 4 | low);
    }
    return static_cast<int32>(pairs);
}

void K7SystemUtil::Misc::getRandNumber(std::vector<uint32>* dest, uint32 count, uint32 max)
{
    if (!J3_REQUIRE_ARGUMENT(dest, SOURCE))
        return;
    std::srand(randomSeed() + static_cast<uint32>(std::time(nullptr)));
    dest->clear();
    dest->reserve(count);
    for (uint32 i = 0; i < count; ++i) {
        const auto drawn = static_cast<uint32>(std::rand());
        dest->push_back(max == 0 ? 0 : drawn % max);
    }
}

} // namespace Kivo
