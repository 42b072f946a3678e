#pragma once

#include "torv/abi/panel.h"
#include "torv/platform/platform.h"

#include <memory>
#include <type_traits>

/// Binds the host panel's library at run time and hands on what the panel is told and asked. There need not be one:
/// without the library, or after unloading it, the calls do nothing and the questions are answered by -1.
///
/// Copies share the library, which is unloaded once none of them holds it and no call is in it; each has its own
/// status. One thread at a time.
class TORV_API CPanelWrap {
public:
    /// Not loaded: status 0.
    CPanelWrap();
    /// Shares the other's library, which is unloaded with the last copy; the status is its own.
    /// @{
    CPanelWrap(const CPanelWrap&);
    CPanelWrap& operator=(const CPanelWrap&);
    /// @}
    ~CPanelWrap();

    /// Another library than "paneldll.dll", for the next LoadPanelWrap. Throws std::bad_alloc.
    void SetPanelLibrary(const CString& name) { m_strLibrary = name; }
    /// Loads and binds the library in place of the one held; the argument is reserved. Returns 1 with the status as it
    /// was, or 0: status -1 and nothing held when the library cannot be loaded, status -2 when an entry point is
    /// missing. Then the library stays, and what stands before the missing entry point in the interface can be called.
    /// Where memory is refused it answers 0 with everything as it was.
    int LoadPanelWrap(int = 0);
    /// Starts the panel, with a text for it. Returns 1 with status 1; 0 with status -1 when the panel refuses or there
    /// is none.
    int InitPanelWrap(const char* text);
    /// Lets go of the library; status 0.
    void UnloadPanelWrap();
    /// 0: not loaded, or not initialised yet; 1: initialised; -1: no library, or it refused to start; -2: an entry
    /// point is missing.
    int GetStatus() const { return m_nStatus; }

    /// The window that the panel is shown in; null for none.
    void SetParent(HWND window);
    /// Playing starts at a position, in the unit that the host counts plays in; it stops.
    /// @{
    void SetPlay(LONG position);
    void SetStop();
    /// @}
    /// The record stays the caller's.
    int SendDeviceData(WAV_DATAS* data);
    /// Ticks.
    int SendPPQPos(LONG position);
    /// The panel's song position in ticks, its tempo in microseconds to a quarter note.
    /// @{
    int SendGetPPQPos();
    int SendGetTempo();
    /// @}
    /// The host has made the data to play.
    void SetMakeData();
    /// Everything on show is to be drawn anew.
    void SendAllFlash();
    /// The track that is selected, from 0.
    void SendSelectTrack(DWORD track);

protected:
    bool Bind();
    template <class Entry, class... Arguments>
    auto Call(Entry entry, Arguments... arguments) const;

    CString m_strLibrary;
    int m_nStatus = 0;
    std::shared_ptr<std::remove_pointer_t<HMODULE>> m_pModule;
    DWORD m_dwReserved = 0; ///< always 0
    PANELInitProc m_pfnInit = nullptr;
    PANELSetParentProc m_pfnSetParent = nullptr;
    PANELSetPlayProc m_pfnSetPlay = nullptr;
    PANELSetStopProc m_pfnSetStop = nullptr;
    PANELSendDeviceDataProc m_pfnSendDeviceData = nullptr;
    PANELSendPPQPosProc m_pfnSendPPQPos = nullptr;
    PANELSendGetPPQPosProc m_pfnSendGetPPQPos = nullptr;
    PANELSendGetTempoProc m_pfnSendGetTempo = nullptr;
    PANELSetMakeDataProc m_pfnSetMakeData = nullptr;
    PANELSendAllFlashProc m_pfnSendAllFlash = nullptr;
    PANELSendSelectTrackProc m_pfnSendSelectTrack = nullptr;
};
