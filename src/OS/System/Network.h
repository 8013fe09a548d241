// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network interfaces, name servers and reachability.
#pragma once

#include "Core/K7EthDevInfo.h"
#include "Core/K7InetAddress.h"
#include "OS/System/K7SystemUtilClass.h"

#include <optional>
#include <string>
#include <vector>

namespace Kivo {

/// Queries of one named network interface ("eth0"), lists of all interfaces and routes, and the name servers that the
/// resolver uses.
///
/// Every query opens what it needs, reads, closes and returns; nothing is cached. A name of more than 15 bytes names no
/// interface. Unless said otherwise an operation gives false on failure, leaves its outputs as they were and tells
/// K7SystemUtil::lastFailure() the reason and the interface or file that it is about. "No address", "no route" and a
/// file that is not there (IPv6 is off, the DHCP client never ran) are answers: false without a reason. A file that is
/// there and cannot be opened or read to its end is a failure.
///
/// What is asked of the kernel by a socket (addresses, IPv4 masks, links, offload) needs the live system; what is read
/// from a file follows the system root.
///
/// *Threads*: any, except for the name servers, which one configuring thread sets and clears.
class K7SAL_API K7SystemUtil::Network {
public:
    Network() = delete;

    /// The longest that getAddrInfo() waits for an answer, in ms.
    static constexpr uint32 ADDR_INFO_TIMEOUT = 5000;

    /// The longest that testConnectivity() takes, its name resolution included, in ms.
    static constexpr uint32 CONNECTIVITY_TIMEOUT = 3000;

    /// Traffic of one direction since the interface came to be. A counter of 32 bits is the lower half of the kernel's.
    struct NetDevIoCounters {
        uint64 bytes;
        uint64 packets;
        uint32 errs;
        uint32 drop;
        uint32 fifo;
        uint32 colls;   ///< transmission only, 0 for reception
        uint32 carrier; ///< transmission only, 0 for reception
        uint32 frame;   ///< reception only, 0 for transmission
        uint32 compressed;
        uint32 multicast; ///< reception only, 0 for transmission
    };

    /// Traffic of one interface.
    struct NetDevIoStat {
        char devName[32]; ///< zero-terminated
        NetDevIoCounters rx;
        NetDevIoCounters tx;
    };

    /// Where an address counts, from the widest to the narrowest.
    enum class AddressScope : uint8 { GLOBAL, SITE, LINK, HOST };

    /// An address of an interface.
    struct InterfaceAddress {
        K7InetAddress address;
        uint32 prefixLength = 0; ///< 0 to 32, or 0 to 128
        AddressScope scope = AddressScope::GLOBAL;
    };

    /// Traffic of one direction since the interface came to be, as wide as the kernel counts it. What a direction does
    /// not count is 0, as in NetDevIoCounters.
    struct Traffic {
        uint64 bytes = 0;
        uint64 packets = 0;
        uint64 errs = 0;
        uint64 drop = 0;
        uint64 fifo = 0;
        uint64 colls = 0;
        uint64 carrier = 0;
        uint64 frame = 0;
        uint64 compressed = 0;
        uint64 multicast = 0;
    };

    /// What one pass over the kernel's lists tells of an interface. What is absent is not known.
    struct Interface {
        std::string name;
        std::optional<uint32> index;            ///< below a system root only of interfaces that have an IPv6 address
        std::optional<uint32> flags;            ///< IFF_UP and so on; live only
        std::optional<K7MacAddress> macAddress; ///< live only, and absent where hardware addresses are not six bytes
        std::optional<std::string> state;       ///< "up", "down" and so on, as sysfs has it; live only
        std::optional<uint32> mtu;              ///< bytes; live only
        std::optional<uint32> carrierChanges;   ///< how often the link came or went; live only
        std::optional<Traffic> received;
        std::optional<Traffic> sent;
        /// In the kernel's order; live only.
        std::optional<std::vector<InterfaceAddress>> ipv4;
        /// Absent when there is no file of them: IPv6 is off, or it was not captured.
        std::optional<std::vector<InterfaceAddress>> ipv6;
    };

    /// A route of either family.
    struct Route {
        K7InetAddress destination;
        uint32 prefixLength = 0; ///< 0 for a default route
        K7InetAddress gateway;   ///< not set when the destination is on the link
        std::string interfaceName;
        uint32 metric = 0; ///< the lower one wins
        uint32 flags = 0;  ///< RTF_UP, RTF_GATEWAY, RTF_REJECT and so on
    };

    /// A name server of the resolver file.
    struct NameServer {
        K7InetAddress address;
        std::string scope;      ///< the interface of a link-local server ("eth0"); empty when there is none
        uint32 line = 0;        ///< its line in the file, from 1
        bool isBuiltIn = false; ///< one of the public servers that updateResolvConf() writes to fall back to
    };

    /// The first so many name servers of the file are the ones that the C library asks; it ignores the rest.
    static constexpr std::size_t NAME_SERVERS_USED = 3;

    /// Which file the name servers were written to.
    struct ResolverFile {
        std::string path;    ///< `/etc/resolv.conf`, or the other one when that could not be written
        int32 errorCode = 0; ///< why `/etc/resolv.conf` was not written; 0 when it was
    };

    /// How many interfaces listInterfaces() gives; that there are more is a failure. The others likewise.
    static constexpr std::size_t MAX_INTERFACES = 16384;
    static constexpr std::size_t MAX_ADDRESSES = 131072;  ///< IPv6 addresses of all interfaces together
    static constexpr std::size_t MAX_ROUTES = 131072;     ///< of both families together
    static constexpr std::size_t MAX_NAME_SERVERS = 1024; ///< of the resolver file

    /// List every interface with what the kernel's lists tell of it, each of them read once.
    ///
    /// Interfaces come in the order of `/proc/net/dev`. IPv6 addresses come with the wider scope first and then in the
    /// order of `/proc/net/if_inet6`, so that a captured machine shows the same first address as the live one.
    /// @param interfaces is replaced
    /// @return false when a list could not be read; @p interfaces then holds what the others told
    /// *Source*: the routing socket (live only), `/proc/net/dev`, `/proc/net/if_inet6`. *Cost*: one pass, whatever the
    /// number.
    static bool listInterfaces(std::vector<Interface>* interfaces);

    /// List every IPv4 route of the main table, then every IPv6 route that the kernel shows, those to its own addresses
    /// and to multicast groups (RTF_LOCAL, RTF_ANYCAST, ff00::/8) included. Without IPv6 there are none of it.
    /// @param routes is replaced
    /// @return false when a list could not be read (ENOENT: there is no list of IPv4 routes); @p routes then holds what
    ///     the other told
    /// *Source*: `/proc/net/route`, `/proc/net/ipv6_route`
    static bool listRoutes(std::vector<Route>* routes);

    /// Read the first address that an interface has of the family.
    /// @return false, without a reason, when it has none or there is no such interface
    /// *Source*: getifaddrs
    /// @{
    static bool getIpAddress(const char* devName, K7IPv4Address* address);
    static bool getIpAddress(const char* devName, K7IPv6Address* address);
    /// @}

    /// Read the default gateway through an interface.
    ///
    /// A route counts when its interface's name begins @p devName: asking for eth10 finds a route of eth1, too.
    /// @return false, without a reason, when there is none
    /// *Source*: `/proc/net/route`
    static bool getGateway(const char* devName, K7IPv4Address* gateway);

    /// Read the gateway of the first IPv6 route that has one, whatever its destination; names match as for IPv4.
    /// *Source*: `/proc/net/ipv6_route`
    static bool getGateway(const char* devName, K7IPv6Address* gateway);

    /// Read the netmask that belongs to an interface's first IPv4 address.
    /// *Source*: SIOCGIFNETMASK
    static bool getSubnetMask(const char* devName, K7IPv4Address* mask);

    /// Read the network of an interface's first IPv6 address: the address with all bits beyond its prefix cleared.
    /// Names match as in getGateway(). @return false, without a reason, when it has none
    /// *Source*: `/proc/net/if_inet6`
    static bool getSubnetMask(const char* devName, K7IPv6Address* mask);

    /// The same by value. @return an address that is not set when the name is null or the query fails
    /// @{
    static K7IPv4Address getDefaultGateway(const char* devName);
    static K7IPv6Address getDefaultGatewayV6(const char* devName);
    static K7IPv4Address getSubnetMask(const char* devName);
    static K7IPv6Address getSubnetMaskV6(const char* devName);
    /// @}

    /// Read the hardware address of an interface.
    /// @param mac takes six bytes
    /// @param devName the interface
    /// *Source*: SIOCGIFHWADDR
    /// @{
    static bool getMacAddress(uint8* mac, const char* devName);
    static bool getMacAddress(K7MacAddress* mac, const char* devName);
    /// @}

    /// Whether an interface may have this hardware address: it is neither all zero nor multicast.
    static bool isValidMacAddress(const K7MacAddress& mac);

    /// Make the link-local address 169.254.x.y of the last two bytes of a hardware address.
    /// @param devName the interface to ask when @p mac is null; not used otherwise
    /// @param mac null to read the interface's; an address that is not set is the result when that fails
    static K7IPv4Address getDefaultLinkLocalAddressV4(const char* devName, const K7MacAddress* mac);

    /// Make the link-local address of a hardware address by the modified EUI-64 rule; the parameters are as for IPv4.
    static K7IPv6Address getDefaultLinkLocalAddressV6(const char* devName, const K7MacAddress* mac);

    /// Read the traffic counters of an interface.
    /// *Source*: `/proc/net/dev`. *Cost*: the kernel walks all interfaces up to the one asked for.
    static bool getNetDevIoStat(const char* devName, NetDevIoStat* stat);

    /// Whether an interface is both up and running; false when that cannot be told, which is a failure.
    /// *Source*: SIOCGIFFLAGS on a packet socket. *Privilege*: CAP_NET_RAW
    static bool getNetworkLink(const char* devName);

    /// Read whether an interface detects a physical link. Only the first 30 interfaces with an IPv4 address are known
    /// here.
    /// @param devName the interface
    /// @param link becomes false, too, when the interface is not among them
    /// *Source*: SIOCGIFCONF, ETHTOOL_GLINK
    static bool getEthernetLink(const char* devName, bool* link);

    /// Read the speed of a link in Mbit/s.
    /// @param devName the interface
    /// @param speed takes 10, 100 or 1000; it is left as it was, with true, at any other speed
    /// @return false, without a reason, when there is no speed, as while the link is down
    /// *Source*: `/sys/class/net/<device>/speed`
    static bool getEthernetLinkSpeed(const char* devName, int32* speed);

    /// Read whether the device gathers a packet from several pieces of memory when it sends.
    /// *Source*: ETHTOOL_GSG
    static bool getEthernetToolSG(const char* devName, bool* on);

    /// Switch scatter-gather on or off. *Source*: ETHTOOL_SSG. *Privilege*: CAP_NET_ADMIN
    static bool setEthernetToolSG(const char* devName, bool on);

    /// Switch scatter-gather of the WAN device on at 1000 Mbit/s and off at 10 and 100; at another speed, or when it is
    /// as it should be, nothing is done. Each step is reported to K7SystemError::trace(), its text as the tag.
    /// *Privilege*: CAP_NET_ADMIN
    static void fixupBugForEthernetFeatureSG(const K7EthDevInfo* info);

    /// The sockets in use in the system; 0 when that cannot be told. *Source*: `/proc/net/sockstat`
    static int32 getUsedSocketCount();

    /// Refresh both addresses of a device from the kernel, by the name of its interface. Without an IPv4 address
    /// nothing changes; without an IPv6 address that one becomes not set.
    /// @param info the device, which must be valid
    /// @param changed tells whether an address differs from the stored one; may be null
    static bool updateIpAddress(K7EthDevInfo* info, bool* changed);

    /// Refresh the hardware address of a device from the kernel, by the name of the device.
    static bool updateMacAddress(K7EthDevInfo* info);

    /// Resolve a host into the texts of its addresses, in the order in which they should be tried. A link-local one has
    /// its scope ("fe80::1%eth0").
    /// @param addresses is replaced
    /// @param host a name or a numeric address, which is resolved at once
    /// *Source*: getaddrinfo. *Cost*: blocks, never longer than ADDR_INFO_TIMEOUT; a resolver that takes longer goes on
    /// in the background, on a thread that touches nothing of the library's, until it gives up or the process exits.
    static bool getAddrInfo(std::vector<J3String>* addresses, const J3String& host);

    /// Whether a TCP connection to a host can be made through an interface. Several addresses are tried in turn, each
    /// with its share of the time.
    /// @param ifce the interface that the connection is bound to
    /// @param host a name or a numeric address; a link-local one without a scope is taken to be of that interface
    /// @param port 1 to 65535
    /// *Source*: SO_BINDTODEVICE. *Cost*: blocks, never longer than CONNECTIVITY_TIMEOUT.
    static bool testConnectivity(const char* ifce, const char* host, uint16 port);

    /// List every name server of the resolver file in force, in its order.
    /// @param servers is replaced
    /// @param path takes the file that was read; may be null
    /// @return false (ENOENT: there is no such file) when it cannot be read
    /// *Source*: `/etc/resolv.conf`, or else `/var/nvr/resolv.conf`
    static bool listNameServers(std::vector<NameServer>* servers, std::string* path = nullptr);

    /// Replace the stored name servers by the first two of each family in the resolver file in force, the built-in ones
    /// left out, so that a process that has just started can set or clear one family and keep the other. A link-local
    /// server with a scope cannot be stored and is left out, too. Without a file none is stored.
    /// @return false, with the stored ones as they were, when the file cannot be read
    static bool adoptDnsIpAddresses();

    /// Do what updateResolvConf() does and tell which file it wrote. Writing the fallback is a success, too, but does
    /// not change the name servers in force as long as there is an `/etc/resolv.conf`.
    /// @param written may be null
    /// @return false when neither was written; lastFailure() then tells about the first
    static bool writeResolverFile(ResolverFile* written = nullptr);

    /// Make an address the first name server of its family and write the resolver file with updateResolvConf().
    /// writeResolverFile() tells which file that is. *Privilege*: who may write the file
    /// @{
    static void setDnsIpAddress(const K7IPv4Address& address);
    static void setDnsIpAddress(const K7IPv6Address& address);
    /// @}

    /// Forget both name servers of the family and write the resolver file.
    /// @{
    static void clearDnsIpAddress();
    static void clearDnsIpAddressV6();
    /// @}

    /// Read the first or the second IPv4 name server in force from the first 20 lines of the resolver file.
    /// @return an address that is not set when there is none
    /// *Source*: `/etc/resolv.conf`, or else `/var/nvr/resolv.conf`
    static K7IPv4Address getDnsIpAddress(uint8 unused, bool first);

    /// The same for IPv6. A link-local server is given without its scope.
    static K7IPv6Address getDnsIpAddressV6(uint8 unused, bool first);

    /// Read the first IPv4 name server that the DHCP client was given. *Source*: `/etc/resolv.conf.org`
    static K7IPv4Address getAutoDnsIpAddress();

    /// Read whether the DHCP client has a lease for the WAN or the video input interface, from the first 20 lines.
    /// @param leased may be null
    /// @return false, without a reason, when its file is missing or holds no number
    /// *Source*: `/var/nvr/udhcpc-wan.stat`, `/var/nvr/udhcpc-vin.stat`
    /// @{
    static bool getWanDhcpcLeaseResult(bool* leased);
    static bool getVinDhcpcLeaseResult(bool* leased);
    /// @}

    /// Read the host name, which may have up to 63 bytes.
    /// @param name takes it
    /// @param devName not used
    static bool getHostName(J3String* name, const char* devName);
};

/// Write the resolver file with the name servers that were set, followed by public ones to fall back to.
///
/// A reader sees the old file or the new one, whatever happens. When `/etc/resolv.conf` cannot be written
/// `/var/nvr/resolv.conf` is, unless there is no room; Network::writeResolverFile() tells which. When neither is,
/// lastFailure() tells about the first.
/// *Privilege*: who may write the file
K7SAL_API void updateResolvConf();

} // namespace Kivo
