#include "code_page_932.h"

namespace g2pa {
namespace {

bool IsLeadByte(unsigned byte) { return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC); }
bool IsTrailByte(unsigned byte) { return byte >= 0x40 && byte <= 0xFC && byte != 0x7F; }

/// The plain form of a wide letter, digit or mark; any other character as it is.
unsigned Narrow(unsigned character) {
    if (character >= 0x824F && character <= 0x8258)
        return '0' + (character - 0x824F);
    if (character >= 0x8260 && character <= 0x8279)
        return 'A' + (character - 0x8260);
    if (character >= 0x8281 && character <= 0x829A)
        return 'a' + (character - 0x8281);
    switch (character) {
    case 0x8140:
        return ' ';
    case 0x8151:
        return '_';
    case 0x8165: // both quotation marks: the second is the apostrophe of wide text
    case 0x8166:
        return '\'';
    case 0x815D: // the hyphen, and the minus that keyboards give
    case 0x817C:
        return '-';
    case 0x817B:
        return '+';
    case 0x8195:
        return '&';
    default:
        return character;
    }
}

} // namespace

unsigned TakeCharacter(std::string_view& bytes) {
    const unsigned first = static_cast<unsigned char>(bytes[0]);
    const unsigned second = bytes.size() > 1 ? static_cast<unsigned char>(bytes[1]) : 0;
    const bool isDouble = IsLeadByte(first) && IsTrailByte(second);
    bytes.remove_prefix(isDouble ? 2 : 1);
    return isDouble ? Narrow(first << 8 | second) : first;
}

} // namespace g2pa
