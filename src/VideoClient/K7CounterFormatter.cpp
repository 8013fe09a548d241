// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How the application wants rates to be written.
#include "VideoClient/K7CounterFormatter.h"

namespace Kivo {

template class K7CounterFormatter<std::array<float32, 4>>;

K7IPSFormatter::~K7IPSFormatter() = default;

void K7IPSFormatter::setLastVideoFrames(const K7FrameInfo*) {}

K7BPSFormatter::~K7BPSFormatter() = default;

} // namespace Kivo
