// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Objects that can be exchanged with Lua tables.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3Object.h"

namespace Kivo {

class K7LuaState;

/// Writes its fields into a Lua table, and reads them back.
class K7SAL_API K7LuaArchivable {
public:
    /// Write every field into the current table of @p state, with its write operations.
    virtual bool archiveTo(K7LuaState& state) const = 0;

    /// Read every field from the current table of @p state, with its read operations.
    virtual bool unarchiveFrom(const K7LuaState& state) = 0;

protected:
    ~K7LuaArchivable() = default; // never deleted through this interface
};

/// A record that Lua can take and give.
class K7SAL_API K7LuaObject : public J3Object, public K7LuaArchivable {
public:
    ~K7LuaObject() override;

    using J3Object::archiveTo;
    using J3Object::unarchiveFrom;
    using K7LuaArchivable::archiveTo;
    using K7LuaArchivable::unarchiveFrom;
};

} // namespace Kivo
