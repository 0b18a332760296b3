// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what applications may link: the library is built with hidden visibility.
#define ZEL_EXPORT __attribute__((visibility("default")))
