// SPDX-License-Identifier: Apache-2.0
// A report's text, read and written again.
#pragma once

#include <sstream>
#include <string>

#include "json_writer.h"
#include "report_reader.h"

// The text that the report's nodes are written as; where it can't be read, the fault. The reader gets at most
// `most` bytes at a time.
inline std::string reread(const std::string& report, std::size_t most = std::string::npos) {
    std::ostringstream stream;
    StreamTarget target(stream);
    TextBuffer buffer(target);
    JsonWriter writer(buffer);
    zan::profile::MemorySource source(report, most);
    if (const auto fault = read_report(source, writer))
        return describe(*fault);
    writer.finish();
    buffer.flush();
    return stream.str();
}
