// SPDX-License-Identifier: Apache-2.0
#include "history_arguments.h"

namespace zan::tool {

profile::Labels labels_from(const std::vector<std::string>& texts, const char* option) {
    profile::Labels labels;
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == 0 || equals == std::string::npos)
            throw Failure(std::string(option) + " takes NAME=VALUE, not " + in_quotes(text));
        labels[text.substr(0, equals)] = text.substr(equals + 1);
    }
    return labels;
}

std::string labels_text(const profile::Labels& labels) {
    std::string text;
    for (const auto& [name, value] : labels)
        text += (text.empty() ? "" : " ") + name + "=" + value;
    return text;
}

} // namespace zan::tool
