// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The threads that run now, by their kernel thread id.
#pragma once

#include "Foundation/J3Types.h"

#include <map>
#include <mutex>

namespace Kivo {

class J3Thread;

/// Knows the threads that run now by their kernel thread id. A J3Thread registers itself for as long as it runs.
///
/// In a child after fork() the default manager knows the thread that called fork(), by its new id, and no other.
/// *Threads*: any, at the same time.
class J3_API J3ThreadManager {
public:
    J3ThreadManager() = default;
    J3ThreadManager(const J3ThreadManager&) = delete;
    J3ThreadManager& operator=(const J3ThreadManager&) = delete;

    /// The manager of the process; it outlives every static object.
    [[nodiscard]] static J3ThreadManager* defaultManager();

    /// @return the thread that runs under @p threadId, null when none is registered. It may end at any time, so that
    /// the pointer is safe only for who keeps the thread from ending; a thread that looks itself up does.
    [[nodiscard]] J3Thread* findThread(uint32 threadId) const;

    void addThread(uint32 threadId, J3Thread* thread);
    void removeThread(uint32 threadId);

private:
    friend class J3Thread;
    using Threads = std::map<uint32, J3Thread*>;

    static Threads::node_type makeEntry(J3Thread* thread);
    void addEntry(uint32 threadId, Threads::node_type entry);
    void keepOnly(uint32 oldId, uint32 newId);

    mutable std::mutex _mutex;
    Threads _threads;
};

} // namespace Kivo
