/// Voices as JSON: what came with the library, what the user keeps, and definitions of voices to install.
#pragma once

#include "json_text.h"
#include "voices.h"

namespace dbm {

/// The user's installed voices have numbers in this range.
constexpr int32_t kFirstUserVoice = 100;
constexpr int32_t kLastUserVoice = 999;

/// Fails with DBM_FILE_ERROR: nothing can be done without them.
Voices ReadOwnVoices(const Json& file);
/// Adds what the user made and changed to what came with the library. False when some of it makes no sense and is left
/// out.
bool ReadUserVoices(const Json& file, Voices& voices);
/// What the user made and changed.
Json UserVoicesToJson(const Voices& voices, const Voices& own);

/// A voice to install, and the languages it wants a singer in. Fails with DBM_FILE_ERROR.
struct VoiceDefinition {
    InstalledVoice voice;
    std::vector<int32_t> languages;
};
VoiceDefinition ReadVoiceDefinition(const Json& file);

} // namespace dbm
