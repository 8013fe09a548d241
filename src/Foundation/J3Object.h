// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Root of every record: cloning, archiving, streaming, guarded calls, text form.
#pragma once

#include "Foundation/J3Types.h"

#include <exception>

namespace Kivo {

class J3Archive;
class J3Exception;
class J3Invocation;
class J3MemoryStream;
class J3Port;
class J3Stream;
class J3String;

/// Root of every class that can be copied, archived, streamed or printed without knowing its type.
///
/// The virtual operations below keep this order in every build, and a subclass appends its own after toString().
/// A record overrides clone() to toString() as far as it has something to store; J3Record does most of that.
class J3_API J3Object {
public:
    virtual ~J3Object();

    /// Make a copy of the dynamic type, owned by the caller; the base has nothing to copy and gives null.
    [[nodiscard]] virtual J3Object* clone() const;

    /// Write every field into @p archive, in declaration order; the base stores nothing.
    virtual void archiveTo(J3Archive* archive) const;

    /// Read back what archiveTo() wrote: all of it, or nothing and a J3RangeException.
    virtual void unarchiveFrom(J3Archive* archive);

    /// Write every field into @p stream, in declaration order; the base stores nothing.
    virtual void serializeTo(J3Stream* stream) const;

    /// Read back what serializeTo() wrote: all of it, or nothing and a J3RangeException.
    virtual void deserializeFrom(J3Stream* stream);

    /// Told of a J3Exception that left an operation run by performWithoutException(); the base reports it as a failed
    /// assertion, as do the three that follow.
    virtual void exceptionCaught(J3Exception& exception);

    /// Told of a thrown J3Object, for example a J3String message.
    virtual void objectExceptionCaught(J3Object& object);

    /// Told of a std::exception.
    virtual void stdExceptionCaught(std::exception& exception);

    /// Told that something else was thrown.
    virtual void unknownExceptionCaught();

    /// Run one of this object's operations and turn whatever it throws into one of the four notifications above.
    virtual void performWithoutException(void (J3Object::*operation)());

    /// Carry out a call that arrived as a message.
    /// @param invocation the operation's name and its arguments
    /// @param reply takes what the operation answers; null when no one wants it
    /// @return whether the object knows the operation; the base knows none
    virtual bool invoke(const J3Invocation& invocation, J3MemoryStream* reply);

    /// Carry out a call with invoke() and hand its answer to @p port, which may be null, under the number @p id. What
    /// the operation throws goes to the caller, and the port is not told.
    virtual void performInvocation(uint32 id, const J3Invocation& invocation, J3Port* port);

    /// A number that is equal for equal texts; the base hashes toString().
    [[nodiscard]] virtual std::size_t hash() const;

    /// The object's text form; the base's is empty.
    [[nodiscard]] virtual J3String toString() const;

protected:
    J3Object() = default;
    J3Object(const J3Object&) = default;
    J3Object(J3Object&&) = default;
    J3Object& operator=(const J3Object&) = default;
    J3Object& operator=(J3Object&&) = default;
};

} // namespace Kivo
