// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is kept for a Lua state beside it: the names in use, the limits, the trace sink.
#pragma once

#include "Lua/K7LuaStack.h"
#include "Lua/detail/LuaApi_p.h"

#include <algorithm>
#include <array>
#include <cwchar>

namespace Kivo {

/// Names that the registry holds as Lua strings, so that they are pushed without an allocation, which could raise.
/// For states of our own alone: what is left in the registry goes with them.
class LuaNames {
public:
    struct Name {
        static constexpr std::size_t LONGEST = 23;

        int reference = LUA_NOREF; ///< where the registry holds it
        uint32 length = 0;         ///< 0: no name yet
        wchar_t text[LONGEST];
    };

    static bool fits(const std::wstring& name) { return !name.empty() && name.size() <= Name::LONGEST; }

    /// Where a name that fits() lies or would lie.
    Name& placeOf(const std::wstring& name)
    {
        const std::size_t mixed = name.size() * 7 + static_cast<std::size_t>(name.front()) * 31 +
                                  static_cast<std::size_t>(name[name.size() / 2]) * 37 +
                                  static_cast<std::size_t>(name.back()) * 41;
        return _names[mixed % _names.size()];
    }

    static bool holds(const Name& place, const std::wstring& name)
    {
        return place.length == name.size() && std::wmemcmp(place.text, name.data(), name.size()) == 0;
    }

    static void enter(Name& place, const std::wstring& name)
    {
        std::copy(name.begin(), name.end(), place.text);
        place.length = static_cast<uint32>(name.size());
    }

    /// The registry's reference to a name, LUA_NOREF when it holds none.
    int find(const std::wstring& name)
    {
        if (!fits(name))
            return LUA_NOREF;
        const Name& place = placeOf(name);
        return holds(place, name) ? place.reference : LUA_NOREF;
    }

    void forgetAll() { _names.fill({}); }

private:
    std::array<Name, 128> _names{};
};

/// How much a state's scripts may use; 0 is no limit.
struct LuaLimits {
    uint64 instructions = 0;
    uint64 instructionsLeft = 0;
    int depth = 0; ///< calls into Lua that are under way
    uint64 memory = 0;
    uint64 memoryUsed = 0;
    lua_Alloc allocate = nullptr; ///< the state's own allocation, which ours stands before
    void* allocateData = nullptr;
};

class K7LuaExtras {
public:
    LuaNames names;
    LuaLimits limits;
    K7LuaStack::TraceSink traceSink;
};

} // namespace Kivo
