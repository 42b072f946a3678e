#include "encode.h"

#include "file_identity.h"
#include "messages.h"
#include "output_file.h"

#include <torv/torv.h>

#include <cstdio>

void Encode(const EncodeOptions& options) {
    RefuseOverwriting(InputsOf(options.song), {{"--output", options.output}});
    SongScore song = MakeSongScore(options.song);
    CxQuillMidiFile file;
    file.SetPresendTime(song.presend);
    OutputFile output(options.output);
    if (!file.SaveAsFormat1(output.GrowingPath(), song.score.song.get(), nullptr))
        FailToWrite(options.output, file.GetError(0) == CFileException::diskFull, std::string(file.GetErrorMessage()));
    output.Commit();
    if (!options.song.quiet)
        std::fprintf(SummaryStream(options.output), "%s, the song begins %.1f s into the file: %s\n",
                     Counted(song.CountNotes(), "note").c_str(), song.score.leadMilliseconds / 1000.0,
                     NameOfOutput(options.output).c_str());
}
