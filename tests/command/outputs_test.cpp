// What the command writes: never over what it reads, whole or not at all, and nothing besides.
#include "run_command.h"
#include "wave_bytes.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#ifndef _WIN32
#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

/// So many bars of two seconds.
FileBytes Song(int bars, int key) {
    TrackBytes voice;
    for (int bar = 0; bar < bars; ++bar)
        voice.On(0, key).Off(1920, key);
    return MidiFile(0, 480, {voice});
}

#ifndef _WIN32

/// Waits for what another process does, ten seconds at most.
template <class Condition>
bool Comes(Condition condition) {
    for (int i = 0; i < 1000; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

pid_t Start(const std::vector<std::string>& arguments) {
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            std::signal(signal, SIG_DFL); // the test program handles some, and in the background ignores some
        execv("./torv", words.data());
        _exit(127);
    }
    return child;
}

/// The signal that ended the process; 0 when it ended by itself, -1 when it had to be killed.
int EndedBy(pid_t child) {
    int status = 0;
    if (Comes([&] { return waitpid(child, &status, WNOHANG) == child; }))
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return -1;
}

#endif

} // namespace

TEST_CASE("outputs: what would be written over an input or another output is refused, however it is spelled") {
    const Folder folder;
    const FileBytes bytes = Song(1, 60);
    const std::string song = folder.File("song.mid", bytes);
    const std::string wave = folder.File("wave.wav", PcmWave(1, 16, 44100, {1}));
    fs::create_hard_link(folder.path / "song.mid", folder.path / "hard.mid");
    fs::create_directory(folder.path / "sub");
    std::vector<std::string> rows{
        "sing " + song + " -o " + song,
        "encode " + song + " -o " + kIn + "sub/../song.mid",
        "encode " + song + " -o " + (folder.path / "song.mid").string(),
        "encode " + song + " -o " + kIn + "hard.mid",
        "mix " + wave + ":-6 " + song + " -o " + kIn + "hard.mid",
        "sing " + song + " -o " + kIn + "out.wav --report " + kIn + "hard.mid",
        "sing " + song + " -o " + kIn + "out.wav --report " + kIn + "sub/../out.wav",
    };
#ifdef _WIN32
    rows.push_back("encode " + song + " -o " + kIn + "SONG.Mid");
    rows.push_back("sing " + song + " -o " + kIn + "out.wav --report " + kIn + "OUT.wav");
    rows.push_back("sing " + song + " -o " + kIn + "out.wav --report command_test_files\\out.wav.");
#else
    fs::create_symlink("song.mid", folder.path / "soft.mid");
    fs::create_symlink("sub/../new.wav", folder.path / "new.link"); // to what is not there yet
    rows.push_back("encode " + song + " -o " + kIn + "soft.mid");
    rows.push_back("encode " + kIn + "soft.mid -o " + song);
    rows.push_back("sing " + song + " -o " + kIn + "new.link --report " + kIn + "new.wav");
#endif
    const size_t before = folder.Count();
    for (const std::string& row : rows) {
        const Run run = folder.Torv(row);
        CAPTURE(row);
        CAPTURE(run.said);
        CHECK(run.status == 2);
        CHECK(run.said.find("would be written over") != std::string::npos);
        CHECK(std::count(run.said.begin(), run.said.end(), '\n') == 1);
    }
    CHECK(folder.Content("song.mid") == std::string(bytes.begin(), bytes.end()));
    CHECK(folder.Count() == before);
}

TEST_CASE("outputs: two runs into one file make one whole file, and leave other files alone") {
    const Folder folder;
    const std::string songs[] = {folder.File("low.mid", Song(8, 50)), folder.File("high.mid", Song(8, 70))};
    std::vector<std::string> waves;
    for (const std::string& song : songs) {
        REQUIRE(folder.Torv("sing " + song + " -o " + kIn + "out.wav").status == 0);
        waves.push_back(folder.Content("out.wav"));
    }
    REQUIRE(waves[0] != waves[1]);
    folder.File("out.wav.part", {'m', 'i', 'n', 'e'});
    folder.File("out.wav.sung.part", {'m', 'i', 'n', 'e'});
    std::vector<int> statuses(2, -1);
    const auto run = [&](size_t i) {
        statuses[i] = folder.Torv("sing " + songs[i] + " -o " + kIn + "out.wav", "said" + std::to_string(i)).status;
    };
    std::thread other(run, 0);
    run(1);
    other.join();
    CHECK(statuses == std::vector<int>{0, 0});
    CHECK(std::count(waves.begin(), waves.end(), folder.Content("out.wav")) == 1);
    CHECK(folder.Content("out.wav.part") == "mine");
    CHECK(folder.Content("out.wav.sung.part") == "mine");
    CHECK(folder.Count() == 5);
}

#ifndef _WIN32

TEST_CASE("outputs: a signal leaves the old file and nothing else") {
    const Folder folder;
    const std::string song = folder.File("song.mid", Song(500, 60));
    const std::string out = folder.File("out.wav", {'o', 'l', 'd'});
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t child = Start({"torv", "sing", song, "-o", out});
        REQUIRE(Comes([&] { return folder.Count() > 2; })); // it is under way
        kill(child, signal);
        CHECK(EndedBy(child) == signal);
        CHECK(folder.Count() == 2);
        CHECK(folder.Content("out.wav") == "old");
    }
}

TEST_CASE("play: without a terminal a signal ends it, whatever the sound library wants of it") {
    const Folder folder;
    const std::string song = folder.File("song.mid", Song(500, 60));
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    for (const int signal : {SIGINT, SIGTERM}) {
        const pid_t child = Start({"torv", "play", song, "--device", "Null Output", "--quiet"});
        const fs::path threads = "/proc/" + std::to_string(child) + "/task";
        REQUIRE(Comes([&] { return std::distance(fs::directory_iterator(threads), fs::directory_iterator()) > 2; }));
        kill(child, signal);
        CHECK(EndedBy(child) == signal);
    }
    unsetenv("SDL_AUDIODRIVER");
}

TEST_CASE("outputs: a full disk is called that, on standard output too") {
    const Folder folder;
    const std::string song = folder.File("song.mid", Song(4, 60));
    folder.File("out.wav", {'o', 'l', 'd'});
    for (const std::string command :
         {"sing", "sing --pan 0 --level -6", "sing --rate 96000 --report command_test_files/r.json", "encode"}) {
        CAPTURE(command);
        const Run run = folder.Shell("ulimit -f 1; ./torv " + command + " --quiet " + song + " -o " + kIn + "out.wav");
        CHECK(run.status == 1);
        CHECK(run.said == "torv: command_test_files/out.wav: the disk is full; make room and try again\n");
        CHECK(folder.Content("out.wav") == "old");
        CHECK(folder.Count() == 2);
    }
    for (const char* arguments : {"icons", "info command_test_files/song.mid --json", "--help"}) {
        const Run run = folder.Torv(std::string(arguments) + " > /dev/full");
        CHECK(run.status == 1);
        CHECK(run.said == "torv: standard output cannot be written: the disk is full; make room and try again\n");
    }
}

TEST_CASE("outputs: a pipe is written into and stays one") {
    const Folder folder;
    const std::string song = folder.File("song.mid", Song(1, 60));
    const std::string pipe = kIn + "pipe";
    fs::create_symlink("/proc/self/fd/1", folder.path / "stdout"); // as /dev/stdout, which is not the test's to lose
    REQUIRE(mkfifo(pipe.c_str(), 0600) == 0);
    for (const std::string verb : {"sing ", "encode "}) {
        REQUIRE(folder.Torv(verb + song + " -o " + kIn + "file").status == 0);
        const std::string whole = folder.Content("file");
        std::thread reader([&] { CHECK(std::system(("cat " + pipe + " > " + kIn + "read").c_str()) == 0); });
        CHECK(folder.Torv(verb + song + " -o " + pipe).status == 0);
        reader.join();
        CHECK(fs::is_fifo(pipe));
        CHECK(folder.Content("read") == whole);
        // What it tells does not get in between.
        const Run run = folder.Torv(verb + song + " -o " + kIn + "stdout | cat > " + kIn + "read");
        CHECK(run.said.find("1 note,") != std::string::npos);
        CHECK(folder.Content("read") == whole);
        CHECK(folder.Count() == 5);
    }
}

#endif
