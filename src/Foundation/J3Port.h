// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Receiver of the answers to invocations.
#pragma once

#include "Foundation/J3MemoryStream.h"

namespace Kivo {

/// Takes the outcome of a call that J3Object::performInvocation() carried out.
class J3_API J3Port {
public:
    virtual ~J3Port();

    /// @param id    the number that the call was given
    /// @param known whether the object knows the operation
    /// @param reply what it answered, its position at the beginning; empty when it answered nothing
    virtual void invocationDone(uint32 id, bool known, const J3MemoryStream& reply) = 0;

protected:
    J3Port() = default;
    J3Port(const J3Port&) = default;
    J3Port& operator=(const J3Port&) = default;
};

} // namespace Kivo
