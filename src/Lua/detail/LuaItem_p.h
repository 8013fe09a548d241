// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Raw access to an item of a table, which raises nothing.
#pragma once

#include "Lua/detail/LuaExtras_p.h"

namespace Kivo {

/// Stands for the table of the globals where a table's index is asked for.
constexpr int LUA_GLOBALS = 0;

/// Push the table at the index @p table, and @p name. @return whether it is a table and the registry holds the name;
/// nothing is pushed otherwise
inline bool pushTableAndName(lua_State* L, K7LuaExtras* extras, const J3String& name, int table)
{
    const int reference = extras ? extras->names.find(name.wstring()) : LUA_NOREF;
    if (reference == LUA_NOREF)
        return false;
    if (table == LUA_GLOBALS)
        lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    else
        lua_pushvalue(L, table);
    if (lua_type(L, -1) != LUA_TTABLE) {
        lua_settop(L, -2);
        return false;
    }
    lua_rawgeti(L, LUA_REGISTRYINDEX, reference);
    return true;
}

/// Whether the table below the name at the top has a value of that name, so that storing another one neither asks a
/// metamethod nor takes memory. Pushes a slot for the value.
inline bool isReplaced(lua_State* L)
{
    lua_pushvalue(L, -1);
    lua_rawget(L, -3);
    return lua_type(L, -1) != LUA_TNIL;
}

} // namespace Kivo
