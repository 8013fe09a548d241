// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A thread that does one piece of work again and again, and can be suspended.
#include "Foundation/J3Looper.h"

namespace Kivo {

J3Looper::J3Looper(const J3String& name, J3ThreadManager* manager) : J3Thread(name, manager) {}

J3Looper::~J3Looper()
{
    quit();
    join();
}

void J3Looper::suspend()
{
    {
        const std::lock_guard guard(_suspendMutex);
        if (_suspended)
            return;
        _suspended = true;
    }
    suspending();
}

void J3Looper::resume()
{
    const std::lock_guard guard(_suspendMutex);
    _suspended = false;
    _changed.broadcast();
}

bool J3Looper::isSuspended() const
{
    const std::lock_guard guard(_suspendMutex);
    return _suspended;
}

void J3Looper::threadFunc()
{
    while (!isQuitRequested()) {
        if (isSuspended())
            waitWhileSuspended();
        else
            perform(&J3Looper::looperFunc);
    }
}

void J3Looper::quitRequested()
{
    const std::lock_guard guard(_suspendMutex);
    _changed.broadcast();
}

void J3Looper::looperFunc() { sleep(100); }

void J3Looper::suspending() {}

void J3Looper::suspended() {}

void J3Looper::resumed() {}

void J3Looper::waitWhileSuspended()
{
    perform(&J3Looper::suspended);
    {
        const std::lock_guard guard(_suspendMutex);
        while (_suspended && !isQuitRequested())
            _changed.wait(_suspendMutex);
    }
    if (!isQuitRequested())
        perform(&J3Looper::resumed);
}

} // namespace Kivo
