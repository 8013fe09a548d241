// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Export mark of libK7Inventory.
#pragma once

/// Marks what libK7Inventory exports; everything else is hidden.
#define K7INVENTORY_API __attribute__((visibility("default")))
