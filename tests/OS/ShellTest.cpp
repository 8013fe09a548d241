// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, direct and delegated; processes found, tested and killed; thread names.
#include "OS/System/Shell.h"

#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Foundation/J3Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <signal.h>
#include <spawn.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Shell = K7SystemUtil::Shell;
using namespace std::string_literals;

namespace {

/// A sleeping process under a name of the test's choice; ended with the object.
class NamedProcess {
public:
    explicit NamedProcess(std::string name, std::string duration = "60")
    {
        char* const arguments[] = {name.data(), duration.data(), nullptr};
        EXPECT_EQ(::posix_spawn(&_pid, "/bin/sleep", nullptr, nullptr, arguments, environ), 0);
        EXPECT_TRUE(waitForCommandLine());
    }

    ~NamedProcess()
    {
        if (isRunning()) {
            ::kill(_pid, SIGKILL);
            ::waitpid(_pid, nullptr, 0);
        }
    }

    NamedProcess(const NamedProcess&) = delete;
    NamedProcess& operator=(const NamedProcess&) = delete;

    [[nodiscard]] pid_t pid() const { return _pid; }

    [[nodiscard]] int status() const { return _status; }

    bool isRunning()
    {
        if (!_ended)
            _ended = ::waitpid(_pid, &_status, WNOHANG) == _pid;
        return !_ended;
    }

private:
    /// posix_spawn() returns while the kernel still lays out the new program: for a moment its command line is empty.
    [[nodiscard]] bool waitForCommandLine() const
    {
        const std::string path = "/proc/" + std::to_string(_pid) + "/cmdline";
        for (int round = 0; round < 5000; ++round) {
            if (std::ifstream(path).peek() != std::ifstream::traits_type::eof())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    pid_t _pid = -1;
    int _status = 0;
    bool _ended = false;
};

class NameTellingThread : public J3Thread {
public:
    using J3Thread::J3Thread;

    ~NameTellingThread() override { join(); }

    std::string told;

protected:
    void threadFunc() override { told = Shell::currentThreadName(); }
};

} // namespace

TEST(Shell, DirectCommandGivesTheRawWaitStatus)
{
    EXPECT_EQ(Shell::runCommandEx("true"), 0);
    EXPECT_EQ(Shell::runCommandEx("exit 3"), 768);
    EXPECT_EQ(Shell::runCommandEx(J3String(L"exit 3")), 768);
    EXPECT_EQ(Shell::runCommandEx(L"exit %d", 3), 768);
    EXPECT_EQ(Shell::runCommandEx("kill -9 $$"), SIGKILL);
    EXPECT_EQ(Shell::runCommandEx(static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(Shell::runCommandEx(static_cast<const wchar_t*>(nullptr)), -1);
}

TEST(Shell, DirectCommandOutlastsSignals)
{
    struct sigaction interrupting {};

    struct sigaction before {};

    interrupting.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGALRM, &interrupting, &before), 0);
    const itimerval often{{0, 10000}, {0, 10000}};
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(Shell::runCommandEx("sleep 0.1; exit 3"), 768);
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before, nullptr);
}

TEST(Shell, DelegatedCommandNeedsARunner)
{
    char output[] = "untouched";
    EXPECT_EQ(Shell::runCommand("exit 3"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"no command runner is installed");
    EXPECT_EQ(Shell::runCommandEx("exit 3", nullptr), -1);
    EXPECT_EQ(Shell::runCommandFromShell("exit 3", output), -1);
    EXPECT_STREQ(output, "untouched");
}

TEST(Shell, DelegatedCommandGivesWhatItsRunnerGives)
{
    RecordingRunner runner;
    for (const int result : {7, -1, 0}) {
        runner.result = result;
        EXPECT_EQ(Shell::runCommand("service"), result);
        EXPECT_EQ(Shell::runCommandFromShell("service", nullptr), result);
    }
    EXPECT_EQ(Shell::runCommand(static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(runner.commands(), std::vector<std::string>(6, "service"));
}

TEST(Shell, TextAndFormatOverloadsReachTheRunnerInUtf8)
{
    RecordingRunner runner;
    const J3String name(L"käse");
    Shell::runCommand(name);
    Shell::runCommand(L"echo %@ %s %S %02x", &name, "käse", L"käse", 10);
    Shell::runCommandEx(name, nullptr);
    Shell::runCommandEx(nullptr, L"echo %d", -5);
    EXPECT_EQ(runner.commands(), (std::vector<std::string>{"käse", "echo käse käse käse 0a", "käse", "echo -5"}));
}

TEST(Shell, ListenerAndOutputBufferReachTheRunnerUntouched)
{
    struct Listener : Shell::CoutListener {
        int32 channel() override { return number; }

        void setChannel(int32 channel) override { number = channel; }

        void resultChanged(const char* text, int32 value) override { heard += text + std::to_string(value); }

        int32 number = 0;
        std::string heard;
    } listener;

    Shell::setImplFunction0([](const char* command, Shell::CoutListener* given) -> int32 {
        given->setChannel(4);
        given->resultChanged(command, given->channel());
        return 0;
    });
    Shell::setImplFunction1([](const char* command, char* output) -> int32 {
        return static_cast<int32>(std::string(command).copy(output, 2));
    });
    char output[] = "----";
    EXPECT_EQ(Shell::runCommandEx("ls", &listener), 0);
    EXPECT_EQ(Shell::runCommandEx(&listener, L"l%c", L's'), 0);
    EXPECT_EQ(listener.heard, "ls4ls4");
    EXPECT_EQ(Shell::runCommandFromShell("ls", output), 2);
    EXPECT_STREQ(output, "ls--");
    Shell::setImplFunction0(nullptr);
    Shell::setImplFunction1(nullptr);
    EXPECT_EQ(Shell::runCommandEx("ls", &listener), -1);
}

TEST(Shell, DelegatedCommandsRunOneAtATime)
{
    RecordingRunner runner;
    std::atomic<int> inside = 0;
    std::atomic<int> overlaps = 0;
    runner.behaviour = [&](const std::string&, Shell::CoutListener*) {
        overlaps += inside++ != 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --inside;
        return 0;
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int round = 0; round < 10; ++round) {
                Shell::runCommand("one");
                Shell::runCommandFromShell("other", nullptr);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(runner.commands().size(), 80U);
}

TEST(Shell, RunnerThatThrowsLeavesNoLockBehind)
{
    RecordingRunner runner;
    runner.behaviour = [](const std::string&, Shell::CoutListener*) -> int { throw std::runtime_error("no shell"); };
    EXPECT_THROW(Shell::runCommand("first"), std::runtime_error);
    runner.behaviour = nullptr;
    EXPECT_EQ(Shell::runCommand("second"), 0);
}

TEST(Shell, PidFileHoldsANumberOfAnyBase)
{
    TemporaryTree tree;
    const std::pair<std::string_view, int32> cases[] = {
        {"1234\n", 1234}, {"0x10", 16}, {"017\n", 15}, {"  42 77\n", 42},    {"-1\n", -1},
        {"garbage", 0},   {"", 0},      {"\n1234", 0}, {{"12\0003", 4}, 12},
    };
    for (const auto& [contents, pid] : cases) {
        tree.file("/run/k7.pid", contents);
        EXPECT_EQ(Shell::readProcessId("/run/k7.pid"), pid) << contents;
    }
    EXPECT_EQ(Shell::readProcessId("/run/missing.pid"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
    EXPECT_EQ(Shell::readProcessId(nullptr), -1);
}

TEST(Shell, ProcessIsFoundInTheTextOrderOfIds)
{
    TemporaryTree tree;
    tree.file("/proc/9/cmdline", "/usr/bin/recorder"s).file("/proc/100/cmdline", "recorder\0-d\0"s);
    tree.file("/proc/20/cmdline", "recorder"s).file("/proc/10/cmdline", "viewer\0recorder\0"s);
    tree.file("/proc/1x/cmdline", "recorder"s).file("/proc/self/cmdline", "recorder"s).directory("/proc/1");
    EXPECT_EQ(Shell::getProcessId("recorder"), 100);
    EXPECT_EQ(Shell::getProcessId("bin/rec"), 9);
    EXPECT_EQ(Shell::getProcessId("viewer"), 10);
    EXPECT_EQ(Shell::getProcessId("-d"), -1);
    EXPECT_EQ(Shell::getProcessId(nullptr), -1);
}

TEST(Shell, ProcessNameIsTheFirst254BytesOfOneLine)
{
    TemporaryTree tree;
    tree.file("/proc/1/cmdline", std::string(250, 'x') + "tailEND").file("/proc/2/cmdline", "first\nsecond"s);
    tree.file("/proc/3/cmdline", "");
    EXPECT_EQ(Shell::getProcessId("xtail"), 1);
    EXPECT_EQ(Shell::getProcessId("tailE"), -1);
    EXPECT_EQ(Shell::getProcessId("first"), 2);
    EXPECT_EQ(Shell::getProcessId("second"), -1);
    EXPECT_FALSE(Shell::isAliveProcess("", nullptr, 3));
}

TEST(Shell, ProcessListThatCannotBeReadHoldsNoProcess)
{
    const TemporaryTree tree;
    EXPECT_EQ(Shell::getProcessId("init"), -1);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"can't list /proc");
}

TEST(Shell, LiveProcessIsFoundByItsProgramNameOnly)
{
    K7_REQUIRE_SANDBOX();
    const std::size_t descriptors = openDescriptors();
    const NamedProcess process("k7-sleeper-one", "61.5");
    EXPECT_EQ(Shell::getProcessId("k7-sleeper-one"), process.pid());
    EXPECT_EQ(Shell::getProcessId("61.5"), -1);
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(Shell, LivingProcessIsToldByIdFileAndName)
{
    K7_REQUIRE_SANDBOX();
    NamedProcess process("k7-sleeper-two");
    const TemporaryTree files(false);
    const std::string pidFile = files.real("/own.pid");
    const std::string missing = files.real("/missing.pid");
    const auto alive = [](const char* file, int32 pid) { return Shell::isAliveProcess("k7-sleeper-two", file, pid); };
    Shell::runCommandEx(L"echo %d > %s", process.pid(), pidFile.c_str());

    EXPECT_TRUE(alive(nullptr, process.pid()));
    EXPECT_TRUE(alive(nullptr, -1));
    EXPECT_FALSE(alive(nullptr, 0));
    EXPECT_FALSE(alive(nullptr, ::getpid()));
    EXPECT_TRUE(alive(pidFile.c_str(), 0));
    EXPECT_TRUE(alive(missing.c_str(), 0));
    EXPECT_FALSE(Shell::isAliveProcess("k7-sleeper-three", pidFile.c_str(), -1));
    EXPECT_FALSE(Shell::isAliveProcess(nullptr, nullptr, process.pid()));

    ::kill(process.pid(), SIGKILL);
    while (process.isRunning())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_FALSE(alive(pidFile.c_str(), -1));
}

TEST(Shell, KillEndsEveryProcessOfTheName)
{
    K7_REQUIRE_SANDBOX();
    NamedProcess first("k7-victim-a");
    NamedProcess second("k7-victim-b");
    NamedProcess spared("k7-bystander");
    Shell::killProcess("k7-victim");
    EXPECT_FALSE(first.isRunning());
    EXPECT_FALSE(second.isRunning());
    EXPECT_TRUE(WIFSIGNALED(first.status()) && WTERMSIG(first.status()) == SIGKILL);
    EXPECT_TRUE(spared.isRunning());
}

TEST(Shell, KillRefusesAnotherMachineAndEveryProcess)
{
    K7_REQUIRE_SANDBOX();
    NamedProcess process("k7-survivor");
    const auto begin = std::chrono::steady_clock::now();
    {
        TemporaryTree tree;
        tree.file("/proc/" + std::to_string(process.pid()) + "/cmdline", "k7-survivor");
        ASSERT_EQ(Shell::getProcessId("k7-survivor"), process.pid());
        Shell::killProcess("k7-survivor");
    }
    Shell::killProcess("");
    Shell::killProcess(nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_TRUE(process.isRunning());
}

TEST(Shell, ThreadIsNamedAfterItsJ3ThreadWithItsProcessor)
{
    const auto hasForm = [](const std::string& told, const std::string& name) {
        int processor = -1;
        char end = 0;
        return told.rfind(name + "[", 0) == 0 &&
               std::sscanf(told.c_str() + name.size(), "[%d%c", &processor, &end) == 2 && processor >= 0 && end == ']';
    };
    const std::string own = Shell::currentThreadName();
    EXPECT_TRUE(hasForm(own, "main-process")) << own;

    std::string other;
    std::thread([&] { other = Shell::currentThreadName(); }).join();
    EXPECT_TRUE(hasForm(other, "unknown-thread")) << other;

    NameTellingThread named(L"aufnahme-ä");
    NameTellingThread unnamed;
    ASSERT_TRUE(named.run(true) && unnamed.run(true));
    named.join();
    unnamed.join();
    EXPECT_TRUE(hasForm(named.told, "aufnahme-ä")) << named.told;
    EXPECT_TRUE(hasForm(unnamed.told, "unknown-thread")) << unnamed.told;
}

TEST(Shell, ThreadNameIsNotOverwrittenByAnotherThread)
{
    const char* const own = Shell::currentThreadName();
    const std::string before = own;
    std::thread([] { Shell::currentThreadName(); }).join();
    EXPECT_EQ(own, before);
}
