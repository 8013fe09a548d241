// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal ping: grades the way to some addresses.
#include "Command.h"
#include "Interrupt.h"
#include "NetFacts.h"
#include "Reading.h"
#include "Terminal.h"
#include "Text.h"

#include "Core/SocketApiWrapper.h"
#include "OS/Network/Testing/K7Pinger.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <set>

#include <sys/ioctl.h>
#include <unistd.h>

namespace K7Tool {

using namespace Kivo;
using Clock = std::chrono::steady_clock;

namespace {

struct PingOptions {
    std::string interface;
    uint32 rounds = 5;
    std::vector<std::string> addresses;
};

struct Target {
    int32 channel;
    K7InetAddress address;
};

/// Gathers what the pinger reports.
class Results final : public K7PingerListener {
public:
    bool isActive() override { return true; }

    void onPingBegin() override { setState("pinging"); }

    void onPingResult(const J3Time&, const K7PingResult& result) override
    {
        const std::lock_guard guard(_mutex);
        _results.push_back(result);
    }

    void onPingStopped() override { setState("stopped"); }

    void onPingEnd() override
    {
        setState("done");
        const std::lock_guard guard(_mutex);
        _ended = true;
        _changed.notify_all();
    }

    /// @return whether the test has ended within the time
    bool waitForEnd(std::chrono::milliseconds time)
    {
        std::unique_lock guard(_mutex);
        return _changed.wait_until(guard, Clock::now() + time, [this] { return _ended; });
    }

    std::string state()
    {
        const std::lock_guard guard(_mutex);
        return _state;
    }

    std::vector<K7PingResult> all()
    {
        const std::lock_guard guard(_mutex);
        return _results;
    }

private:
    void setState(const char* state)
    {
        const std::lock_guard guard(_mutex);
        _state = state;
    }

    std::mutex _mutex;
    std::condition_variable _changed;
    std::string _state = "starting";
    std::vector<K7PingResult> _results;
    bool _ended = false;
};

std::vector<Target> parseTargets(const std::vector<std::string>& texts)
{
    std::vector<Target> targets;
    std::set<std::string> seen;
    for (const std::string& text : texts) {
        K7InetAddress address;
        if (!address.fromString(text.c_str()) || !address.isIPv4())
            throw CLI::ValidationError("ping", "\"" + text + "\" is no IPv4 address");
        if (!seen.insert(address.toString().to_string()).second)
            throw CLI::ValidationError("ping", "\"" + text + "\" is given twice");
        targets.push_back({static_cast<int32>(targets.size()), address});
    }
    return targets;
}

const char* gradeWord(const K7PingResult& result)
{
    switch (result.status()) {
    case K7_PING_STATUS_GREAT:
        return "great";
    case K7_PING_STATUS_GOOD:
        return "good";
    case K7_PING_STATUS_NORMAL:
        return "normal";
    case K7_PING_STATUS_BAD:
        return "bad";
    case K7_PING_STATUS_WORSE:
        return "worse";
    case K7_PING_STATUS_UNKNOWN:
        break;
    }
    return "unknown";
}

Style gradeStyle(const K7PingResult& result)
{
    if (result.status() >= K7_PING_STATUS_GOOD)
        return Style::GOOD;
    return result.status() == K7_PING_STATUS_NORMAL ? Style::WARNING : Style::BAD;
}

/// Whether a result is a target's; whoever else sent something during the test has one too.
bool isTarget(const K7PingResult& result) { return result.target().channel() >= 0; }

/// Whether a result does not speak against the exit code 0.
bool isFine(const K7PingResult& result) { return !isTarget(result) || result.status() >= K7_PING_STATUS_NORMAL; }

double lossPercent(const K7PingResult& result)
{
    const uint32 sent = result.transmitted();
    const uint32 lost = sent - std::min(sent, result.received());
    if (sent == 0)
        return result.received() > 0 ? 0.0 : 100.0;
    return 100.0 * lost / sent;
}

std::string milliseconds(float32 time)
{
    if (time < 0)
        return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", static_cast<double>(time));
    return text;
}

// The channel and the address of a result; of a sender that was no target the pinger keeps neither.

std::string channelText(const K7PingResult& result)
{
    return isTarget(result) ? std::to_string(result.target().channel()) : "-";
}

std::string addressText(const K7PingResult& result)
{
    return isTarget(result) ? result.target().address().toString().to_string() : "others";
}

/// The results in the order of the targets, strangers last.
std::vector<K7PingResult> inOrder(std::vector<K7PingResult> results)
{
    std::stable_sort(results.begin(), results.end(), [](const K7PingResult& left, const K7PingResult& right) {
        return static_cast<uint32>(left.target().channel()) < static_cast<uint32>(right.target().channel());
    });
    return results;
}

void printGraded(const std::vector<K7PingResult>& results)
{
    Table table({"channel", "address", "sent", "received", "loss", "min ms", "avg ms", "max ms", "grade"},
                {Table::RIGHT, Table::LEFT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT,
                 Table::RIGHT, Table::LEFT});
    for (const K7PingResult& result : results) {
        char loss[16];
        std::snprintf(loss, sizeof loss, "%.0f %%", lossPercent(result));
        table.add({channelText(result), addressText(result), std::to_string(result.transmitted()),
                   std::to_string(result.received()), loss, milliseconds(result.rttMin()),
                   milliseconds(result.rttAvg()), milliseconds(result.rttMax()),
                   std::string(gradeWord(result)) + ": " +
                       K7PingResult::statusDescription(static_cast<uint32>(result.status())).to_string()},
                  gradeStyle(result));
    }
    std::cout << table.text();
}

void printLines(const std::vector<K7PingResult>& results)
{
    for (const K7PingResult& result : results)
        std::cout << channelText(result) << " " << addressText(result) << " sent " << result.transmitted()
                  << " received " << result.received() << " loss " << std::lround(lossPercent(result))
                  << "% min/avg/max " << milliseconds(result.rttMin()) << "/" << milliseconds(result.rttAvg()) << "/"
                  << milliseconds(result.rttMax()) << " ms " << gradeWord(result) << "\n";
}

Json resultFacts(const K7PingResult& result)
{
    const auto time = [](float32 value) { return value < 0 ? Json(nullptr) : Json(value); };
    return {{"channel", isTarget(result) ? Json(result.target().channel()) : Json(nullptr)},
            {"address", isTarget(result) ? Json(addressText(result)) : Json(nullptr)},
            {"sent", result.transmitted()},
            {"received", result.received()},
            {"send_errors", result.sysError()},
            {"lost", result.packetLoss()},
            {"duplicates", result.duplicates()},
            {"checksum_errors", result.chksumErr()},
            {"loss_percent", lossPercent(result)},
            {"rtt_min_ms", time(result.rttMin())},
            {"rtt_avg_ms", time(result.rttAvg())},
            {"rtt_max_ms", time(result.rttMax())},
            {"grade", gradeWord(result)},
            {"description", K7PingResult::statusDescription(static_cast<uint32>(result.status())).to_string()}};
}

/// How many targets the screen has room for, below the line of the state and above what follows.
std::size_t rowsForTargets()
{
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 4 ? size.ws_row - 4U : 20U;
}

/// Print the state of the test. @return the lines that it took
std::size_t printState(const std::string& state, double elapsed, double total, const std::vector<Target>& targets)
{
    const std::size_t shown = std::min(targets.size(), rowsForTargets());
    Table table({"", "", ""});
    for (std::size_t i = 0; i < shown; ++i)
        table.add(
            {std::to_string(targets[i].channel), targets[i].address.toString().to_string(), "waiting for its grade"});
    if (shown < targets.size())
        table.add({"", "and " + std::to_string(targets.size() - shown) + " more", ""});
    char times[48];
    std::snprintf(times, sizeof times, "%.0f of %.0f s", std::min(elapsed, total), total);
    std::cout << state << "  " << bar(elapsed, total, 40) << "  " << times << "\n" << table.text() << std::flush;
    return 1 + shown + (shown < targets.size() ? 1 : 0);
}

/// Redraws the state of the test in place until it ends or the user interrupts it. @return whether it has ended
bool followTest(Results& results, const K7Pinger& pinger, const std::vector<Target>& targets, bool live)
{
    const double total = pinger.expectedDuration() / 1000.0;
    const Clock::time_point begin = Clock::now();
    std::size_t linesShown = 0;
    const auto erase = [&] {
        if (linesShown > 0)
            std::cout << "\033[" << linesShown << "A\033[J" << std::flush;
    };
    bool ended = false;
    while (!ended && !Interrupt::came()) {
        if (live) {
            erase();
            const std::chrono::duration<double> elapsed = Clock::now() - begin;
            linesShown = printState(results.state(), elapsed.count(), total, targets);
        }
        ended = results.waitForEnd(std::chrono::milliseconds(200));
    }
    erase();
    return ended;
}

bool hasRawSocket()
{
    const int fd = SocketApiWrapper::createRawSocket(SocketApiWrapper::RAW_ICMP);
    if (fd == SocketApiWrapper::INVALID_FD) {
        const bool denied = errno == EPERM || errno == EACCES;
        failed("ping",
               denied ? "no raw socket: the capability CAP_NET_RAW is missing; run it as root, or grant it once with "
                        "\"setcap cap_net_raw+ep\" on the tool's file"
                      : "no raw socket",
               errno);
        return false;
    }
    SocketApiWrapper::closeSocket(fd);
    return true;
}

int ping(const Session& session, PingOptions options)
{
    refuseRoot(session, "ping");
    const std::vector<Target> targets = parseTargets(options.addresses);
    if (options.interface.empty())
        options.interface = defaultInterface();
    if (options.interface.empty())
        return failed("ping", "there is no default route to take the interface from; name one with -i");
    if (!hasRawSocket())
        return EXIT_FAILED;

    const Interrupt interrupt;
    Results results;
    K7Pinger pinger;
    pinger.setTestCount(options.rounds);
    for (const Target& target : targets)
        pinger.addTarget(target.channel, target.address);
    pinger.addListener(&results);
    pinger.init(options.interface.c_str());
    if (!pinger.isRunning())
        return failed("ping", "the system gives no thread", pinger.testFailure().errorCode);
    pinger.start();
    const bool ended = followTest(results, pinger, targets, onTerminal() && !session.json);
    pinger.cleanup();

    const std::vector<K7PingResult> graded = inOrder(results.all());
    if (session.json) {
        Json document = {{"interface", options.interface}, {"rounds", options.rounds}, {"results", Json::array()}};
        for (const K7PingResult& result : graded)
            document["results"].push_back(resultFacts(result));
        printJson(document);
    } else {
        onTerminal() ? printGraded(graded) : printLines(graded);
    }
    std::cout << std::flush;
    if (!ended)
        return failed("ping", graded.empty() ? "interrupted before anything was graded" : "interrupted");
    const K7SystemUtil::Failure failure = pinger.testFailure();
    if (!failure.operation.isEmpty())
        failed("ping on " + options.interface, failure.reason.to_string(), failure.errorCode);
    return std::all_of(graded.begin(), graded.end(), isFine) ? EXIT_DONE : EXIT_FAILED;
}

} // namespace

void declarePing(CLI::App& command, Session& session)
{
    const auto options = std::make_shared<PingOptions>();
    command.add_option("-i,--interface", options->interface, "The interface (default: that of the default route)");
    command.add_option("-c,--rounds", options->rounds, "Echoes to each address, one every 3 seconds")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    command.add_option("address", options->addresses, "What to ping")->required()->expected(1, 500);
    command.callback([&session, options] { session.exitCode = ping(session, *options); });
}

} // namespace K7Tool
