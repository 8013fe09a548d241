// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A thread that does one piece of work again and again, and can be suspended.
#pragma once

#include "Foundation/J3Thread.h"

namespace Kivo {

/// A thread that calls looperFunc() again and again until it is asked to end. An exception that leaves looperFunc()
/// goes to the object's exception notifications, and the loop goes on. A looper that is suspended waits without using a
/// processor, and can be asked to end all the same.
class J3_API J3Looper : public J3Thread {
public:
    explicit J3Looper(const J3String& name, J3ThreadManager* manager = J3ThreadManager::defaultManager());
    ~J3Looper() override;

    /// Let the looper wait, once the call of looperFunc() under way has returned, until resume(). A looper that does
    /// not run yet begins with waiting.
    void suspend();

    /// Let the looper go on.
    void resume();

    /// Whether suspend() was called last.
    [[nodiscard]] bool isSuspended() const;

protected:
    void threadFunc() override;
    void quitRequested() override; ///< a subclass that overrides it calls this one

    virtual void looperFunc(); ///< the work, called again and again; the base sleeps 100 ms
    virtual void suspending(); ///< suspend() was called; runs where it was called
    virtual void suspended();  ///< the looper is about to wait; runs on the looper
    virtual void resumed();    ///< the looper goes on; runs on the looper

private:
    void waitWhileSuspended();

    J3Mutex _suspendMutex;
    J3Condition _changed;
    bool _suspended = false;
};

} // namespace Kivo
