// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A lock that a forked child does not find held by a thread that it does not have.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Foundation/J3Lock.h"

#include <atomic>
#include <new>

namespace Kivo {

/// A J3Lock that knows its holder.
class ProcessLock : public J3Lock {
public:
    void lock() const override
    {
        J3Lock::lock();
        _holder.store(thisThread(), std::memory_order_relaxed);
    }

    void unlock() const override
    {
        _holder.store(nullptr, std::memory_order_relaxed);
        J3Lock::unlock();
    }

    [[nodiscard]] bool tryLock() const
    {
        const bool taken = J3Lock::tryLock();
        if (taken)
            _holder.store(thisThread(), std::memory_order_relaxed);
        return taken;
    }

    /// To be called in a forked child, by its only thread: the lock is free there unless that thread holds it.
    /// @return whether it was made free
    bool freeAfterFork()
    {
        if (_holder.load(std::memory_order_relaxed) == thisThread())
            return false;
        // Made anew: who held the old mutex, in the parent, will never give it back here.
        ::new (static_cast<void*>(this)) ProcessLock;
        return true;
    }

private:
    /// The same in a child as in the thread that forked it.
    static const void* thisThread()
    {
        static constinit thread_local char t_here = 0;
        return &t_here;
    }

    mutable std::atomic<const void*> _holder{nullptr};
};

} // namespace Kivo
