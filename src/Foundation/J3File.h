// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A file that is closed with its object.
#pragma once

#include "Foundation/J3String.h"

namespace Kivo {

/// An open file; the object owns it and closes it. A call that a signal interrupts is retried.
class J3_API J3File {
public:
    enum Mode {
        READ, ///< an existing file for reading, closed on exec (O_RDONLY | O_CLOEXEC)
    };

    J3File() = default;
    J3File(J3File&& other) noexcept;
    J3File& operator=(J3File&& other) noexcept;
    ~J3File();

    /// Open @p path and close what was open before.
    /// @return false, with nothing open and errno telling why, when it cannot be opened or is a directory
    bool open(const J3String& path, Mode mode);

    /// Read on from where the last read ended.
    /// @return the number of bytes read, less than @p count only at the end of the file, when reading fails or when
    /// nothing is open
    uint32 read(void* out, uint32 count);

    void close();

    [[nodiscard]] bool isOpen() const { return _descriptor != -1; }

private:
    int _descriptor = -1;
};

} // namespace Kivo
