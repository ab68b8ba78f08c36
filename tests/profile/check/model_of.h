// SPDX-License-Identifier: Apache-2.0
// The profile model of a description, as a run has it.
#pragma once

#include <stdexcept>

#include "description.h"
#include "document.h"
#include "make_package.h"
#include "profiler_import.h"
#include "temp_dir.h"

struct ModelOf {
    explicit ModelOf(const Description& description) {
        make_package(folder.path("d.zanx"), {{".zan.profiler.xml", description.xml()}});
        const std::string path = folder.path("d.zanx");
        Package package(path.c_str());
        if (import_profiler(model, empty_document(), package) != StageResult::done)
            throw std::runtime_error("the description can't be loaded");
    }

    const TempDir folder;
    ProfileModel model;
};
