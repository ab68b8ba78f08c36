// SPDX-License-Identifier: Apache-2.0
// The text of a profiler description. Odd as some of it is, tools compare it.
#include <concepts>

#include "ProfilerConfig.h"

namespace zan::profiler {

namespace {

constexpr const char* indent_2 = "  ";
constexpr const char* indent_4 = "    ";
constexpr const char* indent_6 = "      ";
constexpr const char* indent_8 = "        ";
constexpr const char* indent_10 = "          ";
constexpr const char* indent_12 = "            ";

// Nothing is escaped.
void print_attribute(std::ostream& os, const char* name, const std::string& value) {
    os << ' ' << name << "=\"" << value << '"';
}

// In decimal, whatever the stream is set to.
void print_attribute(std::ostream& os, const char* name, std::integral auto value) {
    print_attribute(os, name, std::to_string(value));
}

// The name of a record that may be missing.
template <typename Record>
std::string name_of(const Record* record) {
    return record ? record->getName() : "null";
}

std::string tag_of(const ProfilerConfigPort* port) {
    return port ? port->getTag() : "null";
}

// `records` are pointers, owned or not.
template <typename Records>
void print_list(std::ostream& os, const char* indent, const char* element, const Records& records) {
    os << indent << '<' << element << ">\n";
    for (const auto& record : records)
        os << *record << '\n';
    os << indent << "</" << element << ">\n";
}

} // namespace

void ProfilerConfigPort::print(std::ostream& os) const {
    os << indent_8 << "<PORT";
    print_attribute(os, "cntl_name", m_cntlName);
    print_attribute(os, "incr_name", m_incrName);
    print_attribute(os, "tag", m_tag);
    print_attribute(os, "desc", m_desc);
    print_attribute(os, "module", name_of(m_module));
    print_attribute(os, "flag", m_flag);
    os << "/>";
}

void ProfilerConfigSignal::print(std::ostream& os) const {
    os << "<SIGNAL";
    print_attribute(os, "cntl_name", m_cntlName);
    print_attribute(os, "incr_name", m_incrName);
    print_attribute(os, "port_tag", tag_of(m_port));
    os << "/>";
}

void ProfilerConfigDebug::print(std::ostream& os) const {
    os << indent_10 << "<DEBUG";
    print_attribute(os, "file", m_file);
    print_attribute(os, "line", m_line);
    print_attribute(os, "column", m_column);
    os << '>';
    for (std::size_t i = 0; i < m_callsiteFiles.size(); ++i) {
        os << '\n' << indent_12 << "<CALLSITE";
        print_attribute(os, "file", m_callsiteFiles[i]);
        print_attribute(os, "line", m_callsiteLines[i]);
        print_attribute(os, "column", m_callsiteColumns[i]);
        os << "/>";
    }
    os << '\n' << indent_10 << "</DEBUG>";
}

void ProfilerConfigModuleInst::print(std::ostream& os) const {
    os << indent_8 << "<MODULEINST";
    print_attribute(os, "name", m_name);
    print_attribute(os, "function", name_of(m_function));
    print_attribute(os, "module", name_of(m_module));
    print_attribute(os, "attribute", m_attribute);
    print_attribute(os, "isAutorun", m_isAutorun ? 1 : 0);
    print_attribute(os, "sharedOn", m_sharedOn ? 1 : 0);
    os << '>';
    for (const auto& debug : m_debugs)
        os << '\n' << *debug;
    for (const auto& signal : m_signals)
        os << '\n' << *signal;
    os << '\n' << indent_8 << "</MODULEINST>";
}

void ProfilerConfigConnection::print(std::ostream& os) const {
    os << indent_8 << "<CONNECTION";
    print_attribute(os, "moduleinst", name_of(m_moduleInst));
    if (m_id != no_id)
        print_attribute(os, "id", m_id);
    if (m_function)
        print_attribute(os, "function", m_function->getName());
    print_attribute(os, "compute_unit", m_computeUnit);
    // Both are the port's tag: the port that it shares isn't printed.
    const std::string& tag = m_port ? m_port->getTag() : m_portTag;
    print_attribute(os, "shared_with", tag);
    print_attribute(os, "port_tag", tag);
    os << "/>";
}

void ProfilerConfigModule::print(std::ostream& os) const {
    os << indent_4 << "<MODULE";
    print_attribute(os, "name", m_name);
    print_attribute(os, "function", m_function ? m_function->getName() : "");
    os << ">\n";
    print_list(os, indent_6, "PORT_LIST", m_ports);
    os << indent_4 << "</MODULE>";
}

void ProfilerConfigFunction::print(std::ostream& os) const {
    os << indent_4 << "<FUNCTION";
    print_attribute(os, "name", m_name);
    print_attribute(os, "num_compute_units", m_numComputeUnits);
    print_attribute(os, "filename", m_filename);
    print_attribute(os, "linenum", m_linenum); // read under another name
    print_attribute(os, "original_name", m_originalName);
    print_attribute(os, "user_friendly_name", m_userFriendlyName);
    os << ">\n";
    print_list(os, indent_6, "MODULEINST_LIST", m_moduleInsts);
    print_list(os, indent_6, "CONNECTION_LIST", m_connections);
    os << indent_4 << "</FUNCTION>";
}

void ProfilerConfig::print(std::ostream& os) const {
    os << "<?xml version=\"1.0\"?>\n<PROFILER>\n";
    print_list(os, indent_2, "MODULE_LIST", m_moduleList);
    print_list(os, indent_2, "FUNCTION_LIST", m_functionList);
    os << "</PROFILER>";
}

} // namespace zan::profiler
