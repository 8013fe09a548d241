// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Hardware address value.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3Record.h"

namespace Kivo {

/// A six-byte hardware address. All zero stands for "not set" and is not valid.
/// *Threads*: a value, as an int.
class K7CORE_API K7MacAddress : public J3Record<K7MacAddress> {
public:
    static constexpr uint32 SIZE = 6; ///< bytes of an address

    K7MacAddress() = default;

    /// Take SIZE bytes in the order in which they are written; null is reported and leaves the address not set.
    explicit K7MacAddress(const uint8* bytes) { setBytes(bytes); }

    [[nodiscard]] K7MacAddress* clone() const override;

    /// "00:11:22:aa:bb:cc"; K7MacAddressFormatter writes the other forms.
    [[nodiscard]] J3String toString() const override;

    [[nodiscard]] bool isValid() const { return _bytes != std::array<uint8, SIZE>{}; }

    /// Take six pairs of hexadecimal digits, all separated by ':' or all by '-'. @return false, changing nothing, for
    /// any other text and for null
    /// @{
    bool fromString(const J3String& text);
    bool fromString(const char* text);
    /// @}

    /// The SIZE bytes; valid as long as the address is.
    [[nodiscard]] const uint8* bytes() const { return _bytes.data(); }

    /// Take SIZE bytes; null is reported and changes nothing.
    void setBytes(const uint8* bytes);

    static auto fields(auto& self) { return std::tie(self._bytes); }

    friend std::strong_ordering operator<=>(const K7MacAddress& left, const K7MacAddress& right)
    {
        return left._bytes <=> right._bytes;
    }

private:
    std::array<uint8, SIZE> _bytes{};
};

} // namespace Kivo
