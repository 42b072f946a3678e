#pragma once

#include <cstddef>
#include <filesystem>

namespace rve {

/// A file's bytes, mapped for reading as long as this lives; none when it cannot be opened or is empty.
class MappedFile {
public:
    explicit MappedFile(const std::filesystem::path& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    const unsigned char* Bytes() const { return m_bytes; }
    size_t Size() const { return m_size; }

private:
    const unsigned char* m_bytes = nullptr;
    size_t m_size = 0;
};

} // namespace rve
