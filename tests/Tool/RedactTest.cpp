// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stand-ins: what they keep, and that nothing of the originals is left.
#include "Redact.h"

#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/ToolRun.h"
#include "support/VethPair.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>

#include <arpa/inet.h>
#include <unistd.h>

using namespace K7Test;
using namespace K7Tool;
using Json = nlohmann::json;
namespace fs = std::filesystem;

namespace {

std::string redactedAlone(const std::string& text, FileForm form = FileForm::TEXT)
{
    Redactor redactor;
    redactor.learn(text, form);
    return redactor.redacted(text, form);
}

std::uint32_t v4(const std::string& text)
{
    in_addr address{};
    EXPECT_EQ(::inet_pton(AF_INET, text.c_str(), &address), 1) << text;
    return ntohl(address.s_addr);
}

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

} // namespace

TEST(Redact, LeavesWhatTellsNothingOfTheOwner)
{
    for (const char* const text :
         {"127.0.0.1", "0.0.0.0/0", "255.255.255.0", "255.255.255.255", "224.0.0.251", "::", "::1", "ff02::1",
          "fe80::", "00:00:00:00:00:00", "ff:ff:ff:ff:ff:ff", "0000:00:01.0", "Linux version 6.1.0 (gcc 12.2.0)",
          "12:34:56", "2026-11-21T18:00:00Z", "eth0: 123 456", "K7::castFrom", "1.2.3.4-rc1", "300.1.2.3"})
        EXPECT_EQ(redactedAlone(text), text);
}

TEST(Redact, KeepsNetworksTogether)
{
    const auto words = wordsOf(redactedAlone("192.168.40.0/24 192.168.40.1 192.168.40.12 192.168.40.255 "
                                             "10.20.16.0/20 10.20.30.1 203.0.113.64/26 203.0.113.77"));
    ASSERT_EQ(words.size(), 8U);
    const std::uint32_t lan = v4(words[0].substr(0, words[0].find('/')));
    EXPECT_EQ(lan >> 16U, 0xC0A8U) << "private stays private";
    EXPECT_EQ(lan & 0xFFU, 0U) << "a network's address stays one";
    EXPECT_NE(lan, v4("192.168.40.0"));
    EXPECT_EQ(v4(words[1]) >> 8U, lan >> 8U) << "the gateway stays in the subnet";
    EXPECT_EQ(v4(words[2]) >> 8U, lan >> 8U);
    EXPECT_NE(words[1], words[2]);
    EXPECT_EQ(v4(words[3]), lan | 0xFFU) << "broadcast stays broadcast";
    EXPECT_EQ(v4(words[5]) >> 12U, v4(words[4].substr(0, words[4].find('/'))) >> 12U);
    EXPECT_EQ(v4(words[5]) >> 24U, 10U);
    EXPECT_EQ(v4(words[7]) >> 6U, v4(words[6].substr(0, words[6].find('/'))) >> 6U);
}

TEST(Redact, SpellsOneAddressAlikeInEveryForm)
{
    const std::string texts = "52:54:00:A1:b2:03 52-54-00-a1-b2-03 enx525400a1b203 fe80::5054:ff:fea1:b203 192.168.7.9";
    const std::string route = "eth0\t0007A8C0\t0907A8C0\t0003\t0\t0\t0\t00FFFFFF\t0\t0\t0\n";
    const std::string inet6 = "fe80000000000000505400fffea1b203 02 40 20 80     eth0\n";
    Redactor redactor;
    redactor.learn(texts);
    redactor.learn(route, FileForm::ROUTES);
    redactor.learn(inet6, FileForm::IPV6_ENTRIES);
    const auto words = wordsOf(redactor.redacted(texts));
    std::string mac = words[1];
    mac.erase(std::remove(mac.begin(), mac.end(), '-'), mac.end());
    EXPECT_EQ(words[2], "enx" + mac);
    EXPECT_EQ(wordsOf(redactor.redacted(words[0])).size(), 1U);
    in6_addr local{};
    ASSERT_EQ(::inet_pton(AF_INET6, words[3].c_str(), &local), 1);
    const std::string digits = wordsOf(redactor.redacted(inet6, FileForm::IPV6_ENTRIES))[0];
    EXPECT_EQ(digits.substr(0, 16), "fe80000000000000");
    EXPECT_EQ(digits.substr(18, 14), mac.substr(2, 4) + "fffe" + mac.substr(6)) << "the identifier holds the MAC";
    const auto fields = wordsOf(redactor.redacted(route, FileForm::ROUTES));
    const std::uint32_t gateway = ntohl(static_cast<std::uint32_t>(std::stoul(fields[2], nullptr, 16)));
    EXPECT_EQ(__builtin_bswap32(static_cast<std::uint32_t>(std::stoul(fields[2], nullptr, 16))), v4(words[4]));
    EXPECT_NE(gateway, 0U);
    EXPECT_EQ(fields[1].substr(0, 2), "00");
    EXPECT_EQ(fields[7], "00FFFFFF");
}

TEST(Redact, ReplacesNamesEverywhereButInTheTreesOwn)
{
    Redactor redactor;
    redactor.learn("recorder-7\n", FileForm::HOST_NAME);
    redactor.learn("WD-WCC4N12\n", FileForm::SERIAL);
    redactor.keepInPaths("/proc/sys/kernel/hostname");
    EXPECT_EQ(redactor.redacted("a RECORDER-7.lan"), "a host-1.lan");
    EXPECT_EQ(redactor.redacted("recorder-71"), "recorder-71");
    const std::string serial = redactor.redacted("disk WD-WCC4N12;");
    EXPECT_EQ(serial.size(), std::string("disk WD-WCC4N12;").size());
    EXPECT_EQ(serial.find("WCC4N12"), std::string::npos);
    Redactor unlucky;
    unlucky.learn("kernel\n", FileForm::HOST_NAME);
    unlucky.keepInPaths("/proc/sys/kernel/hostname");
    EXPECT_EQ(unlucky.redacted("/proc/sys/kernel/hostname"), "/proc/sys/kernel/hostname");
    EXPECT_EQ(unlucky.redacted("kernel\n", FileForm::HOST_NAME), "host-1\n");
}

TEST(Redact, KeepsTheShapeOfACommandLine)
{
    const std::string kernel = redactedAlone("console=ttyS0 secret root=/dev/sda1 key=ttyS0\n", FileForm::COMMAND_LINE);
    EXPECT_EQ(kernel, "console=redacted-1 redacted-2 root=redacted-3 key=redacted-1\n");
    const std::string process(redactedAlone(std::string("nvr\0--password\0x\0", 17), FileForm::COMMAND_LINE));
    EXPECT_EQ(process, std::string("nvr\0redacted-1\0redacted-2\0", 26));
}

/// A whole machine, searched for each of its own addresses and names in every spelling.
TEST(RedactLive, LeavesNothingOfTheOriginals)
{
    K7_REQUIRE_SANDBOX();
    withoutLinkLocalAddresses();
    const VethPair pair("k7red0", "k7red1");
    ASSERT_TRUE(ip("link set k7red0 address 52:54:00:a1:b2:c3\naddr add 10.92.3.4/20 dev k7red0\n"
                   "addr add 2001:db8:92::5/64 dev k7red0 nodad\nroute add default via 10.92.7.9\n"));
    ASSERT_EQ(::sethostname("box-of-acme", 11), 0);
    const CoveredFile commandLine("/proc/cmdline", "console=ttyS0 token=s3cr3tword\n");
    const TemporaryTree tree(false);
    const std::string copy = tree.real("/copy").string();
    ASSERT_EQ(runTool({"capture", "--redact", copy}).exitCode, 0);
    const char* const originals[] = {"525400a1b2c3",     "52:54:00:a1:b2:c3", "52-54-00-a1-b2-c3", "5054:ff:fea1:b2c3",
                                     "505400fffea1b2c3", "10.92.3.4",         "10.92.7.9",         "09075c0a",
                                     "10.92.0.0",        "2001:db8:92:",      "20010db80092",      "box-of-acme",
                                     "s3cr3tword"};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(copy)) {
        std::string text = entry.path().lexically_relative(copy).string() + "\n";
        if (entry.is_symlink()) {
            text += fs::read_symlink(entry.path()).string();
        } else if (entry.is_regular_file()) {
            std::ifstream file(entry.path());
            text.append(std::istreambuf_iterator<char>(file), {});
        }
        std::transform(text.begin(), text.end(), text.begin(), ::tolower);
        for (const char* const original : originals)
            EXPECT_EQ(text.find(original), std::string::npos) << original << " in " << entry.path();
    }
    const Outcome report = runTool({"--root", copy, "report", "--json", "network_interfaces", "routes", "host"});
    const Json replayed = Json::parse(report.output);
    const Json reported = Json::parse(tree.contents("/copy/k7sal/report.json"));
    for (std::size_t i = 0; i < reported["network_interfaces"].size(); ++i)
        for (const char* const key : {"name", "mac", "ipv4_addresses", "ipv4_gateway", "ipv6_addresses"})
            EXPECT_EQ(replayed["network_interfaces"][i][key], reported["network_interfaces"][i][key]) << i << key;
    EXPECT_EQ(replayed["routes"], reported["routes"]);
    EXPECT_EQ(replayed["host"]["name"], "host-1");
    EXPECT_EQ(replayed["host"]["command_line"], "console=redacted-1 token=redacted-2");
}
