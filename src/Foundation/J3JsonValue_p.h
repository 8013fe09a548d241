// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The values of a JSON document, and its text and CBOR forms.
#pragma once

#ifndef J3Foundation_BUILD
#error "private to J3Foundation"
#endif

#include "Foundation/J3Types.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace Kivo::J3Json {

/// What a document from outside may hold at most; more is refused before it is built.
constexpr std::size_t MAX_DEPTH = 64;
constexpr std::size_t MAX_SIZE = 16 * 1024 * 1024; ///< bytes

/// An owned value that is copied with its owner. Destroying one never allocates.
template <class T>
class Boxed {
public:
    Boxed(T value) : _value(std::make_unique<T>(std::move(value))) {}
    Boxed(const Boxed& other) : _value(std::make_unique<T>(*other._value)) {}
    Boxed(Boxed&&) noexcept = default;
    Boxed& operator=(const Boxed&) = delete;
    Boxed& operator=(Boxed&&) noexcept = default;
    ~Boxed() = default;

    [[nodiscard]] T& operator*() { return *_value; }
    [[nodiscard]] const T& operator*() const { return *_value; }

private:
    std::unique_ptr<T> _value;
};

class Object;
struct Value;
using Array = std::vector<Value>;

/// One value, of 16 bytes; an integer is signed only when it is negative, and texts are well-formed UTF-8.
struct Value {
    using Any =
        std::variant<std::monostate, bool, int64, uint64, float64, Boxed<std::string>, Boxed<Array>, Boxed<Object>>;

    Value() = default; ///< null
    template <class T>
    Value(T value) : any(std::in_place_type<T>, std::move(value))
    {}
    Value(std::string text) : any(Boxed<std::string>(std::move(text))) {}
    Value(Array array);
    Value(Object object);
    Value(const Value&);
    Value(Value&&) noexcept;
    Value& operator=(const Value&) = delete;
    Value& operator=(Value&&) noexcept;
    ~Value();

    /// What the value holds when it is of type T, null otherwise.
    template <class T>
    [[nodiscard]] const T* get() const
    {
        return std::get_if<T>(&any);
    }
    template <class T>
    [[nodiscard]] const T* getBoxed() const
    {
        const auto* const boxed = std::get_if<Boxed<T>>(&any);
        return boxed ? &**boxed : nullptr;
    }

    Any any;
};

/// Named values in the order in which their names came first; finding one takes logarithmic time.
class Object {
public:
    /// A name's value, null and last in the order until it is set when the name is new.
    Value& operator[](std::string name)
    {
        return _items.try_emplace(std::move(name), Item{_items.size(), {}}).first->second.value;
    }

    /// @return null when there is no such name
    [[nodiscard]] const Value* find(std::string_view name) const
    {
        const auto found = _items.find(name);
        return found == _items.end() ? nullptr : &found->second.value;
    }

    [[nodiscard]] std::size_t size() const { return _items.size(); }

    /// The names and values in their order.
    [[nodiscard]] std::vector<std::pair<const std::string*, const Value*>> inOrder() const;

private:
    struct Item {
        std::size_t place;
        Value value;
    };

    std::map<std::string, Item, std::less<>> _items;
};

/// Build an object from a document within the limits above. @return false, with @p out unchanged, for any other
/// @{
bool fromJson(std::string_view text, Object* out);
bool fromCbor(const std::vector<uint8>& bytes, Object* out);
/// @}

[[nodiscard]] std::string toJson(const Object& object);
[[nodiscard]] std::vector<uint8> toCbor(const Object& object);

} // namespace Kivo::J3Json
