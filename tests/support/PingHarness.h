// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the tests of the pinger share: a quick one, a listener that notes, and running one test.
#pragma once

#include "support/TunResponder.h"

#include "Foundation/J3Assert.h"
#include "OS/Network/Testing/K7Pinger.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <set>

namespace K7Test {

using namespace Kivo;
using Events = std::vector<std::string>;

inline constexpr K7PingTiming QUICK{.settle = 10, .window = 200, .receive = 50, .afterError = 20, .withoutTarget = 50};

/// A pinger that has no time.
class QuickPinger : public K7Pinger {
public:
    explicit QuickPinger(const K7PingTiming& timing = QUICK, uint16 firstSequenceNum = 1)
        : K7Pinger(timing, firstSequenceNum)
    {}
};

/// Notes what it is told, and calls @p onEvent while it is told.
class Recorder final : public K7PingerListener {
public:
    std::function<void(const std::string& event)> onEvent;

    bool isActive() override { return true; }

    void onPingBegin() override { note("begin"); }

    void onPingStopped() override { note("stopped"); }

    void onPingEnd() override { note("end"); }

    void onPingResult(const J3Time& finishedAt, const K7PingResult& result) override
    {
        EXPECT_LE(std::abs(finishedAt.to_time_t() - std::time(nullptr)), 2);
        const std::string address = result.target().address().toString().to_string();
        {
            const std::lock_guard guard(_mutex);
            _results[address] = result;
        }
        note(address.empty() ? "stranger" : address);
    }

    Events events() const
    {
        const std::lock_guard guard(_mutex);
        return _events;
    }

    /// The same, and forget them.
    Events takeEvents()
    {
        const std::lock_guard guard(_mutex);
        return std::exchange(_events, {});
    }

    /// The result of a target, or with "" of an address that is none.
    K7PingResult result(const std::string& address) const
    {
        const std::lock_guard guard(_mutex);
        const auto found = _results.find(address);
        EXPECT_NE(found, _results.end()) << address;
        return found == _results.end() ? K7PingResult() : found->second;
    }

    /// Wait for the end of a cycle, and until the pinger can be started again. @return what was told since the last
    /// time
    Events finish(const K7Pinger& pinger)
    {
        std::unique_lock guard(_mutex);
        const auto ended = [this] { return !_events.empty() && _events.back() == "end"; };
        EXPECT_TRUE(_changed.wait_for(guard, std::chrono::seconds(30), ended));
        const Events told = std::exchange(_events, {});
        guard.unlock();
        while (pinger.toString().to_string().find("\"state\" : 0") == std::string::npos)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return told;
    }

private:
    void note(const std::string& event)
    {
        if (onEvent)
            onEvent(event);
        const std::lock_guard guard(_mutex);
        _events.push_back(event);
        _changed.notify_all();
    }

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    Events _events;
    std::map<std::string, K7PingResult> _results;
};

/// The assertions reported while it lives.
class AssertionLog {
public:
    AssertionLog()
    {
        s_messages.clear();
        J3AssertFunc::setHandler(note);
    }

    ~AssertionLog() { J3AssertFunc::setHandler(nullptr); }

    static std::set<std::string> messages()
    {
        const std::lock_guard guard(s_mutex);
        return s_messages;
    }

private:
    static void note(const J3String&, const J3String& message, const J3String&, const J3String&, int)
    {
        const std::lock_guard guard(s_mutex);
        s_messages.insert(message.to_string());
    }

    static inline std::mutex s_mutex;
    static inline std::set<std::string> s_messages;
};

inline std::string host(int number)
{
    return "10.77." + std::to_string(number / 256) + "." + std::to_string(number % 256);
}

inline void addTarget(K7Pinger& pinger, const std::string& address, int32 channel = 0)
{
    K7InetAddress target;
    ASSERT_TRUE(target.fromString(address.c_str()));
    EXPECT_TRUE(pinger.addTarget(channel, target));
}

/// Run one test. @return what the listener was told
inline Events runTest(K7Pinger& pinger, Recorder& recorder, const char* ifceName = TunResponder::INTERFACE)
{
    EXPECT_TRUE(pinger.init(ifceName));
    EXPECT_TRUE(pinger.start());
    return recorder.finish(pinger);
}

inline auto millisecondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace K7Test
