// SPDX-License-Identifier: Apache-2.0
#include "ProfilerFunctionListVisitor.h"

#include <fmt/core.h>

#include "BaseAttributeTable.h"

namespace zan::profiler::xml {

using zan::xml::AttributeRow;
using zan::xml::call;
using zan::xml::descend;
using zan::xml::read_attributes;
using zan::xml::read_to;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

struct ProfilerFunctionListVisitor::Function {
    std::string_view name;
    unsigned int num_compute_units = 0;
    std::string_view filename;
    unsigned int line_number = 0;
    std::string_view original_name;
    std::string_view user_friendly_name;
};

ProfilerFunctionListVisitor::ProfilerFunctionListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(elements(), config, parent) {
}

ProfilerFunctionListVisitor::Rows ProfilerFunctionListVisitor::elements() {
    using Self = ProfilerFunctionListVisitor;
    static constexpr ElementRow rows[] = {
        {"FUNCTION_LIST", outermost, once, descend},
        {"FUNCTION", "FUNCTION_LIST", any, call<&Self::visit_function>},
    };
    return rows;
}

// Connections name a compute unit below this number, so a function without any could have none.
bool ProfilerFunctionListVisitor::check_num_compute_units(const XMLElement& elem, const Function& function) {
    return function.num_compute_units != 0 ||
           report_attr_error(elem, "num_compute_units", "Non-zero num_compute_units value expected.");
}

bool ProfilerFunctionListVisitor::visit_function(const XMLElement& elem) {
    using Self = ProfilerFunctionListVisitor;
    static constexpr AttributeRow<Self, Function> rows[] = {
        {"name", required, read_to<&Function::name>, "Unsupported name string."},
        {"num_compute_units", required, read_to<&Function::num_compute_units>,
         "Unsupported num_compute_units value.", &Self::check_num_compute_units},
        {"filename", required, read_to<&Function::filename>, "Unsupported filename string."},
        {"line_number", optional, read_to<&Function::line_number>, "Unsupported line_number value."},
        {"original_name", optional, read_to<&Function::original_name>, "Unsupported original_name string."},
        {"user_friendly_name", optional, read_to<&Function::user_friendly_name>,
         "Unsupported user_friendly_name string."},
    };
    Function function;
    if (!read_attributes(*this, elem, rows, function))
        return false;
    if (m_config->getFunctionWithName(function.name))
        return report_error(fmt::format("Function name \"{}\" is not unique.", function.name));
    m_config->addFunction(function.name, function.num_compute_units, function.filename, function.line_number,
                          function.original_name, function.user_friendly_name);
    return true;
}

} // namespace zan::profiler::xml
