// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Archives kept as JSON documents: round trips, malformed documents, limits, wrong items.
#include "Foundation/J3JsonArchive.h"

#include "support/SampleRecord.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace std::string_literals;

namespace {

using Bytes = std::vector<uint8>;

J3JsonArchive archiveOf(const std::string& json)
{
    J3JsonArchive archive;
    EXPECT_TRUE(archive.fromJson(json)) << json;
    return archive;
}

TEST(J3JsonArchive, RecordHasItsGoldenTextAndComesBackUpToTheLimitsOfItsTypes)
{
    SampleRecord limits;
    std::tie(limits.tiny, limits.number, limits.large) = std::tuple(-128, 0xFFFFFFFF, INT64_MIN);
    std::tie(limits.largest, limits.ratio, limits.precise) = std::tuple(UINT64_MAX, 0x1.fffffep127F, -1.0 / 0.0);
    J3JsonArchive archive;
    for (const SampleRecord& record : {limits, SampleRecord()}) {
        record.archiveTo(&archive);
        J3JsonArchive bytes;
        EXPECT_TRUE(bytes.fromCbor(archive.toCbor()));
        for (J3JsonArchive form : {archiveOf(archive.toJson()), bytes}) {
            SampleRecord back = otherRecord();
            back.unarchiveFrom(&form);
            EXPECT_EQ(back, record);
        }
    }
    EXPECT_EQ(archive.toJson(), SampleRecord::JSON);
}

TEST(J3JsonArchive, KeyNamesTheItemWhereThereIsOne)
{
    J3JsonArchive archive;
    archive.writeUint8(1, 5, L"size");
    archive.writeUint8(1, 6, L"");
    archive.writeUint8(2, 7, L"size");
    EXPECT_EQ(archive.toJson(), R"({"size":7,"1":6})");
}

TEST(J3JsonArchive, WritesWhatReadsBackAsItWas)
{
    J3JsonArchive archive;
    archive.writeString(1, L"\"\\\b\f\n\r\t\x01\x7F\x20AC", L"text");
    archive.writeFloat64(2, 3, L"");
    archive.writeFloat64(3, 1e300, L"");
    EXPECT_EQ(archive.toJson(), "{\"text\":\"\\\"\\\\\\b\\f\\n\\r\\t\\u0001\x7F\xE2\x82\xAC\",\"2\":3.0,\"3\":1e+300}");
    EXPECT_EQ(archiveOf(archive.toJson()).toJson(), archive.toJson());
}

TEST(J3JsonArchive, TakesOpenLengthsByteStringsAndReplacesIllFormedText)
{
    J3JsonArchive archive;
    ASSERT_TRUE(archive.fromCbor({0xA1, 0x61, '1', 0x42, 0x07, 0xFF}));
    EXPECT_EQ(archive.toJson(), R"({"1":[7,255]})");
    ASSERT_TRUE(archive.fromCbor({0xBF, 0x61, '1', 0x9F, 0x18, 0xFF, 0xFF, 0x7F, 0x61, 'a', 0xFF, 0x61, 0xFE, 0xFF}));
    EXPECT_EQ(archive.toJson(), "{\"1\":[255],\"a\":\"\xEF\xBF\xBD\"}");
}

TEST(J3JsonArchive, MalformedDocumentIsRefusedAndChangesNothing)
{
    J3JsonArchive archive = archiveOf(SampleRecord::JSON);
    for (const std::string& text :
         {""s, "[]"s, "{"s, "{} {}"s, "{\"1\":1,}"s, "{\"1\":\"\xFF\"}"s, "{\"1\":1e999}"s, "{}\0garbage"s})
        EXPECT_FALSE(archive.fromJson(text)) << text;
    for (const Bytes& bytes : {Bytes{0x80},                                    // an array
                               Bytes{0xA0, 0x00},                              // something behind the end
                               Bytes{0xA1, 0x61, '1', 0xC0, 0x01},             // a tag
                               Bytes{0xA1, 0x61, '1', 0x7F, 0x7F, 0xFF, 0xFF}, // a text in pieces as one of a text
                               Bytes{0xBB, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}}) // more than there is
        EXPECT_FALSE(archive.fromCbor(bytes)) << testing::PrintToString(bytes);
    const Bytes whole = archive.toCbor();
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(archive.fromCbor(Bytes(whole.data(), whole.data() + length))) << length;
    EXPECT_EQ(archive.toJson(), SampleRecord::JSON);
}

TEST(J3JsonArchive, TakesNestingUpToItsLimitAndRefusesMore)
{
    J3JsonArchive archive;
    for (const std::size_t depth : {64, 65, 200'000}) {
        Bytes cbor(depth + 2, 0x81);
        std::tie(cbor[0], cbor[1], cbor[2], cbor.back()) = std::tuple(0xA1, 0x61, '1', 0x80);
        EXPECT_EQ(archive.fromCbor(cbor), depth == 64);
        const std::string json = "{\"1\":" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
        EXPECT_EQ(archive.fromJson(json), depth == 64);
    }
}

TEST(J3JsonArchive, TakesIntegersAndSizesUpToTheirLimitsAndRefusesMore)
{
    const auto negative = [](uint8 first, uint8 last) {
        return Bytes{0xA1, 0x61, '1', 0x3B, first, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, last};
    };
    J3JsonArchive archive;
    ASSERT_TRUE(archive.fromCbor(negative(0x7F, 0xFF)));
    int64 smallest = 0;
    archive.readInt64(1, &smallest, L"");
    EXPECT_EQ(smallest, INT64_MIN);
    EXPECT_FALSE(archive.fromCbor({0xA1, 0x61, '1', 0x3B, 0x80, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(archive.fromCbor(negative(0xFF, 0x9C)));
    std::string largest(16 * 1024 * 1024, ' ');
    largest.front() = '{';
    largest.back() = '}';
    EXPECT_TRUE(archive.fromJson(largest));
    EXPECT_FALSE(archive.fromJson(largest + ' '));
    EXPECT_FALSE(archive.fromJson(std::string(largest.size(), '['))) << "ends at the limit of depth";
}

template <class T>
void expectRefused(std::initializer_list<const char*> items, void (J3Archive::*read)(uint8, T*, const J3String&),
                   const T& before)
{
    for (const char* item : items) {
        J3JsonArchive archive = archiveOf(std::string("{\"1\":") + item + "}");
        T value = before;
        EXPECT_THROW((archive.*read)(1, &value, J3String()), J3RangeException) << item;
        EXPECT_EQ(value, before) << item;
    }
}

TEST(J3JsonArchive, ItemOfAnotherTypeOrRangeIsRefusedAndChangesNothing)
{
    expectRefused<uint8>({"256", "-1", "1.0", "true", "\"1\"", "null", "[1]", "{}"}, &J3Archive::readUint8, 77);
    expectRefused<int8>({"128", "-129", "18446744073709551615"}, &J3Archive::readInt8, 77);
    expectRefused<uint64>({"18446744073709551616"}, &J3Archive::readUint64, 77);
    expectRefused<float32>({"1e39", "true", "\"nan\"", "null"}, &J3Archive::readFloat32, 77);
    expectRefused<bool>({"0", "\"true\"", "null"}, &J3Archive::readBool, true);
    expectRefused<J3String>({"0", "null", "[\"a\"]"}, &J3Archive::readString, L"before");
    expectRefused<Bytes>({"0", "\"ab\"", "[256]", "[1,-1]", "[1,2.0]"}, &J3Archive::readUint8Array, {7});
}

} // namespace
