// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network quality tester: its life, configuration and listeners.
#include "OS/Network/Testing/K7Pinger.h"

#include "OS/Network/Testing/detail/PingerWorker_p.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace Kivo {

namespace {

constexpr uint32 POLL_INTERVAL = 100; ///< milliseconds
constexpr uint32 MOST_ATTEMPTS = 10;  ///< to get a thread: cleanup() waits for init() no longer than a second

} // namespace

K7Pinger::K7Pinger() : J3Looper(L"K7Pinger", nullptr), _worker(std::make_unique<Worker>(*this)) {}

K7Pinger::~K7Pinger()
{
    cleanup();
    clearAllListener();
}

J3String K7Pinger::toString() const
{
    const K7RunState state = runState();
    const std::lock_guard guard(_worker->_listenersMutex);
    return J3String().format(L"{\"state\" : %d, \"listeners\" : %u}", state,
                             static_cast<uint32>(_worker->_listeners.size()));
}

bool K7Pinger::init(const J3String& ifceName)
{
    {
        const std::lock_guard guard(_worker->_infoMutex);
        _worker->_ifceName = ifceName;
    }
    _worker->stay();
    if (_worker->isCaller() || (isRunning() && !isQuitRequested()))
        return true;
    const std::lock_guard guard(_worker->_lifeMutex);
    if (isQuitRequested())
        join();
    const K7SystemUtil::Failure failure = startThread();
    const std::lock_guard stateGuard(_worker->_stateMutex);
    _worker->_threadFailure = failure;
    return true;
}

/// Run the thread and wait until it reports that it runs. @return why none could be had
K7SystemUtil::Failure K7Pinger::startThread()
{
    bool isMade = threadId() != 0;
    for (uint32 attempt = 1; !isRunning(); ++attempt) {
        isMade = run(false) || isMade;
        if (!isMade && attempt == MOST_ATTEMPTS)
            return {L"K7Pinger::init", L"J3Thread::run", EAGAIN};
        sleep(POLL_INTERVAL);
    }
    return {};
}

void K7Pinger::cleanup()
{
    if (_worker->isCaller())
        return _worker->leave();
    const std::lock_guard guard(_worker->_lifeMutex);
    quit();
    join();
    _worker->_rounds.destorySocket();
    _worker->_rounds.clear();
    _worker->setRunState(K7_STATE_IDLE);
}

bool K7Pinger::start()
{
    const std::lock_guard guard(_worker->_stateMutex);
    if (!_worker->isIdleState())
        return false;
    _worker->_rounds.prepare();
    _worker->_toldStopped = false;
    _worker->setRunState(K7_STATE_BEGIN);
    return true;
}

void K7Pinger::stop()
{
    const std::lock_guard guard(_worker->_stateMutex);
    if (!_worker->isIdleState())
        _worker->setRunState(K7_STATE_STOPPED);
}

void K7Pinger::finish()
{
    const std::lock_guard guard(_worker->_stateMutex);
    if (!_worker->isIdleState())
        _worker->_rounds.finish();
}

K7RunState K7Pinger::runState() const { return _worker->runState(); }

K7Pinger::ResultMap K7Pinger::results() const { return _worker->_rounds.results(); }

K7SystemUtil::Failure K7Pinger::testFailure() const
{
    const std::lock_guard guard(_worker->_stateMutex);
    return _worker->_threadFailure.operation.isEmpty() ? _worker->_rounds.failure() : _worker->_threadFailure;
}

uint32 K7Pinger::expectedDuration() const
{
    const std::lock_guard guard(_worker->_infoMutex);
    const PingTiming& timing = _worker->_rounds.timing();
    const uint64 rounds = timing.settle + uint64{timing.window} * _worker->_testCount;
    const uint64 test = _worker->_targets.empty() ? timing.withoutTarget : rounds;
    const uint64 steps = 3 * uint64{timing.step}; // from one run state to the next
    return static_cast<uint32>(std::min<uint64>(test + steps, std::numeric_limits<uint32>::max()));
}

bool K7Pinger::addTarget(int32 channel, const K7InetAddress& address)
{
    K7PingTarget target;
    target.setChannel(channel);
    target.setAddress(address);
    const std::lock_guard guard(_worker->_infoMutex);
    _worker->_targets.push_back(target);
    return true;
}

void K7Pinger::clearAllTarget()
{
    const std::lock_guard guard(_worker->_infoMutex);
    _worker->_targets.clear();
}

uint32 K7Pinger::testCount() const
{
    const std::lock_guard guard(_worker->_infoMutex);
    return _worker->_testCount;
}

void K7Pinger::setTestCount(uint32 testCount)
{
    const std::lock_guard guard(_worker->_infoMutex);
    _worker->_testCount = testCount;
}

void K7Pinger::addListener(K7PingerListener* listener)
{
    if (!listener)
        return;
    const std::lock_guard guard(_worker->_listenersMutex);
    _worker->_listeners.push_back(listener);
}

void K7Pinger::delListener(K7PingerListener* listener)
{
    if (listener)
        _worker->removeListener(listener);
}

void K7Pinger::clearAllListener()
{
    const std::lock_guard guard(_worker->_listenersMutex);
    _worker->_listeners.clear();
    _worker->_notification.next = _worker->_notification.end = 0;
}

void K7Pinger::looperFunc()
{
    _worker->serve();
    sleep(_worker->_rounds.timing().step);
}

void K7Pinger::callNextListener() { _worker->callNextListener(); }

} // namespace Kivo
