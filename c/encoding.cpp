// What the engine is told of a score.
#include "score_object.h"

using namespace torv::c;

torv_status torv_score_encode(torv_score* score, size_t part, torv_event_callback callback, void* user) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        CQuillMidiBuffer& stream = *held->Part(part).stream;
        if (!callback)
            throw Failure{TORV_BAD_ARGUMENT, "callback is null"};
        std::vector<BYTE> bytes;
        stream.SeekToBegin();
        for (tagQuillMidiEntry entry{}; stream.ReadNextEntry(&entry);) {
            bytes.resize(entry.length);
            const torv_event event{sizeof event, stream.ReadEvent(entry.offset, bytes.data(), entry.length),
                                   static_cast<int64_t>(entry.time) - held->score.leadMilliseconds, bytes.data()};
            if (callback(&event, user) != 0)
                throw Failure{TORV_CANCELLED, "the callback has ended the walk"};
        }
    });
}

torv_status torv_score_save_midi(torv_score* score, const char* path) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        const std::string taken = TakenPath(path);
        const std::lock_guard lock(held->open->mutex);
        CxQuillMidiFile file;
        file.SetPresendTime(held->presend);
        if (!file.SaveAsFormat1(taken.c_str(), held->score.song.get(), nullptr))
            throw Failure{TORV_FILE_ERROR, std::string(path) + ": cannot be written (" + file.GetErrorMessage() +
                                               "); check the folder and whether you may write there"};
    });
}
