// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Routes of both families.
#include "Inventory/Route.h"

#include "Inventory/detail/Address_p.h"
#include "Inventory/detail/Source_p.h"

#include <algorithm>
#include <limits>

#include <linux/ipv6_route.h>
#include <linux/route.h>

namespace Kivo::Inventory {

namespace {

constexpr const char* WHAT = "routes";

bool isIPv6(const Route& route) { return route.destination.isIPv6(); }

/// The letters of route(8).
std::string flagLetters(const Route& route)
{
    static constexpr struct {
        uint32 flag;
        char letter;
        bool ipv6Only;
    } FLAGS[] = {
        {RTF_UP, 'U', false},        {RTF_HOST, 'H', false},    {RTF_GATEWAY, 'G', false},
        {RTF_REINSTATE, 'R', false}, {RTF_DYNAMIC, 'D', false}, {RTF_MODIFIED, 'M', false},
        {RTF_ADDRCONF, 'A', true},   {RTF_CACHE, 'C', true},    {RTF_REJECT, '!', false},
    };
    std::string letters;
    for (const auto& entry : FLAGS)
        if ((route.flags & entry.flag) != 0 && (!entry.ipv6Only || isIPv6(route)))
            letters += entry.letter;
    return letters;
}

constexpr Column<Route> COLUMNS[] = {
    {{"family", "family", "ipv4 or ipv6"}, [](const Route& r) { return Value(isIPv6(r) ? "ipv6" : "ipv4"); }},
    {{"destination", "destination", "Network that the route leads to", Unit::NONE, Align::LEFT, IDENTITY,
      Secret::IP_ADDRESS},
     [](const Route& r) { return Value(addressText(r.destination)); }},
    {{"prefix_length", "prefix", "Bits of the destination that count, 0 for a default route", Unit::NONE, Align::RIGHT,
      IDENTITY},
     [](const Route& r) { return Value(r.prefixLength); }},
    {{"gateway", "gateway", "Router that packets are sent to; none when the network is on the link", Unit::NONE,
      Align::LEFT, PLAIN, Secret::IP_ADDRESS},
     [](const Route& r) { return Value(setAddressText(r.gateway)); }},
    column<&Route::interfaceName>(
        {"interface", "interface", "Interface that packets leave by", Unit::NONE, Align::LEFT, IDENTITY}),
    column<&Route::metric>(
        {"metric", "metric", "Of several routes the one with the lowest is used", Unit::NONE, Align::RIGHT, IDENTITY}),
    {{"flags", "flags",
      "U up, H host, G gateway, R reinstated, D dynamic, M modified, A autoconfigured, C cache, ! reject"},
     [](const Route& r) { return Value(flagLetters(r)); }},
};

/// Whether a route is there without anyone's doing: to an address of this machine, to multicast addresses, or the entry
/// that ends the search.
bool isKernelsOwn(const Route& route)
{
    constexpr uint32 MULTICAST = 0xFF;
    if (!isIPv6(route))
        return false;
    const bool isMulticast =
        route.prefixLength >= 8 && route.destination.ipv6Address().value64MSB() >> 56U == MULTICAST;
    const bool isLastEntry = (route.flags & RTF_REJECT) != 0 && route.metric == std::numeric_limits<uint32>::max();
    return isMulticast || isLastEntry || (route.flags & (RTF_LOCAL | RTF_ANYCAST)) != 0;
}

} // namespace

template <>
std::span<const Column<Route>> columns<Route>()
{
    return COLUMNS;
}

Listing<Route> listRoutes()
{
    Listing<Route> listing;
    Source source(WHAT, &listing.problems);
    listing.known = K7SystemUtil::Network::listRoutes(&listing.records);
    if (!listing.known)
        source.noteFailure();
    listing.known |= !listing.records.empty();
    std::erase_if(listing.records, isKernelsOwn);
    return listing;
}

} // namespace Kivo::Inventory
