// SPDX-License-Identifier: Apache-2.0
// Compile configurations, whose rules depend on the version of the document.
#include "BoardCompileVisitor.h"
#include "BoardPortVisitor.h"
#include "board_document.h"
#include "contract_death.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using board::CompileConfig;
using testing::ElementsAre;
using testing::IsEmpty;

// A document of that version whose line 3 begins with these compile configurations.
BoardDocument with_compile(const std::string& version, const std::string& compile) {
    BoardDocument document;
    document.board = "<board version='" + version + "' name='b'>";
    document.compile = compile;
    return document;
}

// A configuration with good attributes and this content.
std::string compile_with(const std::string& content, const std::string& name = "n") {
    return "<compile name='" + name + "' project='p' revision='r' plexo_file='f' generic_kernel='true'>" +
           content + "</compile>";
}

std::vector<std::string> errors_of(const std::string& version, const std::string& compile) {
    return load(with_compile(version, compile)).errors;
}

std::vector<std::string> errors_of_content(const std::string& content) {
    return errors_of("14.1", compile_with("\n" + content));
}

TEST(Compile, AllValues) {
    const auto spec = load_good(with_compile("17.1", whole_compile));
    const CompileConfig& config = spec->get_compile_config("n");
    EXPECT_EQ(config.get_name(), "n");
    EXPECT_EQ(config.get_project(), "p");
    EXPECT_EQ(config.get_revision(), "r");
    EXPECT_EQ(config.get_plexo_file(), "f");
    EXPECT_TRUE(config.get_generic_kernel());
    EXPECT_EQ(config.get_generate_cmd(), "g");
    EXPECT_FALSE(config.get_generate_additional_args());
    EXPECT_EQ(config.get_synthesize_cmd(), "s");
    EXPECT_TRUE(config.get_synthesize_additional_args());
    EXPECT_EQ(config.get_platform_type(), "auto");
    EXPECT_EQ(config.get_include_fixes(), "i");
    EXPECT_EQ(config.get_exclude_fixes(), "e");
    EXPECT_TRUE(config.has_generate());
    EXPECT_TRUE(config.has_synthesis());
    EXPECT_TRUE(config.has_automigrate());
}

TEST(Compile, BeforeVersion17TheNameIsAlwaysDefaultAndNothingElseIsNoted) {
    for (const char* version : {"14.1", "16.99"}) {
        const auto spec = load_good(with_compile(version, whole_compile));
        const CompileConfig& config = spec->get_compile_config("default");
        EXPECT_EQ(config.get_name(), "default");
        EXPECT_EQ(config.get_generate_cmd(), "g");
        EXPECT_FALSE(config.has_generate());
        EXPECT_FALSE(config.has_synthesis());
        EXPECT_FALSE(config.has_automigrate());
    }
}

TEST(Compile, BeforeVersion17ItMayBeEmpty) {
    EXPECT_THAT(errors_of("14.1", compile_with("")), IsEmpty());
    EXPECT_THAT(errors_of("14.1", "<compile project='p' revision='r' plexo_file='f' generic_kernel='0'/>"),
                IsEmpty());
}

TEST(Compile, BeforeVersion17TheLastOfSeveralStays) {
    const auto spec = load_good(with_compile(
        "14.1", compile_with("<generate cmd='first'/>") + compile_with("<generate cmd='second'/>")));
    EXPECT_EQ(spec->num_compile_configs(), 1u);
    EXPECT_THAT(spec->get_compile_config_names(), ElementsAre("default", "default"));
    EXPECT_EQ(spec->get_compile_config("default").get_generate_cmd(), "second");
}

TEST(Compile, BeforeVersion17APartMayComeTwice) {
    const auto spec = load_good(with_compile("14.1", compile_with("<generate cmd='a'/><generate cmd='b'/>")));
    EXPECT_EQ(spec->get_compile_config("default").get_generate_cmd(), "b");
}

TEST(Compile, FromVersion17ConfigurationsHaveNames) {
    std::string nameless = whole_compile;
    nameless.erase(nameless.find("name='n'"), 8);
    for (const char* version : {"17.0", "17", "17.1"})
        EXPECT_THAT(errors_of(version, nameless),
                    ElementsAre(at_line(3, "Expected attribute 'name' on element 'compile'.")));
    std::string other = whole_compile;
    other.replace(other.find("name='n'"), 8, "name='m'");
    const auto spec = load_good(with_compile("17.0", whole_compile + other));
    EXPECT_THAT(spec->get_compile_config_names(), ElementsAre("n", "m"));
    EXPECT_EQ(spec->get_string_of_board_compile_config_names(), "m, n");
}

TEST(CompileDeathTest, FromVersion17EachPartMustBeThereOnce) {
    const std::string generate = "<generate cmd=''/>";
    const std::string synthesize = "<synthesize cmd=''/>";
    const std::string migrate = "<auto_migrate platform_type='none'/>";
    const auto loading = [](const std::string& content) { errors_of("17.1", compile_with(content)); };
    EXPECT_CONTRACT(loading(generate), "m_config->has_automigrate()");
    EXPECT_CONTRACT(loading(synthesize + migrate), "m_config->has_generate()");
    EXPECT_CONTRACT(loading(generate + migrate), "m_config->has_synthesis()");
    EXPECT_CONTRACT(loading(generate + generate), "!m_config->has_generate()");
    EXPECT_CONTRACT(loading(synthesize + synthesize), "!m_config->has_synthesis()");
    EXPECT_CONTRACT(loading(migrate + migrate), "!m_config->has_automigrate()");
}

TEST(Compile, FromVersion17AMigrationMayDoWithoutFixes) {
    EXPECT_THAT(errors_of("17.0", compile_with("<generate cmd=''/><synthesize cmd=''/>"
                                               "<auto_migrate platform_type='none'/>")),
                IsEmpty());
}

TEST(Compile, TheOldestVersionStandsForOne) {
    BoardDocument document = with_compile("0.9", "");
    const auto spec = load_good(document);
    EXPECT_EQ(spec->num_compile_configs(), 1u);
    const CompileConfig& config = spec->get_compile_config("default");
    EXPECT_EQ(config.get_name(), "default");
    EXPECT_EQ(config.get_project(), "top");
    EXPECT_EQ(config.get_revision(), "top");
    EXPECT_EQ(config.get_plexo_file(), "system.plexo");
    EXPECT_FALSE(config.get_generic_kernel());
    EXPECT_EQ(config.get_generate_cmd(),
              "plexo-generate --component-file=system.plexo --file-set=VELMORA_SYNTH "
              "--output-directory=system/synthesis --report-file=vip:system/synthesis/system.vip "
              "--jvm-max-heap-size=3G");
    EXPECT_EQ(config.get_synthesize_cmd(), "velmora_sh --flow compile top");
    EXPECT_EQ(config.get_platform_type(), "auto");
    EXPECT_FALSE(config.has_automigrate());
    EXPECT_FALSE(config.has_generate());
    EXPECT_FALSE(config.has_synthesis());
}

TEST(Compile, TheOldestVersionTakesNone) {
    EXPECT_THAT(errors_of("0.9", compile_with("")),
                ElementsAre(at_line(3, "Compile not supported in this version.")));
}

TEST(Compile, AttributesAreRequired) {
    const auto missing = [](const std::string& name) {
        return ElementsAre(at_line(3, "Expected attribute '" + name + "' on element 'compile'."));
    };
    EXPECT_THAT(errors_of("14.1", "<compile/>"), missing("project"));
    EXPECT_THAT(errors_of("14.1", "<compile project=''/>"), missing("revision"));
    EXPECT_THAT(errors_of("14.1", "<compile project='' revision=''/>"), missing("plexo_file"));
    EXPECT_THAT(errors_of("14.1", "<compile project='' revision='' plexo_file=''/>"),
                missing("generic_kernel"));
    EXPECT_THAT(errors_of("14.1", "<compile project='' revision='' plexo_file=''\ngeneric_kernel='yes'/>"),
                ElementsAre(at_line(4,
                                    "Incorrect type for attribute 'generic_kernel' on element "
                                    "'compile'.")));
    EXPECT_THAT(errors_of("14.1", "<compile x=''/>"), ElementsAre(at_line(3, "Unexpected attribute 'x'.")));
}

TEST(Compile, StrayElements) {
    EXPECT_THAT(errors_of_content("<x/>"), ElementsAre(at_line(4, "Unexpected element 'x'.")));
    EXPECT_THAT(errors_of_content("<compile/>"), ElementsAre(at_line(4, "Unexpected element 'compile'.")));
    EXPECT_THAT(errors_of_content("<generate cmd=''><generate cmd=''/></generate>"),
                ElementsAre(at_line(4, "Unexpected element 'generate'.")));
    EXPECT_THAT(errors_of_content("<generate cmd=''><include fixes=''/></generate>"),
                ElementsAre(at_line(4, "Unexpected element 'include'.")));
    EXPECT_THAT(errors_of_content("<include fixes=''/>"),
                ElementsAre(at_line(4, "Unexpected element 'include'.")));
}

TEST(Compile, FaultsOfCommands) {
    for (const std::string command : {"generate", "synthesize"}) {
        EXPECT_THAT(errors_of_content("<" + command + "/>"),
                    ElementsAre(at_line(4, "Expected attribute 'cmd' on element '" + command + "'.")));
        EXPECT_THAT(errors_of_content("<" + command + " cmd='' x=''/>"),
                    ElementsAre(at_line(4, "Unexpected attribute 'x'.")));
        EXPECT_THAT(errors_of_content("<" + command + " cmd=''\nadditional_args='yes'/>"),
                    ElementsAre(at_line(5,
                                        "additional_args must be a boolean (true or false) or "
                                        "unspecified.")));
    }
}

TEST(Compile, AdditionalArgumentsAreAppendedIfTheAttributeIsEmptyOrTrue) {
    const std::pair<const char*, bool> rows[] = {{"", false},
                                                 {"additional_args=''", true},
                                                 {"additional_args='true'", true},
                                                 {"additional_args='1'", true},
                                                 {"additional_args='false'", false},
                                                 {"additional_args='0'", false}};
    for (const auto& [attribute, appended] : rows) {
        const auto spec = load_good(
            with_compile("14.1", compile_with("<generate cmd='' " + std::string(attribute) + "/>")));
        EXPECT_EQ(spec->get_compile_config("default").get_generate_additional_args(), appended) << attribute;
    }
}

TEST(Compile, PlatformTypes) {
    const auto migrate = [](const std::string& platform) {
        return "<auto_migrate platform_type='" + platform +
               "'><include fixes=''/><exclude fixes=''/></auto_migrate>";
    };
    for (const char* platform :
         {"none", "auto", "plat_alder", "plat_birch", "plat_cedar", "plat_dogwood", "plat_elm", "plat_fir",
          "plat_ginkgo", "plat_hazel", "plat_ironwood", "plat_juniper"})
        EXPECT_THAT(errors_of_content(migrate(platform)), IsEmpty()) << platform;
    const std::string invalid = at_line(4, "Board auto migration platform_type is invalid");
    for (const char* platform : {"AUTO", "", "plat_", "none "})
        EXPECT_THAT(errors_of_content(migrate(platform)), ElementsAre(invalid)) << platform;
    EXPECT_THAT(
        errors_of_content("<auto_migrate/>"),
        ElementsAre(at_line(4, "Expected attribute 'platform_type' on element 'auto_migrate'."), invalid));
    EXPECT_THAT(errors_of_content("<auto_migrate x='' platform_type='x'/>"),
                ElementsAre(at_line(4, "Unexpected attribute 'x'.")));
}

TEST(Compile, FaultsOfFixes) {
    const auto errors = [](const std::string& content) {
        return errors_of_content("<auto_migrate platform_type='none'>\n" + content + "</auto_migrate>");
    };
    const auto once = ElementsAre(at_line(4, "Expected element <auto_migrate> to appear exactly once."));
    EXPECT_THAT(errors(""), once);
    EXPECT_THAT(errors("<include fixes=''/>"), once);
    EXPECT_THAT(errors("<exclude fixes=''/>"), once);
    EXPECT_THAT(errors("<include fixes=''/><include fixes=''/><exclude fixes=''/>"), once);
    EXPECT_THAT(errors("<include/>"),
                ElementsAre(at_line(5, "Expected attribute 'fixes' on element 'include'.")));
    EXPECT_THAT(errors("<include fixes='' x=''/>"), ElementsAre(at_line(5, "Unexpected attribute 'x'.")));
    EXPECT_THAT(errors("<other fixes=''/>"), ElementsAre(at_line(5, "Unexpected element 'other'.")));
    EXPECT_THAT(errors("<include fixes=''><x fixes=''/></include>"),
                ElementsAre(at_line(5, "Unexpected element 'x'.")));
}

TEST(CompileDeathTest, VisitorsNeedWhatTheyFill) {
    ProbeVisitor parent;
    EXPECT_CONTRACT(board::xml::CompileVisitor(&parent, nullptr), "spec != __null");
    EXPECT_CONTRACT(board::xml::BoardVisitor(nullptr, nullptr, false, false), "spec != __null");
    EXPECT_CONTRACT(board::xml::PortVisitor(&parent, nullptr), "intf != __null");
    EXPECT_CONTRACT(board::xml::AttributeVisitor(&parent, nullptr), "port != __null");
}

} // namespace
} // namespace zan::test
