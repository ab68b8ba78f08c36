// SPDX-License-Identifier: Apache-2.0
#include "ProfilerConfig.h"

namespace zan::profiler {

namespace {

template <typename Record>
Record* find(const ProfilerConfigIndex<Record>& index, std::string_view key) {
    const auto found = index.find(key);
    return found == index.end() ? nullptr : found->second;
}

// Appends a record that `index` knows by `key`, a text of the record's own. A second record of one key takes
// the place of the first in the index; the key stays a view of the first one's text, which lives as long as
// the list.
template <typename Record>
void append(std::vector<std::unique_ptr<Record>>& list, ProfilerConfigIndex<Record>& index,
            std::unique_ptr<Record> record, const std::string& key) {
    index[key] = record.get();
    list.push_back(std::move(record));
}

} // namespace

void ProfilerConfigDebug::add_callsite(std::string_view file, unsigned int line, unsigned int column) {
    m_callsiteFiles.emplace_back(file);
    m_callsiteLines.push_back(line);
    m_callsiteColumns.push_back(column);
}

const std::string& ProfilerConfigDebug::getCallsiteFile(unsigned int i) const {
    ZAN_CONTRACT(i < m_callsiteFiles.size(), "i < m_callsiteFiles.size()");
    return m_callsiteFiles[i];
}

unsigned int ProfilerConfigDebug::getCallsiteLine(unsigned int i) const {
    ZAN_CONTRACT(i < m_callsiteLines.size(), "i < m_callsiteLines.size()");
    return m_callsiteLines[i];
}

unsigned int ProfilerConfigDebug::getCallsiteColumn(unsigned int i) const {
    ZAN_CONTRACT(i < m_callsiteColumns.size(), "i < m_callsiteColumns.size()");
    return m_callsiteColumns[i];
}

ProfilerConfigDebug* ProfilerConfigModuleInst::addDebug(std::string_view file, unsigned int line,
                                                        unsigned int column) {
    return m_debugs.emplace_back(std::make_unique<ProfilerConfigDebug>(std::string(file), line, column))
        .get();
}

ProfilerConfigDebug* ProfilerConfigModuleInst::getDebug(unsigned int i) const {
    ZAN_CONTRACT(i < m_debugs.size(), "i < m_debugs.size()");
    return m_debugs[i].get();
}

void ProfilerConfigModuleInst::addSignal(std::string_view cntl_name, std::string_view incr_name,
                                         ProfilerConfigPort* port) {
    m_signals.push_back(
        std::make_unique<ProfilerConfigSignal>(std::string(cntl_name), std::string(incr_name), port));
}

ProfilerConfigSignal* ProfilerConfigModuleInst::getSignal(unsigned int i) const {
    ZAN_CONTRACT(i < m_signals.size(), "i < m_signals.size()");
    return m_signals[i].get();
}

ProfilerConfigPort* ProfilerConfigModule::addPortToModule(const std::string& cntl_name,
                                                          const std::string& incr_name,
                                                          const std::string& tag, const std::string& desc,
                                                          unsigned int flag) {
    return m_ports.emplace_back(new ProfilerConfigPort(cntl_name, incr_name, tag, desc, this, flag));
}

ProfilerConfigPort* ProfilerConfigModule::getPort(unsigned int i) const {
    ZAN_CONTRACT(i < m_ports.size(), "i < m_ports.size()");
    return m_ports[i];
}

ProfilerConfigModuleInst* ProfilerConfigFunction::addModuleInst(const std::string& name,
                                                                const std::string& module,
                                                                const std::string& attribute,
                                                                const bool& is_autorun,
                                                                const bool& shared_on) {
    ProfilerConfigModule* known_module = m_moduleMapPtr ? find(*m_moduleMapPtr, module) : nullptr;
    return m_moduleInsts.emplace_back(
        new ProfilerConfigModuleInst(name, this, known_module, attribute, is_autorun, shared_on));
}

ProfilerConfigConnection* ProfilerConfigFunction::addConnection(ProfilerConfigModuleInst* inst, int id,
                                                                unsigned int compute_unit,
                                                                const std::string& port_tag,
                                                                const std::string& shared_with) {
    return m_connections.emplace_back(
        new ProfilerConfigConnection(inst, id, compute_unit, port_tag, shared_with));
}

ProfilerConfigModuleInst* ProfilerConfigFunction::getModuleInst(unsigned int i) const {
    ZAN_CONTRACT(i < m_moduleInsts.size(), "i < m_moduleInsts.size()");
    return m_moduleInsts[i];
}

ProfilerConfigConnection* ProfilerConfigFunction::getConnection(unsigned int i) const {
    ZAN_CONTRACT(i < m_connections.size(), "i < m_connections.size()");
    return m_connections[i];
}

ProfilerConfigFunction* ProfilerConfig::getFunctionWithName(std::string_view name) const {
    return find(m_functionMap, name);
}

ProfilerConfigModule* ProfilerConfig::getModuleWithName(std::string_view name) const {
    return find(m_moduleMap, name);
}

ProfilerConfigPort* ProfilerConfig::getPortWithTag(std::string_view tag) const {
    return find(m_portMap, tag);
}

std::size_t ProfilerConfig::InstKeyHash::operator()(const InstKey& key) const {
    const std::hash<std::string_view> hash;
    constexpr std::size_t odd = 0x9e3779b97f4a7c15; // spreads the bits, so that a swapped pair differs
    return hash(key.first) * odd + hash(key.second);
}

ProfilerConfigModuleInst* ProfilerConfig::getModuleInstWithNameAndFunction(std::string_view name,
                                                                           std::string_view function) const {
    const auto found = m_moduleInstMap.find({name, function});
    return found == m_moduleInstMap.end() ? nullptr : found->second;
}

ProfilerConfigFunction* ProfilerConfig::getFunction(unsigned int i) const {
    ZAN_CONTRACT(i < m_functionList.size(), "i < m_functionList.size()");
    return m_functionList[i].get();
}

ProfilerConfigModule* ProfilerConfig::getModule(unsigned int i) const {
    ZAN_CONTRACT(i < m_moduleList.size(), "i < m_moduleList.size()");
    return m_moduleList[i].get();
}

ProfilerConfigPort* ProfilerConfig::getPort(unsigned int i) const {
    ZAN_CONTRACT(i < m_portList.size(), "i < m_portList.size()");
    return m_portList[i].get();
}

ProfilerConfigModuleInst* ProfilerConfig::getModuleInst(unsigned int i) const {
    ZAN_CONTRACT(i < m_moduleInstList.size(), "i < m_moduleInstList.size()");
    return m_moduleInstList[i].get();
}

ProfilerConfigConnection* ProfilerConfig::getConnection(unsigned int i) const {
    ZAN_CONTRACT(i < m_connectionList.size(), "i < m_connectionList.size()");
    return m_connectionList[i].get();
}

void ProfilerConfig::addFunction(std::string_view name, unsigned int num_compute_units,
                                 std::string_view filename, unsigned int linenum,
                                 std::string_view original_name, std::string_view user_friendly_name) {
    auto function = std::make_unique<ProfilerConfigFunction>(
        std::string(name), num_compute_units, std::string(filename), linenum, std::string(original_name),
        std::string(user_friendly_name), &m_moduleMap);
    const std::string& key = function->getName();
    append(m_functionList, m_functionMap, std::move(function), key);
}

void ProfilerConfig::addModule(std::string_view name, std::string_view function, bool is_kernel_wrapper) {
    auto module = std::make_unique<ProfilerConfigModule>(
        std::string(name), function.empty() ? nullptr : getFunctionWithName(function), is_kernel_wrapper);
    const std::string& key = module->getName();
    append(m_moduleList, m_moduleMap, std::move(module), key);
}

void ProfilerConfig::addPort(std::string_view cntl_name, std::string_view incr_name, std::string_view tag,
                             std::string_view desc, std::string_view module, unsigned int flag) {
    auto port =
        std::make_unique<ProfilerConfigPort>(std::string(cntl_name), std::string(incr_name), std::string(tag),
                                             std::string(desc), getModuleWithName(module), flag);
    const std::string& key = port->getTag();
    append(m_portList, m_portMap, std::move(port), key);
}

ProfilerConfigModuleInst* ProfilerConfig::addModuleInst(std::string_view name, std::string_view function,
                                                        std::string_view module, std::string_view attribute,
                                                        const bool& is_autorun, const bool& shared_on) {
    auto* inst = m_moduleInstList
                     .emplace_back(std::make_unique<ProfilerConfigModuleInst>(
                         std::string(name), getFunctionWithName(function), getModuleWithName(module),
                         std::string(attribute), is_autorun, shared_on))
                     .get();
    // The first instance of a name and function stays the one that is found. Without a function there is no
    // second half of the key, and nothing could ask for the instance.
    if (inst->getFunction())
        m_moduleInstMap.try_emplace({inst->getName(), inst->getFunction()->getName()}, inst);
    return inst;
}

ProfilerConfigConnection* ProfilerConfig::addConnection(std::string_view moduleinst,
                                                        std::string_view function, unsigned int compute_unit,
                                                        std::string_view port_tag,
                                                        std::string_view shared_with) {
    return addConnection(getModuleInstWithNameAndFunction(moduleinst, function),
                         getFunctionWithName(function), compute_unit, getPortWithTag(port_tag),
                         shared_with.empty() ? nullptr : getPortWithTag(shared_with));
}

ProfilerConfigConnection* ProfilerConfig::addConnection(ProfilerConfigModuleInst* inst,
                                                        ProfilerConfigFunction* function,
                                                        unsigned int compute_unit, ProfilerConfigPort* port,
                                                        ProfilerConfigPort* shared_port) {
    return m_connectionList
        .emplace_back(
            std::make_unique<ProfilerConfigConnection>(inst, function, compute_unit, port, shared_port))
        .get();
}

} // namespace zan::profiler
