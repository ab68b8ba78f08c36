// The visitors that fill a profiler description: one for the document, and one for each of its five lists.
#pragma once

#include "BaseVisitor.h"
#include "ProfilerConfig.h"

namespace zan::profiler::xml {

using zan::xml::BaseVisitor;
using zan::xml::VisitorCallbacks;
using zan::xml::XMLAttribute;
using zan::xml::XMLDocument;
using zan::xml::XMLElement;

// Walks a document. The root is PROFILER, and each list stands in it at most once. Elements refer to earlier
// ones by name, so the order of the lists matters where they do.
//
// `config` isn't owned and must not be null, here and below.
class ProfilerVisitor : public BaseVisitor {
  public:
    ProfilerVisitor(ProfilerConfig* config, VisitorCallbacks* callbacks, bool debug);

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLDocument& doc) override;

  private:
    bool visit_profiler(const XMLElement& elem);
    template <typename ListVisitor>
    bool visit_list(const XMLElement& elem);

    ProfilerConfig* m_config;
};

// What the visitors of the lists share. Each walks one list, which is the outermost element of its walk.
class ProfilerListVisitor : public BaseVisitor {
  protected:
    ProfilerListVisitor(ProfilerConfig* config, BaseVisitor* parent);

    bool visit_list(const XMLElement& elem);

    ProfilerConfig* m_config;
};

class ProfilerFunctionListVisitor : public ProfilerListVisitor {
  public:
    ProfilerFunctionListVisitor(ProfilerConfig* config, BaseVisitor* parent);

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

  private:
    struct Function;

    bool visit_function(const XMLElement& elem);
    bool check_num_compute_units(const XMLElement& elem, const Function& function);
};

class ProfilerModuleListVisitor : public ProfilerListVisitor {
  public:
    ProfilerModuleListVisitor(ProfilerConfig* config, BaseVisitor* parent);

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

  private:
    struct Module;

    bool visit_module(const XMLElement& elem);
    bool check_names(const XMLElement& elem, const Module& module);
    bool check_is_kernel_wrapper(const XMLElement& elem, const Module& module);
};

class ProfilerPortListVisitor : public ProfilerListVisitor {
  public:
    ProfilerPortListVisitor(ProfilerConfig* config, BaseVisitor* parent);

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

  private:
    bool visit_port(const XMLElement& elem);
};

class ProfilerModuleInstListVisitor : public ProfilerListVisitor {
  public:
    ProfilerModuleInstListVisitor(ProfilerConfig* config, BaseVisitor* parent);

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  private:
    struct Inst;
    struct Location;
    struct Signal;

    bool visit_moduleinst(const XMLElement& elem);
    bool visit_debug(const XMLElement& elem);
    bool visit_callsite(const XMLElement& elem);
    bool visit_signal(const XMLElement& elem);
    bool read_location(const XMLElement& elem, Location& location);
    bool check_file(const XMLElement& elem, const Location& location);
    bool check_cntl_name(const XMLElement& elem, const Signal& signal);

    ProfilerConfigModuleInst* m_moduleinst = nullptr; // the one that is being filled
    ProfilerConfigDebug* m_debug = nullptr;           // the one that is open
};

class ProfilerConnectionListVisitor : public ProfilerListVisitor {
  public:
    ProfilerConnectionListVisitor(ProfilerConfig* config, BaseVisitor* parent);

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

  private:
    struct Connection;

    bool visit_connection(const XMLElement& elem);
    bool check_references(const XMLElement& elem, const Connection& connection);
};

} // namespace zan::profiler::xml
