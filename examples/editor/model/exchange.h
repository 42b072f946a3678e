#pragma once

#include "score.h"

#include <functional>

/// The ways of other programs in and out.
namespace editor {

/// A MIDI, MusicXML or UST file as a document, its first verse for words; `remarks` gets a line for what was guessed or
/// left out. Throws torv::songs::SongError for what is no song.
Document ImportSong(const std::string& path, const Library& library, std::vector<std::string>& remarks);

/// The song as the voice engine's own MIDI file. Throws EditorError; what was there is then as it was. So does the
/// next.
void ExportMidi(const Document& document, Library& library, const std::string& path);

/// Sings every track that is heard and mixes them into a stereo wave of 44100 Hz, without the lead. A mix that would
/// pass full scale is made softer; the answer is by how many dB. `progress` is told a share of 1, from several threads
/// but one at a time.
double ExportWave(const Document& document, Library& library, const std::string& path,
                  const std::function<void(double)>& progress);

} // namespace editor
