// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The resolver file as it is written and read, and the DHCP client's result files.
#include "support/SystemTree.h"

#include "OS/System/Network.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Kivo;
using namespace K7Test;
using Network = K7SystemUtil::Network;

namespace {

constexpr const char* RESOLVER = "/etc/resolv.conf";
constexpr const char* FALLBACK = "/var/nvr/resolv.conf";

constexpr const char* UNSET_RENDERING = "# nameserver not set\n"
                                        "# nameserver not set\n"
                                        "nameserver 8.8.8.8  ##< google IPv4 DNS1.\n"
                                        "nameserver 8.8.4.4  ##< google IPv4 DNS2.\n"
                                        "\n"
                                        "# nameserver not set\n"
                                        "# nameserver not set\n"
                                        "nameserver 2001:4860:4860::8888  ##< google IPv6 DNS1.\n"
                                        "nameserver 2001:4860:4860::8844  ##< google IPv6 DNS2.\n"
                                        "\n"
                                        "options timeout:1 attempts:2\n"
                                        "\n";

template <class Address>
Address parsed(const char* text)
{
    Address address;
    EXPECT_TRUE(address.fromString(text)) << text;
    return address;
}

J3String server(bool first) { return Network::getDnsIpAddress(0, first).toString(); }

J3String serverV6(bool first) { return Network::getDnsIpAddressV6(0, first).toString(); }

/// Leaves no name server behind for the next test.
class ResolverFile : public ::testing::Test {
protected:
    ~ResolverFile() override
    {
        Network::clearDnsIpAddress();
        Network::clearDnsIpAddressV6();
    }

    TemporaryTree tree;
};

} // namespace

TEST_F(ResolverFile, IsRenderedByteForByte)
{
    tree.directory("/etc");
    updateResolvConf();
    EXPECT_EQ(tree.contents(RESOLVER), UNSET_RENDERING);

    Network::setDnsIpAddress(parsed<K7IPv4Address>("192.168.0.1"));
    Network::setDnsIpAddress(parsed<K7IPv6Address>("fd00::53"));
    std::string expected = UNSET_RENDERING;
    expected.replace(0, 20, "nameserver 192.168.0.1");
    expected.replace(expected.find("\n\n# nameserver not set") + 2, 20, "nameserver fd00::53");
    EXPECT_EQ(tree.contents(RESOLVER), expected);
    EXPECT_EQ(server(true), L"192.168.0.1");
    EXPECT_EQ(server(false), L"8.8.8.8");
    EXPECT_EQ(serverV6(true), L"fd00::53");
    EXPECT_EQ(serverV6(false), L"2001:4860:4860::8888");

    Network::clearDnsIpAddress();
    EXPECT_EQ(server(true), L"8.8.8.8");
    EXPECT_EQ(serverV6(true), L"fd00::53");
    Network::clearDnsIpAddressV6();
    EXPECT_EQ(tree.contents(RESOLVER), UNSET_RENDERING);
}

TEST_F(ResolverFile, GoesToItsSecondPlaceWhenTheFirstCannotBeWritten)
{
    tree.directory("/var/nvr");
    Network::setDnsIpAddress(parsed<K7IPv4Address>("10.1.2.3"));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    EXPECT_TRUE(tree.contents(FALLBACK).starts_with("nameserver 10.1.2.3\n"));
    EXPECT_EQ(server(true), L"10.1.2.3");
    struct stat status;
    ASSERT_EQ(::stat(tree.real(FALLBACK).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777 & ~0644U, 0U);
}

TEST_F(ResolverFile, IsNotWrittenWhereThereIsNoPlace)
{
    Network::setDnsIpAddress(parsed<K7IPv4Address>("10.1.2.3"));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"updateResolvConf");
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
    EXPECT_FALSE(Network::getDnsIpAddress(0, true).isValid());

    tree.directory("/etc"); // what was set is remembered all the same
    updateResolvConf();
    EXPECT_EQ(server(true), L"10.1.2.3");
}

TEST_F(ResolverFile, ReplacesALongerOne)
{
    tree.file(RESOLVER, std::string(5000, '#'));
    updateResolvConf();
    EXPECT_EQ(tree.contents(RESOLVER), UNSET_RENDERING);
}

TEST(NameServer, IsTakenFromLinesOfEveryShape)
{
    const std::string longest(256, '0');

    const struct {
        std::string text;
        const wchar_t* first;
        const wchar_t* second;
    } cases[] = {
        {"nameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\n", L"10.0.0.1", L"10.0.0.2"},
        {"nameserver\t \t10.0.0.1\t# mine\n", L"10.0.0.1", L"0.0.0.0"},
        {"nameserver 10.0.0.1", L"10.0.0.1", L"0.0.0.0"},
        {"nameserver fd00::1\nnameserver 10.0.0.1\n", L"10.0.0.1", L"0.0.0.0"},
        {"# nameserver 10.0.0.1\n nameserver 10.0.0.2\n;nameserver 10.0.0.3\n", L"0.0.0.0", L"0.0.0.0"},
        {"nameserver10.0.0.1\nnameservers 10.0.0.2\nnameserver\nnameserver \n", L"0.0.0.0", L"0.0.0.0"},
        {"search example.org\r\nnameserver 10.0.0.1\r\n", L"10.0.0.1", L"0.0.0.0"},
        {"nameserver 10.0.0.256\nnameserver ten\nnameserver 10.1\n", L"10.0.0.1", L"0.0.0.0"},
        {"nameserver " + longest + "1\nnameserver 10.0.0.1\n", L"0.0.0.0", L"10.0.0.1"}, // cut to 0, which counts
        {"nameserver " + std::string(257, '1') + "\nnameserver 10.0.0.1\n", L"10.0.0.1", L"0.0.0.0"},
        {std::string(19, '\n') + "nameserver 10.0.0.1\nnameserver 10.0.0.2\n", L"10.0.0.1", L"0.0.0.0"},
        {std::string(20, '\n') + "nameserver 10.0.0.1\n", L"0.0.0.0", L"0.0.0.0"},
        {std::string(511, '#') + "nameserver 10.0.0.1\n", L"10.0.0.1", L"0.0.0.0"},
        {"", L"0.0.0.0", L"0.0.0.0"},
    };

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file(RESOLVER, test.text);
        EXPECT_EQ(server(true), test.first) << test.text;
        EXPECT_EQ(server(false), test.second) << test.text;
    }
}

TEST(NameServer, OfIPv6LeavesItsScopeAndIPv4Out)
{
    TemporaryTree tree;
    tree.file(RESOLVER, "nameserver 10.0.0.1\nnameserver fe80::1%eth0\nnameserver ::g\nnameserver fd00::2\n");
    EXPECT_EQ(serverV6(true), L"fe80::1");
    EXPECT_EQ(serverV6(false), L"fd00::2");
}

TEST(NameServer, OfTheDhcpClientHasNoSecondPlace)
{
    TemporaryTree tree;
    tree.file(RESOLVER, "nameserver 10.0.0.1\n").file(FALLBACK, "nameserver 10.0.0.2\n");
    EXPECT_FALSE(Network::getAutoDnsIpAddress().isValid());
    tree.file("/etc/resolv.conf.org", "domain lan\nnameserver 10.0.0.3\nnameserver 10.0.0.4\n");
    EXPECT_EQ(Network::getAutoDnsIpAddress().toString(), L"10.0.0.3");
    EXPECT_EQ(server(true), L"10.0.0.1");
}

TEST(DhcpResult, IsTheFirstNumber)
{
    const struct {
        std::string text;
        bool read;
        bool leased;
    } cases[] = {{"1\n", true, true},
                 {"0\n", true, false},
                 {" \t-1", true, true},
                 {"none\n\n0\n1", true, false},
                 {"7 days\n", true, true},
                 {std::string(128, ' ') + "1\n", true, true},
                 {std::string(128, 'x') + "1\n", true, true},
                 {std::string(127, 'x') + "1\n", false, true},
                 {"", false, true},
                 {"none\n", false, true}};

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/var/nvr/udhcpc-wan.stat", test.text);
        bool leased = true;
        EXPECT_EQ(Network::getWanDhcpcLeaseResult(&leased), test.read) << test.text;
        EXPECT_EQ(leased, test.leased) << test.text;
        EXPECT_EQ(Network::getWanDhcpcLeaseResult(nullptr), test.read) << test.text;
        EXPECT_FALSE(Network::getVinDhcpcLeaseResult(&leased));
        tree.file("/var/nvr/udhcpc-vin.stat", test.text);
        EXPECT_EQ(Network::getVinDhcpcLeaseResult(&leased), test.read) << test.text;
    }
}
