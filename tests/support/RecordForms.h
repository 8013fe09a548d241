// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stream and archive forms of a record as text to compare, and the cut that every record has to survive.
#pragma once

#include "Foundation/J3Exception.h"
#include "Foundation/J3JsonArchive.h"
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

namespace K7Test {

/// Bytes as lower-case hexadecimal digits.
inline std::string hexOf(const Kivo::uint8* bytes, std::size_t count)
{
    constexpr const char* DIGITS = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += {DIGITS[bytes[i] >> 4], DIGITS[bytes[i] & 0xF]};
    return text;
}

inline std::vector<Kivo::uint8> bytesOf(const std::string& hex)
{
    std::vector<Kivo::uint8> bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<Kivo::uint8>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline std::string streamFormOf(const Kivo::J3Object& record)
{
    Kivo::J3MemoryStream stream;
    record.serializeTo(&stream);
    return hexOf(stream.buffer(), stream.size());
}

inline std::string archiveFormOf(const Kivo::J3Object& record)
{
    Kivo::J3JsonArchive archive;
    record.archiveTo(&archive);
    return archive.toJson();
}

/// Check that a record comes back from both of its forms, and that its stream, cut anywhere, is refused and leaves
/// @p other as it was.
template <class Record>
void expectSurvivesItsForms(const Record& record, const Record& other)
{
    Kivo::J3MemoryStream stream;
    record.serializeTo(&stream);
    for (Kivo::uint32 length = 0; length < stream.size(); ++length) {
        Kivo::J3MemoryStream cut(stream.buffer(), length);
        Record target = other;
        EXPECT_THROW(target.deserializeFrom(&cut), Kivo::J3RangeException) << "cut to " << length;
        EXPECT_EQ(target, other) << "cut to " << length;
    }
    Record fromStream = other;
    stream.moveTo(0);
    fromStream.deserializeFrom(&stream);
    EXPECT_EQ(fromStream, record);
    EXPECT_EQ(stream.remains(), 0U);

    Kivo::J3JsonArchive archive;
    record.archiveTo(&archive);
    Record fromArchive = other;
    fromArchive.unarchiveFrom(&archive);
    EXPECT_EQ(fromArchive, record);
}

} // namespace K7Test
