// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A record with a field of every kind.
#pragma once

#include "Foundation/J3Record.h"
#include "Foundation/J3Time.h"

namespace Kivo {

enum class SampleKind : uint16 { PLAIN = 1, SPECIAL = 0x0203 };

/// What a record may hold; sample() gives one whose every byte in a stream can be told from its neighbours.
class SampleRecord : public J3Record<SampleRecord> {
public:
    SampleRecord* clone() const override { return new SampleRecord(*this); }

    static SampleRecord sample()
    {
        SampleRecord record;
        record.flag = true;
        record.tiny = -2;
        record.kind = SampleKind::SPECIAL;
        record.number = 0x04050607;
        record.large = -1;
        record.largest = 0xFFFFFFFFFFFFFFFE;
        record.ratio = 1.5F;
        record.precise = -0.1;
        record.name = L"\u00e9";
        record.time.setUtcTime(0x10);
        record.mac = {1, 2, 3};
        record.bytes = {0xAA, 0xBB};
        return record;
    }

    static auto fields(auto& self)
    {
        return std::tie(self.flag, self.tiny, self.kind, self.number, self.large, self.largest, self.ratio,
                        self.precise, self.name, self.time, self.mac, self.bytes);
    }

    bool flag = false;
    int8 tiny = 0;
    SampleKind kind = SampleKind::PLAIN;
    uint32 number = 0;
    int64 large = 0;
    uint64 largest = 0;
    float32 ratio = 0;
    float64 precise = 0;
    J3String name;
    J3Time time;
    std::array<uint8, 3> mac{};
    std::vector<uint8> bytes;
};

} // namespace Kivo
