// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How far long work has come.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/FS.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"

namespace Kivo {

/// Whom to tell about it.
struct ProgressReport {
    K7SystemUtil::FS::Progress progress = nullptr;
    void* context = nullptr;

    /// Raises a reason when the work is to end.
    void tell(uint64 done, uint64 total, const char* path) const
    {
        require(!progress || progress(context, done, total), "was ended", path);
    }
};

} // namespace Kivo
