// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A thread with a name, a place among the processors and hooks along its life.
#pragma once

#include "Foundation/J3Lock.h"
#include "Foundation/J3String.h"
#include "Foundation/J3ThreadManager.h"

#include <array>
#include <atomic>
#include <optional>

#include <pthread.h>

namespace Kivo {

/// A thread that runs threadFunc() once for every run().
///
/// Whatever an operation on the thread throws goes to the object's exception notifications (J3Object) and never ends
/// the process; what those throw in turn is dropped. A subclass stops the thread (quit() and join()) in its own
/// destructor, because a thread that still runs must not meet a half-destroyed object; the one here is the last resort.
/// No thread destroys its own object.
///
/// A thread that is left by pthread_exit() or cancellation is unregistered and stops running like one that returns.
///
/// In a child after fork() the thread that called fork() runs on, under a new id; every other one does not run, and may
/// be run there again.
///
/// *Threads*: every operation may be called from any thread.
class J3_API J3Thread : public J3Object {
public:
    enum Policy {
        POLICY_NORMAL = 0,     ///< the kernel's time sharing
        POLICY_REALTIME = 1,   ///< first in, first out
        POLICY_REALTIME_RR = 2 ///< in turn among threads of the same priority
    };

    /// @param name    what the thread is called; the kernel shows its first 15 bytes. May be empty
    /// @param manager where the thread is found while it runs; null for nowhere
    explicit J3Thread(const J3String& name = {}, J3ThreadManager* manager = J3ThreadManager::defaultManager());
    J3Thread(const J3Thread&) = delete;
    J3Thread& operator=(const J3Thread&) = delete;
    ~J3Thread() override;

    /// Start the thread; a thread that has ended may be started again.
    /// @param wait whether to return only once the thread runs
    /// @return false when it already runs or the system gives no thread or no memory for one; a thread that was started
    ///         needs no more memory to get as far as starting()
    bool run(bool wait);

    /// Ask the thread to end: isQuitRequested() becomes true, and quitRequested() is called.
    void quit();

    /// Wait until the thread has ended; a thread that does not run, or that waits for itself, does not wait.
    void join();

    [[nodiscard]] bool isRunning() const { return _state == State::RUNNING && !isOfParent(); }

    /// Whether quit() was called since the last run(); what threadFunc() looks at.
    [[nodiscard]] bool isQuitRequested() const { return _quitRequested; }

    /// The kernel's id of the thread, 0 while it does not run. *Source*: gettid
    [[nodiscard]] uint32 threadId() const { return isOfParent() ? 0 : _threadId.load(); }

    [[nodiscard]] const J3String& name() const { return _name; }

    /// Set how the kernel schedules the thread, at once when it runs and else at its start.
    /// @param policy   how it shares the processors
    /// @param priority 1 to 99 for the two real-time policies; not used for the normal one
    /// *Privilege*: CAP_SYS_NICE or a sufficient RLIMIT_RTPRIO for the real-time policies. *Source*: sched_setscheduler
    void setPolicy(Policy policy, uint32 priority);

    /// Set on which of the processors 0 to 31 the thread may run, at once when it runs and else at its start.
    /// @param mask bit n stands for processor n; 0 leaves the thread where it may run now
    /// *Source*: sched_setaffinity
    void setAffinityMask(uint32 mask);

    /// The errno of the last policy or mask that the kernel refused since the thread was started, 0 when it took all.
    [[nodiscard]] int32 schedulingError() const { return _schedulingError; }

    /// Sleep on the monotonic clock; a signal does not shorten it.
    static void sleep(uint32 milliseconds);

protected:
    /// The hooks run on the thread itself, in this order; quitRequested() runs where quit() is called. A thread that is
    /// left by pthread_exit() or cancellation skips those that are left but for terminated(), which may not do the
    /// same.
    /// @{
    virtual void starting();      ///< before isRunning() becomes true
    virtual void started();       ///< the thread runs
    virtual void threadFunc();    ///< what the thread does
    virtual void quitRequested(); ///< wake the thread where it waits
    virtual void finished();      ///< threadFunc() has returned, or thrown
    virtual void terminated();    ///< isRunning() has become false, and the thread is no longer registered
    /// @}

    /// Run one of the object's operations; what it throws goes to the exception notifications, and what those throw
    /// nowhere.
    template <class T>
    void perform(void (T::*operation)())
    {
        performQuietly(static_cast<void (J3Object::*)()>(operation));
    }

private:
    enum class State { STOPPED, STARTING, RUNNING };

    struct Scheduling {
        Policy policy;
        uint32 priority;
    };

    static void* entry(void* self);
    void performQuietly(void (J3Object::*operation)());
    void main();
    void enter();
    void leave();
    void setState(State state);
    [[nodiscard]] bool isOfParent() const;
    void becomeChilds();
    static void watchForks();
    void applyPolicy();
    void applyAffinityMask();

    const J3String _name;
    std::array<char, 16> _kernelName{}; ///< as much of the name as the kernel has room for, ended by a zero
    J3ThreadManager* const _manager;
    J3ThreadManager::Threads::node_type _managerEntry; ///< handed over by run(), so that registering cannot fail
    std::atomic<State> _state = State::STOPPED;
    std::atomic<bool> _quitRequested = false;
    std::atomic<uint32> _threadId = 0;
    std::atomic<int32> _schedulingError = 0;
    std::atomic<uint32> _forks; ///< how many forks lay before the process that the thread was run in

    J3Mutex _handleMutex; ///< guards _handle, and makes callers of join() wait for each other
    std::optional<pthread_t> _handle;

    J3Mutex _schedulingMutex; ///< guards the two below, and keeps the thread from ending while they are applied
    std::optional<Scheduling> _scheduling;
    uint32 _affinityMask = 0;
};

} // namespace Kivo
