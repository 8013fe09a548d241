// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Streams: byte order, bounds, records.
#include "support/SampleRecord.h"

#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

namespace Kivo {

namespace {

using Bytes = std::vector<uint8>;

Bytes contents(const J3MemoryStream& stream) { return {stream.buffer(), stream.buffer() + stream.size()}; }

J3MemoryStream streamOf(const Bytes& bytes) { return {bytes.data(), static_cast<uint32>(bytes.size())}; }

struct ByteVector : J3Record<ByteVector> {
    static auto fields(auto& self) { return std::tie(self.bytes); }

    Bytes bytes{1};
};

const Bytes SAMPLE_BIG_ENDIAN = {
    1,                                              // flag
    0xFE,                                           // tiny
    0x02, 0x03,                                     // kind
    0x04, 0x05, 0x06, 0x07,                         // number
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, // large
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, // largest
    0x3F, 0xC0, 0x00, 0x00,                         // ratio
    0xBF, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A, // precise
    0,    0,    0,    2,    0xC3, 0xA9,             // name: length, UTF-8
    0,    0,    0,    0,    0,    0,    0,    0x10, // time
    1,    2,    3,                                  // mac
    0,    0,    0,    2,    0xAA, 0xBB,             // bytes: length, contents
};

TEST(J3Stream, RecordHasItsGoldenImageAndComesBack)
{
    J3MemoryStream stream;
    stream.writeObject(SampleRecord::sample());
    EXPECT_EQ(contents(stream), SAMPLE_BIG_ENDIAN);

    SampleRecord record;
    stream.moveTo(0);
    stream.readObject(&record);
    EXPECT_EQ(record, SampleRecord::sample());
    EXPECT_EQ(stream.remains(), 0U);
}

TEST(J3Stream, LittleEndianTurnsEveryValueAround)
{
    J3MemoryStream stream;
    stream.setByteOrder(J3_LITTLE_ENDIAN);
    stream.writeUint16(0x0102);
    stream.writeInt32(0x03040506);
    stream.writeFloat32(1.5F);
    stream.writeString(L"a");
    EXPECT_EQ(contents(stream), (Bytes{2, 1, 6, 5, 4, 3, 0, 0, 0xC0, 0x3F, 1, 0, 0, 0, 'a'}));

    stream.moveTo(0);
    uint16 first = 0;
    stream.readUint16(&first);
    EXPECT_EQ(first, 0x0102);
    stream.setByteOrder(J3_BIG_ENDIAN);
    int32 second = 0;
    stream.readInt32(&second);
    EXPECT_EQ(second, 0x06050403);
}

TEST(J3Stream, RecordCutAnywhereLeavesItsReaderUnchanged)
{
    SampleRecord before;
    before.name = L"before";
    before.bytes = {7};
    for (std::size_t length = 0; length < SAMPLE_BIG_ENDIAN.size(); ++length) {
        J3MemoryStream stream(SAMPLE_BIG_ENDIAN.data(), static_cast<uint32>(length));
        SampleRecord record = before;
        EXPECT_THROW(record.deserializeFrom(&stream), J3RangeException) << length;
        EXPECT_EQ(record, before) << length;
    }
}

TEST(J3Stream, LengthBeyondTheEndIsRefusedBeforeAnythingIsAllocated)
{
    ByteVector record;

    const Bytes lie = {0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3};
    J3MemoryStream stream = streamOf(lie);
    EXPECT_THROW(record.deserializeFrom(&stream), J3RangeException);
    EXPECT_EQ(record.bytes, Bytes{1});

    stream.moveTo(0);
    J3String text = L"before";
    EXPECT_THROW(stream.readString(&text), J3RangeException);
    EXPECT_EQ(text, L"before");
}

TEST(J3Stream, FailedReadKeepsValueAndPosition)
{
    J3MemoryStream stream = streamOf({1, 2, 3});
    stream.moveTo(1);
    uint32 value = 99;
    EXPECT_THROW(stream.readUint32(&value), J3RangeException);
    uint8 array[3] = {9, 9, 9};
    EXPECT_THROW(stream.readUint8Array(array, 3), J3RangeException);
    bool flag = true;
    EXPECT_THROW(stream.readBool(&flag), J3RangeException) << "2 is no bool";

    EXPECT_EQ(value, 99U);
    EXPECT_EQ(array[0], 9);
    EXPECT_TRUE(flag);
    EXPECT_EQ(stream.position(), 1U);
}

TEST(J3Stream, FailedReadSaysWhatWasAskedFor)
{
    J3MemoryStream stream = streamOf({1, 2, 3});
    stream.moveTo(2);
    try {
        uint32 value = 0;
        stream.readUint32(&value);
        FAIL() << "read beyond the end";
    } catch (const J3RangeException& exception) {
        EXPECT_EQ(exception.end(), 3);
        EXPECT_EQ(exception.position(), 6);
    }
}

TEST(J3MemoryStream, WritesOverItsContentsAndGrowsPastTheEnd)
{
    J3MemoryStream stream = streamOf({1, 2, 3});
    EXPECT_FALSE(stream.moveTo(4));
    EXPECT_TRUE(stream.moveTo(2));
    stream.mark();
    EXPECT_EQ(stream.write("\x8\x9", 2), 2U);
    EXPECT_EQ(stream.fill(7, 2), 2U);
    EXPECT_EQ(contents(stream), (Bytes{1, 2, 8, 9, 7, 7}));

    EXPECT_TRUE(stream.reset());
    Bytes rest(9);
    EXPECT_EQ(stream.read(rest.data(), 9), 4U);
    EXPECT_EQ(rest, (Bytes{8, 9, 7, 7, 0, 0, 0, 0, 0}));

    stream.clear();
    EXPECT_EQ(stream.size(), 0U);
    EXPECT_EQ(stream.position(), 0U);
    EXPECT_FALSE(stream.reset()) << "the mark lies beyond the end now";
}

TEST(J3Record, ReportsAMissingStreamAndGoesOn)
{
    static J3String reported;
    const auto before = J3AssertFunc::setHandler([](const J3String& expression, const J3String& message,
                                                    const J3String& function, const J3String&,
                                                    int) { reported = expression + L"|" + message + L"|" + function; });
    SampleRecord record = SampleRecord::sample();
    record.deserializeFrom(nullptr);
    J3AssertFunc::setHandler(before);
    EXPECT_EQ(reported, L"stream|stream is Null!|deserializeFrom");
    EXPECT_EQ(record, SampleRecord::sample());
}

} // namespace

} // namespace Kivo
