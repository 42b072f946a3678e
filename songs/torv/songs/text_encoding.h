#pragma once

#include "torv/songs/export.h"

#include <optional>
#include <string>
#include <string_view>

namespace torv::songs {

/// How the bytes of a file's texts are to be read.
enum class TextEncoding { Utf8, ShiftJis, Latin1 };

/// "utf-8", "shift-jis" or "latin-1", letter case ignored; nothing for any other name.
TORV_SONGS_API std::optional<TextEncoding> TextEncodingNamed(std::string_view name);
TORV_SONGS_API const char* NameOf(TextEncoding encoding);

/// What the bytes look like, taken together: valid UTF-8; else Shift-JIS whose double-byte characters are kana in good
/// part (Western text with accents can be valid Shift-JIS too, but not kana); else Latin-1.
TORV_SONGS_API TextEncoding DetectEncoding(std::string_view bytes);

/// Undecodable bytes become U+FFFD.
TORV_SONGS_API std::string ToUtf8(std::string_view bytes, TextEncoding encoding);

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
