// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The resolver file, the DHCP client's result files and the host name.
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <arpa/inet.h>

namespace Kivo {

static K7IPv4Address s_resolv_DNS1_V4;
static K7IPv4Address s_resolv_DNS2_V4;
static K7IPv6Address s_resolv_DNS1_V6;
static K7IPv6Address s_resolv_DNS2_V6;

namespace {

constexpr const char* RESOLVER_PATH = "/etc/resolv.conf";
constexpr const char* RESOLVER_FALLBACK_PATH = "/var/nvr/resolv.conf";
constexpr const char* RESOLVER_FROM_DHCP_PATH = "/etc/resolv.conf.org";
constexpr std::size_t LINE_SIZE = 512;
constexpr std::size_t LEASE_LINE_SIZE = 129;
constexpr int LINES_EXAMINED = 20;
constexpr std::size_t SERVER_SIZE = 256;

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
    fillIn(&text, L"# tmpl_nameserver DNS1_IPv4", s_resolv_DNS1_V4);
    fillIn(&text, L"# tmpl_nameserver DNS2_IPv4", s_resolv_DNS2_V4);
    fillIn(&text, L"# tmpl_nameserver DNS1_IPv6", s_resolv_DNS1_V6);
    fillIn(&text, L"# tmpl_nameserver DNS2_IPv6", s_resolv_DNS2_V6);
    return text.to_string(STD_LOCALE_UTF8) + "\n";
}

UniqueFd openForWriting(const char* path) { return openSystemPath(path, O_WRONLY | O_CREAT | O_TRUNC, 0644); }

bool writeAll(int fd, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = retried([&] { return ::write(fd, text.data(), text.size()); });
        if (written <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// nameserver 192.168.0.1
/// "nameserver%*[ \t]%256s": the text of a server, which is empty when the line has none.
std::string parseNameserver(std::string_view line)
{
    constexpr std::string_view KEYWORD = "nameserver";
    std::string_view server;
    if (line.starts_with(KEYWORD)) {
        line.remove_prefix(KEYWORD.size());
        if (line.starts_with(' ') || line.starts_with('\t'))
            TextScanner(line).word(&server, SERVER_SIZE);
    }
    return std::string(server);
}

bool toAddress(const std::string& server, K7IPv4Address* address)
{
    in_addr value{};
    char text[INET_ADDRSTRLEN];
    return ::inet_aton(server.c_str(), &value) != 0 && ::inet_ntop(AF_INET, &value, text, sizeof text) &&
           address->fromString(text);
}

bool toAddress(const std::string& server, K7IPv6Address* address)
{
    return address->fromString(server.substr(0, server.find('%')).c_str());
}

/// The first or the second server of the family in the first 20 lines of a resolver file.
/// @return false when there is no such file
template <class Address>
bool readServer(const char* path, bool first, Address* address)
{
    SystemLines lines(path, LINE_SIZE);
    if (!lines)
        return false;
    int toPassOver = first ? 0 : 1;
    std::string_view line;
    for (int count = 0; count < LINES_EXAMINED && lines.next(&line); ++count) {
        Address found;
        if (toAddress(parseNameserver(line), &found) && toPassOver-- == 0) {
            *address = found;
            break;
        }
    }
    return true;
}

template <class Address>
Address serverInForce(bool first)
{
    Address address;
    if (!readServer(RESOLVER_PATH, first, &address))
        readServer(RESOLVER_FALLBACK_PATH, first, &address);
    return address;
}

bool readLeaseResult(const char* path, bool* leased)
{
    SystemLines lines(path, LEASE_LINE_SIZE);
    std::string_view line;
    int32 result = 0;
    while (lines && lines.next(&line)) {
        if (!TextScanner(line).number(&result))
            continue;
        if (leased)
            *leased = result != 0;
        return true;
    }
    return false;
}

} // namespace

void updateResolvConf()
{
    attempt("updateResolvConf", [] {
        UniqueFd file = openForWriting(RESOLVER_PATH);
        if (!file)
            file = openForWriting(RESOLVER_FALLBACK_PATH);
        requireCall(static_cast<bool>(file), "fopen() failed");
        requireCall(writeAll(file.get(), renderedResolvConf()), "write() failed");
    });
}

void K7SystemUtil::Network::setDnsIpAddress(const K7IPv4Address& address)
{
    s_resolv_DNS1_V4 = address;
    updateResolvConf();
}

void K7SystemUtil::Network::setDnsIpAddress(const K7IPv6Address& address)
{
    s_resolv_DNS1_V6 = address;
    updateResolvConf();
}

void K7SystemUtil::Network::clearDnsIpAddress()
{
    s_resolv_DNS1_V4.setValue(0);
    s_resolv_DNS2_V4.setValue(0);
    updateResolvConf();
}

void K7SystemUtil::Network::clearDnsIpAddressV6()
{
    s_resolv_DNS1_V6.clear();
    s_resolv_DNS2_V6.clear();
    updateResolvConf();
}

K7IPv4Address K7SystemUtil::Network::getDnsIpAddress(uint8, bool first) { return serverInForce<K7IPv4Address>(first); }

K7IPv6Address K7SystemUtil::Network::getDnsIpAddressV6(uint8, bool first)
{
    return serverInForce<K7IPv6Address>(first);
}

K7IPv4Address K7SystemUtil::Network::getAutoDnsIpAddress()
{
    K7IPv4Address address;
    readServer(RESOLVER_FROM_DHCP_PATH, true, &address);
    return address;
}

bool K7SystemUtil::Network::getWanDhcpcLeaseResult(bool* leased)
{
    return readLeaseResult("/var/nvr/udhcpc-wan.stat", leased);
}

bool K7SystemUtil::Network::getVinDhcpcLeaseResult(bool* leased)
{
    return readLeaseResult("/var/nvr/udhcpc-vin.stat", leased);
}

bool K7SystemUtil::Network::getHostName(J3String* name, const char*)
{
    return attempt("Network::getHostName", [&] {
        require(name, "invalid input parameters");
        requireLiveSystem();
        char buffer[64] = {};
        requireCall(::gethostname(buffer, sizeof buffer) == 0, "gethostname() failed");
        name->format(L"%s", buffer);
    });
}

} // namespace Kivo
