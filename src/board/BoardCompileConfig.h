// SPDX-License-Identifier: Apache-2.0
// How a design for a board is compiled.
#pragma once

#include <string>

namespace zan::board {

class CompileConfig {
  public:
    static const std::string DEFAULT_CONFIG_NAME;

    const std::string& get_name() const { return m_name; }
    void set_name(std::string name) { m_name = std::move(name); }
    const std::string& get_project() const { return m_project; }
    void set_project(std::string project) { m_project = std::move(project); }
    const std::string& get_revision() const { return m_revision; }
    void set_revision(std::string revision) { m_revision = std::move(revision); }
    // The system integration file.
    const std::string& get_plexo_file() const { return m_plexo_file; }
    void set_plexo_file(std::string file) { m_plexo_file = std::move(file); }
    bool get_generic_kernel() const { return m_generic_kernel; }
    void set_generic_kernel(bool generic) { m_generic_kernel = generic; }

    // Which parts of the configuration the description has.
    bool has_automigrate() const { return m_has_automigrate; }
    void set_has_automigrate(bool given) { m_has_automigrate = given; }
    bool has_generate() const { return m_has_generate; }
    void set_has_generate(bool given) { m_has_generate = given; }
    bool has_synthesis() const { return m_has_synthesis; }
    void set_has_synthesis(bool given) { m_has_synthesis = given; }

    // Commands, and whether additional arguments are appended to them.
    const std::string& get_generate_cmd() const { return m_generate_cmd; }
    void set_generate_cmd(std::string command) { m_generate_cmd = std::move(command); }
    bool get_generate_additional_args() const { return m_generate_additional_args; }
    void set_generate_additional_args(bool appended) { m_generate_additional_args = appended; }
    const std::string& get_synthesize_cmd() const { return m_synthesize_cmd; }
    void set_synthesize_cmd(std::string command) { m_synthesize_cmd = std::move(command); }
    bool get_synthesize_additional_args() const { return m_synthesize_additional_args; }
    void set_synthesize_additional_args(bool appended) { m_synthesize_additional_args = appended; }

    // Automatic migration: the platform, and the fixes that it takes and leaves out.
    const std::string& get_platform_type() const { return m_platform_type; }
    void set_platform_type(std::string type) { m_platform_type = std::move(type); }
    const std::string& get_include_fixes() const { return m_include_fixes; }
    void set_include_fixes(std::string fixes) { m_include_fixes = std::move(fixes); }
    const std::string& get_exclude_fixes() const { return m_exclude_fixes; }
    void set_exclude_fixes(std::string fixes) { m_exclude_fixes = std::move(fixes); }

  private:
    std::string m_name = DEFAULT_CONFIG_NAME;
    std::string m_project;
    std::string m_revision;
    std::string m_plexo_file;
    bool m_generic_kernel = false;
    bool m_has_automigrate = false;
    bool m_has_generate = false;
    bool m_has_synthesis = false;
    std::string m_generate_cmd;
    bool m_generate_additional_args = false;
    std::string m_synthesize_cmd;
    bool m_synthesize_additional_args = false;
    std::string m_platform_type;
    std::string m_include_fixes;
    std::string m_exclude_fixes;
};

inline const std::string CompileConfig::DEFAULT_CONFIG_NAME = "default";

} // namespace zan::board
