// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a network quality test found out about a target: grading, times, text, and stored forms with the target in them.
#include "OS/Network/Testing/K7PingResult.h"

#include "support/RecordForms.h"

using namespace Kivo;

namespace {

K7PingResult counted(uint32 transmitted, uint32 received, uint32 packetLoss, float32 rttAvg, uint32 sysError = 0,
                     uint32 chksumErr = 0, uint32 duplicates = 0)
{
    K7PingResult result;
    result.setTransmitted(transmitted);
    result.setReceived(received);
    result.setPacketLoss(packetLoss);
    result.setRttAvg(rttAvg);
    result.setSysError(sysError);
    result.setChksumErr(chksumErr);
    result.setDuplicates(duplicates);
    return result;
}

} // namespace

TEST(K7PingResult, GradesByErrorsFirstAndThenByTheAverage)
{
    const struct {
        K7PingResult result;
        uint32 sysError, loss;
        K7PingStatus status;
    } cases[] = {
        {counted(5, 5, 0, 300.0F), 0, 0, K7_PING_STATUS_BAD},
        {counted(5, 5, 0, 299.9999F), 0, 0, K7_PING_STATUS_NORMAL},
        {counted(5, 5, 0, 100.0F), 0, 0, K7_PING_STATUS_NORMAL},
        {counted(5, 5, 0, 99.99999F), 0, 0, K7_PING_STATUS_GOOD},
        {counted(5, 5, 0, 50.0F), 0, 0, K7_PING_STATUS_GOOD},
        {counted(5, 5, 0, 49.99999F), 0, 0, K7_PING_STATUS_GREAT},
        {counted(5, 5, 0, 10.0F, 1), 1, 0, K7_PING_STATUS_WORSE},
        {counted(5, 5, 0, 10.0F, 0, 1), 0, 0, K7_PING_STATUS_WORSE},
        {counted(5, 5, 0, 10.0F, 0, 0, 1), 0, 0, K7_PING_STATUS_WORSE},
        {counted(3, 1, 0, 10.0F), 2, 0, K7_PING_STATUS_WORSE}, // not all sent: losses are not looked at
        {counted(5, 4, 0, 10.0F), 0, 1, K7_PING_STATUS_WORSE}, // one went without a trace
        {counted(5, 2, 1, 10.0F), 0, 3, K7_PING_STATUS_WORSE}, // the counted loss is replaced, not added to
        {counted(5, 6, 0, 10.0F), 0, 0, K7_PING_STATUS_GREAT}, // more replies than echoes
        {counted(6, 0, 0, -1.0F), 0, 0, K7_PING_STATUS_GREAT}, // more sent than asked for: counts as they are
        {counted(5, 4, UINT32_MAX, 10.0F), 0, UINT32_MAX, K7_PING_STATUS_WORSE}, // a sum that does not wrap
    };
    for (auto [result, sysError, loss, status] : cases) {
        const std::string counts = result.toString().to_string();
        result.analyze(5);
        EXPECT_EQ(result.sysError(), sysError) << counts;
        EXPECT_EQ(result.packetLoss(), loss) << counts;
        EXPECT_EQ(result.status(), status) << counts;
    }
}

TEST(K7PingResult, KeepsMinimumRunningMeanAndMaximum)
{
    K7PingResult result;
    for (const float32 rtt : {10.0F, 30.0F, 20.0F, 0.0F})
        result.updateRtt(rtt);
    EXPECT_EQ(result.toString(), L"-1,,0,0,0,0,0,0,0,0.0,10.0,30.0");
    EXPECT_EQ(K7PingResult::statusDescription(6), L"Unknown Status");
}

TEST(K7PingResult, HasOneFormOfEachKindForEver)
{
    const K7InetAddress address(K7IPv4Address(0xC0A80001));
    K7PingTarget target;
    target.setAddress(address);
    target.setChannel(7);
    K7PingResult result = counted(2, 3, 4000000000U, 10.25F, 1, 5, 4);
    result.setTarget(target);
    result.setStatus(K7_PING_STATUS_GOOD);
    result.setRttMin(1.5F);
    result.setRttMax(300);
    J3JsonArchive archive;
    address.archiveTo(&archive);
    const std::string json = R"({"1":{"1":7,"2":)" + archive.toJson() +
                             R"(},"2":4,"3":1,"4":2,"5":3,"6":4,"7":5,"8":4000000000,"9":1.5,"10":10.25,"11":300.0})";
    const std::vector<uint8> bytes = {0, 0, 0, 7, 4, 192, 168, 0,  1, 0,  0,   0, 0, 0,  0,  0, 0, 0,  0,   0, 0, 0,
                                      0, 0, 0, 0, 0, 0,   4,   0,  0, 0,  1,   0, 0, 0,  2,  0, 0, 0,  3,   0, 0, 0,
                                      4, 0, 0, 0, 5, 238, 107, 40, 0, 63, 192, 0, 0, 65, 36, 0, 0, 67, 150, 0, 0};
    K7Test::expectForms(result, bytes, json);
    EXPECT_EQ(result.toString(), L"7,192.168.0.1,4,1,2,3,4,5,4000000000,1.5,10.2,300.0");
    result.makeInvalid();
    EXPECT_EQ(result.toString(), L"-1,,0,0,0,0,0,0,0,-1.0,-1.0,-1.0");
}
