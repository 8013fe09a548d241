// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The locks of the foundation.
#pragma once

#include "Foundation/J3Object.h"

#include <boost/thread/mutex.hpp>

#include <mutex>

#include <pthread.h>

namespace Kivo {

/// Something that is taken and given back around a guarded section; std::lock_guard and its like take it.
class J3_API J3AutoLockable : public J3Object {
public:
    virtual void lock() const = 0;
    virtual void unlock() const = 0;
};

/// The lock of the static utilities, on one Boost mutex.
class J3_API J3Lock : public J3AutoLockable {
public:
    /// @throws boost::thread_resource_error when the mutex cannot be made
    J3Lock() = default;
    J3Lock(const J3Lock&) = delete;
    J3Lock& operator=(const J3Lock&) = delete;

    /// Wait until the mutex is held; an interrupted call is retried. @throws boost::lock_error
    void lock() const override;

    /// Give it back; that is for the thread that holds it alone.
    void unlock() const override;

    /// @return whether the mutex was free and is now held
    [[nodiscard]] bool tryLock() const;

private:
    mutable boost::mutex _mutex;
};

/// A mutex that its holder may take again.
class J3_API J3RecursiveMutex {
public:
    /// @param recursive false makes a second lock() of the holder throw std::system_error instead
    explicit J3RecursiveMutex(bool recursive = true);
    J3RecursiveMutex(const J3RecursiveMutex&) = delete;
    J3RecursiveMutex& operator=(const J3RecursiveMutex&) = delete;
    ~J3RecursiveMutex();

    /// @throws std::system_error when it cannot be taken
    void lock() const;

    /// Give it back; by a thread that does not hold it this is a failed assertion and nothing else.
    void unlock() const;

private:
    mutable pthread_mutex_t _mutex;
};

/// A plain mutex, the partner of J3Condition.
class J3_API J3Mutex {
public:
    J3Mutex() = default;
    J3Mutex(const J3Mutex&) = delete;
    J3Mutex& operator=(const J3Mutex&) = delete;

    void lock() const { _mutex.lock(); }

    void unlock() const { _mutex.unlock(); }

private:
    friend class J3Condition;
    mutable std::mutex _mutex;
};

/// Lets threads wait until another one tells them that something has changed.
class J3_API J3Condition {
public:
    J3Condition();
    J3Condition(const J3Condition&) = delete;
    J3Condition& operator=(const J3Condition&) = delete;
    ~J3Condition();

    /// Give @p mutex back, wait, and take it again; may also return without a signal.
    void wait(const J3Mutex& mutex);

    /// The same for at most @p milliseconds on the monotonic clock. @return false when the time has passed
    bool waitFor(const J3Mutex& mutex, uint32 milliseconds);

    void signal();
    void broadcast();

private:
    pthread_cond_t _condition;
};

} // namespace Kivo
