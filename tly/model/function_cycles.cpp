// SPDX-License-Identifier: Apache-2.0
#include "function_cycles.h"

FunctionCycles::Samples* FunctionCycles::find(const std::string& function) {
    const auto found = m_cycles.find(function);
    return found == m_cycles.end() ? nullptr : &found->second;
}

const FunctionCycles::Samples* FunctionCycles::find_timestamps(const std::string& function) const {
    const auto found = m_timestamps.find(function);
    return found == m_timestamps.end() ? nullptr : &found->second;
}

void FunctionCycles::add_timestamp(const std::string& function, long long timestamp) {
    m_timestamps[function].push_back(timestamp);
}
