// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A record with a field of every kind.
#pragma once

#include "Foundation/J3Record.h"
#include "Foundation/J3Time.h"

namespace Kivo {

enum class SampleKind : uint16 { PLAIN = 1, SPECIAL = 0x0203 };

/// What a record may hold, with values whose every byte in a stream can be told from its neighbours.
struct SampleRecord : J3Record<SampleRecord> {
    static auto fields(auto& self)
    {
        return std::tie(self.flag, self.tiny, self.kind, self.number, self.large, self.largest, self.ratio,
                        self.precise, self.name, self.time, self.mac, self.bytes);
    }

    static constexpr const char* JSON =
        R"({"1":true,"2":-2,"3":515,"4":67438087,"5":-1,"6":18446744073709551614,"7":1.5,)"
        R"("8":-0.1,"9":"é","10":{"1":16},"11":[1,2,3],"12":2,"13":[170,187]})";
    static constexpr uint8 PAIR[] = {0xAA, 0xBB};

    bool flag = true;
    int8 tiny = -2;
    SampleKind kind = SampleKind::SPECIAL;
    uint32 number = 0x04050607;
    int64 large = -1;
    uint64 largest = 0xFFFFFFFFFFFFFFFE;
    float32 ratio = 1.5F;
    float64 precise = -0.1;
    J3String name = L"\u00e9";
    J3Time time = J3Time::from_time_t(0x10);
    std::array<uint8, 3> mac{1, 2, 3};
    std::vector<uint8> bytes{std::begin(PAIR), std::end(PAIR)};
};

/// A record that differs from the sample in every field.
inline SampleRecord otherRecord()
{
    SampleRecord record;
    std::apply([](auto&... field) { ((field = {}), ...); }, SampleRecord::fields(record));
    return record;
}

} // namespace Kivo
