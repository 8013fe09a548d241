// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Number of a Linux device.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3Record.h"
#include "Foundation/J3String.h"

#include <compare>
#include <concepts>

namespace Kivo {

/// The number of a Linux device as the kernel packs it: 12 bits of major above 20 bits of minor. The packed value 0 is
/// no device.
///
/// Assignment, arithmetic and comparison take a node, a text as fromString() takes it (one that it refuses counts as
/// the invalid node) or a packed value; they act on the packed values as unsigned numbers, so that nodes order by
/// major, then minor, and a minor that overflows carries into the major. *Threads*: a value, as an int.
class K7SAL_API K7KDevNode : public J3Record<K7KDevNode> {
public:
    /// The packing.
    enum K7KDevNodeConst : uint32 {
        K7_MAJOR_BITS = 12,
        K7_MAJOR_MASK = 4095,
        K7_MINOR_BITS = 20,
        K7_MINOR_MASK = 1048575
    };

    K7KDevNode() = default;

    /// The node of a text, the invalid one when fromString() refuses it.
    K7KDevNode(const J3String& text) { fromString(text); }
    K7KDevNode(const char* text) { fromString(text); } ///< the same; null is an empty text

    /// The node of a packed value.
    K7KDevNode(uint32 packed) : _packed(packed) {}

    /// The node of two numbers, each without the bits that have no room.
    K7KDevNode(uint32 major, uint32 minor) { set(major, minor); }

    [[nodiscard]] K7KDevNode* clone() const override;

    /// "8.17"
    [[nodiscard]] J3String toString() const override;

    /// Take a text of two numbers, "8.17"; a line feed may follow. Numbers above 255 are refused, although a node can
    /// hold them.
    /// @return false, with the node invalid, for any other text
    bool fromString(const J3String& text);
    bool fromString(const char* text); ///< the same; null is an empty text

    [[nodiscard]] uint32 major() const { return _packed >> K7_MINOR_BITS; }
    [[nodiscard]] uint32 minor() const { return _packed & K7_MINOR_MASK; }
    [[nodiscard]] bool isValid() const { return _packed != 0; }

    /// Set both numbers; bits that have no room are dropped.
    void set(uint32 major, uint32 minor);
    void setMajor(uint32 major) { set(major, minor()); }
    void setMinor(uint32 minor) { set(major(), minor); }

    /// Set one number by its place in the text.
    /// @param index 0 for the major, 1 for the minor
    /// @param value 0 or more; bits that have no room are dropped
    /// @return false, changing nothing, for a negative value and for any other index
    bool setField(int32 index, int32 value);

    /// Become no device.
    void makeInvalid() { _packed = 0; }

    [[nodiscard]] uint32 toUint32() const { return _packed; }
    void fromUint32(uint32 packed) { _packed = packed; }
    operator uint32() const { return _packed; }

    /// Whether operators take a T as it is; between two nodes the copy operations and == are the class's own.
    template <class T>
    static constexpr bool IS_OPERAND = !std::derived_from<T, K7KDevNode> && (std::convertible_to<const T&, uint32> ||
                                                                             std::convertible_to<const T&, J3String>);

    template <class T, class = std::enable_if_t<IS_OPERAND<T>>>
    K7KDevNode& operator=(const T& operand)
    {
        _packed = packedOf(operand);
        return *this;
    }

    template <class T>
    K7KDevNode& operator&=(const T& operand)
    {
        _packed &= packedOf(operand);
        return *this;
    }

    template <class T>
    K7KDevNode& operator+=(const T& operand)
    {
        _packed += packedOf(operand);
        return *this;
    }

    template <class T>
    K7KDevNode& operator-=(const T& operand)
    {
        _packed -= packedOf(operand);
        return *this;
    }

    template <class T, class = std::enable_if_t<IS_OPERAND<T>>>
    friend bool operator==(const K7KDevNode& node, const T& operand)
    {
        return node._packed == packedOf(operand);
    }

    template <class T>
    friend std::strong_ordering operator<=>(const K7KDevNode& node, const T& operand)
    {
        return node._packed <=> packedOf(operand);
    }

    static auto fields(auto& self) { return std::tie(self._packed); }

private:
    static uint32 packedOf(const K7KDevNode& node) { return node._packed; }
    static uint32 packedOf(const J3String& text) { return K7KDevNode(text)._packed; }
    static uint32 packedOf(const char* text) { return K7KDevNode(text)._packed; }
    static uint32 packedOf(const wchar_t* text) { return K7KDevNode(J3String(text))._packed; }
    static uint32 packedOf(uint32 packed) { return packed; }

    uint32 _packed = 0;
};

} // namespace Kivo
