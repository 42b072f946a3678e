// Songs: made, read, copied, and what is known of one.
#include "song_object.h"

#include <torv/songs/input_file.h>
#include <torv/songs/read_song.h>
#include <torv/songs/song_error.h>

#include <istream>

using namespace torv::c;

namespace {

std::unique_ptr<std::istream> OpenFile(const char* path) {
    try {
        return torv::songs::OpenInputStream(TakenPath(path));
    } catch (const torv::songs::SongError& error) {
        throw Failure{TORV_FILE_ERROR, error.what()};
    }
}

std::string& TextOf(torv::songs::Song& song, torv_song_text which) {
    switch (which) {
    case TORV_SONG_TITLE:
        return song.title;
    case TORV_SONG_COMPOSER:
        return song.composer;
    case TORV_SONG_LANGUAGE:
        return song.language;
    case TORV_SONG_SOURCE:
        return song.source;
    case TORV_SONG_FORMAT:
        return song.format;
    }
    throw Failure{TORV_BAD_ARGUMENT, "a song has no text " + std::to_string(which)};
}

} // namespace

torv_status torv_song_new(torv_song** song) {
    return Guard([&] {
        Need(song, "song") = nullptr;
        GiveOut(song, std::make_unique<SongObject>());
    });
}

torv_status torv_song_open(const char* path, const char* encoding, torv_song** song) {
    return Guard([&] {
        Need(song, "song") = nullptr;
        const std::unique_ptr<std::istream> file = OpenFile(path);
        GiveOut(song,
                std::make_unique<SongObject>(torv::songs::ReadSong(*file, path, {TakenOrEmpty(encoding, "encoding")})));
    });
}

torv_status torv_song_read(const void* bytes, size_t size, const char* source, const char* encoding, torv_song** song) {
    return Guard([&] {
        Need(song, "song") = nullptr;
        if (!bytes)
            throw Failure{TORV_BAD_ARGUMENT, "bytes is null"};
        GiveOut(song, std::make_unique<SongObject>(
                          torv::songs::ReadSong({static_cast<const unsigned char*>(bytes), size},
                                                TakenOrEmpty(source, "source"), {TakenOrEmpty(encoding, "encoding")})));
    });
}

torv_status torv_song_copy(torv_song* song, torv_song** copy) {
    return Guard([&] {
        Need(copy, "copy") = nullptr;
        GiveOut(copy, std::make_unique<SongObject>(*Held<SongObject>(song)));
    });
}

torv_status torv_song_free(torv_song* song) {
    return Guard([&] { TakeObject(song, Kind::Song); });
}

torv_status torv_song_get_info(torv_song* song, torv_song_info* info) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(info, "torv_song_info");
        const torv::songs::Song& of = held->song;
        torv_song_info found{};
        found.end = of.end;
        found.parts = static_cast<uint32_t>(of.parts.size());
        found.tempos = static_cast<uint32_t>(of.tempos.size());
        found.meters = static_cast<uint32_t>(of.meters.size());
        found.measures = static_cast<uint32_t>(of.measures.size());
        found.remarks = static_cast<uint32_t>(of.remarks.size());
        found.verses = static_cast<uint32_t>(torv::songs::CountVerses(of));
        Give(found, info);
    });
}

torv_status torv_song_get_text(torv_song* song, torv_song_text which, char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Give(TextOf(held->song, which), {buffer, capacity, needed});
    });
}

torv_status torv_song_set_text(torv_song* song, torv_song_text which, const char* text) {
    return Guard([&] {
        const Held<SongObject> held(song);
        TextOf(held->song, which) = Taken(text, "text");
    });
}

torv_status torv_song_get_remark(torv_song* song, size_t index, char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        CheckIndex(index, held->song.remarks.size(), "remark");
        Give(held->song.remarks[index], {buffer, capacity, needed});
    });
}
