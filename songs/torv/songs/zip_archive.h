#pragma once

#include "torv/songs/read_song.h"

#include <optional>
#include <string>
#include <vector>

namespace torv::songs {

/// The files of a zip archive in memory, which must outlive it. Only what a compressed score needs: stored and deflated
/// files, no encryption, no archive beyond 4 GB.
class ZipArchive {
public:
    /// Whether the bytes begin as an archive does.
    static bool IsArchive(Bytes bytes);

    /// Throws SongError when the archive's list of files cannot be read.
    explicit ZipArchive(Bytes bytes);

    std::vector<std::string> Names() const;
    /// A file's content; nothing when there is no file of this name. Throws SongError for one that is damaged,
    /// encrypted, packed in another way, or larger than `most` bytes when it is unpacked.
    std::optional<std::string> Read(const std::string& name, size_t most) const;

private:
    struct Entry {
        std::string name;
        bool isEncrypted;
        unsigned method;
        uint32_t checkSum;
        uint32_t packedSize;
        uint32_t size;
        uint32_t header; ///< where the file's own header stands
    };

    uint32_t Number(size_t at, int bytes) const;
    std::string Unpack(const Entry& entry, Bytes packed) const;

    Bytes m_bytes;
    std::vector<Entry> m_entries;
};

} // namespace torv::songs
