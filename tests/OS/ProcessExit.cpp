// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Leaves main() again and again while the system utilities are in use: by other threads, and by the destructors of
// static and thread_local objects.
#include "OS/System/K7SystemUtil.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using Util = Kivo::K7SystemUtil;

namespace {

constexpr int ROUNDS = 20;

/// Uses what keeps something for the thread or the process, twice each: the second time meets what the first one left.
void useEverything()
{
    for (int turn = 0; turn < 2; ++turn) {
        Kivo::J3String text;
        const bool read = Util::readFile(L"/no/such/file", &text);
        if (read || Util::lastFailure().errorCode != ENOENT || Util::Memory::getMemTotal() > UINT32_MAX - 1 ||
            std::strchr(Util::Shell::currentThreadName(), '[') == nullptr ||
            Util::OS::getPlatformConfig().storageGroupCount() != 1 || !Util::systemRoot().isEmpty())
            ::_exit(2);
    }
}

struct User {
    User() { useEverything(); }
    ~User() { useEverything(); }
};

const User s_static;
thread_local const User t_perThread;

/// The process's part of one round: its threads run on while main() is left.
void leaveThreadsBehind()
{
    Util::Shell::setImplFunction0([](const char*, Util::Shell::CoutListener*) {
        ::usleep(200);
        return 0;
    });
    static_cast<void>(t_perThread);
    for (int i = 0; i < 2; ++i)
        std::thread([] {
            for (;;) {
                Util::Memory::refresh();
                Util::Memory::counterOf(L"MemAvailable");
            }
        }).detach();
    for (int i = 0; i < 2; ++i)
        std::thread([] {
            for (;;)
                Util::Shell::runCommand("format");
        }).detach();
    std::thread([] { static_cast<void>(t_perThread); }).join();
    ::usleep(5000);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1) {
        leaveThreadsBehind();
        return 0;
    }
    char round[] = "round";
    char* const arguments[] = {argv[0], round, nullptr};
    for (int i = 0; i < ROUNDS; ++i) {
        pid_t child = -1;
        int status = -1;
        if (::posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments, environ) != 0 ||
            ::waitpid(child, &status, 0) != child || status != 0) {
            std::fprintf(stderr, "round %d ended with the status %d\n", i, status);
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
