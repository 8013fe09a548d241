// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The steps of a pinger's worker thread from one run state to the next.
#include "OS/Network/Testing/detail/PingerWorker_p.h"

#include <algorithm>
#include <ctime>

#include <cxxabi.h>
#include <unistd.h>

namespace Kivo {

bool K7Pinger::Worker::isCaller() const { return _pinger.threadId() == static_cast<uint32>(::gettid()); }

K7RunState K7Pinger::Worker::runState() const
{
    const std::lock_guard guard(_stateMutex);
    return _runState;
}

void K7Pinger::Worker::setRunState(K7RunState state)
{
    const std::lock_guard guard(_stateMutex);
    const bool wakes = state != K7_STATE_IDLE && _runState == K7_STATE_IDLE;
    _runState = state;
    if (wakes)
        _pinger.resume();
}

void K7Pinger::Worker::advance(K7RunState from, K7RunState to)
{
    const std::lock_guard guard(_stateMutex);
    if (!_abandoned && _runState == from)
        setRunState(to);
}

void K7Pinger::Worker::leave()
{
    const std::lock_guard guard(_stateMutex);
    _abandoned = true;
    _leaving = true;
    _runState = K7_STATE_IDLE;
}

void K7Pinger::Worker::stay()
{
    const std::lock_guard guard(_stateMutex);
    _leaving = false;
}

void K7Pinger::Worker::serve()
{
    static constexpr void (Worker::*HANDLERS[])() = {&Worker::onIdle, &Worker::onBegin, &Worker::onPinging,
                                                     &Worker::onStopped, &Worker::onEnd};
    _abandoned = false;
    (this->*HANDLERS[runState()])();
    const std::lock_guard guard(_stateMutex);
    if (_leaving)
        _pinger.quit();
}

void K7Pinger::Worker::onIdle() {}

void K7Pinger::Worker::onBegin()
{
    notify([](K7PingerListener& listener) { listener.onPingBegin(); });
    advance(K7_STATE_BEGIN, K7_STATE_PINGING);
}

void K7Pinger::Worker::onPinging()
{
    invokePingTest();
    advance(K7_STATE_PINGING, K7_STATE_STOPPED);
}

void K7Pinger::Worker::onStopped()
{
    bool isTold;
    {
        const std::lock_guard guard(_stateMutex);
        isTold = std::exchange(_toldStopped, true);
    }
    if (!isTold) // a stop() after this state leads here once more
        notify([](K7PingerListener& listener) { listener.onPingStopped(); });
    advance(K7_STATE_STOPPED, K7_STATE_END);
}

void K7Pinger::Worker::onEnd()
{
    notify([](K7PingerListener& listener) { listener.onPingEnd(); });
    const std::lock_guard guard(_stateMutex);
    if (!_abandoned)
        setRunState(K7_STATE_IDLE);
}

void K7Pinger::Worker::invokePingTest()
{
    try {
        PingOrder test = order();
        if (test.targets.empty())
            return _rounds.rest(_rounds.timing().withoutTarget);
        _rounds.run(std::move(test));
    } catch (const std::exception& error) {
        _rounds.rememberFailure("K7Pinger::invokePingTest", error);
    }
    _rounds.grade();
    const J3Time finishedAt = J3Time::from_time_t(std::time(nullptr));
    for (const auto& [address, result] : _rounds.resultMap())
        notify(
            [&finishedAt, &graded = result](K7PingerListener& listener) { listener.onPingResult(finishedAt, graded); });
    _rounds.clear();
}

PingOrder K7Pinger::Worker::order() const
{
    const std::lock_guard guard(_infoMutex);
    return {_ifceName, _testCount, _targets};
}

void K7Pinger::Worker::notify(const std::function<void(K7PingerListener&)>& call)
{
    const std::lock_guard guard(_listenersMutex);
    _notification = {&call, 0, _listeners.size()};
    while (_notification.next < _notification.end && !isAbandoned()) {
        try {
            _pinger.perform(&K7Pinger::callNextListener);
        } catch (const abi::__forced_unwind&) {
            throw; // a thread being cancelled, which must not be stopped
        } catch (...) {
            continue; // the exception notification has failed too: nobody is left to be told
        }
    }
    _notification = {};
}

void K7Pinger::Worker::callNextListener()
{
    K7PingerListener* const listener = _listeners[_notification.next++];
    if (listener && listener->isActive())
        (*_notification.call)(*listener);
}

void K7Pinger::Worker::removeListener(K7PingerListener* listener)
{
    const std::lock_guard guard(_listenersMutex);
    const auto found = std::find(_listeners.begin(), _listeners.end(), listener);
    if (found == _listeners.end())
        return;
    const auto index = static_cast<std::size_t>(found - _listeners.begin());
    _listeners.erase(found);
    if (index < _notification.next)
        --_notification.next;
    if (index < _notification.end)
        --_notification.end;
}

} // namespace Kivo
