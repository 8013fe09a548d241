// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How long a pinger waits.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Types.h"

namespace Kivo {

/// How long a pinger waits, in milliseconds. Tests shorten it.
struct PingTiming {
    uint32 settle = 1000;    ///< between opening the socket and the first echo
    uint32 window = 3000;    ///< for replies, after each round
    uint32 receive = 500;    ///< for one datagram within the window; for the last replies of a test that is finished
    uint32 afterError = 500; ///< after a send or receive that failed
    uint32 withoutTarget = 1000; ///< what a test without targets lasts
    uint32 step = 100;           ///< between two looks at the run state
};

} // namespace Kivo
