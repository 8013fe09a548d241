// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Ends the waiting of a command when the user presses Ctrl-C, instead of ending the tool.
#include "Interrupt.h"

#include <algorithm>
#include <csignal>
#include <thread>

namespace K7Tool {

namespace {

volatile std::sig_atomic_t s_interrupted = 0;

void noteInterrupt(int) { s_interrupted = 1; }

} // namespace

Interrupt::Interrupt()
{
    s_interrupted = 0;
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

Interrupt::~Interrupt()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

bool Interrupt::came() { return s_interrupted != 0; }

bool Interrupt::sleep(std::chrono::milliseconds time)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds STEP(50);
    const auto end = Clock::now() + time;
    for (auto now = Clock::now(); now < end && !came(); now = Clock::now())
        std::this_thread::sleep_for(std::min<Clock::duration>(STEP, end - now));
    return !came();
}

} // namespace K7Tool
