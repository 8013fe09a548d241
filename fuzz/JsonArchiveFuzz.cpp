// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// JSON and CBOR documents from outside: refused, or taken and given back as they were.
#include "Foundation/J3JsonArchive.h"
#include "Foundation/J3MemoryStream.h"

#include <cstdlib>

using namespace Kivo;

namespace {

/// What was taken is what is written: a document read again from its own form is the same one.
void expectStable(const J3JsonArchive& archive)
{
    J3JsonArchive again;
    if (!again.fromJson(archive.toJson()) || again.toJson() != archive.toJson())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* bytes, std::size_t size)
{
    J3JsonArchive archive;
    if (archive.fromJson(std::string(bytes, bytes + size)))
        expectStable(archive);
    if (archive.fromCbor({bytes, bytes + size}))
        expectStable(archive);
    return 0;
}
