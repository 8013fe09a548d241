// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The one instance of a class, made by whoever asks first.
#pragma once

#include "Foundation/J3Immortal.h"
#include "Foundation/J3Types.h"

#include <boost/scoped_ptr.hpp>

#include <atomic>
#include <mutex>

namespace Kivo {

/// Keeps the one instance of T. T may keep its constructor and destructor private and name J3Singleton<T> its friend.
///
/// For one instance across shared libraries, T's own library instantiates the template and exports it, and T's header
/// says so to everyone else:
///
///     extern template class J3Singleton<HalManager>; // in HalManager.h
///     template class J3Singleton<HalManager>;        // in HalManager.cpp
///
/// The instance lives as long as the library is loaded. This project's libraries stay loaded until the process has
/// ended, so that static and thread_local destructors, and threads that still run then, may go on using it: T's
/// destructor is never run.
///
/// *Threads*: safe for concurrent first callers, in static initialisers and in static destructors.
template <class T>
class J3_API J3Singleton {
public:
    J3Singleton() = delete;

    /// Give the one instance, made by the first call. What T's constructor throws reaches the caller, and the next call
    /// tries again. T's constructor may not ask for the instance.
    [[nodiscard]] static T* get()
    {
        T* const instance = _instance.load(std::memory_order_acquire);
        return instance ? instance : create();
    }

    /// Whether the instance is being made right now.
    [[nodiscard]] static bool isAllocating() { return _allocating.load(std::memory_order_relaxed); }

private:
    // Stands between T and the holder, which has no access to a private destructor.
    struct Owned {
        T value;
    };

    struct AllocatingScope {
        AllocatingScope() { _allocating = true; }

        ~AllocatingScope() { _allocating = false; }

        AllocatingScope(const AllocatingScope&) = delete;
        AllocatingScope& operator=(const AllocatingScope&) = delete;
    };

    [[gnu::noinline]] static T* create();

    static constinit inline std::atomic<T*> _instance{nullptr};
    static constinit inline std::mutex _mutex;
    static constinit inline std::atomic<bool> _allocating{false};
};

template <class T>
T* J3Singleton<T>::create()
{
    const std::lock_guard guard(_mutex);
    if (T* const instance = _instance.load(std::memory_order_relaxed))
        return instance;
    const AllocatingScope scope;
    static J3Immortal<boost::scoped_ptr<Owned>> holder(new Owned); // not made when T throws
    _instance.store(&(*holder)->value, std::memory_order_release);
    return &(*holder)->value;
}

} // namespace Kivo
