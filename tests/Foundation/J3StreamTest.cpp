// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Streams: byte order, bounds, records.
#include "support/SampleRecord.h"

#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

using namespace Kivo;

namespace {

using Bytes = std::vector<uint8>;

Bytes contents(const J3MemoryStream& stream) { return {stream.buffer(), stream.buffer() + stream.size()}; }

const Bytes SAMPLE_BIG_ENDIAN = {
    1,    0xFE, 2,    3,    4,    5,    6,    7,          // flag, tiny, kind, number
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,       // large
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE,       // largest
    0x3F, 0xC0, 0,    0,                                  // ratio
    0xBF, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A,       // precise
    0,    0,    0,    2,    0xC3, 0xA9,                   // name: length, UTF-8
    0,    0,    0,    0,    0,    0,    0,    0x10,       // time
    1,    2,    3,    0,    0,    0,    2,    0xAA, 0xBB, // mac; bytes: length, contents
};

TEST(J3Stream, RecordHasItsGoldenImageInEitherOrder)
{
    J3MemoryStream big;
    big.writeObject(SampleRecord());
    EXPECT_EQ(contents(big), SAMPLE_BIG_ENDIAN);
    J3MemoryStream little;
    little.setByteOrder(J3_LITTLE_ENDIAN);
    little.writeObject(SampleRecord());
    Bytes turned = SAMPLE_BIG_ENDIAN;
    for (const auto& [at, size] :
         {std::pair(2, 2), {4, 4}, {8, 8}, {16, 8}, {24, 4}, {28, 8}, {36, 4}, {42, 8}, {53, 4}})
        std::reverse(turned.begin() + at, turned.begin() + at + size);
    EXPECT_EQ(contents(little), turned);
}

TEST(J3Stream, RecordComesBackWholeOrLeavesItsReaderUnchanged)
{
    for (const J3ByteOrder order : {J3_BIG_ENDIAN, J3_LITTLE_ENDIAN}) {
        J3MemoryStream whole;
        whole.setByteOrder(order);
        whole.writeObject(SampleRecord());
        for (uint32 length = 0; length <= whole.size(); ++length) {
            J3MemoryStream cut(whole.buffer(), length);
            cut.setByteOrder(order);
            SampleRecord record = otherRecord();
            if (length < whole.size())
                EXPECT_THROW(cut.readObject(&record), J3RangeException) << length;
            else
                cut.readObject(&record);
            EXPECT_EQ(record, length < whole.size() ? otherRecord() : SampleRecord()) << length;
        }
    }
}

TEST(J3Stream, FailedReadKeepsValueAndPosition)
{
    J3MemoryStream stream("\x9\xFF\xFF\xFF\xFF\x1", 6);
    stream.moveTo(1);
    J3String text = L"before";
    EXPECT_THROW(stream.readString(&text), J3RangeException);
    bool flag = true;
    EXPECT_THROW(stream.readBool(&flag), J3RangeException) << "255 is not a bool";
    EXPECT_EQ(text, L"before");
    EXPECT_TRUE(flag);
    EXPECT_EQ(stream.position(), 1U);
}

} // namespace
