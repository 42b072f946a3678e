#include "torv/score/sequence.h"

#include "torv/score/master_track.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace {

CSequenceObject* TrackOf(CObject* object) { return static_cast<CSequenceObject*>(object); }

} // namespace

CSequence::CSequence() { InitSequenceHeaderInfo(&m_header); }

CSequence::~CSequence() {
    RemoveAllObject();
    DeleteOwnMaster();
}

int CSequence::InitSequenceHeaderInfo(tagSequenceHeaderInfo* header) {
    *header = {};
    header->timeDivision = torv::kTicksPerQuarter;
    header->initialTempo = torv::kDefaultTempo;
    return 1;
}

void CSequence::DeleteOwnMaster() {
    if (m_bOwnsMaster)
        delete m_pMaster;
    m_pMaster = nullptr;
    m_bOwnsMaster = false;
}

int CSequence::Create(CMasterTrack* master) {
    if (master && master == m_pMaster)
        return 1; // whoever owns it
    std::unique_ptr<CMasterTrack> own;
    if (!master) {
        own.reset(new (std::nothrow) CMasterTrack);
        if (!own || !own->Create())
            return 0;
    }
    DeleteOwnMaster();
    m_bOwnsMaster = own != nullptr;
    m_pMaster = own ? own.release() : master;
    return 1;
}

CSequenceObject* CSequence::CreateObject() {
    auto track = std::unique_ptr<CSequenceObject>(new (std::nothrow) CSequenceObject);
    return track && track->Create() ? track.release() : nullptr;
}

POSITION CSequence::AddObject(CSequenceObject* track) { return InsertObject(nullptr, track, 1); }

POSITION CSequence::InsertObject(POSITION at, CSequenceObject* track, int after) {
    try {
        return after ? m_tracks.InsertAfter(at, track) : m_tracks.InsertBefore(at, track);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CSequence::RemoveObjectAt(POSITION at, int deleteObject) {
    if (!at)
        return;
    if (deleteObject)
        delete m_tracks.GetAt(at);
    m_tracks.RemoveAt(at);
}

void CSequence::RemoveAllObject() {
    while (!m_tracks.IsEmpty())
        delete m_tracks.RemoveHead();
}

POSITION CSequence::FindObject(CSequenceObject* track) const { return m_tracks.Find(track); }

CSequenceObject* CSequence::GetHeadObject() const { return m_tracks.IsEmpty() ? nullptr : TrackOf(m_tracks.GetHead()); }
CSequenceObject* CSequence::GetTailObject() const { return m_tracks.IsEmpty() ? nullptr : TrackOf(m_tracks.GetTail()); }
CSequenceObject* CSequence::GetObjectAt(POSITION at) const { return at ? TrackOf(m_tracks.GetAt(at)) : nullptr; }
CSequenceObject* CSequence::GetNextObject(POSITION& at) const { return at ? TrackOf(m_tracks.GetNext(at)) : nullptr; }
CSequenceObject* CSequence::GetPrevObject(POSITION& at) const { return at ? TrackOf(m_tracks.GetPrev(at)) : nullptr; }

DWORD CSequence::GetObjectLength(POSITION at) const {
    if (at) {
        const CSequenceObject* const track = GetObjectAt(at);
        return track ? track->GetLength() : 0;
    }
    DWORD longest = m_pMaster ? m_pMaster->GetLength() : 0;
    for (POSITION next = m_tracks.GetHeadPosition(); next;)
        if (const CSequenceObject* const track = GetNextObject(next))
            longest = std::max(longest, track->GetLength());
    return longest;
}

int CSequence::IsObjectModified() const {
    for (POSITION at = m_tracks.GetHeadPosition(); at;) {
        const CSequenceObject* const track = GetNextObject(at);
        if (track && track->GetModify())
            return 1;
    }
    return 0;
}

void CSequence::ClearAllModified() {
    for (POSITION at = m_tracks.GetHeadPosition(); at;)
        if (CSequenceObject* const track = GetNextObject(at))
            track->SetModify(0);
    m_nModify = 0;
}

int CSequence::SetName(const char* name) {
    torv::CopyText(m_header.name, sizeof m_header.name, name);
    return 1;
}

void CSequence::SetInitialTimeSig(unsigned char denominatorExponent, unsigned char numerator) {
    m_header.initialTimeSig.denominatorExponent = denominatorExponent;
    m_header.initialTimeSig.numerator = numerator;
}
