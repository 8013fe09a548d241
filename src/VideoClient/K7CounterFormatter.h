// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How the application wants rates to be written.
#pragma once

#include "Foundation/J3String.h"
#include "VideoClient/K7FrameInfo.h"

#include <array>

namespace Kivo {

/// Writes the values of a counter as a text; the application derives its own.
/// *Threads*: called by whoever asks for the text, by several at a time when several do.
template <class T>
class K7CounterFormatter {
public:
    using Values = T;

    K7CounterFormatter() = default;
    K7CounterFormatter(const K7CounterFormatter&) = default;
    K7CounterFormatter& operator=(const K7CounterFormatter&) = default;
    virtual ~K7CounterFormatter() = default;

    /// Write @p values into @p out; the base leaves it as it is.
    virtual void formatString([[maybe_unused]] const Values& values, [[maybe_unused]] J3String* out) {}
};

extern template class K7SAL_API K7CounterFormatter<std::array<float32, 4>>;

/// Writes the images per second of a channel's four stream modes.
class K7SAL_API K7IPSFormatter : public K7CounterFormatter<std::array<float32, 4>> {
public:
    K7IPSFormatter() = default;
    K7IPSFormatter(const K7IPSFormatter&) = default;
    K7IPSFormatter& operator=(const K7IPSFormatter&) = default;
    ~K7IPSFormatter() override;

    /// Told before formatString() which frames were counted last; the base does not want to know.
    /// @param frames four, one for each mode, valid during the call; one that has not come yet is K7FrameInfo()
    virtual void setLastVideoFrames(const K7FrameInfo* frames);
};

/// Writes the megabits (2^20 bits) per second of a channel's four stream modes.
class K7SAL_API K7BPSFormatter : public K7CounterFormatter<std::array<float32, 4>> {
public:
    K7BPSFormatter() = default;
    K7BPSFormatter(const K7BPSFormatter&) = default;
    K7BPSFormatter& operator=(const K7BPSFormatter&) = default;
    ~K7BPSFormatter() override;
};

} // namespace Kivo
