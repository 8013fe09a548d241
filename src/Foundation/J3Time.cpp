// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A point in calendar time.
#include "Foundation/J3Time.h"

#include "Foundation/J3TimeFormatter.h"

namespace Kivo {

J3Time J3Time::from_time_t(std::time_t seconds)
{
    J3Time time;
    time.setUtcTime(seconds);
    return time;
}

J3Time* J3Time::clone() const { return new J3Time(*this); }

J3String J3Time::toString() const { return J3TimeFormatter(L"%Y-%m-%d %H:%M:%S").formatTime(*this); }

} // namespace Kivo
