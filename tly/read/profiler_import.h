// SPDX-License-Identifier: Apache-2.0
// From the profiler description to kernels, module instances, and the places of their counters on a line.
#pragma once

#include "ProfilerConfigXml.h"
#include "package_sections.h"
#include "profile_model.h"

// Makes a kernel for each function of the package's profiler description, a module instance for each one that
// is connected, and for each connection a counter with the index of its field on a monitor line. The clock
// frequency is read back from `tree`. Without a description a message says so, and the model is one of a
// design that isn't described. Fails with a message if there is a description that can't be loaded.
StageResult import_profiler(ProfileModel& model, const ptree& tree, Package& package);
// The same with the caller's loader, whose list of errors then says what is wrong with the description.
StageResult import_profiler(ProfileModel& model, const ptree& tree, Package& package,
                            zan::profiler::ProfilerConfigXmlLoader& loader);
