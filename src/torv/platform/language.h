#pragma once

/// The languages that are sung, by the numbers that lyrics, singer icons, voices, converters and engine streams share.
namespace torv {

/// The numbers that lyrics, singer icons, voices, converters and streams share.
/// @{
inline constexpr int kJapanese = 0;
inline constexpr int kEnglish = 1;
/// @}
inline constexpr int kLanguages = 2; ///< how many there are

/// Whether it is one of the two.
constexpr bool IsLanguage(int language) { return language >= 0 && language < kLanguages; }

} // namespace torv
