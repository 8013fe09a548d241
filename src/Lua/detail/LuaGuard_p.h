// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a native function throws, as a Lua error.
#pragma once

#include "Lua/detail/LuaApi_p.h"

namespace Kivo {

/// Call @p function and turn a std::exception, a text or a J3Object it throws into a Lua error with its text. What Lua
/// itself throws, and what unwinds a thread, goes on its way.
int callGuarded(lua_State* L, lua_CFunction function);

} // namespace Kivo
