#include "torv/songs/zip_archive.h"

#include "torv/songs/song_error.h"

#include <algorithm>
#include <zlib.h>

namespace torv::songs {

namespace {

// Sizes and signatures of the format's records (APPNOTE.TXT, 4.3.7, 4.3.12, 4.3.16).
constexpr uint32_t kFileHeader = 0x04034B50;
constexpr uint32_t kListEntry = 0x02014B50;
constexpr uint32_t kListEnd = 0x06054B50;
constexpr size_t kFileHeaderSize = 30;
constexpr size_t kListEntrySize = 46;
constexpr size_t kListEndSize = 22;
constexpr size_t kLongestComment = 0xFFFF;

constexpr unsigned kEncrypted = 1; // of an entry's flags
constexpr unsigned kStored = 0;
constexpr unsigned kDeflated = 8;
constexpr size_t kMostExpansion = 1100; // a little more than a deflated byte can give

[[noreturn]] void FailDamaged() { throw SongError("is a damaged archive: save it anew, or uncompressed"); }

} // namespace

bool ZipArchive::IsArchive(Bytes bytes) {
    return bytes.size() >= 4 && bytes[0] == 'P' && bytes[1] == 'K' && bytes[2] == 3 && bytes[3] == 4;
}

ZipArchive::ZipArchive(Bytes bytes) : m_bytes(bytes) {
    if (bytes.size() < kListEndSize)
        FailDamaged();
    const size_t last = bytes.size() - kListEndSize;
    const size_t lowest = last - std::min(last, kLongestComment);
    size_t end = last;
    while (end > lowest && Number(end, 4) != kListEnd)
        --end;
    if (Number(end, 4) != kListEnd)
        FailDamaged();
    const uint32_t count = Number(end + 10, 2);
    size_t at = Number(end + 16, 4);
    for (uint32_t i = 0; i < count; ++i) {
        if (at + kListEntrySize > end || Number(at, 4) != kListEntry)
            FailDamaged();
        const size_t nameSize = Number(at + 28, 2);
        const size_t size = kListEntrySize + nameSize + Number(at + 30, 2) + Number(at + 32, 2);
        if (at + size > end)
            FailDamaged();
        const auto* const name = reinterpret_cast<const char*>(bytes.data() + at + kListEntrySize);
        m_entries.push_back({std::string(name, nameSize), (Number(at + 8, 2) & kEncrypted) != 0, Number(at + 10, 2),
                             Number(at + 16, 4), Number(at + 20, 4), Number(at + 24, 4), Number(at + 42, 4)});
        at += size;
    }
}

std::vector<std::string> ZipArchive::Names() const {
    std::vector<std::string> names;
    names.reserve(m_entries.size());
    for (const Entry& entry : m_entries)
        names.push_back(entry.name);
    return names;
}

std::optional<std::string> ZipArchive::Read(const std::string& name, size_t most) const {
    const auto entry =
        std::find_if(m_entries.begin(), m_entries.end(), [&name](const Entry& each) { return each.name == name; });
    if (entry == m_entries.end())
        return std::nullopt;
    if (entry->isEncrypted)
        throw SongError("is an archive with a password: save it without one");
    if (entry->size > most)
        throw SongError(name + " in it is larger than " + std::to_string(most >> 20) + " MB, which no song is");
    if (m_bytes.size() < kFileHeaderSize || entry->header > m_bytes.size() - kFileHeaderSize ||
        Number(entry->header, 4) != kFileHeader)
        FailDamaged();
    const size_t begin =
        entry->header + kFileHeaderSize + Number(entry->header + 26, 2) + Number(entry->header + 28, 2);
    if (begin > m_bytes.size() || entry->packedSize > m_bytes.size() - begin)
        FailDamaged();
    std::string content = Unpack(*entry, m_bytes.subspan(begin, entry->packedSize));
    if (crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())) != entry->checkSum)
        FailDamaged();
    return content;
}

uint32_t ZipArchive::Number(size_t at, int bytes) const {
    uint32_t value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = value << 8 | m_bytes[at + static_cast<size_t>(i)];
    return value;
}

std::string ZipArchive::Unpack(const Entry& entry, Bytes packed) const {
    if (entry.method == kStored)
        return {reinterpret_cast<const char*>(packed.data()), packed.size()};
    if (entry.method != kDeflated)
        throw SongError(entry.name + " in it is packed in a way that is not read: save it uncompressed");
    if (entry.size / kMostExpansion > packed.size())
        FailDamaged(); // before memory is taken for what cannot come out
    std::string content(entry.size, '\0');
    z_stream stream{};
    stream.next_in = const_cast<Bytef*>(packed.data()); // zlib's old interface; it does not write there
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(content.data());
    stream.avail_out = static_cast<uInt>(content.size());
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        throw std::bad_alloc();
    const int result = inflate(&stream, Z_FINISH);
    const bool isWhole = result == Z_STREAM_END && stream.avail_out == 0;
    inflateEnd(&stream);
    if (!isWhole)
        FailDamaged();
    return content;
}

} // namespace torv::songs
