// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Records exceptions as texts.
#pragma once

#include "Core/K7StringContainer.h"

namespace Kivo {

/// Records the exceptions of several steps of which none may stop the next.
///
///     try { step(); } catch (...) { catcher.collect(); }
///
/// *Threads*: one at a time.
class K7CORE_API K7ExceptionCatcher {
public:
    K7ExceptionCatcher();

    /// Record the exception that is being handled: the text of a J3Exception, of a J3String or another J3Object, of a
    /// std::exception, of a narrow text or of an int, "unknown exception" for anything else. Does nothing outside a
    /// handler.
    void collect();

    /// What was recorded, in order, one line each.
    [[nodiscard]] J3String text() const { return _texts.toString(); }

    [[nodiscard]] uint32 count() const { return _texts.count(); }

private:
    K7StringContainer _texts;
};

} // namespace Kivo
