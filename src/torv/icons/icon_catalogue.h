#pragma once

#include "torv/platform/platform.h"

class CIconObject;

/// A voice's seventeen settings, one byte each, in the order of the engine's voice controls: frequency, band width and
/// amplitude of four resonances, then harmonics, noise, brightness, clearness and gender factor.
struct tagVoiceChangeParam {
    BYTE values[17]; ///< 0 to 127, 64 is neutral
};
static_assert(sizeof(tagVoiceChangeParam) == 17);

namespace torv {

/// What icons ask of the databases, which lie above them. A database implements these while it is open.
class VoiceCatalogue {
public:
    virtual ~VoiceCatalogue() = default;
    /// Whether there is such a voice; then its name and settings.
    virtual bool FindVoice(BYTE language, BYTE program, CString& name, tagVoiceChangeParam& parameters) const = 0;

    VoiceCatalogue* openedBefore = nullptr; ///< the list of the open ones
};

/// What the encoder asks for the number of an icon that it sends.
class IconCatalogue {
public:
    virtual ~IconCatalogue() = default;
    /// The icon's place in its database, by its ID string, counted from 1; 0 when it is not there.
    virtual int IndexOf(const CIconObject& icon) const = 0;

    IconCatalogue* openedBefore = nullptr; ///< the list of the open ones
};

/// Of the open databases the one that was opened last is asked. They are borrowed: a database takes itself back when it
/// closes, in whatever order they close.
TORV_API void AddCatalogue(VoiceCatalogue& catalogue);
/// The same of icons, and taking back; one that is not in the list is left alone.
/// @{
TORV_API void AddCatalogue(IconCatalogue& catalogue);
TORV_API void RemoveCatalogue(VoiceCatalogue& catalogue);
TORV_API void RemoveCatalogue(IconCatalogue& catalogue);
/// @}
/// Null while none is open.
TORV_API const VoiceCatalogue* GetVoiceCatalogue();
/// The same of icons.
TORV_API const IconCatalogue* GetIconCatalogue();

/// The icon's place in the open database; 0 when it is not there or no database is open.
TORV_API int IconIndexOf(const CIconObject& icon);

} // namespace torv
