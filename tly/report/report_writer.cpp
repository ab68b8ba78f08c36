// The text form of the report.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <boost/property_tree/json_parser/error.hpp>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

#include "folded_nodes.h"
#include "report_tree.h"

namespace {

using boost::property_tree::json_parser::json_parser_error;

constexpr std::size_t indent_width = 4;

// What stands for each byte inside quotes: nothing, if the byte stands for itself.
using EscapeTable = std::array<std::array<char, 7>, 256>;

constexpr EscapeTable make_escapes() {
    EscapeTable table{};
    constexpr char digits[] = "0123456789ABCDEF";
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        if (byte < 0x20 || byte > 0x7F)
            table[byte] = {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15], 0};
    }
    table['\b'] = {'\\', 'b'};
    table['\f'] = {'\\', 'f'};
    table['\n'] = {'\\', 'n'};
    table['\r'] = {'\\', 'r'};
    table['/'] = {'\\', '/'};
    table['"'] = {'\\', '"'};
    table['\\'] = {'\\', '\\'};
    return table;
}

constexpr EscapeTable escapes = make_escapes();

// Takes the finished bytes; false once the target has refused any.
class Target {
  public:
    virtual ~Target() = default;
    virtual bool write(const char* bytes, std::size_t size) = 0;
};

class StreamTarget final : public Target {
  public:
    explicit StreamTarget(std::ostream& stream) : m_stream(stream) {}
    bool write(const char* bytes, std::size_t size) override {
        return m_stream.write(bytes, static_cast<std::streamsize>(size)).good();
    }

  private:
    std::ostream& m_stream;
};

class FileTarget final : public Target {
  public:
    explicit FileTarget(const std::string& path)
        : m_fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
        if (m_fd < 0)
            throw json_parser_error("cannot open file", path, 0);
    }
    FileTarget(const FileTarget&) = delete;
    FileTarget& operator=(const FileTarget&) = delete;
    ~FileTarget() override {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    bool write(const char* bytes, std::size_t size) override {
        while (size != 0) {
            const ssize_t written = ::write(m_fd, bytes, size);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return false;
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
        return true;
    }
    // Some file systems tell only here that the bytes could not be stored.
    bool close() { return ::close(std::exchange(m_fd, -1)) == 0; }

  private:
    int m_fd;
};

// One large buffer in front of a target.
class TextBuffer {
  public:
    explicit TextBuffer(Target& target) : m_target(target), m_bytes(new char[capacity]) {}

    // Makes room for `size` bytes, at most the capacity, and gives the place to write them. advance() takes
    // them in.
    char* reserve(std::size_t size) {
        if (capacity - m_size < size)
            flush();
        return m_bytes.get() + m_size;
    }
    void advance(const char* end) { m_size = static_cast<std::size_t>(end - m_bytes.get()); }

    void append(const char* bytes, std::size_t size) {
        while (size > capacity - m_size) {
            const std::size_t part = capacity - m_size;
            std::memcpy(m_bytes.get() + m_size, bytes, part);
            m_size = capacity;
            flush();
            bytes += part;
            size -= part;
        }
        std::memcpy(m_bytes.get() + m_size, bytes, size);
        m_size += size;
    }
    void append(std::string_view text) { append(text.data(), text.size()); }
    // A literal has a size that the compiler knows, which makes the copy an instruction or two.
    template <std::size_t size>
    void append(const char (&literal)[size]) {
        std::memcpy(reserve(size - 1), literal, size - 1);
        m_size += size - 1;
    }
    void append_blanks(std::size_t count) {
        static constexpr std::string_view blanks =
            "                                                                ";
        for (; count > blanks.size(); count -= blanks.size())
            append(blanks);
        std::memcpy(reserve(blanks.size()), blanks.data(), blanks.size());
        m_size += count;
    }
    void append_quoted(std::string_view text) {
        constexpr std::size_t longest_piece = 4096;
        char* const out = reserve(std::min(text.size(), longest_piece) + 2);
        *out = '"';
        if (text.size() <= longest_piece && copy_plain(text, out + 1)) {
            out[text.size() + 1] = '"';
            advance(out + text.size() + 2);
            return;
        }
        advance(out + 1);
        for (; text.size() > longest_piece; text.remove_prefix(longest_piece))
            append_escaped(text.substr(0, longest_piece));
        append_escaped(text);
        append("\"");
    }

    void flush() {
        m_good = m_good && m_target.write(m_bytes.get(), m_size);
        m_size = 0;
    }
    bool good() const { return m_good; }

  private:
    static constexpr std::size_t capacity = std::size_t{1} << 18;

    // Copies a text that has nothing to escape, as nearly all are; else gives false.
    static bool copy_plain(std::string_view text, char* out) {
        if (text.size() >= sizeof(std::uint64_t))
            return copy_plain_blocks<std::uint64_t>(text, out);
        if (text.size() >= sizeof(std::uint32_t))
            return copy_plain_blocks<std::uint32_t>(text, out);
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (escape_of(text[i])[0] != 0)
                return false;
            out[i] = text[i];
        }
        return true;
    }
    // The text is a block or longer. The last block starts where it ends with the text, so it may copy some
    // bytes again.
    template <class Block>
    static bool copy_plain_blocks(std::string_view text, char* out) {
        const std::size_t last = text.size() - sizeof(Block);
        for (std::size_t begin = 0;; begin = std::min(begin + sizeof(Block), last)) {
            Block block;
            std::memcpy(&block, text.data() + begin, sizeof block);
            if (!is_plain(block))
                return false;
            std::memcpy(out + begin, &block, sizeof block);
            if (begin == last)
                return true;
        }
    }

    void append_escaped(std::string_view text) {
        constexpr std::size_t longest_escape = 6;
        const char* position = text.data();
        const char* const end = position + text.size();
        char* out = reserve(text.size() * longest_escape);
        for (; position != end; ++position) {
            const char* const escape = escape_of(*position);
            if (escape[0] == 0)
                *out++ = *position;
            else
                out = std::copy_n(escape, std::strlen(escape), out);
        }
        advance(out);
    }

    // Whether each byte of a block stands for itself. One that doesn't has or gets its highest bit, or makes
    // one above it get that by a borrow, which is as good.
    template <class Block>
    static bool is_plain(Block bytes) {
        constexpr Block ones = static_cast<Block>(0x0101'0101'0101'0101);
        constexpr Block highest = 0x80 * ones;
        const auto below = [&](Block word, Block limit) { return (word - limit * ones) & ~word; };
        const auto equal = [&](char byte) {
            return below(bytes ^ static_cast<unsigned char>(byte) * ones, 1);
        };
        return ((bytes | below(bytes, 0x20) | equal('"') | equal('\\') | equal('/')) & highest) == 0;
    }

    static const char* escape_of(char byte) { return escapes[static_cast<unsigned char>(byte)].data(); }

    Target& m_target;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    bool m_good = true;
};

// Calls `visit(node, depth)` for the root and each node below it, without recursion.
template <class Visit>
void for_each_node(const ptree& root, Visit visit) {
    std::vector<const ptree*> open{&root};
    while (!open.empty()) {
        const ptree* node = open.back();
        open.pop_back();
        visit(*node);
        for (const auto& entry : *node)
            open.push_back(&entry.second);
    }
}

void verify(const ptree& root, const std::string& path) {
    bool sound = root.data().text().empty();
    for_each_node(root,
                  [&](const ptree& node) { sound = sound && (node.empty() || node.data().text().empty()); });
    if (!sound)
        throw json_parser_error("ptree contains data that cannot be represented in JSON format", path, 0);
}

// The text of nodes, told one after the other. Those that are open stand on a list.
class NodeText {
  public:
    explicit NodeText(TextBuffer& out) : m_out(out) {}

    // The root is an object in any case.
    void open_root() { open_items(false); }
    void open(std::string_view key, bool is_array) {
        begin_item();
        if (!m_open.back().is_array) {
            m_out.append_quoted(key);
            m_out.append(":\n");
            m_out.append_blanks(m_open.size() * indent_width);
        }
        open_items(is_array);
    }
    void close() {
        const OpenNode closed = m_open.back();
        m_open.pop_back();
        if (closed.has_items)
            m_out.append("\n");
        m_out.append_blanks(m_open.size() * indent_width);
        m_out.append(closed.is_array ? "]" : "}");
    }
    void leaf(std::string_view key, std::string_view text) {
        begin_item();
        if (!m_open.back().is_array) {
            m_out.append_quoted(key);
            m_out.append(": ");
        }
        m_out.append_quoted(text);
    }
    // Numbers as further items of the node that was opened last; there is at least one. `read(begin, count,
    // numbers)` gives them, some at a time.
    template <class T, class Read>
    void numbers(std::size_t size, Read read) {
        const bool in_array = m_open.back().is_array;
        const std::string& separator = separator_of(m_open.size(), in_array);
        begin_item();
        m_out.append(in_array ? "\"" : "\"\": \"");
        if (separator.size() <= short_separator)
            write_numbers<T>(size, read, separator);
        else
            write_numbers_far_in<T>(size, read, separator);
        m_out.append("\"");
    }
    template <class T>
    void numbers(const SampleList<T>& list) {
        numbers<T>(list.size(), [&](std::size_t begin, std::size_t count, T* numbers) {
            list.read(begin, count, numbers);
        });
    }

  private:
    struct OpenNode {
        bool is_array;
        bool has_items;
    };
    static constexpr std::size_t short_separator = 64;
    static constexpr std::size_t chunk = 256; // values that are read at once

    void open_items(bool is_array) {
        m_out.append(is_array ? "[\n" : "{\n");
        m_open.push_back({is_array, false});
    }
    void begin_item() {
        OpenNode& parent = m_open.back();
        if (parent.has_items)
            m_out.append(",\n");
        parent.has_items = true;
        m_out.append_blanks(m_open.size() * indent_width);
    }

    // What stands between two values is the same for all of them.
    const std::string& separator_of(std::size_t depth, bool in_array) {
        std::vector<std::string>& separators = m_separators[in_array ? 1 : 0];
        while (separators.size() <= depth)
            separators.push_back("\",\n" + std::string(separators.size() * indent_width, ' ') +
                                 (in_array ? "\"" : "\"\": \""));
        return separators[depth];
    }

    // Nearly all values of a report go through here. Each is followed by a whole block that starts with the
    // separator: copying a fixed size takes a few instructions, and what is too much is overwritten.
    template <class T, class Read>
    void write_numbers(std::size_t size, Read read, const std::string& separator) {
        std::array<char, short_separator> block{};
        separator.copy(block.data(), block.size());
        std::array<T, chunk> numbers;
        for (std::size_t begin = 0; begin < size; begin += chunk) {
            const std::size_t count = std::min(chunk, size - begin);
            read(begin, count, numbers.data());
            char* out = m_out.reserve(count * (max_number_text + block.size()));
            for (std::size_t i = 0; i < count; ++i) {
                out = write_number(out, numbers[i]);
                std::memcpy(out, block.data(), block.size());
                out += separator.size();
            }
            if (begin + count == size)
                out -= separator.size();
            m_out.advance(out);
        }
    }

    template <class T, class Read>
    void write_numbers_far_in(std::size_t size, Read read, const std::string& separator) {
        for (std::size_t i = 0; i < size; ++i) {
            if (i != 0)
                m_out.append(separator);
            T number;
            read(i, 1, &number);
            m_out.advance(write_number(m_out.reserve(max_number_text), number));
        }
    }

    TextBuffer& m_out;
    std::vector<OpenNode> m_open;
    std::array<std::vector<std::string>, 2> m_separators; // by depth; in objects, in arrays
};

// Writes folded nodes. Whether a node is a leaf, an array or an object shows with what comes next.
class TextSink final : public ReportSink {
  public:
    explicit TextSink(NodeText& out) : m_out(out) {}

    void text(std::string_view key, std::string_view text) override {
        open_pending(key);
        m_out.leaf(key, text);
    }
    void open(std::string_view key, Form /*form*/) override {
        open_pending(key);
        m_pending = key;
    }
    void close() override {
        if (m_pending)
            m_out.leaf(*std::exchange(m_pending, std::nullopt), "");
        else
            m_out.close();
    }
    void array(std::string_view key, const ReportArray& values) override {
        open_pending(key);
        m_out.open(key, true);
        values.visit([&](const auto& numbers) { write_numbers(numbers); });
        m_out.close();
    }

  private:
    void open_pending(std::string_view first_key) {
        if (m_pending)
            m_out.open(*std::exchange(m_pending, std::nullopt), first_key.empty());
    }
    template <class T>
    void write_numbers(const SampleList<T>& values) {
        m_out.numbers(values);
    }
    template <class T>
    void write_numbers(std::span<const T> values) {
        m_out.numbers<T>(values.size(), [&](std::size_t begin, std::size_t size, T* numbers) {
            std::copy_n(values.data() + begin, size, numbers);
        });
    }

    NodeText& m_out;
    std::optional<std::string_view> m_pending; // the key of a node that nothing has been told of yet
};

// Writes a verified tree. The depth of the report is not bounded by the size of the stack.
class TreeWriter {
  public:
    explicit TreeWriter(TextBuffer& out) : m_buffer(out), m_out(out) {}

    void write(const ptree& root) {
        m_out.open_root();
        enter(root);
        while (!m_open.empty()) {
            OpenNode& node = m_open.back();
            if (node.next == node.end) {
                m_open.pop_back();
                m_out.close();
                continue;
            }
            const auto& [key, child] = *node.next++;
            if (is_leaf(child)) {
                m_out.leaf(key, child.data().text());
            } else {
                m_out.open(key, is_array(child));
                enter(child);
            }
        }
        m_buffer.append("\n");
    }

  private:
    struct OpenNode {
        ptree::const_iterator next;
        ptree::const_iterator end;
    };

    static bool has_folded(const ptree& node) {
        const FoldedNodes* nodes = node.data().folded();
        return nodes && !nodes->empty();
    }
    static bool is_leaf(const ptree& node) {
        return node.empty() && !node.data().is_packed() && !has_folded(node);
    }
    // Folded nodes are kept in arrays only.
    static bool is_array(const ptree& node) {
        for (const auto& entry : node) {
            if (!entry.first.empty())
                return false;
        }
        return true;
    }

    // Writes the items that stand in front of the node's children.
    void enter(const ptree& node) {
        m_open.push_back({node.begin(), node.end()});
        node.data().visit_packed([&](const auto& values) { m_out.numbers(values); });
        if (has_folded(node)) {
            TextSink sink(m_out);
            node.data().folded()->write_to(sink);
        }
    }

    TextBuffer& m_buffer;
    NodeText m_out;
    std::vector<OpenNode> m_open;
};

// Verifies and writes; false if the target refused a byte.
bool write_text(Target& target, const ptree& tree, const std::string& path) {
    verify(tree, path);
    TextBuffer out(target);
    TreeWriter(out).write(tree);
    out.flush();
    return out.good();
}

} // namespace

void write_report(const std::string& path, const ptree& tree) {
    FileTarget file(path);
    const bool written = write_text(file, tree, path);
    if (!file.close() || !written)
        throw json_parser_error("write error", path, 0);
}

void write_report(std::ostream& stream, const ptree& tree) {
    StreamTarget target(stream);
    const bool written = write_text(target, tree, std::string());
    if (!written || !stream.flush().good())
        throw json_parser_error("write error", std::string(), 0);
}
