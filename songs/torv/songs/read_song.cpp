#include "torv/songs/read_song.h"

#include "torv/songs/hand_phonemes.h"
#include "torv/songs/input_file.h"
#include "torv/songs/midi_reader.h"
#include "torv/songs/musicxml_reader.h"
#include "torv/songs/song_error.h"
#include "torv/songs/ust_reader.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <vector>

namespace torv::songs {

namespace {

/// A format has a line here, and a file that says whether bytes are of it and reads them.
constexpr struct {
    SongFormat format;
    bool (*isIt)(Bytes bytes);
    Song (*read)(Bytes bytes, const ReadOptions& options);
} kReaders[] = {
    {SongFormat::Midi, IsMidi, ReadMidiSong},
    {SongFormat::MusicXml, IsMusicXml, ReadMusicXmlSong},
    {SongFormat::Ust, IsUst, ReadUstSong},
};

std::string Named(const std::string& source, const std::string& what) {
    return source.empty() ? what : source + ": " + what;
}

constexpr size_t kEnoughToTell = 4096; // bytes

/// What cannot be sought in, as a pipe, is read to be measured.
bool IsKnownTooLarge(std::istream& stream) {
    const auto begin = stream.tellg();
    if (begin < 0 || !stream.seekg(0, std::ios::end)) {
        stream.clear();
        return false;
    }
    const auto end = stream.tellg();
    stream.seekg(begin);
    return static_cast<uint64_t>(end - begin) > kLargestSongFile;
}

[[noreturn]] void FailTooLarge(const std::string& source) {
    throw SongError(Named(source, "is larger than 128 MB, which no song is"));
}

[[noreturn]] void FailUnknown(Bytes bytes, const std::string& source) {
    if (bytes.empty())
        throw SongError(Named(source, "is empty"));
    throw SongError(Named(source, "neither a standard MIDI file nor MusicXML nor UST: have the program that wrote it "
                                  "export one of these"));
}

} // namespace

SongFormat FormatOf(Bytes bytes) {
    for (const auto& reader : kReaders)
        if (reader.isIt(bytes))
            return reader.format;
    return SongFormat::Unknown;
}

Song ReadSong(Bytes bytes, const std::string& source, const ReadOptions& options) {
    const SongFormat format = FormatOf(bytes);
    for (const auto& reader : kReaders) {
        if (reader.format != format)
            continue;
        try {
            Song song = reader.read(bytes, options);
            song.source = source;
            CompleteSong(song);
            TakePhonemes(song);
            return song;
        } catch (const NameError&) {
            throw;
        } catch (const SongError& error) {
            throw SongError(Named(source, error.what()));
        }
    }
    FailUnknown(bytes, source);
}

std::vector<unsigned char> ReadSongBytes(std::istream& stream, const std::string& source) {
    std::vector<unsigned char> bytes;
    const bool isTooLarge = IsKnownTooLarge(stream);
    AppendBytes(stream, kEnoughToTell, bytes);
    if (FormatOf(bytes) == SongFormat::Unknown)
        FailUnknown(bytes, source); // before the rest of a file that may be large
    if (isTooLarge)
        FailTooLarge(source);
    AppendBytes(stream, kLargestSongFile, bytes);
    if (stream && stream.peek() != std::istream::traits_type::eof())
        FailTooLarge(source);
    return bytes;
}

Song ReadSong(std::istream& stream, const std::string& source, const ReadOptions& options) {
    return ReadSong(ReadSongBytes(stream, source), source, options);
}

Song ReadSongFile(const std::string& path, const ReadOptions& options) {
    return ReadSong(*OpenInputStream(path), path, options);
}

} // namespace torv::songs
