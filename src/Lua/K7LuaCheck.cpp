// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The free checking functions, and the printing of a stack.
#include "Base/ForcedUnwind_p.h"
#include "Lua/K7LuaStack.h"
#include "Lua/detail/LuaExtras_p.h"

namespace Kivo {

namespace {

/// Reaches the protected access of a stack that is not this library's own.
class Checked : public K7LuaStack {
public:
    explicit Checked(lua_State* L) : K7LuaStack(L, false) {}

    /// Push field @p name of the table at the top.
    int32 pushField(const J3String& name)
    {
        _path.emplace_back();
        return getItem(name);
    }
};

void require(bool condition, const char* message)
{
    if (!condition)
        throw message;
}

void printFunction(lua_State* L, int32 index, J3String* out)
{
    lua_Debug info;
    if (!lua_getstack(L, index, &info)) {
        out->appendf(L"%p", lua_topointer(L, index));
        return;
    }
    lua_getinfo(L, "Snlu", &info);
    out->appendf(L"%s(%d): %s", info.short_src, info.currentline, info.name ? info.name : "?");
}

constexpr wchar_t RULE[] = L"=======================================================\n";

} // namespace

bool checkTable(lua_State* L)
{
    if (lua_type(L, -1) != LUA_TTABLE) {
        J3String scratch;
        luaPrintStack(L, &scratch);
        lua_settop(L, -2);
        throw "is not table";
    }
    return true;
}

bool checkNotNil(lua_State* L)
{
    require(lua_type(L, -1) != LUA_TNIL, "got Nill access");
    return true;
}

bool checkString(lua_State* L, const J3String& name)
{
    Checked(L).pushField(name);
    require(lua_isstring(L, -1), "is no string");
    return true;
}

bool checkNumber(lua_State* L, const J3String& name)
{
    Checked(L).pushField(name);
    require(lua_isnumber(L, -1), "is not number");
    return true;
}

bool checkBool(lua_State* L, const J3String& name)
{
    Checked(L).pushField(name);
    require(lua_type(L, -1) == LUA_TBOOLEAN, "is not bool");
    return true;
}

void luaPrintStackAt(lua_State* L, int32 index, J3String* out)
{
    if (!J3_REQUIRE_ARGUMENT(out, "Lua/K7LuaStack"))
        return;
    const int type = lua_type(L, index);
    out->appendf(L"(%s) ", lua_typename(L, type));
    switch (type) {
    case LUA_TBOOLEAN:
        out->appendf(L"%s", lua_toboolean(L, index) ? "true" : "false");
        break;
    case LUA_TNUMBER:
        out->appendf(L"%g", lua_tonumberx(L, index, nullptr));
        break;
    case LUA_TSTRING:
        out->appendf(L"'%s'", lua_tolstring(L, index, nullptr));
        break;
    case LUA_TFUNCTION:
        printFunction(L, index, out);
        break;
    default:
        out->appendf(L"%p", lua_topointer(L, index));
    }
}

void luaPrintStack(lua_State* L, J3String* out)
{
    if (!J3_REQUIRE_ARGUMENT(out, "Lua/K7LuaStack"))
        return;
    const int top = lua_gettop(L);
    for (int index = 1; index <= top; ++index) {
        out->appendf(L"\t=> %d: ", index);
        luaPrintStackAt(L, index, out);
        *out += L"\n";
    }
}

K7_CATCHES_FORCED_UNWIND void K7LuaStack::traceError(lua_State* L) const
{
    if (!L || !_extras || !_extras->traceSink)
        return;
    try {
        J3String report = RULE;
        report += L"                << LUA script debug >>\n";
        report += RULE;
        luaPrintStack(L, &report);
        report += RULE;
        _extras->traceSink(report);
    } catch (ForcedUnwind&) {
        throw;
    } catch (...) { // a report that cannot be made or taken is no second failure
    }
}

} // namespace Kivo
