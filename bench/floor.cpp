// SPDX-License-Identifier: Apache-2.0
// floor MONITOR OUTPUT LINES BYTES: the least that any program has to do for a report. It reads the monitor
// file in blocks, converts every field, and writes LINES lines with a converted value each: BYTES bytes in
// all or a little more or less, the blanks in front of a value being as many as that takes.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::size_t block_size = std::size_t{1} << 18;

// The fields that were converted last, as many as fit the nearest cache: what is written are these, in turn.
class LastValues {
  public:
    void add(long long value) { m_values[m_count++ % m_values.size()] = value; }
    std::size_t size() const { return std::min(m_count, m_values.size()); }
    long long operator[](std::size_t index) const { return m_values[index]; }

  private:
    std::vector<long long> m_values = std::vector<long long>(1024);
    std::size_t m_count = 0;
};

// Converts the fields of whole lines. A field that is no number counts as 0.
void convert(const char* position, const char* end, LastValues& values) {
    while (position < end) {
        long long value = 0;
        position = std::from_chars(position, end, value).ptr;
        while (position < end && *position != ',' && *position != '\n')
            ++position;
        values.add(value);
        ++position;
    }
}

bool read_all(const char* path, LastValues& values) {
    const int fd = ::open(path, O_RDONLY);
    if (fd < 0)
        return false;
    std::vector<char> bytes(2 * block_size);
    std::size_t kept = 0; // bytes of a line whose end isn't there yet
    while (true) {
        if (bytes.size() - kept < block_size)
            bytes.resize(2 * bytes.size());
        const ssize_t count = ::read(fd, bytes.data() + kept, block_size);
        if (count <= 0)
            break;
        const std::size_t size = kept + static_cast<std::size_t>(count);
        const void* newline = ::memrchr(bytes.data(), '\n', size);
        const std::size_t whole =
            newline ? static_cast<std::size_t>(static_cast<const char*>(newline) - bytes.data()) + 1 : 0;
        convert(bytes.data(), bytes.data() + whole, values);
        kept = size - whole;
        std::memmove(bytes.data(), bytes.data() + whole, kept);
    }
    convert(bytes.data(), bytes.data() + kept, values);
    ::close(fd);
    return true;
}

std::size_t average_width(const LastValues& values) {
    std::size_t sum = 0;
    char digits[24];
    for (std::size_t i = 0; i < values.size(); ++i)
        sum +=
            static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, values[i]).ptr - digits);
    return values.size() == 0 ? 1 : sum / values.size();
}

bool write_all(const char* path, const LastValues& values, std::size_t lines, std::size_t bytes) {
    constexpr std::string_view after = "\",\n";
    constexpr std::size_t most_blanks = 64;
    const std::size_t line_width = lines == 0 ? 0 : bytes / lines;
    const std::size_t other = average_width(values) + after.size() + 1;
    const std::size_t blanks = std::min(most_blanks, line_width - std::min(line_width, other));
    const std::string before = std::string(blanks, ' ') + "\"";
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (fd < 0)
        return false;
    std::vector<char> buffer(block_size);
    char* out = buffer.data();
    bool good = true;
    const auto flush = [&] {
        const auto size = out - buffer.data();
        good = good && ::write(fd, buffer.data(), static_cast<std::size_t>(size)) == size;
        out = buffer.data();
    };
    std::size_t next = 0;
    for (std::size_t i = 0; i < lines; ++i) {
        if (buffer.data() + buffer.size() - out < 128)
            flush();
        out = std::copy(before.begin(), before.end(), out);
        out = std::to_chars(out, out + 24, values.size() == 0 ? 0 : values[next]).ptr;
        out = std::copy(after.begin(), after.end(), out);
        next = next + 1 < values.size() ? next + 1 : 0;
    }
    flush();
    return ::close(fd) == 0 && good;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: floor MONITOR OUTPUT LINES BYTES\n");
        return 2;
    }
    LastValues values;
    if (!read_all(argv[1], values) || !write_all(argv[2], values, std::strtoull(argv[3], nullptr, 10),
                                                 std::strtoull(argv[4], nullptr, 10))) {
        std::fprintf(stderr, "floor: can't read or write\n");
        return 1;
    }
    return 0;
}
