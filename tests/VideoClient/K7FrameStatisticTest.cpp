// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is counted where, when slots end, and how it reads.
#include "VideoClient/K7FrameStatistic.h"

#include "support/AssertReports.h"

#include "VideoClient/FrameMaker.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <thread>

using namespace Kivo;
using namespace K7Test;
using Json = nlohmann::json;

namespace {

constexpr uint32 IPS = K7FrameStatistic::IPS_GROUP;
constexpr uint32 STATISTICS = K7FrameStatistic::STATISTICS_GROUP;

K7FrameInfo makeInfo(int32 channel, uint8 type, uint8 mode, uint32 bytes = 0)
{
    return K7FrameInfo(makeFrame(channel, type, bytes), mode == 255 ? 0 : mode + 1);
}

std::string ipsOf(const K7FrameStatistic& statistic, uint32 channel = 0)
{
    J3String ips;
    J3String bps;
    statistic.getIpsResolutionBpsString(channel, &ips, &bps);
    return ips.to_string();
}

std::string bpsOf(const K7FrameStatistic& statistic)
{
    J3String ips;
    J3String bps;
    statistic.getIpsResolutionBpsString(0, &ips, &bps);
    return bps.to_string();
}

Json recordOf(const K7FrameStatistic& statistic)
{
    J3String text;
    EXPECT_TRUE(statistic.recordStatistcsToJson(&text));
    return Json::parse(text.to_string());
}

Json enqueued(uint32 index, int count)
{
    Json counts = Json::array({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    counts[index] = count;
    return Json::array({counts});
}

/// Writes the first rate and the width of the frame that was last in mode 1.
class WidthFormatter : public K7IPSFormatter {
public:
    void setLastVideoFrames(const K7FrameInfo* frames) override { _last.assign(frames, frames + 4); }

    void formatString(const Values& values, J3String* out) override
    {
        out->format(L"%.1f at %u x %u", values[1], _last[1].width(), _last[1].height());
    }

private:
    std::vector<K7FrameInfo> _last;
};

} // namespace

TEST(K7FrameStatistic, ReadsTrueRatesInEveryCompleteSlot)
{
    const uint32 resolution = J3TickUtil::resolution();
    for (const uint32 rate : {25U, 30U, 60U}) {
        K7FrameStatistic statistic(1);
        statistic.start(IPS, 0);
        uint32 idle = 0;
        int slots = 0;
        for (uint32 frame = 0; slots < 20; ++frame) {
            if (frame == 10 * rate)
                idle = 10'000;
            const uint32 now = frame * 1000 / rate + frame % 3 + idle; // frames are up to two ticks late
            if (!statistic.addToModeEnqueueCounter(makeInfo(0, 0, 0, 262'144 / rate), 0, now - now % resolution))
                continue;
            ++slots;
            const int read = std::stoi(ipsOf(statistic).substr(1));
            if (frame == 10 * rate) { // the slot with the idle seconds in it
                EXPECT_LE(read, static_cast<int>(rate / 10));
                continue;
            }
            EXPECT_NEAR(read, rate, rate == 25 ? 0 : 1) << "slot " << slots;
            EXPECT_EQ(bpsOf(statistic), "[2.0 / 0.0 / 0.0 / 0.0] Mbps") << rate << ", slot " << slots;
        }
    }
}

TEST(K7FrameStatistic, CountsEachGroupByItsOwnRules)
{
    K7FrameStatistic statistic(2);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 0), 0, 0);
    statistic.addToDispatchCounter(makeFrame(0, 0, 0), 0, 0);
    EXPECT_EQ(recordOf(statistic)["StartTime"], "") << "nothing was started";

    statistic.start(IPS | STATISTICS, 0);
    EXPECT_EQ(recordOf(statistic)["Mode"], Json::parse("[[0,0,0,0],[0,0,0,0]]")) << "counted while off";
    for (const uint8 mode : {0, 1, 2, 2, 3})
        statistic.addToModeEnqueueCounter(makeInfo(1, 0, mode, 131'072), 10, 500);
    statistic.addToModeEnqueueCounter(makeInfo(1, 2, 1, 131'072), 10, 500);
    statistic.addToDispatchCounter(makeFrame(1, 0, 0), 7, 500);
    const Json record = recordOf(statistic);
    EXPECT_EQ(record["Mode"], Json::parse("[[0,0,0,0],[1,2,2,0]]")) << "type 2 counts, mode 3 does not";
    EXPECT_EQ(record["Enqueue"][1], enqueued(10, 2)[0]) << "mode 2 alone";
    EXPECT_EQ(record["Dispatch"][1], Json::parse("[0,0,0,0,0,0,0,1]"));
    EXPECT_EQ(ipsOf(statistic, 1), "[0 / 0 / 0 / 0] ips") << "no slot is complete";
    EXPECT_TRUE(statistic.addToModeEnqueueCounter(makeInfo(0, 2, 0), 0, 2000));
    EXPECT_EQ(ipsOf(statistic, 1), "[0 / 0 / 1 / 0] ips") << "mode 3 counts, type 2 does not: 0.5, 0.5, 1, 0.5";
    EXPECT_EQ(ipsOf(statistic, 0), "[0 / 0 / 0 / 0] ips");
}

TEST(K7FrameStatistic, KeepsWhatAStoppedGroupCountedUntilItStartsAgain)
{
    K7FrameStatistic statistic(1);
    statistic.start(STATISTICS, 0);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 2), 3, 0);
    statistic.stop(STATISTICS);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 2), 3, 9000);
    EXPECT_EQ(recordOf(statistic)["Enqueue"], enqueued(3, 1));
    statistic.start(STATISTICS, 9000);
    EXPECT_EQ(recordOf(statistic)["Enqueue"], enqueued(3, 0));
}

TEST(K7FrameStatistic, BeginsANewSlotOfStatisticsAfter5120Ticks)
{
    K7FrameStatistic statistic(1);
    statistic.start(STATISTICS, 0);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 0), 0, 0);
    EXPECT_FALSE(statistic.addToModeEnqueueCounter(makeInfo(0, 0, 0), 0, 5120)) << "the rates are off";
    statistic.addToDispatchCounter(makeFrame(0, 0, 0), 1, 5120);
    EXPECT_EQ(recordOf(statistic)["Mode"][0][0], 2);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 0), 0, 5121);
    EXPECT_EQ(recordOf(statistic)["Mode"][0][0], 1);
    EXPECT_EQ(recordOf(statistic)["Dispatch"][0][1], 1) << "the ring of dispatched frames goes by its own frames";
    statistic.addToDispatchCounter(makeFrame(0, 0, 0), 2, 5121);
    EXPECT_EQ(recordOf(statistic)["Dispatch"][0][1], 0);
}

TEST(K7FrameStatistic, ReportsWhatIsOutOfBoundsAndCountsItNowhere)
{
    K7FrameStatistic statistic(1);
    statistic.start(IPS | STATISTICS, 0);
    AssertReports reports;
    statistic.addToModeEnqueueCounter(makeInfo(1, 0, 0), 0, 0);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 255), 0, 0);
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 2), 11, 0);
    statistic.addToDispatchCounter(makeFrame(-2, 0, 0), 0, 0);
    statistic.addToDispatchCounter(makeFrame(256, 0, 0), 0, 0);
    statistic.addToDispatchCounter(makeFrame(0, 0, 0), 8, 0);
    J3String text = L"as it was";
    statistic.getIpsResolutionBpsString(1, &text, &text);
    EXPECT_EQ(text, L"as it was");
    const std::string enqueue = "VideoClient/K7FrameStatistic, addToModeEnqueueCounter: ";
    const std::string dispatch = "VideoClient/K7FrameStatistic, addToDispatchCounter: ";
    EXPECT_EQ(reports.texts,
              (std::vector{
                  enqueue + "channel is out of range!", enqueue + "mode is out of range!",
                  enqueue + "enqueueIndex is out of range!", dispatch + "channel is out of range!",
                  dispatch + "channel is out of range!", dispatch + "dispatchIndex is out of range!",
                  std::string("VideoClient/K7FrameStatistic, getIpsResolutionBpsString: channel is out of range!")}));
    reports.texts.clear();
    statistic.addToModeEnqueueCounter(makeInfo(0, 0, 0), 11, 0);
    EXPECT_EQ(reports.texts.size(), 0U) << "the outcome counts in mode 2 alone";
    EXPECT_EQ(recordOf(statistic)["Mode"], Json::parse("[[1,0,0,0]]"));
    EXPECT_EQ(recordOf(statistic)["Dispatch"], Json::parse("[[0,0,0,0,0,0,0,0]]"));
    statistic.addToModeEnqueueCounter(makeInfo(0, 2, 3), 0, 1001);
    EXPECT_EQ(ipsOf(statistic), "[1 / 0 / 0 / 0] ips") << "in mode 0, and in no other";
}

TEST(K7FrameStatistic, LetsFormattersWriteTheRates)
{
    K7FrameStatistic statistic(1);
    WidthFormatter ipsFormatter;
    K7BPSFormatter silent;
    statistic.start(IPS, 0);
    J3Frame frame = makeFrame(0, 1, 1000);
    frame.setResolution({1920, 1080});
    for (const uint32 now : {250, 500, 750, 1250})
        statistic.addToModeEnqueueCounter(K7FrameInfo(frame, 2), 0, now);
    statistic.setIpsBpsStringFormatter(&ipsFormatter, &silent);
    J3String ips;
    J3String bps = L"as it was";
    statistic.getIpsResolutionBpsString(0, &ips, &bps);
    EXPECT_EQ(ips, L"2.4 at 1920 x 1080");
    EXPECT_EQ(bps, L"as it was");
    statistic.setIpsBpsStringFormatter(nullptr, nullptr);
    EXPECT_EQ(bpsOf(statistic), "[0.0 / 0.0 / 0.0 / 0.0] Mbps");
}

TEST(K7FrameStatistic, GivesReadersBesideTheFramesWholeValues)
{
    /// Notes frames whose fields are not of one frame.
    struct Checker : K7IPSFormatter {
        void setLastVideoFrames(const K7FrameInfo* frames) override
        {
            const uint32 size = frames[0].dataSize();
            torn += frames[0].spot().offset != size || (size && frames[0].localTime().to_time_t() != size);
        }
        int torn = 0;
    } checker;
    K7FrameStatistic statistic(1);
    statistic.start(IPS | STATISTICS, 0);
    statistic.setIpsBpsStringFormatter(&checker, nullptr);
    std::atomic<bool> done = false;
    const std::jthread writer([&] {
        for (uint32 i = 1; i <= 100'000; ++i) {
            J3Frame frame = makeFrame(0, 0, i);
            frame.setSpot({0, i});
            frame.setLocalTime(J3Time::from_time_t(i));
            statistic.addToModeEnqueueCounter(K7FrameInfo(frame, 1), 0, i * 40);
            statistic.addToDispatchCounter(frame, 0, i * 40);
        }
        done = true;
    });
    while (!done) {
        ipsOf(statistic);
        ASSERT_LE(recordOf(statistic)["Mode"][0][0], 129);
        statistic.stop(STATISTICS);
        statistic.start(STATISTICS, 0);
    }
    EXPECT_EQ(checker.torn, 0);
}
