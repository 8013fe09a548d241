// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A small host: runs the library's commands, listens to a ping test, traces frames and polls its sensors.
#include "Foundation/J3Thread.h"
#include "OS/Network/Testing/K7Pinger.h"
#include "OS/System/K7SystemUtil.h"
#include "Sensor/K7Sensor.h"
#include "VideoClient/K7FrameTracer.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <thread>

using namespace Kivo;
using namespace std::chrono_literals;
using Shell = K7SystemUtil::Shell;

namespace {

/// The host's runner: a recorder would hand the command to a helper process that it forked early.
int32 runCommand(const char* command, Shell::CoutListener* listener)
{
    std::FILE* const output = popen(command, "re");
    if (!output)
        return -1;
    char line[256];
    while (std::fgets(line, sizeof line, output))
        if (listener)
            listener->resultChanged(line, 0);
    return Shell::exitCodeOf(pclose(output));
}

class OutputPrinter : public Shell::CoutListener {
public:
    int32 channel() override { return _channel; }

    void setChannel(int32 channel) override { _channel = channel; }

    void resultChanged(const char* text, int32) override { std::cout << "command: " << text; }

private:
    int32 _channel = 0;
};

class PingPrinter final : public K7PingerListener {
public:
    bool isActive() override { return true; }

    void onPingBegin() override { std::cout << "ping: begins" << std::endl; }

    void onPingResult(const J3Time&, const K7PingResult& result) override
    {
        std::cout << "ping: " << result.toString().to_string() << std::endl;
    }

    void onPingStopped() override {}

    void onPingEnd() override {}
};

/// Gives an event when less than a part of the memory is free.
class MemorySensor : public K7Sensor {
public:
    MemorySensor(uint32 id, uint64 part) : K7Sensor(1, id), _part(part) {}

    bool isEnable() const override { return true; }

    K7Event check() override
    {
        K7SystemUtil::Memory::refresh();
        const bool low = K7SystemUtil::Memory::getMemFree() < K7SystemUtil::Memory::getMemTotal() / _part;
        return K7Event(low ? 1 : 0, id());
    }

    void reset() override {}

private:
    uint64 _part;
};

/// Two and a half seconds of a camera's first stream: 25 frames a second, a key frame every second.
void traceCamera()
{
    setTraceIpsInfo(true);
    toggleUseStatistics();
    J3Frame frame;
    frame.setResolution({1920, 1080});
    auto due = std::chrono::steady_clock::now();
    for (int number = 0; number < 63; ++number, due += 40ms) {
        std::this_thread::sleep_until(due);
        const bool isKey = number % 25 == 0;
        frame.setType(isKey ? 0 : 1);
        frame.setDataSize(isKey ? 60'000 : 18'000);
        frame.setLocalTime(J3Time::from_time_t(std::time(nullptr)));
        const bool hasNewRates = traceFrame(frame, 1, 0);
        traceRecordFrame(frame, 0, nullptr);
        if (!hasNewRates)
            continue;
        J3String ips;
        J3String bps;
        getIpsResolutionBpsString(0, &ips, &bps);
        std::cout << "frames: " << ips.to_string() << " " << bps.to_string() << std::endl;
    }
    J3String record;
    handleStatisticsJson("/statistics/record.json", &record);
    std::cout << "record: " << record.to_string() << std::endl;
    cleanupFrameTracer();
}

void pollSensors()
{
    MemorySensor scarce(1, 20);
    MemorySensor any(2, 1); // is never satisfied
    scarce.setNextSensor(&any);
    for (K7Sensor* sensor = &scarce; sensor; sensor = sensor->nextSensor()) {
        const K7Event event = sensor->check();
        std::cout << "sensor " << sensor->id() << ": "
                  << (event.hasEvent() ? event.toString().to_string() : "nothing to tell") << std::endl;
    }
}

} // namespace

int main()
{
    Shell::setImplFunction0(runCommand);
    OutputPrinter printer;
    const int32 exitCode = Shell::runCommandEx("uname -sr", &printer);
    std::cout << "command: gave " << exitCode << std::endl;

    PingPrinter pingPrinter;
    K7Pinger pinger;
    pinger.setTestCount(1);
    pinger.addListener(&pingPrinter);
    K7InetAddress loopback;
    loopback.fromString("127.0.0.1");
    pinger.addTarget(1, loopback);
    pinger.init("lo");
    pinger.start();

    traceCamera();
    pollSensors();

    pinger.finish();
    while (pinger.runState() != K7_STATE_IDLE)
        J3Thread::sleep(10);
    if (const auto failure = pinger.testFailure(); !failure.operation.isEmpty())
        std::cout << "ping: could not be had: " << failure.reason.to_string() << ": "
                  << std::strerror(failure.errorCode) << std::endl;
    pinger.cleanup();
    Shell::setImplFunction0(nullptr);
}
