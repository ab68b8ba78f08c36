// SPDX-License-Identifier: Apache-2.0
#include "failure.h"

#include <cerrno>
#include <cstring>

namespace zan::tool {

SystemFailure system_failure(const std::string& what) {
    return SystemFailure(what + ": " + std::strerror(errno));
}

} // namespace zan::tool
