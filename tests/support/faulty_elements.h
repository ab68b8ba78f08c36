// SPDX-License-Identifier: Apache-2.0
// Documents with one fault each, at every element in turn.
#pragma once

#include <tinyxml2.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace zan::test {

struct FaultyElement {
    std::string name;
    std::string text; // the whole document
};

inline void list_elements(tinyxml2::XMLNode& node, std::vector<tinyxml2::XMLElement*>& elements) {
    for (tinyxml2::XMLElement* child = node.FirstChildElement(); child; child = child->NextSiblingElement()) {
        elements.push_back(child);
        list_elements(*child, elements);
    }
}

// For each element the document in which it has an attribute `x` and, in front of all that stands in it, an
// element `odd`.
inline std::vector<FaultyElement> faulty_elements(const std::string& xml) {
    std::vector<FaultyElement> result;
    for (std::size_t i = 0;; ++i) {
        tinyxml2::XMLDocument document;
        if (document.Parse(xml.c_str()) != tinyxml2::XML_SUCCESS)
            throw std::logic_error("no XML: " + xml);
        std::vector<tinyxml2::XMLElement*> elements;
        list_elements(document, elements);
        if (i == elements.size())
            return result;
        elements[i]->SetAttribute("x", 1);
        elements[i]->InsertFirstChild(document.NewElement("odd"));
        tinyxml2::XMLPrinter printer;
        document.Print(&printer);
        result.push_back({elements[i]->Name(), printer.CStr()});
    }
}

} // namespace zan::test
