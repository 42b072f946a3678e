#include "torv/audio/output_device.h"

namespace torv {

int FindOutputDevice(const CString& name) {
    CString wanted(name);
    wanted.MakeUpper();
    const UINT count = waveOutGetNumDevs();
    for (UINT number = 0; number < count; ++number) {
        WAVEOUTCAPSA capabilities{};
        if (waveOutGetDevCapsA(number, &capabilities, sizeof capabilities) != MMSYSERR_NOERROR)
            continue;
        CString found(capabilities.szPname);
        found.MakeUpper();
        if (found == wanted)
            return static_cast<int>(number);
    }
    return -1;
}

void ShowOutputError(MMRESULT error) {
    char reason[MAXERRORLENGTH] = "";
    waveOutGetErrorTextA(error, reason, sizeof reason);
    CString text;
    text.Format("Cannot output waves (%s)", reason);
    const AtRest rest; // the user may take a while, and whoever suspends this thread must not wait for that
    AfxMessageBox(text, MB_OK | MB_ICONSTOP);
}

} // namespace torv
