// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network interfaces: links, addresses, traffic.
#include "Inventory/NetworkInterface.h"

#include "Core/K7MacAddressFormatter.h"
#include "Inventory/detail/Address_p.h"
#include "Inventory/detail/Source_p.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <map>

#include <linux/if.h>
#include <linux/route.h>

namespace Kivo::Inventory {

namespace {

using Network = K7SystemUtil::Network;
using Address = NetworkInterface::Address;
using Traffic = NetworkInterface::Traffic;

constexpr const char* WHAT = "network interfaces";

const char* scopeName(Network::AddressScope scope)
{
    switch (scope) {
    case Network::AddressScope::GLOBAL:
        return "global";
    case Network::AddressScope::SITE:
        return "site";
    case Network::AddressScope::LINK:
        return "link";
    case Network::AddressScope::HOST:
        return "host";
    }
    return nullptr;
}

constexpr Column<Address> ADDRESS_COLUMNS[] = {
    {{"address", "address", "The address itself", Unit::NONE, Align::LEFT, IDENTITY, Secret::IP_ADDRESS},
     [](const Address& a) { return Value(addressText(a.address)); }},
    {{"prefix_length", "prefix", "Bits that all addresses of its network share", Unit::NONE, Align::RIGHT},
     [](const Address& a) { return Value(a.prefixLength); }},
    {{"scope", "scope", "Where the address is valid"}, [](const Address& a) { return Value(scopeName(a.scope)); }},
};

template <auto Member>
constexpr Column<Traffic> counter(const char* key, const char* heading, const char* help, Unit unit = Unit::NONE,
                                  uint16 traits = PLAIN)
{
    return column<Member>({key, heading, help, unit, Align::RIGHT, static_cast<uint16>(COUNTER | traits)});
}

constexpr Column<Traffic> TRAFFIC_COLUMNS[] = {
    counter<&Traffic::bytes>("bytes", "bytes", "Bytes of all packets", Unit::BYTES),
    counter<&Traffic::packets>("packets", "packets", "Packets without an error"),
    counter<&Traffic::errs>("errors", "errors", "Packets with an error of any kind"),
    counter<&Traffic::drop>("dropped", "dropped", "Packets that there was no room for", Unit::NONE, DETAIL),
    counter<&Traffic::fifo>("fifo_errors", "FIFO", "Packets lost in the device's queue", Unit::NONE, DETAIL),
    counter<&Traffic::colls>("collisions", "collisions", "Collisions while sending", Unit::NONE, DETAIL),
    counter<&Traffic::carrier>("carrier_errors", "carrier", "Packets lost with the link while sending", Unit::NONE,
                               DETAIL),
    counter<&Traffic::frame>("frame_errors", "frame", "Received packets with a broken frame", Unit::NONE, DETAIL),
    counter<&Traffic::compressed>("compressed", "compressed", "Compressed packets", Unit::NONE, DETAIL),
    counter<&Traffic::multicast>("multicast", "multicast", "Received multicast packets", Unit::NONE, DETAIL),
};

// --- columns of an interface

/// The first address, which tables show; the lists have them all.
const Address* first(const std::optional<std::vector<Address>>& addresses)
{
    return addresses && !addresses->empty() ? &addresses->front() : nullptr;
}

template <auto Member>
Value firstAddress(const NetworkInterface& interface)
{
    const Address* const address = first(interface.*Member);
    return address ? Value(addressText(address->address)) : Value();
}

template <auto Member>
Value firstPrefixLength(const NetworkInterface& interface)
{
    const Address* const address = first(interface.*Member);
    return address ? Value(address->prefixLength) : Value();
}

Value firstMask(const NetworkInterface& interface)
{
    constexpr uint32 BITS = 32;
    const Address* const address = first(interface.ipv4);
    if (!address)
        return {};
    const uint32 length = std::min(address->prefixLength, BITS);
    return addressText(K7IPv4Address(length == 0 ? 0 : ~uint32{0} << (BITS - length)));
}

template <auto Member>
Value gatewayValue(const NetworkInterface& interface)
{
    return interface.*Member ? Value(addressText(*(interface.*Member))) : Value();
}

template <auto Member>
Value addressList(const NetworkInterface& interface)
{
    return interface.*Member ? Value(rowsOf(*(interface.*Member))) : Value();
}

template <auto Member>
Value trafficRow(const NetworkInterface& interface)
{
    return interface.*Member ? Value(rowOf(*(interface.*Member))) : Value();
}

constexpr ColumnInfo text(const char* key, const char* heading, const char* help, uint16 traits = PLAIN,
                          Secret secret = Secret::NONE)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits, secret};
}

constexpr ColumnInfo number(const char* key, const char* heading, const char* help, uint16 traits = PLAIN,
                            Unit unit = Unit::NONE)
{
    return {key, heading, help, unit, Align::RIGHT, traits};
}

constexpr ColumnInfo address(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return text(key, heading, help, traits, Secret::IP_ADDRESS);
}

template <class Record>
constexpr ColumnInfo nested(const char* key, const char* heading, const char* help, uint16 traits)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits, Secret::NONE, &columnInfos<Record>};
}

constexpr Column<NetworkInterface> COLUMNS[] = {
    column<&NetworkInterface::name>(text("name", "name", "The kernel's name of the interface", IDENTITY)),
    column<&NetworkInterface::index>(number("index", "index", "The kernel's number of the interface", DETAIL)),
    column<&NetworkInterface::state>(text("state", "state", "Operational state", VOLATILE)),
    column<&NetworkInterface::link>(text("link", "link", "Whether a link is detected", VOLATILE)),
    column<&NetworkInterface::speed>(
        number("speed_mbit_per_s", "Mbit/s", "Speed of the link", VOLATILE, Unit::MEGABITS_PER_SECOND)),
    column<&NetworkInterface::duplex>(
        text("duplex", "duplex", "Whether both ends may send at once", VOLATILE | DETAIL)),
    column<&NetworkInterface::mtu>(number("mtu_bytes", "MTU", "Largest packet that can be sent", DETAIL, Unit::BYTES)),
    column<&NetworkInterface::mac>(text("mac", "MAC", "Hardware address", PLAIN, Secret::MAC_ADDRESS)),
    column<&NetworkInterface::driver>(text("driver", "driver", "The driver of the device", DETAIL)),
    column<&NetworkInterface::carrierChanges>(
        number("carrier_changes", "link changes", "How often the link came or went", COUNTER | DETAIL)),
    column<&NetworkInterface::scatterGather>(text("scatter_gather", "scatter-gather",
                                                  "Whether packets are sent from several pieces of memory",
                                                  DETAIL | LIVE_ONLY)),
    {address("ipv4", "IPv4", "First IPv4 address", LIVE_ONLY), &firstAddress<&NetworkInterface::ipv4>},
    {address("ipv4_mask", "mask", "Netmask of the first IPv4 address", DETAIL | LIVE_ONLY), &firstMask},
    {number("ipv4_prefix_length", "prefix", "Prefix length of the first IPv4 address", DETAIL | LIVE_ONLY),
     &firstPrefixLength<&NetworkInterface::ipv4>},
    {address("ipv4_gateway", "gateway", "Gateway of the IPv4 default route"),
     &gatewayValue<&NetworkInterface::ipv4Gateway>},
    {address("ipv6", "IPv6", "First IPv6 address, of the widest scope"), &firstAddress<&NetworkInterface::ipv6>},
    {number("ipv6_prefix_length", "prefix", "Prefix length of the first IPv6 address", DETAIL),
     &firstPrefixLength<&NetworkInterface::ipv6>},
    {address("ipv6_gateway", "IPv6 gateway", "Gateway of the IPv6 default route", DETAIL),
     &gatewayValue<&NetworkInterface::ipv6Gateway>},
    {nested<Address>("ipv4_addresses", "IPv4 addresses", "All IPv4 addresses", DETAIL | LIVE_ONLY),
     &addressList<&NetworkInterface::ipv4>},
    {nested<Address>("ipv6_addresses", "IPv6 addresses", "All IPv6 addresses", DETAIL),
     &addressList<&NetworkInterface::ipv6>},
    {nested<Traffic>("received", "received", "What came in since the interface came to be", VOLATILE),
     &trafficRow<&NetworkInterface::received>},
    {nested<Traffic>("sent", "sent", "What went out since the interface came to be", VOLATILE),
     &trafficRow<&NetworkInterface::sent>},
};

// --- reading

/// The gateways of the default routes, by interface.
class Gateways {
public:
    explicit Gateways(Source& source)
    {
        std::vector<Network::Route> routes;
        if (!Network::listRoutes(&routes))
            source.noteFailure();
        for (const Network::Route& route : routes) {
            if (route.prefixLength != 0 || !route.gateway.isValid() || (route.flags & RTF_REJECT) != 0)
                continue;
            ByMetric& byMetric = _byName[route.interfaceName];
            auto& best = route.gateway.ipv4Address().isValid() ? byMetric.ipv4 : byMetric.ipv6;
            if (!best || route.metric < best->metric)
                best = route;
        }
    }

    void tell(NetworkInterface* interface) const
    {
        const auto found = _byName.find(interface->name);
        if (found == _byName.end())
            return;
        if (found->second.ipv4)
            interface->ipv4Gateway = found->second.ipv4->gateway.ipv4Address();
        if (found->second.ipv6)
            interface->ipv6Gateway = found->second.ipv6->gateway.ipv6Address();
    }

private:
    struct ByMetric {
        std::optional<Network::Route> ipv4;
        std::optional<Network::Route> ipv6;
    };

    std::map<std::string, ByMetric, std::less<>> _byName;
};

std::optional<uint32> positive(std::optional<int64> number)
{
    return number && *number > 0 && *number <= std::numeric_limits<uint32>::max()
               ? std::optional(static_cast<uint32>(*number))
               : std::nullopt;
}

/// Add what sysfs alone tells of a live interface: every file costs more than all that the kernel's lists tell of it.
void readAttributes(Source& source, const std::string& directory, NetworkInterface* interface)
{
    // EINVAL: there is nothing to tell while the interface is down, or by this driver.
    interface->driver = source.linkName(directory + "device/driver");
    if (interface->link == false)
        return;
    interface->speed = positive(source.number(directory + "speed", 10, {EINVAL}));
    interface->duplex = source.text(directory + "duplex", {EINVAL});
    if (interface->duplex == "unknown")
        interface->duplex.reset();
}

/// Add what a live kernel has told already, and a captured tree has in sysfs.
void readListedAttributes(Source& source, const std::string& directory, NetworkInterface* interface)
{
    interface->state = source.text(directory + "operstate");
    interface->link = source.flag(directory + "carrier", {EINVAL});
    interface->mtu = positive(source.number(directory + "mtu"));
    interface->carrierChanges = source.number(directory + "carrier_changes");
}

NetworkInterface readInterface(Source& source, const Network::Interface& listed)
{
    constexpr uint32 BYTES = 6;
    const std::string directory = "/sys/class/net/" + listed.name + "/";
    NetworkInterface interface;
    interface.name = listed.name;
    interface.index = listed.index;
    if (listed.flags) {
        interface.state = listed.state;
        if ((*listed.flags & IFF_UP) != 0)
            interface.link = (*listed.flags & IFF_LOWER_UP) != 0;
        interface.mtu = listed.mtu;
        interface.carrierChanges = listed.carrierChanges;
    } else {
        readListedAttributes(source, directory, &interface);
    }
    if (listed.macAddress)
        interface.mac = K7MacAddressFormatter(L":", false, 1, BYTES).formatAddress(*listed.macAddress).to_string();
    else
        interface.mac = source.text(directory + "address");
    interface.ipv4 = listed.ipv4;
    interface.ipv6 = listed.ipv6;
    interface.received = listed.received;
    interface.sent = listed.sent;
    readAttributes(source, directory, &interface);
    return interface;
}

Listing<NetworkInterface> interfaces(const std::string* name)
{
    Listing<NetworkInterface> listing;
    Source source(WHAT, &listing.problems);
    std::vector<Network::Interface> listed;
    listing.known = Network::listInterfaces(&listed);
    if (!listing.known)
        source.noteFailure();
    listing.known |= !listed.empty();
    if (!listing.known)
        return listing;
    const Gateways gateways(source);
    for (const Network::Interface& one : listed) {
        if (name && one.name != *name)
            continue;
        NetworkInterface interface = readInterface(source, one);
        gateways.tell(&interface);
        listing.records.push_back(std::move(interface));
    }
    return listing;
}

} // namespace

template <>
std::span<const Column<Address>> columns<Address>()
{
    return ADDRESS_COLUMNS;
}

template <>
std::span<const Column<Traffic>> columns<Traffic>()
{
    return TRAFFIC_COLUMNS;
}

template <>
std::span<const Column<NetworkInterface>> columns<NetworkInterface>()
{
    return COLUMNS;
}

Listing<NetworkInterface> listNetworkInterfaces() { return interfaces(nullptr); }

Listing<NetworkInterface> readNetworkInterface(const std::string& name)
{
    Listing<NetworkInterface> listing = interfaces(&name);
    for (NetworkInterface& interface : listing.records) {
        bool on = false;
        if (isLive() && Network::getEthernetToolSG(name.c_str(), &on))
            interface.scatterGather = on;
        else if (isLive())
            Source(WHAT, &listing.problems).noteFailure({EOPNOTSUPP, ENODEV});
    }
    return listing;
}

} // namespace Kivo::Inventory
