#include "allocation_failure.h"
#include "platform/begun_thread.h"
#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#if !defined(_WIN32)
#include "midi_recorder.h"
#include "platform/test_registry.h"
#include "wave_recorder.h"
#endif

#include <functional>
#include <thread>
#include <vector>

namespace {

/// Each call answers failure exactly when it cannot have its memory, throws nothing, and succeeds afterwards.
void CheckAnswersFailure(const char* name, const std::function<bool()>& call) {
    CAPTURE(name);
    FailEachAllocation([&](AllocationFailure& failure) {
        const bool isDone = failure.During([&] { return call(); });
        CHECK(isDone == !failure.HasHappened());
    });
}

DWORD WINAPI Nothing(LPVOID) { return 0; }
void CALLBACK Tick(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) {}
#if !defined(_WIN32)
void CALLBACK WaveDone(HWAVEOUT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) {}
#endif

} // namespace

TEST_CASE("memory that cannot be had is answered: files and names") {
    const TempFolder folder;
    const std::string name(40, 'n'); // no text's own room holds it
    const std::string path = folder.File(name, "x");
    const std::string other = folder.Path(name + "2");
    const std::string missing = folder.Path("none");
    CheckAnswersFailure("open", [&] { return CFile().Open(path.c_str(), CFile::modeRead); });
    CheckAnswersFailure("create", [&] { return CFile().Open(other.c_str(), CFile::modeCreate | CFile::modeWrite); });
    CheckAnswersFailure("find", [&] { return CFileFind().FindFile(path.c_str()); });
    CheckAnswersFailure("replace", [&] {
        torv::ReplacedFile file(path.c_str());
        return file.Write("new", 3) && file.Commit();
    });
    CFileException full(CFileException::diskFull, -1, path.c_str());
    char text[200];
    CheckAnswersFailure("message", [&] { return full.GetErrorMessage(text, sizeof text); });
    FailEachAllocation([&](AllocationFailure& failure) {
        CFileException error;
        CHECK_FALSE(failure.During([&] { return CFile().Open(missing.c_str(), 0, &error); }));
        CHECK(error.m_cause != CFileException::none);
        CHECK_THROWS_AS(failure.During([&] { return CFile().Read(nullptr, 1); }), CFileException);
    });
    FailEachAllocation([&](AllocationFailure& failure) {
        folder.File(name, "x");
        const bool isRenamed = failure.During([&] { return torv::RenameOver(path.c_str(), other.c_str()); });
        CHECK(isRenamed == !failure.HasHappened());
        CHECK(folder.Has(name) == !isRenamed);
    });
}

TEST_CASE("memory that cannot be had is answered: threads, and what they are told") {
    torv::SafePoint(); // this thread's own is there
    CheckAnswersFailure("thread", [] {
        const HANDLE thread = CreateThread(nullptr, 0, &Nothing, nullptr, 0, nullptr);
        return thread && WaitForSingleObject(thread, INFINITE) == WAIT_OBJECT_0 && CloseHandle(thread);
    });
    CheckAnswersFailure("worker", [] {
        bool isDone = false;
        const auto worker = torv::WorkerThread::Begin([&isDone] { isDone = true; });
        return worker && worker->Wait() && isDone;
    });
    CheckAnswersFailure("timer", [] {
        const UINT timer = timeSetEvent(1000, 0, &Tick, 0, TIME_PERIODIC);
        return timer && timeKillEvent(timer) == TIMERR_NOERROR;
    });
    FailEachAllocation([](AllocationFailure& failure) {
        bool isPosted = false;
        // A thread that is none of the platform's has all that belongs to it made when it first asks for something.
        std::thread([&] {
            isPosted = failure.During([] {
                torv::SafePoint();
                const HWND window = NewWindow();
                return window && PostMessageA(window, WM_APP, 0, 0) && DestroyWindow(window);
            });
        }).join();
        const bool isDone = isPosted || failure.HasHappened(); // what failed once may be had at the next call
        CHECK(isDone);
    });
}

#if !defined(_WIN32) // there they are the system's own

TEST_CASE("memory that cannot be had is answered: outputs") {
    const WaveRecorderInList wave;
    const RecorderInList midi;
    REQUIRE(midiOutGetNumDevs() > 0); // the libraries behind the calls have been asked what they know
    const WAVEFORMATEX format{WAVE_FORMAT_PCM, 1, 44100, 88200, 2, 16, 0};
    for (const UINT device : {0u, waveOutGetNumDevs() - 1}) { // the recorder and the one that swallows all
        CheckAnswersFailure("wave output", [&] {
            HWAVEOUT handle = nullptr;
            return waveOutOpen(&handle, device, &format, reinterpret_cast<DWORD_PTR>(&WaveDone), 0,
                               CALLBACK_FUNCTION) == MMSYSERR_NOERROR &&
                   waveOutClose(handle) == MMSYSERR_NOERROR;
        });
    }
    CheckAnswersFailure("MIDI output", [] {
        HMIDIOUT handle = nullptr;
        return midiOutOpen(&handle, 0, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR &&
               midiOutClose(handle) == MMSYSERR_NOERROR;
    });

    // A block that a device cannot queue is the caller's again, and those before it are played.
    HWAVEOUT handle = nullptr;
    REQUIRE(waveOutOpen(&handle, waveOutGetNumDevs() - 1, &format, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR);
    waveOutPause(handle);
    char samples[2] = {};
    std::vector<WAVEHDR> headers(100, WAVEHDR{samples, 2, 0, 0, 0, 0, nullptr, 0});
    FailEachAllocation([&](AllocationFailure& failure) {
        waveOutReset(handle);
        waveOutPause(handle);
        bool areWritten = true;
        for (WAVEHDR& header : headers) {
            waveOutPrepareHeader(handle, &header, sizeof header);
            const MMRESULT result = failure.During([&] { return waveOutWrite(handle, &header, sizeof header); });
            CHECK(((header.dwFlags & WHDR_INQUEUE) != 0) == (result == MMSYSERR_NOERROR));
            areWritten = areWritten && result == MMSYSERR_NOERROR;
        }
        CHECK(areWritten == !failure.HasHappened());
    });
    CHECK(waveOutReset(handle) == MMSYSERR_NOERROR);
    CHECK(waveOutClose(handle) == MMSYSERR_NOERROR);
}

TEST_CASE("memory that cannot be had is answered: libraries, pictures and the registry") {
    const TempFolder folder;
    char path[4096];
    CheckAnswersFailure("module", [&] { return GetModuleFileNameA(nullptr, path, sizeof path) != 0; });
    CheckAnswersFailure("library", [] {
        const HMODULE library = LoadLibraryA("libm.so.6");
        return library && FreeLibrary(library);
    });
    // One row of one pixel of 24 bits.
    const std::string head("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\1\0\0\0\1\0\x18\0", 30);
    const std::string picture = folder.File("a picture with quite a long name.bmp", head + std::string(28, '\0'));
    CheckAnswersFailure("picture", [&] {
        const HANDLE image = LoadImageA(nullptr, picture.c_str(), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE);
        return image && DeleteObject(image);
    });
    TestRegistry registry;
    registry.Set("SOFTWARE\\A key with quite a long name", "PATH", "a value with quite a long name");
    CheckAnswersFailure("registry", [] {
        HKEY key = nullptr;
        return RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\A key with quite a long name", 0, KEY_READ, &key) ==
                   ERROR_SUCCESS &&
               RegQueryValueExA(key, "PATH", nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
               RegCloseKey(key) == ERROR_SUCCESS;
    });
}

#endif
