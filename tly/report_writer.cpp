// The text form of the report.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <boost/property_tree/json_parser/error.hpp>
#include <cerrno>
#include <cstring>
#include <memory>

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
    void append_blanks(std::size_t count) {
        static constexpr std::string_view blanks =
            "                                                                ";
        for (; count > blanks.size(); count -= blanks.size())
            append(blanks);
        append(blanks.substr(0, count));
    }
    void append_quoted(std::string_view text) {
        append("\"");
        while (!text.empty()) {
            std::size_t plain = 0;
            while (plain < text.size() && escape_of(text[plain])[0] == 0)
                ++plain;
            append(text.substr(0, plain));
            text.remove_prefix(plain);
            if (!text.empty()) {
                append(std::string_view(escape_of(text.front())));
                text.remove_prefix(1);
            }
        }
        append("\"");
    }

    void flush() {
        m_good = m_good && m_target.write(m_bytes.get(), m_size);
        m_size = 0;
    }
    bool good() const { return m_good; }

  private:
    static constexpr std::size_t capacity = std::size_t{1} << 18;

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

// Writes a verified tree. Nodes that are open stand on a list of their own, so the depth of the report is not
// bounded by the size of the stack.
class Writer {
  public:
    explicit Writer(TextBuffer& out) : m_out(out) {}

    void write(const ptree& root) {
        open(root);
        while (!m_open.empty()) {
            if (m_open.back().next == m_open.back().node->end())
                close();
            else
                write_next_child();
        }
        m_out.append("\n");
    }

  private:
    struct OpenNode {
        const ptree* node;
        ptree::const_iterator next;
        bool is_array;
        bool has_items;
    };

    static bool is_leaf(const ptree& node) { return node.empty() && !node.data().is_packed(); }
    static bool is_array(const ptree& node) {
        for (const auto& entry : node) {
            if (!entry.first.empty())
                return false;
        }
        return true;
    }

    void begin_item(OpenNode& parent) {
        if (parent.has_items)
            m_out.append(",\n");
        parent.has_items = true;
        m_out.append_blanks(m_open.size() * indent_width);
    }

    // The root is an object in any case; below it, only nodes with items are opened.
    void open(const ptree& node) {
        const bool array = !m_open.empty() && is_array(node);
        m_out.append(array ? "[\n" : "{\n");
        m_open.push_back({&node, node.begin(), array, false});
        node.data().visit_packed([&](const auto& values) { write_packed(values); });
    }
    void close() {
        const OpenNode closed = m_open.back();
        m_open.pop_back();
        if (closed.has_items)
            m_out.append("\n");
        m_out.append_blanks(m_open.size() * indent_width);
        m_out.append(closed.is_array ? "]" : "}");
    }

    void write_next_child() {
        OpenNode& parent = m_open.back();
        const auto& [key, child] = *parent.next++;
        begin_item(parent);
        const bool leaf = is_leaf(child);
        if (!parent.is_array) {
            m_out.append_quoted(key);
            m_out.append(leaf ? ": " : ":\n");
            if (!leaf)
                m_out.append_blanks(m_open.size() * indent_width);
        }
        if (leaf)
            m_out.append_quoted(child.data().text());
        else
            open(child);
    }

    // The values of a packed array, the first items of the node that was opened last.
    template <class T>
    void write_packed(const SampleList<T>& values) {
        OpenNode& node = m_open.back();
        // What stands between two values is the same for all of them.
        std::string separator = "\",\n";
        separator.append(m_open.size() * indent_width, ' ');
        separator.append(node.is_array ? "\"" : "\"\": \"");

        begin_item(node);
        m_out.append(node.is_array ? "\"" : "\"\": \"");
        write_values(values, separator);
        m_out.append("\"");
    }

    template <class T>
    void write_values(const SampleList<T>& values, const std::string& separator) {
        if (separator.size() <= short_separator) {
            write_values_in_chunks(values, separator);
            return;
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i != 0)
                m_out.append(separator);
            m_out.advance(write_number(m_out.reserve(max_number_text), values[i]));
        }
    }

    // Nearly all values of a report go through here. Each is followed by a whole block that starts with the
    // separator: copying a fixed size takes a few instructions, and what is too much is overwritten.
    template <class T>
    void write_values_in_chunks(const SampleList<T>& values, const std::string& separator) {
        constexpr std::size_t chunk = 256;
        std::array<char, short_separator> block{};
        separator.copy(block.data(), block.size());
        std::array<T, chunk> numbers;
        for (std::size_t begin = 0; begin < values.size(); begin += chunk) {
            const std::size_t end = std::min(begin + chunk, values.size());
            values.read(begin, end - begin, numbers.data());
            char* out = m_out.reserve(chunk * (max_number_text + block.size()));
            for (std::size_t i = 0; i < end - begin; ++i) {
                out = write_number(out, numbers[i]);
                std::memcpy(out, block.data(), block.size());
                out += separator.size();
            }
            if (end == values.size())
                out -= separator.size();
            m_out.advance(out);
        }
    }

    static constexpr std::size_t short_separator = 64;

    TextBuffer& m_out;
    std::vector<OpenNode> m_open;
};

// Verifies and writes; false if the target refused a byte.
bool write_text(Target& target, const ptree& tree, const std::string& path) {
    verify(tree, path);
    TextBuffer out(target);
    Writer(out).write(tree);
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
