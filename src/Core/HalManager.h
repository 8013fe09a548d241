// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the host says of its board.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3Singleton.h"
#include "Foundation/J3String.h"

#include <mutex>

namespace Kivo {

/// What the host says of the board that it runs on. The one instance is J3Singleton<HalManager>::get().
/// *Threads*: any number at once.
class K7CORE_API HalManager {
public:
    HalManager(const HalManager&) = delete;
    HalManager& operator=(const HalManager&) = delete;

    /// The maker's internal name of the board's model; empty until the host sets it.
    /// @{
    [[nodiscard]] J3String internalModelName() const;
    void setInternalModelName(const J3String& name);
    /// @}

private:
    friend class J3Singleton<HalManager>;

    HalManager() = default;
    ~HalManager() = default;

    mutable std::mutex _mutex;
    J3String _internalModelName;
};

extern template class K7CORE_API J3Singleton<HalManager>;

} // namespace Kivo
