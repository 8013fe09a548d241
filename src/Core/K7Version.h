// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Version of three numbers.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3Record.h"

namespace Kivo {

/// A version of three bytes, ordered as versions are.
///
/// <sys/sysmacros.h> has macros of the names major and minor: a source that needs both includes it after this header.
/// *Threads*: a value, as an int.
class K7CORE_API K7Version : public J3Record<K7Version> {
public:
    K7Version() = default;

    K7Version(uint8 major, uint8 minor, uint8 patch) : _major(major), _minor(minor), _patch(patch) {}

    [[nodiscard]] K7Version* clone() const override;

    /// "6.1.0"
    [[nodiscard]] J3String toString() const override;

    [[nodiscard]] uint32 major() const { return _major; }

    [[nodiscard]] uint32 minor() const { return _minor; }

    [[nodiscard]] uint32 patch() const { return _patch; }

    void setMajor(uint8 number) { _major = number; }

    void setMinor(uint8 number) { _minor = number; }

    void setPatch(uint8 number) { _patch = number; }

    static auto fields(auto& self) { return std::tie(self._major, self._minor, self._patch); }

    friend std::strong_ordering operator<=>(const K7Version& left, const K7Version& right)
    {
        return fields(left) <=> fields(right);
    }

private:
    uint8 _major = 0;
    uint8 _minor = 0;
    uint8 _patch = 0;
};

} // namespace Kivo
