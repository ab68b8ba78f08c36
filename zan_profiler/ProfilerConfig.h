// SPDX-License-Identifier: Apache-2.0
// The profiler description of a design: functions, kinds of blocks, their counter ports, their instances, and
// how instances connect to counters.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "contract.h"

namespace zan::profiler {

class ProfilerConfigFunction;
class ProfilerConfigModule;

// Records by a text that each of them holds itself: a key is a view of the first record that had it.
template <typename Record>
using ProfilerConfigIndex = std::unordered_map<std::string_view, Record*>;

// Records are made by the model and its records, and stay where they are made. Pointers between them aren't
// owned unless noted; a null one stands for a name that isn't known. `print` writes a record as XML, without
// escaping; an indexed getter asserts its bound.

// A counter port of a module.
class ProfilerConfigPort {
  public:
    ProfilerConfigPort(std::string cntl_name, std::string incr_name, std::string tag, std::string desc,
                       ProfilerConfigModule* module, unsigned int flag)
        : m_cntlName(std::move(cntl_name)),
          m_incrName(std::move(incr_name)),
          m_tag(std::move(tag)),
          m_desc(std::move(desc)),
          m_module(module),
          m_flag(flag) {}

    const std::string& getCntlName() const { return m_cntlName; }
    const std::string& getIncrName() const { return m_incrName; }
    const std::string& getTag() const { return m_tag; }
    const std::string& getDesc() const { return m_desc; }
    ProfilerConfigModule* getModule() const { return m_module; }
    unsigned int getFlag() const { return m_flag; }
    void print(std::ostream& os) const;

  private:
    std::string m_cntlName;
    std::string m_incrName;
    std::string m_tag;
    std::string m_desc;
    ProfilerConfigModule* m_module;
    unsigned int m_flag;
};

// A control signal of a module instance, and the port that counts it.
class ProfilerConfigSignal {
  public:
    ProfilerConfigSignal(std::string cntl_name, std::string incr_name, ProfilerConfigPort* port)
        : m_cntlName(std::move(cntl_name)), m_incrName(std::move(incr_name)), m_port(port) {}

    const std::string& getCntlName() const { return m_cntlName; }
    const std::string& getIncrName() const { return m_incrName; }
    ProfilerConfigPort* getPort() const { return m_port; }
    void print(std::ostream& os) const;

  private:
    std::string m_cntlName;
    std::string m_incrName;
    ProfilerConfigPort* m_port;
};

// A source location, and where the code at it was called from, innermost call first.
class ProfilerConfigDebug {
  public:
    ProfilerConfigDebug(std::string file, unsigned int line, unsigned int column)
        : m_file(std::move(file)), m_line(line), m_column(column) {}

    const std::string& getFile() const { return m_file; }
    unsigned int getLine() const { return m_line; }
    unsigned int getColumn() const { return m_column; }

    // Call sites are parallel lists: the three counts are the same.
    void add_callsite(std::string_view file, unsigned int line, unsigned int column);
    unsigned int getNumCallsiteFiles() const { return static_cast<unsigned int>(m_callsiteFiles.size()); }
    unsigned int getNumCallsiteLines() const { return static_cast<unsigned int>(m_callsiteLines.size()); }
    unsigned int getNumCallsiteColumns() const { return static_cast<unsigned int>(m_callsiteColumns.size()); }
    const std::string& getCallsiteFile(unsigned int i) const;
    unsigned int getCallsiteLine(unsigned int i) const;
    unsigned int getCallsiteColumn(unsigned int i) const;
    void print(std::ostream& os) const;

  private:
    std::string m_file;
    unsigned int m_line;
    unsigned int m_column;
    std::vector<std::string> m_callsiteFiles;
    std::vector<unsigned int> m_callsiteLines;
    std::vector<unsigned int> m_callsiteColumns;
};

// An instance of a module in a function. Owns its debug and signal records.
class ProfilerConfigModuleInst {
  public:
    ProfilerConfigModuleInst(std::string name, ProfilerConfigFunction* function, ProfilerConfigModule* module,
                             std::string attribute, bool is_autorun, bool shared_on)
        : m_name(std::move(name)),
          m_function(function),
          m_module(module),
          m_attribute(std::move(attribute)),
          m_isAutorun(is_autorun),
          m_sharedOn(shared_on) {}
    ProfilerConfigModuleInst(const ProfilerConfigModuleInst&) = delete;
    ProfilerConfigModuleInst& operator=(const ProfilerConfigModuleInst&) = delete;

    const std::string& getName() const { return m_name; }
    ProfilerConfigFunction* getFunction() const { return m_function; }
    ProfilerConfigModule* getModule() const { return m_module; }
    // Fields joined by ";".
    const std::string& getAttribute() const { return m_attribute; }
    bool getIsAutorun() const { return m_isAutorun; }
    bool getSharedOn() const { return m_sharedOn; }

    ProfilerConfigDebug* addDebug(std::string_view file, unsigned int line, unsigned int column);
    unsigned int getNumDebugs() const { return static_cast<unsigned int>(m_debugs.size()); }
    ProfilerConfigDebug* getDebug(unsigned int i) const;
    void addSignal(std::string_view cntl_name, std::string_view incr_name, ProfilerConfigPort* port);
    unsigned int getNumSignals() const { return static_cast<unsigned int>(m_signals.size()); }
    ProfilerConfigSignal* getSignal(unsigned int i) const;
    void print(std::ostream& os) const;

  private:
    std::string m_name;
    ProfilerConfigFunction* m_function;
    ProfilerConfigModule* m_module;
    std::string m_attribute;
    std::vector<std::unique_ptr<ProfilerConfigDebug>> m_debugs;
    std::vector<std::unique_ptr<ProfilerConfigSignal>> m_signals;
    bool m_isAutorun;
    bool m_sharedOn;
};

// What connects a port of an instance in one compute unit to a counter, which it may share with another port.
class ProfilerConfigConnection {
  public:
    // As the model makes it: the records are known.
    ProfilerConfigConnection(ProfilerConfigModuleInst* inst, ProfilerConfigFunction* function,
                             unsigned int compute_unit, ProfilerConfigPort* port,
                             ProfilerConfigPort* shared_port)
        : m_moduleInst(inst),
          m_function(function),
          m_computeUnit(compute_unit),
          m_port(port),
          m_sharedPort(shared_port) {}
    // As a function makes it: ports are known by their tags alone.
    ProfilerConfigConnection(ProfilerConfigModuleInst* inst, int id, unsigned int compute_unit,
                             std::string port_tag, std::string shared_with)
        : m_moduleInst(inst),
          m_computeUnit(compute_unit),
          m_id(id),
          m_portTag(std::move(port_tag)),
          m_sharedWith(std::move(shared_with)) {}

    ProfilerConfigModuleInst* getModuleInst() const { return m_moduleInst; }
    ProfilerConfigFunction* getFunction() const { return m_function; }
    unsigned int getComputeUnit() const { return m_computeUnit; }
    int getId() const { return m_id; }
    ProfilerConfigPort* getPort() const { return m_port; }
    const std::string& getPortTag() const { return m_portTag; }
    ProfilerConfigPort* getSharedPort() const { return m_sharedPort; }
    const std::string& getSharedWith() const { return m_sharedWith; }
    void print(std::ostream& os) const;

  private:
    static constexpr int no_id = -1;

    ProfilerConfigModuleInst* m_moduleInst;
    ProfilerConfigFunction* m_function = nullptr;
    unsigned int m_computeUnit;
    int m_id = no_id;
    ProfilerConfigPort* m_port = nullptr;
    std::string m_portTag;
    ProfilerConfigPort* m_sharedPort = nullptr;
    std::string m_sharedWith;
};

// A kind of block.
class ProfilerConfigModule {
  public:
    ProfilerConfigModule(std::string name, ProfilerConfigFunction* function, bool is_kernel_wrapper)
        : m_name(std::move(name)), m_function(function), m_isKernelWrapper(is_kernel_wrapper) {}

    const std::string& getName() const { return m_name; }
    ProfilerConfigFunction* getFunction() const { return m_function; }
    bool getIsKernelWrapper() const { return m_isKernelWrapper; }
    void print(std::ostream& os) const;

    // For callers outside this program.

    // Makes a port that this module lists and the model doesn't; the caller owns it.
    ProfilerConfigPort* addPortToModule(const std::string& cntl_name, const std::string& incr_name,
                                        const std::string& tag, const std::string& desc, unsigned int flag);
    unsigned int getNumPorts() const { return static_cast<unsigned int>(m_ports.size()); }
    ProfilerConfigPort* getPort(unsigned int i) const;

  private:
    std::string m_name;
    ProfilerConfigFunction* m_function;
    bool m_isKernelWrapper;
    std::vector<ProfilerConfigPort*> m_ports;
};

// A kernel function. Lines are 0 where they aren't known.
class ProfilerConfigFunction {
  public:
    using ModuleMap = ProfilerConfigIndex<ProfilerConfigModule>;

    // addModuleInst looks modules up in `modules`, which has to outlive the function. Without a map (null)
    // every module is unknown.
    ProfilerConfigFunction(std::string name, unsigned int num_compute_units, std::string filename,
                           unsigned int linenum, std::string original_name, std::string user_friendly_name,
                           const ModuleMap* modules)
        : m_name(std::move(name)),
          m_numComputeUnits(num_compute_units),
          m_filename(std::move(filename)),
          m_linenum(linenum),
          m_originalName(std::move(original_name)),
          m_userFriendlyName(std::move(user_friendly_name)),
          m_moduleMapPtr(modules) {}

    const std::string& getName() const { return m_name; }
    unsigned int getNumComputeUnits() const { return m_numComputeUnits; }
    const std::string& getFilename() const { return m_filename; }
    unsigned int getLinenum() const { return m_linenum; }
    const std::string& getOriginalName() const { return m_originalName; }
    const std::string& getUserFriendlyName() const { return m_userFriendlyName; }
    void print(std::ostream& os) const;

    // For callers outside this program.

    const ModuleMap* getModuleMapPtr() const { return m_moduleMapPtr; }
    // Each makes a record that this function lists and the model doesn't. The caller owns it and deletes it,
    // which is why the lists below are of plain pointers.
    ProfilerConfigModuleInst* addModuleInst(const std::string& name, const std::string& module,
                                            const std::string& attribute, const bool& is_autorun,
                                            const bool& shared_on);
    ProfilerConfigConnection* addConnection(ProfilerConfigModuleInst* inst, int id, unsigned int compute_unit,
                                            const std::string& port_tag, const std::string& shared_with);
    unsigned int getNumModuleInsts() const { return static_cast<unsigned int>(m_moduleInsts.size()); }
    ProfilerConfigModuleInst* getModuleInst(unsigned int i) const;
    unsigned int getNumConnections() const { return static_cast<unsigned int>(m_connections.size()); }
    ProfilerConfigConnection* getConnection(unsigned int i) const;

  private:
    std::string m_name;
    unsigned int m_numComputeUnits;
    std::string m_filename;
    unsigned int m_linenum;
    std::string m_originalName;
    std::string m_userFriendlyName;
    const ModuleMap* m_moduleMapPtr;
    std::vector<ProfilerConfigModuleInst*> m_moduleInsts;
    std::vector<ProfilerConfigConnection*> m_connections;
};

// The whole description. Owns all records that it makes; they live as long as it does.
class ProfilerConfig {
  public:
    ProfilerConfig() = default;
    // The functions refer to this model's map of modules.
    ProfilerConfig(const ProfilerConfig&) = delete;
    ProfilerConfig& operator=(const ProfilerConfig&) = delete;

    // Null if there is none. Of several functions, modules or ports of one name the last is found, of several
    // module instances the first. Each takes time that doesn't grow with the model.
    ProfilerConfigFunction* getFunctionWithName(std::string_view name) const;
    ProfilerConfigModule* getModuleWithName(std::string_view name) const;
    ProfilerConfigPort* getPortWithTag(std::string_view tag) const;
    ProfilerConfigModuleInst* getModuleInstWithNameAndFunction(std::string_view name,
                                                               std::string_view function) const;

    // In the order in which they were added.
    unsigned int getNumFunctions() const { return static_cast<unsigned int>(m_functionList.size()); }
    ProfilerConfigFunction* getFunction(unsigned int i) const;
    unsigned int getNumConnections() const { return static_cast<unsigned int>(m_connectionList.size()); }
    ProfilerConfigConnection* getConnection(unsigned int i) const;

    // None of these checks anything: that names are unique and known is the caller's affair. Records are
    // referred to by name; a name that isn't known leaves a null pointer.
    void addFunction(std::string_view name, unsigned int num_compute_units, std::string_view filename,
                     unsigned int linenum, std::string_view original_name,
                     std::string_view user_friendly_name);
    // An empty `function` stands for none.
    void addModule(std::string_view name, std::string_view function, bool is_kernel_wrapper);
    void addPort(std::string_view cntl_name, std::string_view incr_name, std::string_view tag,
                 std::string_view desc, std::string_view module, unsigned int flag);
    ProfilerConfigModuleInst* addModuleInst(std::string_view name, std::string_view function,
                                            std::string_view module, std::string_view attribute,
                                            const bool& is_autorun, const bool& shared_on);
    // An empty `shared_with` stands for none.
    ProfilerConfigConnection* addConnection(std::string_view moduleinst, std::string_view function,
                                            unsigned int compute_unit, std::string_view port_tag,
                                            std::string_view shared_with);

    // The same of records that are known already.
    ProfilerConfigConnection* addConnection(ProfilerConfigModuleInst* inst, ProfilerConfigFunction* function,
                                            unsigned int compute_unit, ProfilerConfigPort* port,
                                            ProfilerConfigPort* shared_port);

    // Prints modules and functions with what these list themselves, which for records that the model made is
    // nothing.
    void print(std::ostream& os) const;

    // For callers outside this program: the other records in the order in which they were added.
    unsigned int getNumModules() const { return static_cast<unsigned int>(m_moduleList.size()); }
    ProfilerConfigModule* getModule(unsigned int i) const;
    unsigned int getNumPorts() const { return static_cast<unsigned int>(m_portList.size()); }
    ProfilerConfigPort* getPort(unsigned int i) const;
    unsigned int getNumModuleInsts() const { return static_cast<unsigned int>(m_moduleInstList.size()); }
    ProfilerConfigModuleInst* getModuleInst(unsigned int i) const;

  private:
    // An instance's name and its function's.
    using InstKey = std::pair<std::string_view, std::string_view>;
    struct InstKeyHash {
        std::size_t operator()(const InstKey& key) const;
    };

    std::vector<std::unique_ptr<ProfilerConfigFunction>> m_functionList;
    std::vector<std::unique_ptr<ProfilerConfigModule>> m_moduleList;
    std::vector<std::unique_ptr<ProfilerConfigPort>> m_portList;
    std::vector<std::unique_ptr<ProfilerConfigModuleInst>> m_moduleInstList;
    std::vector<std::unique_ptr<ProfilerConfigConnection>> m_connectionList;
    ProfilerConfigIndex<ProfilerConfigFunction> m_functionMap;
    ProfilerConfigIndex<ProfilerConfigModule> m_moduleMap;
    ProfilerConfigIndex<ProfilerConfigPort> m_portMap;
    std::unordered_map<InstKey, ProfilerConfigModuleInst*, InstKeyHash> m_moduleInstMap;
};

template <typename Record>
concept ProfilerConfigRecord = requires(const Record& record, std::ostream& os) {
    {record.print(os)};
};

// Prints a record, or the whole description.
template <ProfilerConfigRecord Record>
std::ostream& operator<<(std::ostream& os, const Record& record) {
    record.print(os);
    return os;
}

} // namespace zan::profiler
