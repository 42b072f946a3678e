#pragma once

#include "torv/songs/export.h"

#include <optional>
#include <string>
#include <string_view>

namespace torv::songs {

/// How the bytes of a file's texts are to be read: a name that the system's converter knows.
using TextEncoding = std::string;
/// Encodings that songs come in.
/// @{
inline constexpr const char* kUtf8 = "UTF-8";
inline constexpr const char* kShiftJis = "CP932";
inline constexpr const char* kEucJp = "EUC-JP";
/// @}
inline constexpr const char* kWestern = "CP1252"; ///< Windows', which has all of Latin-1 and more letters

/// The encoding of this name, whatever the case of its letters: utf-8, shift-jis, euc-jp, latin-1, and all others that
/// the system's converter knows. Nothing for any other name.
TORV_SONGS_API std::optional<TextEncoding> TextEncodingNamed(std::string_view name);

/// The same for a name that a user gives: nothing when it is empty. Throws NameError for one that is not known.
TORV_SONGS_API std::optional<TextEncoding> EncodingAskedFor(std::string_view name);

/// What the bytes look like, taken together: valid UTF-8; else Shift-JIS or EUC-JP whose characters are kana in good
/// part (Western text with accents can be valid in both, but not kana); else Western.
TORV_SONGS_API TextEncoding DetectEncoding(std::string_view bytes);

/// Undecodable bytes become U+FFFD.
TORV_SONGS_API std::string ToUtf8(std::string_view bytes, const TextEncoding& encoding);

/// A text in UTF-16 that begins with its byte order mark, which is left out.
TORV_SONGS_API std::string Utf16ToUtf8(std::string_view bytes);

/// The library's lyrics are code page 932. Latin letters with accents and macrons lose them, typographic apostrophes
/// and dashes become plain ones; any other character that the code page lacks is left out.
TORV_SONGS_API std::string Utf8ToCodePage932(std::string_view utf8);

/// The whole characters that the first `most` bytes of a text have, whose encoding is looked at.
TORV_SONGS_API std::string CutAtCharacter(std::string_view bytes, size_t most);

/// Whether a UTF-8 text holds kana (full or half width).
TORV_SONGS_API bool HasKana(std::string_view utf8);
/// Whether a UTF-8 text holds Chinese characters, which no kana table can read aloud.
TORV_SONGS_API bool HasKanji(std::string_view utf8);

} // namespace torv::songs
