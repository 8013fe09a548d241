// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Navigation and protected access. An item whose name is known and that no metamethod has a say in is reached by raw
// access, which raises nothing; everything else runs in a protected call.
#include "Lua/K7LuaStack.h"

#include "Lua/detail/LuaExtras_p.h"
#include "Lua/detail/LuaGuard_p.h"
#include "Lua/detail/LuaItem_p.h"
#include "Lua/detail/LuaRun_p.h"
#include "Lua/detail/LuaText_p.h"

#include <algorithm>
#include <limits>
#include <new>

namespace Kivo {

namespace {

/// The most that an operation puts on the stack beside its result.
constexpr int32 ROOM = 8;

/// One item to be fetched or stored under protection.
struct NamedItem {
    const char* name;
    bool isRoot;
    LuaNames::Name* place; ///< where to keep the name for raw access; null for nowhere
};

void keepName(lua_State* L, const NamedItem& item)
{
    if (!item.place)
        return;
    lua_pushstring(L, item.name);
    if (item.place->reference == LUA_NOREF)
        item.place->reference = luaL_ref(L, LUA_REGISTRYINDEX);
    else
        lua_rawseti(L, LUA_REGISTRYINDEX, item.place->reference);
}

/// Arguments: the item, and the table unless it is that of the globals. Result: the value.
int fetchStep(lua_State* L)
{
    const NamedItem& item = *static_cast<const NamedItem*>(lua_touserdata(L, 1));
    keepName(L, item);
    if (item.isRoot)
        lua_getglobal(L, item.name);
    else
        lua_getfield(L, 2, item.name);
    return 1;
}

/// Arguments: the item, the table unless it is that of the globals, and the value.
int storeStep(lua_State* L)
{
    const NamedItem& item = *static_cast<const NamedItem*>(lua_touserdata(L, 1));
    keepName(L, item);
    if (item.isRoot)
        lua_setglobal(L, item.name);
    else
        lua_setfield(L, 2, item.name);
    return 0;
}

int newTableStep(lua_State* L)
{
    lua_createtable(L, 0, 0);
    return 1;
}

int lengthStep(lua_State* L)
{
    *static_cast<uint32*>(lua_touserdata(L, 1)) = static_cast<uint32>(luaL_len(L, 2));
    return 0;
}

int storeElementStep(lua_State* L)
{
    lua_rawseti(L, 2, *static_cast<const int*>(lua_touserdata(L, 1)));
    return 0;
}

/// A step and its data.
struct Job {
    int (*step)(lua_State*);
    void* data;
};

/// Arguments: the job, and those of its step.
int runJob(lua_State* L)
{
    const Job& job = *static_cast<const Job*>(lua_touserdata(L, 1));
    lua_pushlightuserdata(L, job.data);
    lua_replace(L, 1);
    return callGuarded(L, job.step);
}

/// The index on the Lua side of element @p i, 0 for one that no table can hold.
int elementIndex(uint32 i) { return i < static_cast<uint32>(std::numeric_limits<int>::max()) ? int(i) + 1 : 0; }

} // namespace

K7LuaStack::K7LuaStack(lua_State* state, bool selfOpen) : _luaState(state), _selfOpen(selfOpen) {}

K7LuaStack::~K7LuaStack() = default;

bool K7LuaStack::hasRoom(int32 slots) const { return _luaState && lua_checkstack(_luaState, slots) != 0; }

bool K7LuaStack::hasValue() const { return _luaState && lua_gettop(_luaState) > 0; }

K7LuaExtras& K7LuaStack::extras() const
{
    if (!_extras)
        _extras = std::make_unique<K7LuaExtras>();
    return *_extras;
}

void K7LuaStack::setTraceSink(TraceSink sink) { extras().traceSink = std::move(sink); }

bool K7LuaStack::callProtected(int32 arguments, int32 results) const
{
    const LuaRun run(_luaState, _extras ? &_extras->limits : nullptr);
    const int status = lua_pcallk(_luaState, arguments, results, 0, 0, nullptr);
    if (status == LUA_OK)
        return true;
    if (status < 0) { // an unguarded exception went through Lua: the top may be anything
        lua_settop(_luaState, -2);
        lua_pushnil(_luaState);
    }
    traceError(_luaState);
    lua_settop(_luaState, -2);
    return false;
}

bool K7LuaStack::perform(Step step, void* data, int32 arguments, int32 results) const
{
    if (!hasRoom(ROOM + std::max(results, 0))) {
        if (_luaState)
            lua_settop(_luaState, -arguments - 1);
        return false;
    }
    Job job{step, data};
    lua_pushcclosure(_luaState, runJob, 0);
    lua_pushlightuserdata(_luaState, &job);
    if (arguments > 0) {
        lua_insert(_luaState, -arguments - 2);
        lua_insert(_luaState, -arguments - 2);
    }
    return callProtected(arguments + 1, results);
}

namespace {

/// Run @p steps with the item that @p name stands for, and remember the name once that succeeded.
template <class Steps>
bool withItem(const J3String& name, bool isRoot, LuaNames* names, const Steps& steps)
{
    try {
        const LuaText text(name);
        NamedItem item{text.c_str(), isRoot, nullptr};
        if (names && LuaNames::fits(name.wstring()) && names->find(name.wstring()) == LUA_NOREF) {
            item.place = &names->placeFor(name.wstring());
            item.place->length = 0;
        }
        if (!steps(&item))
            return false;
        if (item.place)
            item.place->assign(name.wstring());
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

/// Push an item under protection, nil when it cannot be had.
int32 K7LuaStack::pushNamed(const J3String& name) const
{
    const int height = lua_gettop(_luaState);
    LuaNames* const names = _selfOpen ? &extras().names : nullptr;
    const bool isFetched = (isRoot() || height > 0) && withItem(name, isRoot(), names, [&](NamedItem* item) {
                               if (!item->isRoot)
                                   lua_pushvalue(_luaState, -1);
                               return perform(fetchStep, item, item->isRoot ? 0 : 1, 1);
                           });
    if (isFetched)
        return lua_type(_luaState, -1);
    lua_settop(_luaState, height);
    lua_pushnil(_luaState);
    return LUA_TNIL;
}

/// Pop the top of the stack into an item under protection.
void K7LuaStack::putNamed(const J3String& name)
{
    const int height = lua_gettop(_luaState) - 1;
    LuaNames* const names = _selfOpen ? &extras().names : nullptr;
    if (isRoot() || height > 0)
        withItem(name, isRoot(), names, [&](NamedItem* item) {
            if (!item->isRoot) {
                lua_pushvalue(_luaState, -2);
                lua_insert(_luaState, -2);
            }
            return perform(storeStep, item, item->isRoot ? 1 : 2, 0);
        });
    lua_settop(_luaState, height);
}

int32 K7LuaStack::getItem(const J3String& name) const
{
    if (!hasRoom(ROOM))
        return LUA_TNONE;
    const LuaHeight height(_luaState, 1);
    if (!pushTableAndName(_luaState, _extras.get(), name, isRoot() ? LUA_GLOBALS : -1))
        return pushNamed(name);
    lua_rawget(_luaState, -2);
    const int type = lua_type(_luaState, -1);
    if (type == LUA_TNIL && lua_getmetatable(_luaState, -2)) {
        lua_settop(_luaState, -4);
        return pushNamed(name);
    }
    lua_remove(_luaState, -2);
    return type;
}

void K7LuaStack::putItem(const J3String& name)
{
    if (!hasValue())
        return;
    const LuaHeight height(_luaState, -1);
    if (!hasRoom(ROOM)) {
        lua_settop(_luaState, -2);
    } else if (!pushTableAndName(_luaState, _extras.get(), name, isRoot() ? LUA_GLOBALS : -2)) {
        putNamed(name);
    } else if (!isReplaced(_luaState)) {
        lua_settop(_luaState, -4);
        putNamed(name);
    } else {
        lua_copy(_luaState, -4, -1);
        lua_rawset(_luaState, -3);
        lua_settop(_luaState, -3);
    }
}

void K7LuaStack::popTop()
{
    if (hasValue())
        lua_settop(_luaState, -2);
}

bool K7LuaStack::hasTable(const J3String& name) const
{
    const int32 type = getItem(name);
    if (type != LUA_TNONE)
        lua_settop(_luaState, -2);
    return type == LUA_TTABLE;
}

bool K7LuaStack::hasFunction(const J3String& name) const
{
    const int32 type = getItem(name);
    if (type != LUA_TNONE)
        lua_settop(_luaState, -2);
    return type == LUA_TFUNCTION;
}

bool K7LuaStack::pushTable() { return perform(newTableStep, nullptr, 0, 1); }

void K7LuaStack::addTable(const J3String& name)
{
    if (pushTable())
        putItem(name);
}

void K7LuaStack::addPath(const J3String& name)
{
    if (!hasTable(name))
        addTable(name);
}

bool K7LuaStack::pathInto(const J3String& name) const
{
    if (name.isEmpty() ? !hasValue() : getItem(name) == LUA_TNONE)
        return false;
    if (lua_type(_luaState, -1) == LUA_TTABLE) {
        try {
            _path.push_back(name);
            return true;
        } catch (const std::bad_alloc&) { // as if there were no such table
        }
    }
    lua_settop(_luaState, -2);
    return false;
}

void K7LuaStack::pathOut() const
{
    if (_path.empty())
        return;
    if (hasValue() && lua_type(_luaState, -1) == LUA_TTABLE)
        lua_settop(_luaState, -2);
    _path.pop_back();
}

uint32 K7LuaStack::getTableLength() const
{
    if (!hasValue() || !hasRoom(ROOM))
        return 0;
    const LuaHeight height(_luaState, 0);
    if (lua_type(_luaState, -1) == LUA_TTABLE) {
        if (!lua_getmetatable(_luaState, -1))
            return static_cast<uint32>(lua_rawlen(_luaState, -1));
        lua_settop(_luaState, -2);
    }
    uint32 length = 0;
    lua_pushvalue(_luaState, -1);
    return perform(lengthStep, &length, 1, 0) ? length : 0;
}

void K7LuaStack::getTableItem(uint32 i) const
{
    if (!hasRoom(ROOM))
        return;
    if (lua_type(_luaState, -1) == LUA_TTABLE && elementIndex(i) > 0)
        lua_rawgeti(_luaState, -1, elementIndex(i));
    else
        lua_pushnil(_luaState);
}

void K7LuaStack::setTableItem(uint32 i)
{
    if (!hasValue())
        return;
    const LuaHeight height(_luaState, -1);
    int index = elementIndex(i);
    if (index == 0 || !hasRoom(ROOM) || lua_gettop(_luaState) < 2 || lua_type(_luaState, -2) != LUA_TTABLE) {
        lua_settop(_luaState, -2);
        return;
    }
    lua_pushvalue(_luaState, -2);
    lua_insert(_luaState, -2);
    perform(storeElementStep, &index, 2, 0);
}

K7LuaFunction0::K7LuaFunction0(J3String functionName, uint32 argc) : _functionName(std::move(functionName)), _argc(argc)
{}

K7LuaFunction0::~K7LuaFunction0() = default;

bool K7LuaFunction0::addFunctionParam(K7LuaStack* stack)
{
    const int32 type = stack->getItem(_functionName);
    if (type != LUA_TFUNCTION && type != LUA_TNONE)
        stack->popTop();
    return type == LUA_TFUNCTION;
}

} // namespace Kivo
