// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A walk over the lines of a file that need not be there.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"

namespace Kivo {

enum class LineWalk {
    TAKEN,  ///< a line was taken
    ENDED,  ///< none was
    NO_FILE ///< there is no such file: an answer, not a failure
};

/// Hand the lines of a file, cut at 511 bytes, to @p take until it returns true. A file that is there and cannot be
/// opened or read to its end is raised as a reason.
template <class Take>
LineWalk walkLines(const char* path, Take&& take)
{
    SystemLines lines(path, 512);
    if (!lines && errno == ENOENT)
        return LineWalk::NO_FILE;
    requireCall(static_cast<bool>(lines), "can't open the file", path);
    std::string_view line;
    while (lines.next(&line))
        if (take(line))
            return LineWalk::TAKEN;
    require(!lines.failed(), "can't read the file", path);
    return LineWalk::ENDED;
}

} // namespace Kivo
