// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// From narrow text to wide.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/TextScanner_p.h"
#include "Foundation/J3String.h"

namespace Kivo {

inline J3String toWide(std::string_view text) { return J3String::from_string(std::string(text), STD_LOCALE_UTF8); }

} // namespace Kivo
