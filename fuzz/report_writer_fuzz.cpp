// SPDX-License-Identifier: Apache-2.0
// Any document, written as a report and read back: it is JSON, and every text is read back.
#include <boost/property_tree/json_parser.hpp>
#include <cstdlib>
#include <sstream>
#include <string>

#include "fuzzed_document.h"

namespace {

using Document = boost::property_tree::ptree;

// A report has bytes from 0x80 up as code points of their own, which a reader of JSON turns into UTF-8.
std::string as_read(const std::string& text) {
    std::string read;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            read += c;
        } else {
            read += static_cast<char>(0xC0 | byte >> 6);
            read += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return read;
}

Document as_read(const Document& document) {
    Document read(as_read(document.data()));
    for (const auto& [key, child] : document)
        read.push_back({as_read(key), as_read(child)});
    return read;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ptree tree = make_document(data, size);
    std::stringstream text;
    write_report(text, tree);
    Document read;
    boost::property_tree::read_json(text, read);
    if (read != as_read(expanded(tree)))
        std::abort();
    return 0;
}
