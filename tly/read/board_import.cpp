// SPDX-License-Identifier: Apache-2.0
#include "board_import.h"

#include <csignal>
#include <cstdlib>
#include <memory>

#include "BoardSpecXml.h"
#include "board_node.h"
#include "diagnostics.h"
#include "input_names.h"
#include "tree_sink.h"

namespace {

using zan::board::BoardSpec;
using zan::board::BoardSpecXmlLoader;
using zan::board::GlobalMemConfig;
using zan::board::Interface;

// Ends the process as a read through a null pointer would, also if that signal is handled, ignored or
// blocked.
[[noreturn]] void end_by_segmentation_fault() {
    std::signal(SIGSEGV, SIG_DFL);
    sigset_t fault;
    sigemptyset(&fault);
    sigaddset(&fault, SIGSEGV);
    sigprocmask(SIG_UNBLOCK, &fault, nullptr);
    std::raise(SIGSEGV);
    // cppcheck-suppress unreachableCode ; should a debugger hold the signal back
    std::abort();
}

std::vector<std::string> port_names(const Interface& intf) {
    std::vector<std::string> names;
    for (unsigned int i = 0; i < intf.get_num_ports(); ++i)
        names.push_back(intf.get_port_name(i));
    return names;
}

// What the report says of a board's memories, by their names.
struct MemoryMaps {
    std::unordered_map<std::string, float> max_bandwidths;
    std::unordered_map<std::string, unsigned int> max_burst_counts;
};

// Makes the memory that counters refer to. All of its interfaces have one burst count.
std::unique_ptr<TlyExtMem> make_ext_mem(const GlobalMemConfig& described, MemoryMaps& maps) {
    const std::string& name = described.get_name();
    maps.max_bandwidths[name] = described.get_max_bandwidth();
    auto memory = std::make_unique<TlyExtMem>(name, described.get_max_bandwidth());
    for (unsigned int i = 0; i < described.get_num_intfs(); ++i) {
        const Interface& intf = described.get_intf(i);
        memory->add_interface(intf.get_name(), intf.get_data_width(), port_names(intf));
    }
    if (described.get_num_intfs() > 0) {
        maps.max_burst_counts[name] = described.get_max_burst_count();
        memory->set_max_burst_count(described.get_max_burst_count());
    }
    return memory;
}

} // namespace

StageResult read_board(ProfileModel& model, ptree& tree, Package& package, BoardSpecXmlLoader& loader) {
    const PackageSection section = package.read(board_section);
    if (!section.text) {
        diagnose(Message::no_board);
        return StageResult::failed;
    }
    const std::unique_ptr<BoardSpec> spec(loader.load_xml(section.text.get()));
    if (!spec)
        return StageResult::not_loadable;
    MemoryMaps maps;
    for (const auto& described : spec->get_global_mem_configs()) {
        // A second memory of a name replaces the first in the maps, but not in the model.
        std::unique_ptr<TlyExtMem> memory = make_ext_mem(*described, maps);
        if (model.ext_mems.try_emplace(described->get_name(), memory.get()).second)
            static_cast<void>(memory.release()); // the model's now
        else
            diagnose(Message::memory_twice, {.subject = described->get_name()});
    }
    TreeSink boards(tree.get_child("boards.nodes"));
    boards.open({}, Form::object);
    write_board(boards, spec->get_name(), maps.max_bandwidths, maps.max_burst_counts);
    boards.close();
    return StageResult::done;
}

StageResult import_board(ProfileModel& model, ptree& tree, Package& package) {
    BoardSpecXmlLoader loader(false, false);
    const StageResult result = read_board(model, tree, package, loader);
    // Callers rely on this end for a board that can't be loaded. What is wrong with it is not reported.
    if (result == StageResult::not_loadable)
        end_by_segmentation_fault();
    return result;
}
