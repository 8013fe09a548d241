// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Export mark of the core library.
#pragma once

/// Marks what libK7Core exports; everything else is hidden.
#define K7CORE_API __attribute__((visibility("default")))
