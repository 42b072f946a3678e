#include "torv/score/sequence_object.h"

#include "torv/icons/icon_object.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/stream/event_pool.h"

#include <bit>
#include <cstring>
#include <new>

namespace {

constexpr DWORD kNoHandle = 0xFFFF;
constexpr DWORD kWordBits = 64;
constexpr int kNoteLengths[] = {1920, 960, 480, 240, 120, 60, 30, 15};

template <class T>
std::unique_ptr<T> Make() {
    return std::unique_ptr<T>(new (std::nothrow) T);
}

} // namespace

CSequenceObject::CSequenceObject() = default;

CSequenceObject::~CSequenceObject() { RemoveAllEvent(); }

int CSequenceObject::Create() {
    if (m_pEvents || m_pIcons)
        return 0;
    m_pEvents = Make<CStreamBuffer>();
    const bool hasEvents =
        m_pEvents && m_pEvents->Create(sizeof(tagEventEntry), torv::kStreamBlockSize, torv::kHeapBlocks);
    m_pIcons = Make<HandleMap>();
    m_pLyrics = Make<HandleMap>();
    m_pDynamics = Make<CBreakPointList>();
    m_pPitchBend = Make<CBreakPointList>();
    m_pPitchBendSens = Make<CBreakPointList>();
    m_pTremoloDepth = Make<CBreakPointList>();
    return hasEvents && m_pIcons && m_pLyrics && m_pDynamics && m_pPitchBend && m_pPitchBendSens && m_pTremoloDepth;
}

void CSequenceObject::Cleanup() {
    RemoveAllEvent();
    RemoveAllController();
}

void CSequenceObject::CleanupEventBuffer() {
    if (!m_pEvents)
        return;
    m_pEvents->SeekToBegin();
    tagEventEntry entry;
    while (m_pEvents->ReadNextEntry(&entry))
        torv::FreeEventRecord(entry.eventId); // an id that names nothing is passed over
    m_pEvents->Empty();
}

void CSequenceObject::RemoveAllEvent() {
    CleanupEventBuffer();
    if (m_pIcons)
        m_pIcons->DeleteAll();
    if (m_pLyrics)
        m_pLyrics->DeleteAll();
}

void CSequenceObject::RemoveAllController() {
    for (const List* list : {&m_pDynamics, &m_pPitchBend, &m_pPitchBendSens, &m_pTremoloDepth})
        if (*list)
            (*list)->RemoveAll();
    for (List& list : m_voiceControls)
        list.reset();
}

int CSequenceObject::ReleaseObject() {
    m_pEvents.reset();
    if (m_pIcons)
        m_pIcons->ForgetAll();
    if (m_pLyrics)
        m_pLyrics->ForgetAll();
    return 1;
}

tagEventHeader* CSequenceObject::QueryEventID(DWORD id) { return torv::EventRecordOf(id); }

DWORD CSequenceObject::HandleMap::FindNextHandle(DWORD start) const {
    const DWORD first = start & 0xFFFF;
    const DWORD words = static_cast<DWORD>(taken.size());
    for (DWORD step = 0; step <= words; ++step) { // the first word twice: its later bits, and at last all of it
        const DWORD word = (first / kWordBits + step) % words;
        uint64_t free = ~taken[word];
        if (step == 0)
            free &= ~uint64_t{0} << first % kWordBits;
        if (free)
            return word * kWordBits + static_cast<DWORD>(std::countr_zero(free));
    }
    return 0;
}

/// False, and nothing has changed, when memory is short.
bool CSequenceObject::HandleMap::Take(WORD handle, CObject* object) {
    try {
        objects.SetAt(handle, object);
    } catch (const std::bad_alloc&) {
        return false;
    }
    taken[handle / kWordBits] |= uint64_t{1} << handle % kWordBits;
    return true;
}

CObject* CSequenceObject::HandleMap::Release(WORD handle) {
    CObject* object = nullptr;
    if (objects.Lookup(handle, object)) {
        objects.RemoveKey(handle);
        taken[handle / kWordBits] &= ~(uint64_t{1} << handle % kWordBits);
    }
    return object;
}

void* CSequenceObject::HandleMap::Attach(CObject* object) {
    const DWORD handle = next;
    if (!object || handle == 0 || !Take(static_cast<WORD>(handle), object))
        return nullptr;
    next = FindNextHandle(handle + 1);
    return torv::PointerOf(handle);
}

int CSequenceObject::HandleMap::SetAt(void* handle, CObject* object) {
    const WORD key = torv::HandleOf(handle);
    if (!object || key == 0 || key == kNoHandle || Lookup(handle) || !Take(key, object))
        return 0;
    next = FindNextHandle(key);
    return 1;
}

CObject* CSequenceObject::HandleMap::Lookup(void* handle) const {
    CObject* object = nullptr;
    return objects.Lookup(torv::HandleOf(handle), object) ? object : nullptr;
}

int CSequenceObject::HandleMap::Detach(void* handle, int deleteObject) {
    const WORD key = torv::HandleOf(handle);
    CObject* const object = Release(key); // before it is deleted: its end may look at the map
    if (!object)
        return 0;
    if (key < next || next == 0)
        next = key;
    if (deleteObject)
        delete object;
    return 1;
}

void CSequenceObject::HandleMap::DeleteAll() {
    // Always from the start: an object's end may take others out of the map.
    while (POSITION at = objects.GetStartPosition()) {
        WORD key;
        CObject* object;
        objects.GetNextAssoc(at, key, object);
        delete Release(key);
    }
    ForgetAll();
}

void CSequenceObject::HandleMap::ForgetAll() {
    objects.RemoveAll();
    taken.fill(0);
    taken.front() = 1; // 0 is none, and 65535 is never given out
    taken.back() = uint64_t{1} << (kWordBits - 1);
    next = 1;
}

void* CSequenceObject::AttachIconObject(CObject* icon) { return m_pIcons ? m_pIcons->Attach(icon) : nullptr; }
void* CSequenceObject::AttachLyricObject(CLyricObject* lyric) { return m_pLyrics ? m_pLyrics->Attach(lyric) : nullptr; }
int CSequenceObject::SetIconObjectAt(void* handle, CIconObject* icon) {
    return m_pIcons ? m_pIcons->SetAt(handle, icon) : 0;
}
int CSequenceObject::SetLyricObjectAt(void* handle, CLyricObject* lyric) {
    return m_pLyrics ? m_pLyrics->SetAt(handle, lyric) : 0;
}
CIconObject* CSequenceObject::LookupIconObject(void* handle) const {
    return m_pIcons ? dynamic_cast<CIconObject*>(m_pIcons->Lookup(handle)) : nullptr;
}
CLyricObject* CSequenceObject::LookupLyricObject(void* handle) const {
    return m_pLyrics ? static_cast<CLyricObject*>(m_pLyrics->Lookup(handle)) : nullptr;
}
int CSequenceObject::DetachIconObject(void* handle, int deleteObject) {
    return m_pIcons ? m_pIcons->Detach(handle, deleteObject) : 0;
}
int CSequenceObject::DetachLyricObject(void* handle, int deleteObject) {
    return m_pLyrics ? m_pLyrics->Detach(handle, deleteObject) : 0;
}

// The ids follow the engine's order, not that of the members.
CBreakPointList* CSequenceObject::GetBreakPointList(int id) const {
    switch (id) {
    case torv::kDynamicsList:
        return GetDynamicsBreakPointList();
    case torv::kPitchBendSensList:
        return GetPitchBendSensBreakPointList();
    case torv::kPitchBendList:
        return GetPitchBendBreakPointList();
    case torv::kTremoloDepthList:
        return GetTremoloDepthBreakPointList();
    default:
        return id >= 1 ? GetVoiceControlBreakPointList(id - 1) : nullptr;
    }
}

CBreakPointList* CSequenceObject::GetVoiceControlBreakPointList(int index) const {
    return index >= 0 && index < torv::kVoiceControls ? m_voiceControls[static_cast<size_t>(index)].get() : nullptr;
}

CBreakPointList* CSequenceObject::CreateVoiceControlBreakPointList(int index) {
    if (index < 0 || index >= torv::kVoiceControls || m_voiceControls[static_cast<size_t>(index)])
        return nullptr;
    List& list = m_voiceControls[static_cast<size_t>(index)];
    list = Make<CBreakPointList>();
    return list.get();
}

int CSequenceObject::GetParameter(tagSequenceObject* record) const {
    if (!record)
        return 0;
    *record = {};
    record->modify = m_nModify;
    torv::CopyText(record->name, sizeof record->name, m_strName);
    record->color = m_dwColor;
    record->channel = m_nChannel;
    record->transpose = m_nTranspose;
    record->initialLanguage = m_nInitialLanguage;
    record->dynamicsMode = m_nDynamicsMode;
    return 1;
}

int CSequenceObject::SetParameter(const tagSequenceObject* record) {
    if (!record)
        return 0;
    try { // the only step that can fail
        m_strName = CString(record->name, static_cast<int>(strnlen(record->name, sizeof record->name)));
    } catch (const std::bad_alloc&) {
        return 0;
    }
    m_nModify = record->modify;
    m_dwColor = record->color;
    m_nChannel = record->channel;
    m_nTranspose = record->transpose;
    m_nInitialLanguage = record->initialLanguage;
    m_nDynamicsMode = record->dynamicsMode;
    return 1;
}

int CSequenceObject::CalcNoteLength(int index, int dotted, int triplet) {
    if (index < 0 || index >= static_cast<int>(std::size(kNoteLengths)))
        return 0;
    int length = kNoteLengths[index];
    if (dotted)
        length += length / 2;
    if (triplet)
        length = 2 * length / 3;
    return length;
}

int CSequenceObject::CalcMeasureClock(int numerator, int denominatorExponent) {
    const long long ticks = static_cast<long long>(CalcNoteLength(denominatorExponent, 0, 0)) * numerator;
    return ticks == static_cast<int>(ticks) ? static_cast<int>(ticks) : 0;
}
