// SPDX-License-Identifier: Apache-2.0
#include "json_output.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <unistd.h>

#include <cmath>

#include "files.h"
#include "printable.h"

namespace zan::tool {

namespace {

constexpr std::size_t json_piece = 1 << 16;

rapidjson::SizeType json_size(std::string_view text) {
    return static_cast<rapidjson::SizeType>(text.size());
}

} // namespace

struct JsonOutput::Writer {
    explicit Writer(TextTarget text_target) : target(std::move(text_target)) {}

    void hand_on() {
        target(std::string_view(buffer.GetString(), buffer.GetSize()));
        buffer.Clear();
    }

    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> json{buffer};
    TextTarget target;
};

TextTarget standard_output_target() {
    return [](std::string_view text) { write_all(STDOUT_FILENO, text.data(), text.size(), standard_output); };
}

JsonOutput::JsonOutput(std::string_view schema, int version, TextTarget target)
    : m_writer(std::make_unique<Writer>(std::move(target))) {
    m_writer->json.StartObject();
    member("schema", schema);
    member("schema_version", version);
}

JsonOutput::~JsonOutput() = default;

void JsonOutput::write_key(std::string_view key) {
    const std::string text = valid_utf8(key);
    m_writer->json.Key(text.data(), json_size(text), true);
}

void JsonOutput::element(std::string_view value) {
    const std::string text = valid_utf8(value);
    m_writer->json.String(text.data(), json_size(text), true);
    hand_on_when_full();
}

void JsonOutput::element(std::uint64_t value) {
    m_writer->json.Uint64(value);
    hand_on_when_full();
}

void JsonOutput::element(std::int64_t value) {
    m_writer->json.Int64(value);
    hand_on_when_full();
}

void JsonOutput::element(double value) {
    if (std::isfinite(value))
        m_writer->json.Double(value);
    else
        m_writer->json.Null();
    hand_on_when_full();
}

void JsonOutput::element(bool value) {
    m_writer->json.Bool(value);
    hand_on_when_full();
}

void JsonOutput::element(std::nullptr_t) {
    m_writer->json.Null();
    hand_on_when_full();
}

void JsonOutput::begin_object(std::string_view key) {
    write_key(key);
    begin_object();
}

void JsonOutput::begin_object() {
    m_writer->json.StartObject();
}

void JsonOutput::end_object() {
    m_writer->json.EndObject();
    hand_on_when_full();
}

void JsonOutput::begin_array(std::string_view key) {
    write_key(key);
    begin_array();
}

void JsonOutput::begin_array() {
    m_writer->json.StartArray();
}

void JsonOutput::end_array() {
    m_writer->json.EndArray();
    hand_on_when_full();
}

void JsonOutput::finish() {
    m_writer->json.EndObject();
    m_writer->buffer.Put('\n');
    m_writer->hand_on();
}

void JsonOutput::hand_on_when_full() {
    if (m_writer->buffer.GetSize() >= json_piece)
        m_writer->hand_on();
}

} // namespace zan::tool
