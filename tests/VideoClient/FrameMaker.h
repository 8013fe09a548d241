// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Frames for the tests of their counters.
#pragma once

#include "Foundation/J3Frame.h"

namespace K7Test {

inline Kivo::J3Frame makeFrame(Kivo::int32 channel, Kivo::uint8 type, Kivo::uint32 bytes)
{
    Kivo::J3Frame frame;
    frame.setChannel(channel);
    frame.setType(type);
    frame.setDataSize(bytes);
    return frame;
}

} // namespace K7Test
