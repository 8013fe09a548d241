// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Export mark of libK7SAL.
#pragma once

/// Marks what libK7SAL exports; everything else is hidden.
#define K7SAL_API __attribute__((visibility("default")))

/// Keeps a private part of an exported class out of the exported symbols.
#define K7SAL_LOCAL __attribute__((visibility("hidden")))
