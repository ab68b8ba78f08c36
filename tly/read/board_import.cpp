// From the board description to external memories and the board's node.
#include <csignal>
#include <cstdlib>
#include <memory>

#include "BoardSpecXml.h"
#include "board_node.h"
#include "diagnostics.h"
#include "package_sections.h"
#include "tly_parse.h"
#include "tree_sink.h"

namespace {

using zan::board::BoardSpec;
using zan::board::BoardSpecXmlLoader;
using zan::board::GlobalMemConfig;
using zan::board::Interface;

// Ends the process as a read through a null pointer would, whoever has taken, ignored or blocked that signal.
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
TlyExtMem* make_ext_mem(const GlobalMemConfig& described, MemoryMaps& maps) {
    const std::string& name = described.get_name();
    maps.max_bandwidths[name] = described.get_max_bandwidth();
    auto* memory = new TlyExtMem(name, described.get_max_bandwidth());
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

int parseBoardXMLFile(ptree* tree, const char* package_path,
                      std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    Package package(package_path);
    return parse_board(*tree, package, ext_mems);
}

int parse_board(ptree& tree, Package& package, std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    const PackageSection section = package.read(board_section);
    if (!section.text) {
        diagnose("Error: unable to get board xml zanx section\n");
        return 1;
    }
    const std::unique_ptr<BoardSpec> spec(BoardSpecXmlLoader(false, false).load_xml(section.text.get()));
    // Callers know a board that can't be loaded by this end; what is wrong with it is told nowhere.
    if (!spec)
        end_by_segmentation_fault();
    MemoryMaps maps;
    for (const auto& described : spec->get_global_mem_configs()) {
        // A second memory of a name is in the maps, but the first one keeps its place; the second belongs to
        // nobody, and lives as long as the run.
        if (!ext_mems.try_emplace(described->get_name(), make_ext_mem(*described, maps)).second)
            diagnose(
                "Warning: trying to insert new global memory object with a name that already belongs to "
                "an existing global memory. Global memory names must be unique\n");
    }
    TreeSink boards(tree.get_child("boards.nodes"));
    boards.open({}, Form::object);
    write_board(boards, spec->get_name(), maps.max_bandwidths, maps.max_burst_counts);
    boards.close();
    return 0;
}
