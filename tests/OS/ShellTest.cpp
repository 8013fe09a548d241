// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, direct and delegated; processes found, tested and killed; thread names.
#include "OS/System/Shell.h"

#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Foundation/J3Thread.h"

#include <atomic>
#include <csignal>
#include <future>
#include <regex>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Shell = K7SystemUtil::Shell;
using namespace std::string_literals;

TEST(ShellLive, DirectCommandGivesTheRawWaitStatusWhateverSignalsArrive)
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
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Shell::runCommandEx("exit 3"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ECHILD);
    std::signal(SIGCHLD, SIG_DFL);
    const std::pair<int32, int32> codes[] = {
        {768, 3}, {0, 0}, {SIGKILL, 128 + SIGKILL}, {SIGSEGV | 0x80, 139}, {-1, -1}};
    for (const auto& [status, code] : codes)
        EXPECT_EQ(Shell::exitCodeOf(status), code) << status;
}

TEST(ShellLive, WhatFollowsAFormatIsAListenerOnlyWhenItIsOne)
{
    struct Listener : Shell::CoutListener {
        int32 channel() override { return 0; }
        void setChannel(int32) override {}
        void resultChanged(const char*, int32) override {}
    } listener;
    RecordingRunner runner;
    EXPECT_EQ(Shell::runCommandEx(L"exit %d", 0), 0);
    EXPECT_EQ(Shell::runCommandEx(L"exit %s%d", "", 2), 512);
    EXPECT_EQ(runner.commands(), std::vector<std::string>());
    EXPECT_EQ(Shell::runCommandEx(L"50%", &listener), 0);
    EXPECT_EQ(Shell::runCommandEx(L"null", nullptr), 0);
    EXPECT_EQ(Shell::runCommandEx("narrow", nullptr), 0);
    EXPECT_EQ(runner.commands(), (std::vector<std::string>{"50%", "null", "narrow"}));
}

TEST(ShellLive, ForkedChildIsMainAndWaitsForNoThreadOfItsParent)
{
    std::promise<void> running;
    std::promise<void> done;
    RecordingRunner runner;
    runner.behaviour = [&](const std::string& command, Shell::CoutListener*) {
        if (command != "first")
            return 7;
        running.set_value();
        done.get_future().wait();
        return 0;
    };
    std::jthread first([] { Shell::runCommand("first"); });
    running.get_future().wait();
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);
        const bool isMain = std::string_view(Shell::currentThreadName()).starts_with("main-process[");
        ::_exit(isMain && Shell::runCommand("second") == 7 && Shell::runCommand("third") == 7 ? 0 : 1);
    }
    done.set_value();
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(ShellLive, DelegatedCommandGivesWhatItsRunnerGives)
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

TEST(ShellLive, DelegatedCommandsRunOneAtATimeEvenAfterOneThatThrew)
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
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(runner.commands().size(), 17U);
}

TEST(ShellCaptured, PidFileHoldsANumberOfAnyBase)
{
    TemporaryTree tree;
    const std::pair<std::string, int32> cases[] = {{"0x10", 16},
                                                   {"017\n", 15},
                                                   {" 42 77\n", 42},
                                                   {"", 0},
                                                   {"+7", 7},
                                                   {"0xZ", 0},
                                                   {"08", 0},
                                                   {"4294967297", 2147483647},
                                                   {"-99999999999", INT32_MIN}};
    for (const auto& [contents, pid] : cases) {
        tree.file("/run/k7.pid", contents);
        EXPECT_EQ(Shell::readProcessId("/run/k7.pid"), pid) << contents;
    }
    EXPECT_EQ(Shell::readProcessId("/run/missing.pid"), -1);
    EXPECT_EQ(Shell::readProcessId("/run"), -1); // opened, but not to be read
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, EISDIR);
}

TEST(ShellCaptured, ProcessIsFoundByItsFirstArgumentInTheTextOrderOfIds)
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
    std::vector<int32> ids;
    EXPECT_TRUE(Shell::listProcessIds(&ids));
    EXPECT_EQ(ids, (std::vector<int32>{1, 9, 10, 20, 30, 100}));
    EXPECT_TRUE(Shell::getProcessIds("recorder", &ids));
    EXPECT_EQ(ids, (std::vector<int32>{9, 20, 100}));
}

TEST(ShellCaptured, CommandLineThatCannotBeReadIsAFailureUnlessTheProcessIsGone)
{
    TemporaryTree tree;
    tree.directory("/proc/1/cmdline").directory("/proc/2").file("/proc/3/cmdline", "recorder");
    EXPECT_EQ(Shell::getProcessId("recorder"), 3);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    EXPECT_EQ(Shell::getProcessId("viewer"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/proc/1/cmdline");
    std::vector<int32> ids;
    EXPECT_FALSE(Shell::getProcessIds("recorder", &ids));
    EXPECT_EQ(ids, std::vector<int32>{3});
    EXPECT_FALSE(Shell::isAliveProcess("viewer", nullptr, 2));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
}

TEST(ShellLive, LivingProcessIsToldByIdFileAndName)
{
    K7_REQUIRE_SANDBOX();
    const char* const name = "k7-sleeper";
    const pid_t process = startSleeper(name);
    TemporaryTree files(false);
    const std::string path = files.file("/own.pid", std::to_string(process)).real("/own.pid");
    EXPECT_TRUE(Shell::isAliveProcess(name, nullptr, process));
    EXPECT_TRUE(Shell::isAliveProcess(name, nullptr, -1));
    EXPECT_TRUE(Shell::isAliveProcess(name, path.c_str(), 0));
    EXPECT_TRUE(Shell::isAliveProcess(name, "/missing.pid", 0));
    EXPECT_FALSE(Shell::isAliveProcess(name, nullptr, 0));
    EXPECT_FALSE(Shell::isAliveProcess("k7-other", path.c_str(), process));
    EXPECT_FALSE(Shell::isAliveProcess(nullptr, nullptr, process));
    EXPECT_FALSE(Shell::isAliveProcess(name, nullptr, ::getpid()));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"");
}

TEST(ShellLive, KillEndsEveryProcessOfTheNameAndNoOther)
{
    K7_REQUIRE_SANDBOX();
    const pid_t victims[] = {startSleeper("k7-victim-a"), startSleeper("k7-victim-b")};
    const pid_t spared = startSleeper("k7-bystander");
    for (const char* needle : {"", static_cast<const char*>(nullptr), "k7-victim"})
        Shell::killProcess(needle);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L""); // the search that found nothing more is none
    TemporaryTree anotherMachine;
    anotherMachine.file("/proc/" + std::to_string(spared) + "/cmdline", "k7-bystander");
    Shell::killProcess("k7-bystander");
    int status = 0;
    for (const pid_t victim : victims)
        EXPECT_EQ(::waitpid(victim, &status, WNOHANG), victim);
    EXPECT_EQ(::waitpid(spared, nullptr, WNOHANG), 0);
}

TEST(ShellLive, ThreadIsNamedAfterItsJ3ThreadWithItsProcessor)
{
    struct Thread : J3Thread {
        using J3Thread::J3Thread;
        void threadFunc() override { told = Shell::currentThreadName(); }
        std::string told;
    } named(L"aufnahme-ä"), unnamed, longNamed(std::wstring(479, L'x') + L"ää");
    const char* const own = Shell::currentThreadName();
    for (Thread* thread : {&named, &unnamed, &longNamed}) {
        ASSERT_TRUE(thread->run(true));
        thread->join();
    }
    EXPECT_EQ(longNamed.told.find('['), 479U); // no half of a character
    const std::string told = own + named.told + unnamed.told;
    EXPECT_TRUE(std::regex_match(told, std::regex(R"(main-process\[\d+]aufnahme-ä\[\d+]unknown-thread\[\d+])")))
        << told;
}
