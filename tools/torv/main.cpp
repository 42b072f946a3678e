#include "catalogue.h"
#include "command_line.h"
#include "command_names.h"
#include "configuration.h"
#include "describe.h"
#include "devices.h"
#include "errors.h"
#include "interruption.h"
#include "messages.h"
#include "optional_values.h"

#include <torv/platform/afx/exception.h>
#include <torv/songs/song_error.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <new>

namespace {

constexpr int kBadInput = 1;
constexpr int kWrongUse = 2;

/// What was kept back until now is written at last, or it is told that it cannot be.
int WithOutputWritten(int status) {
    errno = 0;
    const bool isWritten = std::fflush(stdout) == 0 && !std::ferror(stdout) && std::cout.flush();
    if (isWritten)
        return status;
    std::fprintf(stderr, "torv: standard output cannot be written%s\n",
                 errno == ENOSPC ? ": the disk is full; make room and try again" : "; see where it goes");
    return kBadInput;
}

int Run(const CommandLine& line) {
    if (*line.voices)
        ListVoices(line.list.json);
    else if (*line.icons)
        ListIcons(line.list.kind, line.list.json);
    else if (*line.devices)
        ListDevices(line.list.json);
    else if (*line.describing)
        Describe(line.info.input, line.info.json);
    else if (*line.spelling)
        PrintPhonemes(line.phonemes);
    else if (*line.encoding)
        Encode(line.encode);
    else if (*line.mixing)
        Mix(line.mix);
    else if (*line.playing)
        Play(line.play);
    else if (*line.singing)
        return Sing(line.sing) > 0 ? kBadInput : 0;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    LeaveNothingWhenInterrupted();
    CommandLine line;
    line.app.failure_message([verb = argc > 1 ? std::string(argv[1]) : std::string()](const CLI::App* app,
                                                                                      const CLI::Error& error) {
        const std::vector<std::string> verbs = VerbNames(*app);
        const bool isKnown = std::find(verbs.begin(), verbs.end(), verb) != verbs.end();
        std::string what = error.what();
        if (what.ends_with(" missing")) // "--voice: 1 required TEXT missing"
            what = what.substr(0, what.find(':')) + " needs a value";
        return "torv: " + what + " (torv " + (isKnown ? verb + " " : std::string()) + "--help tells what there is)\n";
    });
    try {
        std::vector<std::string> arguments = WithOptionalValues(
            WithKnownNames(line.app, {argv + 1, argv + std::max(argc, 1)}), {{"--band", "-9"}, {"--normalize", "-1"}});
        std::reverse(arguments.begin(), arguments.end()); // as the parser takes them
        line.app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return WithOutputWritten(line.app.exit(error) == 0 ? 0 : kWrongUse);
    }
    std::vector<StandingWish> wishes;
    const auto fail = [&wishes](const std::string& message, int status) {
        std::fprintf(stderr, "torv: %s\n", WithItsPlace(message, wishes).c_str());
        return status;
    };
    try {
        const bool isFontNamed = line.singing->count("--soundfont") > 0;
        wishes = ApplyConfiguration(line.app, ConfigurationPath());
        if (isFontNamed && !line.sing.band)
            Remark(line.sing.song.quiet, "--soundfont: nobody plays from it without --band");
        return WithOutputWritten(Run(line));
    } catch (const InputError& error) {
        return fail(error.message, kBadInput);
    } catch (const torv::songs::NameError& error) {
        return fail(error.what(), kWrongUse);
    } catch (const torv::songs::SongError& error) {
        return fail(error.what(), kBadInput);
    } catch (const WrongUse& error) {
        return fail(error.message, kWrongUse);
    } catch (const std::bad_alloc&) {
        return fail("there is not enough memory for this", kBadInput);
    } catch (const CMemoryException&) {
        return fail("there is not enough memory for this", kBadInput);
    }
}
