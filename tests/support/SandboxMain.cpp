// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Entry of the test programs that touch the system: runs the suite in namespaces of its own.
#include "support/Sandbox.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace K7Test {

namespace {

constexpr const char* INSIDE = "K7_TEST_INSIDE_SANDBOX";
std::string s_problem;

bool write(const char* path, const std::string& text)
{
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

bool fail(const char* step)
{
    s_problem = std::string(step) + ": " + std::strerror(errno);
    return false;
}

bool unshareNamespaces()
{
    const std::string uid = std::to_string(::getuid());
    const std::string gid = std::to_string(::getgid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWUTS) != 0)
        return fail("unshare()");
    if (!write("/proc/self/setgroups", "deny") || !write("/proc/self/uid_map", "0 " + uid + " 1") ||
        !write("/proc/self/gid_map", "0 " + gid + " 1"))
        return fail("user mapping");
    return true;
}

bool bringLoopbackUp()
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    const bool up = fd >= 0 && ::ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    ::close(fd);
    return up;
}

bool furnish()
{
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return fail("private mounts");
    if (::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0)
        return fail("mount of /proc");
    if (::mount("sysfs", "/sys", "sysfs", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0)
        return fail("mount of /sys");
    return bringLoopbackUp() || fail("loopback");
}

int exitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

/// As process 1 of the sandbox: start the suite once more, reap whatever is left to this process, and pass its end on.
[[noreturn]] void runAsInit(char** argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (furnish())
        ::setenv(INSIDE, "", 1);
    else
        ::setenv(INSIDE, s_problem.c_str(), 1);
    const pid_t suite = ::fork();
    if (suite == 0) {
        ::execv("/proc/self/exe", argv);
        ::_exit(127);
    }
    for (int status = 0;;) {
        const pid_t ended = ::wait(&status);
        if (ended == suite)
            ::_exit(exitCode(status));
        if (ended < 0 && errno != EINTR)
            ::_exit(126);
    }
}

bool listsTests(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        if (std::string_view(argv[i]) == "--gtest_list_tests")
            return true;
    return false;
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

int main(int argc, char** argv)
{
    using namespace K7Test;
    if (const char* problem = std::getenv(INSIDE)) {
        s_problem = problem;
    } else if (!listsTests(argc, argv) && unshareNamespaces()) {
        const pid_t init = ::fork();
        if (init == 0)
            runAsInit(argv);
        int status = 0;
        while (::waitpid(init, &status, 0) < 0 && errno == EINTR) {
        }
        ::_exit(exitCode(status)); // no leak check here: with init gone, this process can start no other
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
