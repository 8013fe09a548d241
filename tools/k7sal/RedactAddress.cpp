// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stand-ins for network addresses.
#include "RedactAddress.h"

#include <algorithm>

namespace K7Tool {

namespace {

constexpr unsigned V4_BITS = 32;
constexpr unsigned V6_BITS = 128;

constexpr bool bitAt(const IpBytes& bytes, unsigned index) { return (bytes[index / 8] >> (7 - index % 8) & 1) != 0; }

constexpr void setBit(IpBytes* bytes, unsigned index, bool value)
{
    const auto mask = static_cast<std::uint8_t>(1U << (7 - index % 8));
    auto& byte = (*bytes)[index / 8];
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
}

constexpr IpPrefix prefixOf(IpBytes address, unsigned length)
{
    for (unsigned bit = length; bit < V6_BITS; ++bit)
        setBit(&address, bit, false);
    return {address, length};
}

/// Whether the bits from @p from on, below @p to, are all @p value.
constexpr bool areAll(const IpBytes& address, unsigned from, unsigned to, bool value)
{
    for (unsigned bit = from; bit < to; ++bit)
        if (bitAt(address, bit) != value)
            return false;
    return true;
}

/// Add one to the bits from @p from on, below @p to, beginning anew behind the last.
void increment(IpBytes* address, unsigned from, unsigned to)
{
    for (unsigned bit = to; bit-- > from;) {
        const bool wasSet = bitAt(*address, bit);
        setBit(address, bit, !wasSet);
        if (!wasSet)
            return;
    }
}

constexpr IpStandIns::FixedRange range(IpBytes bits, unsigned length, bool hosts = false)
{
    return {{bits, length}, hosts};
}

constexpr IpStandIns::FixedRange V4_RANGES[] = {
    range({0}, 8, true),    // this network, and unspecified
    range({10}, 8),         // private
    range({100, 64}, 10),   // shared by a provider's customers
    range({127}, 8, true),  // loopback
    range({169, 254}, 16),  // link-local
    range({172, 16}, 12),   // private
    range({192, 168}, 16),  // private
    range({0xE0}, 4, true), // multicast
    range({0xF0}, 4, true), // reserved, and broadcast
};

constexpr IpStandIns::FixedRange V6_RANGES[] = {
    range({0}, 8, true),                                          // unspecified, loopback
    range({0x20}, 3),                                             // global
    range({0x20, 0x02}, 16),                                      // 6to4
    range({0xFC}, 8),                                             // unique local
    range({0xFD}, 8),                                             // unique local
    range({0xFE, 0x80}, 10),                                      // link-local
    range({0xFE, 0x80}, 64),                                      // ... all there is of it
    range({0xFF}, 8, true),                                       // multicast
    range({0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0xFF}, 104), // solicited-node, which ends as an address does
};

constexpr std::uint8_t MAPPED[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
constexpr std::uint8_t NAT64[12] = {0, 0x64, 0xFF, 0x9B};

constexpr std::size_t V4_IN_V6 = 12;  ///< where an IPv6 address holds an IPv4 one
constexpr std::size_t IDENTIFIER = 8; ///< where the interface identifier begins

bool holdsV4(const IpBytes& address)
{
    return std::equal(std::begin(MAPPED), std::end(MAPPED), address.begin()) ||
           std::equal(std::begin(NAT64), std::end(NAT64), address.begin());
}

IpBytes v4Of(const IpBytes& address)
{
    IpBytes bytes{};
    std::copy(address.begin() + V4_IN_V6, address.end(), bytes.begin());
    return bytes;
}

/// The MAC address in an interface identifier, when there is one.
std::optional<std::vector<std::uint8_t>> macOf(const IpBytes& address)
{
    const std::uint8_t* const id = address.data() + IDENTIFIER;
    if (id[3] != 0xFF || id[4] != 0xFE)
        return std::nullopt;
    return std::vector{static_cast<std::uint8_t>(id[0] ^ 2), id[1], id[2], id[5], id[6], id[7]};
}

void setMac(IpBytes* address, const std::vector<std::uint8_t>& mac)
{
    std::uint8_t* const id = address->data() + IDENTIFIER;
    const std::uint8_t bytes[] = {
        static_cast<std::uint8_t>(mac[0] ^ 2), mac[1], mac[2], 0xFF, 0xFE, mac[3], mac[4], mac[5]};
    std::copy(std::begin(bytes), std::end(bytes), id);
}

Random newRandom()
{
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
    return Random(seed);
}

} // namespace

IpStandIns::IpStandIns(unsigned width, std::span<const FixedRange> ranges, Random& random)
    : _width(width), _random(random)
{
    _networks[{{}, 0}] = {{}, false, true};
    _lengths.insert(0);
    for (const FixedRange& range : ranges) {
        _networks[range.prefix] = {range.prefix.bits, range.hosts, true};
        _takenNetworks.insert(range.prefix);
        _fixed.push_back(range.prefix);
        _lengths.insert(range.prefix.length);
    }
}

void IpStandIns::learnNetwork(const IpBytes& address, unsigned length)
{
    constexpr std::size_t MOST = 20000;
    constexpr unsigned SHORTEST = 8; ///< shorter ones hold ranges that stay where they are
    if (length < SHORTEST || length >= _width || _settled || _networks.size() >= MOST)
        return;
    _networks.try_emplace(prefixOf(address, length));
    _lengths.insert(length);
}

std::optional<IpPrefix> IpStandIns::parentOf(const IpBytes& address, unsigned shorterThan) const
{
    for (auto length = _lengths.lower_bound(shorterThan); length != _lengths.begin();) {
        const IpPrefix prefix = prefixOf(address, *--length);
        if (_networks.contains(prefix))
            return prefix;
    }
    return std::nullopt;
}

bool IpStandIns::isTaken(const IpBytes& address, unsigned from, unsigned to) const
{
    for (auto length = _lengths.upper_bound(from); length != _lengths.end() && *length <= to; ++length)
        if (_takenNetworks.contains(prefixOf(address, *length)))
            return true;
    return to == _width && _takenHosts.contains(address);
}

/// Free bits from @p from on, below @p to, behind those of @p base.
IpBytes IpStandIns::chooseFree(const IpBytes& base, unsigned from, unsigned to, const IpBytes& original)
{
    constexpr int ATTEMPTS = 4096;
    IpBytes candidate = base;
    for (unsigned bit = from; bit < to; ++bit)
        setBit(&candidate, bit, (_random() & 1U) != 0);
    IpBytes second = original; // free, but an original
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt, increment(&candidate, from, to)) {
        const bool isHost = to == _width;
        if (isHost && (areAll(candidate, from, to, false) || areAll(candidate, from, to, true)))
            continue;
        if (candidate == original || isTaken(candidate, from, to))
            continue;
        if (isHost ? !_originals.contains(candidate) : !_networks.contains({candidate, to}))
            return candidate;
        second = candidate;
    }
    return second;
}

void IpStandIns::settle()
{
    _settled = true;
    std::vector<IpPrefix> order;
    for (const auto& [prefix, network] : _networks)
        if (!network.settled)
            order.push_back(prefix);
    std::stable_sort(order.begin(), order.end(),
                     [](const IpPrefix& left, const IpPrefix& right) { return left.length < right.length; });
    for (const IpPrefix& prefix : order) {
        Network& network = _networks[prefix];
        const IpPrefix parent = parentOf(prefix.bits, prefix.length).value_or(IpPrefix{{}, 0});
        const Network& above = _networks[parent];
        network.hostsStay = above.hostsStay;
        const bool holdsFixed = std::any_of(_fixed.begin(), _fixed.end(), [&](const IpPrefix& fixed) {
            return fixed.length >= prefix.length && prefixOf(fixed.bits, prefix.length) == prefix;
        });
        network.standIn = above.hostsStay || holdsFixed
                              ? prefix.bits
                              : chooseFree(above.standIn, parent.length, prefix.length, prefix.bits);
        network.settled = true;
        _takenNetworks.insert({network.standIn, prefix.length});
    }
}

IpBytes IpStandIns::standIn(const IpBytes& address, const std::function<void(IpBytes*)>& chooseHost)
{
    if (!_settled)
        settle();
    if (const auto known = _hosts.find(address); known != _hosts.end())
        return known->second;
    const IpPrefix parent = parentOf(address, _width).value_or(IpPrefix{{}, 0});
    const Network& network = _networks[parent];
    if (network.hostsStay)
        return address;
    IpBytes result = network.standIn;
    if (_width == V4_BITS && areAll(address, parent.length, _width, true)) {
        for (unsigned bit = parent.length; bit < _width; ++bit)
            setBit(&result, bit, true);
    } else if (chooseHost) {
        chooseHost(&result);
    } else if (!areAll(address, parent.length, _width, false)) {
        result = chooseFree(network.standIn, parent.length, _width, address);
        _takenHosts.insert(result);
    }
    _hosts[address] = result;
    return result;
}

AddressMap::AddressMap() : _random(newRandom()), _v4(V4_BITS, V4_RANGES, _random), _v6(V6_BITS, V6_RANGES, _random) {}

void AddressMap::learnV4(const IpBytes& address, unsigned length)
{
    if (length == V4_BITS)
        _v4.learnAddress(address);
    _v4.learnNetwork(address, length);
}

void AddressMap::learnV6(const IpBytes& address, unsigned length)
{
    constexpr unsigned SUBNET = 64;
    if (holdsV4(address)) {
        learnV4(v4Of(address));
        return;
    }
    if (length == V6_BITS) {
        _v6.learnAddress(address);
        if (!areAll(address, 0, SUBNET, false) && address[0] != 0xFF)
            _v6.learnNetwork(address, SUBNET);
        if (const auto mac = macOf(address))
            learnMac(*mac);
    }
    _v6.learnNetwork(address, length);
}

std::vector<std::uint8_t> AddressMap::mac(const std::vector<std::uint8_t>& mac)
{
    constexpr std::uint8_t KIND = 3; ///< multicast, locally administered
    const auto isAll = [&](std::uint8_t value) {
        return std::all_of(mac.begin(), mac.end(), [&](std::uint8_t byte) { return byte == value; });
    };
    if (isAll(0) || isAll(0xFF))
        return mac;
    auto [entry, isNew] = _macs.try_emplace(mac);
    while (isNew) {
        std::vector<std::uint8_t>& standIn = entry->second;
        standIn.clear();
        for (const std::uint8_t byte : mac)
            standIn.push_back(static_cast<std::uint8_t>(standIn.empty() ? (byte & KIND) | (_random() & 0xFFU & ~KIND)
                                                                        : _random() & 0xFFU));
        isNew = _macOriginals.contains(standIn) || !_takenMacs.insert(standIn).second;
    }
    return entry->second;
}

IpBytes AddressMap::v4(const IpBytes& address) { return _v4.standIn(address); }

IpBytes AddressMap::v6(const IpBytes& address)
{
    if (holdsV4(address)) {
        IpBytes result = address;
        const IpBytes inner = v4(v4Of(address));
        std::copy(inner.begin(), inner.begin() + 4, result.begin() + V4_IN_V6);
        return result;
    }
    if (const auto held = macOf(address); held && address[0] != 0xFF)
        return _v6.standIn(address, [&](IpBytes* result) { setMac(result, mac(*held)); });
    return _v6.standIn(address);
}

} // namespace K7Tool
