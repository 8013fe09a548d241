// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
#include "LuaHost.h"

namespace K7Test {

using namespace Kivo;

void LuaHost::run(const J3String& script)
{
    if (!isValid()) {
        if (!initWithBuffer(script.isEmpty() ? J3String(L" ") : script))
            throw J3Exception(L"not loaded");
    } else if (luaL_loadstring(_luaState, script.to_string().c_str()) != LUA_OK) {
        throw J3Exception(lua_tostring(_luaState, -1));
    }
    runScript();
}

std::string LuaHost::errorOf(const J3String& script)
{
    std::string report;
    setTraceSink([&](const J3String& text) { report = text.to_string(); });
    try {
        run(script);
    } catch (const J3Exception& error) {
        report = report.empty() ? error.what() : report;
    }
    setTraceSink({});
    return report;
}

std::string LuaHost::text(const J3String& name) const
{
    J3String value(L"nil");
    readString(name, &value);
    return value.to_string();
}

Nested::Nested(int levels) : level(levels), label(J3String().format(L"level %d", levels))
{
    if (levels > 1)
        inner = std::make_unique<Nested>(levels - 1);
}

bool Nested::archiveTo(K7LuaState& state) const
{
    state.writeInt32(L"level", level);
    state.writeString(L"label", label);
    if (inner)
        state.writeObject(L"inner", *inner);
    return false; // which nobody asks
}

bool Nested::unarchiveFrom(const K7LuaState& state)
{
    state.readInt32(L"level", &level);
    state.readString(L"label", &label);
    if (state.hasTable(L"inner")) {
        inner = std::make_unique<Nested>();
        state.readObject(L"inner", inner.get());
    }
    return false;
}

} // namespace K7Test
