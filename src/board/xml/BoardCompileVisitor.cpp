// SPDX-License-Identifier: Apache-2.0
#include "BoardCompileVisitor.h"

#include <algorithm>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::any_name;
using zan::xml::AttributeRow;
using zan::xml::AttributeState;
using zan::xml::booleans_or_digits;
using zan::xml::call;
using zan::xml::check_attributes;
using zan::xml::find_word;
using zan::xml::outermost;
using zan::xml::read_attributes;
using zan::xml::read_rows;
using zan::xml::read_to;
using zan::xml::Word;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

namespace {

using CompileRow = AttributeRow<BaseVisitor, CompileConfig>;

// The first version that knows compile configurations, and the first whose configurations have names and must
// be whole.
const BoardSpec::Version first_with_configs(14.1f);
const BoardSpec::Version first_with_named_configs(17.0f);

constexpr std::string_view platform_types[] = {
    "none",     "auto",     "plat_alder",  "plat_birch", "plat_cedar",    "plat_dogwood",
    "plat_elm", "plat_fir", "plat_ginkgo", "plat_hazel", "plat_ironwood", "plat_juniper",
};

} // namespace

// What may stand in <compile>, once each from the version on whose configurations have names.
struct CompileVisitor::Part {
    bool (CompileConfig::*has)() const;
    void (CompileConfig::*set_has)(bool);
    const char* contract;
};

const CompileVisitor::Part* CompileVisitor::find_part(std::string_view element) {
    using Config = CompileConfig;
    static constexpr Word<Part> parts[] = {
        {"auto_migrate",
         {&Config::has_automigrate, &Config::set_has_automigrate, "!m_config->has_automigrate()"}},
        {"generate", {&Config::has_generate, &Config::set_has_generate, "!m_config->has_generate()"}},
        {"synthesize", {&Config::has_synthesis, &Config::set_has_synthesis, "!m_config->has_synthesis()"}},
    };
    const Word<Part>* part = find_word(parts, element);
    return part ? &part->value : nullptr;
}

CompileVisitor::CompileVisitor(BaseVisitor* parent, BoardSpec* spec)
    : BoardSectionVisitor(elements(), parent, spec) {
}

CompileVisitor::Rows CompileVisitor::elements() {
    using Self = CompileVisitor;
    using Config = CompileConfig;
    static constexpr ElementRow rows[] = {
        {"compile", outermost, any, call<&Self::visit_compile_elem>, call<&Self::leave_compile_elem>},
        {"auto_migrate", "compile", any, call<&Self::visit_auto_migration_elem>,
         call<&Self::leave_auto_migration_elem>},
        {"generate", "compile", any,
         call<&Self::visit_command<&Config::set_generate_cmd, &Config::set_generate_additional_args>>,
         call<&Self::leave_part>},
        {"synthesize", "compile", any,
         call<&Self::visit_command<&Config::set_synthesize_cmd, &Config::set_synthesize_additional_args>>,
         call<&Self::leave_part>},
        {any_name, "compile/auto_migrate", any, call<&Self::visit_auto_migration_single_elem>},
    };
    return rows;
}

bool CompileVisitor::has_named_configs() const {
    return m_spec->get_version() >= first_with_named_configs;
}

// A part that is read a second time stops the process, before its place is looked at.
bool CompileVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the table comes last
    BaseVisitor::VisitEnter(elem, first_attribute);
    if (const Part* part = find_part(elem.Value()))
        ZAN_CONTRACT(!m_config || !(m_config->*part->has)(), part->contract);
    return enter_by_table(elem);
}

// The configuration joins the others before anything of it is read.
void CompileVisitor::add_config(const std::string& name) {
    auto config = std::make_unique<CompileConfig>();
    config->set_name(name);
    m_config = config.get();
    m_spec->add_compile_config(std::move(config), name);
}

bool CompileVisitor::visit_compile_elem(const XMLElement& elem) {
    static constexpr CompileRow rows[] = {
        {"project", required, read_to<&CompileConfig::set_project>},
        {"revision", required, read_to<&CompileConfig::set_revision>},
        {"plexo_file", required, read_to<&CompileConfig::set_plexo_file>},
        {"generic_kernel", required, read_to<&CompileConfig::set_generic_kernel>},
    };
    if (!check_attributes(*this, elem, rows, {"name"}))
        return false;
    std::string name = CompileConfig::DEFAULT_CONFIG_NAME;
    if (has_named_configs() && !query_attribute(elem, "name", &name, true, true))
        return false;
    add_config(name);
    return read_rows(*this, elem, rows, *m_config) == AttributeState::good;
}

bool CompileVisitor::has_additional_args(const XMLElement& elem, const std::string& value) {
    if (value.empty())
        return true;
    if (const Word<bool>* word = find_word(booleans_or_digits, value))
        return word->value;
    return report_attr_error(elem, "additional_args",
                             "additional_args must be a boolean (true or false) or unspecified.");
}

template <auto set_cmd, auto set_additional_args>
bool CompileVisitor::visit_command(const XMLElement& elem) {
    static constexpr CompileRow rows[] = {{"cmd", required, read_to<set_cmd>}};
    if (!check_attributes(*this, elem, rows, {"additional_args"}) ||
        read_rows(*this, elem, rows, *m_config) != AttributeState::good)
        return false;
    // An empty attribute means yes, a missing one leaves the flag as it is.
    std::string additional_args;
    if (query_attribute(elem, "additional_args", &additional_args, true, false))
        (m_config->*set_additional_args)(has_additional_args(elem, additional_args));
    return !m_has_error;
}

bool CompileVisitor::visit_auto_migration_elem(const XMLElement& elem) {
    static constexpr CompileRow rows[] = {
        {"platform_type", required, read_to<&CompileConfig::set_platform_type>}};
    if (!check_attributes(*this, elem, rows))
        return false;
    // A missing one is as invalid as an unknown one, and gets both messages.
    const bool is_read = read_rows(*this, elem, rows, *m_config) == AttributeState::good;
    const std::string& platform = m_config->get_platform_type();
    if (!is_read ||
        std::find(std::begin(platform_types), std::end(platform_types), platform) == std::end(platform_types))
        return report_error(elem, "Board auto migration platform_type is invalid");
    return true;
}

// Other names than the two are unexpected only once the attributes are good.
bool CompileVisitor::visit_auto_migration_single_elem(const XMLElement& elem) {
    struct Fixes {
        std::string fixes;
    };
    static constexpr AttributeRow<BaseVisitor, Fixes> rows[] = {{"fixes", required, read_to<&Fixes::fixes>}};
    static constexpr Word<void (CompileConfig::*)(std::string)> setters[] = {
        {"include", &CompileConfig::set_include_fixes},
        {"exclude", &CompileConfig::set_exclude_fixes},
    };
    Fixes values;
    if (!read_attributes(*this, elem, rows, values))
        return false;
    const auto* setter = find_word(setters, elem.Value());
    if (!setter)
        return report_unexpected_elem(elem, "");
    (m_config->*setter->value)(values.fixes);
    return true;
}

// A configuration with a name must be complete by now; otherwise the process stops.
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
    if (has_named_configs())
        return leave_part(elem);
    return expect_once(elem, "compile/auto_migrate/include") &&
           expect_once(elem, "compile/auto_migrate/exclude");
}

// Before configurations had names, a part could be given again, and the last one counted.
bool CompileVisitor::leave_part(const XMLElement& elem) {
    if (has_named_configs())
        (m_config->*find_part(elem.Value())->set_has)(true);
    return true;
}

std::unique_ptr<CompileConfig> make_default_compile_config() {
    auto config = std::make_unique<CompileConfig>();
    config->set_project("top");
    config->set_revision("top");
    config->set_plexo_file("system.plexo");
    config->set_generate_cmd(
        "plexo-generate --component-file=system.plexo --file-set=VELMORA_SYNTH"
        " --output-directory=system/synthesis"
        " --report-file=vip:system/synthesis/system.vip"
        " --jvm-max-heap-size=3G");
    config->set_synthesize_cmd("velmora_sh --flow compile top");
    config->set_platform_type("auto");
    return config;
}

} // namespace zan::board::xml
