// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal net: network interfaces, once or again and again.
#include "Command.h"
#include "Interrupt.h"
#include "NetFacts.h"
#include "NetTables.h"
#include "Reading.h"
#include "Terminal.h"
#include "Text.h"

#include "OS/System/Network.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <map>

namespace K7Tool {

using Network = Kivo::K7SystemUtil::Network;

namespace {

constexpr double DEFAULT_INTERVAL = 1.0;

struct NetOptions {
    std::string interface;
    double seconds = 0; ///< between two looks; 0 for a single one
    int looks = 0;      ///< how many; 0 until interrupted
};

Json scatterGather(const std::string& name)
{
    bool on = false;
    return Network::getEthernetToolSG(name.c_str(), &on) ? Json(on) : Json(nullptr);
}

void printOne(const Session& session, const Json& facts)
{
    Table table({"", ""});
    table.add({"interface", cell(facts["name"])});
    table.add({"state", cell(facts["state"])});
    table.add({"link", linkText(facts["link"])});
    table.add({"speed", facts["speed_mbit_per_s"].is_null() ? "-" : cell(facts["speed_mbit_per_s"]) + " Mbit/s"});
    table.add({"MTU", facts["mtu_bytes"].is_null() ? "-" : cell(facts["mtu_bytes"]) + " bytes"});
    table.add({"MAC", cell(facts["mac"])});
    table.add({"IPv4", withPrefix(facts["ipv4"], facts["ipv4_prefix_length"])});
    table.add({"IPv4 mask", cell(facts["ipv4_mask"])});
    table.add({"IPv4 gateway", cell(facts["ipv4_gateway"])});
    table.add({"IPv6", withPrefix(facts["ipv6"], facts["ipv6_prefix_length"])});
    table.add({"IPv6 gateway", cell(facts["ipv6_gateway"])});
    const Json& offload = facts["scatter_gather"];
    table.add({"SG offload", offload.is_null() ? "-" : offload == true ? "on" : "off"});
    std::cout << table.text();

    Table counters({"", "received", "sent"}, {Table::LEFT, Table::RIGHT, Table::RIGHT});
    for (const char* key : {"bytes", "packets", "errors", "dropped", "fifo_errors", "collisions", "carrier_errors",
                            "frame_errors", "compressed", "multicast"}) {
        std::string label = key;
        std::replace(label.begin(), label.end(), '_', ' ');
        counters.add({label, counterText(facts["received"], key), counterText(facts["sent"], key)});
    }
    std::cout << "\n" << counters.text();
    std::cout << missingNote(!session.root.empty());
}

/// Traffic per second between two looks at an interface's counters.
class Rates {
public:
    Json update(const std::string& name, const Json& facts, double seconds)
    {
        const Json last = std::exchange(_last[name], facts);
        Json rates = {{"name", name}};
        for (const char* direction : {"received", "sent"})
            for (const char* key : {"bytes", "packets", "errors"}) {
                const bool known = last.is_object() && last[direction].is_object() && facts[direction].is_object();
                const double grown =
                    known ? facts[direction][key].get<double>() - last[direction][key].get<double>() : 0;
                const std::string name_per_second = std::string(direction) + "_" + key + "_per_s";
                rates[name_per_second] = known && seconds > 0 ? Json(std::max(grown, 0.0) / seconds) : Json(nullptr);
            }
        return rates;
    }

private:
    std::map<std::string, Json> _last;
};

Json trafficFacts(const std::string& name)
{
    Network::NetDevIoStat stat{};
    if (!Network::getNetDevIoStat(name.c_str(), &stat))
        return {{"received", nullptr}, {"sent", nullptr}};
    const auto direction = [](const Network::NetDevIoCounters& counters) {
        return Json{{"bytes", counters.bytes}, {"packets", counters.packets}, {"errors", counters.errs}};
    };
    return {{"received", direction(stat.rx)}, {"sent", direction(stat.tx)}};
}

std::string perSecond(const Json& rate, bool isSize)
{
    if (rate.is_null())
        return "-";
    const auto value = static_cast<std::uint64_t>(std::llround(rate.get<double>()));
    return isSize ? sizeText(value) + "/s" : std::to_string(value) + "/s";
}

/// @return the lines printed
std::size_t printRates(const Json& rates)
{
    Table table({"name", "received", "packets", "errors", "sent", "packets", "errors"},
                {Table::LEFT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT});
    for (const Json& row : rates)
        table.add({cell(row["name"]), perSecond(row["received_bytes_per_s"], true),
                   perSecond(row["received_packets_per_s"], false), perSecond(row["received_errors_per_s"], false),
                   perSecond(row["sent_bytes_per_s"], true), perSecond(row["sent_packets_per_s"], false),
                   perSecond(row["sent_errors_per_s"], false)});
    std::cout << table.text() << std::flush;
    return rates.size() + 1;
}

int watch(const Session& session, const NetOptions& options)
{
    using Clock = std::chrono::steady_clock;
    const Interrupt interrupt;
    const auto interval = std::chrono::milliseconds(static_cast<int>(options.seconds * 1000));
    Rates rates;
    Clock::time_point last = Clock::now();
    std::size_t linesShown = 0;
    // The first look only gives the counters to start from.
    for (int look = -1; options.looks == 0 || look < options.looks; ++look) {
        const Clock::time_point now = Clock::now();
        Json rows = Json::array();
        const auto names = options.interface.empty() ? interfaceNames() : std::vector{options.interface};
        for (const std::string& name : names)
            rows.push_back(rates.update(name, trafficFacts(name), std::chrono::duration<double>(now - last).count()));
        last = now;
        if (look >= 0 && session.json) {
            std::cout << rows.dump() << std::endl;
        } else if (look >= 0) {
            if (onTerminal() && linesShown > 0)
                std::cout << "\033[" << linesShown << "A\033[J";
            linesShown = printRates(rows);
        }
        if (look + 1 != options.looks || options.looks == 0)
            if (!std::cout || !Interrupt::sleep(interval))
                break;
    }
    return EXIT_DONE;
}

int net(const Session& session, const NetOptions& options)
{
    const std::vector<std::string> names = interfaceNames();
    if (names.empty())
        return failed("net");
    if (!options.interface.empty() && std::find(names.begin(), names.end(), options.interface) == names.end())
        return failed("net", "there is no interface \"" + options.interface + "\"");
    if (options.seconds > 0)
        return watch(session, options);
    if (options.interface.empty()) {
        const Json interfaces = networkFacts();
        if (session.json)
            printJson(interfaces);
        else
            std::cout << interfaceTables(interfaces, !session.root.empty());
        return EXIT_DONE;
    }
    Json facts = interfaceFacts(options.interface);
    facts["scatter_gather"] = scatterGather(options.interface);
    session.json ? printJson(facts) : printOne(session, facts);
    return EXIT_DONE;
}

} // namespace

void declareNet(CLI::App& command, Session& session)
{
    const auto options = std::make_shared<NetOptions>();
    command.add_option("interface", options->interface, "Show this one in full");
    CLI::Option* const watching =
        command.add_option("--watch", options->seconds, "Show rates per second, every so many seconds (1)")
            ->expected(0, 1)
            ->default_str("1")
            ->check(CLI::Range(0.1, 3600.0));
    command.add_option("--count", options->looks, "End the watch after so many rounds")
        ->check(CLI::PositiveNumber)
        ->needs(watching);
    command.callback([&session, options, watching] {
        if (watching->count() > 0 && options->seconds == 0)
            options->seconds = DEFAULT_INTERVAL;
        session.exitCode = net(session, *options);
    });
}

} // namespace K7Tool
