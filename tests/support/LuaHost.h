// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A Lua state whose stack a test can look at.
#pragma once

#include "Lua/K7LuaState.h"

#include <lua.hpp>

namespace K7Test {

/// A state with a script that has run.
class LuaHost : public Kivo::K7LuaState {
public:
    LuaHost() = default;
    explicit LuaHost(const Kivo::J3String& script) { run(script); }

    /// Load and run a script, in a new state when there is none; what it raises is thrown.
    void run(const Kivo::J3String& script);

    /// The error that a script ends with, as the trace reports it; empty when it ends well.
    std::string errorOf(const Kivo::J3String& script);

    [[nodiscard]] lua_State* state() const { return _luaState; }
    [[nodiscard]] int height() const { return lua_gettop(_luaState); }
    [[nodiscard]] std::size_t depth() const { return _path.size(); }

    /// A global as text, "nil" for none.
    [[nodiscard]] std::string text(const Kivo::J3String& name) const;
};

/// An object with an object in it, and so on, as deep as it is told.
class Nested : public Kivo::K7LuaObject {
public:
    explicit Nested(int levels = 0);

    bool archiveTo(Kivo::K7LuaState& state) const override;
    bool unarchiveFrom(const Kivo::K7LuaState& state) override;

    Kivo::int32 level = 0;
    Kivo::J3String label;
    std::unique_ptr<Nested> inner;
};

} // namespace K7Test
