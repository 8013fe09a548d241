// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Lua's own headers, with the linkage of the build at hand, and what is checked of its stack.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Assert.h"
#include "Foundation/J3Types.h"

#include <lua.hpp>

namespace Kivo {

/// Reports, in a debug build, that an operation leaves the stack at another height than it says.
class LuaHeight {
public:
#ifdef NDEBUG
    LuaHeight(lua_State*, int) {}
#else
    LuaHeight(lua_State* state, int change) : _state(state), _height(lua_gettop(state) + change) {}
    ~LuaHeight() { static_cast<void>(J3_REQUIRE(lua_gettop(_state) == _height, "stack height", "Lua/K7LuaStack")); }
    LuaHeight(const LuaHeight&) = delete;
    LuaHeight& operator=(const LuaHeight&) = delete;

private:
    lua_State* _state;
    int _height;
#endif
};

} // namespace Kivo
