// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The pinger against hosts that the test plays: what goes out, what is counted, who is told, and how it ends.
#include "support/PingHarness.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Foundation/J3Assert.h"
#include "OS/Network/Testing/K7Pinger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include <linux/capability.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using namespace std::chrono_literals;

namespace {

/// One 16-bit field of the ICMP message in a request, in the sender's byte order.
uint16 field(const Packet& request, std::size_t offset)
{
    uint16 value;
    std::memcpy(&value, &request[20 + offset], sizeof(value));
    return value;
}

std::vector<uint16> sequenceNumbers(const TunResponder& network)
{
    std::vector<uint16> numbers;
    for (const Packet& request : network.requests())
        numbers.push_back(field(request, 6));
    return numbers;
}

class Pinger : public testing::Test {
protected:
    void SetUp() override
    {
        K7_REQUIRE_SANDBOX();
        _network.emplace();
        if (!_network->isUp())
            GTEST_SKIP() << "no tun device: " << std::strerror(errno);
    }

    TunResponder& network() { return *_network; }

    Recorder recorder;

private:
    std::optional<TunResponder> _network;
};

} // namespace

TEST(PingTime, IsTheDifferenceInMillisecondsAndNeverNegative)
{
    const struct {
        timeval sent, received;
        float32 milliseconds;
    } cases[] = {
        {{10, 0}, {10, 1500}, 1.5F}, {{10, 999'999}, {11, 0}, 0.001F}, {{10, 0}, {22, 0}, 12000.0F},
        {{10, 5}, {10, 5}, 0.0F},    {{10, 6}, {10, 5}, 0.0F},         {{11, 0}, {10, 999'999}, 0.0F},
    };

    for (const auto& test : cases)
        EXPECT_FLOAT_EQ(calcRoundTripTime(test.sent, test.received), test.milliseconds);
}

TEST_F(Pinger, GradesTargetsByTheirDelayInTheOrderOfTheirTexts)
{
    const struct {
        int host;
        std::chrono::milliseconds delay;
        K7PingStatus status;
    } cases[] = {{10, 10ms, K7_PING_STATUS_GREAT},
                 {2, 60ms, K7_PING_STATUS_GOOD},
                 {3, 150ms, K7_PING_STATUS_NORMAL},
                 {4, 400ms, K7_PING_STATUS_BAD}};

    K7PingTiming timing = QUICK;
    timing.window = 600;
    QuickPinger pinger(timing);
    pinger.addListener(&recorder);
    pinger.setTestCount(2);
    for (const auto& test : cases) {
        network().answer(host(test.host), {.delay = test.delay});
        addTarget(pinger, host(test.host), test.host);
    }
    EXPECT_EQ(runTest(pinger, recorder), (Events{"begin", host(10), host(2), host(3), host(4), "stopped", "end"}));
    for (const auto& test : cases) {
        const K7PingResult result = recorder.result(host(test.host));
        const auto delay = static_cast<float32>(test.delay.count());
        EXPECT_EQ(result.status(), test.status) << result.toString().to_string();
        EXPECT_EQ(result.target().channel(), test.host);
        EXPECT_EQ(result.received(), 2U);
        EXPECT_GE(result.rttMin(), delay);
        EXPECT_LT(result.rttMin(), delay + 40);
        EXPECT_LE(result.rttMin(), result.rttAvg());
        EXPECT_LE(result.rttAvg(), result.rttMax());
    }
    EXPECT_TRUE(pinger.testFailure().operation.isEmpty());
}

TEST_F(Pinger, CountsWhatBecomesOfEveryEcho)
{
    const struct {
        Answer answer;
        uint32 received, chksumErr, packetLoss;
        K7PingStatus status;
    } cases[] = {
        {{}, 2, 0, 0, K7_PING_STATUS_GREAT},
        {{.kind = Answer::NOTHING}, 0, 0, 2, K7_PING_STATUS_WORSE},
        {{.copies = 2}, 4, 0, 0, K7_PING_STATUS_GREAT},
        {{.kind = Answer::CORRUPT}, 2, 0, 0, K7_PING_STATUS_GREAT},
        {{.kind = Answer::FLAGGED}, 2, 2, 0, K7_PING_STATUS_WORSE},
        {{.kind = Answer::UNREACHABLE}, 0, 0, 2, K7_PING_STATUS_WORSE},
        {{.kind = Answer::UNREACHABLE, .from = "10.77.0.254"}, 0, 0, 2, K7_PING_STATUS_WORSE},
        {{.kind = Answer::OPTIONS}, 2, 0, 0, K7_PING_STATUS_GREAT},
        {{.from = "10.77.0.253"}, 0, 0, 2, K7_PING_STATUS_WORSE},
    };

    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(2);
    for (int i = 0; const auto& test : cases) {
        network().answer(host(++i + 1), test.answer);
        addTarget(pinger, host(i + 1));
    }
    runTest(pinger, recorder);
    for (int i = 0; const auto& test : cases) {
        const K7PingResult result = recorder.result(host(++i + 1));
        SCOPED_TRACE(result.toString().to_string());
        EXPECT_EQ(result.transmitted(), 2U);
        EXPECT_EQ(result.received(), test.received);
        EXPECT_EQ(result.chksumErr(), test.chksumErr);
        EXPECT_EQ(result.packetLoss(), test.packetLoss);
        EXPECT_EQ(result.status(), test.status);
        // What is taken for the time sent lies decades back behind options.
        if (test.answer.kind == Answer::OPTIONS) {
            EXPECT_EQ(result.rttMax(), 10.0F);
        }
    }
    const K7PingResult stranger = recorder.result("");
    EXPECT_EQ(stranger.received(), 2U);
    EXPECT_EQ(stranger.sysError(), 2U);
    EXPECT_EQ(stranger.status(), K7_PING_STATUS_WORSE);
}

TEST_F(Pinger, TakesItsOwnEchoOnLoopbackForAReply)
{
    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(3);
    addTarget(pinger, "127.0.0.1");
    runTest(pinger, recorder, "lo");
    EXPECT_EQ(recorder.result("127.0.0.1").received(), 6U);
    EXPECT_EQ(recorder.result("127.0.0.1").status(), K7_PING_STATUS_GREAT);
}

TEST_F(Pinger, SendsMessagesOf1024Bytes)
{
    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(2);
    addTarget(pinger, host(2));
    addTarget(pinger, host(3));
    const std::time_t before = std::time(nullptr);
    EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
    const auto identifier = static_cast<uint16>(pinger.threadId());
    runTest(pinger, recorder);
    ASSERT_EQ(network().requests().size(), 4U);
    for (const Packet& request : network().requests()) {
        ASSERT_EQ(request.size(), 20U + 1024U);
        const Packet icmp(request.begin() + 20, request.end());
        EXPECT_EQ(icmp[0], 8);
        EXPECT_EQ(icmp[1], 0);
        EXPECT_EQ(networkChecksum(icmp.data(), icmp.size()), 0);
        EXPECT_EQ(field(request, 4), identifier);
        uint32 times[2];
        std::memcpy(times, &icmp[8], sizeof(times));
        EXPECT_GE(times[0], before);
        EXPECT_LE(times[0], before + 10);
        EXPECT_LT(times[1], 1'000'000U);
        EXPECT_TRUE(std::all_of(icmp.begin() + 16, icmp.end(), [](uint8 byte) { return byte == 0xAA; }));
    }
}

TEST_F(Pinger, NumbersEchoesOverTargetsRoundsAndTestsAndLeavesOutZero)
{
    QuickPinger pinger(QUICK, 65532);
    pinger.addListener(&recorder);
    pinger.setTestCount(2);
    for (int i = 2; i < 5; ++i)
        addTarget(pinger, host(i));
    runTest(pinger, recorder);
    runTest(pinger, recorder);
    EXPECT_EQ(sequenceNumbers(network()), (std::vector<uint16>{65532, 65533, 65534, 65535, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(Pinger, RunsWithoutTargetsAndWithoutRounds)
{
    QuickPinger pinger;
    pinger.addListener(&recorder);
    EXPECT_EQ(runTest(pinger, recorder), (Events{"begin", "stopped", "end"}));
    addTarget(pinger, host(2));
    pinger.setTestCount(0);
    EXPECT_EQ(runTest(pinger, recorder), (Events{"begin", host(2), "stopped", "end"}));
    EXPECT_EQ(recorder.result(host(2)).status(), K7_PING_STATUS_GREAT);
    EXPECT_EQ(recorder.result(host(2)).transmitted(), 0U);
    pinger.clearAllTarget();
    EXPECT_EQ(runTest(pinger, recorder), (Events{"begin", "stopped", "end"}));
    EXPECT_TRUE(network().requests().empty());
}

TEST_F(Pinger, StartsOnlyFromIdleAndStopsFromEveryState)
{
    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(1);
    addTarget(pinger, host(2));
    pinger.stop();
    EXPECT_EQ(pinger.toString().to_string(), "{\"state\" : 0, \"listeners\" : 1}");
    EXPECT_TRUE(pinger.start());
    EXPECT_FALSE(pinger.start());
    EXPECT_EQ(pinger.toString().to_string(), "{\"state\" : 1, \"listeners\" : 1}");
    pinger.stop();
    EXPECT_EQ(pinger.toString().to_string(), "{\"state\" : 3, \"listeners\" : 1}");
    EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
    EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
    EXPECT_EQ(recorder.finish(pinger), (Events{"stopped", "end"})) << "stopped before it began";

    const std::map<std::string, Events> toldWhenStoppedIn = {
        {"begin", {"begin", "stopped", "end"}},
        {host(2), {"begin", host(2), "stopped", "end"}},
        {"stopped", {"begin", host(2), "stopped", "end"}},
        {"end", {"begin", host(2), "stopped", "end"}},
    };
    for (const auto& [state, told] : toldWhenStoppedIn) {
        recorder.onEvent = [&pinger, state = state](const std::string& event) {
            EXPECT_FALSE(pinger.start());
            if (event == state)
                pinger.stop();
        };
        EXPECT_EQ(runTest(pinger, recorder), told) << state;
    }
}

TEST_F(Pinger, FinishesItsRoundsAfterAStop)
{
    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(3);
    addTarget(pinger, host(2));
    EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
    EXPECT_TRUE(pinger.start());
    EXPECT_TRUE(network().waitForRequests(1));
    pinger.stop();
    EXPECT_EQ(recorder.finish(pinger), (Events{"begin", host(2), "stopped", "end"}));
    EXPECT_EQ(recorder.result(host(2)).received(), 3U);
}

TEST_F(Pinger, EndsARunningTestWithinASecond)
{
    const std::size_t descriptors = openDescriptors();
    {
        K7Pinger pinger;
        pinger.addListener(&recorder);
        addTarget(pinger, host(2));
        EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
        EXPECT_TRUE(pinger.start());
        EXPECT_TRUE(network().waitForRequests(1));
        const auto begin = std::chrono::steady_clock::now();
        pinger.cleanup();
        EXPECT_LT(millisecondsSince(begin), 1000);
        EXPECT_EQ(recorder.events(), Events{"begin"});
        EXPECT_EQ(openDescriptors(), descriptors);

        pinger.setTestCount(0);
        EXPECT_EQ(runTest(pinger, recorder), (Events{"begin", "begin", host(2), "stopped", "end"}));

        EXPECT_TRUE(pinger.start());
        std::this_thread::sleep_for(500ms); // before the first echo
    }
    EXPECT_EQ(recorder.events(), Events{"begin"});
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(Pinger, CanBeCleanedUpFromACallback)
{
    QuickPinger pinger;
    Recorder second;
    pinger.addListener(&recorder);
    pinger.addListener(&second);
    pinger.setTestCount(1);
    addTarget(pinger, host(2));
    for (const std::string state : {"begin", "10.77.0.2", "stopped", "end"}) {
        recorder.onEvent = [&](const std::string& event) {
            if (event == state)
                pinger.cleanup();
        };
        EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
        EXPECT_TRUE(pinger.start());
        while (recorder.events().empty() || recorder.events().back() != state)
            std::this_thread::sleep_for(1ms);
        recorder.onEvent = nullptr;
        recorder.takeEvents();
        second.takeEvents();
        runTest(pinger, recorder);
        EXPECT_EQ(second.events(), (Events{"begin", host(2), "stopped", "end"})) << state;
    }
}

namespace {

/// A listener that does something when a test begins.
class Guest final : public K7PingerListener {
public:
    Guest(std::string name, std::string* log, std::function<void()> atBegin = {})
        : _name(std::move(name)), _log(log), _atBegin(std::move(atBegin))
    {}

    bool active = true;

    bool isActive() override { return active; }

    void onPingBegin() override
    {
        *_log += _name;
        if (_atBegin)
            _atBegin();
    }

    void onPingResult(const J3Time&, const K7PingResult&) override {}

    void onPingStopped() override { *_log += _name; }

    void onPingEnd() override {}

private:
    std::string _name;
    std::string* _log;
    std::function<void()> _atBegin;
};

} // namespace

TEST_F(Pinger, LetsListenersChangeTheListAndThrow)
{
    const AssertionLog assertions;
    QuickPinger pinger;
    std::string log;
    Guest added("+", &log, [] { ADD_FAILURE() << "told of what it was not there for"; });
    Guest removed("-", &log, [] { ADD_FAILURE() << "told after its removal"; });
    Guest early("e", &log, [&] { pinger.delListener(&early); });
    Guest changing("c", &log, [&] {
        pinger.delListener(&changing);
        pinger.delListener(&removed);
        pinger.addListener(&added);
        pinger.addListener(&changing);
    });
    Guest throwing("t", &log, [] { throw std::runtime_error("guest"); });
    Guest silent("s", &log);
    silent.active = false;
    Guest last("l", &log, [&] { pinger.delListener(&throwing); });
    pinger.addListener(nullptr);
    for (Guest* guest : {&early, &changing, &throwing, &removed, &silent, &last, &last})
        pinger.addListener(guest);
    pinger.addListener(&recorder);
    recorder.onEvent = [&](const std::string& event) { log += event == "begin" ? "|" : ""; };
    runTest(pinger, recorder);
    EXPECT_EQ(log, "ectll|ll+c");
    EXPECT_TRUE(AssertionLog::messages().contains("guest"));
}

TEST_F(Pinger, GradesATestThatHasNoSocket)
{
    const std::size_t descriptors = openDescriptors();
    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(3);
    addTarget(pinger, host(2));
    for (const char* name : {"k7none0", "", "tun0-with-a-name-too-long"}) {
        EXPECT_EQ(runTest(pinger, recorder, name), (Events{"begin", host(2), "stopped", "end"}));
        const K7SystemUtil::Failure failure = pinger.testFailure();
        EXPECT_EQ(failure.operation, L"K7Pinger::createSocket");
        EXPECT_EQ(failure.reason, L"ioctl(SIOCGIFINDEX)");
        EXPECT_EQ(failure.errorCode, ENODEV);
        EXPECT_EQ(recorder.result(host(2)).sysError(), 3U);
        EXPECT_EQ(recorder.result(host(2)).status(), K7_PING_STATUS_WORSE);
        EXPECT_EQ(openDescriptors(), descriptors);
    }
    runTest(pinger, recorder);
    EXPECT_TRUE(pinger.testFailure().operation.isEmpty());
    EXPECT_EQ(recorder.result(host(2)).status(), K7_PING_STATUS_GREAT);
}

TEST_F(Pinger, SaysThatThePrivilegeIsMissing)
{
    const AssertionLog assertions;
    std::thread([this] {
        // A thread hands its capabilities on to the threads that it starts.
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct none[2]{};
        ASSERT_EQ(syscall(SYS_capset, &header, none), 0);
        QuickPinger pinger;
        pinger.addListener(&recorder);
        addTarget(pinger, host(2));
        EXPECT_EQ(runTest(pinger, recorder), (Events{"begin", host(2), "stopped", "end"}));
        EXPECT_EQ(pinger.testFailure().reason, L"SocketApiWrapper::createRawSocket");
        EXPECT_EQ(pinger.testFailure().errorCode, EPERM);
        EXPECT_EQ(recorder.result(host(2)).sysError(), 5U);
    }).join();
    EXPECT_EQ(AssertionLog::messages(), std::set<std::string>{"_socketFd is NOT opened!"});
}

TEST_F(Pinger, CountsTheEchoesItCannotSend)
{
    const std::size_t descriptors = openDescriptors();
    QuickPinger pinger;
    pinger.addListener(&recorder);
    pinger.setTestCount(2);
    for (const char* address : {"10.77.0.2", "fe80::1", "198.51.100.1", "10.77.0.3"})
        addTarget(pinger, address);
    runTest(pinger, recorder);
    EXPECT_EQ(pinger.testFailure().operation, L"K7Pinger::sendTo");
    EXPECT_EQ(pinger.testFailure().reason, L"SocketApiWrapper::sendTo");
    EXPECT_NE(pinger.testFailure().errorCode, 0);
    EXPECT_EQ(recorder.result("fe80::1").sysError(), 2U);
    EXPECT_EQ(recorder.result("198.51.100.1").transmitted(), 2U) << "bound to the interface, all is behind it";
    EXPECT_EQ(recorder.result(host(3)).status(), K7_PING_STATUS_GREAT);
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(Pinger, SurvivesAnInterfaceThatGoesDuringATest)
{
    QuickPinger pinger;
    pinger.addListener(&recorder);
    addTarget(pinger, host(2));
    addTarget(pinger, host(3));
    const std::size_t descriptors = openDescriptors();
    EXPECT_TRUE(pinger.init(TunResponder::INTERFACE));
    EXPECT_TRUE(pinger.start());
    EXPECT_TRUE(network().waitForRequests(2));
    network().vanish();
    EXPECT_EQ(recorder.finish(pinger), (Events{"begin", host(2), host(3), "stopped", "end"}));
    for (const int number : {2, 3}) {
        const K7PingResult result = recorder.result(host(number));
        EXPECT_GE(result.transmitted(), 1U);
        EXPECT_EQ(result.sysError(), 5U - result.transmitted());
        EXPECT_EQ(result.status(), K7_PING_STATUS_WORSE);
    }
    EXPECT_FALSE(pinger.testFailure().reason.isEmpty());
    EXPECT_EQ(openDescriptors(), descriptors - 1) << "the tun device's";
}

TEST_F(Pinger, LosesNoReplyOf500TargetsInAFlood)
{
    const int probe = ::socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMP);
    const int wanted = 2 << 20;
    int size = 0;
    socklen_t length = sizeof(size);
    if (::setsockopt(probe, SOL_SOCKET, SO_RCVBUFFORCE, &wanted, sizeof(wanted)) != 0)
        ::setsockopt(probe, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof(wanted));
    ::getsockopt(probe, SOL_SOCKET, SO_RCVBUF, &size, &length);
    ::close(probe);
    if (size < 2 * wanted)
        GTEST_SKIP() << "the kernel gives the sandbox no larger socket buffers";

    K7PingTiming timing = QUICK;
    timing.settle = timing.window = 1000;
    QuickPinger pinger(timing);
    pinger.addListener(&recorder);
    pinger.setTestCount(2);
    for (int i = 0; i < 500; ++i)
        addTarget(pinger, host(i + 2));
    network().flood(20'000);
    runTest(pinger, recorder);
    uint32 received = 0;
    for (int i = 0; i < 500; ++i)
        received += recorder.result(host(i + 2)).received();
    EXPECT_EQ(received, 1000U);
    EXPECT_GT(recorder.result("").received(), 40'000U) << "too little of a flood";
    EXPECT_TRUE(pinger.testFailure().operation.isEmpty());
}
