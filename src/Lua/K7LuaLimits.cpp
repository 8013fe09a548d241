// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The limits of a state: instructions by the count hook, memory by its allocation.
#include "Lua/K7LuaState.h"
#include "Lua/detail/LuaRun_p.h"

#include <algorithm>

namespace Kivo {

namespace {

/// How many instructions pass from one look at the limit to the next.
constexpr uint64 PERIOD = 1000;

void* allocateWithin(void* data, void* block, std::size_t oldSize, std::size_t newSize)
{
    LuaLimits& limits = *static_cast<LuaLimits*>(data);
    const std::size_t held = block ? oldSize : 0; // without a block it is the kind of what is to be made
    if (limits.memory > 0 && newSize > held && limits.memoryUsed - held + newSize > limits.memory)
        return nullptr;
    void* const result = limits.allocate(limits.allocateData, block, oldSize, newSize);
    if (result || newSize == 0)
        limits.memoryUsed = limits.memoryUsed - held + newSize;
    return result;
}

/// Found by the allocation, which no script can reach.
LuaLimits* limitsOf(lua_State* L)
{
    void* data = nullptr;
    return lua_getallocf(L, &data) == allocateWithin ? static_cast<LuaLimits*>(data) : nullptr;
}

int periodOf(const LuaLimits& limits) { return static_cast<int>(std::min(limits.instructions, PERIOD)); }

/// A limit that is passed is raised at every instruction from then on, so that no pcall() of the script goes on.
void countHook(lua_State* L, lua_Debug*)
{
    LuaLimits* const limits = limitsOf(L);
    if (!limits || limits->instructions == 0)
        return;
    const uint64 passed = static_cast<uint64>(lua_gethookcount(L));
    limits->instructionsLeft -= std::min(limits->instructionsLeft, passed);
    const bool isPassed = limits->instructionsLeft == 0;
    const int period = isPassed ? 1 : periodOf(*limits);
    if (lua_gethookcount(L) != period)
        lua_sethook(L, countHook, LUA_MASKCOUNT, period);
    if (isPassed)
        luaL_error(L, "instruction limit exceeded");
}

/// The script could take the hook away.
int hideHookStep(lua_State* L)
{
    lua_getglobal(L, "debug");
    if (lua_type(L, -1) == LUA_TTABLE) {
        lua_pushnil(L);
        lua_setfield(L, -2, "sethook");
    }
    return 0;
}

void holdAllocation(lua_State* L, LuaLimits* limits)
{
    if (limitsOf(L))
        return;
    limits->memoryUsed =
        static_cast<uint64>(lua_gc(L, LUA_GCCOUNT, 0)) * 1024 + static_cast<uint64>(lua_gc(L, LUA_GCCOUNTB, 0));
    limits->allocate = lua_getallocf(L, &limits->allocateData);
    lua_setallocf(L, allocateWithin, limits);
}

} // namespace

void LuaRun::start(lua_State* L)
{
    _limits->instructionsLeft = _limits->instructions;
    lua_sethook(L, countHook, LUA_MASKCOUNT, periodOf(*_limits));
}

bool K7LuaState::startExtras()
{
    extras().names.forgetAll();
    return setMemoryLimit(extras().limits.memory);
}

bool K7LuaState::setInstructionLimit(uint64 instructions)
{
    if (!_selfOpen)
        return false;
    LuaLimits& limits = extras().limits;
    limits.instructions = 0; // not for the step that follows
    if (_luaState && instructions > 0) {
        holdAllocation(_luaState, &limits);
        if (!perform(hideHookStep, nullptr, 0, 0))
            return false;
    }
    limits.instructions = instructions;
    return true;
}

bool K7LuaState::setMemoryLimit(uint64 bytes)
{
    if (!_selfOpen)
        return false;
    extras().limits.memory = bytes;
    if (_luaState && bytes > 0)
        holdAllocation(_luaState, &extras().limits);
    return true;
}

} // namespace Kivo
