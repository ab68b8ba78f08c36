// SPDX-License-Identifier: Apache-2.0
#include "tly_parse.h"

#include <optional>

#include "board_import.h"
#include "monitor_reader.h"
#include "package_sections.h"
#include "profiler_import.h"
#include "tree_sink.h"

namespace {

// A model of a caller's containers, which are the caller's again afterwards, also after an exception. They
// are exchanged, not copied: the caller's kernels and memories must not be deleted with the model, and a map
// that is exchanged keeps its order.
class CallersModel {
  public:
    CallersModel(ProfileModel::Kernels* kernels, ProfileModel::OriginalNames* original_names,
                 ProfileModel::ExtMems* ext_mems)
        : m_kernels(kernels), m_original_names(original_names), m_ext_mems(ext_mems) {
        exchange();
    }
    CallersModel(const CallersModel&) = delete;
    CallersModel& operator=(const CallersModel&) = delete;
    ~CallersModel() { exchange(); }

    ProfileModel& operator*() { return m_model; }
    ProfileModel* operator->() { return &m_model; }

  private:
    void exchange() {
        if (m_kernels)
            m_kernels->swap(m_model.kernels);
        if (m_original_names)
            m_original_names->swap(m_model.original_names);
        if (m_ext_mems)
            m_ext_mems->swap(m_model.ext_mems);
    }

    ProfileModel m_model;
    ProfileModel::Kernels* m_kernels;
    ProfileModel::OriginalNames* m_original_names;
    ProfileModel::ExtMems* m_ext_mems;
};

// The lists of a report tree, which have to be there when the first node comes.
class TreeNodes final : public MonitorNodes {
  public:
    explicit TreeNodes(ptree& tree) : m_tree(tree) {}
    ReportSink& kernels(const TlyKernel&) override {
        return m_sink.emplace(m_tree.get_child("kernels.nodes"));
    }
    ReportSink& transfers() override { return m_sink.emplace(m_tree.get_child("memtransfers.nodes")); }

  private:
    ptree& m_tree;
    std::optional<TreeSink> m_sink;
};

} // namespace

int get_zanx_sect(const char* section, const char* package_path, char** buffer) {
    PackageSection found = Package(package_path).read(section);
    if (found.text)
        *buffer = found.text.release();
    return static_cast<int>(found.status);
}

int parseVersionFile(ptree* tree, const char* package_path) {
    Package package(package_path);
    return static_cast<int>(parse_version(*tree, package));
}

int parseBoardXMLFile(ptree* tree, const char* package_path,
                      std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    Package package(package_path);
    return static_cast<int>(import_board(*CallersModel(nullptr, nullptr, &ext_mems), *tree, package));
}

int parseVelmoraReport(ptree* tree, const char* package_path) {
    Package package(package_path);
    return static_cast<int>(parse_timing_report(*tree, package));
}

int parseProfilerXMLFile(std::map<std::string, TlyKernel*>* kernels, ptree* tree, const char* package_path,
                         std::map<std::string, std::string>* original_names) {
    Package package(package_path);
    return static_cast<int>(import_profiler(*CallersModel(kernels, original_names, nullptr), *tree, package));
}

int parseProfilerMONFile(std::map<std::string, TlyKernel*>* kernels, ptree* tree, std::string mon_path,
                         const std::map<std::string, std::string>& original_names,
                         std::unordered_map<std::string, TlyExtMem*>& ext_mems, bool no_profiler) {
    CallersModel model(kernels, nullptr, &ext_mems);
    model->original_names = original_names;
    model->is_described = !no_profiler;
    TreeNodes nodes(*tree);
    return static_cast<int>(read_monitor_file(*model, nodes, mon_path));
}

int pullKernelInfo(
    TlyKernel* kernel, ptree* tree, bool reset,
    std::unordered_map<std::string, TlyExtMem*>& ext_mems) { // cppcheck-suppress constParameter
    TreeNodes nodes(*tree);
    close_invocation(*kernel, nodes, reset ? AfterInvocation::reset : AfterInvocation::keep, ext_mems);
    return 1;
}
