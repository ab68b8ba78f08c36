// SPDX-License-Identifier: Apache-2.0
// A profile model and a report tree made by hand, as the stages of a run hand them to the monitor reader.
#pragma once

#include <string>
#include <vector>

#include "monitor_reader.h"
#include "temp_dir.h"
#include "tly_parse.h"
#include "whole_file.h"

class RunFixture {
  public:
    RunFixture() {
        for (const char* list : {"kernels.nodes", "memtransfers.nodes"})
            tree.put(list, "");
    }
    RunFixture(const RunFixture&) = delete;
    RunFixture& operator=(const RunFixture&) = delete;

    TlyKernel& kernel(const std::string& name, bool autorun = false) {
        return *(kernels[name] = new TlyKernel(name, autorun));
    }

    // An instance of the kernel, of the function with the kernel's name.
    TlyModuleInst& inst(TlyKernel& kernel, const std::string& name, bool shared = false) {
        auto* made = new TlyModuleInst(name, "module", kernel.get_name(), "", "", "", "", "32", "",
                                       kernel.is_autorun_kernel(), 1, shared);
        kernel.add_module_inst(made);
        return *made;
    }

    // Reads a monitor file of these lines, each ended by a newline.
    int read(const std::vector<std::string>& lines, bool no_profiler = false) {
        return read_file(file(joined_lines(lines)), no_profiler);
    }
    // The same, with the choice of how kernel lines are decoded. Replaces the nodes that the tree has.
    int read_decoding(LineDecoding decoding, const std::vector<std::string>& lines) {
        FoldedMonitorNodes read_nodes;
        const StageResult result = read_monitor_file(model, read_nodes, file(joined_lines(lines)), decoding);
        read_nodes.append_to(tree);
        return static_cast<int>(result);
    }
    int read_file(const std::string& path, bool no_profiler = false) {
        return parseProfilerMONFile(&kernels, &tree, path, original_names, ext_mems, no_profiler);
    }
    std::string file(const std::string& content) {
        const std::string path = m_dir.path("profile.mon");
        write_file(path, content);
        return path;
    }

    boost::property_tree::ptree nodes(const std::string& list) const {
        return expanded(tree.get_child(list + ".nodes"));
    }
    // The texts at `path` of each node of a list: those of the elements if there is an array, joined by
    // blanks.
    std::vector<std::string> values(const std::string& list, const std::string& path) const {
        std::vector<std::string> result;
        for (const auto& [key, node] : nodes(list)) {
            const auto value = node.get_child_optional(path);
            result.push_back(value ? joined(*value) : "(none)");
        }
        return result;
    }

    ptree tree;
    ProfileModel model;
    ProfileModel::Kernels& kernels = model.kernels;
    ProfileModel::OriginalNames& original_names = model.original_names;
    ProfileModel::ExtMems& ext_mems = model.ext_mems;

  private:
    static std::string joined_lines(const std::vector<std::string>& lines) {
        std::string content;
        for (const std::string& line : lines)
            content += line + "\n";
        return content;
    }
    static std::string joined(const boost::property_tree::ptree& value) {
        std::string text = value.data();
        for (const auto& [key, element] : value)
            text += (text.empty() ? "" : " ") + element.data();
        return text;
    }

    TempDir m_dir;
};
