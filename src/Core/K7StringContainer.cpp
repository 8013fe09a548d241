// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Collects the texts of objects.
#include "Core/K7StringContainer.h"

namespace Kivo {

K7StringContainer::K7StringContainer(const J3String& separator) : _separator(separator) {}

K7StringContainer* K7StringContainer::clone() const { return new K7StringContainer(*this); }

void K7StringContainer::add(const J3Object& object)
{
    if (_count++ > 0)
        _text += _separator;
    _text += object.toString();
}

} // namespace Kivo
