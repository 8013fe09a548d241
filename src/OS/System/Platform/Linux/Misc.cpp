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
    if (!dest)
        J3_REPORT("dest", "dest is Null!", SOURCE);
    if (!src)
        J3_REPORT("src", "src is Null!", SOURCE);
    if (size <= 0 || size >= DEVICE_TEXT_CAPACITY)
        J3_REPORT("size > 0 && size < 128", "invalid size", SOURCE);
    if (!dest || !src)
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
    if (!p1)
        J3_REPORT("p1", "p1 is Null!", SOURCE);
    if (!p2)
        J3_REPORT("p2", "p2 is Null!", SOURCE);
    if (!p1 || !p2)
        return 0;
    return std::strcmp(static_cast<const char*>(p1), static_cast<const char*>(p2));
}

void K7SystemUtil::Misc::binaryToHexaString(char* dest, const uint8* src, int32 srcLength)
{
    if (!dest)
        J3_REPORT("dest", "dest is Null!", SOURCE);
    if (!src)
        J3_REPORT("src", "src is Null!", SOURCE);
    if (srcLength <= 0)
        J3_REPORT("srcLength > 0", "invalid srcLength", SOURCE);
    if (!dest || !src)
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
    if (!dest)
        J3_REPORT("dest", "dest is Null!", SOURCE);
    if (!src)
        J3_REPORT("src", "src is Null!", SOURCE);
    if (!dest || !src)
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
    if (!dest) {
        J3_REPORT("dest", "dest is Null!", SOURCE);
        return;
    }
    std::srand(randomSeed() + static_cast<uint32>(std::time(nullptr)));
    dest->clear();
    dest->reserve(count);
    for (uint32 i = 0; i < count; ++i) {
        const auto drawn = static_cast<uint32>(std::rand());
        dest->push_back(max == 0 ? 0 : drawn % max);
    }
}

} // namespace Kivo
