// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// One field list gives a record its comparison, archive and stream forms.
#pragma once

#include "Foundation/J3Archive.h"
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3ScalarTypes.h"
#include "Foundation/J3Stream.h"

#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Kivo {

/// How one field stands in a stream and in an archive. An enumeration is its underlying number, an array of bytes its
/// bytes, a vector of bytes its length as a uint32 and then, unless that is 0, the bytes (two items in an archive).
class J3FieldWriter {
public:
    explicit J3FieldWriter(J3Stream* stream) : _stream(stream) {}

    explicit J3FieldWriter(J3Archive* archive) : _archive(archive) {}

    template <class T>
    void operator()(const T& field)
    {
        if constexpr (std::is_enum_v<T>)
            (*this)(static_cast<std::underlying_type_t<T>>(field));
        else if constexpr (std::is_base_of_v<J3String, T>)
            _stream ? _stream->writeString(field) : _archive->writeString(_number++, field, J3String());
        else if constexpr (std::is_base_of_v<J3Object, T>)
            _stream ? _stream->writeObject(field) : _archive->writeObject(_number++, field, J3String());
        else
            number(field);
    }

    void operator()(const std::vector<uint8>& bytes)
    {
        const auto count = static_cast<uint32>(bytes.size());
        number(count);
        if (count != 0)
            array(bytes.data(), count);
    }

    template <std::size_t Count>
    void operator()(const std::array<uint8, Count>& bytes)
    {
        array(bytes.data(), Count);
    }

private:
#define J3_FIELD_NUMBER(Name, Type)                                                                                    \
    void number(Type value)                                                                                            \
    {                                                                                                                  \
        _stream ? _stream->write##Name(value) : _archive->write##Name(_number++, value, J3String());                   \
    }
    J3_SCALAR_TYPES(J3_FIELD_NUMBER)
#undef J3_FIELD_NUMBER

    void array(const uint8* bytes, uint32 count)
    {
        _stream ? _stream->writeUint8Array(bytes, count)
                : _archive->writeUint8Array(_number++, bytes, count, J3String());
    }

    J3Stream* _stream = nullptr;
    J3Archive* _archive = nullptr;
    uint8 _number = 1;
};

/// The reading half of J3FieldWriter.
class J3FieldReader {
public:
    explicit J3FieldReader(J3Stream* stream) : _stream(stream) {}

    explicit J3FieldReader(J3Archive* archive) : _archive(archive) {}

    template <class T>
    void operator()(T& field)
    {
        if constexpr (std::is_enum_v<T>) {
            std::underlying_type_t<T> value{};
            number(&value);
            field = static_cast<T>(value);
        } else if constexpr (std::is_base_of_v<J3String, T>)
            _stream ? _stream->readString(&field) : _archive->readString(_number++, &field, J3String());
        else if constexpr (std::is_base_of_v<J3Object, T>)
            _stream ? _stream->readObject(&field) : _archive->readObject(_number++, &field, J3String());
        else
            number(&field);
    }

    void operator()(std::vector<uint8>& bytes)
    {
        uint32 count = 0;
        number(&count);
        if (_stream && count > _stream->remains())
            throw J3RangeException(L"byte vector", 0, _stream->remains(), count);
        bytes.clear();
        if (count == 0)
            return;
        if (_stream) {
            bytes.resize(count);
            _stream->readUint8Array(bytes.data(), count);
            return;
        }
        _archive->readUint8Array(_number++, &bytes, J3String());
        if (bytes.size() != count)
            throw J3RangeException(L"byte vector", 0, static_cast<int64>(bytes.size()), count);
    }

    template <std::size_t Count>
    void operator()(std::array<uint8, Count>& bytes)
    {
        _stream ? _stream->readUint8Array(bytes.data(), Count)
                : readUint8Array(_archive, _number++, bytes.data(), Count, J3String());
    }

private:
#define J3_FIELD_NUMBER(Name, Type)                                                                                    \
    void number(Type* value)                                                                                           \
    {                                                                                                                  \
        _stream ? _stream->read##Name(value) : _archive->read##Name(_number++, value, J3String());                     \
    }
    J3_SCALAR_TYPES(J3_FIELD_NUMBER)
#undef J3_FIELD_NUMBER

    J3Stream* _stream = nullptr;
    J3Archive* _archive = nullptr;
    uint8 _number = 1;
};

/// Base of a value record that says its fields once:
///
///     class K7Sample : public J3Record<K7Sample> {
///     public:
///         K7Sample* clone() const override { return new K7Sample(*this); }
///         static auto fields(auto& self) { return std::tie(self._channel, self._name); }
///     ...
///
/// From the list follow ==, and the archive form (field numbers from 1 on, under the empty key) and stream form in the
/// list's order. A read takes everything that validate() accepts or leaves the record as it was.
template <class Derived>
class J3Record : public J3Object {
public:
    void archiveTo(J3Archive* archive) const override
    {
        if (J3_REQUIRE_ARGUMENT(archive, SOURCE))
            writeTo(archive);
    }

    void unarchiveFrom(J3Archive* archive) override
    {
        if (J3_REQUIRE_ARGUMENT(archive, SOURCE))
            readFrom(archive);
    }

    void serializeTo(J3Stream* stream) const override
    {
        if (J3_REQUIRE_ARGUMENT(stream, SOURCE))
            writeTo(stream);
    }

    void deserializeFrom(J3Stream* stream) override
    {
        if (J3_REQUIRE_ARGUMENT(stream, SOURCE))
            readFrom(stream);
    }

    /// Look at what was read before the record takes it. A record with a rule about its fields, or with members that
    /// follow from them, has an operation of this name and signature, public and not virtual: it throws a
    /// J3RangeException to refuse the whole reading, and sets what follows. The one here takes everything.
    void validate() {}

    friend bool operator==(const Derived& left, const Derived& right)
    {
        return Derived::fields(left) == Derived::fields(right);
    }

protected:
    J3Record() = default;

private:
    static constexpr const char* SOURCE = "Foundation/J3Record";

    template <class Store>
    void writeTo(Store* store) const
    {
        J3FieldWriter write(store);
        std::apply([&](const auto&... field) { (write(field), ...); }, Derived::fields(self()));
    }

    template <class Store>
    void readFrom(Store* store)
    {
        Derived record(self());
        J3FieldReader read(store);
        std::apply([&](auto&... field) { (read(field), ...); }, Derived::fields(record));
        record.validate();
        static_cast<Derived&>(*this) = std::move(record);
    }

    const Derived& self() const { return static_cast<const Derived&>(*this); }
};

} // namespace Kivo
