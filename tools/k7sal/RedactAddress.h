// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stand-ins for network addresses.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace K7Tool {

using Random = std::mt19937_64;

/// An IPv4 address in its first four bytes, or an IPv6 address; network byte order.
using IpBytes = std::array<std::uint8_t, 16>;

/// The leading bits of an address, the rest being 0.
struct IpPrefix {
    IpBytes bits;
    unsigned length;

    friend auto operator<=>(const IpPrefix&, const IpPrefix&) = default; // NOLINT(modernize-use-nullptr)
};

/// Stand-ins for the addresses of one family.
///
/// Networks are moved as a whole, inside the network that holds them, and their hosts inside them: what was in one
/// subnet stays in one, a network's own address and its broadcast address stay such. Ranges with a meaning of their own
/// (private, link-local, loopback, multicast) stay where they are. No stand-in is the original of another address as
/// long as there is room.
class IpStandIns {
public:
    /// A range that stays; with @p hosts, every address of it does too.
    struct FixedRange {
        IpPrefix prefix;
        bool hosts;
    };

    /// @param width bits of an address
    IpStandIns(unsigned width, std::span<const FixedRange> ranges, Random& random);

    /// @{ Learn what is there; only before the first stand-in.
    void learnNetwork(const IpBytes& address, unsigned length);
    void learnAddress(const IpBytes& address) { _originals.insert(address); }
    /// @}

    /// @param chooseHost fills the bits behind those that the network has; by default they are random
    IpBytes standIn(const IpBytes& address, const std::function<void(IpBytes*)>& chooseHost = {});

private:
    struct Network {
        IpBytes standIn{};
        bool hostsStay = false;
        bool settled = false;
    };

    void settle();
    [[nodiscard]] std::optional<IpPrefix> parentOf(const IpBytes& address, unsigned shorterThan) const;
    [[nodiscard]] bool isTaken(const IpBytes& address, unsigned from, unsigned to) const;
    IpBytes chooseFree(const IpBytes& base, unsigned from, unsigned to, const IpBytes& original);

    unsigned _width;
    Random& _random;
    bool _settled = false;
    std::vector<IpPrefix> _fixed;
    std::map<IpPrefix, Network> _networks; ///< by their originals
    std::set<unsigned> _lengths;           ///< of the networks
    std::set<IpPrefix> _takenNetworks;
    std::set<IpBytes> _takenHosts;
    std::set<IpBytes> _originals;
    std::map<IpBytes, IpBytes> _hosts;
};

/// Stand-ins for MAC and IP addresses, new ones in every object.
class AddressMap {
public:
    AddressMap();

    /// @{ Learn what is there; only before the first stand-in. A length of the whole address learns the address.
    void learnMac(const std::vector<std::uint8_t>& mac) { _macOriginals.insert(mac); }
    void learnV4(const IpBytes& address, unsigned length = 32);
    void learnV6(const IpBytes& address, unsigned length = 128);
    /// @}

    [[nodiscard]] bool knowsMac(const std::vector<std::uint8_t>& mac) const { return _macOriginals.contains(mac); }

    /// @param mac 6, 8 or 20 bytes. Zero and broadcast stay; multicast and local administration stay what they are.
    std::vector<std::uint8_t> mac(const std::vector<std::uint8_t>& mac);
    IpBytes v4(const IpBytes& address);

    /// An interface identifier that holds a MAC address holds its stand-in afterwards, an address that holds an IPv4
    /// address that one's.
    IpBytes v6(const IpBytes& address);

    Random& random() { return _random; }

private:
    Random _random;
    IpStandIns _v4;
    IpStandIns _v6;
    std::set<std::vector<std::uint8_t>> _macOriginals;
    std::map<std::vector<std::uint8_t>, std::vector<std::uint8_t>> _macs;
    std::set<std::vector<std::uint8_t>> _takenMacs;
};

} // namespace K7Tool
