// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The lines of /proc/net/dev, /proc/net/if_inet6 and /proc/net/sockstat.
#include "Base/TextScanner_p.h"
#include "OS/System/Platform/Linux/detail/InterfaceParser_p.h"

namespace Kivo {

namespace {

template <class Counters>
bool readCounters(std::string_view text, Counters* rx, Counters* tx)
{
    TextScanner scanner(text);
    const auto read = [&](auto&... counters) { return (scanner.number(&counters) && ...); };
    return read(rx->bytes, rx->packets, rx->errs, rx->drop, rx->fifo, rx->frame, rx->compressed, rx->multicast) &&
           read(tx->bytes, tx->packets, tx->errs, tx->drop, tx->fifo, tx->colls, tx->carrier, tx->compressed);
}

} // namespace

//   eth1:     114       1    0    0    0     0          0         2      602       7    0    0    0     0       0
//            0
bool splitCounters(std::string_view line, std::string_view* name, std::string_view* counters)
{
    TextScanner scanner(line);
    scanner.skipSpace();
    if (!scanner.until(':', name))
        return false;
    *counters = scanner.rest();
    return true;
}

bool findCounters(std::string_view line, std::string_view devName, std::string_view* counters)
{
    constexpr std::size_t NAME_COMPARED = 31;
    std::string_view name;
    while (!line.empty() && isSpace(line.front()))
        line.remove_prefix(1);
    return line.starts_with(devName) && splitCounters(line, &name, counters) &&
           name.substr(0, NAME_COMPARED) == devName;
}

bool parseCounters(std::string_view counters, K7SystemUtil::Network::NetDevIoStat* stat)
{
    return readCounters(counters, &stat->rx, &stat->tx);
}

bool parseCounters(std::string_view counters, K7SystemUtil::Network::Traffic* received,
                   K7SystemUtil::Network::Traffic* sent)
{
    return readCounters(counters, received, sent);
}

// fe80000000000000505400fffe112201 03 40 20 80     eth1
// The index has as many digits as it needs: 03, 100.
bool parseAddressV6(std::string_view line, IPv6Row* row)
{
    TextScanner scanner(line);
    std::string_view digits;
    return scanner.word(&digits, 32) && scanner.number(&row->index, 16) && scanner.number(&row->prefixLength, 16, 2) &&
           scanner.number(&row->scope, 16, 2) && scanner.skipNumber(16) && scanner.word(&row->name) &&
           parseDigitsV6(digits, &row->address);
}

bool parseDigitsV6(std::string_view digits, K7IPv6Address* address)
{
    constexpr std::size_t HALF = 16;
    if (digits.size() != 2 * HALF)
        return false;
    const auto high = wholeNumber<uint64>(digits.substr(0, HALF), 16);
    const auto low = wholeNumber<uint64>(digits.substr(HALF), 16);
    if (!high || !low)
        return false;
    address->setValue64(0, *high);
    address->setValue64(1, *low);
    return true;
}

// sockets: used 123
bool parseSocketCount(std::string_view line, int32* count)
{
    constexpr std::size_t COLUMN = 14;
    if (line.find("sockets:") == std::string_view::npos)
        return false;
    TextScanner(line.substr(std::min(COLUMN, line.size()))).number(count);
    return true;
}

} // namespace Kivo
