// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Exceptions of the foundation.
#pragma once

#include "Foundation/J3String.h"

namespace Kivo {

/// A failure with its text and an error code, which is an errno where a system call failed and 0 where none did.
class J3_API J3Exception : public std::exception {
public:
    explicit J3Exception(const J3String& message, int32 errorCode = 0);
    J3Exception(const J3Exception&) = default;
    J3Exception& operator=(const J3Exception&) = default;
    ~J3Exception() override;

    /// The text in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return _what.c_str(); }

    /// The text as it was given.
    [[nodiscard]] const J3String& message() const { return _message; }

    /// The errno of a failed system call, 0 otherwise.
    [[nodiscard]] int32 errorCode() const { return _errorCode; }

private:
    J3String _message;
    std::string _what;
    int32 _errorCode;
};

/// A position or length that lies outside what is there.
class J3_API J3RangeException : public J3Exception {
public:
    /// @param message  what was being done
    /// @param begin    the first position that is there
    /// @param end      the last position that is there, or the limit, as the thrower says
    /// @param position what was asked for
    J3RangeException(const J3String& message, int64 begin, int64 end, int64 position);
    J3RangeException(const J3RangeException&) = default;
    J3RangeException& operator=(const J3RangeException&) = default;
    ~J3RangeException() override;

    [[nodiscard]] int64 begin() const { return _begin; }
    [[nodiscard]] int64 end() const { return _end; }
    [[nodiscard]] int64 position() const { return _position; }

private:
    int64 _begin;
    int64 _end;
    int64 _position;
};

} // namespace Kivo
