#include "torv/synthesis/chase.h"

#include "torv/encoding/nprn_block.h"

#include <algorithm>
#include <cstring>

namespace torv {
namespace {

constexpr DWORD kMessageBytes = 3;
constexpr DWORD kMostBlockBytes = 4096; ///< of an entry that are looked at; a block has a tenth of it
constexpr DWORD kMostDelay = 0x3FFF;
constexpr BYTE kNumberHigh = 99;
constexpr BYTE kNumberLow = 98;
constexpr BYTE kSelectorParameter = 2;

bool IsController(const BYTE* message, BYTE number) { return (message[0] & 0xF0) == 0xB0 && message[1] == number; }

bool IsOpening(const BYTE* bytes, DWORD length) {
    return length >= 2 * kMessageBytes && IsController(bytes, kNumberHigh) &&
           IsController(bytes + kMessageBytes, kNumberLow) && bytes[kMessageBytes + 2] == 0;
}

/// The block's number, with the selector below it where one block sets many controls.
WORD KeyOf(const BYTE* group, DWORD length) {
    const auto key = static_cast<WORD>(group[2] << 8);
    if (group[2] != kNprnVoiceControl)
        return key;
    for (DWORD at = 0; at + 2 * kMessageBytes <= length; at += kMessageBytes)
        if (IsController(group + at, kNumberLow) && group[at + 2] == kSelectorParameter)
            return key | group[at + kMessageBytes + 2];
    return key;
}

/// From the last group to the first, since the last one told is in force.
void KeepGroups(const BYTE* bytes, DWORD length, DWORD delay, ChaseTable& table) {
    for (DWORD at = length - length % kMessageBytes; at >= kMessageBytes;) {
        at -= kMessageBytes;
        if (IsOpening(bytes + at, length - at) && bytes[at + 2] != kNprnNoteSegment) // a note is no state
            table.Keep(bytes + at, GroupLength(bytes + at, length - at), delay);
    }
}

} // namespace

DWORD GroupLength(const BYTE* bytes, DWORD length) {
    DWORD at = kMessageBytes;
    while (at + kMessageBytes <= length && !IsOpening(bytes + at, length - at))
        at += kMessageBytes;
    return std::min(at, length - length % kMessageBytes);
}

void ChaseTable::Clear() {
    m_keys.clear();
    m_events.clear();
}

bool ChaseTable::Has(const BYTE* group, DWORD length) const {
    return std::find(m_keys.begin(), m_keys.end(), KeyOf(group, length)) != m_keys.end();
}

void ChaseTable::Keep(const BYTE* group, DWORD length, DWORD delay) {
    if (Has(group, length))
        return;
    m_keys.push_back(KeyOf(group, length));
    m_group.assign(group, group + length);
    if (length >= sizeof(tagQuillMidiMessageHead)) {
        tagQuillMidiMessageHead head;
        std::memcpy(&head, m_group.data(), sizeof head);
        CQuillMidiBuffer::SetDelay(&head, std::min(delay, kMostDelay));
        std::memcpy(m_group.data(), &head, sizeof head);
    }
    for (DWORD at = 0; at + kMessageBytes <= length; at += kMessageBytes)
        m_events.push_back({0, m_group[at], m_group[at + 1], m_group[at + 2], 0});
}

int MoveToTime(CQuillMidiBuffer& stream, DWORD time) {
    stream.SeekToBegin();
    if (time == 0)
        return 1; // what is to be sent before the song begins is sent at once
    tagQuillMidiEntry entry;
    while (stream.ReadNextEntry(&entry))
        if (entry.time >= 0 && static_cast<DWORD>(entry.time) >= time) {
            stream.ReadPrevEntry(&entry);
            return 1;
        }
    return 0;
}

bool IsTellingAhead(CQuillMidiBuffer& stream, DWORD time) {
    stream.SeekToBegin();
    tagQuillMidiEntry entry;
    while (stream.ReadNextEntry(&entry)) {
        if (entry.time >= 0 && static_cast<DWORD>(entry.time) >= time)
            return false;
        tagQuillMidiMessageHead head;
        const bool hasDelay =
            entry.length >= sizeof head && stream.ReadEvent(entry.offset, &head, sizeof head) == sizeof head;
        if (hasDelay && entry.time + static_cast<LONGLONG>(CQuillMidiBuffer::GetDelay(&head)) >= time)
            return true;
    }
    return false;
}

void ChaseEvents(CQuillMidiBuffer& stream, DWORD position, const Preroll& preroll, ChaseTable& table) {
    table.Clear();
    if (!preroll.isChased || position <= preroll.milliseconds)
        return;
    MoveToTime(stream, position - preroll.milliseconds);
    BYTE bytes[kMostBlockBytes];
    tagQuillMidiEntry entry;
    // After MoveToTime the stream stands on the last entry that is to be chased, or behind the last of all.
    for (bool more = stream.ReadEntry(&entry) || stream.ReadPrevEntry(&entry); more;
         more = stream.ReadPrevEntry(&entry)) {
        const DWORD length = stream.ReadEvent(entry.offset, bytes, std::min(entry.length, kMostBlockBytes));
        KeepGroups(bytes, length, preroll.milliseconds, table);
    }
}

} // namespace torv
