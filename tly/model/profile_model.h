// SPDX-License-Identifier: Apache-2.0
// The profile model of a run.
#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include "tly_ext_mem.h"
#include "tly_kernel.h"

// What a run knows of a design and of what was measured on it. It owns the kernels, their module instances
// and the memories: they are deleted with it. The containers are those that the public functions of the
// stages take from their callers.
struct ProfileModel {
    using Kernels = std::map<std::string, TlyKernel*>;
    using OriginalNames = std::map<std::string, std::string>;
    using ExtMems = std::unordered_map<std::string, TlyExtMem*>;

    ProfileModel() = default;
    ProfileModel(const ProfileModel&) = delete;
    ProfileModel& operator=(const ProfileModel&) = delete;
    ~ProfileModel();

    Kernels kernels; // by name
    // Names of kernels by the names that these have in the sources. Monitor lines may use both.
    OriginalNames original_names;
    ExtMems ext_mems; // the memories of the board, by name
    // There is a profiler description. Without one, kernels are made for the names on monitor lines, and
    // counters are not read.
    bool is_described = true;
    // The one whose counters are read; the fields of others are skipped.
    int compute_unit = 0;
};

// Delete the kernels with their module instances, and the memories. The entries stay and dangle.
void delete_kernels(const ProfileModel::Kernels& kernels);
void delete_ext_mems(const ProfileModel::ExtMems& ext_mems);
