// SPDX-License-Identifier: Apache-2.0
#include "profiler_import.h"

#include <algorithm>
#include <array>
#include <memory>
#include <set>

#include "ProfilerConfigXml.h"
#include "counter_tags.h"
#include "diagnostics.h"
#include "input_names.h"
#include "tly_constants.h"

namespace {

using zan::profiler::ProfilerConfig;
using zan::profiler::ProfilerConfigConnection;
using zan::profiler::ProfilerConfigDebug;
using zan::profiler::ProfilerConfigFunction;
using zan::profiler::ProfilerConfigModuleInst;
using zan::profiler::ProfilerConfigXmlLoader;

// The attribute text of an instance, taken apart. With fewer than seven fields only the first one counts.
struct InstAttributes {
    std::string memory_type;
    std::string rw;
    std::string lsu_type;
    std::string global_mem_name;
    std::string byte_width;
    std::string memory_opt;
};

InstAttributes split_attributes(std::string_view text) {
    constexpr std::size_t num_fields = 7;
    std::array<std::string, num_fields> fields;
    std::size_t found = 0;
    for (std::size_t begin = 0; begin <= text.size() && found < num_fields; ++found) {
        const std::size_t end = std::min(text.find(';', begin), text.size());
        fields[found] = text.substr(begin, end - begin);
        begin = end + 1;
    }
    if (found < num_fields)
        return {fields[0], "", "", "", "", ""};
    return {fields[0], fields[1], fields[2], fields[3], fields[4], fields[6]}; // nothing reads field 5
}

// Each location, followed by the call sites that lead to it. A call site of line 0 is none.
void add_locations(TlyModuleInst& inst, const ProfilerConfigModuleInst& described) {
    const auto add = [&](const std::string& file, unsigned int line, unsigned int column, bool is_callsite) {
        inst.addLine(static_cast<int>(line));
        inst.addFilename(file);
        inst.addColNum(static_cast<int>(column));
        inst.addIsCallsite(is_callsite);
    };
    for (unsigned int i = 0; i < described.getNumDebugs(); ++i) {
        const ProfilerConfigDebug& debug = *described.getDebug(i);
        add(debug.getFile(), debug.getLine(), debug.getColumn(), false);
        for (unsigned int k = 0; k < debug.getNumCallsiteLines(); ++k) {
            if (debug.getCallsiteLine(k) != 0)
                add(debug.getCallsiteFile(k), debug.getCallsiteLine(k), debug.getCallsiteColumn(k), true);
        }
    }
}

// Fills the profile model. Nothing in it points into the description, which is gone after the stage.
class ProfilerImport {
  public:
    ProfilerImport(ProfileModel& model, float fmax) : m_model(model), m_fmax(fmax) {}

    void run(const ProfilerConfig& config) {
        for (unsigned int i = 0; i < config.getNumFunctions(); ++i)
            add_function(*config.getFunction(i));
        for (unsigned int i = 0; i < config.getNumConnections(); ++i)
            add_connection(*config.getConnection(i));
        if (m_counter_offsets.contains(autorun_profile_dummy_kernel))
            shift_autorun_kernels();
    }

  private:
    void add_function(const ProfilerConfigFunction& function) {
        const std::string& name = function.getName();
        if (!function.getOriginalName().empty())
            m_model.original_names.emplace(function.getOriginalName(), name); // the first claim stays
        TlyKernel*& kernel = m_model.kernels[name];
        kernel = new TlyKernel(name, function.getUserFriendlyName(), function.getOriginalName(),
                               function.getFilename(), static_cast<int>(function.getLinenum()));
        kernel->set_num_compute_units(function.getNumComputeUnits());
    }

    // The field is taken first, also by a connection that turns out to have no counter.
    void add_connection(const ProfilerConfigConnection& connection) {
        const int offset = next_offset(connection);
        TlyModuleInst& inst = inst_of(connection);
        const std::string& tag = connection.getPort()->getTag();
        if (is_shared_tag(tag))
            inst.addSharedTag(tag, offset);
        add_port_tag(inst, connection, offset);
        if (inst.isAutorun())
            m_autorun_kernels.insert(inst.getFunction());
    }

    // A connection that shares a port takes no field of its own, but for the first one of a kernel.
    int next_offset(const ProfilerConfigConnection& connection) {
        const auto [entry, is_first] =
            m_counter_offsets.try_emplace(connection.getFunction()->getName(), first_counter_field);
        if (!is_first && !connection.getSharedPort())
            ++entry->second;
        return entry->second;
    }

    // The instance of a connection, made with its first one: instances without connections are not made, and
    // those of a kernel are in the order of their first connections.
    TlyModuleInst& inst_of(const ProfilerConfigConnection& connection) {
        const ProfilerConfigModuleInst& described = *connection.getModuleInst();
        const std::string& function = connection.getFunction()->getName();
        const auto kernel = m_model.kernels.find(function);
        TlyModuleInst* inst = kernel == m_model.kernels.end()
                                  ? nullptr
                                  : kernel->second->check_module_exists(described.getName());
        return inst ? *inst : attach(make_inst(described), function);
    }

    std::unique_ptr<TlyModuleInst> make_inst(const ProfilerConfigModuleInst& described) const {
        constexpr int num_compute_units = 1;
        InstAttributes attributes = split_attributes(described.getAttribute());
        auto inst = std::make_unique<TlyModuleInst>(
            described.getName(), described.getModule()->getName(), described.getFunction()->getName(),
            std::move(attributes.memory_type), std::move(attributes.rw), std::move(attributes.lsu_type),
            std::move(attributes.global_mem_name), std::move(attributes.byte_width),
            std::move(attributes.memory_opt), described.getIsAutorun(), num_compute_units,
            described.getSharedOn());
        add_locations(*inst, described);
        inst->setFmax(m_fmax);
        return inst;
    }

    // Makes the instance one of the kernel, and the kernel if there is none.
    TlyModuleInst& attach(std::unique_ptr<TlyModuleInst> inst, const std::string& function) {
        const auto found = m_model.kernels.find(function);
        TlyKernel* kernel = found == m_model.kernels.end() ? nullptr : found->second;
        if (!kernel)
            kernel = m_model.kernels[function] = new TlyKernel(function, inst->isAutorun());
        else if (inst->isAutorun() && !kernel->is_autorun_kernel())
            kernel->set_autorun();
        kernel->add_module_inst(inst.get());
        return *inst.release(); // the model's now
    }

    // A port that shares a counter has the field of that counter, which must have come before it.
    static void add_port_tag(TlyModuleInst& inst, const ProfilerConfigConnection& connection, int offset) {
        const std::string& tag = connection.getPort()->getTag();
        const int compute_unit = static_cast<int>(connection.getComputeUnit());
        const auto* shared_port = connection.getSharedPort();
        if (!shared_port) {
            inst.addPortTag(tag, offset, compute_unit);
            return;
        }
        const int shared_offset = inst.getSharedOffset(shared_port->getTag());
        if (shared_offset == -1) {
            diagnose(Message::shared_port_unknown,
                     {.subject = tag, .kernel = inst.getFunction(), .block = inst.getName()});
            return;
        }
        inst.addPortTag(tag, shared_offset, compute_unit);
        inst.addHasShared(1);
    }

    // All autorun kernels report on the lines of one pseudo-kernel, the greatest name first, so the counters
    // of each follow those of the kernels before it.
    void shift_autorun_kernels() {
        int running_offset = 1;
        for (auto entry = m_autorun_kernels.rbegin(); entry != m_autorun_kernels.rend(); ++entry) {
            const std::string& name = *entry;
            const auto kernel = m_model.kernels.find(name);
            if (kernel == m_model.kernels.end())
                diagnose(Message::autorun_kernel_unknown, {.kernel = name});
            else if (kernel->second->get_name() != autorun_profile_dummy_kernel)
                running_offset += shift_kernel(*kernel->second, running_offset);
        }
    }

    // Moves the kernel's counters, and returns the number of fields that they take. Counters that are shared
    // take none, which only a design that was compiled with shared counters takes into account.
    static int shift_kernel(const TlyKernel& kernel, int delta) {
        int num_fields = 0;
        for (TlyModuleInst* inst : kernel.get_module_insts()) {
            inst->updateAutorunOffsets(delta);
            num_fields += inst->getNTags();
            if (inst->compiledSharedCounters())
                num_fields -= inst->getNumHasShared();
        }
        return num_fields;
    }

    ProfileModel& m_model;
    float m_fmax;
    std::map<std::string, int> m_counter_offsets; // by kernel: that of the last connection
    std::set<std::string> m_autorun_kernels;
};

} // namespace

StageResult import_profiler(ProfileModel& model, const ptree& tree, Package& package) {
    ProfilerConfigXmlLoader loader(false);
    return import_profiler(model, tree, package, loader);
}

StageResult import_profiler(ProfileModel& model, const ptree& tree, Package& package,
                            ProfilerConfigXmlLoader& loader) {
    const PackageSection section = package.read(profiler_section);
    package.close(); // the largest section is the last one: what the package holds of it isn't needed twice
    model.is_described = section.status != SectionStatus::no_section;
    if (!model.is_described) {
        diagnose(Message::no_description);
        return StageResult::no_description;
    }
    if (section.status != SectionStatus::found) {
        diagnose(Message::description_unreadable);
        return StageResult::failed;
    }
    const std::unique_ptr<ProfilerConfig> config(loader.load_xml(section.text.get()));
    if (!config) {
        diagnose(Message::description_not_loadable);
        return StageResult::failed;
    }
    // The doubled dot leads to the one element of the array, whose key is empty.
    const float fmax = tree.get_optional<float>("run_info.nodes..fmax").value_or(0.0f);
    ProfilerImport(model, fmax).run(*config);
    return StageResult::done;
}
