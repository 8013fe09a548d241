// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal lua: what scripts get, and how they end.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/ToolRun.h"

#include <gtest/gtest.h>

using namespace K7Test;

static const std::string BOARD = std::string(K7_FIXTURES) + "/virt-board";

static const std::string EXAMPLE = std::string(K7_FIXTURES) + "/../../examples/board_check.lua";

/// Run the tool's lua command on a script, with words before and after it.
static Outcome runLua(const std::string& script, std::vector<std::string> before = {},
                      const std::vector<std::string>& after = {})
{
    TemporaryTree tree(false);
    const std::string path = tree.file("/script.lua", script).real("/script.lua").string();
    before.insert(before.end(), {"lua", path});
    before.insert(before.end(), after.begin(), after.end());
    return runTool(before);
}

TEST(ToolLua, GivesSectionsByTheirKeys)
{
    const Outcome outcome =
        runLua("print(sal.memory().mem_total_kib, #sal.pci_functions(), sal.block_devices()[1].name)"
               "for _, key in ipairs(sal.sections()) do assert(sal[key], key) end "
               "local list, why = sal.sensors()  print(list, why and why[1])",
               {"--root", BOARD});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    const Outcome report = runTool({"--root", BOARD, "report", "memory", "--json"});
    const std::string total = outcome.output.substr(0, outcome.output.find('\t'));
    EXPECT_NE(report.output.find("\"mem_total_kib\": " + total), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("\tsda\n"), std::string::npos) << outcome.output;
}

TEST(ToolLua, AnswersQueriesOrSaysWhyNot)
{
    const Outcome outcome =
        runLua("print(sal.attribute('/proc/sys/kernel/ostype'))"
               "print(sal.attribute('/sys/none'))"
               "print(sal.memory_counter('MemTotal') > 0, pcall(sal.resolve))"
               "print(pcall(sal.ping, {interface = 'lo'}))"
               "print(select('#', sal.ping{interface = 'k7none0', targets = {'10.0.0.1'}, rounds = 1}))");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("Linux\nnil\t/sys/none: "), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("true\tfalse\tbad argument"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("false\tsal.ping takes a table"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("\n2\n"), std::string::npos) << outcome.output;
}

TEST(ToolLua, PingsAndCallsBack)
{
    K7_REQUIRE_SANDBOX();
    const Outcome outcome =
        runLua("local all = sal.ping{interface = 'lo', targets = {'127.0.0.1', '127.0.0.2'}, rounds = 1,"
               "                     on_result = function(r) print(r.address, r.grade) end}  return #all == 2");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("127.0.0.1\tgreat\n"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("127.0.0.2\tgreat\n"), std::string::npos) << outcome.output;
}

TEST(ToolLua, EndsAsTheScriptSays)
{
    EXPECT_EQ(runLua("print(#arg, ...)  return arg[1] == '-x' and arg[3] == '--help' and #arg == 3", {},
                     {"-x", "b c", "--help"})
                  .exitCode,
              0);
    EXPECT_EQ(runLua("return false").exitCode, 1);
    EXPECT_EQ(runShell("$K7SAL lua " + EXAMPLE + " >/dev/full").exitCode, 1);
    EXPECT_EQ(runShell("$K7SAL lua " + EXAMPLE + " 1 >/dev/null").exitCode, 0);
    EXPECT_EQ(runShell("$K7SAL lua " + EXAMPLE + " 999999999 >/dev/null").exitCode, 1);
    const Outcome broken = runLua("error('b\\27ad')");
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_NE(broken.errors.find("<< LUA script debug >>"), std::string::npos) << broken.errors;
    EXPECT_NE(broken.errors.find("\n\t=> 1: (string) '"), std::string::npos) << broken.errors;
    EXPECT_EQ(broken.errors.find('\033'), std::string::npos) << broken.errors;
    EXPECT_NE(broken.errors.find("can't execute LUA script"), std::string::npos) << broken.errors;
    EXPECT_EQ(runLua("x = = 1").exitCode, 1);
    EXPECT_EQ(runTool({"lua", "/none.lua"}).exitCode, 1);
    EXPECT_EQ(runTool({"lua"}).exitCode, 2);
}
