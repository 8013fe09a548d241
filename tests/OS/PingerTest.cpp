// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The pinger against hosts that the test plays: what goes out, what is counted, who is told, and how it ends.
#include "support/Faults.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/TunResponder.h"

#include "OS/Network/Testing/detail/PingerWorker_p.h"
#include "Protocol/Network/K7IcmpHeader.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <future>
#include <optional>

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using namespace std::chrono_literals;

namespace {

using Events = std::vector<std::string>;

constexpr const char* TUN = TunResponder::INTERFACE;
constexpr PingTiming QUICK{.settle = 10, .window = 200, .receive = 50, .afterError = 20, .withoutTarget = 50};
constexpr uint32 FOR_EVER = 3'600'000;

std::string host(int number) { return "10.77." + std::to_string(number / 256) + "." + std::to_string(number % 256); }

const Events WHOLE_TEST = {"begin", host(2), "stopped", "end"};

/// Notes what it is told, and calls @p onEvent while it is told.
struct Recorder final : K7PingerListener {
    bool active = true;
    std::function<void(const std::string& event)> onEvent = [](const std::string&) {};
    Events events;
    std::map<std::string, K7PingResult> results; ///< by address; of one that is no target, by ""

    bool isActive() override { return active; }

    void onPingBegin() override { note("begin"); }

    void onPingStopped() override { note("stopped"); }

    void onPingEnd() override { note("end"); }

    void onPingResult(const J3Time& finishedAt, const K7PingResult& result) override
    {
        EXPECT_LE(std::abs(finishedAt.to_time_t() - std::time(nullptr)), 2);
        const std::string address = result.target().address().toString().to_string();
        results[address] = result;
        note(address);
    }

    void note(const std::string& event)
    {
        events.push_back(event);
        onEvent(event);
    }
};

/// A pinger with shortened waits.
struct TestPinger : K7Pinger {
    TestPinger(K7PingerListener& listener, uint32 rounds, const Events& targets, const PingTiming& timing = QUICK)
    {
        Worker::of(*this).rounds().timing() = timing;
        addListener(&listener);
        setTestCount(rounds);
        for (K7InetAddress address; const std::string& target : targets) {
            EXPECT_TRUE(address.fromString(target.c_str()));
            EXPECT_TRUE(addTarget(7, address));
        }
    }

    ~TestPinger() override { cleanup(); } // as every subclass of a thread has to
};

class K7PingerLive : public testing::Test {
protected:
    void SetUp() override
    {
        K7_REQUIRE_SANDBOX();
        network.emplace();
        if (!network->isUp())
            GTEST_SKIP() << "no tun device";
    }

    static void begin(K7Pinger& pinger, const char* ifceName = TUN)
    {
        EXPECT_TRUE(pinger.init(ifceName));
        EXPECT_TRUE(pinger.start());
    }

    /// Wait for the end of a test. @return what the listener was told since the last time
    Events finish(const K7Pinger& pinger)
    {
        while (pinger.runState() != K7_STATE_IDLE)
            std::this_thread::sleep_for(1ms);
        return std::exchange(recorder.events, {});
    }

    Events run(K7Pinger& pinger, const char* ifceName = TUN)
    {
        begin(pinger, ifceName);
        return finish(pinger);
    }

    std::optional<TunResponder> network;
    Recorder recorder;
    const std::size_t descriptors = openDescriptors() + 1; ///< with the tun device's
};

} // namespace

TEST_F(K7PingerLive, CountsWhatBecomesOfEveryEcho)
{
    const struct {
        Answer answer;
        std::string result; // status, send errors, sent, received, duplicates, checksum errors, lost, shortest time
    } cases[] = {
        {{.copies = 0}, "1,0,2,0,0,0,2,-1.0"},
        {{.copies = 2}, "5,0,2,4,0,0,0,"},
        {{.kind = Answer::UNREACHABLE, .from = "10.77.0.254"}, "1,0,2,0,0,0,2,-1.0"},
        {{.kind = Answer::OPTIONS}, "5,0,2,2,0,0,0,10.0"},        // the time sent seems decades back
        {{.kind = Answer::CORRUPT}, "1,0,2,2,0,2,0,0.0,0.0,0.0"}, // and here still to come
        {{.delay = 120ms}, "3,0,2,2,0,0,0,1"},
        {{.from = "10.77.0.253"}, "1,0,2,0,0,0,2,-1.0"},
    };
    Events targets;
    for (int i = 2; const auto& test : cases)
        network->answer(targets.emplace_back(host(i++)), test.answer);
    TestPinger pinger(recorder, 2, targets);
    run(pinger);
    for (int i = 2; const auto& test : cases) {
        const std::string start = "7," + host(i) + "," + test.result;
        EXPECT_EQ(recorder.results[host(i++)].toString().to_string().substr(0, start.size()), start);
    }
    EXPECT_EQ(recorder.results[""].received(), 2U);
}

TEST_F(K7PingerLive, SendsNumberedMessagesOf1024Bytes)
{
    TestPinger pinger(recorder, 2, {host(2), host(3), host(4)});
    K7Pinger::Worker::of(pinger).rounds().setSequenceNum(65532);
    const std::time_t before = std::time(nullptr);
    run(pinger);
    run(pinger);
    std::vector<uint16> numbers;
    for (const Packet& request : network->requests()) {
        ASSERT_EQ(request.size(), 20U + 1024U);
        const K7IcmpHeader echo(&request[20], 1024);
        EXPECT_EQ(echo.type(), K7_ICMP_ECHO_REQUEST);
        EXPECT_EQ(echo.code(), 0);
        EXPECT_EQ(echo.calcChksum(&request[20], 1024), 0);
        EXPECT_EQ(echo.id(), static_cast<uint16>(pinger.threadId()));
        EXPECT_NEAR(echo.timeStamp1(), before + 5, 5);
        EXPECT_LT(echo.timeStamp2(), 1'000'000U);
        EXPECT_EQ(Packet(request.begin() + 36, request.end()), Packet(1008, 0xAA));
        numbers.push_back(echo.seqNum());
    }
    EXPECT_EQ(numbers, (std::vector<uint16>{65532, 65533, 65534, 65535, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(K7PingerLive, RunsWithoutTargetsAndWithoutRounds)
{
    TestPinger pinger(recorder, 0, {host(2)});
    EXPECT_EQ(run(pinger), WHOLE_TEST);
    EXPECT_EQ(recorder.results[host(2)].status(), K7_PING_STATUS_GREAT);
    pinger.clearAllTarget();
    EXPECT_EQ(run(pinger), (Events{"begin", "stopped", "end"}));
    EXPECT_TRUE(network->requests().empty());
}

TEST_F(K7PingerLive, StartsOnlyFromIdleAndStopsFromEveryState)
{
    TestPinger pinger(recorder, 2, {host(2)});
    pinger.stop();
    EXPECT_TRUE(pinger.start());
    EXPECT_FALSE(pinger.start());
    EXPECT_EQ(pinger.toString(), L"{\"state\" : 1, \"listeners\" : 1}");
    pinger.stop();
    EXPECT_TRUE(pinger.init(TUN));
    EXPECT_EQ(finish(pinger), (Events{"stopped", "end"})) << "stopped before it began";
    for (const std::string& state : WHOLE_TEST) {
        recorder.onEvent = [&](const std::string& event) {
            EXPECT_FALSE(pinger.start());
            if (event == state)
                pinger.stop();
        };
        EXPECT_EQ(run(pinger), state == "begin" ? (Events{"begin", "stopped", "end"}) : WHOLE_TEST) << state;
    }
    begin(pinger);
    network->requests(7); // of 8 in four tests
    pinger.stop();
    EXPECT_EQ(finish(pinger), WHOLE_TEST);
    EXPECT_EQ(recorder.results[host(2)].received(), 2U) << "a stop lets the rounds finish";
    pinger.cleanup();
    K7Pinger::Worker::of(pinger).rounds().timing().step = 500;
    begin(pinger);
    while (pinger.runState() != K7_STATE_END)
        std::this_thread::sleep_for(1ms);
    pinger.stop();
    EXPECT_EQ(finish(pinger), WHOLE_TEST) << "stopped between \"stopped\" and \"end\"";
}

TEST_F(K7PingerLive, EndsARunningTest)
{
    for (const bool byCleanup : {true, false}) {
        std::optional<TestPinger> pinger(std::in_place, recorder, 1, Events{host(2)},
                                         PingTiming{.settle = 10, .window = FOR_EVER});
        begin(*pinger);
        network->requests(byCleanup ? 1 : 2);
        byCleanup ? pinger->cleanup() : pinger.reset();
        EXPECT_EQ(std::exchange(recorder.events, {}), Events{"begin"});
        EXPECT_EQ(openDescriptors(), descriptors);
    }
}

TEST_F(K7PingerLive, FinishesARunningTestWithWhatWasMade)
{
    network->answer(host(3), {.copies = 0});
    TestPinger pinger(recorder, 5, {host(2), host(3)}, {.settle = 10, .window = FOR_EVER, .receive = 50});
    begin(pinger);
    while (pinger.results()[host(2).c_str()].received() == 0)
        std::this_thread::sleep_for(1ms);
    pinger.finish();
    EXPECT_EQ(finish(pinger), (Events{"begin", host(2), host(3), "stopped", "end"}));
    EXPECT_EQ(recorder.results[host(2)].status(), K7_PING_STATUS_GREAT);
    EXPECT_EQ(recorder.results[host(3)].packetLoss(), 1U);
    EXPECT_EQ(recorder.results[host(3)].sysError(), 0U);
    EXPECT_TRUE(pinger.results().empty());

    K7Pinger::Worker::of(pinger).rounds().timing().settle = FOR_EVER;
    begin(pinger);
    pinger.finish();
    finish(pinger);
    EXPECT_EQ(recorder.results[host(2)].status(), K7_PING_STATUS_UNKNOWN) << "finished before the first round";
}

TEST_F(K7PingerLive, TellsItsStateAndResultsWhileAListenerIsCalled)
{
    TestPinger pinger(recorder, 2, {host(2)});
    recorder.onEvent = [&](const std::string& event) {
        EXPECT_EQ(std::async(&K7Pinger::runState, &pinger).get() == K7_STATE_BEGIN, event == "begin");
        EXPECT_EQ(std::async(&K7Pinger::results, &pinger).get()[host(2).c_str()].received(),
                  event == host(2) ? 2U : 0U);
    };
    EXPECT_EQ(run(pinger), WHOLE_TEST);
}

TEST_F(K7PingerLive, CanBeCleanedUpAndStartedAgainFromACallback)
{
    TestPinger pinger(recorder, 1, {host(2)});
    recorder.onEvent = [&](const std::string&) { pinger.cleanup(); };
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(run(pinger), Events{"begin"}); // its init() waits for the worker that the last cleanup has left
    for (const std::string& moment : WHOLE_TEST) {
        bool isFirst = true;
        recorder.onEvent = [&](const std::string& event) {
            if (event != moment || !std::exchange(isFirst, false))
                return;
            pinger.cleanup();
            EXPECT_TRUE(pinger.init(TUN));
            EXPECT_TRUE(pinger.start());
        };
        Events expected(WHOLE_TEST.begin(), std::find(WHOLE_TEST.begin(), WHOLE_TEST.end(), moment) + 1);
        expected.insert(expected.end(), WHOLE_TEST.begin(), WHOLE_TEST.end());
        EXPECT_EQ(run(pinger), expected);
    }
}

TEST_F(K7PingerLive, CanBeStartedAndEndedByTwoThreadsAtOnce)
{
    TestPinger pinger(recorder, 1, {host(2)});
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        while (!isDone)
            pinger.cleanup();
    });
    for (int round = 0; round < 5; ++round)
        pinger.init(TUN);
    isDone = true;
    other.join();
    EXPECT_EQ(run(pinger), WHOLE_TEST);
}

TEST_F(K7PingerLive, TellsThatItGetsNoThread)
{
    pthread_attr_t before;
    pthread_attr_t huge;
    ASSERT_EQ(::pthread_getattr_default_np(&before), 0);
    ASSERT_EQ(::pthread_getattr_default_np(&huge), 0);
    ASSERT_EQ(::pthread_attr_setstacksize(&huge, std::size_t{1} << 50), 0);
    TestPinger pinger(recorder, 1, {host(2)});
    ASSERT_EQ(::pthread_setattr_default_np(&huge), 0);
    begin(pinger);
    EXPECT_FALSE(pinger.isRunning());
    EXPECT_EQ(pinger.testFailure().operation, L"K7Pinger::init");
    ASSERT_EQ(::pthread_setattr_default_np(&before), 0);
    EXPECT_TRUE(pinger.init(TUN));
    EXPECT_EQ(finish(pinger), WHOLE_TEST);
    EXPECT_EQ(pinger.testFailure().operation, L"");
}

TEST_F(K7PingerLive, LetsListenersChangeTheListAndThrow)
{
    TestPinger pinger(recorder, 1, {});
    std::string log;
    std::map<char, Recorder> guests;
    const std::map<char, std::string> acts = {{'s', "-s"}, {'c', "-c-r+a+c"}, {'t', "!"}, {'l', "-t"},
                                              {'r', ""},   {'a', ""},         {'i', ""}};
    for (const auto& [name, act] : acts)
        guests[name].onEvent = [&, name = name, act = act](const std::string& event) {
            log += name;
            if (event == "begin" && act == "!")
                throw std::runtime_error("guest");
            for (std::size_t i = 0; event == "begin" && i < act.size(); i += 2)
                act[i] == '-' ? pinger.delListener(&guests[act[i + 1]]) : pinger.addListener(&guests[act[i + 1]]);
        };
    guests['i'].active = false;
    for (const char name : {'s', 'c', 't', 'r', 'i', 'l', 'l'})
        pinger.addListener(&guests[name]);
    EXPECT_EQ(run(pinger), (Events{"begin", "stopped", "end"}));
    EXPECT_EQ(log, "sctllllacllac");
}

TEST_F(K7PingerLive, GradesWhatItCannotSendAndSaysWhy)
{
    TestPinger pinger(recorder, 2, {"fe80::1", host(2)});
    for (const char* name : {"k7none0", "", "tun0-with-a-name-too-long", TUN}) {
        EXPECT_EQ(run(pinger, name), (Events{"begin", host(2), "fe80::1", "stopped", "end"}));
        EXPECT_EQ(pinger.testFailure().reason, name == TUN ? L"SocketApiWrapper::sendTo" : L"ioctl(SIOCGIFINDEX)");
        EXPECT_EQ(recorder.results["fe80::1"].sysError(), 2U);
        EXPECT_EQ(recorder.results[host(2)].status(), name == TUN ? K7_PING_STATUS_GREAT : K7_PING_STATUS_WORSE);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{0, limit.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    run(pinger);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(pinger.testFailure().reason, L"SocketApiWrapper::createRawSocket");
    EXPECT_EQ(pinger.testFailure().subject, TUN);
    EXPECT_EQ(recorder.results[host(2)].sysError(), 2U);
}

TEST_F(K7PingerLive, SurvivesAnInterfaceThatGoesDuringATest)
{
    TestPinger pinger(recorder, 5, {host(2)});
    begin(pinger);
    network->requests(1);
    network->vanish();
    EXPECT_EQ(finish(pinger), WHOLE_TEST);
    const K7PingResult& result = recorder.results[host(2)];
    EXPECT_GE(result.transmitted(), 1U);
    EXPECT_EQ(result.sysError(), 5 - result.transmitted());
    EXPECT_FALSE(pinger.testFailure().reason.isEmpty());
    EXPECT_EQ(openDescriptors(), descriptors - 1);
}

TEST_F(K7PingerLive, LosesNoReplyOf500TargetsInAFlood)
{
    int largest = 0;
    std::ifstream("/proc/sys/net/core/rmem_max") >> largest;
    if (largest < 2 << 20)
        GTEST_SKIP() << "net.core.rmem_max is smaller than what the pinger takes with CAP_NET_ADMIN";
    Events targets;
    for (int i = 2; i < 502; ++i)
        targets.push_back(host(i));
    TestPinger pinger(recorder, 2, targets, {.settle = 10, .window = 1000});
    network->answer(host(2), {.copies = 20'000, .from = "10.77.255.254"}); // for each of the two seconds
    run(pinger);
    EXPECT_GT(recorder.results[""].received(), 36'000U) << "too little of a flood";
    recorder.results.erase("");
    for (const auto& [address, result] : recorder.results)
        EXPECT_EQ(result.received(), address == host(2) ? 0U : 2U) << address;
}

TEST_F(K7PingerLive, KeepsRepliesWhenALaterTargetCannotBeSentTo)
{
    const std::string unsendable = "fe80::1";
    TestPinger local(recorder, 2, {"127.0.0.1", unsendable});
    run(local, "lo"); // where the echo and its reply wait in the socket before the next echo is sent
    EXPECT_EQ(recorder.results["127.0.0.1"].received(), 4U);

    network->answer(host(2), {.delay = 50ms});
    TestPinger remote(recorder, 1, {host(2), unsendable}, {.settle = 10, .window = 100, .afterError = 1500});
    run(remote);
    EXPECT_EQ(remote.testFailure().subject, unsendable.c_str());
    EXPECT_EQ(recorder.results[host(2)].received(), 1U);
    EXPECT_LT(recorder.results[host(2)].rttMax(), 1000.0F) << "timed at the end of the pause";
}

TEST_F(K7PingerLive, TimesRepliesByTheirArrival)
{
    network->answer(host(2), {.delay = 100ms});
    TestPinger pinger(recorder, 1, {host(2)}, {.settle = 10, .window = 2000});
    std::signal(SIGUSR1, [](int) {
        constexpr timespec LONG_AFTER_THE_REPLY{1, 500'000'000};
        ::nanosleep(&LONG_AFTER_THE_REPLY, nullptr);
    });
    begin(pinger);
    network->requests(1);
    ::syscall(SYS_tgkill, ::getpid(), pinger.threadId(), SIGUSR1);
    finish(pinger);
    EXPECT_GE(recorder.results[host(2)].rttMin(), 100.0F);
    EXPECT_LT(recorder.results[host(2)].rttMax(), 1000.0F);
}

TEST_F(K7PingerLive, TakesNoNoticeOfTheClockBeingSet)
{
    network->answer(host(2), {.delay = 100ms});
    TestPinger pinger(recorder, 2, {host(2)}, {.settle = 10, .window = 500, .receive = 50});
    begin(pinger);
    network->requests(1);
    setClockBy(5s);
    network->requests(2);
    setClockBy(-3600s);
    finish(pinger);
    EXPECT_EQ(recorder.results[host(2)].received(), 2U);
    EXPECT_GE(recorder.results[host(2)].rttMin(), 100.0F);
    EXPECT_LT(recorder.results[host(2)].rttMax(), 2000.0F);
}

TEST_F(K7PingerLive, KeepsAtMost4096SendersThatAreNoTargets)
{
    network->answer(host(3), {.copies = 5000, .from = "10.77.16.0", .fromMany = true});
    TestPinger pinger(recorder, 1, {host(2), host(3)}, {.settle = 10, .window = 1000});
    const Events events = run(pinger);
    EXPECT_EQ(std::count(events.begin(), events.end(), ""), 4096);
    EXPECT_EQ(recorder.results[host(2)].received(), 1U);
    EXPECT_EQ(pinger.testFailure().reason.find(L"left out 904 messages", 0), 0U)
        << pinger.testFailure().reason.to_string();
}

TEST_F(K7PingerLive, PausesOnceARoundWhenTheInterfaceCannotSend)
{
    Events targets;
    for (int i = 2; i < 22; ++i)
        targets.push_back(host(i));
    ASSERT_EQ(std::system("ip link set tun0 down"), 0);
    TestPinger pinger(recorder, 1, targets, {.settle = 10, .window = 10, .afterError = 1000});
    const auto beginning = std::chrono::steady_clock::now();
    run(pinger);
    EXPECT_LT(std::chrono::steady_clock::now() - beginning, 10s) << "a pause for each of 20 targets takes 20 s";
    EXPECT_EQ(recorder.results[host(21)].sysError(), 1U);
    EXPECT_EQ(pinger.testFailure().errorCode, ENETUNREACH);
}

TEST_F(K7PingerLive, CompletesTheCycleWhenMemoryRunsOut)
{
    struct Counter final : K7PingerListener {
        std::vector<int> calls = std::vector<int>(3);
        bool isActive() override { return true; }
        void onPingBegin() override { ++calls[0]; }
        void onPingResult(const J3Time&, const K7PingResult&) override { throw std::runtime_error("not handled"); }
        void onPingStopped() override { ++calls[1]; }
        void onPingEnd() override { ++calls[2]; }
    } counter;
    TestPinger pinger(counter, 1, {host(2), "fe80::1"});
    for (const int interval : {1, 2, 3, 5, 8, 13, 21, 34}) {
        pinger.init(TUN);
        failAllocations(pinger.threadId(), interval);
        pinger.start();
        finish(pinger);
        failAllocations(0, 0);
        EXPECT_EQ(std::exchange(counter.calls, {0, 0, 0}), (std::vector{1, 1, 1})) << interval;
    }
}
