// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Stream over an owned buffer.
#pragma once

#include "Foundation/J3Stream.h"

#include <vector>

namespace Kivo {

/// A stream over a buffer of its own, which grows as it is written.
class J3_API J3MemoryStream : public J3Stream {
public:
    J3MemoryStream() = default;

    /// Start at the beginning of a copy of @p size bytes; null is no bytes.
    J3MemoryStream(const void* bytes, uint32 size);

    [[nodiscard]] J3MemoryStream* clone() const override;

    [[nodiscard]] bool isValid() const override { return true; }

    [[nodiscard]] uint32 remains() const override { return size() - _position; }

    [[nodiscard]] uint32 size() const override { return static_cast<uint32>(_buffer.size()); }

    [[nodiscard]] uint32 position() const override { return _position; }

    bool moveTo(uint32 position) override;
    uint32 read(void* out, uint32 count) override;
    uint32 write(const void* bytes, uint32 count) override;
    uint32 fill(uint8 value, uint32 count) override;
    void clear() override;

    /// The bytes from the beginning on; valid until the next write.
    [[nodiscard]] const uint8* buffer() const { return _buffer.data(); }

private:
    uint8* makeRoom(uint32* count);

    std::vector<uint8> _buffer;
    uint32 _position = 0;
};

} // namespace Kivo
