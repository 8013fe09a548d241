// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The threads that run now, by their kernel thread id.
#include "Foundation/J3ThreadManager.h"

namespace Kivo {

J3ThreadManager* J3ThreadManager::defaultManager()
{
    // Never destroyed: a thread may end after the static objects of this library are gone.
    static auto* const manager = new J3ThreadManager;
    return manager;
}

J3Thread* J3ThreadManager::findThread(uint32 threadId) const
{
    const std::lock_guard guard(_mutex);
    const auto found = _threads.find(threadId);
    return found == _threads.end() ? nullptr : found->second;
}

void J3ThreadManager::addThread(uint32 threadId, J3Thread* thread)
{
    const std::lock_guard guard(_mutex);
    _threads[threadId] = thread;
}

void J3ThreadManager::removeThread(uint32 threadId)
{
    const std::lock_guard guard(_mutex);
    _threads.erase(threadId);
}

} // namespace Kivo
