// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a pinger keeps, and what its worker thread does with it.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "OS/Network/Testing/detail/PingRounds_p.h"

#include <functional>

namespace Kivo {

/// The run state, configuration and listeners of a pinger, and the steps of its worker from one state to the next.
///
/// Locks are taken in the order of their declaration, any of them being left out; _infoMutex and those of the rounds
/// are held for no call to the outside. A callback runs under _listenersMutex alone, so whoever holds _lifeMutex and
/// waits for the worker is not waited for by the worker.
class K7Pinger::Worker {
public:
    explicit Worker(K7Pinger& pinger) : _pinger(pinger), _rounds(pinger) {}

    /// The worker of a pinger, for tests.
    static Worker& of(K7Pinger& pinger) { return *pinger._worker; }

    [[nodiscard]] PingRounds& rounds() { return _rounds; }

private:
    friend class K7Pinger;

    /// A pass over the listeners, which may change the list while they are called.
    struct Notification {
        const std::function<void(K7PingerListener&)>* call = nullptr;
        std::size_t next = 0; ///< the entry to call next
        std::size_t end = 0;  ///< behind the last entry that was there when the pass began
    };

    /// Whether the calling thread is the worker, in a callback.
    [[nodiscard]] bool isCaller() const;

    /// Whether the test that the worker is in has been given up.
    [[nodiscard]] bool isAbandoned() const { return _abandoned || _pinger.isQuitRequested(); }

    [[nodiscard]] K7RunState runState() const;
    [[nodiscard]] bool isIdleState() const { return runState() == K7_STATE_IDLE; }
    void setRunState(K7RunState state);

    /// Go on to the next state, unless the test was stopped or given up meanwhile.
    void advance(K7RunState from, K7RunState to);

    /// What cleanup() does in a callback: the worker leaves when it returns from it, unless init() is called.
    void leave();
    void stay();

    /// Do what the run state asks for.
    void serve();
    void onIdle();
    void onBegin();
    void onPinging();
    void onStopped();
    void onEnd();

    /// Run one whole test; what it cannot do is noted as the test's failure.
    void invokePingTest();
    [[nodiscard]] PingOrder order() const;

    /// Call every listener that was there when the pass began and still is, until the test is given up.
    void notify(const std::function<void(K7PingerListener&)>& call);
    void callNextListener();
    void removeListener(K7PingerListener* listener);

    K7Pinger& _pinger;

    J3RecursiveMutex _lifeMutex; ///< held while the thread is started or ended, by any thread but the worker

    J3RecursiveMutex _listenersMutex; ///< guards _listeners and _notification
    ListenerList _listeners;
    Notification _notification;

    J3RecursiveMutex _stateMutex; ///< guards the four below
    K7RunState _runState = K7_STATE_IDLE;
    bool _toldStopped = false;              ///< in this cycle
    bool _leaving = false;                  ///< the worker ends once it comes out of the callback
    K7SystemUtil::Failure _threadFailure{}; ///< of the last init()

    J3RecursiveMutex _infoMutex; ///< guards the configuration
    J3String _ifceName = L"eth1";
    uint32 _testCount = 5;
    std::vector<K7PingTarget> _targets;

    bool _abandoned = false; ///< the worker's own: cleanup() was called in a callback of this step
    PingRounds _rounds;
};

} // namespace Kivo
