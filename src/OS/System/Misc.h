// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversions on narrow byte strings, and random numbers.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <vector>

namespace Kivo {

/// Conversions on narrow byte strings, independent of the C locale, and random numbers.
///
/// A null pointer or an invalid size is reported through j3assertFunc. After a null pointer the operation stops; after
/// an invalid size it goes on with what lies in bounds.
/// *Threads*: any, each on its own texts.
class K7SAL_API K7SystemUtil::Misc {
public:
    Misc() = delete;

    /// Exchange the bytes of every pair of a device text (a disk's model or serial number in 16-bit words) and cut what
    /// is not alphanumeric off both ends. Only the first 40 characters are looked at; control characters that stay
    /// become '.', and a zero byte ends the text.
    /// @param dest takes at most 40 characters, without a terminator: at least 41 bytes, zeroed by the caller; becomes
    ///     empty when there is nothing alphanumeric
    /// @param src  the text; of an odd size, the last byte is left out
    /// @param size bytes at @p src, 1 to 127; none are taken when it is less, 128 when it is more
    static void swapAndTrim(char* dest, const char* src, int32 size);

    /// Compare two texts for qsort() over an array of fixed-size character arrays.
    /// @param p1,p2 the texts themselves, terminated
    /// @return as strcmp(); 0 when one of them is null
    static int32 fnComparator(const void* p1, const void* p2);

    /// Write bytes as upper-case hexadecimal digits, two a byte.
    /// @param dest      takes the digits and a terminator: 2 x @p srcLength + 1 bytes
    /// @param src       the bytes
    /// @param srcLength bytes at @p src, at least 1; @p dest becomes empty when it is less
    static void binaryToHexaString(char* dest, const uint8* src, int32 srcLength);

    /// Read bytes from pairs of hexadecimal digits in either case, up to the first pair that is none.
    /// @param dest takes one byte a pair: half the length of @p src
    /// @param src  the digits, terminated
    /// @return the number of bytes written
    static int32 hexaStringToBinary(uint8* dest, const char* src);

    /// Draw random numbers with the process's rand(), seeded anew from `/dev/urandom` and the time. Not for secrets.
    /// @param dest  its contents are replaced by @p count numbers; duplicates are possible
    /// @param count how many
    /// @param max   each number is below it; with 0 all numbers are 0
    ///
    /// *Threads*: seeds the generator that every user of rand() in the process shares.
    static void getRandNumber(std::vector<uint32>* dest, uint32 count, uint32 max);

private:
    static char _buffer[256];
};

} // namespace Kivo
