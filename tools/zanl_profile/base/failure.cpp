#include "failure.h"

#include <cerrno>
#include <cstring>

namespace zan::tool {

Failure system_failure(const std::string& what) {
    return Failure(what + ": " + std::strerror(errno));
}

} // namespace zan::tool
