// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Native functions and classes in scripts.
#include "support/LuaHost.h"

#include "Lua/K7LuaState.h"

#include <gtest/gtest.h>

using namespace Kivo;
using K7Test::LuaHost;

namespace {

/// Result: an object of the class "K7.Gauge" that holds a number.
int makeGauge(lua_State* L)
{
    const double start = luaL_checknumber(L, 1);
    *static_cast<double*>(lua_newuserdata(L, sizeof start)) = start;
    luaL_setmetatable(L, "K7.Gauge");
    return 1;
}

int addToGauge(lua_State* L)
{
    double& gauge = *static_cast<double*>(luaL_checkudata(L, 1, "K7.Gauge"));
    gauge += luaL_checknumber(L, 2);
    lua_pushnumber(L, gauge);
    return 1;
}

int throwsException(lua_State*) { throw J3Exception(L"the disk is 없음"); }
int throwsText(lua_State*) { throw "a text"; }
int throwsString(lua_State*) { throw J3String(L"a string"); }
int raises(lua_State* L)
{
    lua_pushstring(L, "Lua's own");
    return lua_error(L);
}

} // namespace

TEST(K7LuaState, BindsAClassThatIsItsOwnIndex)
{
    LuaHost host(L"");
    host.addMethod(L"make", makeGauge);
    host.addMethod(L"add", addToGauge);
    host.bindClass(L"K7.Gauge", L"Gauge");
    EXPECT_EQ(host.height(), 0);
    host.run(L"own = tostring(Gauge.__index == Gauge)  g = Gauge.make(2)  g:add(3)  sum = g:add(4)");
    EXPECT_EQ(host.text(L"own"), "true");
    EXPECT_EQ(host.text(L"sum"), "9");
    EXPECT_NE(host.errorOf(L"Gauge.add({}, 1)").find("K7.Gauge expected"), std::string::npos);
    host.addMethod(L"other", makeGauge);
    host.bindClass(L"K7.Other", L"Other");
    host.run(L"count = 0  for k in pairs(Other) do count = count + 1 end");
    EXPECT_EQ(host.text(L"count"), "2"); // other, __index
}

TEST(K7LuaState, AFunctionIsGlobalInAnyTableAndAsItWasGiven)
{
    LuaHost host(L"t = {}");
    static_cast<void>(host.pathInto(L"t"));
    EXPECT_TRUE(host.writeFunction(L"make", makeGauge));
    EXPECT_FALSE(host.hasFunction(L"make"));
    host.pathOut();
    host.getItem(L"make");
    EXPECT_EQ(lua_tocfunction(host.state(), -1), &makeGauge);
    EXPECT_EQ(lua_getupvalue(host.state(), -1, 1), nullptr);
}

TEST(K7LuaState, ANativeExceptionIsALuaErrorWithItsText)
{
    LuaHost host(L"");
    host.addMethod(L"exception", K7LuaState::guarded<throwsException>);
    host.addMethod(L"text", K7LuaState::guarded<throwsText>);
    host.addMethod(L"string", K7LuaState::guarded<throwsString>);
    host.addMethod(L"raises", K7LuaState::guarded<raises>);
    host.bindClass(L"K7.Throw", L"throw");
    const auto caught = [&](const wchar_t* name) {
        host.run(J3String(L"ok, message = pcall(throw.") + name + L")");
        const std::string direct = host.text(L"message");
        host.run(J3String(L"w = coroutine.wrap(function() coroutine.yield() throw.") + name + L"() end) w() " +
                 L"ok, message = pcall(w)");
        EXPECT_EQ(host.text(L"message"), direct);
        EXPECT_NE(host.errorOf(J3String(L"throw.") + name + L"()").find(direct), std::string::npos);
        return direct;
    };
    EXPECT_EQ(caught(L"exception"), "the disk is 없음");
    EXPECT_EQ(caught(L"text"), "a text");
    EXPECT_EQ(caught(L"string"), "a string");
    EXPECT_EQ(caught(L"raises"), "Lua's own");
}

TEST(K7LuaState, AnUnguardedExceptionIsAFailureToo)
{
    LuaHost host(L"");
    host.writeFunction(L"boom", throwsException);
    EXPECT_NE(host.errorOf(L"boom()").find("the disk is 없음"), std::string::npos);
    K7LuaFunction0 boom(L"boom");
    EXPECT_FALSE(host.call(&boom));
    EXPECT_EQ(host.height(), 0);
}

TEST(K7LuaState, TheErrorFunctionPassesTwoAndTheMessage)
{
    LuaHost host(L"debug = {traceback = function(a, b) return a .. '|' .. b end}");
    lua_State* const L = host.state();
    const auto handled = [&] {
        lua_pushcfunction(L, luaErrorFunction);
        luaL_loadstring(L, "error('broken', 0)");
        EXPECT_NE(lua_pcall(L, 0, 0, -2), LUA_OK);
        const std::string text = lua_tostring(L, -1);
        lua_settop(L, 0);
        return text;
    };
    EXPECT_EQ(handled(), "2|broken");
    host.run(L"debug.traceback = 1");
    EXPECT_EQ(handled(), "broken");
    host.run(L"debug = nil");
    EXPECT_EQ(handled(), "broken");
}
