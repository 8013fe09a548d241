// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Native functions and classes for scripts.
#include "Lua/K7LuaState.h"
#include "Lua/detail/LuaExtras_p.h"
#include "Lua/detail/LuaGuard_p.h"
#include "Lua/detail/LuaText_p.h"

namespace Kivo {

namespace {

struct NativeFunction {
    const char* name;
    lua_CFunction function;
};

int globalStep(lua_State* L)
{
    const NativeFunction& native = *static_cast<const NativeFunction*>(lua_touserdata(L, 1));
    lua_pushcclosure(L, native.function, 0);
    lua_setglobal(L, native.name);
    return 0;
}

struct NativeClass {
    const luaL_Reg* methods; ///< ends with an empty entry
    const char* metatableName;
    const char* globalName;
};

int classStep(lua_State* L)
{
    const NativeClass& native = *static_cast<const NativeClass*>(lua_touserdata(L, 1));
    luaL_newmetatable(L, native.metatableName);
    luaL_setfuncs(L, native.methods, 0);
    lua_pushvalue(L, -1);
    lua_setfield(L, -2, "__index");
    lua_setglobal(L, native.globalName);
    return 0;
}

/// Push what an exception says; it is raised once nothing of C++ is left to be destroyed.
void pushMessage(lua_State* L, const char* text)
{
    if (!lua_checkstack(L, 1))
        lua_settop(L, 0);
    lua_pushstring(L, text);
}

} // namespace

bool K7LuaState::writeFunction(const J3String& name, FuncByLua function)
{
    const LuaText text(name);
    NativeFunction native{text.c_str(), function};
    if (function)
        perform(globalStep, &native, 0, 0);
    return true;
}

void K7LuaState::addMethod(const J3String& name, FuncByLua function)
{
    if (J3_REQUIRE_ARGUMENT(function, "Lua/K7LuaState"))
        _bindFuncs.push_back({name.to_string(), function});
}

void K7LuaState::bindClass(const J3String& metatableName, const J3String& globalName)
{
    std::vector<luaL_Reg> methods;
    for (const LuaBindFuncInfo& method : _bindFuncs)
        methods.push_back({method._name.c_str(), method._func});
    methods.push_back({nullptr, nullptr});
    const LuaText metatable(metatableName);
    const LuaText global(globalName);
    NativeClass native{methods.data(), metatable.c_str(), global.c_str()};
    perform(classStep, &native, 0, 0);
    _bindFuncs.clear();
}

int callGuarded(lua_State* L, lua_CFunction function)
{
    try {
        return function(L);
    } catch (const std::exception& error) {
        pushMessage(L, error.what());
    } catch (const char* text) {
        pushMessage(L, text);
    } catch (const J3Object& object) {
        pushMessage(L, object.toString().to_string().c_str());
    }
    return lua_error(L);
}

int K7LuaState::callGuarded(lua_State* L, FuncByLua function) { return Kivo::callGuarded(L, function); }

int luaErrorFunction(lua_State* L)
{
    lua_getglobal(L, "debug");
    if (lua_type(L, -1) != LUA_TTABLE) {
        lua_settop(L, -2);
        return 1;
    }
    lua_getfield(L, -1, "traceback");
    if (lua_type(L, -1) != LUA_TFUNCTION) {
        lua_settop(L, -3);
        return 1;
    }
    lua_remove(L, -2);
    lua_pushinteger(L, 2);
    lua_pushvalue(L, -3);
    lua_callk(L, 2, 1, 0, nullptr);
    lua_remove(L, -2);
    return 1;
}

} // namespace Kivo
