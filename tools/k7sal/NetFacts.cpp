// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the library sees of network interfaces and name servers, as JSON.
#include "NetFacts.h"

#include "Reading.h"

#include "Core/K7Cast.h"
#include "Core/K7MacAddressFormatter.h"
#include "OS/System/Network.h"

#include <algorithm>
#include <bit>
#include <sstream>

namespace K7Tool {

using namespace Kivo;
using Network = K7SystemUtil::Network;

namespace {

template <class Address>
Json addressText(const Address& address)
{
    return address.isValid() ? Json(address.toString().to_string()) : Json(nullptr);
}

/// What a query with an address result gives, as text; null when it fails.
template <class Address, class Query>
Json queried(Query query, const std::string& name)
{
    Address address;
    return query(name.c_str(), &address) ? addressText(address) : Json(nullptr);
}

/// The gateway of an interface. The query also takes a name that only begins with the route's ("eth10" for a route of
/// "eth1"), so what another interface, whose name this one's begins with, has as well is that one's.
template <class Address>
Json gateway(const std::string& name)
{
    const auto query = [](auto... arguments) { return Network::getGateway(arguments...); };
    const Json own = queried<Address>(query, name);
    const std::vector<std::string> all = own.is_null() ? std::vector<std::string>() : interfaceNames();
    const bool isAnothers = std::any_of(all.begin(), all.end(), [&](const std::string& other) {
        return other.size() < name.size() && name.starts_with(other) && queried<Address>(query, other) == own;
    });
    return isAnothers ? Json(nullptr) : own;
}

Json prefixLengthV4(const std::string& name)
{
    K7IPv4Address mask;
    if (!Network::getSubnetMask(name.c_str(), &mask))
        return nullptr;
    const uint32 bits = mask.value();
    const int length = std::countl_one(bits);
    return length + std::countr_zero(bits) >= 32 ? Json(length) : Json(nullptr);
}

// fe80000000000000505400fffe112201 03 40 20 80     eth1
/// The IPv6 addresses of an interface with their prefix lengths, which a captured tree can tell as well.
std::vector<std::pair<K7IPv6Address, uint32>> addressesV6(const std::string& name)
{
    std::vector<std::pair<K7IPv6Address, uint32>> result;
    J3String text;
    K7SystemUtil::readFile(L"/proc/net/if_inet6", &text);
    std::istringstream lines(text.to_string());
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string digits;
        std::string index;
        uint32 prefixLength = 0;
        std::string scope;
        std::string flags;
        std::string device;
        words >> digits >> index >> std::hex >> prefixLength >> scope >> flags >> device;
        uint64 high = 0;
        uint64 low = 0;
        if (!words || device != name || digits.size() != 32 ||
            !K7::castFrom(&high, J3String(digits.substr(0, 16).c_str()), true, false) ||
            !K7::castFrom(&low, J3String(digits.substr(16).c_str()), true, false))
            continue;
        result.emplace_back(K7IPv6Address(high, low), prefixLength);
    }
    return result;
}

/// The first IPv6 address, in the live system's order where there is one, with its prefix length.
std::pair<Json, Json> addressV6(const std::string& name)
{
    const auto all = addressesV6(name);
    K7IPv6Address first;
    if (!Network::getIpAddress(name.c_str(), &first) && !all.empty())
        first = all.front().first;
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& entry) { return entry.first == first; });
    return {addressText(first), found == all.end() ? Json(nullptr) : Json(found->second)};
}

Json macText(const std::string& name)
{
    K7MacAddress mac;
    if (Network::getMacAddress(&mac, name.c_str()))
        return K7MacAddressFormatter(L":", false, 1, 6).formatAddress(mac).to_string();
    return attribute("/sys/class/net/" + name + "/address");
}

Json linkDetected(const std::string& name)
{
    bool link = false;
    if (Network::getEthernetLink(name.c_str(), &link))
        return link;
    const Json carrier = number("/sys/class/net/" + name + "/carrier");
    return carrier.is_null() ? carrier : Json(carrier != 0);
}

Json linkSpeed(const std::string& name)
{
    int32 speed = -1;
    if (Network::getEthernetLinkSpeed(name.c_str(), &speed) && speed > 0)
        return speed;
    const Json text = number("/sys/class/net/" + name + "/speed"); // the speeds that the query does not grade
    return !text.is_null() && text.get<int64>() > 0 ? text : Json(nullptr);
}

Json counters(const Network::NetDevIoCounters& direction)
{
    return {{"bytes", direction.bytes},
            {"packets", direction.packets},
            {"errors", direction.errs},
            {"dropped", direction.drop},
            {"fifo_errors", direction.fifo},
            {"collisions", direction.colls},
            {"carrier_errors", direction.carrier},
            {"frame_errors", direction.frame},
            {"compressed", direction.compressed},
            {"multicast", direction.multicast}};
}

} // namespace

std::vector<std::string> interfaceNames()
{
    // eth0:  123456     789 ...
    J3String text;
    std::vector<std::string> names;
    if (!K7SystemUtil::readFile(L"/proc/net/dev", &text))
        return names;
    std::istringstream lines(text.to_string());
    int headings = 2;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find_first_not_of(" \t");
        const std::size_t colon = line.find(':');
        if (headings-- <= 0 && begin != std::string::npos && colon != std::string::npos && colon > begin)
            names.push_back(line.substr(begin, colon - begin));
    }
    return names;
}

Json interfaceFacts(const std::string& name)
{
    const auto [ipv6, prefixV6] = addressV6(name);
    Json facts = {
        {"name", name},
        {"state", attribute("/sys/class/net/" + name + "/operstate")},
        {"link", linkDetected(name)},
        {"speed_mbit_per_s", linkSpeed(name)},
        {"mtu_bytes", number("/sys/class/net/" + name + "/mtu")},
        {"mac", macText(name)},
        {"ipv4", queried<K7IPv4Address>([](auto... a) { return Network::getIpAddress(a...); }, name)},
        {"ipv4_mask", queried<K7IPv4Address>([](auto... a) { return Network::getSubnetMask(a...); }, name)},
        {"ipv4_prefix_length", prefixLengthV4(name)},
        {"ipv4_gateway", gateway<K7IPv4Address>(name)},
        {"ipv6", ipv6},
        {"ipv6_prefix_length", prefixV6},
        {"ipv6_gateway", gateway<K7IPv6Address>(name)},
    };
    Network::NetDevIoStat stat{};
    const bool known = Network::getNetDevIoStat(name.c_str(), &stat);
    facts["received"] = known ? counters(stat.rx) : Json(nullptr);
    facts["sent"] = known ? counters(stat.tx) : Json(nullptr);
    return facts;
}

Json networkFacts()
{
    Json result = Json::array();
    for (const std::string& name : interfaceNames())
        result.push_back(interfaceFacts(name));
    return result;
}

Json dnsFacts()
{
    const auto leased = [](bool (*query)(bool*)) {
        bool value = false;
        return query(&value) ? Json(value) : Json(nullptr);
    };
    return {
        {"ipv4_first", addressText(Network::getDnsIpAddress(0, true))},
        {"ipv4_second", addressText(Network::getDnsIpAddress(0, false))},
        {"ipv6_first", addressText(Network::getDnsIpAddressV6(0, true))},
        {"ipv6_second", addressText(Network::getDnsIpAddressV6(0, false))},
        {"dhcp_ipv4", addressText(Network::getAutoDnsIpAddress())},
        {"wan_leased", leased(Network::getWanDhcpcLeaseResult)},
        {"video_input_leased", leased(Network::getVinDhcpcLeaseResult)},
    };
}

std::string defaultInterface()
{
    for (const std::string& name : interfaceNames())
        if (!gateway<K7IPv4Address>(name).is_null())
            return name;
    return "";
}

} // namespace K7Tool
