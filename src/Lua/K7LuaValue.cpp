// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Typed values on the stack, for every type by one rule a kind.
#include "Lua/K7LuaState.h"
#include "Lua/detail/LuaItem_p.h"
#include "Lua/detail/LuaText_p.h"

#include <cmath>
#include <concepts>
#include <limits>
#include <new>

namespace Kivo {

namespace {

/// The most that a typed access puts on the stack.
constexpr int32 ROOM = 8;

/// What Lua counts in whole numbers: wider integers travel as doubles.
template <class T>
concept NarrowInteger = std::integral<T> && !std::same_as<T, bool> && sizeof(T) <= sizeof(uint32);

/// A double in another type; what it cannot hold becomes its nearest limit, and what is not a number 0.
template <class T>
T converted(lua_Number number)
{
    if constexpr (std::integral<T>) {
        if (std::isnan(number))
            return 0;
        if (number >= std::ldexp(1.0, std::numeric_limits<T>::digits))
            return std::numeric_limits<T>::max();
        if (number <= static_cast<lua_Number>(std::numeric_limits<T>::min()))
            return std::numeric_limits<T>::min();
    }
    return static_cast<T>(number);
}

/// The value at the top as T. @return whether it is one
template <class T>
bool valueAtTop(lua_State* L, T* out)
{
    int isNumber = 0;
    if constexpr (std::same_as<T, bool>) {
        *out = lua_toboolean(L, -1) != 0;
        return lua_type(L, -1) == LUA_TBOOLEAN;
    } else if constexpr (NarrowInteger<T> && std::is_signed_v<T>) {
        *out = static_cast<T>(lua_tointegerx(L, -1, &isNumber));
    } else if constexpr (NarrowInteger<T>) {
        *out = static_cast<T>(lua_tounsignedx(L, -1, &isNumber));
    } else {
        *out = converted<T>(lua_tonumberx(L, -1, &isNumber));
    }
    return isNumber != 0;
}

/// Argument: a number. Result: its text.
int textStep(lua_State* L)
{
    lua_tolstring(L, 2, nullptr);
    lua_settop(L, 2);
    return 1;
}

/// The text in a Lua string at the top.
bool textAtTop(lua_State* L, J3String* out)
{
    std::size_t length = 0;
    const char* const text = lua_tolstring(L, -1, &length);
    try {
        *out = J3String::from_string({text, length});
        return true;
    } catch (const std::exception&) { // no memory
        return false;
    }
}

/// Push a scalar, which raises nothing.
template <class T>
void pushScalar(lua_State* L, T value)
{
    if constexpr (std::same_as<T, bool>)
        lua_pushboolean(L, value);
    else if constexpr (NarrowInteger<T> && std::is_signed_v<T>)
        lua_pushinteger(L, value);
    else if constexpr (NarrowInteger<T>)
        lua_pushunsigned(L, value);
    else
        lua_pushnumber(L, static_cast<lua_Number>(value));
}

int stringStep(lua_State* L)
{
    lua_pushstring(L, static_cast<const char*>(lua_touserdata(L, 1)));
    return 1;
}

} // namespace

#define K7_LUA_ACCESS(Name, Type)                                                                                      \
    bool K7LuaStack::getValue(Type* out) const                                                                         \
    {                                                                                                                  \
        if (!hasValue())                                                                                               \
            return false;                                                                                              \
        const LuaHeight height(_luaState, -1);                                                                         \
        Type value;                                                                                                    \
        const bool isAccepted = valueAtTop(_luaState, &value);                                                         \
        lua_settop(_luaState, -2);                                                                                     \
        if (isAccepted && out)                                                                                         \
            *out = value;                                                                                              \
        return isAccepted && out;                                                                                      \
    }                                                                                                                  \
    void K7LuaStack::pushValue(const Type* in)                                                                         \
    {                                                                                                                  \
        if (!hasRoom(ROOM))                                                                                            \
            return;                                                                                                    \
        if (in)                                                                                                        \
            pushScalar(_luaState, *in);                                                                                \
        else                                                                                                           \
            lua_pushnil(_luaState);                                                                                    \
    }
K7_LUA_SCALAR_TYPES(K7_LUA_ACCESS)
#undef K7_LUA_ACCESS

bool K7LuaStack::getValue(J3String* out) const
{
    if (!hasValue())
        return false;
    const LuaHeight height(_luaState, -1);
    const int type = lua_type(_luaState, -1);
    if (!out || (type != LUA_TSTRING && (type != LUA_TNUMBER || !perform(textStep, nullptr, 1, 1)))) {
        lua_settop(_luaState, out && type == LUA_TNUMBER ? -1 : -2); // the failed step has popped its number
        return false;
    }
    const bool isRead = textAtTop(_luaState, out);
    lua_settop(_luaState, -2);
    return isRead;
}

void K7LuaStack::pushValue(const J3String* in)
{
    if (!hasRoom(ROOM))
        return;
    const LuaHeight height(_luaState, 1);
    try {
        if (in && perform(stringStep, const_cast<char*>(LuaText(*in).c_str()), 0, 1))
            return;
    } catch (const std::exception&) { // no memory
    }
    lua_pushnil(_luaState);
}

template <class T>
bool K7LuaStack::readItem(const J3String& name, T* out) const
{
    if (!_luaState || !lua_checkstack(_luaState, ROOM))
        return false;
    const LuaHeight height(_luaState, 0);
    if constexpr (!std::same_as<T, J3String>) {
        if (out && pushTableAndName(_luaState, _extras.get(), name, isRoot() ? LUA_GLOBALS : -1)) {
            lua_rawget(_luaState, -2);
            T value;
            const bool isAccepted = valueAtTop(_luaState, &value);
            lua_settop(_luaState, -3);
            if (isAccepted) {
                *out = value;
                return true;
            }
        }
    }
    return getItem(name) != LUA_TNONE && getValue(out);
}

template <class T>
void K7LuaStack::writeItem(const J3String& name, const T& value)
{
    if (!_luaState || !lua_checkstack(_luaState, ROOM))
        return;
    const LuaHeight height(_luaState, 0);
    if constexpr (!std::same_as<T, J3String>) {
        if (pushTableAndName(_luaState, _extras.get(), name, isRoot() ? LUA_GLOBALS : -1)) {
            const bool isSimple = isReplaced(_luaState);
            lua_settop(_luaState, -2);
            if (isSimple) {
                pushScalar(_luaState, value);
                lua_rawset(_luaState, -3);
                lua_settop(_luaState, -2);
                return;
            }
            lua_settop(_luaState, -3);
        }
    }
    pushValue(&value);
    putItem(name);
}

#define K7_LUA_ACCESS(Name, Type)                                                                                      \
    bool K7LuaState::read##Name(const J3String& name, Type* out) const { return readItem(name, out); }
K7_LUA_TYPES(K7_LUA_ACCESS)
#undef K7_LUA_ACCESS

#define K7_LUA_ACCESS(Name, Type)                                                                                      \
    bool K7LuaState::write##Name(const J3String& name, Type value)                                                     \
    {                                                                                                                  \
        writeItem(name, value);                                                                                        \
        return true;                                                                                                   \
    }
K7_LUA_SCALAR_TYPES(K7_LUA_ACCESS)
#undef K7_LUA_ACCESS

bool K7LuaState::writeString(const J3String& name, const J3String& value)
{
    writeItem(name, value);
    return true;
}

} // namespace Kivo
