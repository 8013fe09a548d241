// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// One call into Lua under a state's limits.
#pragma once

#include "Lua/detail/LuaExtras_p.h"

namespace Kivo {

/// Gives the outermost call into a state the instructions that its limit allows. Without a limit it does nothing.
class LuaRun {
public:
    LuaRun(lua_State* L, LuaLimits* limits) : _limits(limits && limits->instructions > 0 ? limits : nullptr)
    {
        if (_limits && _limits->depth++ == 0)
            start(L);
    }

    LuaRun(const LuaRun&) = delete;
    LuaRun& operator=(const LuaRun&) = delete;

    ~LuaRun()
    {
        if (_limits)
            --_limits->depth;
    }

private:
    void start(lua_State* L);

    LuaLimits* _limits;
};

} // namespace Kivo
