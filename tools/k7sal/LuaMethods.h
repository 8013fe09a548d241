// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What scripts can ask of the machine.
#pragma once

#include "Lua/K7LuaState.h"

namespace K7Tool {

/// Give the scripts of a state the class "sal".
void bindSal(Kivo::K7LuaState& state);

} // namespace K7Tool
