// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Root of every record: what an object does that has nothing to store.
#include "Foundation/J3Object.h"

#include "Base/ForcedUnwind_p.h"
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3Invocation.h"
#include "Foundation/J3Port.h"

namespace Kivo {
namespace {

void report(const J3String& text)
{
    j3assertFunc("no exception", text, "performWithoutException", "Foundation/J3Object", __LINE__);
}

} // namespace

J3Object::~J3Object() = default;

J3Object* J3Object::clone() const { return nullptr; }

void J3Object::archiveTo(J3Archive*) const {}

void J3Object::unarchiveFrom(J3Archive*) {}

void J3Object::serializeTo(J3Stream*) const {}

void J3Object::deserializeFrom(J3Stream*) {}

void J3Object::exceptionCaught(J3Exception& exception) { report(exception.message()); }

void J3Object::objectExceptionCaught(J3Object& object) { report(object.toString()); }

void J3Object::stdExceptionCaught(std::exception& exception) { report(exception.what()); }

void J3Object::unknownExceptionCaught() { report(L"unknown exception"); }

K7_CATCHES_FORCED_UNWIND void J3Object::performWithoutException(void (J3Object::*operation)())
{
    if (!J3_REQUIRE_ARGUMENT(operation, "Foundation/J3Object"))
        return;
    try {
        (this->*operation)();
    } catch (J3Exception& exception) {
        exceptionCaught(exception);
    } catch (J3Object& object) {
        objectExceptionCaught(object);
    } catch (std::exception& exception) {
        stdExceptionCaught(exception);
    } catch (const ForcedUnwind&) {
        throw;
    } catch (...) {
        unknownExceptionCaught();
    }
}

bool J3Object::invoke(const J3Invocation&, J3MemoryStream*) { return false; }

void J3Object::performInvocation(uint32 id, const J3Invocation& invocation, J3Port* port)
{
    J3MemoryStream reply;
    const bool known = invoke(invocation, port ? &reply : nullptr);
    if (!port)
        return;
    reply.moveTo(0);
    port->invocationDone(id, known, reply);
}

std::size_t J3Object::hash() const { return toString().hash(); }

J3String J3Object::toString() const { return {}; }

} // namespace Kivo
