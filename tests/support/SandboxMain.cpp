// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Entry of the test programs that touch the system: runs the suite in namespaces of its own.
#include "support/Sandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

#include <sched.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace K7Test {

namespace {

constexpr const char* INSIDE = "K7_TEST_INSIDE_SANDBOX";
std::string s_problem;

bool write(const char* path, const std::string& text)
{
    std::ofstream file(path);
    return (file << text << std::flush).good();
}

bool fail(const char* step)
{
    s_problem = std::string(step) + ": " + std::strerror(errno);
    return false;
}

#ifdef K7_SANDBOX_KEEPS_ROOT
constexpr bool KEEPS_ROOT = true;
#else
constexpr bool KEEPS_ROOT = false;
#endif

bool unshareNamespaces()
{
    constexpr int NAMESPACES = CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWUTS;
    if (KEEPS_ROOT && ::geteuid() == 0)
        return ::unshare(NAMESPACES) == 0 || fail("unshare()");
    const std::string uid = std::to_string(::getuid());
    const std::string gid = std::to_string(::getgid());
    if (::unshare(CLONE_NEWUSER | NAMESPACES) != 0)
        return fail("unshare()");
    return (write("/proc/self/setgroups", "deny") && write("/proc/self/uid_map", "0 " + uid + " 1") &&
            write("/proc/self/gid_map", "0 " + gid + " 1")) ||
           fail("user mapping");
}

bool furnish()
{
    constexpr unsigned long FLAGS = MS_NOSUID | MS_NODEV | MS_NOEXEC;
    return (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("proc", "/proc", "proc", FLAGS, nullptr) == 0 &&
            ::mount("sysfs", "/sys", "sysfs", FLAGS, nullptr) == 0 && std::system("ip link set lo up") == 0) ||
           fail("mounts and loopback");
}

int exitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

/// As process 1 of the sandbox: start the suite once more, reap whatever is left to this process, and pass its end on.
[[noreturn]] void runAsInit(char** argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::setenv(INSIDE, furnish() ? "" : s_problem.c_str(), 1);
    const pid_t suite = ::fork();
    if (suite == 0) {
        ::execv("/proc/self/exe", argv);
        ::_exit(127);
    }
    int status = -1;
    while (::wait(&status) != suite) {
    }
    ::_exit(exitCode(status));
}

} // namespace

bool isSandboxed() { return s_problem.empty(); }

const char* sandboxProblem() { return s_problem.c_str(); }

pid_t startSleeper(std::string name)
{
    char duration[] = "60";
    char* const arguments[] = {name.data(), duration, nullptr};
    pid_t pid = -1;
    EXPECT_EQ(::posix_spawn(&pid, "/bin/sleep", nullptr, nullptr, arguments, environ), 0);
    // posix_spawn() returns while the kernel still lays out the new program: its command line is empty.
    const std::string path = "/proc/" + std::to_string(pid) + "/cmdline";
    for (int round = 0; round < 5000 && std::ifstream(path).peek() == EOF; ++round)
        ::usleep(1000);
    return pid;
}

} // namespace K7Test

/// The build asks for the list of the tests: nothing is run, so nothing is to be kept from the machine.
static bool listsTests(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + argc, [](std::string_view word) { return word == "--gtest_list_tests"; });
}

int main(int argc, char** argv)
{
    using namespace K7Test;
    if (const char* problem = std::getenv(INSIDE)) {
        s_problem = problem;
    } else if (!listsTests(argc, argv) && unshareNamespaces()) {
        const pid_t init = ::fork();
        if (init == 0)
            runAsInit(argv);
        int status = -1;
        while (::waitpid(init, &status, 0) < 0 && errno == EINTR) {
        }
        ::_exit(exitCode(status)); // no leak check here: with init gone, this process can start no other
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
