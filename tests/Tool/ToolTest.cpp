// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The command line tool: report, capture, process, wrong use.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace K7Test;
using Json = nlohmann::json;

static const std::string BOARD = std::string(K7_FIXTURES) + "/virt-board";

TEST(Tool, ReportsACapturedBoardInText)
{
    const Outcome report = runTool({"--root", BOARD, "report"});
    EXPECT_EQ(report.exitCode, 0) << report.errors;
    for (const char* text :
         {"Kernel  6.1.0", "Uptime  14 s", "977.4 MiB", "arch_timer", "0000:00:01.0", "SATA controller", "sda", "eth1"})
        EXPECT_NE(report.output.find(text), std::string::npos) << text << " in\n" << report.output;
    EXPECT_EQ(report.output.find('\033'), std::string::npos) << "colour without a terminal";
}

TEST(Tool, ReportsACapturedBoardInJson)
{
    const Json facts = Json::parse(runTool({"report", "--json", "--root", BOARD}).output);
    EXPECT_EQ(facts["host"]["kernel_version"], "6.1.0");
    EXPECT_DOUBLE_EQ(facts["host"]["uptime_seconds"].get<double>(), 14.42);
    EXPECT_EQ(facts["memory"]["mem_total_kib"], 1000840);
    EXPECT_EQ(facts["cpu"]["busiest_interrupts"][0]["count"], 2898 + 2900);
    EXPECT_EQ(facts["pci_functions"][1]["driver"], "ahci");
    EXPECT_EQ(facts["block_devices"].size(), 3U);
}

/// A copied tree holds every file and link that a report of it reads, and nothing has to be listed for that.
TEST(Tool, CapturesATreeThatGivesTheSameReport)
{
    const TemporaryTree tree(false);
    const std::string copy = tree.real("/copy").string();
    const Outcome capture = runTool({"--root", BOARD, "capture", copy});
    EXPECT_EQ(capture.exitCode, 0) << capture.errors;
    EXPECT_EQ(runTool({"report", "--root", copy}).output, runTool({"report", "--root", BOARD}).output);
    EXPECT_EQ(runTool({"report", "--json", "--root", copy}).output,
              runTool({"report", "--json", "--root", BOARD}).output);
    EXPECT_EQ(runTool({"--root", BOARD, "capture", copy}).exitCode, 1) << "a directory that is not empty";
}

TEST(Tool, CapturesTheRunningMachine)
{
    const TemporaryTree tree(false);
    const std::string copy = tree.real("/live").string();
    ASSERT_EQ(runTool({"capture", copy}).exitCode, 0);
    const Json live = Json::parse(runTool({"report", "--json"}).output);
    const Json captured = Json::parse(runTool({"report", "--json", "--root", copy}).output);
    for (const char* fact : {"/host/kernel_text", "/host/name", "/memory/mem_total_kib", "/cpu/core_count",
                             "/pci_functions", "/block_devices"})
        EXPECT_EQ(captured.at(Json::json_pointer(fact)), live.at(Json::json_pointer(fact))) << fact;
}

TEST(Tool, CapturesPastAFileThatCannotBeRead)
{
    TemporaryTree tree(false);
    tree.file("/root/proc/version", "Linux version 5.10.3\n").directory("/root/proc/meminfo");
    const Outcome capture = runTool({"--root", tree.real("/root").string(), "capture", tree.real("/copy").string()});
    EXPECT_EQ(capture.exitCode, 0);
    EXPECT_NE(capture.errors.find("not captured: /proc/meminfo"), std::string::npos) << capture.errors;
    EXPECT_EQ(tree.contents("/copy/proc/version"), "Linux version 5.10.3\n");
}

TEST(Tool, SaysWhatCouldNotBeRead)
{
    TemporaryTree tree(false);
    tree.file("/proc/version", "Linux version five\n").file("/sys/block/x\033[31m/size", "8\n");
    const Outcome report = runTool({"--root", tree.real("/").string(), "report"});
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_NE(report.errors.find("k7sal: uptime failed: can't open \"/proc/uptime\" (No such file or directory)"),
              std::string::npos)
        << report.errors;
    EXPECT_NE(report.errors.find("k7sal: kernel version failed: "), std::string::npos) << report.errors;
    EXPECT_NE(report.output.find("x?[31m"), std::string::npos) << "a device's name drives the terminal";
}

TEST(Tool, RefusesWrongUse)
{
    const std::vector<std::string> cases[] = {
        {},          {"nonsense"}, {"report", "surplus"},   {"--root", "/nowhere/at/all", "report"},
        {"capture"}, {"process"},  {"process", "find", ""}, {"--root", BOARD, "process", "kill", "name"}};
    for (const auto& arguments : cases) {
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(outcome.errors.rfind("k7sal: ", 0), 0U) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
    }
    for (const char* command : {"report", "capture", "process"})
        EXPECT_EQ(runTool({command, "--help"}).exitCode, 0);
}

TEST(Tool, FindsTestsAndEndsAProcess)
{
    K7_REQUIRE_SANDBOX();
    const std::string name = "k7-tool-test-sleeper";
    for (const char* command : {"find", "alive", "kill"})
        EXPECT_EQ(runTool({"process", command, name}).exitCode, 1) << command;
    const pid_t process = startSleeper(name);
    EXPECT_EQ(runTool({"process", "find", name}).output, std::to_string(process) + "\n");
    EXPECT_EQ(runTool({"process", "alive", name}).exitCode, 0);
    EXPECT_EQ(runTool({"process", "kill", "k7"}).exitCode, 1) << "its own name";
    EXPECT_EQ(runTool({"process", "kill", name}).exitCode, 0);
    EXPECT_EQ(runTool({"process", "alive", name}).exitCode, 1);
}
