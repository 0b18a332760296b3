// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what programs may link: the library is built with hidden visibility.
#define ZELCORE_EXPORT __attribute__((visibility("default")))
