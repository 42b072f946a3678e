#include "encode.h"

#include "file_identity.h"
#include "output_file.h"

#include <torv/torv.h>

#include <cstdio>

void Encode(const EncodeOptions& options) {
    RefuseOverwriting(InputsOf(options.song), {{"--output", options.output}});
    SongScore song = MakeSongScore(options.song);
    CxQuillMidiFile file;
    file.SetPresendTime(song.presend);
    if (!file.SaveAsFormat1(options.output.c_str(), song.score.song.get(), nullptr))
        FailToWrite(options.output, file.GetError(0) == CFileException::diskFull, std::string(file.GetErrorMessage()));
    if (!options.song.quiet)
        std::fprintf(SummaryStream(options.output), "%zu note%s, the song begins %.1f s into the file: %s\n",
                     song.CountNotes(), song.CountNotes() == 1 ? "" : "s", song.score.leadMilliseconds / 1000.0,
                     options.output.c_str());
}
