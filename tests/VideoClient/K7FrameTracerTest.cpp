// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The tracer and its switches; cases of the process's one tracer leave both groups off.
#include "VideoClient/K7FrameTracer.h"

#include "VideoClient/FrameMaker.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Kivo;
using K7Test::makeFrame;

namespace {

nlohmann::json recordOf(const K7FrameTracer& tracer)
{
    J3String text;
    tracer.statistics().recordStatistcsToJson(&text);
    return nlohmann::json::parse(text.to_string());
}

} // namespace

TEST(K7FrameTracer, CountsTheFramesOfItsOneCameraWhileAGroupIsOn)
{
    K7FrameTracer tracer(7);
    EXPECT_EQ(tracer.MCP_OP_TIMER_VALUE, 7U);
    tracer.traceFrame(makeFrame(0, 0, 100), 1, 0);
    tracer.traceRecordFrame(makeFrame(0, 0, 100), 1, nullptr);
    EXPECT_TRUE(tracer.toggleUseStatistics());
    for (const int32 channel : {0, 1, -2, 256})
        tracer.traceFrame(makeFrame(channel, 0, 100), 3, 4);
    tracer.traceFrame(makeFrame(-1, 0, 100), 3, 4); // the alternative channel is 0
    tracer.traceRecordFrame(makeFrame(0, 0, 100), 1, nullptr);
    tracer.traceRecordFrame(makeFrame(1, 0, 100), 1, nullptr);
    EXPECT_EQ(recordOf(tracer)["Mode"], nlohmann::json::parse("[[0,0,2,0]]"));
    EXPECT_EQ(recordOf(tracer)["Enqueue"][0][4], 2);
    EXPECT_EQ(recordOf(tracer)["Dispatch"][0][1], 1);
    tracer.setTraceIpsInfo(true);
    EXPECT_FALSE(tracer.toggleUseStatistics());
    tracer.traceFrame(makeFrame(0, 0, 100), 3, 4);
    tracer.traceRecordFrame(makeFrame(0, 0, 100), 1, nullptr);
    EXPECT_EQ(recordOf(tracer)["Mode"][0][2], 2) << "the statistics are off";
    EXPECT_EQ(recordOf(tracer)["Dispatch"][0][1], 1);
    EXPECT_FALSE(tracer.toggleTraceIpsInfo());
    EXPECT_TRUE(tracer.toggleTraceIpsInfo());
    EXPECT_TRUE(tracer.isTraceIpsInfoOn());
    tracer.cleanup();
    EXPECT_FALSE(tracer.isTraceIpsInfoOn());
    EXPECT_FALSE(tracer.isStatisticsOn());
}

TEST(K7FrameTracer, IsOneForTheProcessAndAnswersItsPathAlone)
{
    initFrameTracer(3);
    EXPECT_FALSE(traceFrame(makeFrame(0, 0, 1), 1, 0)) << "both groups begin off";
    EXPECT_TRUE(toggleUseStatistics());
    traceFrame(makeFrame(0, 0, 1), 3, 5);
    traceRecordFrame(makeFrame(0, 0, 1), 2, nullptr);
    J3String out = L"as it was";
    for (const char* path : {"/statistics/record.json/", "statistics/record.json", "/statistics/record.jso", ""})
        EXPECT_FALSE(handleStatisticsJson(path, &out)) << path;
    EXPECT_EQ(out, L"as it was");
    const auto before = static_cast<uint32>(std::time(nullptr));
    EXPECT_TRUE(handleStatisticsJson(L"/statistics/record.json", &out));
    const auto record = nlohmann::json::parse(out.to_string());
    EXPECT_NEAR(record["NcTime"].get<uint32>(), before, 2);
    EXPECT_EQ(record["StartTime"].get<std::string>().size(), std::string("2026-11-21 19:00:00").size());
    J3String expected;
    expected.format(L"{\"StartTime\":\"%s\", \"NcTime\":%u, \"Mode\":[[0,0,1,0]], "
                    L"\"Enqueue\":[[0,0,0,0,0,1,0,0,0,0,0]], \"Dispatch\":[[0,0,1,0,0,0,0,0]]}",
                    record["StartTime"].get<std::string>().c_str(), record["NcTime"].get<uint32>());
    EXPECT_EQ(out, expected);

    setTraceIpsInfo(true);
    EXPECT_FALSE(toggleTraceIpsInfo());
    J3String ips;
    J3String bps;
    getIpsResolutionBpsString(0, &ips, &bps);
    EXPECT_EQ(ips + bps, L"[0 / 0 / 0 / 0] ips[0.0 / 0.0 / 0.0 / 0.0] Mbps");
    cleanupFrameTracer();
    EXPECT_FALSE(isStatisticsOn());
}
