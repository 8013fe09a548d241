// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor cores and interrupt counts.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <cstdio>
#include <string>
#include <vector>

namespace Kivo {

/// Processor cores and interrupt counts, as the kernel tells them; the board's own facts are fixed on this platform.
///
/// *Threads*: any.
class K7SAL_API K7SystemUtil::CPU {
public:
    CPU() = delete;

    /// Tell the board's processor model. @return always 0: this platform knows one model
    static int32 modelType();

    /// @{
    /// Give the board's temperature alarm, or its temperature. This platform has no reading: @p value becomes 0 (a null
    /// one is left alone) and the result is false.
    static bool getTempAlarm(int32* value);
    static bool getTempValue(int32* value);
    /// @}

    /// Count the processor cores that are present.
    /// @return the last number of the first range plus one, clamped to 32 bits; 0, which means "unknown", when there is
    ///     no range or it ends in 0: a single-core system that prints only "0" gives 0
    /// @throws J3String "can't open ..." or "can't read ..." with the path
    ///
    /// *Source*: `/sys/devices/system/cpu/present`.
    static int32 coreCount();

    /// Count the interrupts of one row over all cores.
    /// @param name the row's label without its colon: "11", "IPI0", "LOC"
    /// @return the sum of the columns behind the first row of that label, a column that is not a number counting 0: as
    ///     many as coreCount() tells, but not more than the heading names, which leaves cores out that are offline. 0
    ///     when no row has the label, and on a single core, whose count is unknown
    /// @throws J3String "can't open ..." or "can't read ..." with the path
    ///
    /// *Source*: `/proc/interrupts`. *Cost*: hardly more than reading the file, which grows with rows and cores.
    static uint64 interruptCountOf(const J3String& name);

    /// One row of `/proc/interrupts`.
    struct Interrupt {
        std::string label;       ///< without its colon: "11", "IPI0", "LOC"
        uint64 total;            ///< the sum over the cores that are online; of a row with fewer counts, over those
        std::string description; ///< what follows the counts: controller, kind and devices
    };

    /// Read all rows at once, in the file's order.
    /// @return false, with @p interrupts as they were, when the file cannot be read
    ///
    /// *Source*: `/proc/interrupts`.
    static bool readInterrupts(std::vector<Interrupt>* interrupts);

    /// Read the next row of an open `/proc/interrupts`, however long it is.
    /// @param tokens takes the row's words: its label without the colon, then one count a core, then the descriptive
    ///     words; the header row gives the processors' names, an empty row nothing. Untouched at the end of the file
    /// @param file   the open file, at the beginning of a row
    /// @return false at the end of the file, for a null argument, and when the file cannot be read or has a row of more
    ///     than 16 MiB
    static bool readLineFromProcInterrupts(std::vector<J3String>* tokens, FILE* file);
};

} // namespace Kivo
