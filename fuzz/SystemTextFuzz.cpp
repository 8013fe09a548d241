// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Every parser of the kernel's text files, over the same bytes.
#include "OS/System/Platform/Linux/detail/MeminfoParser_p.h"

using namespace Kivo;

extern "C" int LLVMFuzzerTestOneInput(const uint8* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    MeminfoParser rows(text);
    for (MeminfoRow row{}; rows.next(&row);) {
    }
    return 0;
}
