// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Archives: round trips, malformed documents, wrong items.
#include "support/SampleRecord.h"

#include "Foundation/J3JsonArchive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Kivo {

namespace {

using Bytes = std::vector<uint8>;

J3JsonArchive archiveOf(const std::string& json)
{
    J3JsonArchive archive;
    EXPECT_TRUE(archive.fromJson(json)) << json;
    return archive;
}

/// The archive after a way through its bytes.
J3JsonArchive throughCbor(const J3JsonArchive& archive)
{
    J3JsonArchive result;
    EXPECT_TRUE(result.fromCbor(archive.toCbor()));
    return result;
}

J3JsonArchive sampleArchive()
{
    J3JsonArchive archive;
    SampleRecord::sample().archiveTo(&archive);
    return archive;
}

const char* const SAMPLE_JSON = R"({"1":true,"2":-2,"3":515,"4":67438087,"5":-1,"6":18446744073709551614,"7":1.5,)"
                                R"("8":-0.1,"9":"é","10":{"1":16},"11":[1,2,3],"12":2,"13":[170,187]})";

TEST(J3JsonArchive, RecordHasItsGoldenTextAndComesBack)
{
    EXPECT_EQ(sampleArchive().toJson(), SAMPLE_JSON);
    for (J3JsonArchive archive : {archiveOf(SAMPLE_JSON), throughCbor(sampleArchive())}) {
        SampleRecord record;
        record.unarchiveFrom(&archive);
        EXPECT_EQ(record, SampleRecord::sample());
        EXPECT_EQ(archive.toJson(), SAMPLE_JSON) << "items keep their order";
    }
}

TEST(J3JsonArchive, KeyNamesTheItemWhereThereIsOne)
{
    J3JsonArchive archive;
    archive.writeUint8(1, 5, L"size");
    archive.writeUint8(1, 6, L"");
    archive.writeUint8(2, 7, L"size");
    EXPECT_EQ(archive.toJson(), R"({"size":7,"1":6})");
    uint8 value = 0;
    EXPECT_THROW(archive.readUint8(2, &value, L""), J3RangeException);
    archive.readUint8(99, &value, L"size");
    EXPECT_EQ(value, 7);
}

template <class T>
T roundTrip(void (J3Archive::*write)(uint8, T, const J3String&), void (J3Archive::*read)(uint8, T*, const J3String&),
            T value)
{
    J3JsonArchive archive;
    (archive.*write)(1, value, J3String());
    J3JsonArchive text = archiveOf(archive.toJson());
    J3JsonArchive bytes = throughCbor(archive);
    T fromText{};
    T fromBytes{};
    (text.*read)(1, &fromText, J3String());
    (bytes.*read)(1, &fromBytes, J3String());
    EXPECT_TRUE(fromText == fromBytes || fromText != fromText);
    return fromText;
}

template <class T>
void expectLimits(void (J3Archive::*write)(uint8, T, const J3String&),
                  void (J3Archive::*read)(uint8, T*, const J3String&))
{
    for (const T limit :
         {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()})
        EXPECT_EQ(roundTrip(write, read, limit), limit);
}

TEST(J3JsonArchive, EveryNumberComesBackAtTheLimitsOfItsType)
{
    expectLimits(&J3Archive::writeInt8, &J3Archive::readInt8);
    expectLimits(&J3Archive::writeInt16, &J3Archive::readInt16);
    expectLimits(&J3Archive::writeInt32, &J3Archive::readInt32);
    expectLimits(&J3Archive::writeInt64, &J3Archive::readInt64);
    expectLimits(&J3Archive::writeUint8, &J3Archive::readUint8);
    expectLimits(&J3Archive::writeUint16, &J3Archive::readUint16);
    expectLimits(&J3Archive::writeUint32, &J3Archive::readUint32);
    expectLimits(&J3Archive::writeUint64, &J3Archive::readUint64);
    expectLimits(&J3Archive::writeFloat32, &J3Archive::readFloat32);
    expectLimits(&J3Archive::writeFloat64, &J3Archive::readFloat64);
}

TEST(J3JsonArchive, FloatsThatJsonHasNoNumberForComeBack)
{
    constexpr auto INF = std::numeric_limits<float32>::infinity();
    const auto float32RoundTrip = [](float32 value) {
        return roundTrip(&J3Archive::writeFloat32, &J3Archive::readFloat32, value);
    };
    EXPECT_EQ(float32RoundTrip(INF), INF);
    EXPECT_EQ(float32RoundTrip(-INF), -INF);
    EXPECT_TRUE(std::isnan(float32RoundTrip(NAN)));
    EXPECT_TRUE(std::signbit(float32RoundTrip(-0.0F)));
}

TEST(J3JsonArchive, TextKeepsZeroCharactersAndReplacesIllFormedBytes)
{
    J3JsonArchive archive;
    archive.writeString(1, J3String(std::wstring(L"a\0b", 3)), L"");
    J3String text;
    throughCbor(archive).readString(1, &text, L"");
    EXPECT_EQ(text.length(), 3U);

    ASSERT_TRUE(archive.fromCbor({0xA1, 0x61, '1', 0x61, 0xFF}));
    archive.readString(1, &text, L"");
    EXPECT_EQ(text, L"\uFFFD");
    EXPECT_EQ(archive.toJson(), "{\"1\":\"\xEF\xBF\xBD\"}");
}

TEST(J3JsonArchive, MalformedTextIsRefusedAndChangesNothing)
{
    J3JsonArchive archive = sampleArchive();
    for (const std::string& text : {
             std::string(),
             std::string("[]"),
             std::string("1"),
             std::string("{"),
             std::string("{\"1\":}"),
             std::string("{} {}"),
             std::string("{\"1\":1,}"),
             std::string("{1:1}"),
             std::string("{\"1\":\"\xFF\"}"),
             std::string("{\"1\":1e999}"),
             std::string("{}\0garbage", 10),
             std::string("{\"1\":\"\\ud800\"}"),
         }) {
        EXPECT_FALSE(archive.fromJson(text)) << text;
        EXPECT_EQ(archive.toJson(), SAMPLE_JSON);
    }
}

TEST(J3JsonArchive, MalformedBytesAreRefusedAndChangeNothing)
{
    J3JsonArchive archive = sampleArchive();
    for (const Bytes& bytes : {
             Bytes{},                                                     // nothing
             Bytes{0x80},                                                 // an array
             Bytes{0xA1, 0x61, '1'},                                      // no value
             Bytes{0xA0, 0x00},                                           // something behind the end
             Bytes{0xA1, 0x01, 0x01},                                     // a number for a name
             Bytes{0xA1, 0x61, '1', 0x1C},                                // a reserved length
             Bytes{0xA1, 0x61, '1', 0xC0, 0x01},                          // a tag
             Bytes{0xA1, 0x61, '1', 0xFF},                                // a break where none may be
             Bytes{0xA1, 0x61, '1', 0x7F, 0x41, 'a', 0xFF},               // bytes as a piece of a text
             Bytes{0xA1, 0x61, '1', 0x7F, 0x7F, 0xFF, 0xFF},              // a text in pieces as a piece of a text
             Bytes{0xBF, 0x61, '1', 0xFF},                                // half an item
             Bytes{0xBB, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, // more items than bytes
             Bytes{0xA1, 0x7B, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'a'}, // a text longer than the document
         }) {
        EXPECT_FALSE(archive.fromCbor(bytes)) << testing::PrintToString(bytes);
        EXPECT_EQ(archive.toJson(), SAMPLE_JSON);
    }
    const Bytes whole = archive.toCbor();
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(archive.fromCbor(Bytes(whole.data(), whole.data() + length))) << length;
}

TEST(J3JsonArchive, TakesLengthsThatAreLeftOpen)
{
    J3JsonArchive archive;
    ASSERT_TRUE(archive.fromCbor({0xBF, 0x61, '1', 0x9F, 0x18, 0xFF, 0xFF, 0x7F, 0x61, 'a', 0xFF, 0x61, 'b', 0xFF}));
    EXPECT_EQ(archive.toJson(), R"({"1":[255],"a":"b"})");
}

TEST(J3JsonArchive, TakesNestingUpToItsLimitAndRefusesMore)
{
    const auto json = [](std::size_t depth) {
        return "{\"1\":" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
    };
    const auto cbor = [](std::size_t depth) {
        Bytes bytes = {0xA1, 0x61, '1'};
        bytes.insert(bytes.end(), depth - 2, 0x81);
        bytes.push_back(0x80);
        return bytes;
    };
    J3JsonArchive archive;
    EXPECT_TRUE(archive.fromJson(json(64)));
    EXPECT_TRUE(archive.fromCbor(cbor(64)));
    for (const std::size_t depth : {65, 200'000}) {
        EXPECT_FALSE(archive.fromJson(json(depth)));
        EXPECT_FALSE(archive.fromCbor(cbor(depth)));
    }
}

TEST(J3JsonArchive, RefusesEveryOpeningRepeatedWithoutEnd)
{
    J3JsonArchive archive;
    for (const uint8 opening : {0x5F, 0x7F, 0x81, 0x9F, 0xA1, 0xBF, 0xC0, 0xD8})
        EXPECT_FALSE(archive.fromCbor(Bytes(200'000, opening))) << int{opening};
    EXPECT_FALSE(archive.fromJson(std::string(200'000, '[')));
}

template <class T>
void expectRefused(const char* item, void (J3Archive::*read)(uint8, T*, const J3String&), T before)
{
    J3JsonArchive archive = archiveOf(std::string("{\"1\":") + item + "}");
    T value = before;
    EXPECT_THROW((archive.*read)(1, &value, J3String()), J3RangeException) << item;
    EXPECT_EQ(value, before) << item;
}

TEST(J3JsonArchive, ItemOfAnotherTypeOrRangeIsRefusedAndChangesNothing)
{
    for (const char* item : {"256", "-1", "1.0", "1e2", "true", "\"1\"", "null", "[1]", "{}"})
        expectRefused<uint8>(item, &J3Archive::readUint8, 77);
    for (const char* item : {"128", "-129", "18446744073709551615"})
        expectRefused<int8>(item, &J3Archive::readInt8, 77);
    expectRefused<int64>("9223372036854775808", &J3Archive::readInt64, 77);
    expectRefused<uint64>("18446744073709551616", &J3Archive::readUint64, 77);
    for (const char* item : {"1e39", "true", "\"nan\"", "null"})
        expectRefused<float32>(item, &J3Archive::readFloat32, 77.0F);
    for (const char* item : {"0", "\"true\"", "null"})
        expectRefused<bool>(item, &J3Archive::readBool, true);
    for (const char* item : {"0", "null", "[\"a\"]"})
        expectRefused<J3String>(item, &J3Archive::readString, L"before");
    for (const char* item : {"0", "\"ab\"", "[256]", "[1,-1]", "[1,2.0]", "{\"1\":1}"})
        expectRefused<Bytes>(item, &J3Archive::readUint8Array, Bytes{7});
}

TEST(J3JsonArchive, IntegerServesAsAFloat)
{
    float64 value = 0;
    archiveOf(R"({"1":-3})").readFloat64(1, &value, L"");
    EXPECT_EQ(value, -3.0);
}

TEST(J3JsonArchive, ArrayOfAnotherLengthNeverReachesItsReader)
{
    for (const char* json : {R"({"1":[1,2]})", R"({"1":[1,2,3,4]})"}) {
        J3JsonArchive archive = archiveOf(json);
        uint8 mac[3] = {9, 9, 9};
        EXPECT_THROW(readUint8Array(&archive, 1, mac, L""), J3RangeException) << json;
        EXPECT_EQ(mac[0], 9) << json;
    }
}

TEST(J3Record, OneWrongItemAnywhereLeavesTheRecordUnchanged)
{
    SampleRecord before;
    before.name = L"before";
    before.time.setUtcTime(1);
    for (uint8 number = 1; number <= 13; ++number) {
        J3JsonArchive archive = sampleArchive();
        archive.writeObject(number, J3JsonArchive(), L""); // an empty object, which no field takes
        SampleRecord record = before;
        EXPECT_THROW(record.unarchiveFrom(&archive), J3RangeException) << int{number};
        EXPECT_EQ(record, before) << int{number};
    }
}

TEST(J3Record, CountOfBytesMustAgreeWithTheBytes)
{
    J3JsonArchive archive = sampleArchive();
    archive.writeUint32(12, 3, L"");
    SampleRecord record;
    EXPECT_THROW(record.unarchiveFrom(&archive), J3RangeException);
    EXPECT_EQ(record, SampleRecord());
}

TEST(J3JsonArchive, CopiesAreIndependent)
{
    J3JsonArchive original = sampleArchive();
    const std::unique_ptr<J3JsonArchive> copy(original.clone());
    original.writeBool(1, false, L"");
    EXPECT_EQ(copy->toJson(), SAMPLE_JSON);
}

} // namespace

} // namespace Kivo
