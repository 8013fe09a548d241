// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// One value of a record, whatever its type.
#pragma once

#include "Foundation/J3Types.h"
#include "Inventory/InventoryApi.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Kivo::Inventory {

struct Field;
class Value;

using List = std::vector<Value>;

/// A nested record: its fields in the order of its column table.
using Row = std::vector<Field>;

/// A number with as many decimals as were measured.
struct Real {
    float64 value;
    int decimals;

    friend bool operator==(const Real&, const Real&) = default;
};

/// What a column holds of one record: nothing (not known), a flag, a number, a text, or a list of values or records.
class K7INVENTORY_API Value {
public:
    using Storage = std::variant<std::monostate, bool, int64, uint64, Real, std::string, List, Row>;

    Value();          ///< not known
    Value(bool flag); // NOLINT(google-explicit-constructor): columns return what they hold
    Value(Real number);
    Value(std::string text);
    Value(std::string_view text);
    Value(const char* text); ///< null is not known
    Value(const std::vector<std::string>& texts);
    Value(List list);
    Value(Row row);

    template <std::signed_integral T>
    Value(T number) : Value(Storage(static_cast<int64>(number)))
    {}

    template <std::unsigned_integral T>
    requires(!std::same_as<T, bool>) Value(T number) : Value(Storage(static_cast<uint64>(number))) {}

    /// A value that may be missing.
    template <class T>
    Value(const std::optional<T>& value) : Value(value ? Value(*value) : Value())
    {}

    Value(const Value&);
    Value(Value&&) noexcept;
    Value& operator=(const Value&);
    Value& operator=(Value&&) noexcept;
    ~Value();

    /// Whether the record has it.
    [[nodiscard]] bool isKnown() const { return _storage.index() != 0; }

    /// The alternative of type T, null when the value is of another one.
    template <class T>
    [[nodiscard]] const T* as() const
    {
        return std::get_if<T>(&_storage);
    }

    /// The value as the variant that it is.
    [[nodiscard]] const Storage& storage() const { return _storage; }

    /// The value as a number, when it is one (a flag is not).
    [[nodiscard]] std::optional<float64> number() const;

    friend K7INVENTORY_API bool operator==(const Value& left, const Value& right);

private:
    explicit Value(Storage storage);

    Storage _storage;
};

/// One field of a nested record.
struct Field {
    const char* key; ///< as its column table spells it
    Value value;

    friend bool operator==(const Field& left, const Field& right)
    {
        return std::string_view(left.key) == right.key && left.value == right.value;
    }
};

} // namespace Kivo::Inventory
