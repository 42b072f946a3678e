#pragma once

#include <optional>
#include <string>
#include <string_view>

/// How the bytes of a file's texts are to be read.
enum class TextEncoding { Utf8, ShiftJis, Latin1 };

/// "utf-8", "shift-jis" or "latin-1", letter case ignored; nothing for any other name.
std::optional<TextEncoding> TextEncodingNamed(std::string_view name);
const char* NameOf(TextEncoding encoding);

/// What the bytes look like, taken together: valid UTF-8; else Shift-JIS whose double-byte characters are kana in good
/// part (Western text with accents can be valid Shift-JIS too, but not kana); else Latin-1.
TextEncoding DetectEncoding(std::string_view bytes);

/// Undecodable bytes become U+FFFD.
std::string ToUtf8(std::string_view bytes, TextEncoding encoding);

/// The library's lyrics are code page 932. Latin letters with accents and macrons lose them, typographic apostrophes
/// and dashes become plain ones; any other character that the code page lacks is left out.
std::string Utf8ToCodePage932(std::string_view utf8);

/// The whole characters that the first `most` bytes of a text have, whose encoding is looked at.
std::string CutAtCharacter(std::string_view bytes, size_t most);

/// Whether a UTF-8 text holds kana (full or half width).
bool HasKana(std::string_view utf8);
/// Whether a UTF-8 text holds Chinese characters, which no kana table can read aloud.
bool HasKanji(std::string_view utf8);
