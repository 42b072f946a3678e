// The databases of voices, expressions and presets.
#include "databases_object.h"
#include "records.h"

#include <torv/songs/nearest_names.h>
#include <torv/songs/song_error.h>

#include <atomic>

using namespace torv::c;
namespace songs = torv::songs;

namespace torv::c {

namespace {

std::atomic<bool> g_isOpen = false;

const songs::IconKind& KindOf(torv_icon_kind kind) {
    static constexpr const songs::IconKind* kKinds[] = {&songs::kAttacks,  &songs::kReleases, &songs::kTransitions,
                                                        &songs::kVibratos, &songs::kDynamics, &songs::kVoices};
    if (kind < TORV_ICON_ATTACK || kind > TORV_ICON_VOICE)
        throw Failure{TORV_BAD_ARGUMENT, "there is no icon of kind " + std::to_string(kind)};
    return *kKinds[kind];
}

std::vector<songs::Databases::Entry> List(DatabasesObject& object, torv_icon_kind kind) {
    const std::lock_guard lock(object.open->mutex);
    return object.open->databases->List(KindOf(kind));
}

} // namespace

OpenDatabases::Turn::Turn() {
    if (g_isOpen.exchange(true))
        throw Failure{TORV_BUSY,
                      "the databases are open in this process already: share their handle, or free it and the "
                      "scores that were made with them"};
}

OpenDatabases::Turn::~Turn() { g_isOpen = false; }

OpenDatabases::OpenDatabases() {
    try {
        databases = std::make_unique<songs::Databases>(messages);
    } catch (const songs::SongError& error) {
        throw Failure{TORV_NO_COMPANION, error.what()};
    }
}

int32_t LanguageOfVoice(uint32_t id) {
    return songs::LanguageOfSinger(id) == torv::kJapanese ? TORV_LANGUAGE_JAPANESE : TORV_LANGUAGE_ENGLISH;
}

} // namespace torv::c

torv_status torv_databases_open(torv_databases** databases) {
    return Guard([&] {
        Need(databases, "databases") = nullptr;
        GiveOut(databases, std::make_unique<DatabasesObject>());
    });
}

torv_status torv_databases_free(torv_databases* databases) {
    return Guard([&] { TakeObject(databases, Kind::Databases); });
}

torv_status torv_databases_count(torv_databases* databases, torv_icon_kind kind, size_t* count) {
    return Guard([&] {
        const Held<DatabasesObject> held(databases);
        Need(count, "count") = List(*held, kind).size();
    });
}

torv_status torv_databases_get(torv_databases* databases, torv_icon_kind kind, size_t index, torv_icon* record,
                               char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<DatabasesObject> held(databases);
        if (record)
            NeedRecord(record, "torv_icon");
        const auto entries = List(*held, kind);
        CheckIndex(index, entries.size(), "icon of this kind");
        const uint32_t id = entries[index].id;
        Give(entries[index].name, {buffer, capacity, needed});
        if (record)
            Give(torv_icon{0, id, kind, kind == TORV_ICON_VOICE ? LanguageOfVoice(id) : TORV_LANGUAGE_AUTO}, record);
    });
}

torv_status torv_databases_find(torv_databases* databases, torv_icon_kind kind, const char* name, size_t* index) {
    return Guard([&] {
        const Held<DatabasesObject> held(databases);
        Need(index, "index");
        const std::string wanted = Taken(name, "name");
        std::vector<std::string> names;
        for (const auto& entry : List(*held, kind))
            names.push_back(entry.name);
        const auto found = songs::FindName(names, wanted);
        if (!found)
            throw Failure{TORV_NOT_FOUND, "there is no " + std::string(KindOf(kind).name) + " \"" + wanted +
                                              "\": " + songs::SuggestNames(names, wanted)};
        *index = *found;
    });
}

torv_status torv_databases_get_messages(torv_databases* databases, char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<DatabasesObject> held(databases);
        for (const std::string& message : held->open->messages.Take())
            held->told += (held->told.empty() ? "" : "\n") + message;
        Give(held->told, {buffer, capacity, needed});
        if (capacity > 0)
            held->told.clear();
    });
}
