// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A call as a message: the operation's name and its arguments.
#pragma once

#include "Foundation/J3MemoryStream.h"
#include "Foundation/J3String.h"

namespace Kivo {

/// A named call with its arguments, as J3Object::invoke() takes it.
class J3_API J3Invocation {
public:
    /// @param name      the operation's name
    /// @param arguments what the operation reads its arguments from; a copy is kept, its position at the beginning
    J3Invocation(const J3String& name, const J3MemoryStream& arguments);

    [[nodiscard]] const J3String& name() const { return _name; }

    /// The arguments; who reads them reads from a copy, so that a call can be carried out more than once.
    [[nodiscard]] const J3MemoryStream& arguments() const { return _arguments; }

private:
    J3String _name;
    J3MemoryStream _arguments;
};

} // namespace Kivo
