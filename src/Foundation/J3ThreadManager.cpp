// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The threads that run now, by their kernel thread id.
#include "Foundation/J3ThreadManager.h"

#include "Foundation/J3Immortal.h"

namespace Kivo {

J3ThreadManager* J3ThreadManager::defaultManager()
{
    static J3Immortal<J3ThreadManager> manager;
    return &*manager;
}

J3Thread* J3ThreadManager::findThread(uint32 threadId) const
{
    const std::lock_guard guard(_mutex);
    const auto found = _threads.find(threadId);
    return found == _threads.end() ? nullptr : found->second;
}

void J3ThreadManager::addThread(uint32 threadId, J3Thread* thread) { addEntry(threadId, makeEntry(thread)); }

void J3ThreadManager::removeThread(uint32 threadId)
{
    const std::lock_guard guard(_mutex);
    _threads.erase(threadId);
}

/// What addEntry() takes, made where a failed allocation can still be told.
J3ThreadManager::Threads::node_type J3ThreadManager::makeEntry(J3Thread* thread)
{
    Threads made{{0, thread}};
    return made.extract(made.begin());
}

/// Register without allocating.
void J3ThreadManager::addEntry(uint32 threadId, Threads::node_type entry)
{
    entry.key() = threadId;
    const std::lock_guard guard(_mutex);
    _threads.erase(threadId); // of a thread that ended without a word
    _threads.insert(std::move(entry));
}

/// Forget every thread but one, which goes on under another id. The caller holds the mutex.
void J3ThreadManager::keepOnly(uint32 oldId, uint32 newId)
{
    Threads::node_type kept = _threads.extract(oldId);
    _threads.clear();
    if (kept.empty())
        return;
    kept.key() = newId;
    _threads.insert(std::move(kept));
}

} // namespace Kivo
