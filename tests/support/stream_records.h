// SPDX-License-Identifier: Apache-2.0
// Directory streams as a test sees them: made and read with zlib alone.
#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

constexpr std::uint32_t file_type = 0, folder_type = 1, end_type = 2;
constexpr std::uint32_t stream_magic = 0xBEEFFEEB;

// A record, with every field of its header free to be wrong.
struct Record {
    std::uint32_t type = file_type;
    std::uint32_t mode = 0;
    std::string name;
    std::string data;

    friend bool operator==(const Record&, const Record&) = default;
    friend void PrintTo(const Record& record, std::ostream* os) {
        *os << record.type << " " << std::oct << record.mode << std::dec << " '" << record.name << "' "
            << record.data.size() << " bytes";
    }
};

// Five numbers of 32 bits, the least significant byte first.
inline std::string header_bytes(const std::vector<std::uint32_t>& fields) {
    std::string bytes;
    for (const std::uint32_t field : fields) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>(field >> shift);
    }
    return bytes;
}

inline std::string record_bytes(const Record& record) {
    return header_bytes({stream_magic, record.type, record.mode,
                         static_cast<std::uint32_t>(record.name.size() + 1),
                         static_cast<std::uint32_t>(record.data.size())}) +
           record.name + '\0' + record.data;
}

const inline std::string end_record = header_bytes({stream_magic, end_type, 0, 0, 0});

inline std::string deflated(const std::string& contents, int level = 9) {
    uLongf size = compressBound(contents.size()) + 100; // with room for blocks that aren't compressed
    std::string bytes(size, '\0');
    EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(bytes.data()), &size,
                        reinterpret_cast<const Bytef*>(contents.data()), contents.size(), level),
              Z_OK);
    bytes.resize(size);
    return bytes;
}

inline std::string stream_of(const std::vector<Record>& records, int level = 9) {
    std::string contents;
    for (const Record& record : records)
        contents += record_bytes(record);
    return deflated(contents + end_record, level);
}

// What a stream, or the beginning of one, holds. `*ended` says whether it goes on to its checksum, right,
// and nothing comes after that.
inline std::string inflated(const std::string& stream, bool* ended = nullptr) {
    z_stream zlib{};
    EXPECT_EQ(inflateInit(&zlib), Z_OK);
    zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    zlib.avail_in = static_cast<uInt>(stream.size());
    std::string contents;
    std::string piece(1 << 20, '\0');
    int ret = Z_OK;
    while (ret == Z_OK) {
        zlib.next_out = reinterpret_cast<Bytef*>(piece.data());
        zlib.avail_out = static_cast<uInt>(piece.size());
        ret = inflate(&zlib, Z_NO_FLUSH);
        contents.append(piece, 0, piece.size() - zlib.avail_out);
    }
    if (ended)
        *ended = ret == Z_STREAM_END && zlib.avail_in == 0;
    inflateEnd(&zlib);
    return contents;
}

// The records of a whole stream, which has to end with an end record and nothing after it.
inline std::vector<Record> records_of(const std::string& stream) {
    bool ended = false;
    const std::string contents = inflated(stream, &ended);
    EXPECT_TRUE(ended);
    std::size_t at = 0;
    const auto take = [&](std::size_t size) {
        EXPECT_LE(size, contents.size() - at);
        const std::string bytes = contents.substr(at, size);
        at += bytes.size();
        return bytes;
    };
    const auto take_number = [&] {
        std::uint32_t number = 0;
        std::memcpy(&number, take(sizeof number).data(), sizeof number);
        return number;
    };
    std::vector<Record> records;
    while (!testing::Test::HasFailure()) {
        EXPECT_EQ(take_number(), stream_magic);
        Record record{.type = take_number(), .mode = take_number(), .name = {}, .data = {}};
        const std::uint32_t name_length = take_number();
        const std::uint32_t size = take_number();
        if (record.type == end_type) {
            EXPECT_EQ(record.mode + name_length + size, 0u);
            EXPECT_EQ(at, contents.size());
            break;
        }
        record.name = take(name_length);
        EXPECT_EQ(record.name.back(), '\0');
        record.name.pop_back();
        record.data = take(size);
        records.push_back(record);
    }
    return records;
}
