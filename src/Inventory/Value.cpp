// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// One value of a record, whatever its type.
#include "Inventory/Value.h"

namespace Kivo::Inventory {

Value::Value() = default;

Value::Value(bool flag) : _storage(flag) {}

Value::Value(Real number) : _storage(number) {}

Value::Value(std::string text) : _storage(std::move(text)) {}

Value::Value(std::string_view text) : _storage(std::string(text)) {}

Value::Value(const char* text)
{
    if (text)
        _storage = std::string(text);
}

Value::Value(const std::vector<std::string>& texts) : _storage(List(texts.begin(), texts.end())) {}

Value::Value(List list) : _storage(std::move(list)) {}

Value::Value(Row row) : _storage(std::move(row)) {}

Value::Value(Storage storage) : _storage(std::move(storage)) {}

// Assigned, not constructed: GCC 12's variant of strings and vectors crashes when its copy constructor runs out of
// memory.
Value::Value(const Value& other) : Value() { _storage = other._storage; }
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(const Value&) = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;

std::optional<float64> Value::number() const
{
    if (const auto* const number = as<int64>())
        return static_cast<float64>(*number);
    if (const auto* const number = as<uint64>())
        return static_cast<float64>(*number);
    if (const auto* const number = as<Real>())
        return number->value;
    return std::nullopt;
}

bool operator==(const Value& left, const Value& right) { return left._storage == right._storage; }

} // namespace Kivo::Inventory
