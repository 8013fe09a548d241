// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The data that an ATA disk answers IDENTIFY DEVICE with.
#pragma once

#include "OS/System/ATA.h"

#include <span>

namespace Kivo {

/// What a disk says of itself, as terminated texts.
struct AtaIdentity {
    char model[K7SystemUtil::ATA::MODEL_SIZE] = {};
    char serial[K7SystemUtil::ATA::MODEL_SIZE] = {}; ///< swapAndTrim() wants as much as for a model
};

constexpr std::size_t ATA_IDENTIFY_SIZE = 512;

AtaIdentity parseAtaIdentify(std::span<const char, ATA_IDENTIFY_SIZE> data);

} // namespace Kivo
