// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the host says of its board.
#include "Core/HalManager.h"

namespace Kivo {

template class J3Singleton<HalManager>;

J3String HalManager::internalModelName() const
{
    const std::lock_guard guard(_mutex);
    return _internalModelName;
}

void HalManager::setInternalModelName(const J3String& name)
{
    const std::lock_guard guard(_mutex);
    _internalModelName = name;
}

} // namespace Kivo
