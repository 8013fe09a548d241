// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A thread with a name, a place among the processors and hooks along its life.
#include "Foundation/J3Thread.h"

#include <cerrno>
#include <ctime>
#include <exception>

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace Kivo {

namespace {

thread_local const J3Thread* t_self = nullptr;

/// Show @p name in the kernel's tables, which have room for 15 bytes; no character is cut in two.
void nameCallingThread(const J3String& name)
{
    std::string text = name.to_string();
    if (text.empty())
        return;
    if (text.size() > 15) {
        std::size_t end = 15;
        while (end > 0 && (static_cast<uint8>(text[end]) & 0xC0) == 0x80)
            --end;
        text.resize(end);
    }
    pthread_setname_np(pthread_self(), text.c_str());
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

J3Thread::J3Thread(const J3String& name, J3ThreadManager* manager) : _name(name), _manager(manager) {}

J3Thread::~J3Thread()
{
    _quitRequested = true; // what quit() would still reach here
    join();
}

bool J3Thread::run(bool wait)
{
    if (_state != State::STOPPED || t_self == this)
        return false;
    {
        const std::lock_guard guard(_handleMutex);
        if (_state != State::STOPPED)
            return false;
        if (_handle.joinable())
            _handle.join();
        _quitRequested = false;
        _state = State::STARTING;
        try {
            _handle = std::thread(&J3Thread::main, this);
        } catch (const std::exception&) { // no thread, or no memory for one
            setState(State::STOPPED);
            return false;
        }
    }
    if (wait)
        _state.wait(State::STARTING);
    return true;
}

void J3Thread::quit()
{
    _quitRequested = true;
    quitRequested();
}

void J3Thread::join()
{
    if (t_self == this)
        return;
    const std::lock_guard guard(_handleMutex);
    if (_handle.joinable())
        _handle.join();
}

void J3Thread::setPolicy(Policy policy, uint32 priority)
{
    const std::lock_guard guard(_schedulingMutex);
    _scheduling = Scheduling{policy, priority};
    if (_threadId != 0)
        applyPolicy();
}

void J3Thread::setAffinityMask(uint32 mask)
{
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

void J3Thread::main()
{
    enter();
    perform(&J3Thread::starting);
    setState(State::RUNNING);
    perform(&J3Thread::started);
    perform(&J3Thread::threadFunc);
    perform(&J3Thread::finished);
    leave();
    setState(State::STOPPED);
    perform(&J3Thread::terminated);
}

void J3Thread::enter()
{
    t_self = this;
    nameCallingThread(_name);
    const std::lock_guard guard(_schedulingMutex);
    _threadId = static_cast<uint32>(gettid());
    _schedulingError = 0;
    applyPolicy();
    applyAffinityMask();
    if (_manager)
        _manager->addThread(_threadId, this);
}

void J3Thread::leave()
{
    const std::lock_guard guard(_schedulingMutex);
    if (_manager)
        _manager->removeThread(_threadId);
    _threadId = 0;
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
