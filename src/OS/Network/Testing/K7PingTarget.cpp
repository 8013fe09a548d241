// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a network quality test pings.
#include "OS/Network/Testing/K7PingTarget.h"

namespace Kivo {

K7PingTarget* K7PingTarget::clone() const { return new K7PingTarget(*this); }

J3String K7PingTarget::toString() const { return J3String().format(L"%d,%@", _channel, &_address); }

} // namespace Kivo
