// SPDX-License-Identifier: Apache-2.0
#include "BaseAttributeTable.h"

namespace zan::xml {

std::string with_value(std::string message, std::string_view value) {
    static constexpr std::string_view placeholder = "{}";
    const size_t place = message.find(placeholder);
    return place == std::string::npos ? message : message.replace(place, placeholder.size(), value);
}

} // namespace zan::xml
