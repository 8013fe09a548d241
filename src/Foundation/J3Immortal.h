// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A static object that is never destroyed.
#pragma once

#include <new>
#include <type_traits>
#include <utility>

namespace Kivo {

/// A static object that is constructed as usual and never destroyed, so that static and thread_local destructors, and
/// threads that run on while the process exits, may still use it. What it owns stays allocated and reachable.
///
///     static J3Immortal<J3Lock> lock;                     // namespace scope: made when the library is loaded
///     static J3Immortal<std::locale> locale(name);        // function scope: made at the first call, before main() too
///
/// A type whose destructor is trivial (std::mutex, std::atomic) does not need it and may be constinit instead.
/// *Threads*: as T; the construction of a function-scope static is safe for concurrent first callers.
template <class T>
class J3Immortal {
public:
    template <class... Arguments>
    explicit J3Immortal(Arguments&&... arguments) noexcept(std::is_nothrow_constructible_v<T, Arguments...>)
    {
        ::new (static_cast<void*>(_storage)) T(std::forward<Arguments>(arguments)...);
    }

    J3Immortal(const J3Immortal&) = delete;
    J3Immortal& operator=(const J3Immortal&) = delete;

    // Not a union: GCC registers a destructor for a class that holds one, even when there is nothing to do.
    ~J3Immortal() = default;

    [[nodiscard]] T& operator*() noexcept { return *get(); }
    [[nodiscard]] const T& operator*() const noexcept { return *get(); }
    [[nodiscard]] T* operator->() noexcept { return get(); }
    [[nodiscard]] const T* operator->() const noexcept { return get(); }

private:
    T* get() noexcept { return std::launder(reinterpret_cast<T*>(_storage)); }
    const T* get() const noexcept { return std::launder(reinterpret_cast<const T*>(_storage)); }

    alignas(T) unsigned char _storage[sizeof(T)];
};

} // namespace Kivo
