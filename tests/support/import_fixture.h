// SPDX-License-Identifier: Apache-2.0
// The profile model of a description.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "capture.h"
#include "description.h"
#include "make_package.h"
#include "profile_model.h"
#include "temp_dir.h"
#include "tly_parse.h"

class ImportTest : public testing::Test {
  protected:
    ImportTest() { set_clock("240.5"); }
    // Deletes what was imported.
    void forget() {
        delete_kernels(kernels);
        kernels.clear();
        original_names.clear();
    }

    // The text that the clock report has left in the tree.
    void set_clock(const std::string& text) {
        tree = ptree();
        tree.put("run_info.nodes..fmax", text);
    }
    // Imports a package with these sections. What it says is in `messages`.
    int import_package(const PackageSections& sections) {
        const std::string package = m_dir.path("design.zanx");
        make_package(package, sections);
        return import_from(package);
    }
    int import_from(const std::string& package) {
        int status = -1;
        messages = stderr_of(
            [&] { status = parseProfilerXMLFile(&kernels, &tree, package.c_str(), &original_names); });
        return status;
    }
    int import_text(const std::string& xml) { return import_package({{".zan.profiler.xml", xml}}); }
    // Imports a description that is good.
    void import(const Description& description) { ASSERT_EQ(import_text(description.xml()), 0); }

    // The instance; a kernel or an instance that is missing throws.
    TlyModuleInst& inst(const std::string& kernel, const std::string& name) const {
        TlyModuleInst* found = kernels.at(kernel)->check_module_exists(name);
        return found ? *found : throw std::out_of_range("no instance " + name);
    }
    // The instance's counters, "tag:offset" each, followed by "/compute unit" where it isn't 0.
    std::string counters(const std::string& kernel, const std::string& name) const {
        const TlyModuleInst& of = inst(kernel, name);
        const auto offsets = of.getPortTagOffsets();
        const auto tags = of.getPortTagList();
        std::string text;
        for (std::size_t i = 0; i < tags.size(); ++i) {
            const int unit = of.getPortCompUnit(static_cast<int>(i));
            text += (i == 0 ? "" : " ") + tags[i] + ":" + std::to_string(offsets.at(i)) +
                    (unit == 0 ? "" : "/" + std::to_string(unit));
        }
        return text;
    }
    // A line for each instance of all kernels: kernel, instance, counters.
    std::string all_counters() const {
        std::string text;
        for (const auto& [name, kernel] : kernels) {
            for (const TlyModuleInst* of : kernel->get_module_insts())
                text += name + " " + of->getName() + " " + counters(name, of->getName()) + "\n";
        }
        return text;
    }

    ProfileModel model;
    ProfileModel::Kernels& kernels = model.kernels;
    ProfileModel::OriginalNames& original_names = model.original_names;
    ptree tree;
    std::string messages;

  private:
    const TempDir m_dir;
};
