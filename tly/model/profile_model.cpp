// SPDX-License-Identifier: Apache-2.0
#include "profile_model.h"

ProfileModel::~ProfileModel() {
    delete_kernels(kernels);
    delete_ext_mems(ext_mems);
}

void delete_kernels(const ProfileModel::Kernels& kernels) {
    for (const auto& [name, kernel] : kernels) {
        if (!kernel)
            continue; // there was no memory to make it
        for (const TlyModuleInst* inst : kernel->get_module_insts())
            delete inst;
        delete kernel;
    }
}

void delete_ext_mems(const ProfileModel::ExtMems& ext_mems) {
    for (const auto& [name, memory] : ext_mems)
        delete memory;
}
