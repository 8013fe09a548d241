// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a test can do to the libraries below its program: they find its functions before the system's.
#include "support/Faults.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace K7Test {

namespace {

constexpr std::int64_t SECOND = 1'000'000'000;

std::atomic<std::int64_t> s_clockSetBy = 0;
std::atomic<std::uint32_t> s_failingThread = 0;
std::atomic<int> s_interval = 0;
std::atomic<int> s_calls = 0;

void shift(timespec* time)
{
    const std::int64_t shifted = time->tv_sec * SECOND + time->tv_nsec + s_clockSetBy;
    *time = {shifted / SECOND, shifted % SECOND};
}

bool failsNow()
{
    const std::uint32_t thread = s_failingThread;
    return thread != 0 && thread == static_cast<std::uint32_t>(::gettid()) && ++s_calls % s_interval == 0;
}

} // namespace

void setClockBy(std::chrono::nanoseconds difference) { s_clockSetBy += difference.count(); }

void failAllocations(std::uint32_t thread, int interval)
{
    s_calls = 0;
    s_interval = interval;
    s_failingThread = thread;
}

} // namespace K7Test

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && clock == CLOCK_REALTIME)
        K7Test::shift(time);
    return static_cast<int>(result);
}

extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

extern "C" ssize_t recvmsg(int fd, msghdr* message, int flags)
{
    const ssize_t received = ::syscall(SYS_recvmsg, fd, message, flags);
    cmsghdr* const header = received < 0 ? nullptr : CMSG_FIRSTHDR(message);
    if (header && header->cmsg_type == SCM_TIMESTAMPNS) {
        timespec stamp;
        std::memcpy(&stamp, CMSG_DATA(header), sizeof stamp);
        K7Test::shift(&stamp);
        std::memcpy(CMSG_DATA(header), &stamp, sizeof stamp);
    }
    return received;
}

void* operator new(std::size_t size)
{
    void* const memory = K7Test::failsNow() ? nullptr : std::malloc(size);
    return memory ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
