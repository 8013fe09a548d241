// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is kept for a Lua state beside it: the names in use, the limits, the trace sink.
#pragma once

#include "Lua/K7LuaStack.h"
#include "Lua/detail/LuaApi_p.h"

#include <algorithm>
#include <array>

namespace Kivo {

/// Names that the registry holds as Lua strings, so that they are pushed without an allocation, which could raise.
/// For states of our own alone: what is left in the registry goes with them.
class LuaNames {
public:
    struct Name {
        static constexpr std::size_t LONGEST = 23;

        int reference = LUA_NOREF; ///< where the registry holds it
        uint32 length = 0;         ///< 0: no name yet
        std::size_t mixed = 0;
        wchar_t text[LONGEST];

        [[nodiscard]] bool is(const std::wstring& name, std::size_t mixedName) const
        {
            return mixed == mixedName && length == name.size() && std::equal(name.begin(), name.end(), text);
        }

        void assign(const std::wstring& name)
        {
            std::copy(name.begin(), name.end(), text);
            length = static_cast<uint32>(name.size());
            mixed = mix(name);
        }
    };

    static bool fits(const std::wstring& name) { return !name.empty() && name.size() <= Name::LONGEST; }

    /// The registry's reference to a name, LUA_NOREF when it holds none.
    [[nodiscard]] int find(const std::wstring& name) const
    {
        if (!fits(name))
            return LUA_NOREF;
        const std::size_t mixed = mix(name);
        for (const Name& place : _sets[mixed % _sets.size()])
            if (place.is(name, mixed))
                return place.reference;
        return LUA_NOREF;
    }

    /// Where to keep a name that is not held: at a free place, or at that of the name which was kept first.
    [[nodiscard]] Name& placeFor(const std::wstring& name)
    {
        Set& set = _sets[mix(name) % _sets.size()];
        for (Name& place : set)
            if (place.length == 0)
                return place;
        return set[_replaced++ % set.size()];
    }

    void forgetAll() { _sets.fill({}); }

private:
    using Set = std::array<Name, 4>;

    static std::size_t mix(const std::wstring& name)
    {
        const auto at = [&](std::size_t i) { return static_cast<std::size_t>(name[i]); };
        return name.size() + at(0) * 3 + at(name.size() / 2) * 37 + at(name.size() - 1) * 1031;
    }

    std::array<Set, 32> _sets{};
    std::size_t _replaced = 0;
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
