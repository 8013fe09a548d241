// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The records of the network quality test: grading, times, texts and stored forms.
#include "support/RecordForms.h"

#include "OS/Network/Testing/K7PingResult.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace Kivo;
using namespace K7Test;

namespace {

K7PingTarget target()
{
    K7PingTarget made;
    K7InetAddress address;
    EXPECT_TRUE(address.fromString("192.168.0.1"));
    made.setAddress(address);
    made.setChannel(7);
    return made;
}

K7PingResult counted(uint32 transmitted, uint32 received, float32 rttAvg = 10.0F)
{
    K7PingResult result;
    result.setTransmitted(transmitted);
    result.setReceived(received);
    result.setRttAvg(rttAvg);
    return result;
}

/// A result in which no two fields are alike.
K7PingResult full()
{
    K7PingResult result = counted(2, 3, 10.26F);
    result.setTarget(target());
    result.setStatus(K7_PING_STATUS_GOOD);
    result.setSysError(1);
    result.setDuplicates(4);
    result.setChksumErr(5);
    result.setPacketLoss(4000000000U);
    result.setRttMin(1.5F);
    result.setRttMax(300);
    return result;
}

} // namespace

TEST(PingResult, GradesACleanResultByItsAverage)
{
    const struct {
        float32 rttAvg;
        K7PingStatus status;
    } cases[] = {
        {1e9F, K7_PING_STATUS_BAD},
        {300.0F, K7_PING_STATUS_BAD},
        {std::nextafter(300.0F, 0.0F), K7_PING_STATUS_NORMAL},
        {100.0F, K7_PING_STATUS_NORMAL},
        {std::nextafter(100.0F, 0.0F), K7_PING_STATUS_GOOD},
        {50.0F, K7_PING_STATUS_GOOD},
        {std::nextafter(50.0F, 0.0F), K7_PING_STATUS_GREAT},
        {0.0F, K7_PING_STATUS_GREAT},
        {-1.0F, K7_PING_STATUS_GREAT},
    };

    for (const auto& [rttAvg, status] : cases) {
        K7PingResult result = counted(5, 5, rttAvg);
        result.analyze(5);
        EXPECT_EQ(result.status(), status) << rttAvg;
    }
}

TEST(PingResult, TurnsWhatIsMissingIntoErrorsAndLoss)
{
    const struct {
        uint32 testCount, transmitted, received, loss; // what was counted
        uint32 expectedSysError, expectedLoss;         // what the grading makes of it
        K7PingStatus status;
    } cases[] = {
        {5, 3, 1, 0, 2, 0, K7_PING_STATUS_WORSE}, // not sent: losses are not looked at
        {5, 0, 0, 0, 5, 0, K7_PING_STATUS_WORSE},
        {5, 5, 4, 0, 0, 1, K7_PING_STATUS_WORSE}, // one went without a trace
        {5, 5, 0, 0, 0, 5, K7_PING_STATUS_WORSE},
        {5, 5, 2, 1, 0, 3, K7_PING_STATUS_WORSE}, // the counted loss is replaced, not added to
        {5, 5, 3, 2, 0, 2, K7_PING_STATUS_WORSE}, // all accounted for
        {5, 5, 6, 0, 0, 0, K7_PING_STATUS_GREAT}, // more replies than echoes
        {5, 6, 0, 0, 0, 0, K7_PING_STATUS_GREAT}, // more sent than asked for: counts as they are
        {5, 6, 6, 1, 0, 1, K7_PING_STATUS_WORSE},
        {0, 0, 0, 0, 0, 0, K7_PING_STATUS_GREAT},
        {5, 5, 4, UINT32_MAX, 0, UINT32_MAX, K7_PING_STATUS_WORSE}, // a sum that does not wrap
    };

    for (const auto& entry : cases) {
        K7PingResult expected = counted(entry.transmitted, entry.received);
        K7PingResult result = expected;
        result.setPacketLoss(entry.loss);
        result.analyze(entry.testCount);
        expected.setSysError(entry.expectedSysError);
        expected.setPacketLoss(entry.expectedLoss);
        expected.setStatus(entry.status);
        EXPECT_EQ(result, expected) << entry.testCount << " asked for: " << result.toString().to_string();
    }
}

TEST(PingResult, GradesWorseForEveryKindOfError)
{
    void (K7PingResult::*const errors[])() = {&K7PingResult::increaseSysError, &K7PingResult::increasePacketLoss,
                                              &K7PingResult::increaseChksumErr, &K7PingResult::increaseDuplicates};
    for (const auto increase : errors) {
        K7PingResult result = counted(5, 5);
        (result.*increase)();
        result.analyze(5);
        EXPECT_EQ(result.status(), K7_PING_STATUS_WORSE) << result.toString().to_string();
    }
}

TEST(PingResult, KeepsMinimumRunningMeanAndMaximum)
{
    K7PingResult result;
    for (const float32 rtt : {10.0F, 30.0F, 20.0F})
        result.updateRtt(rtt);
    EXPECT_EQ(result.rttMin(), 10.0F);
    EXPECT_EQ(result.rttAvg(), 20.0F);
    EXPECT_EQ(result.rttMax(), 30.0F);
    result.updateRtt(0.0F);
    EXPECT_EQ(result.rttMin(), 0.0F);
    EXPECT_EQ(result.rttAvg(), 10.0F);
}

TEST(PingResult, DescribesEveryStatus)
{
    EXPECT_EQ(K7PingResult::statusDescription(0), L"Unknown Status");
    EXPECT_EQ(K7PingResult::statusDescription(1), L"Error (packet-loss or bad checksum or duplicates)");
    EXPECT_EQ(K7PingResult::statusDescription(2), L"Bad (packet round-trip avg >= 300 ms)");
    EXPECT_EQ(K7PingResult::statusDescription(3), L"Normal (packet round-trip avg < 300 ms)");
    EXPECT_EQ(K7PingResult::statusDescription(4), L"Good (packet round-trip avg < 100 ms)");
    EXPECT_EQ(K7PingResult::statusDescription(5), L"Great (packet round-trip avg < 50 ms)");
    EXPECT_EQ(K7PingResult::statusDescription(6), L"Unknown Status");
    EXPECT_EQ(K7PingResult::statusDescription(0xFFFFFFFF), L"Unknown Status");
}

TEST(PingResult, PrintsItsFieldsInOrder)
{
    EXPECT_EQ(full().toString(), L"7,192.168.0.1,4,1,2,3,4,5,4000000000,1.5,10.3,300.0");
    EXPECT_EQ(K7PingResult().toString(), L"-1,,0,0,0,0,0,0,0,-1.0,-1.0,-1.0");
}

TEST(PingResult, HasOneStreamFormForEver)
{
    EXPECT_EQ(streamFormOf(full()), "00000007"
                                    "04c0a8000100000000000000000000000000000000" // an IPv4 address and no IPv6 one
                                    "00000004"
                                    "000000010000000200000003"
                                    "0000000400000005ee6b2800"
                                    "3fc00000412428f643960000");
}

TEST(PingResult, ArchivesItsFieldsUnderTheirNumbers)
{
    K7PingResult result = full();
    result.setRttAvg(10.25F);
    J3JsonArchive address;
    target().address().archiveTo(&address);
    EXPECT_EQ(archiveFormOf(result), R"({"1":{"1":7,"2":)" + address.toJson() +
                                         R"(},"2":4,"3":1,"4":2,"5":3,"6":4,"7":5,"8":4000000000,)"
                                         R"("9":1.5,"10":10.25,"11":300.0})");
}

TEST(PingResult, SurvivesItsFormsWholeAndCut)
{
    expectSurvivesItsForms(target(), K7PingTarget());
    expectSurvivesItsForms(full(), counted(9, 9));
    expectSurvivesItsForms(K7PingResult(), full());
}

TEST(PingResult, RefusesAnArchiveWithAnItemMissing)
{
    J3JsonArchive archive;
    const K7PingResult before = counted(9, 9);
    const auto expectRefused = [&](int items) {
        K7PingResult result = before;
        EXPECT_THROW(result.unarchiveFrom(&archive), J3RangeException) << items << " items";
        EXPECT_EQ(result, before) << items << " items";
    };
    expectRefused(0);
    archive.writeObject(1, target(), L"");
    expectRefused(1);
    archive.writeInt32(2, 4, L"");
    for (uint8 number = 3; number <= 8; ++number) {
        expectRefused(number - 1);
        archive.writeUint32(number, number, L"");
    }
    for (uint8 number = 9; number <= 11; ++number) {
        expectRefused(number - 1);
        archive.writeFloat32(number, 1.0F, L"");
    }
    K7PingResult result;
    EXPECT_NO_THROW(result.unarchiveFrom(&archive));
    EXPECT_EQ(result.packetLoss(), 8U);
}

TEST(PingResult, RestoresAStatusThatItDoesNotKnow)
{
    K7PingResult result;
    result.setStatus(static_cast<K7PingStatus>(-2147483647 - 1));
    expectSurvivesItsForms(result, K7PingResult());
    EXPECT_EQ(K7PingResult::statusDescription(static_cast<uint32>(result.status())), L"Unknown Status");
}

TEST(PingResult, CopiesComparesAndClears)
{
    const K7PingResult original = full();
    K7PingResult copy;
    copy.copyFrom(original);
    EXPECT_EQ(copy, original);
    EXPECT_EQ(*std::unique_ptr<K7PingResult>(original.clone()), original);
    EXPECT_EQ(*std::unique_ptr<K7PingTarget>(target().clone()), target());
    copy.increaseReceived();
    EXPECT_NE(copy, original);
    copy.makeInvalid();
    EXPECT_EQ(copy, K7PingResult());
    EXPECT_NE(target(), K7PingTarget());
}
