// SPDX-License-Identifier: Apache-2.0
// ZAN_ADDRESS_SANITIZED is defined under the address sanitizer, which g++ and clang++ say in different ways.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define ZAN_ADDRESS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZAN_ADDRESS_SANITIZED
#endif
#endif
