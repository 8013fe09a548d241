// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The parsers of partition tables, mount tables and the kernel's log, over the same bytes.
#include "OS/System/Platform/Linux/detail/KernelMessageParser_p.h"
#include "OS/System/Platform/Linux/detail/MbrParser_p.h"
#include "OS/System/Platform/Linux/detail/MountTableParser_p.h"

using namespace Kivo;

extern "C" int LLVMFuzzerTestOneInput(const uint8* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    parseMbr(text);
    parseEnumerationFailure(text);
    MountTableParser rows(text);
    for (MountRow row; rows.next(&row);)
        if (!isMountText(row.directory, unescapedMountText(row.directory)))
            __builtin_trap();
    return 0;
}
