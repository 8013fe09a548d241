// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Exchange with a Lua state beside the same work on Lua's own interface.
#include "Lua/K7LuaState.h"

#include <benchmark/benchmark.h>

#include <lua.hpp>

using namespace Kivo;

namespace {

constexpr const wchar_t* SCRIPT = L"threshold = 5  name = ('n'):rep(32)  function add(a, b) return a + b end";
constexpr const char* NARROW_SCRIPT = "threshold = 5  name = ('n'):rep(32)  function add(a, b) return a + b end";

struct BareState {
    BareState() : L(luaL_newstate())
    {
        luaL_openlibs(L);
        static_cast<void>(luaL_dostring(L, NARROW_SCRIPT));
    }
    ~BareState() { lua_close(L); }
    BareState(const BareState&) = delete;
    BareState& operator=(const BareState&) = delete;

    lua_State* L;
};

struct BridgeState : K7LuaState {
    BridgeState()
    {
        initWithBuffer(SCRIPT);
        runScript();
    }
};

void bareReadInt32(benchmark::State& state)
{
    const BareState bare;
    for ([[maybe_unused]] auto turn : state) {
        lua_getglobal(bare.L, "threshold");
        int isNumber = 0;
        benchmark::DoNotOptimize(static_cast<int32>(lua_tointegerx(bare.L, -1, &isNumber)));
        lua_pop(bare.L, 1);
    }
}
BENCHMARK(bareReadInt32);

void luaReadInt32(benchmark::State& state)
{
    const BridgeState bridge;
    const J3String name(L"threshold");
    int32 value = 0;
    for ([[maybe_unused]] auto turn : state) {
        bridge.readInt32(name, &value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(luaReadInt32);

void bareWriteInt32(benchmark::State& state)
{
    const BareState bare;
    int32 value = 0;
    for ([[maybe_unused]] auto turn : state) {
        lua_pushinteger(bare.L, ++value);
        lua_setglobal(bare.L, "threshold");
    }
}
BENCHMARK(bareWriteInt32);

void luaWriteInt32(benchmark::State& state)
{
    BridgeState bridge;
    const J3String name(L"threshold");
    int32 value = 0;
    for ([[maybe_unused]] auto turn : state)
        bridge.writeInt32(name, ++value);
}
BENCHMARK(luaWriteInt32);

void bareReadString(benchmark::State& state)
{
    const BareState bare;
    J3String text;
    for ([[maybe_unused]] auto turn : state) {
        lua_getglobal(bare.L, "name");
        std::size_t length = 0;
        const char* const narrow = lua_tolstring(bare.L, -1, &length);
        text = J3String::from_string({narrow, length});
        lua_pop(bare.L, 1);
    }
}
BENCHMARK(bareReadString);

void luaReadString(benchmark::State& state)
{
    const BridgeState bridge;
    const J3String name(L"name");
    J3String text;
    for ([[maybe_unused]] auto turn : state)
        bridge.readString(name, &text);
}
BENCHMARK(luaReadString);

void bareCall(benchmark::State& state)
{
    const BareState bare;
    double argument = 0;
    for ([[maybe_unused]] auto turn : state) {
        lua_getglobal(bare.L, "add");
        lua_pushnumber(bare.L, ++argument);
        lua_pushnumber(bare.L, 2);
        lua_pcall(bare.L, 2, 1, 0);
        benchmark::DoNotOptimize(lua_tonumber(bare.L, -1));
        lua_pop(bare.L, 1);
    }
}
BENCHMARK(bareCall);

class Add final : public K7LuaFunction0 {
public:
    Add() : K7LuaFunction0(L"add", 2) {}

    bool addFunctionParam(K7LuaStack* stack) override
    {
        const float64 two = 2;
        if (!K7LuaFunction0::addFunctionParam(stack))
            return false;
        stack->pushValue(&argument);
        stack->pushValue(&two);
        return true;
    }

    float64 argument = 0;
};

void luaCall(benchmark::State& state)
{
    BridgeState bridge;
    Add add;
    float64 sum = 0;
    for ([[maybe_unused]] auto turn : state) {
        ++add.argument;
        bridge.callLuaFunction(1, add);
        bridge.getValue(&sum);
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(luaCall);

constexpr const char* FIELDS[] = {"channel", "width", "height",  "rate",  "bitrate",
                                  "quality", "delay", "dropped", "total", "errors"};

void bareObject(benchmark::State& state)
{
    const BareState bare;
    for ([[maybe_unused]] auto turn : state) {
        lua_getglobal(bare.L, "object");
        if (!lua_istable(bare.L, -1)) {
            lua_newtable(bare.L);
            lua_setglobal(bare.L, "object");
        }
        lua_pop(bare.L, 1);
        lua_getglobal(bare.L, "object");
        int32 value = 0;
        for (const char* const field : FIELDS) {
            lua_pushinteger(bare.L, ++value);
            lua_setfield(bare.L, -2, field);
        }
        lua_pop(bare.L, 1);
        lua_getglobal(bare.L, "object");
        for (const char* const field : FIELDS) {
            lua_getfield(bare.L, -1, field);
            int isNumber = 0;
            benchmark::DoNotOptimize(static_cast<int32>(lua_tointegerx(bare.L, -1, &isNumber)));
            lua_pop(bare.L, 1);
        }
        lua_pop(bare.L, 1);
    }
}
BENCHMARK(bareObject);

class Stream final : public K7LuaObject {
public:
    Stream()
    {
        for (const char* const field : FIELDS)
            _names.emplace_back(field);
    }

    bool archiveTo(K7LuaState& state) const override
    {
        int32 value = 0;
        for (const J3String& name : _names)
            state.writeInt32(name, ++value);
        return true;
    }

    bool unarchiveFrom(const K7LuaState& state) override
    {
        for (const J3String& name : _names)
            state.readInt32(name, &_value);
        return true;
    }

private:
    std::vector<J3String> _names;
    int32 _value = 0;
};

void luaObject(benchmark::State& state)
{
    BridgeState bridge;
    const J3String name(L"object");
    Stream stream;
    for ([[maybe_unused]] auto turn : state) {
        bridge.writeObject(name, stream);
        bridge.readObject(name, &stream);
    }
}
BENCHMARK(luaObject);

} // namespace
