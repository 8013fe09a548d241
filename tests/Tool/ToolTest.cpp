// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The command line tool: report, process, what it says of failures, wrong usage.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

using namespace K7Test;
using Json = nlohmann::json;
namespace fs = std::filesystem;

static const std::string BOARD = std::string(K7_FIXTURES) + "/virt-board";

static std::string contentsOf(const fs::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Beside each captured machine lies the report that it gives. K7_UPDATE_EXPECTED=1 writes it instead.
TEST(Tool, ReportsEveryCapturedMachineAsExpected)
{
    int machines = 0;
    for (const fs::directory_entry& machine : fs::directory_iterator(K7_FIXTURES)) {
        if (!machine.is_directory())
            continue;
        ++machines;
        const std::string expected = machine.path().string() + ".json";
        const Outcome report = runTool({"--root", machine.path().string(), "report", "--json"});
        EXPECT_EQ(report.exitCode, 0) << machine.path() << report.errors;
        if (std::getenv("K7_UPDATE_EXPECTED"))
            std::ofstream(expected) << report.output;
        EXPECT_EQ(report.output, contentsOf(expected)) << machine.path();
    }
    EXPECT_GT(machines, 0);
}

TEST(Tool, ReportsACapturedBoardInText)
{
    const Outcome report = runTool({"--root", BOARD, "report"});
    EXPECT_EQ(report.exitCode, 0) << report.errors;
    for (const char* text : {"Memory\n  total      977.4 MiB\n", "arch_timer", "0000:00:01.0", "SATA controller", "sda",
                             "eth1", "Sensors\n  not captured\n", "  and 1"})
        EXPECT_NE(report.output.find(text), std::string::npos) << text << " in\n" << report.output;
    EXPECT_EQ(report.output.find('\033'), std::string::npos) << "colour without a terminal";
}

TEST(Tool, ShowsTheSectionsAndColumnsAskedFor)
{
    const Outcome one = runTool({"--root", BOARD, "report", "block_devices", "-o", "size_bytes,name"});
    EXPECT_EQ(one.output.substr(0, one.output.find('\n', 20)), "Block devices\n       size  name") << one.output;
    const Json json = Json::parse(runTool({"--json", "--root", BOARD, "report", "memory", "host"}).output);
    EXPECT_EQ(json.size(), 4U) << "version, problems and two sections";
    const std::string help = runTool({"report", "memory", "-o", "help"}).output;
    EXPECT_NE(help.find("mem_total_kib"), std::string::npos) << help;
}

TEST(Tool, ShowsWhatIsNotKnownAsUnknown)
{
    const TemporaryTree tree(false);
    const std::string root = tree.real("/").string();
    const Json report = Json::parse(runTool({"--root", root, "report", "--json"}).output);
    EXPECT_EQ(report["memory"]["mem_total_kib"], nullptr);
    EXPECT_EQ(report["memory"]["mem_used_kib"], nullptr);
    for (const char* list : {"pci_functions", "block_devices", "network_interfaces", "routes", "interrupts"})
        EXPECT_EQ(report.at(list), nullptr) << list;
    EXPECT_EQ(runTool({"--root", root, "report", "pci_functions"}).output, "PCI functions\n  not captured\n");
    EXPECT_EQ(runTool({"--root", root, "dns"}).exitCode, 1);
    for (const char* command : {"alive", "find"}) {
        const Outcome outcome = runTool({"--root", root, "process", command, "recorder"});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_NE(outcome.errors.find("there is no list of processes"), std::string::npos) << outcome.errors;
    }
}

TEST(Tool, KeepsTerminalsFromNamesFromOutside)
{
    TemporaryTree tree(false);
    const std::string name = "x\033[31m\x7f\xC2\x9B\xE2\x80\xAE\xE2\x80\xA8\x9B";
    tree.file("/sys/block/x/size", "8\n").file("/sys/block/x/device/model", name + std::string(2000, 'm') + "\n");
    const std::string root = tree.real("/").string();
    const std::string text = runTool({"--root", root, "report", "block_devices"}).output;
    EXPECT_NE(text.find("x?[31m?????mmm"), std::string::npos) << text;
    EXPECT_NE(text.find("mmm...  "), std::string::npos) << "a wide cell is cut";
    const std::string json = runTool({"--root", root, "report", "block_devices", "--json"}).output;
    EXPECT_NE(json.find("x\\u001b[31m\\u007f\\u009b\\u202e\\u2028\xEF\xBF\xBDmmm"), std::string::npos) << json;
    const Outcome unknown = runTool({"report", name});
    EXPECT_NE(unknown.errors.find("\"x?[31m?????\" is not a section"), std::string::npos) << unknown.errors;
}

/// A reading that fails shows as a problem, on standard error and in the exit code, never as "none".
TEST(Tool, SaysWhatCouldNotBeRead)
{
    if (runShell("strace -V").exitCode != 0)
        GTEST_SKIP() << "no strace to inject failures with";
    for (const char* path : {"/sys/bus/pci/devices", "/sys/block", "/proc/meminfo", "/proc/interrupts", "/proc/stat",
                             "/proc/net/dev", "/proc/uptime"}) {
        const Outcome report =
            runShell(std::string("strace -f -qq -o /dev/null -P ") + path +
                     " -e trace=openat,openat2 -e inject=openat,openat2:error=EMFILE \"$K7SAL\" report --json");
        EXPECT_EQ(report.exitCode, 1) << path;
        EXPECT_NE(report.errors.find("Too many open files"), std::string::npos) << path << report.errors;
        const Json problems = Json::parse(report.output)["problems"];
        EXPECT_FALSE(problems.empty()) << path;
        EXPECT_EQ(problems[0]["errno"], EMFILE) << path;
    }
}

TEST(Tool, FailsWhereItCannotWrite)
{
    for (const char* command :
         {"\"$K7SAL\" --help >/dev/full", "\"$K7SAL\" --version >/dev/full", "\"$K7SAL\" report >/dev/full",
          "\"$K7SAL\" report --json >&-", "\"$K7SAL\" report --json <&- >&- 2>&-"})
        EXPECT_EQ(runShell(command).exitCode, 1) << command;
    EXPECT_EQ(runShell("\"$K7SAL\" report host <&- 2>&-").exitCode, 0) << "it needs neither";
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // whose shadow memory alone is larger
    EXPECT_EQ(runShell("ulimit -v 50000; \"$K7SAL\" --root " + BOARD + " report").exitCode, 0);
#endif
}

TEST(Tool, RefusesWrongUsage)
{
    const struct {
        std::vector<std::string> arguments;
        std::string complaint;
        std::string advice = "";
    } cases[] = {
        {{}, "A subcommand is required"},
        {{"bogus"}, "unknown command 'bogus'"},
        {{"--bogus"}, "unknown option '--bogus'"},
        {{"process"}, "A subcommand is required", " process"},
        {{"process", "bogus"}, "unknown command 'bogus'", " process"},
        {{"process", "find", ""}, "name: is empty", " process find"},
        {{"--root", BOARD, "process", "kill", "x"}, "changes the machine and cannot be used with --root"},
        {{"--root", BOARD, "watch"}, "a captured tree does not change"},
        {{"--root", "/nowhere/at/all", "report"}, "/nowhere/at/all"},
        {{"report", "bogus"}, "\"bogus\" is not a section", " report"},
        {{"report", "-o", "name"}, "needs exactly one section", " report"},
        {{"report", "host", "-o", "bogus"}, "\"bogus\" is not a column of host", " report"},
        {{"watch", "host"}, "host does not count anything", " watch"},
        {{"watch", "--interval", "nan"}, "is not 0.1 to 3600 seconds", " watch"},
        {{"net", "--count", "1"}, "--watch", " net"},
        {{"ping", "0.0.0.0"}, "is not an IPv4 address that can be pinged", " ping"},
        {{"ping", "::1"}, "is not an IPv4 address that can be pinged", " ping"},
        {{"ping", "10.0.0.1", "10.0.0.1"}, "is given twice", " ping"},
        {{"dns", "set", "name"}, "is not an address of a name server", " dns set"},
        {{"dns", "set", "1.2.3.4", "1.2.3.5"}, "is the second server of its family", " dns set"},
    };
    for (const auto& test : cases) {
        const Outcome outcome = runTool(test.arguments);
        EXPECT_EQ(outcome.exitCode, 2) << testing::PrintToString(test.arguments);
        EXPECT_EQ(outcome.errors.rfind("k7sal: ", 0), 0U) << outcome.errors;
        EXPECT_NE(outcome.errors.find(test.complaint), std::string::npos) << test.complaint << ": " << outcome.errors;
        EXPECT_NE(outcome.errors.find("\nTry 'k7sal" + test.advice), std::string::npos) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
    }
}

TEST(Tool, HasAManualPageOfEveryCommandAndColumn)
{
    const std::string page = runTool({"--man"}).output;
    for (const char* text : {".SS \"process kill\"", "\\-\\-interval SECONDS", "mem_total_kib", ".SH \"EXIT STATUS\""})
        EXPECT_NE(page.find(text), std::string::npos) << text;
    EXPECT_EQ(runTool({"--help"}).output.find("--man"), std::string::npos);
}

TEST(Tool, FindsTestsAndEndsProcesses)
{
    K7_REQUIRE_SANDBOX();
    const std::string name = "k7-tool-test-sleeper";
    for (const char* command : {"find", "alive", "kill"})
        EXPECT_EQ(runTool({"process", command, name}).exitCode, 1) << command;
    const pid_t first = startSleeper(name);
    const pid_t second = startSleeper(name);
    const std::string both = std::to_string(first) + "\n" + std::to_string(second) + "\n";
    EXPECT_EQ(runTool({"process", "find", name}).output, both);
    EXPECT_EQ(runTool({"process", "alive", name}).output, "alive\n");
    const Json list = Json::parse(runTool({"process", "list", name, "--json"}).output);
    EXPECT_EQ(list["processes"][1]["pid"], second);
    EXPECT_EQ(runTool({"process", "kill", "k7"}).exitCode, 1) << "its own name";
    EXPECT_EQ(runTool({"process", "kill", name}).exitCode, 0);
    EXPECT_EQ(runTool({"process", "alive", name}).output, "not alive\n");
}
