// Each attribute of each element: missing, of the wrong type, and unknown.
#include <functional>

#include "profiler_document.h"

namespace zan::test {
namespace {

using testing::ElementsAre;

using D = ProfilerDocument;

// An element of the description, and how its text gets into a document. It stands alone in `line`.
struct ElementKind {
    const char* name;
    const char* attributes; // all of them, good
    int line;
    void (*place)(ProfilerDocument& document, const std::string& element);
};

// The instance that elements below it stand in; they begin in line 6.
constexpr const char* inst_with =
    "<MODULEINST name='m' function='k' module='lsu' attribute='a' "
    "isAutorun='false' sharedOn='false'>\n";

const ElementKind function_kind = {
    "FUNCTION",
    "name='f' num_compute_units='1' filename='f.cl' line_number='1' original_name='o' "
    "user_friendly_name='u'",
    3, [](D& d, const std::string& element) { d.functions += "\n" + element; }};
const ElementKind module_kind = {"MODULE", "name='n' function='k' isKernelWrapper='true'", 4,
                                 [](D& d, const std::string& element) { d.modules += "\n" + element; }};
const ElementKind port_kind = {"PORT", "cntl_name='c' incr_name='i' tag='u' desc='d' module='lsu' flag='1'",
                               5, [](D& d, const std::string& element) { d.ports += "\n" + element; }};
const ElementKind inst_kind = {
    "MODULEINST", "name='n' function='k' module='lsu' attribute='a' isAutorun='false' sharedOn='false'", 6,
    [](D& d, const std::string& element) { d.insts += "\n" + element; }};
const ElementKind debug_kind = {
    "DEBUG", "file='f' line='1' column='2'", 6,
    [](D& d, const std::string& element) { d.insts = inst_with + element + "</MODULEINST>"; }};
const ElementKind callsite_kind = {
    "CALLSITE", "file='f' line='1' column='2'", 7, [](D& d, const std::string& element) {
        d.insts = std::string(inst_with) + "<DEBUG file='f' line='1' column='2'>\n" + element +
                  "</DEBUG></MODULEINST>";
    }};
const ElementKind signal_kind = {
    "SIGNAL", "cntl_name='c' incr_name='i' port_tag='t'", 6,
    [](D& d, const std::string& element) { d.insts = inst_with + element + "</MODULEINST>"; }};
const ElementKind connection_kind = {
    "CONNECTION", "moduleinst='m' function='k' compute_unit='1' shared_with='t' port_tag='t'", 7,
    [](D& d, const std::string& element) { d.connections += "\n" + element; }};

const ElementKind* const kinds[] = {&function_kind, &module_kind,   &port_kind,   &inst_kind,
                                    &debug_kind,    &callsite_kind, &signal_kind, &connection_kind};

LoadedProfiler load_with(const ElementKind& kind, const std::string& attributes) {
    ProfilerDocument document;
    kind.place(document, "<" + std::string(kind.name) + " " + attributes + "/>");
    return load(document);
}

// The attributes of a kind with `name='...'` taken out, or with another text in front of it.
std::string without(const ElementKind& kind, const std::string& name) {
    std::string attributes = kind.attributes;
    const std::size_t begin = attributes.find(name + "='");
    attributes.erase(begin, attributes.find("'", attributes.find("'", begin) + 1) + 1 - begin);
    return attributes;
}

struct AttributeCase {
    const ElementKind* kind;
    const char* name;
    enum Need { required_text, optional_text, required_number, optional_number } need;
    const char* message;

    friend void PrintTo(const AttributeCase& attribute, std::ostream* os) {
        *os << attribute.kind->name << " " << attribute.name;
    }
};

class ProfilerAttribute : public testing::TestWithParam<AttributeCase> {};

TEST_P(ProfilerAttribute, ThatIsMissingHasTwoErrorsUnlessItIsOptional) {
    const auto& [kind, name, need, message] = GetParam();
    const LoadedProfiler loaded = load_with(*kind, without(*kind, name));
    if (need == AttributeCase::optional_text || need == AttributeCase::optional_number) {
        EXPECT_THAT(loaded.errors, testing::IsEmpty());
        EXPECT_TRUE(loaded.config);
        return;
    }
    EXPECT_FALSE(loaded.config);
    EXPECT_THAT(loaded.errors, ElementsAre(at_line(kind->line, "Expected attribute '" + std::string(name) +
                                                                   "' on element '" + kind->name + "'."),
                                           at_line(kind->line, message)));
}

TEST_P(ProfilerAttribute, ThatIsANumberIsToldAtItsLineWhereItIsNone) {
    const auto& [kind, name, need, message] = GetParam();
    if (need == AttributeCase::required_text || need == AttributeCase::optional_text)
        return; // any text is a text
    for (const char* text : {"", "x", "-1", "1.5", "0x1", " 1"}) {
        const LoadedProfiler loaded =
            load_with(*kind, without(*kind, name) + "\n" + name + "='" + text + "'");
        EXPECT_FALSE(loaded.config) << text;
        EXPECT_THAT(loaded.errors,
                    ElementsAre(at_line(kind->line + 1, "Incorrect type for attribute '" + std::string(name) +
                                                            "' on element '" + kind->name + "'."),
                                at_line(kind->line + 1, message)))
            << text;
    }
}

using C = AttributeCase;

INSTANTIATE_TEST_SUITE_P(
    All, ProfilerAttribute,
    testing::Values(
        C{&function_kind, "name", C::required_text, "Unsupported name string."},
        C{&function_kind, "num_compute_units", C::required_number, "Unsupported num_compute_units value."},
        C{&function_kind, "filename", C::required_text, "Unsupported filename string."},
        C{&function_kind, "line_number", C::optional_number, "Unsupported line_number value."},
        C{&function_kind, "original_name", C::optional_text, ""},
        C{&function_kind, "user_friendly_name", C::optional_text, ""},
        C{&module_kind, "name", C::required_text, "Unsupported name string."},
        C{&module_kind, "function", C::required_text, "Unsupported function string."},
        C{&module_kind, "isKernelWrapper", C::required_text, "Unsupported isKernelWrapper string."},
        C{&port_kind, "cntl_name", C::required_text, "Unsupported cntl_name string."},
        C{&port_kind, "incr_name", C::required_text, "Unsupported incr_name string."},
        C{&port_kind, "tag", C::required_text, "Unsupported tag string."},
        C{&port_kind, "desc", C::required_text, "Unsupported desc string."},
        C{&port_kind, "module", C::required_text, "Unsupported module string."},
        C{&port_kind, "flag", C::required_number, "Unsupported flag string."},
        C{&inst_kind, "name", C::required_text, "Unsupported name string."},
        C{&inst_kind, "function", C::required_text, "Unsupported function string."},
        C{&inst_kind, "module", C::required_text, "Unsupported module string."},
        C{&inst_kind, "attribute", C::required_text, "Unsupported attribute string."},
        C{&inst_kind, "isAutorun", C::required_text, "Unsupported isAutorun string."},
        C{&inst_kind, "sharedOn", C::required_text, "Unsupported sharedOn string."},
        C{&debug_kind, "file", C::required_text, "Unsupported file string."},
        C{&debug_kind, "line", C::required_number, "Unsupported line value."},
        C{&debug_kind, "column", C::required_number, "Unsupported column value."},
        C{&callsite_kind, "file", C::required_text, "Unsupported file string."},
        C{&callsite_kind, "line", C::required_number, "Unsupported line value."},
        C{&callsite_kind, "column", C::required_number, "Unsupported column value."},
        C{&signal_kind, "cntl_name", C::required_text, "Unsupported cntl_name string."},
        C{&signal_kind, "incr_name", C::required_text, "Unsupported incr_name string."},
        C{&signal_kind, "port_tag", C::required_text, "Unsupported port_tag string."},
        C{&connection_kind, "moduleinst", C::required_text, "Unsupported moduleinst string."},
        C{&connection_kind, "function", C::required_text, "Unsupported function string."},
        C{&connection_kind, "compute_unit", C::required_number, "Unsupported compute_unit value."},
        C{&connection_kind, "shared_with", C::optional_text, ""},
        C{&connection_kind, "port_tag", C::required_text, "Unsupported port_tag string."}),
    [](const auto& info) { return std::string(info.param.kind->name) + "_" + info.param.name; });

TEST(ProfilerAttributes, TheElementsOfThisTestAreGood) {
    for (const ElementKind* kind : kinds)
        EXPECT_THAT(load_with(*kind, kind->attributes).errors, testing::IsEmpty()) << kind->name;
}

TEST(ProfilerAttributes, EachStrayOneIsToldAtItsLineAndNoneIsRead) {
    for (const ElementKind* kind : kinds)
        EXPECT_THAT(load_with(*kind, "x=''\ny=''").errors,
                    ElementsAre(at_line(kind->line, "Unexpected attribute 'x'."),
                                at_line(kind->line + 1, "Unexpected attribute 'y'.")))
            << kind->name;
}

TEST(ProfilerAttributes, TheFirstFailureEndsTheReading) {
    EXPECT_THAT(load_with(port_kind, "flag='x'").errors,
                ElementsAre(at_line(5, "Expected attribute 'cntl_name' on element 'PORT'."),
                            at_line(5, "Unsupported cntl_name string.")));
}

TEST(ProfilerAttributes, NobodyLooksAtThoseOfTheRootAndTheLists) {
    EXPECT_TRUE(load("<PROFILER x=''><FUNCTION_LIST x=''/><MODULE_LIST x=''/><PORT_LIST x=''/>"
                     "<MODULEINST_LIST x=''/><CONNECTION_LIST x=''/></PROFILER>")
                    .config);
}

} // namespace
} // namespace zan::test
