// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Collects the texts of objects.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3String.h"

namespace Kivo {

/// Joins the texts of objects with a separator between them.
/// *Threads*: one at a time.
class K7CORE_API K7StringContainer : public J3Object {
public:
    explicit K7StringContainer(const J3String& separator);

    [[nodiscard]] K7StringContainer* clone() const override;

    /// The texts added so far, joined; empty for none.
    [[nodiscard]] J3String toString() const override { return _text; }

    /// Add the object's toString(), an empty one too.
    void add(const J3Object& object);

    [[nodiscard]] uint32 count() const { return _count; }

private:
    J3String _separator;
    J3String _text;
    uint32 _count = 0;
};

} // namespace Kivo
