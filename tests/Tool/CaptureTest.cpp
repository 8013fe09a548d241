// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal capture, and --root on what it made or on what somebody mailed.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/TarFile.h"
#include "support/ToolRun.h"
#include "support/VethPair.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

#include <sys/mount.h>
#include <sys/stat.h>

using namespace K7Test;
using Json = nlohmann::json;
namespace fs = std::filesystem;

static const std::string BOARD = std::string(K7_FIXTURES) + "/virt-board";

namespace {

/// A directory for captures, which is also where archives are unpacked.
struct Captures {
    TemporaryTree tree{false};

    Captures()
    {
        tree.directory("/unpacked");
        ::setenv("TMPDIR", tree.real("/unpacked").c_str(), 1);
    }
    ~Captures() { ::unsetenv("TMPDIR"); }

    [[nodiscard]] std::string operator/(const std::string& name) const { return tree.real("/" + name).string(); }

    [[nodiscard]] static std::vector<std::string> namesIn(const std::string& directory)
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(directory))
            names.push_back(entry.path().filename());
        return names;
    }
};

Json reportOf(const std::string& root, const std::vector<std::string>& sections = {})
{
    std::vector<std::string> arguments{"report", "--json"};
    arguments.insert(arguments.end(), sections.begin(), sections.end());
    if (!root.empty())
        arguments.insert(arguments.end(), {"--root", root});
    return Json::parse(runTool(arguments).output);
}

/// What an archive of these entries is refused with.
std::string refusal(const Captures& captures, const std::function<void(TarFile&)>& fill)
{
    {
        TarFile archive(captures / "mailed.tar.gz");
        fill(archive);
    }
    const Outcome report = runTool({"--root", captures / "mailed.tar.gz", "report"});
    EXPECT_EQ(report.exitCode, 1) << report.errors;
    EXPECT_EQ(report.output, "");
    EXPECT_TRUE(fs::is_empty(captures / "unpacked"));
    return report.errors;
}

} // namespace

TEST(CaptureCaptured, GivesTheSameReportAsDirectoryAndAsArchive)
{
    const Captures captures;
    const Json before = reportOf(BOARD);
    for (const char* name : {"copy", "copy.tar.gz"}) {
        const Outcome capture = runTool({"--root", BOARD, "capture", captures / name});
        EXPECT_EQ(capture.exitCode, 0) << capture.errors;
        EXPECT_EQ(reportOf(captures / name), before) << name;
        EXPECT_EQ(runTool({"--root", BOARD, "capture", captures / name}).exitCode, 1) << name << " is there already";
    }
    EXPECT_TRUE(fs::is_empty(captures / "unpacked"));
}

TEST(CaptureCaptured, ListsWhatItHoldsInItsManifest)
{
    const Captures captures;
    ASSERT_EQ(runTool({"--root", BOARD, "capture", captures / "copy"}).exitCode, 0);
    const Json manifest = Json::parse(captures.tree.contents("/copy/k7sal/manifest.json"));
    EXPECT_EQ(manifest["capture"]["redacted"], false);
    const auto entryOf = [&](const std::string& path) {
        for (const Json& entry : manifest["entries"])
            if (entry["path"] == path)
                return entry;
        return Json();
    };
    EXPECT_EQ(entryOf("/proc/uptime")["size_bytes"], fs::file_size(BOARD + "/proc/uptime"));
    EXPECT_EQ(entryOf("/proc/uptime")["sha256"].get<std::string>().size(), 64U);
    EXPECT_EQ(entryOf("/proc/net")["link"], "self/net");
    EXPECT_NE(manifest["capture"]["missing"].dump().find("\"/proc/pressure\""), std::string::npos);
}

TEST(CaptureLive, GivesTheSameReportWithWhatOnlyTheKernelTold)
{
    K7_REQUIRE_SANDBOX();
    withoutLinkLocalAddresses();
    const VethPair pair("k7cap0", "k7cap1");
    ASSERT_TRUE(ip("addr add 10.91.0.1/24 dev k7cap0\naddr add 2001:db8::91/64 dev k7cap0 nodad\n"
                   "route add default via 10.91.0.9\n"));
    const Captures captures;
    ASSERT_EQ(runTool({"capture", captures / "live.tar.gz"}).exitCode, 0);
    const Outcome same = runTool({"diff", captures / "live.tar.gz"});
    EXPECT_EQ(same.exitCode, 0) << same.output << same.errors;
    const Json replayed = reportOf(captures / "live.tar.gz", {"network_interfaces"});
    const Json live = reportOf("", {"network_interfaces"});
    for (std::size_t i = 0; i < live["network_interfaces"].size(); ++i)
        for (const char* const key : {"name", "index", "mac", "mtu_bytes", "ipv4_addresses", "ipv4_gateway", "ipv6"})
            EXPECT_EQ(replayed["network_interfaces"][i][key], live["network_interfaces"][i][key]) << i << key;
    EXPECT_EQ(replayed["completed_from_captured_report"], Json::array({"network_interfaces"}));
    EXPECT_EQ(captures.tree.contents("/live.tar.gz").substr(0, 2), "\x1f\x8b");
}

TEST(CaptureCaptured, LeavesOutFilesWithoutAnEndAndOpensNoFifo)
{
    Captures captures;
    captures.tree.file("/board/proc/version", "Linux version 5.10.3\n").file("/board/proc/cpuinfo", "");
    fs::resize_file(captures / "board/proc/cpuinfo", std::uintmax_t{1} << 40U);
    ASSERT_EQ(::mkfifo((captures / "board/proc/uptime").c_str(), 0600), 0);
    captures.tree.link("/board/proc/meminfo", "/../../../../../../../../proc/self/environ");
    const Outcome capture = runTool({"--root", captures / "board", "capture", captures / "copy"});
    EXPECT_EQ(capture.exitCode, 0) << capture.errors;
    EXPECT_NE(capture.errors.find("not captured: /proc/cpuinfo (the file is too large)"), std::string::npos);
    EXPECT_FALSE(fs::exists(captures / "copy/proc/cpuinfo"));
    EXPECT_FALSE(fs::exists(captures / "copy/proc/self/environ"));
    EXPECT_FALSE(fs::is_fifo(captures / "copy/proc/uptime"));
}

TEST(CaptureLive, LeavesNothingWhenTheDiskIsFull)
{
    K7_REQUIRE_SANDBOX();
    const Captures captures;
    fs::create_directory(captures / "small");
    ASSERT_EQ(::mount("tmpfs", (captures / "small").c_str(), "tmpfs", 0, "size=64k"), 0);
    for (const char* name : {"small/copy", "small/copy.tar.gz"}) {
        const Outcome capture = runTool({"capture", captures / name});
        EXPECT_EQ(capture.exitCode, 1) << name;
        EXPECT_NE(capture.errors.find("No space left on device"), std::string::npos) << capture.errors;
        EXPECT_EQ(Captures::namesIn(captures / "small"), std::vector<std::string>()) << name;
    }
    ::umount((captures / "small").c_str());
}

TEST(CaptureCaptured, RefusesWhatACapturedTreeHasNoUseFor)
{
    const Captures captures;
    const std::pair<const char*, std::function<void(TarFile&)>> cases[] = {
        {"leads out of the archive", [](TarFile& tar) { tar.file("proc/../../evil", "x"); }},
        {"absolute name", [](TarFile& tar) { tar.file("/proc/version", "x"); }},
        {"a link that leads out of the archive", [](TarFile& tar) { tar.link("proc/version", "../../etc/passwd"); }},
        {"hard link", [](TarFile& tar) { tar.hardLink("proc/version", "/etc/passwd"); }},
        {"neither a file, a directory nor a symbolic link", [](TarFile& tar) { tar.fifo("proc/version"); }},
        {"larger than 16 MiB", [](TarFile& tar) { tar.file("proc/version", std::string((16U << 20U) + 1, '\0')); }},
        {"exceeds 256 MiB",
         [](TarFile& tar) {
             for (int i = 0; i < 17; ++i)
                 tar.file("proc/" + std::to_string(i), std::string(16U << 20U, '\0'));
         }},
        {"too deep or too large",
         [](TarFile& tar) { tar.file("proc/version", "x").file("k7sal/report.json", std::string(1U << 20U, '[')); }},
    };
    for (const auto& [reason, fill] : cases) {
        const std::string refused = refusal(captures, fill);
        EXPECT_NE(refused.find(reason), std::string::npos) << refused;
    }
    std::ofstream(captures / "mailed.tar.gz") << "\033[31mnot an archive";
    const Outcome report = runTool({"--root", captures / "mailed.tar.gz", "report"});
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_EQ(report.errors.find('\033'), std::string::npos);
}

TEST(CaptureCaptured, WritesThroughNoLinkOfTheArchive)
{
    const Captures captures;
    const std::string outside = captures / "outside";
    fs::create_directory(outside);
    refusal(captures, [&](TarFile& tar) { tar.link("proc/trap", outside).file("proc/trap/evil", "x"); });
    EXPECT_EQ(Captures::namesIn(outside), std::vector<std::string>());
}

TEST(CaptureCaptured, ReadsAnArchiveWithEverythingBelowOneDirectory)
{
    const Captures captures;
    {
        TarFile archive(captures / "mailed.tar.gz");
        archive.file("board/proc/uptime", "14.42 10.00\n").link("board/proc/version", "/etc/passwd");
    }
    EXPECT_DOUBLE_EQ(reportOf(captures / "mailed.tar.gz", {"host"})["host"]["uptime_seconds"].get<double>(), 14.42);
    EXPECT_EQ(runTool({"--root", captures / "mailed.tar.gz", "report", "surplus"}).exitCode, 2);
    EXPECT_TRUE(fs::is_empty(captures / "unpacked"));
}

/// The second recorded machine: an x86-64 with many interfaces, captured live and redacted.
TEST(CaptureCaptured, ReplaysARecordedMachineAsItReportedItself)
{
    const std::string machine = std::string(K7_FIXTURES) + "/many-interfaces";
    std::ifstream file(machine + "/k7sal/report.json");
    const Json reported = Json::parse(file);
    EXPECT_EQ(reported["network_interfaces"].size(), 24U);
    const Json replayed = reportOf(machine);
    for (const char* section : {"network_interfaces", "routes", "pci_functions"})
        EXPECT_EQ(replayed[section], reported[section]) << section;
}
