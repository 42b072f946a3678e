#include "torv/platform/posix/output_calls.h"

#include <algorithm>
#include <cstring>

namespace torv {

std::string OutputErrorText(MMRESULT error, const char* kind) {
    const std::string device = std::string(kind) + " device";
    switch (error) {
    case MMSYSERR_NOERROR:
        return "No error.";
    case MMSYSERR_ERROR:
        return "The " + device + " failed.";
    case MMSYSERR_BADDEVICEID:
        return "There is no " + device + " of this number.";
    case MMSYSERR_ALLOCATED:
        return "The " + device + " cannot be opened; it may be in use, or have been taken away.";
    case MMSYSERR_INVALHANDLE:
        return "The " + device + " is not open.";
    case MMSYSERR_NODRIVER:
        return "There is no driver for the " + device + ".";
    case MMSYSERR_NOMEM:
        return "There is not enough memory, or no thread to be had.";
    case MMSYSERR_NOTSUPPORTED:
        return "The " + device + " cannot do this.";
    case MMSYSERR_BADERRNUM:
        return "There is no error of this number.";
    case MMSYSERR_INVALFLAG:
        return "A flag is not known.";
    case MMSYSERR_INVALPARAM:
        return "A parameter is not valid.";
    case MMSYSERR_HANDLEBUSY:
        return "The " + device + " is busy on another thread.";
    default:
        return {};
    }
}

MMRESULT CopyErrorText(const std::string& found, LPSTR text, UINT size) {
    if (!text)
        return MMSYSERR_INVALPARAM;
    if (found.empty())
        return MMSYSERR_BADERRNUM;
    if (size == 0)
        return MMSYSERR_NOERROR;
    const std::size_t count = std::min<std::size_t>(found.size(), size - 1);
    std::memcpy(text, found.data(), count);
    text[count] = 0;
    return MMSYSERR_NOERROR;
}

} // namespace torv
