// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What reading a subject gives: records, and what could not be had.
#pragma once

#include "Foundation/J3Types.h"

#include <string>
#include <vector>

namespace Kivo::Inventory {

/// Something that could not be read. A file that is not there is no problem: its fact is missing.
struct Problem {
    std::string what;    ///< the subject, "PCI functions"
    std::string reason;  ///< "can't list the directory"
    int32 errorCode = 0; ///< the errno behind it, 0 when no system call failed
    std::string subject; ///< the path, interface or device that it is about

    friend bool operator==(const Problem&, const Problem&) = default;
};

/// One record, and what of it could not be had.
template <class Record>
struct Reading {
    Record record;
    std::vector<Problem> problems;
};

/// Every record of a subject.
template <class Record>
struct Listing {
    bool known =
        false; ///< whether the records are all there is; false when their source is not there or could not be read
    std::vector<Record> records; ///< none when !known
    std::vector<Problem> problems;
};

} // namespace Kivo::Inventory
