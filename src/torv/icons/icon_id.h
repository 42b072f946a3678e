#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// An icon id has the kind of icon in bits 31-24, its articulation in bits 23-16 and its variation in bits 15-0, whose
/// highest bit marks an icon that a user made.
enum IconStatus : int {
    kStatusAttack = 1,   ///< how a note begins
    kStatusRelease = 2,  ///< "Release" by name; heard as a transition into the next note
    kStatusTransit = 3,  ///< "Transit" by name; heard as how a note ends
    kStatusVibrato = 4,  ///< over a note
    kStatusDynamics = 5, ///< on the timeline
    kStatusSinger = 7,   ///< who sings
};
/// Of dynamics icons: a level, a rise, a fall.
enum DynamicsArticulation : int {
    kDynaff = 1,     ///< sets a level
    kCrescendo = 2,  ///< raises the level in force
    kDecrescendo = 3 ///< lowers it
};
inline constexpr int kSingerArticulation = 1;  ///< of singer icons, their only one
inline constexpr DWORD kUserIconBit = 0x8000;  ///< in the variation, and so in the id
inline constexpr int kLastUserNumber = 0x7FFF; ///< what is left of the variation for a user's icon

/// An id from its three parts, of which the low bits count, and the parts of an id.
/// @{
constexpr DWORD MakeIconID(int status, int articulation, int variation) {
    return static_cast<DWORD>(status & 0xFF) << 24 | static_cast<DWORD>(articulation & 0xFF) << 16 |
           static_cast<DWORD>(variation & 0xFFFF);
}
constexpr int StatusFromID(DWORD id) { return static_cast<int>(id >> 24); }
constexpr int ArticulationFromID(DWORD id) { return static_cast<int>(id >> 16 & 0xFF); }
constexpr int VariationFromID(DWORD id) { return static_cast<int>(id & 0xFFFF); }
/// @}
/// A singer's variation packs its two codes; `high` is the language, `low` the program.
constexpr DWORD MakeSingerIconID(int high, int low) {
    const DWORD variation = static_cast<DWORD>(high) * 256 + static_cast<DWORD>(low);
    return MakeIconID(kStatusSinger, kSingerArticulation, static_cast<int>(variation & 0xFFFF));
}

/// "Attack" ... "Singer": also the name of the kind's folder in the preset database. Empty for any other status.
TORV_API const char* IconStatusName(int status);
/// The articulation's name as icon files have it; empty for a pair without one. For statuses 1 to 4 the names go by the
/// articulation's number, which for a release (2) gives "NoteTransition" and for a transit (3) "NoteRelease": the two
/// tables cross, and files are made so.
TORV_API const char* IconArticulationName(int status, int articulation);

} // namespace torv
