// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Where the host's handler of some report is kept.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include <atomic>
#include <mutex>
#include <utility>

namespace Kivo {

/// Holds at most one handler, with or without a context, and may be constinit.
/// *Threads*: any; a report under way may still reach the handler that was replaced.
template <class... Arguments>
class HandlerSlot {
public:
    using Handler = void (*)(Arguments...);
    using ContextHandler = void (*)(void* context, Arguments...);

    /// @return the handler that was replaced, null for none and for one with a context
    Handler set(Handler handler) { return exchange({handler, nullptr, nullptr}); }
    void set(ContextHandler handler, void* context) { exchange({nullptr, handler, context}); }

    /// @return false when there is no handler
    bool call(Arguments... arguments) const
    {
        if (!_given.load(std::memory_order_acquire))
            return false;
        const Installed installed = current();
        if (installed.plain)
            installed.plain(arguments...);
        else if (installed.withContext)
            installed.withContext(installed.context, arguments...);
        return installed.plain || installed.withContext;
    }

private:
    struct Installed {
        Handler plain = nullptr;
        ContextHandler withContext = nullptr;
        void* context = nullptr;
    };

    Handler exchange(Installed installed)
    {
        const std::lock_guard guard(_mutex);
        std::swap(_installed, installed);
        _given.store(_installed.plain || _installed.withContext, std::memory_order_release);
        return installed.plain;
    }

    Installed current() const
    {
        const std::lock_guard guard(_mutex);
        return _installed;
    }

    mutable std::mutex _mutex;
    std::atomic<bool> _given{false};
    Installed _installed;
};

} // namespace Kivo
