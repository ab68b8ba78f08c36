// SPDX-License-Identifier: Apache-2.0
// The head comes first in a page and needs the numbers of all series, so the samples wait in the profile's
// store until it is written.
#include "view_page.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <zlib.h>

#include <charconv>
#include <new>
#include <optional>

#include "chunk_codec.h"
#include "contract.h"
#include "page_json.h"
#include "printable.h"
#include "series_table.h"
#include "view_head.h"

namespace zan::profile {
extern const std::string_view embedded_rules;     // of cmake/embed_text.cmake
extern const std::string_view embedded_view_page; // the same
} // namespace zan::profile

namespace zan::tool {

namespace {

using profile::ProfileColumns;

constexpr std::string_view digest_mark = "sha256:";

std::string packed_text(const std::string& text) {
    z_stream stream{};
    if (deflateInit2(&stream, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    std::string bytes(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
    // zlib only reads there.
    stream.next_in = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<unsigned char*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    const int status = deflate(&stream, Z_FINISH);
    bytes.resize(bytes.size() - stream.avail_out);
    deflateEnd(&stream);
    ZAN_CONTRACT(status == Z_STREAM_END, "status == Z_STREAM_END");
    return bytes;
}

// JSON as a page holds it: without blanks, and no text of it can end its element.
std::string safe_json(std::string_view json) {
    PageJsonText text;
    rapidjson::Writer<PageJsonText> writer(text);
    rapidjson::MemoryStream stream(json.data(), json.size());
    const rapidjson::ParseResult result = rapidjson::Reader().Parse(stream, writer);
    ZAN_CONTRACT(!result.IsError(), "the rules are JSON");
    return text.text();
}

// {"stall": ["percent", "less"], ...}: unit and direction by name.
std::string metrics_json() {
    constexpr std::string_view units[] = {"percent", "time", "cycles", "megabytes_per_second",
                                          "bytes",   "words"};
    constexpr std::string_view directions[] = {"more", "less", "neither"};
    PageJson json;
    json.begin_object();
    for (const profile::MetricRow& row : profile::metric_table()) {
        json.key(row.name).begin_array();
        json.text(units[static_cast<std::size_t>(row.unit)]);
        json.text(directions[static_cast<std::size_t>(row.better)]);
        json.end_array();
    }
    json.end_object();
    return json.result();
}

// One run of a page: its head, and its chunks, which are written after all heads.
class PagePart {
  public:
    PagePart(ProfileColumns& profile, std::span<const PageSource> sources)
        : m_profile(profile), m_sources(sources), m_table(profile.store) {
        std::vector<std::string> names;
        for (const PageSource& source : sources)
            names.push_back(source.name);
        PageJson json;
        write_head(json, profile, m_table, names);
        m_head = json.result();
    }
    const std::string& head() const { return m_head; }
    void write_chunks(PageOutput& out, char prefix) const {
        std::size_t number = 0;
        for (const profile::StoredChunk& chunk : m_table.chunks())
            write_chunk(out, prefix, number++, m_profile.store.packed(chunk));
        for (const PageSource& source : m_sources)
            write_chunk(out, prefix, number++, packed_text(source.text));
    }

  private:
    static void write_chunk(PageOutput& out, char prefix, std::size_t number, const std::string& bytes) {
        out.write("<script type=\"text/plain\" id=\"" + (prefix + std::to_string(number)) + "\">");
        out.write(profile::base64(bytes));
        out.write("</script>\n");
    }

    ProfileColumns& m_profile;
    std::span<const PageSource> m_sources;
    profile::SeriesTable m_table;
    std::string m_head;
};

} // namespace

std::string html_text(std::string_view text) {
    std::string result;
    for (const char c : valid_utf8(text)) {
        if (c == '<' || c == '>' || c == '&' || c == '"')
            result += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else
            result += c;
    }
    return result;
}

std::string base64_of_hex(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        unsigned value = 0;
        const auto [end, error] = std::from_chars(hex.data() + i, hex.data() + i + 2, value, 16);
        ZAN_CONTRACT(error == std::errc() && end == hex.data() + i + 2, "hex digits");
        bytes += static_cast<char>(value);
    }
    return profile::base64(bytes);
}

// The template's places are names between two @; other @ are its own.
void write_page(PageOutput& out, ProfileColumns& profile, std::span<const PageSource> sources,
                ProfileColumns* base) {
    const PagePart part(profile, sources);
    std::optional<PagePart> base_part;
    if (base)
        base_part.emplace(*base, std::span<const PageSource>());
    const auto fill = [&](std::string_view place) {
        if (place == "title") {
            out.write(html_text(shown_name(profile.summary.input)));
        } else if (place == "head") {
            out.write(part.head());
        } else if (place == "base") {
            out.write(base_part ? base_part->head() : std::string());
        } else if (place == "metrics") {
            out.write(metrics_json());
        } else if (place == "rules") {
            out.write(safe_json(profile::embedded_rules));
        } else if (place == "chunks") {
            part.write_chunks(out, 'd');
            if (base_part)
                base_part->write_chunks(out, 'b');
        } else if (place.starts_with(digest_mark)) {
            out.write(base64_of_hex(place.substr(digest_mark.size())));
        } else {
            return false;
        }
        return true;
    };
    std::string_view rest = profile::embedded_view_page;
    for (std::size_t at = rest.find('@'); at != std::string_view::npos; at = rest.find('@')) {
        out.write(rest.substr(0, at));
        const std::size_t end = rest.find('@', at + 1);
        if (end == std::string_view::npos || !fill(rest.substr(at + 1, end - at - 1))) {
            out.write("@");
            rest.remove_prefix(at + 1);
        } else {
            rest.remove_prefix(end + 1);
        }
    }
    out.write(rest);
}

} // namespace zan::tool
