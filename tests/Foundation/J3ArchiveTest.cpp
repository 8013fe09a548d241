// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Archives: round trips, malformed documents, wrong items.
#include "support/SampleRecord.h"

#include "Foundation/J3JsonArchive.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace std::string_literals;

namespace {

using Bytes = std::vector<uint8>;

const char* const SAMPLE_JSON = R"({"1":true,"2":-2,"3":515,"4":67438087,"5":-1,"6":18446744073709551614,"7":1.5,)"
                                R"("8":-0.1,"9":"é","10":{"1":16},"11":[1,2,3],"12":2,"13":[170,187]})";

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
    EXPECT_EQ(archive.toJson(), SAMPLE_JSON);
}

TEST(J3JsonArchive, KeyNamesTheItemWhereThereIsOne)
{
    J3JsonArchive archive;
    archive.writeUint8(1, 5, L"size");
    archive.writeUint8(1, 6, L"");
    archive.writeUint8(2, 7, L"size");
    EXPECT_EQ(archive.toJson(), R"({"size":7,"1":6})");
}

TEST(J3JsonArchive, TakesOpenLengthsAndReplacesIllFormedText)
{
    J3JsonArchive archive;
    ASSERT_TRUE(archive.fromCbor({0xBF, 0x61, '1', 0x9F, 0x18, 0xFF, 0xFF, 0x7F, 0x61, 'a', 0xFF, 0x61, 0xFE, 0xFF}));
    EXPECT_EQ(archive.toJson(), "{\"1\":[255],\"a\":\"\xEF\xBF\xBD\"}");
}

TEST(J3JsonArchive, MalformedDocumentIsRefusedAndChangesNothing)
{
    J3JsonArchive archive = archiveOf(SAMPLE_JSON);
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
    EXPECT_EQ(archive.toJson(), SAMPLE_JSON);
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

TEST(J3Record, OneWrongItemAnywhereLeavesTheRecordUnchanged)
{
    for (uint8 number = 1; number <= 13; ++number) {
        J3JsonArchive archive = archiveOf(SAMPLE_JSON);
        if (number == 12)
            archive.writeUint32(12, 3, L""); // a count that does not agree with the bytes
        else
            archive.writeObject(number, J3JsonArchive(), L""); // an empty object, which no field takes
        SampleRecord record = otherRecord();
        EXPECT_THROW(record.unarchiveFrom(&archive), J3RangeException) << int{number};
        EXPECT_EQ(record, otherRecord()) << int{number};
    }
}

} // namespace
