// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Calls as messages, and the receiver of their answers.
#include "Foundation/J3Invocation.h"

#include "Foundation/J3Port.h"

namespace Kivo {

J3Invocation::J3Invocation(const J3String& name, const J3MemoryStream& arguments) : _name(name), _arguments(arguments)
{
    _arguments.moveTo(0);
}

J3Port::~J3Port() = default;

} // namespace Kivo
