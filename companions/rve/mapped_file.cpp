#include "mapped_file.h"

#include <cstdint>

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace rve {

#if defined(_WIN32)

MappedFile::MappedFile(const std::filesystem::path& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    LARGE_INTEGER size{};
    if (GetFileSizeEx(file, &size) && size.QuadPart > 0 && size.QuadPart <= INT32_MAX)
        if (const HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr)) {
            m_bytes = static_cast<const unsigned char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
            m_size = m_bytes ? static_cast<size_t>(size.QuadPart) : 0;
            CloseHandle(mapping); // the view keeps it
        }
    CloseHandle(file);
}

MappedFile::~MappedFile() {
    if (m_bytes)
        UnmapViewOfFile(m_bytes);
}

#else

MappedFile::MappedFile(const std::filesystem::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    struct stat about {};
    if (fstat(file, &about) == 0 && S_ISREG(about.st_mode) && about.st_size > 0 && about.st_size <= INT32_MAX) {
        void* const view = mmap(nullptr, static_cast<size_t>(about.st_size), PROT_READ, MAP_PRIVATE, file, 0);
        if (view != MAP_FAILED) {
            m_bytes = static_cast<const unsigned char*>(view);
            m_size = static_cast<size_t>(about.st_size);
        }
    }
    close(file);
}

MappedFile::~MappedFile() {
    if (m_bytes)
        munmap(const_cast<unsigned char*>(m_bytes), m_size);
}

#endif

} // namespace rve
