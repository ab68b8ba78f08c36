#include "BoardCompileVisitor.h"

#include <algorithm>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::AttributeRow;
using zan::xml::read_attributes;
using enum zan::xml::AttributeNeed;

namespace {

// The first version that knows compile configurations, and the first whose configurations have names and must
// be whole.
const BoardSpec::Version first_with_configs(14.1f);
const BoardSpec::Version first_with_named_configs(17.0f);

constexpr std::string_view platform_types[] = {
    "none",     "auto",     "plat_alder",  "plat_birch", "plat_cedar",    "plat_dogwood",
    "plat_elm", "plat_fir", "plat_ginkgo", "plat_hazel", "plat_ironwood", "plat_juniper",
};

} // namespace

// What may stand in `compile`, once each from the version on whose configurations have names.
struct CompileVisitor::Part {
    std::string_view element;
    bool (CompileVisitor::*visit)(const XMLElement& elem);
    bool (CompileConfig::*has)() const;
    void (CompileConfig::*set_has)(bool);
    const char* contract;
};

const CompileVisitor::Part* CompileVisitor::find_part(std::string_view element) {
    using Config = CompileConfig;
    static constexpr Part parts[] = {
        {"auto_migrate", &CompileVisitor::visit_auto_migration_elem, &Config::has_automigrate,
         &Config::set_has_automigrate, "!m_config->has_automigrate()"},
        {"generate",
         &CompileVisitor::visit_command<&Config::set_generate_cmd, &Config::set_generate_additional_args>,
         &Config::has_generate, &Config::set_has_generate, "!m_config->has_generate()"},
        {"synthesize",
         &CompileVisitor::visit_command<&Config::set_synthesize_cmd, &Config::set_synthesize_additional_args>,
         &Config::has_synthesis, &Config::set_has_synthesis, "!m_config->has_synthesis()"},
    };
    const auto* found = std::find_if(std::begin(parts), std::end(parts),
                                     [&](const Part& part) { return part.element == element; });
    return found == std::end(parts) ? nullptr : found;
}

struct CompileVisitor::Compile {
    std::string project;
    std::string revision;
    std::string plexo_file;
};

bool CompileVisitor::has_named_configs() const {
    return m_spec->get_version() >= first_with_named_configs;
}

bool CompileVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    BaseVisitor::VisitEnter(elem, first_attribute);
    const std::string_view element = elem.Value();
    if (element == "compile")
        return visit_compile_elem(elem);
    if (const Part* part = find_part(element)) {
        ZAN_CONTRACT(!m_config || !(m_config->*part->has)(), part->contract);
        return (this->*part->visit)(elem);
    }
    if (check_element_stack(2, "compile", "auto_migrate"))
        return visit_auto_migration_single_elem(elem);
    return report_unexpected_elem(elem, "");
}

// The configuration joins the others before anything of it is read. One that it takes the place of belongs to
// nobody any more.
void CompileVisitor::add_config(const std::string& name) {
    const auto names = m_spec->get_compile_config_names();
    const bool is_taken = std::find(names.begin(), names.end(), name) != names.end();
    // cppcheck-suppress unreadVariable ; it deletes
    const std::unique_ptr<CompileConfig> replaced(is_taken ? &m_spec->get_compile_config(name) : nullptr);
    m_config = new CompileConfig;
    m_config->set_name(name);
    m_spec->set_compile_config(m_config, name);
}

bool CompileVisitor::visit_compile_elem(const XMLElement& elem) {
    static constexpr AttributeRow<CompileVisitor, Compile> rows[] = {
        {"project", &Compile::project, required},
        {"revision", &Compile::revision, required},
        {"plexo_file", &Compile::plexo_file, required},
    };
    if (!report_unexpected_elem_stack(elem, 0) ||
        !report_unexpected_attrs(elem, 5, "project", "revision", "plexo_file", "generic_kernel", "name"))
        return !m_has_error;
    std::string name = CompileConfig::DEFAULT_CONFIG_NAME;
    if (has_named_configs() && !query_attribute(elem, "name", &name, true, true))
        return !m_has_error;
    add_config(name);
    Compile values;
    if (!read_attributes(*this, elem, rows, values))
        return !m_has_error;
    m_config->set_project(values.project);
    m_config->set_revision(values.revision);
    m_config->set_plexo_file(values.plexo_file);
    return read_generic_kernel(elem);
}

bool CompileVisitor::read_generic_kernel(const XMLElement& elem) {
    bool generic_kernel = false;
    switch (elem.QueryBoolAttribute("generic_kernel", &generic_kernel)) {
        case tinyxml2::XML_SUCCESS:
            m_config->set_generic_kernel(generic_kernel);
            return !m_has_error;
        case tinyxml2::XML_NO_ATTRIBUTE:
            return report_missing_attr(elem, "generic_kernel", "");
        default:
            return report_attr_type_error(elem, "generic_kernel", "");
    }
}

bool CompileVisitor::has_additional_args(const XMLElement& elem, const std::string& value) {
    if (value.empty() || value == "true" || value == "1")
        return true;
    if (value == "false" || value == "0")
        return false;
    return report_attr_error(elem, "additional_args",
                             "additional_args must be a boolean (true or false) or unspecified.");
}

template <auto set_cmd, auto set_additional_args>
bool CompileVisitor::visit_command(const XMLElement& elem) {
    std::string cmd;
    if (!report_unexpected_elem_stack(elem, 1, "compile") ||
        !report_unexpected_attrs(elem, 2, "cmd", "additional_args") ||
        !query_attribute(elem, "cmd", &cmd, true, true))
        return !m_has_error;
    (m_config->*set_cmd)(cmd);
    // An attribute that is there but empty says yes, one that isn't says nothing.
    std::string additional_args;
    if (query_attribute(elem, "additional_args", &additional_args, true, false))
        (m_config->*set_additional_args)(has_additional_args(elem, additional_args));
    return !m_has_error;
}

bool CompileVisitor::visit_auto_migration_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 1, "compile") ||
        !report_unexpected_attrs(elem, 1, "platform_type"))
        return !m_has_error;
    std::string platform;
    if (query_attribute(elem, "platform_type", &platform, true, true))
        m_config->set_platform_type(platform);
    // A missing one is as invalid as an unknown one, and gets both messages.
    if (std::find(std::begin(platform_types), std::end(platform_types), platform) == std::end(platform_types))
        return report_error(elem, "Board auto migration platform_type is invalid");
    return !m_has_error;
}

bool CompileVisitor::visit_auto_migration_single_elem(const XMLElement& elem) {
    std::string fixes;
    if (!report_unexpected_elem_stack(elem, 2, "compile", "auto_migrate") ||
        !report_unexpected_attrs(elem, 1, "fixes") || !query_attribute(elem, "fixes", &fixes, true, true))
        return !m_has_error;
    const std::string_view element = elem.Value();
    if (element == "include")
        m_config->set_include_fixes(fixes);
    else if (element == "exclude")
        m_config->set_exclude_fixes(fixes);
    else
        return report_unexpected_elem(elem, "");
    return !m_has_error;
}

// A configuration with a name must be whole by now; otherwise the process stops.
bool CompileVisitor::leave_compile_elem(const XMLElement& elem) {
    if (has_named_configs()) {
        ZAN_CONTRACT(m_config->has_automigrate(), "m_config->has_automigrate()");
        ZAN_CONTRACT(m_config->has_generate(), "m_config->has_generate()");
        ZAN_CONTRACT(m_config->has_synthesis(), "m_config->has_synthesis()");
    }
    return m_spec->get_version() >= first_with_configs ||
           report_error(elem, "Compile not supported in this version.");
}

bool CompileVisitor::leave_auto_migration_elem(const XMLElement& elem) {
    return report_unexpected_elem_count(elem, 1, 3, "compile", "auto_migrate", "include") &&
           report_unexpected_elem_count(elem, 1, 3, "compile", "auto_migrate", "exclude");
}

bool CompileVisitor::VisitExit(const XMLElement& elem) {
    if (m_has_error)
        return BaseVisitor::VisitExit(elem);
    const std::string_view element = elem.Value();
    if (element == "compile" && !leave_compile_elem(elem))
        return false;
    if (!has_named_configs() && element == "auto_migrate" && !leave_auto_migration_elem(elem))
        return !m_has_error;
    const Part* part = find_part(element);
    if (has_named_configs() && part)
        (m_config->*part->set_has)(true);
    return BaseVisitor::VisitExit(elem);
}

std::unique_ptr<CompileConfig> make_default_compile_config() {
    auto config = std::make_unique<CompileConfig>();
    config->set_project("top");
    config->set_revision("top");
    config->set_plexo_file("system.plexo");
    config->set_generate_cmd(
        "plexo-generate --component-file=system.plexo --file-set=VELMORA_SYNTH "
        "--output-directory=system/synthesis "
        "--report-file=vip:system/synthesis/system.vip --jvm-max-heap-size=3G");
    config->set_synthesize_cmd("velmora_sh --flow compile top");
    config->set_platform_type("auto");
    return config;
}

} // namespace zan::board::xml
