#include "json_text.h"

#include "failure.h"
#include "own_files.h"
#include "text_rules.h"

namespace dbm {

namespace {

const Json* Member(const Json& entry, const char* key) {
    const auto found = entry.is_object() ? entry.find(key) : entry.end();
    return found == entry.end() ? nullptr : &*found;
}

/// Nothing when a code point is no byte or ends the text.
std::optional<std::string> FromJsonText(const std::string& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x80) {
            if (byte > 0xC3 || i + 1 == text.size())
                return std::nullopt;
            byte = static_cast<unsigned char>((byte & 3) << 6 | (text[++i] & 0x3F));
        }
        if (!byte)
            return std::nullopt;
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

} // namespace

std::string ToJsonText(const std::string& bytes) {
    std::string text;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte < 0x80) {
            text += each;
        } else {
            text += static_cast<char>(0xC0 | byte >> 6);
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

std::optional<int64_t> Integer(const Json& entry, const char* key, int64_t least, int64_t most) {
    const Json* const member = Member(entry, key);
    if (!member || !member->is_number_integer())
        return std::nullopt;
    if (member->is_number_unsigned() && member->get<uint64_t>() > static_cast<uint64_t>(INT64_MAX))
        return std::nullopt;
    const auto value = member->get<int64_t>();
    return value >= least && value <= most ? std::make_optional(value) : std::nullopt;
}

std::optional<std::string> Text(const Json& entry, const char* key) {
    const Json* const member = Member(entry, key);
    if (!member || !member->is_string())
        return std::nullopt;
    auto bytes = FromJsonText(member->get_ref<const std::string&>());
    return bytes && bytes->size() <= kLongestText ? bytes : std::nullopt;
}

std::optional<std::string> OptionalText(const Json& entry, const char* key) {
    return Member(entry, key) ? Text(entry, key) : std::string();
}

const Json& List(const Json& entry, const char* key) {
    static const Json none = Json::array();
    const Json* const member = Member(entry, key);
    return member && member->is_array() ? *member : none;
}

Json ReadJson(const std::string& path) {
    const auto content = ReadFile(path);
    Require(content.has_value(), DBM_FILE_ERROR);
    Json parsed = Json::parse(*content, nullptr, false);
    Require(parsed.is_object(), DBM_FILE_ERROR);
    return parsed;
}

} // namespace dbm
