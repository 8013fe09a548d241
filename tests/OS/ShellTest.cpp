// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, direct and delegated; processes found, tested and killed; thread names.
#include "OS/System/Shell.h"

#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Foundation/J3Thread.h"

#include <atomic>
#include <regex>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Shell = K7SystemUtil::Shell;
using namespace std::string_literals;

TEST(Shell, DirectCommandGivesTheRawWaitStatusWhateverSignalsArrive)
{
    struct sigaction interrupting {};
    interrupting.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &interrupting, nullptr);
    ::ualarm(10000, 10000);
    EXPECT_EQ(Shell::runCommandEx("sleep 0.1; exit 3"), 768);
    ::ualarm(0, 0);
    EXPECT_EQ(Shell::runCommandEx(L"exit %d", 3), 768);
    EXPECT_EQ(Shell::runCommandEx("kill -9 $$"), SIGKILL);
    EXPECT_EQ(Shell::runCommandEx(static_cast<const char*>(nullptr)), -1);
}

TEST(Shell, DelegatedCommandGivesWhatItsRunnerGives)
{
    char output[8] = "";
    auto* const listener = reinterpret_cast<Shell::CoutListener*>(output); // handed on, never looked into
    EXPECT_EQ(Shell::runCommandFromShell("without a runner", output), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"no command runner is installed");

    RecordingRunner runner;
    runner.output = "text";
    runner.behaviour = [&](const std::string&, Shell::CoutListener* given) { return given == listener ? 4 : 7; };
    const J3String name(L"käse");
    EXPECT_EQ(Shell::runCommand(L"echo %@ %s %02x", &name, "käse", 10), 7);
    EXPECT_EQ(Shell::runCommandEx(listener, L"ls %d", -5), 4);
    EXPECT_EQ(Shell::runCommandEx(name, listener), 4);
    EXPECT_EQ(Shell::runCommandFromShell("list", output), 7);
    EXPECT_STREQ(output, "text");
    EXPECT_EQ(Shell::runCommand(static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(runner.commands(), (std::vector<std::string>{"echo käse käse 0a", "ls -5", "käse", "list"}));
}

TEST(Shell, DelegatedCommandsRunOneAtATimeEvenAfterOneThatThrew)
{
    RecordingRunner runner;
    runner.behaviour = [](const std::string&, Shell::CoutListener*) -> int { throw J3String(L"no shell"); };
    EXPECT_THROW(Shell::runCommand("first"), J3String);
    std::atomic<int> inside = 0;
    std::atomic<int> overlaps = 0;
    runner.behaviour = [&](const std::string&, Shell::CoutListener*) {
        overlaps += inside++ != 0;
        J3Thread::sleep(2);
        return --inside;
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 16; ++i)
        threads.emplace_back([i] { i % 2 ? Shell::runCommand("one") : Shell::runCommandFromShell("other", nullptr); });
    threads.clear();
    EXPECT_TRUE(overlaps == 0 && runner.commands().size() == 17) << overlaps;
}

TEST(Shell, PidFileHoldsANumberOfAnyBase)
{
    TemporaryTree tree;
    const std::pair<std::string, int32> cases[] = {{"0x10", 16}, {"017\n", 15}, {" 42 77\n", 42}, {"", 0}};
    for (const auto& [contents, pid] : cases) {
        tree.file("/run/k7.pid", contents);
        EXPECT_EQ(Shell::readProcessId("/run/k7.pid"), pid) << contents;
    }
    EXPECT_TRUE(Shell::readProcessId("/run/missing.pid") == -1 && K7SystemUtil::lastFailure().errorCode == ENOENT);
}

TEST(Shell, ProcessIsFoundByItsFirstArgumentInTheTextOrderOfIds)
{
    TemporaryTree tree;
    EXPECT_EQ(Shell::getProcessId("recorder"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"can't list the directory");
    tree.file("/proc/9/cmdline", "/usr/bin/recorder"s).file("/proc/100/cmdline", "recorder\0-d\0"s);
    tree.file("/proc/20/cmdline", "recorder\nsecond"s).file("/proc/10/cmdline", "viewer\0recorder\0"s);
    tree.file("/proc/1x/cmdline", "recorder"s).file("/proc/self/cmdline", "recorder"s).directory("/proc/1");
    tree.file("/proc/30/cmdline", std::string(250, 'x') + "tailEND");
    const std::pair<const char*, int32> cases[] = {{"recorder", 100}, {"bin/rec", 9}, {"viewer", 10}, {"-d", -1},
                                                   {"second", -1},    {"xtail", 30},  {"tailE", -1},  {nullptr, -1}};
    for (const auto& [needle, pid] : cases)
        EXPECT_EQ(Shell::getProcessId(needle), pid) << (needle ? needle : "null");
}

TEST(Shell, LivingProcessIsToldByIdFileAndName)
{
    K7_REQUIRE_SANDBOX();
    const char* const name = "k7-sleeper";
    const pid_t process = startSleeper(name);
    TemporaryTree files(false);
    const std::string path = files.file("/own.pid", std::to_string(process)).real("/own.pid");
    EXPECT_TRUE(Shell::isAliveProcess(name, nullptr, process) && Shell::isAliveProcess(name, nullptr, -1));
    EXPECT_TRUE(Shell::isAliveProcess(name, path.c_str(), 0) && Shell::isAliveProcess(name, "/missing.pid", 0));
    EXPECT_FALSE(Shell::isAliveProcess(name, nullptr, 0) || Shell::isAliveProcess("k7-other", path.c_str(), process));
    EXPECT_FALSE(Shell::isAliveProcess(nullptr, nullptr, process) || Shell::isAliveProcess(name, nullptr, ::getpid()));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"");
}

TEST(Shell, KillEndsEveryProcessOfTheNameAndNoOther)
{
    K7_REQUIRE_SANDBOX();
    const pid_t victims[] = {startSleeper("k7-victim-a"), startSleeper("k7-victim-b")};
    const pid_t spared = startSleeper("k7-bystander");
    for (const char* needle : {"", static_cast<const char*>(nullptr), "k7-victim"})
        Shell::killProcess(needle);
    TemporaryTree anotherMachine;
    anotherMachine.file("/proc/" + std::to_string(spared) + "/cmdline", "k7-bystander");
    Shell::killProcess("k7-bystander");
    int status = 0;
    for (const pid_t victim : victims)
        EXPECT_TRUE(::waitpid(victim, &status, WNOHANG) == victim && status == SIGKILL) << status;
    EXPECT_EQ(::waitpid(spared, nullptr, WNOHANG), 0);
}

TEST(Shell, ThreadIsNamedAfterItsJ3ThreadWithItsProcessor)
{
    struct Thread : J3Thread {
        using J3Thread::J3Thread;
        void threadFunc() override { told = Shell::currentThreadName(); }
        std::string told;
    } named(L"aufnahme-ä"), unnamed;
    const char* const own = Shell::currentThreadName();
    ASSERT_TRUE(named.run(true) && unnamed.run(true));
    named.join();
    unnamed.join();
    const std::string told = own + named.told + unnamed.told;
    EXPECT_TRUE(std::regex_match(told, std::regex(R"(main-process\[\d+]aufnahme-ä\[\d+]unknown-thread\[\d+])")))
        << told;
}
