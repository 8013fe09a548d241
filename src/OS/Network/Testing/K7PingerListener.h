// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Observer of a network quality test.
#pragma once

#include "Foundation/J3Time.h"
#include "OS/Network/Testing/K7PingResult.h"

namespace Kivo {

/// Told of what a K7Pinger does. The pinger never deletes a listener.
///
/// *Threads*: every operation is called on the pinger's worker thread, which holds the listeners' lock meanwhile. A
/// listener may call every operation of the pinger, but must not delete it, nor wait for another thread that ends it or
/// changes its listeners. What a listener throws is reported to the pinger's exception notifications (J3Object) and
/// reaches nobody else.
class K7SAL_API K7PingerListener {
public:
    /// Whether the listener wants to be told; asked before every one of the calls below.
    virtual bool isActive() = 0;

    /// A test begins.
    virtual void onPingBegin() = 0;

    /// One target of the test is graded; called once for each, and for each further address that has answered.
    /// @param finishedAt when the test ended, the same for all of its results
    /// @param result     its counts, times and grade; valid until the call returns
    virtual void onPingResult(const J3Time& finishedAt, const K7PingResult& result) = 0;

    /// The test has stopped.
    virtual void onPingStopped() = 0;

    /// The test is over; the pinger can be started again once this call has returned to it.
    virtual void onPingEnd() = 0;

protected:
    ~K7PingerListener() = default;
};

} // namespace Kivo
