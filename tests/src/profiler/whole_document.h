// SPDX-License-Identifier: Apache-2.0
// A whole profiler description whose line numbers are known, and loading with all messages compared.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ProfilerConfigXml.h"
#include "load_result.h"

namespace zan::test {

struct AtLine {
    long line; // counted from 1
    std::string text;
};

// One text with each part at the beginning of its line; what lies between is empty lines.
inline std::string at_lines(std::initializer_list<AtLine> parts) {
    std::string text;
    for (const AtLine& part : parts) {
        const long current = 1 + std::count(text.begin(), text.end(), '\n');
        if (part.line < current || (part.line == current && part.line > 1))
            throw std::logic_error("line " + std::to_string(part.line) + " is taken");
        text += std::string(static_cast<size_t>(part.line - current), '\n') + part.text;
    }
    return text;
}

// A valid document with one element of each kind, to be changed in one place or another. Elements stand at
// round lines and their attributes at the lines that follow, in the order in which they are read. Changes
// keep all line numbers.
class WholeDocument {
  public:
    const std::string& text() const { return m_text; }

    WholeDocument& with(const std::string& element, const std::string& attribute, const std::string& value) {
        return replace(element, attribute, attribute + "='" + value + "'");
    }
    WholeDocument& without(const std::string& element, const std::string& attribute) {
        return replace(element, attribute, "");
    }
    WholeDocument& renamed(const std::string& element, const std::string& attribute,
                           const std::string& new_name) {
        return replace(element, attribute, new_name + "='1'");
    }
    // Puts `content` after all that the element holds.
    WholeDocument& adding(const std::string& element, const std::string& content) {
        m_text.insert(place_of("</" + element + ">", 0), content);
        return *this;
    }

  private:
    size_t place_of(const std::string& what, size_t from) const {
        const size_t place = m_text.find(what, from);
        if (place == std::string::npos)
            throw std::logic_error("no " + what + " in the document");
        return place;
    }

    WholeDocument& replace(const std::string& element, const std::string& attribute,
                           const std::string& replacement) {
        const size_t begin = place_of("\n" + attribute + "='", place_of("<" + element + "\n", 0)) + 1;
        m_text.replace(begin, place_of("\n", begin) - begin, replacement);
        return *this;
    }

    std::string m_text = at_lines({
        {1, "<PROFILER>"},
        {9, "<FUNCTION_LIST>"},
        {10,
         "<FUNCTION\nname='f'\nnum_compute_units='2'\nfilename='f.cl'\nline_number='7'\n"
         "original_name='of'\nuser_friendly_name='uf'\n/>"},
        {18, "</FUNCTION_LIST>"},
        {19, "<MODULE_LIST>"},
        {20, "<MODULE\nname='m'\nfunction='f'\nisKernelWrapper='true'\n/>"},
        {28, "</MODULE_LIST>"},
        {29, "<PORT_LIST>"},
        {30, "<PORT\ncntl_name='c'\nincr_name='n'\ntag='t'\ndesc='d'\nmodule='m'\nflag='3'\n/>"},
        {38, "</PORT_LIST>"},
        {39, "<MODULEINST_LIST>"},
        {40,
         "<MODULEINST\nname='i'\nfunction='f'\nmodule='m'\nattribute='a'\nisAutorun='true'\n"
         "sharedOn='false'\n>"},
        {50, "<DEBUG\nfile='d.cl'\nline='51'\ncolumn='52'\n>"},
        {60, "<CALLSITE\nfile='c.cl'\nline='61'\ncolumn='62'\n/>"},
        {68, "</DEBUG>"},
        {70, "<SIGNAL\ncntl_name='sc'\nincr_name='sn'\nport_tag='t'\n/>"},
        {77, "</MODULEINST>"},
        {78, "</MODULEINST_LIST>"},
        {79, "<CONNECTION_LIST>"},
        {80,
         "<CONNECTION\nmoduleinst='i'\nfunction='f'\ncompute_unit='1'\nshared_with='t'\n"
         "port_tag='t'\n/>"},
        {88, "</CONNECTION_LIST>"},
        {90, "</PROFILER>"},
    });
};

// Loads from memory. There is a model exactly if there is no error.
inline Loaded<profiler::ProfilerConfig> loaded(const std::string& xml) {
    auto result = load_with<profiler::ProfilerConfig>(profiler::ProfilerConfigXmlLoader(false), xml);
    EXPECT_EQ(result.model == nullptr, !result.errors.empty());
    return result;
}

// The model of a document that has to be valid; throws if it isn't.
inline std::unique_ptr<profiler::ProfilerConfig> config_of(const std::string& xml) {
    auto result = loaded(xml);
    if (!result.model)
        throw std::runtime_error("refused: " + testing::PrintToString(result.errors));
    return std::move(result.model);
}

inline std::unique_ptr<profiler::ProfilerConfig> config_of(const WholeDocument& document) {
    return config_of(document.text());
}

// Expects that the document is refused with exactly these messages.
inline void expect_refused(const std::string& xml, const std::vector<std::string>& errors) {
    const auto result = loaded(xml);
    EXPECT_EQ(result.model, nullptr);
    EXPECT_EQ(result.errors, errors);
}

inline void expect_refused(const WholeDocument& document, const std::vector<std::string>& errors) {
    expect_refused(document.text(), errors);
}

} // namespace zan::test
