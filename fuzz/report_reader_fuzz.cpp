// SPDX-License-Identifier: Apache-2.0
// Any text as a report. How it is cut into pieces makes no difference, and what was read is written so that
// it is read again as the same.
#include <cstdlib>
#include <string>

#include "byte_source.h"
#include "json_writer.h"
#include "report_reader.h"

namespace {

using namespace zan::profile;

class StringTarget final : public ByteTarget {
  public:
    explicit StringTarget(std::string& text) : m_text(text) {}
    bool write(const char* bytes, std::size_t size) override {
        m_text.append(bytes, size);
        return true;
    }

  private:
    std::string& m_text;
};

struct Reading {
    std::string written; // the nodes as text; without an end if there was a fault
    std::optional<ReportFault> fault;
    bool operator==(const Reading&) const = default;
};

Reading read_in_pieces(std::string_view text, std::size_t most) {
    Reading reading;
    StringTarget target(reading.written);
    TextBuffer buffer(target);
    JsonWriter writer(buffer);
    MemorySource source(text, most);
    reading.fault = read_report(source, writer);
    if (!reading.fault)
        writer.finish();
    buffer.flush();
    return reading;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const Reading whole = read_in_pieces(text, std::string_view::npos);
    const std::size_t most = size == 0 ? 1 : 1 + data[size - 1] % 64;
    if (read_in_pieces(text, most) != whole || read_in_pieces(text, 1) != whole)
        std::abort();
    if (whole.fault) {
        if (whole.fault->offset > size || whole.fault->text.empty())
            std::abort();
        return 0;
    }
    if (read_in_pieces(whole.written, std::string_view::npos) != Reading{whole.written, std::nullopt})
        std::abort();
    return 0;
}
