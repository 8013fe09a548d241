// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A thread with a name, a place among the processors and hooks along its life.
#include "Foundation/J3Thread.h"

#include "Base/ForcedUnwind_p.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <new>

#include <sched.h>
#include <unistd.h>

namespace Kivo {

namespace {

constinit thread_local J3Thread* t_self = nullptr;

// How many forks lie between the first process and this one.
constinit std::atomic<uint32> s_forks{0};

/// What the kernel's tables show of @p name: its first 15 bytes, no character cut in two.
std::array<char, 16> kernelNameOf(const J3String& name)
{
    const std::string text = name.to_string();
    std::size_t end = std::min<std::size_t>(text.size(), 15);
    while (end > 0 && end < text.size() && (static_cast<uint8>(text[end]) & 0xC0) == 0x80)
        --end;
    std::array<char, 16> shown{};
    std::copy_n(text.begin(), end, shown.begin());
    return shown;
}

int kernelPolicy(J3Thread::Policy policy)
{
    switch (policy) {
    case J3Thread::POLICY_NORMAL:
        return SCHED_OTHER;
    case J3Thread::POLICY_REALTIME:
        return SCHED_FIFO;
    case J3Thread::POLICY_REALTIME_RR:
        return SCHED_RR;
    }
    return -1;
}

} // namespace

J3Thread::J3Thread(const J3String& name, J3ThreadManager* manager)
    : _name(name), _kernelName(kernelNameOf(name)), _manager(manager), _forks(s_forks.load())
{}

J3Thread::~J3Thread()
{
    _quitRequested = true; // what quit() would still reach here
    join();
}

bool J3Thread::run(bool wait)
try {
    watchForks();
    if (isOfParent())
        becomeChilds();
    if (_state != State::STOPPED || t_self == this)
        return false;
    {
        const std::lock_guard guard(_handleMutex);
        if (_state != State::STOPPED)
            return false;
        if (_handle)
            pthread_join(*_handle, nullptr);
        _handle.reset();
        if (_manager)
            _managerEntry = J3ThreadManager::makeEntry(this);
        _quitRequested = false;
        _state = State::STARTING;
        pthread_t handle{};
        if (pthread_create(&handle, nullptr, &J3Thread::entry, this) != 0) {
            setState(State::STOPPED);
            return false;
        }
        _handle = handle;
    }
    if (wait)
        _state.wait(State::STARTING);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void J3Thread::quit()
{
    _quitRequested = true;
    quitRequested();
}

void J3Thread::join()
{
    if (t_self == this || isOfParent())
        return;
    const std::lock_guard guard(_handleMutex);
    if (_handle)
        pthread_join(*_handle, nullptr);
    _handle.reset();
}

void J3Thread::setPolicy(Policy policy, uint32 priority)
{
    if (isOfParent())
        becomeChilds();
    const std::lock_guard guard(_schedulingMutex);
    _scheduling = Scheduling{policy, priority};
    if (_threadId != 0)
        applyPolicy();
}

void J3Thread::setAffinityMask(uint32 mask)
{
    if (isOfParent())
        becomeChilds();
    const std::lock_guard guard(_schedulingMutex);
    _affinityMask = mask;
    if (_threadId != 0)
        applyAffinityMask();
}

void J3Thread::sleep(uint32 milliseconds)
{
    timespec rest{milliseconds / 1000, (milliseconds % 1000) * 1'000'000L};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &rest, &rest) == EINTR) {
    }
}

void J3Thread::starting() {}

void J3Thread::started() {}

void J3Thread::threadFunc() {}

void J3Thread::quitRequested() {}

void J3Thread::finished() {}

void J3Thread::terminated() {}

void* J3Thread::entry(void* self)
{
    static_cast<J3Thread*>(self)->main();
    return nullptr;
}

K7_CATCHES_FORCED_UNWIND void J3Thread::performQuietly(void (J3Object::*operation)())
try {
    performWithoutException(operation);
} catch (const ForcedUnwind&) {
    throw;
} catch (...) { // a notification that failed in turn
}

K7_CATCHES_FORCED_UNWIND void J3Thread::main()
{
    try {
        enter();
        perform(&J3Thread::starting);
        setState(State::RUNNING);
        perform(&J3Thread::started);
        perform(&J3Thread::threadFunc);
        perform(&J3Thread::finished);
    } catch (const ForcedUnwind&) {
        leave();
        throw;
    }
    leave();
}

void J3Thread::enter()
{
    t_self = this;
    if (_kernelName[0] != '\0')
        pthread_setname_np(pthread_self(), _kernelName.data());
    const std::lock_guard guard(_schedulingMutex);
    _threadId = static_cast<uint32>(gettid());
    _schedulingError = 0;
    applyPolicy();
    applyAffinityMask();
    if (_manager)
        _manager->addEntry(_threadId, std::move(_managerEntry));
}

void J3Thread::leave()
{
    {
        const std::lock_guard guard(_schedulingMutex);
        if (_manager)
            _manager->removeThread(_threadId);
        _threadId = 0;
    }
    setState(State::STOPPED);
    perform(&J3Thread::terminated);
}

/// Whether the thread was run in a process that this one was forked from, and not by the thread that forked.
bool J3Thread::isOfParent() const { return _forks != s_forks; }

/// Forget a thread that stayed behind in the parent, with the locks that it, or another one, held there.
void J3Thread::becomeChilds()
{
    ::new (&_handleMutex) J3Mutex;
    ::new (&_schedulingMutex) J3Mutex;
    _handle.reset();
    _threadId = 0;
    _state = State::STOPPED;
    _forks = s_forks.load();
}

/// See to it that a fork leaves the default manager and the thread that forks in order. @throws std::bad_alloc
void J3Thread::watchForks()
{
    static constexpr auto lock = [] { J3ThreadManager::defaultManager()->_mutex.lock(); };
    static constexpr auto unlock = [] { J3ThreadManager::defaultManager()->_mutex.unlock(); };
    static constexpr auto goOnInChild = [] {
        ++s_forks;
        const auto now = static_cast<uint32>(gettid());
        uint32 before = 0;
        if (t_self && t_self->_threadId != 0) {
            before = t_self->_threadId.exchange(now);
            t_self->_forks = s_forks.load();
        }
        J3ThreadManager::defaultManager()->keepOnly(before, now);
        J3ThreadManager::defaultManager()->_mutex.unlock();
    };
    static const bool watched = [] {
        if (pthread_atfork(lock, unlock, goOnInChild) != 0)
            throw std::bad_alloc();
        return true;
    }();
    static_cast<void>(watched);
}

void J3Thread::setState(State state)
{
    _state = state;
    _state.notify_all();
}

void J3Thread::applyPolicy()
{
    if (!_scheduling)
        return;
    sched_param parameters{};
    if (_scheduling->policy != POLICY_NORMAL)
        parameters.sched_priority = static_cast<int>(_scheduling->priority);
    if (sched_setscheduler(static_cast<pid_t>(_threadId), kernelPolicy(_scheduling->policy), &parameters) != 0)
        _schedulingError = errno;
}

void J3Thread::applyAffinityMask()
{
    if (_affinityMask == 0)
        return;
    cpu_set_t processors;
    CPU_ZERO(&processors);
    for (std::size_t i = 0; i < 32; ++i)
        if ((_affinityMask >> i & 1) != 0)
            CPU_SET(i, &processors);
    if (sched_setaffinity(static_cast<pid_t>(_threadId), sizeof(processors), &processors) != 0)
        _schedulingError = errno;
}

} // namespace Kivo
