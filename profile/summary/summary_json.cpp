// SPDX-License-Identifier: Apache-2.0
#include "summary_json.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "json_document.h"
#include "summary_fields.h"
#include "utf8_text.h"
#include "value_text.h"

namespace zan::profile {

namespace {

// The archive that writes.
class SummaryWriter {
  public:
    explicit SummaryWriter(bool time_unit_known)
        : m_time_suffix(unit_suffix(MetricUnit::time, time_unit_known)), m_time_unit_known(time_unit_known) {}

    std::string document(const ProfileSummary& summary) {
        m_json.StartObject();
        text("schema", std::string(summary_schema));
        integer("schema_version", summary_schema_version);
        fields(*this, summary);
        m_json.EndObject();
        return std::string(m_buffer.GetString(), m_buffer.GetSize()) + "\n";
    }

    void text(const char* name, const std::string& value) {
        if (value.empty())
            return;
        key(name);
        string(value);
    }
    void flag(const char* name, bool value, bool usual) {
        if (value == usual)
            return;
        key(name);
        m_json.Bool(value);
    }
    void plain_number(const std::string& name, double value) {
        if (!std::isfinite(value))
            return;
        key(name);
        std::string text = exact_text(value);
        if (text == "-0") // which a reader takes for a whole number, and these have no sign of 0
            text = "-0.0";
        m_json.RawValue(text.data(), text.size(), rapidjson::kNumberType);
    }
    void number(const std::string& name, const Value& value) {
        if (value)
            plain_number(name, *value);
    }
    void time(const std::string& name, const Value& value) { number(name + m_time_suffix, value); }
    void plain_time(const std::string& name, double value) { plain_number(name + m_time_suffix, value); }
    void count(const char* name, std::uint64_t value) {
        if (value == 0)
            return;
        key(name);
        m_json.Uint64(value);
    }
    void integer(const char* name, int value) {
        if (value != 0)
            optional_integer(name, value);
    }
    void optional_integer(const char* name, const std::optional<int>& value) {
        if (!value)
            return;
        key(name);
        m_json.Int(*value);
    }
    void optional_count(const char* name, const std::optional<unsigned>& value) {
        if (!value)
            return;
        key(name);
        m_json.Uint(*value);
    }
    template <class Choice>
    void choice(const char* name, Choice value, Choice usual, std::span<const char* const> words) {
        if (value == usual)
            return;
        key(name);
        m_json.String(words[static_cast<std::size_t>(value)]);
    }
    void words(const char* name, const std::vector<std::string>& texts) { list(name, texts); }
    template <class Item>
    void list(const char* name, const std::vector<Item>& items) {
        if (items.empty())
            return;
        key(name);
        element(items);
    }
    template <class Item>
    void object(const char* name, const Item& item) {
        if (item == Item())
            return;
        key(name);
        element(item);
    }
    void metrics(const MetricValues& values) {
        for (const MetricRow& row : metric_table())
            number(std::string(row.name) + unit_suffix(row.unit, m_time_unit_known), values[row.metric]);
    }

  private:
    void key(std::string_view name) {
        m_json.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
    }
    void string(const std::string& value) {
        const std::string valid = valid_utf8_text(value);
        m_json.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    }
    void element(const std::string& value) { string(value); }
    template <class Item>
    void element(const std::vector<Item>& items) {
        m_json.StartArray();
        for (const Item& item : items)
            element(item);
        m_json.EndArray();
    }
    template <class Item>
    void element(const Item& item) {
        m_json.StartObject();
        fields(*this, item);
        m_json.EndObject();
    }

    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_json{m_buffer};
    const std::string m_time_suffix;
    const bool m_time_unit_known;
};

using SummaryNode = rapidjson::Value;

// Ends the reading; summary_from_json() returns what it holds.
struct SummaryUnreadable {
    SummaryFault fault;
};

// The archive that reads. Keys and texts of the nodes lie in the document's text itself, so a key's place is
// that of its member.
class SummaryReader {
  public:
    // For one object. `offset` is its place, or that of the key that it belongs to.
    SummaryReader(const SummaryNode& node, const char* text, std::uint64_t offset, bool time_unit_known)
        : m_node(node), m_text(text), m_offset(offset), m_time_unit_known(time_unit_known) {
        if (!node.IsObject())
            fail("expected an object");
    }

    void text(const char* name, std::string& value) {
        if (const SummaryNode* node = find(name))
            value = text_of(*node, name);
    }
    void flag(const char* name, bool& value, bool usual) {
        value = usual;
        const SummaryNode* node = find(name);
        if (node == nullptr)
            return;
        if (!node->IsBool())
            expected("true or false", name);
        value = node->GetBool();
    }
    void plain_number(const std::string& name, double& value) {
        if (const SummaryNode* node = find(name)) {
            if (!node->IsNumber())
                expected("a number", name);
            value = node->GetDouble();
        }
    }
    void number(const std::string& name, Value& value) {
        if (find(name) != nullptr)
            plain_number(name, value.emplace());
    }
    void time(const std::string& name, Value& value) { number(name + time_suffix(), value); }
    void plain_time(const std::string& name, double& value) { plain_number(name + time_suffix(), value); }
    template <class Count>
    void count(const char* name, Count& value) {
        const SummaryNode* node = find(name);
        if (node == nullptr)
            return;
        if (!node->IsUint64() || node->GetUint64() > std::numeric_limits<Count>::max())
            expected("a whole number", name);
        value = static_cast<Count>(node->GetUint64());
    }
    void integer(const char* name, int& value) {
        const SummaryNode* node = find(name);
        if (node == nullptr)
            return;
        if (!node->IsInt())
            expected("a whole number", name);
        value = node->GetInt();
    }
    void optional_integer(const char* name, std::optional<int>& value) {
        if (find(name) != nullptr)
            integer(name, value.emplace());
    }
    void optional_count(const char* name, std::optional<unsigned>& value) {
        if (find(name) != nullptr)
            count(name, value.emplace());
    }
    template <class Choice>
    void choice(const char* name, Choice& value, Choice usual, std::span<const char* const> words) {
        value = usual;
        const SummaryNode* node = find(name);
        if (node == nullptr)
            return;
        const std::string word = text_of(*node, name);
        for (std::size_t i = 0; i < words.size(); i++) {
            if (word == words[i]) {
                value = static_cast<Choice>(i);
                return;
            }
        }
        fail("unknown word for '" + std::string(name) + "'");
    }
    void words(const char* name, std::vector<std::string>& texts) { list(name, texts); }
    template <class Item>
    void list(const char* name, std::vector<Item>& items) {
        if (const SummaryNode* node = find(name))
            element(*node, name, items);
    }
    template <class Item>
    void object(const char* name, Item& item) {
        if (const SummaryNode* node = find(name))
            element(*node, name, item);
    }
    void metrics(MetricValues& values) {
        for (const MetricRow& row : metric_table())
            number(std::string(row.name) + unit_suffix(row.unit, m_time_unit_known), values[row.metric]);
    }

  private:
    [[noreturn]] void fail(const std::string& text) const { throw SummaryUnreadable{{m_offset, text}}; }
    [[noreturn]] void expected(const char* what, const std::string& name) const {
        fail("expected " + std::string(what) + " for '" + name + "'");
    }
    const char* time_suffix() const { return unit_suffix(MetricUnit::time, m_time_unit_known); }

    // Null if there is no such member; else it becomes the place of faults.
    const SummaryNode* find(const std::string& name) {
        const auto member = m_node.FindMember(name.c_str());
        if (member == m_node.MemberEnd())
            return nullptr;
        m_offset = static_cast<std::uint64_t>(member->name.GetString() - m_text);
        return &member->value;
    }
    std::string text_of(const SummaryNode& node, const std::string& name) const {
        if (!node.IsString())
            expected("a text", name);
        return {node.GetString(), node.GetStringLength()};
    }
    void element(const SummaryNode& node, const char* name, std::string& value) const {
        value = text_of(node, name);
    }
    template <class Item>
    void element(const SummaryNode& node, const char* name, std::vector<Item>& items) const {
        if (!node.IsArray())
            expected("a list", name);
        items.resize(node.Size());
        for (rapidjson::SizeType i = 0; i < node.Size(); i++)
            element(node[i], name, items[i]);
    }
    template <class Item>
    void element(const SummaryNode& node, const char* name, Item& item) const {
        if (!node.IsObject())
            expected("an object", name);
        SummaryReader reader(node, m_text, m_offset, m_time_unit_known);
        fields(reader, item);
    }

    const SummaryNode& m_node;
    const char* const m_text;
    std::uint64_t m_offset;
    const bool m_time_unit_known;
};

// What is wrong with the head of a document; nothing if it is a summary that can be read.
void check_head(const SummaryNode& root, const char* text) {
    SummaryReader reader(root, text, 0, false);
    std::string schema;
    reader.text("schema", schema);
    if (schema != summary_schema)
        throw SummaryUnreadable{
            {0, "this is no summary: its schema isn't '" + std::string(summary_schema) + "'"}};
    int version = 0;
    reader.integer("schema_version", version);
    if (version != summary_schema_version)
        throw SummaryUnreadable{{0, "its schema_version is " + std::to_string(version) + ", and only " +
                                        std::to_string(summary_schema_version) + " can be read"}};
}

} // namespace

std::string summary_to_json(const ProfileSummary& summary) {
    return SummaryWriter(summary.nanoseconds.has_value()).document(summary);
}

bool begins_as_summary(std::string_view beginning) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto skip_blanks = [&] {
        beginning.remove_prefix(std::min(beginning.find_first_not_of(blanks), beginning.size()));
    };
    skip_blanks();
    if (!beginning.starts_with('{'))
        return false;
    beginning.remove_prefix(1);
    skip_blanks();
    return beginning.starts_with("\"schema\"");
}

std::string describe(const SummaryFault& fault) {
    return "byte " + std::to_string(fault.offset) + ": " + fault.text;
}

std::variant<ProfileSummary, SummaryFault> summary_from_json(std::string text) {
    // A zero byte would end the text for the parser.
    if (const std::size_t zero = text.find('\0'); zero != std::string::npos)
        return SummaryFault{zero, "a zero byte"};
    rapidjson::Document document;
    if (auto fault = read_json(text, document))
        return SummaryFault{fault->offset, std::move(fault->text)};
    try {
        check_head(document, text.data());
        ProfileSummary summary;
        SummaryReader reader(document, text.data(), 0, document.HasMember("time_unit_ns"));
        fields(reader, summary);
        return summary;
    } catch (const SummaryUnreadable& unreadable) {
        return unreadable.fault;
    }
}

} // namespace zan::profile
