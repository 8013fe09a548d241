// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The data that an ATA disk answers IDENTIFY DEVICE with.
#include "OS/System/Misc.h"
#include "OS/System/Platform/Linux/detail/AtaIdentifyParser_p.h"

namespace Kivo {

namespace {

constexpr std::size_t SERIAL_OFFSET = 20; // words 10 to 24: ten bytes more than the field has
constexpr int32 SERIAL_LENGTH = 30;
constexpr std::size_t MODEL_OFFSET = 54; // words 27 to 46
constexpr int32 MODEL_LENGTH = 40;

} // namespace

AtaIdentity parseAtaIdentify(std::span<const char, ATA_IDENTIFY_SIZE> data)
{
    AtaIdentity identity;
    K7SystemUtil::Misc::swapAndTrim(identity.model, &data[MODEL_OFFSET], MODEL_LENGTH);
    K7SystemUtil::Misc::swapAndTrim(identity.serial, &data[SERIAL_OFFSET], SERIAL_LENGTH);
    return identity;
}

} // namespace Kivo
