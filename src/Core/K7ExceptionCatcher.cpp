// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Records exceptions as texts.
#include "Core/K7ExceptionCatcher.h"

#include "Base/ForcedUnwind_p.h"
#include "Foundation/J3Exception.h"

namespace Kivo {
namespace {

K7_CATCHES_FORCED_UNWIND J3String textInFlight()
{
    try {
        throw;
    } catch (const J3Exception& exception) {
        return exception.message();
    } catch (const J3Object& object) {
        return object.toString();
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (const char* text) {
        return text;
    } catch (int code) {
        return J3String().format(L"%d", code);
    } catch (const ForcedUnwind&) {
        throw;
    } catch (...) {
        return L"unknown exception";
    }
}

} // namespace

K7ExceptionCatcher::K7ExceptionCatcher() : _texts(L"\n") {}

void K7ExceptionCatcher::collect()
{
    if (std::current_exception())
        _texts.add(textInFlight());
}

} // namespace Kivo
