// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal ping: grades the network path to IPv4 addresses.
#include "Command.h"
#include "Grade.h"
#include "Interrupt.h"
#include "PingResults.h"
#include "Render.h"
#include "Text.h"

#include "Core/SocketApiWrapper.h"
#include "Inventory/Route.h"
#include "OS/Network/Testing/K7Pinger.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <set>

#include <net/route.h>

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;
using Clock = std::chrono::steady_clock;

namespace {

struct PingOptions {
    std::string interface;
    uint32 rounds = 5;
    std::vector<std::string> hosts;
};

/// The first IPv4 address of a host; not set, with the reason on standard error, when it has none.
K7InetAddress resolve(const std::string& host)
{
    K7InetAddress address;
    std::vector<J3String> found;
    if (!K7SystemUtil::Network::getAddrInfo(&found, host.c_str())) {
        failed("ping " + host);
        return address;
    }
    for (const J3String& text : found)
        if (address.fromString(text) && address.isIPv4() && address.isValid())
            return address;
    failed("ping " + host, "the host has no IPv4 address");
    address.makeInvalid();
    return address;
}

/// The addresses to ping; fewer than there are hosts when one of them cannot be resolved.
std::vector<K7InetAddress> targetsOf(const std::vector<std::string>& hosts)
{
    std::vector<K7InetAddress> targets;
    std::set<K7InetAddress> seen;
    for (const std::string& host : hosts) {
        K7InetAddress address;
        const bool isNumeric = address.fromString(host.c_str());
        if (isNumeric && (!address.isIPv4() || !address.isValid()))
            throw CLI::ValidationError("ping", "\"" + host + "\" is not an IPv4 address that can be pinged");
        if (!isNumeric)
            address = resolve(host);
        if (!address.isValid())
            return targets;
        if (!seen.insert(address).second)
            throw CLI::ValidationError("ping", "\"" + host + "\" is given twice");
        targets.push_back(address);
    }
    return targets;
}

/// The interface of the IPv4 default route with the lowest metric; empty when there is none.
std::string defaultInterface()
{
    const Listing<Route> routes = listRoutes();
    const Route* best = nullptr;
    for (const Route& route : routes.records)
        if (route.prefixLength == 0 && route.destination.isIPv4() && (route.flags & RTF_REJECT) == 0 &&
            (!best || route.metric < best->metric))
            best = &route;
    reportProblems(routes.problems);
    return best ? best->interfaceName : std::string();
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

std::vector<K7PingResult> resultsSoFar(const K7Pinger& pinger)
{
    std::vector<K7PingResult> results;
    for (const auto& [address, result] : pinger.results())
        results.push_back(result);
    return results;
}

/// How far the test is, and the counts so far.
std::string progressText(const K7Pinger& pinger, double elapsed, double total, std::size_t height)
{
    constexpr std::size_t AROUND_TABLE = 3; // the bar, the headings, "and 3 more"
    constexpr std::size_t BAR_WIDTH = 40;
    const View view{true, Detail::USUAL, std::max(height, AROUND_TABLE + 1) - AROUND_TABLE, {}};
    const Grades grades = gradesOf(resultsSoFar(pinger));
    return bar(elapsed, total, BAR_WIDTH) + formatted("  %.0f of %.0f s\n", std::min(elapsed, total), total) +
           (grades.empty() ? std::string() : sheetText(sheetOf(grades), view));
}

/// Show how the test goes until it ends; the user's interrupt ends it early. @return whether it was complete
bool followTest(K7Pinger& pinger, PingResults& results, bool shows)
{
    constexpr std::chrono::milliseconds LOOK(200);
    constexpr std::chrono::seconds TIME_TO_FINISH(5);
    const double total = pinger.expectedDuration() / 1000.0;
    const Clock::time_point begin = Clock::now();
    Screen screen;
    bool ended = false;
    while (!ended && !Interrupt::came()) {
        if (shows && screen.redraws()) {
            const std::chrono::duration<double> elapsed = Clock::now() - begin;
            screen.show(progressText(pinger, elapsed.count(), total, screen.height()));
        }
        ended = results.waitForEnd(LOOK);
    }
    screen.clear();
    if (!ended) {
        pinger.finish();
        results.waitForEnd(TIME_TO_FINISH);
    }
    return ended;
}

int reportGrades(const Session& session, const PingTest& test, const Grades& grades)
{
    if (session.json) {
        printJson(toJson(Document{sheetOf(test), sheetOf(grades)}));
    } else {
        View view;
        view.style = [&](std::size_t row) { return grades[row].style(); };
        std::cout << sheetText(sheetOf(grades), view);
    }
    std::cout << std::flush;
    if (!test.complete)
        return failed("ping", "interrupted");
    return std::all_of(grades.begin(), grades.end(), [](const Grade& grade) { return grade.isFine(); }) ? EXIT_DONE
                                                                                                        : EXIT_FAILED;
}

int ping(const Session& session, PingOptions options)
{
    refuseRoot(session, "ping");
    const std::vector<K7InetAddress> targets = targetsOf(options.hosts);
    if (targets.size() < options.hosts.size())
        return EXIT_FAILED;
    if (options.interface.empty())
        options.interface = defaultInterface();
    if (options.interface.empty())
        return failed("ping", "there is no default route to take the interface from; name one with -i");
    if (!hasRawSocket())
        return EXIT_FAILED;

    const Interrupt interrupt;
    PingResults results;
    K7Pinger pinger;
    pinger.setTestCount(options.rounds);
    for (std::size_t i = 0; i < targets.size(); ++i)
        pinger.addTarget(static_cast<int32>(i), targets[i]);
    pinger.addListener(&results);
    pinger.init(options.interface.c_str());
    if (!pinger.isRunning()) {
        const K7SystemUtil::Failure failure = pinger.testFailure();
        return failed("ping", failure.reason.to_string(), failure.errorCode);
    }
    pinger.start();
    const bool complete = followTest(pinger, results, onTerminal() && !session.json);
    pinger.cleanup();

    const int result = reportGrades(session, {options.interface, options.rounds, complete}, gradesOf(results.all()));
    const K7SystemUtil::Failure failure = pinger.testFailure();
    if (!failure.operation.isEmpty())
        failed("ping on " + options.interface, failure.reason.to_string(), failure.errorCode,
               failure.subject.to_string());
    return result;
}

} // namespace

void declarePing(CLI::App& command, Session& session)
{
    const auto options = std::make_shared<PingOptions>();
    command.add_option("-i,--interface", options->interface, "The interface (default: that of the default route)")
        ->type_name("IFACE");
    command.add_option("-c,--rounds", options->rounds, "Echoes to each target, one every 3 seconds, 1 to 1000")
        ->type_name("N")
        ->check(CLI::Range(1, 1000).description(""))
        ->capture_default_str();
    command.add_option("host", options->hosts, "What to ping: an IPv4 address, or a name that has one")
        ->required()
        ->expected(1, 500);
    command.callback([&session, options] { session.exitCode = ping(session, *options); });
}

} // namespace K7Tool
