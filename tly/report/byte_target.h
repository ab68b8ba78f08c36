// SPDX-License-Identifier: Apache-2.0
// Where the bytes of a report go: a file or a stream.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

class ByteTarget {
  public:
    virtual ~ByteTarget() = default;
    // False if the target has refused any of the bytes; what comes after that isn't of use.
    virtual bool write(const char* bytes, std::size_t size) = 0;
};

class StreamTarget final : public ByteTarget {
  public:
    explicit StreamTarget(std::ostream& stream) : m_stream(stream) {}
    bool write(const char* bytes, std::size_t size) override;

  private:
    std::ostream& m_stream;
};

// Makes the file, or empties the one that is there. Throws boost::property_tree::json_parser_error, "cannot
// open file", if that fails.
class FileTarget final : public ByteTarget {
  public:
    explicit FileTarget(const std::string& path);
    FileTarget(const FileTarget&) = delete;
    FileTarget& operator=(const FileTarget&) = delete;
    ~FileTarget() override;

    bool write(const char* bytes, std::size_t size) override;
    // Some file systems report only here that the bytes could not be stored: false if so. To be called once.
    bool close();

  private:
    void reserve_ahead(std::size_t size);
    void return_reserved() const;

    int m_descriptor;
    std::size_t m_size = 0;     // of the file
    std::size_t m_reserved = 0; // bytes of the file that have a place on the disk, if that is more
    bool m_can_reserve = true;
};
