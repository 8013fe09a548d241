// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The results of a ping test, across threads.
#pragma once

#include "OS/Network/Testing/K7PingerListener.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace K7Tool {

/// Gathers what a pinger reports on its own thread, for the thread that waits for it.
class PingResults final : public Kivo::K7PingerListener {
public:
    bool isActive() override { return true; }
    void onPingBegin() override {}
    void onPingStopped() override {}

    void onPingResult(const Kivo::J3Time&, const Kivo::K7PingResult& result) override
    {
        const std::lock_guard guard(_mutex);
        _results.push_back(result);
    }

    void onPingEnd() override
    {
        const std::lock_guard guard(_mutex);
        _ended = true;
        _changed.notify_all();
    }

    /// @return whether the test has ended within the time
    bool waitForEnd(std::chrono::milliseconds time)
    {
        std::unique_lock guard(_mutex);
        return _changed.wait_until(guard, std::chrono::steady_clock::now() + time, [this] { return _ended; });
    }

    /// What has been graded so far.
    std::vector<Kivo::K7PingResult> all()
    {
        const std::lock_guard guard(_mutex);
        return _results;
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<Kivo::K7PingResult> _results;
    bool _ended = false;
};

} // namespace K7Tool
