// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The locks of the foundation.
#include "Foundation/J3Lock.h"

#include "Foundation/J3Assert.h"

#include <cerrno>
#include <ctime>
#include <system_error>

namespace Kivo {

namespace {

void require(int error, const char* what)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

timespec monotonicDeadline(uint32 milliseconds)
{
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += milliseconds / 1000;
    deadline.tv_nsec += (milliseconds % 1000) * 1'000'000L;
    if (deadline.tv_nsec >= 1'000'000'000L) {
        ++deadline.tv_sec;
        deadline.tv_nsec -= 1'000'000'000L;
    }
    return deadline;
}

} // namespace

void J3Lock::lock() const { _mutex.lock(); }

void J3Lock::unlock() const { _mutex.unlock(); }

bool J3Lock::tryLock() const { return _mutex.try_lock(); }

J3RecursiveMutex::J3RecursiveMutex(bool recursive)
{
    pthread_mutexattr_t attributes;
    require(pthread_mutexattr_init(&attributes), "pthread_mutexattr_init");
    pthread_mutexattr_settype(&attributes, recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_ERRORCHECK);
    const int error = pthread_mutex_init(&_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    require(error, "pthread_mutex_init");
}

J3RecursiveMutex::~J3RecursiveMutex() { pthread_mutex_destroy(&_mutex); }

void J3RecursiveMutex::lock() const { require(pthread_mutex_lock(&_mutex), "pthread_mutex_lock"); }

void J3RecursiveMutex::unlock() const
{
    if (pthread_mutex_unlock(&_mutex) != 0)
        J3_REPORT("pthread_mutex_unlock(&_mutex) == 0", "the mutex is not held by this thread", "Foundation/J3Lock");
}

J3Condition::J3Condition()
{
    pthread_condattr_t attributes;
    require(pthread_condattr_init(&attributes), "pthread_condattr_init");
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    const int error = pthread_cond_init(&_condition, &attributes);
    pthread_condattr_destroy(&attributes);
    require(error, "pthread_cond_init");
}

J3Condition::~J3Condition() { pthread_cond_destroy(&_condition); }

void J3Condition::wait(const J3Mutex& mutex) { pthread_cond_wait(&_condition, mutex._mutex.native_handle()); }

bool J3Condition::waitFor(const J3Mutex& mutex, uint32 milliseconds)
{
    const timespec deadline = monotonicDeadline(milliseconds);
    return pthread_cond_timedwait(&_condition, mutex._mutex.native_handle(), &deadline) != ETIMEDOUT;
}

void J3Condition::signal() { pthread_cond_signal(&_condition); }

void J3Condition::broadcast() { pthread_cond_broadcast(&_condition); }

} // namespace Kivo
