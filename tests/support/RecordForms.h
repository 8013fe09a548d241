// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The stream and archive forms of a record, and the cut that every record has to survive.
#pragma once

#include "Foundation/J3Exception.h"
#include "Foundation/J3JsonArchive.h"
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

namespace K7Test {

/// Check that a record's stream form is @p bytes and its archive form @p json, that it comes back from both, and that
/// its stream, cut anywhere, leaves an empty record as it was.
template <class Record>
void expectForms(const Record& record, const std::vector<Kivo::uint8>& bytes, const std::string& json)
{
    Kivo::J3MemoryStream stream;
    record.serializeTo(&stream);
    EXPECT_EQ(std::vector(stream.buffer(), stream.buffer() + stream.size()), bytes);
    Record target;
    for (Kivo::uint32 length = 0; length < stream.size(); ++length) {
        Kivo::J3MemoryStream cut(stream.buffer(), length);
        EXPECT_THROW(target.deserializeFrom(&cut), Kivo::J3RangeException) << "cut to " << length;
        EXPECT_EQ(target, Record()) << "cut to " << length;
    }
    stream.moveTo(0);
    target.deserializeFrom(&stream);
    EXPECT_EQ(target, record);

    Kivo::J3JsonArchive archive;
    record.archiveTo(&archive);
    EXPECT_EQ(archive.toJson(), json);
    Record fromArchive;
    fromArchive.unarchiveFrom(&archive);
    EXPECT_EQ(fromArchive, record);
}

} // namespace K7Test
