// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The resolver file, the DHCP client's result files and the host name.
#include "Foundation/J3Immortal.h"
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/FileReplacement_p.h"
#include "OS/System/Platform/Linux/detail/ResolverParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

namespace Kivo {

static J3Immortal<K7IPv4Address> s_resolv_DNS1_V4;
static J3Immortal<K7IPv4Address> s_resolv_DNS2_V4;
static J3Immortal<K7IPv6Address> s_resolv_DNS1_V6;
static J3Immortal<K7IPv6Address> s_resolv_DNS2_V6;

namespace {

using Network = K7SystemUtil::Network;

constexpr const char* RESOLVER_PATH = "/etc/resolv.conf";
constexpr const char* RESOLVER_FALLBACK_PATH = "/var/nvr/resolv.conf";
constexpr const char* RESOLVER_FROM_DHCP_PATH = "/etc/resolv.conf.org";
constexpr const char* CANT_OPEN = "can't open the file";
constexpr mode_t RESOLVER_MODE = 0644;
constexpr std::size_t LINE_SIZE = 512;
constexpr std::size_t LEASE_LINE_SIZE = 129;
constexpr int LINES_EXAMINED = 20;

constexpr const wchar_t* RESOLVER_TEMPLATE = L"# tmpl_nameserver DNS1_IPv4\n"
                                             L"# tmpl_nameserver DNS2_IPv4\n"
                                             L"nameserver 8.8.8.8  ##< google IPv4 DNS1.\n"
                                             L"nameserver 8.8.4.4  ##< google IPv4 DNS2.\n"
                                             L"\n"
                                             L"# tmpl_nameserver DNS1_IPv6\n"
                                             L"# tmpl_nameserver DNS2_IPv6\n"
                                             L"nameserver 2001:4860:4860::8888  ##< google IPv6 DNS1.\n"
                                             L"nameserver 2001:4860:4860::8844  ##< google IPv6 DNS2.\n"
                                             L"\n"
                                             L"options timeout:1 attempts:2\n";

template <class Address>
void fillIn(J3String* text, const wchar_t* marker, const Address& server)
{
    J3String line(L"# nameserver not set");
    if (server.isValid())
        line.format(L"nameserver %@", &server);
    text->replace(marker, line, false);
}

std::string renderedResolvConf()
{
    J3String text(RESOLVER_TEMPLATE);
    fillIn(&text, L"# tmpl_nameserver DNS1_IPv4", *s_resolv_DNS1_V4);
    fillIn(&text, L"# tmpl_nameserver DNS2_IPv4", *s_resolv_DNS2_V4);
    fillIn(&text, L"# tmpl_nameserver DNS1_IPv6", *s_resolv_DNS1_V6);
    fillIn(&text, L"# tmpl_nameserver DNS2_IPv6", *s_resolv_DNS2_V6);
    return text.to_string(STD_LOCALE_UTF8) + "\n";
}

/// Whether a line, with its line feed, is one of the public servers that the template ends in.
bool isBuiltIn(std::string_view line)
{
    static const J3Immortal<std::string> text(J3String(RESOLVER_TEMPLATE).to_string(STD_LOCALE_UTF8));
    return text->find(line) != std::string::npos;
}

/// @return false, with the failure noted unless the file is not there, when it cannot be opened
bool isOpen(const SystemLines& lines, const char* path)
{
    const int errorCode = errno;
    if (!lines && errorCode != ENOENT)
        noteFailure({CANT_OPEN, errorCode, path});
    errno = errorCode;
    return static_cast<bool>(lines);
}

enum class Unreadable {
    PASSED_OVER, ///< a file that cannot be opened is noted as a failure, and the next one taken
    REFUSED      ///< it is the operation's failure
};

/// Call @p read with the lines of the resolver file in force and its path. @return false when there is none
template <class Read>
bool withResolverFile(Unreadable unreadable, std::size_t lineSize, Read&& read)
{
    for (const char* const path : {RESOLVER_PATH, RESOLVER_FALLBACK_PATH}) {
        SystemLines lines(path, lineSize);
        if (isOpen(lines, path)) {
            read(lines, path);
            return true;
        }
        requireCall(unreadable == Unreadable::PASSED_OVER || errno == ENOENT, CANT_OPEN, path);
    }
    return false;
}

/// The first or the second server of the family in the first 20 lines.
template <class Address>
Address findServer(SystemLines& lines, bool first)
{
    int toPassOver = first ? 0 : 1;
    std::string_view line;
    for (int count = 0; count < LINES_EXAMINED && lines.next(&line); ++count) {
        Address found;
        if (parseServer(parseServerText(line), &found) && toPassOver-- == 0)
            return found;
    }
    return {};
}

template <class Address>
Address serverInForce(const char* operation, bool first)
{
    return attemptOr(operation, Address(), [&] {
        Address address;
        withResolverFile(Unreadable::PASSED_OVER, LINE_SIZE,
                         [&](SystemLines& lines, const char*) { address = findServer<Address>(lines, first); });
        return address;
    });
}

void readNameServers(SystemLines& lines, const char* path, std::vector<Network::NameServer>* servers)
{
    Network::NameServer server;
    bool atLineStart = true;
    for (std::string_view piece; lines.next(&piece);) {
        server.line += atLineStart ? 1 : 0;
        if (atLineStart && parseNameServer(piece, &server)) {
            require(servers->size() < Network::MAX_NAME_SERVERS, "more name servers than MAX_NAME_SERVERS", path);
            server.isBuiltIn = isBuiltIn(piece);
            servers->push_back(server);
        }
        atLineStart = piece.ends_with('\n');
    }
    require(!lines.failed(), "can't read the file", path);
}

bool readLeaseResult(const char* operation, const char* path, bool* leased)
{
    return attempt(operation, [&] {
        SystemLines lines(path, LEASE_LINE_SIZE);
        std::string_view line;
        bool result = false;
        if (!isOpen(lines, path))
            return false;
        for (int count = 0; count < LINES_EXAMINED && lines.next(&line); ++count) {
            if (!parseLeaseResult(line, &result))
                continue;
            if (leased)
                *leased = result;
            return true;
        }
        return false;
    });
}

/// Whether a failure leaves no hope that another file would take the place of this one.
bool isFull(int32 errorCode) { return errorCode == ENOSPC || errorCode == EDQUOT || errorCode == EIO; }

Network::ResolverFile writeResolver()
{
    const std::string text = renderedResolvConf();
    try {
        replaceFile(RESOLVER_PATH, text, RESOLVER_MODE);
        return {RESOLVER_PATH, 0};
    } catch (const Reason& reason) {
        noteFailure(reason);
        if (isFull(reason.errorCode))
            throw;
        replaceFile(RESOLVER_FALLBACK_PATH, text, RESOLVER_MODE);
        return {RESOLVER_FALLBACK_PATH, reason.errorCode};
    }
}

/// The first two servers of the family that the application could have set.
template <class Address>
std::array<Address, 2> ownServers(const std::vector<Network::NameServer>& servers,
                                  const Address& (K7InetAddress::*addressOf)() const)
{
    std::array<Address, 2> found;
    std::size_t count = 0;
    for (const Network::NameServer& server : servers) {
        const Address& address = (server.address.*addressOf)();
        if (count < found.size() && !server.isBuiltIn && server.scope.empty() && address.isValid())
            found[count++] = address;
    }
    return found;
}

} // namespace

void updateResolvConf()
{
    attempt("updateResolvConf", [] { writeResolver(); });
}

bool K7SystemUtil::Network::writeResolverFile(ResolverFile* written)
{
    return attempt("Network::writeResolverFile", [&] {
        const ResolverFile file = writeResolver();
        if (written)
            *written = file;
    });
}

bool K7SystemUtil::Network::listNameServers(std::vector<NameServer>* servers, std::string* path)
{
    return attempt("Network::listNameServers", [&] {
        require(servers, "servers is null");
        std::vector<NameServer> found;
        std::string foundIn;
        const bool exists =
            withResolverFile(Unreadable::REFUSED, SystemLines::BUFFER_SIZE, [&](SystemLines& lines, const char* file) {
                readNameServers(lines, file, &found);
                foundIn = file;
            });
        if (!exists)
            throw Reason{CANT_OPEN, ENOENT, RESOLVER_PATH};
        *servers = std::move(found);
        if (path)
            *path = std::move(foundIn);
        return true;
    });
}

bool K7SystemUtil::Network::adoptDnsIpAddresses()
{
    return attempt("Network::adoptDnsIpAddresses", [] {
        std::vector<NameServer> servers;
        if (!listNameServers(&servers) && lastFailure().errorCode != ENOENT)
            return false;
        const auto ipv4 = ownServers(servers, &K7InetAddress::ipv4Address);
        const auto ipv6 = ownServers(servers, &K7InetAddress::ipv6Address);
        *s_resolv_DNS1_V4 = ipv4[0];
        *s_resolv_DNS2_V4 = ipv4[1];
        *s_resolv_DNS1_V6 = ipv6[0];
        *s_resolv_DNS2_V6 = ipv6[1];
        return true;
    });
}

void K7SystemUtil::Network::setDnsIpAddress(const K7IPv4Address& address)
{
    attempt("Network::setDnsIpAddress", [&] {
        *s_resolv_DNS1_V4 = address;
        writeResolver();
    });
}

void K7SystemUtil::Network::setDnsIpAddress(const K7IPv6Address& address)
{
    attempt("Network::setDnsIpAddress", [&] {
        *s_resolv_DNS1_V6 = address;
        writeResolver();
    });
}

void K7SystemUtil::Network::clearDnsIpAddress()
{
    attempt("Network::clearDnsIpAddress", [] {
        s_resolv_DNS1_V4->setValue(0);
        s_resolv_DNS2_V4->setValue(0);
        writeResolver();
    });
}

void K7SystemUtil::Network::clearDnsIpAddressV6()
{
    attempt("Network::clearDnsIpAddressV6", [] {
        s_resolv_DNS1_V6->clear();
        s_resolv_DNS2_V6->clear();
        writeResolver();
    });
}

K7IPv4Address K7SystemUtil::Network::getDnsIpAddress(uint8, bool first)
{
    return serverInForce<K7IPv4Address>("Network::getDnsIpAddress", first);
}

K7IPv6Address K7SystemUtil::Network::getDnsIpAddressV6(uint8, bool first)
{
    return serverInForce<K7IPv6Address>("Network::getDnsIpAddressV6", first);
}

K7IPv4Address K7SystemUtil::Network::getAutoDnsIpAddress()
{
    return attemptOr("Network::getAutoDnsIpAddress", K7IPv4Address(), [] {
        SystemLines lines(RESOLVER_FROM_DHCP_PATH, LINE_SIZE);
        return isOpen(lines, RESOLVER_FROM_DHCP_PATH) ? findServer<K7IPv4Address>(lines, true) : K7IPv4Address();
    });
}

bool K7SystemUtil::Network::getWanDhcpcLeaseResult(bool* leased)
{
    return readLeaseResult("Network::getWanDhcpcLeaseResult", "/var/nvr/udhcpc-wan.stat", leased);
}

bool K7SystemUtil::Network::getVinDhcpcLeaseResult(bool* leased)
{
    return readLeaseResult("Network::getVinDhcpcLeaseResult", "/var/nvr/udhcpc-vin.stat", leased);
}

bool K7SystemUtil::Network::getHostName(J3String* name, const char*)
{
    return attempt("Network::getHostName", [&] {
        require(name, "name is null");
        requireLiveSystem();
        char buffer[64] = {};
        requireCall(::gethostname(buffer, sizeof buffer) == 0, "gethostname() failed");
        name->format(L"%s", buffer);
    });
}

} // namespace Kivo
