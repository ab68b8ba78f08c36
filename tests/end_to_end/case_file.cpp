// SPDX-License-Identifier: Apache-2.0
#include "case_file.h"
#include "whole_file.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

// A headline "--- word ... (option, option)" and the bytes below it.
struct Part {
    int line = 0;
    std::string headline; // without the options
    std::set<std::string> options;
    std::string bytes;
};

[[noreturn]] void fail(int line, const std::string& what) {
    throw std::runtime_error("line " + std::to_string(line) + ": " + what);
}

std::string_view trimmed(std::string_view text) {
    while (text.starts_with(' '))
        text.remove_prefix(1);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

// Takes everything up to `end` away from the front of the text, `end` too, and returns it.
std::string_view take_until(std::string_view& text, char end) {
    const std::size_t size = std::min(text.find(end), text.size());
    const std::string_view taken = text.substr(0, size);
    text.remove_prefix(std::min(size + 1, text.size()));
    return taken;
}

Part parse_headline(std::string_view headline, int line) {
    Part part;
    part.line = line;
    std::string_view options;
    if (const std::size_t open = headline.rfind('('); headline.ends_with(')') && open != headline.npos) {
        options = headline.substr(open + 1, headline.size() - open - 2);
        headline = headline.substr(0, open);
    }
    part.headline = trimmed(headline);
    while (!options.empty())
        part.options.emplace(trimmed(take_until(options, ',')));
    return part;
}

int hexadecimal_digit(char digit, int line) {
    constexpr std::string_view digits = "0123456789abcdef";
    const std::size_t value = digits.find(digit);
    if (value == digits.npos)
        fail(line, "an escape \\x takes two digits of 0123456789abcdef");
    return static_cast<int>(value);
}

std::string unescaped(std::string_view text, int line) {
    static const std::map<char, char> short_escapes = {
        {'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'0', '\0'}, {'\\', '\\'}};
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            bytes += text[i];
            continue;
        }
        // The text ends in a newline, so there is a character after each backslash.
        const char kind = text[++i];
        if (const auto known = short_escapes.find(kind); known != short_escapes.end()) {
            bytes += known->second;
        } else if (kind == 'x' && i + 2 < text.size()) {
            const int high = hexadecimal_digit(text[++i], line);
            bytes += static_cast<char>(high * 16 + hexadecimal_digit(text[++i], line));
        } else {
            fail(line, std::string("unknown escape \\") + kind);
        }
    }
    return bytes;
}

// Applies and uses up the options of a part.
void apply_options(Part& part) {
    if (part.options.erase("escapes"))
        part.bytes = unescaped(part.bytes, part.line);
    if (part.options.erase("no final newline")) {
        if (!part.bytes.ends_with('\n'))
            fail(part.line, "there is no final newline to leave out");
        part.bytes.pop_back();
    }
    if (!part.options.empty())
        fail(part.line, "unknown option (" + *part.options.begin() + ")");
}

// The parts of a case; what stands before the first headline goes to `title`.
std::vector<Part> split(std::string_view text, std::string& title) {
    if (!text.empty() && !text.ends_with('\n'))
        throw std::runtime_error("the file's last line has no newline");
    constexpr std::string_view mark = "--- ";
    std::vector<Part> parts;
    for (int line = 1; !text.empty(); ++line) {
        const std::string_view content = take_until(text, '\n');
        if (content.starts_with(mark)) {
            parts.push_back(parse_headline(content.substr(mark.size()), line));
        } else if (!parts.empty()) {
            parts.back().bytes.append(content).append("\n");
        } else if (content.starts_with("# ")) {
            title.append(content.substr(2)).append("\n");
        } else {
            fail(line, "only lines with \"# \" may stand ahead of the first part");
        }
    }
    for (Part& part : parts)
        apply_options(part);
    return parts;
}

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty())
        lines.emplace_back(take_until(text, '\n'));
    return lines;
}

std::string only_line(const Part& part) {
    const std::vector<std::string> lines = lines_of(part.bytes);
    if (lines.size() != 1)
        fail(part.line, "'" + part.headline + "' takes one line");
    return lines.front();
}

void expect_no_lines(const Part& part) {
    if (!part.bytes.empty())
        fail(part.line, "'" + part.headline + "' takes no lines");
}

// The nodes of an array at their place in the frame; an array without nodes is an empty text.
std::string array_text(const std::string& nodes) {
    return nodes.empty() ? " \"\"" : "\n        [\n" + nodes + "        ]";
}

// Builds a case from its parts. One row for each kind of part.
class CaseBuilder {
  public:
    explicit CaseBuilder(const ReportFrame& frame) : m_frame(frame) {}

    void add(const Part& part);
    TestCase finish();

    TestCase result;

  private:
    using Handler = void (CaseBuilder::*)(const Part& part, const std::string& name);
    struct Kind {
        std::string_view word;
        bool has_name;
        Handler handler;
    };
    static const Kind kinds[];

    void section(const Part& part, const std::string& name) {
        if (!result.package)
            result.package.emplace();
        result.package->emplace_back(name, part.bytes);
    }
    void empty_package(const Part& part, const std::string&) {
        expect_no_lines(part);
        result.package.emplace();
    }
    // The package that the frame is the report of.
    void plain_package(const Part& part, const std::string&) {
        expect_no_lines(part);
        result.package = {{".zan.version", "1.0\n"}, {".zan.velmora_report", "Actual clock freq: 100.0\n"}};
    }
    void no_board(const Part& part, const std::string&) {
        expect_no_lines(part);
        m_has_board = false;
    }
    void add_board();
    void mon(const Part& part, const std::string&) { file(part, "profile.mon"); }
    void file(const Part& part, const std::string& name) {
        result.inputs.push_back({CaseInput::file, name, part.bytes});
    }
    void pipe(const Part& part, const std::string& name) {
        result.inputs.push_back({CaseInput::pipe, name, part.bytes});
    }
    void folder(const Part& part, const std::string& name) {
        expect_no_lines(part);
        result.inputs.push_back({CaseInput::folder, name, ""});
    }
    void link(const Part& part, const std::string& name) {
        result.inputs.push_back({CaseInput::link, name, only_line(part)});
    }
    void args(const Part& part, const std::string&) { result.arguments = lines_of(part.bytes); }
    void out(const Part& part, const std::string&) { result.out = part.bytes; }
    void err(const Part& part, const std::string&) { result.err = part.bytes; }
    void status(const Part& part, const std::string&) { result.status = only_line(part); }
    void report(const Part& part, const std::string&) { result.report = part.bytes; }
    void kernels(const Part& part, const std::string&) { m_kernels = part.bytes; }
    void transfers(const Part& part, const std::string&) { m_transfers = part.bytes; }

    const ReportFrame& m_frame;
    std::set<std::string> m_seen;
    bool m_has_board = true;
    std::optional<std::string> m_kernels;
    std::optional<std::string> m_transfers;
};

const CaseBuilder::Kind CaseBuilder::kinds[] = {
    {"section", true, &CaseBuilder::section},
    {"empty package", false, &CaseBuilder::empty_package},
    {"plain package", false, &CaseBuilder::plain_package},
    {"no board", false, &CaseBuilder::no_board},
    {"mon", false, &CaseBuilder::mon},
    {"file", true, &CaseBuilder::file},
    {"pipe", true, &CaseBuilder::pipe},
    {"folder", true, &CaseBuilder::folder},
    {"link", true, &CaseBuilder::link},
    {"args", false, &CaseBuilder::args},
    {"stdout", false, &CaseBuilder::out},
    {"stderr", false, &CaseBuilder::err},
    {"status", false, &CaseBuilder::status},
    {"report", false, &CaseBuilder::report},
    {"kernels", false, &CaseBuilder::kernels},
    {"memtransfers", false, &CaseBuilder::transfers},
};

void CaseBuilder::add(const Part& part) {
    if (!m_seen.insert(part.headline).second)
        fail(part.line, "there are two parts '" + part.headline + "'");
    for (const Kind& kind : kinds) {
        if (!kind.has_name && part.headline == kind.word)
            return (this->*kind.handler)(part, "");
        const std::string start = std::string(kind.word) + " ";
        if (kind.has_name && part.headline.starts_with(start))
            return (this->*kind.handler)(part, part.headline.substr(start.size()));
    }
    fail(part.line, "unknown part '" + part.headline + "'");
}

// A package with sections has a board, too.
void CaseBuilder::add_board() {
    constexpr const char* section = ".zan.board_spec.xml";
    const bool has_sections = result.package && !result.package->empty();
    if (m_has_board && has_sections && !m_seen.contains(std::string("section ") + section))
        result.package->emplace_back(section, m_frame.board_spec);
}

TestCase CaseBuilder::finish() {
    add_board();
    if (m_kernels || m_transfers) {
        if (result.report)
            throw std::runtime_error("'report' leaves no room for 'kernels' and 'memtransfers'");
        result.report = replaced(m_frame.frame, " @KERNELS@", array_text(m_kernels.value_or("")));
        result.report = replaced(*result.report, " @MEMTRANSFERS@", array_text(m_transfers.value_or("")));
    }
    if (result.report) {
        result.report = replaced(*result.report, " @BOARDS@", array_text(m_frame.board_nodes));
        result.report = replaced(*result.report, "@VERSION@", m_frame.version);
    }
    return std::move(result);
}

} // namespace

ReportFrame read_frame(const std::filesystem::path& folder, const std::string& version) {
    return {read_file(folder / "frame.json"), version, read_file(folder / "board_spec.xml"),
            read_file(folder / "board_nodes.json")};
}

TestCase parse_case(std::string_view text, const ReportFrame& frame) {
    CaseBuilder builder(frame);
    const std::vector<Part> parts = split(text, builder.result.title);
    if (builder.result.title.empty())
        fail(1, "a case starts with a title, \"# \" and what it shows");
    for (const Part& part : parts)
        builder.add(part);
    return builder.finish();
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}
