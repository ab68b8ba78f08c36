// SPDX-License-Identifier: Apache-2.0
// Profiler descriptions, written element by element.
#pragma once

#include <string>
#include <vector>

// Each call appends one element. Texts go in as they stand, without escaping.
class Description {
  public:
    // `more` are further attributes.
    Description& function(const std::string& name, const std::string& more = "", int num_compute_units = 1) {
        m_functions += "<FUNCTION name='" + name + "' num_compute_units='" +
                       std::to_string(num_compute_units) + "' filename='" + name + ".cl' " + more + "/>\n";
        return *this;
    }
    // A module with a port for each tag.
    Description& module(const std::string& name, const std::vector<std::string>& tags) {
        m_modules += "<MODULE name='" + name + "' function='' isKernelWrapper='false'/>\n";
        for (const std::string& tag : tags)
            m_ports += "<PORT cntl_name='c' incr_name='i' tag='" + tag + "' desc='d' module='" + name +
                       "' flag='0'/>\n";
        return *this;
    }
    // `debugs` are the elements inside it.
    Description& inst(const std::string& function, const std::string& name, const std::string& module,
                      const std::string& attribute = "", bool autorun = false, bool shared_on = false,
                      const std::string& debugs = "") {
        m_insts += "<MODULEINST name='" + name + "' function='" + function + "' module='" + module +
                   "' attribute='" + attribute + "' isAutorun='" + truth(autorun) + "' sharedOn='" +
                   truth(shared_on) + "'>" + debugs + "</MODULEINST>\n";
        return *this;
    }
    Description& connect(const std::string& function, const std::string& inst, const std::string& tag,
                         const std::string& shared_with = "", int compute_unit = 0) {
        const std::string sharing = shared_with.empty() ? "" : " shared_with='" + shared_with + "'";
        m_connections += "<CONNECTION moduleinst='" + inst + "' function='" + function + "' compute_unit='" +
                         std::to_string(compute_unit) + "'" + sharing + " port_tag='" + tag + "'/>\n";
        return *this;
    }

    std::string xml() const {
        return "<PROFILER>\n" + list("FUNCTION", m_functions) + list("MODULE", m_modules) +
               list("PORT", m_ports) + list("MODULEINST", m_insts) + list("CONNECTION", m_connections) +
               "</PROFILER>\n";
    }

  private:
    static std::string truth(bool value) { return value ? "true" : "false"; }
    static std::string list(const std::string& element, const std::string& content) {
        return "<" + element + "_LIST>\n" + content + "</" + element + "_LIST>\n";
    }

    std::string m_functions;
    std::string m_modules;
    std::string m_ports;
    std::string m_insts;
    std::string m_connections;
};
