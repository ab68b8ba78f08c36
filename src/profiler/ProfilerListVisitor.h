// SPDX-License-Identifier: Apache-2.0
// The base of the visitors of the lists.
#pragma once

#include "ProfilerConfig.h"
#include "TableVisitor.h"

namespace zan::profiler::xml {

using zan::xml::BaseVisitor;
using zan::xml::ElementRow;
using zan::xml::outermost;
using zan::xml::TableVisitor;
using zan::xml::XMLElement;

// Walks one list, which is the outermost element of its walk, and adds what it holds to the model.
class ProfilerListVisitor : public TableVisitor {
  protected:
    // `config` isn't owned and must not be null.
    ProfilerListVisitor(Rows rows, ProfilerConfig* config, BaseVisitor* parent);

    ProfilerConfig* m_config;
};

} // namespace zan::profiler::xml
