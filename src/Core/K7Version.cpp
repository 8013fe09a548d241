// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Version of three numbers.
#include "Core/K7Version.h"

namespace Kivo {

K7Version* K7Version::clone() const { return new K7Version(*this); }

J3String K7Version::toString() const { return J3String().format(L"%u.%u.%u", major(), minor(), patch()); }

} // namespace Kivo
