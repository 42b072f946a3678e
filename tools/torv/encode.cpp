#include "encode.h"

#include <torv/torv.h>

#include <cstdio>

void Encode(const EncodeOptions& options) {
    SongScore song = MakeSongScore(options.song);
    CxQuillMidiFile file;
    file.SetPresendTime(song.presend);
    if (!file.SaveAsFormat1(options.output.c_str(), song.score.song.get(), nullptr))
        throw InputError{options.output + ": cannot be written (" + std::string(file.GetErrorMessage()) +
                         "); check the folder and the free space"};
    if (!options.song.quiet)
        std::printf("%zu notes, the song begins %.1f s into the file: %s\n", song.score.notes.size(),
                    song.score.leadMilliseconds / 1000.0, options.output.c_str());
}
