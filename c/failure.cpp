#include "failure.h"

#include <torv/platform/afx/exception.h>
#include <torv/songs/song_error.h>

#include <new>

namespace torv::c {

namespace {

/// A text that needs no memory when there is none.
struct LastText {
    std::string text;
    const char* shown = "";
};

LastText& Last() {
    thread_local LastText last;
    return last;
}

} // namespace

torv_status Tell(torv_status status, const std::string& text) noexcept {
    LastText& last = Last();
    try {
        last.text = text;
        last.shown = last.text.c_str();
    } catch (const std::bad_alloc&) {
        last.shown = "there is not enough memory";
    }
    return status;
}

torv_status TellCurrent() noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        return Tell(failure.status, failure.text);
    } catch (const songs::SongError& error) {
        return Tell(TORV_BAD_SONG, error.what());
    } catch (const std::bad_alloc&) {
        Last().shown = "there is not enough memory";
        return TORV_NO_MEMORY;
    } catch (const CException&) {
        Last().shown = "a file cannot be read or written";
        return TORV_FILE_ERROR;
    } catch (const std::exception& error) {
        return Tell(TORV_FAILED, error.what());
    } catch (...) {
        Last().shown = "something unforeseen has happened";
        return TORV_FAILED;
    }
}

} // namespace torv::c

const char* torv_error_text(void) { return torv::c::Last().shown; }

const char* torv_status_name(torv_status status) {
    static constexpr const char* kNames[] = {
        "TORV_OK",        "TORV_BAD_ARGUMENT", "TORV_BAD_HANDLE",  "TORV_OUT_OF_RANGE", "TORV_NOT_FOUND",
        "TORV_TOO_SMALL", "TORV_BUSY",         "TORV_WRONG_ORDER", "TORV_NO_MEMORY",    "TORV_FILE_ERROR",
        "TORV_BAD_SONG",  "TORV_NO_COMPANION", "TORV_NO_DEVICE",   "TORV_CANCELLED",    "TORV_FAILED"};
    return status >= TORV_OK && status <= TORV_FAILED ? kNames[status] : "unknown";
}

const char* torv_version(void) { return TORV_C_VERSION; }
