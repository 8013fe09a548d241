// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Scripts that do their worst, each followed by a normal use of the same host.
#include "support/LuaHost.h"

#include "Lua/K7LuaState.h"

#include <gtest/gtest.h>

using namespace Kivo;
using K7Test::LuaHost;
using K7Test::Nested;

namespace {

/// Every kind of operation once.
void useAll(LuaHost& host)
{
    int32 value = 0;
    std::vector<uint32> numbers;
    Nested object;
    static_cast<void>(host.readInt32(L"anything", &value));
    host.writeInt32(L"anything", 3);
    host.writeString(L"text", L"x");
    host.writeObject(L"object", Nested(2));
    static_cast<void>(host.readObject(L"object", &object));
    host.writeUint32Array(L"array", reinterpret_cast<const uint32*>(L"ab"), 2);
    static_cast<void>(host.readUint32Vector(L"array", &numbers));
    static_cast<void>(host.readUint32Vector(L"lying", &numbers));
    host.writeFunction(L"f", [](lua_State*) { return 0; });
    host.addMethod(L"m", [](lua_State*) { return 0; });
    host.bindClass(L"M", L"G");
    K7LuaFunction0 function(L"work");
    static_cast<void>(host.call(&function));
    lua_settop(host.state(), 0);
    EXPECT_EQ(host.depth(), 0U);
}

} // namespace

class K7LuaScripts : public testing::TestWithParam<const char*> {};

TEST_P(K7LuaScripts, NeverEndsTheHost)
{
    LuaHost host;
    static_cast<void>(host.errorOf(GetParam()));
    lua_settop(host.state(), 0); // what the script returned
    useAll(host);
    static_cast<void>(host.errorOf(L"if debug then debug.setmetatable(_G, nil) end"));
    host.writeInt32(L"after", 41);
    host.run(L"after = after + 1");
    EXPECT_EQ(host.text(L"after"), "42");
}

TEST(K7LuaHostile, AStateWithoutGlobalsIsOfNoUseButHarmless)
{
    LuaHost host(L"anything = 1");
    useAll(host);
    host.run(L"local r = debug.getregistry()  for k in pairs(r) do r[k] = nil end");
    useAll(host);
    EXPECT_NE(host.errorOf(L"x = 1"), "");
}

INSTANTIATE_TEST_SUITE_P(
    Hostile, K7LuaScripts,
    testing::Values(
        "setmetatable(_G, {__index = function(t, k) error('read ' .. k) end})",
        "setmetatable(_G, {__newindex = function() error({}) end})",
        "setmetatable(_G, {__index = function(t, k) return t[k] end})", "function work() return work() + 1 end  work()",
        "function work() return setmetatable({}, {__index = function() error(nil) end}).x end",
        "local function f() f() end  coroutine.wrap(f)()", "error()", "error({})",
        "error(setmetatable({}, {__tostring = function() error('again') end}))",
        "lying = setmetatable({1, 2}, {__len = function() error('no length') end})",
        "lying = setmetatable({1, 2}, {__len = function() return 2^31 - 1 end})",
        "lying = setmetatable({1, 2}, {__len = function() return 'long' end})",
        "local n = 0  lying = setmetatable({1, 2, 3, 4}, {__len = function() n = n + 1 return n == 1 and 1 or 4 end})",
        "anything = ('x'):rep(100000000)  text = anything", "error(('x'):rep(100000000))",
        "c = coroutine.create(function() coroutine.yield(1) end)  coroutine.resume(c)  work = "
        "coroutine.wrap(function() "
        "coroutine.yield() end)",
        "work = coroutine.yield  coroutine.yield()", "os.exit(3)", "work = os.exit",
        "for i = 1, 9 do setmetatable({}, {__gc = function() error('collected') end}) end  collectgarbage()",
        "local r = debug.getregistry()  anything = 1  for k in pairs(r) do if type(k) == 'number' and k > 2 then r[k] "
        "= nil end "
        "end",
        "local r = debug.getregistry()  for i = 3, 40 do r[i] = {} end", "string.rep = nil  debug = nil  _G._G = nil",
        "local t = {}  for i = 1, 300 do t = {t} end  return (function(...) return ... end)(unpack({}, 1, 200000))"));

TEST(K7LuaLimits, EndAScriptThatRunsOn)
{
    const wchar_t* const scripts[] = {
        L"while true do end",
        L"while true do pcall(function() while true do end end) end",
        L"while true do coroutine.wrap(function() while true do end end)() end",
        L"while true do pcall(coroutine.wrap(function() while true do end end)) end",
        L"pcall(debug.sethook)  while true do end",
        L"setmetatable(_G, {__index = function() while true do end end})",
    };
    for (const wchar_t* const script : scripts) {
        LuaHost host;
        EXPECT_TRUE(host.setInstructionLimit(100000));
        const std::string error = host.errorOf(script);
        int32 value = 0;
        static_cast<void>(host.readInt32(L"missing", &value));
        EXPECT_EQ(host.height(), 0);
        static_cast<void>(host.errorOf(L"setmetatable(_G, nil)"));
        host.run(L"sum = 0  for i = 1, 1000 do sum = sum + i end");
        EXPECT_EQ(host.text(L"sum"), "500500");
        host.setInstructionLimit(0);
        host.run(L"for i = 1, 1000000 do end");
    }
}

TEST(K7LuaLimits, EndAScriptThatTakesTooMuchMemory)
{
    LuaHost host;
    EXPECT_TRUE(host.setMemoryLimit(1 << 20));
    EXPECT_NE(host.errorOf(L"x = ('x'):rep(10000000)").find("not enough memory"), std::string::npos);
    EXPECT_NE(host.errorOf(L"local t = {}  while true do t[#t + 1] = {} end").find("not enough memory"),
              std::string::npos);
    host.writeString(L"long", std::wstring(2 << 20, L'x')); // nil instead
    EXPECT_EQ(host.text(L"long"), "nil");
    EXPECT_EQ(host.height(), 0);
    host.run(L"collectgarbage()  x = #('x'):rep(100000)");
    EXPECT_EQ(host.text(L"x"), "100000");
    host.setMemoryLimit(0);
    host.run(L"x = #('x'):rep(10000000)");
    LuaHost small;
    small.setMemoryLimit(1000);
    EXPECT_FALSE(small.initWithBuffer(L"x = 1"));
}

TEST(K7LuaLimits, EveryAllocationMayFail)
{
    for (uint64 limit = 15000; limit < 60000; limit += 37) {
        LuaHost host;
        host.setMemoryLimit(limit);
        if (!host.initWithBuffer(L"function work() return {1, 2, 3} end"))
            continue;
        try {
            host.runScript();
        } catch (const J3Exception&) {
        }
        useAll(host);
    }
}
