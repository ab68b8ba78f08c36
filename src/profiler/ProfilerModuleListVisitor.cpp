// SPDX-License-Identifier: Apache-2.0
#include "ProfilerModuleListVisitor.h"

#include <fmt/core.h>

#include "BaseAttributeTable.h"

namespace zan::profiler::xml {

using zan::xml::AttributeRow;
using zan::xml::booleans;
using zan::xml::call;
using zan::xml::descend;
using zan::xml::find_word;
using zan::xml::read_attributes;
using zan::xml::read_to;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

struct ProfilerModuleListVisitor::Module {
    std::string_view name;
    std::string_view function;
    std::string_view is_kernel_wrapper;
};

ProfilerModuleListVisitor::ProfilerModuleListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(elements(), config, parent) {
}

ProfilerModuleListVisitor::Rows ProfilerModuleListVisitor::elements() {
    using Self = ProfilerModuleListVisitor;
    static constexpr ElementRow rows[] = {
        {"MODULE_LIST", outermost, once, descend},
        {"MODULE", "MODULE_LIST", any, call<&Self::visit_module>},
    };
    return rows;
}

// Runs before the last attribute is read, as its messages come first. A module without a function has an
// empty name for it.
bool ProfilerModuleListVisitor::check_names(const XMLElement&, const Module& module) {
    if (!module.function.empty() && !m_config->getFunctionWithName(module.function))
        return report_error(
            fmt::format("Function \"{}\" does not exist in Module \"{}\".", module.function, module.name));
    if (m_config->getModuleWithName(module.name))
        return report_error(fmt::format("Module name \"{}\" is not unique.", module.name));
    return true;
}

bool ProfilerModuleListVisitor::check_is_kernel_wrapper(const XMLElement&, const Module& module) {
    return find_word(booleans, module.is_kernel_wrapper) ||
           report_error("isKernelWrapper attribute is expected to be true/false.");
}

bool ProfilerModuleListVisitor::visit_module(const XMLElement& elem) {
    using Self = ProfilerModuleListVisitor;
    static constexpr AttributeRow<Self, Module> rows[] = {
        {"name", required, read_to<&Module::name>, "Unsupported name string."},
        {"function", required, read_to<&Module::function>, "Unsupported function string.",
         &Self::check_names},
        {"isKernelWrapper", required, read_to<&Module::is_kernel_wrapper>,
         "Unsupported isKernelWrapper string.", &Self::check_is_kernel_wrapper},
    };
    Module module;
    if (!read_attributes(*this, elem, rows, module))
        return false;
    m_config->addModule(module.name, module.function, find_word(booleans, module.is_kernel_wrapper)->value);
    return true;
}

} // namespace zan::profiler::xml
