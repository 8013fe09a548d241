// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A looper that throws every time.
#pragma once

#include "Foundation/J3Exception.h"
#include "Foundation/J3Looper.h"

#include <string>

namespace Kivo {

/// A looper that throws every time, and notes its hooks.
class TestLooper : public J3Looper {
public:
    explicit TestLooper(const J3String& name = L"test") : J3Looper(name) {}

    ~TestLooper() override
    {
        quit();
        join();
    }

    std::string hooks; ///< to be looked at when the thread does not run
    std::atomic<int> loops = 0;
    std::atomic<bool> waits = false;

protected:
    void starting() override { note("starting"); }

    void started() override { note("started"); }

    void looperFunc() override
    {
        join(); // no thread waits for itself
        sleep(1);
        throw J3Exception(L"every time");
    }

    void exceptionCaught(J3Exception&) override { ++loops; }

    void suspended() override
    {
        waits = true;
        waits.notify_all();
    }

    void resumed() override { waits = false; }

    void finished() override { note("finished"); }

    void terminated() override { note("terminated"); }

private:
    void note(const std::string& hook) { hooks += hook + (isRunning() ? "+ " : "- "); }
};

} // namespace Kivo
