#include "command_line.h"

#include "catalogue.h"
#include "help.h"
#include "messages.h"
#include "number_text.h"
#include "terminal.h"
#include "value_checks.h"

#include <cmath>
#include <cstdio>
#include <memory>

namespace {

/// What is asked about a song's words.
void AddWords(CLI::App& command, SongOptions& options) {
    command.add_option("--language", options.language, "What the lyrics are sung as: ja, en, or auto to look at them")
        ->check(OneOf({"ja", "en", "auto"}))
        ->capture_default_str();
    command.add_option("--verse", options.verse, "The verse to sing, counted from 1")
        ->check(NumberFrom(1, 99))
        ->capture_default_str();
    command
        .add_option("--words", options.words,
                    "Words to sing in place of the song's: a text, line by line, with hyphens between the syllables "
                    "of a word, 2. before the second verse and [Alto] before the words of one part")
        ->type_name("FILE");
    command.add_option(
        "--encoding", options.encoding,
        "How the lyrics' bytes are read: utf-8, shift-jis, euc-jp, latin-1 or another that iconv -l lists; "
        "else they are looked at");
}

/// What is asked about a song wherever one is sung.
void AddSong(CLI::App& command, SongOptions& options) {
    AddWords(command, options);
    command.add_option("--voice", options.voice, "Who sings (torv voices); else the voice that suits the part");
    command
        .add_option(
            "--at", options.at,
            "A voice or a dynamic level from a place on: a bar, a beat of it or a time, as in 9=Thomas, 9:3=mf or "
            "0:31.5=Crescendo; may be repeated")
        ->type_name("PLACE=NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--voice-at", options.voicesAt, "Who sings from a place on; may be repeated")
        ->type_name("PLACE=NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command
        .add_option(
            "--dynamics", options.dynamics,
            "A level or a change of it (torv icons --kind dynamics), from the start or from a place on, as in mf "
            "or 5=Crescendo; may be repeated")
        ->type_name("[PLACE=]NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--attack", options.expressions.attack, "How notes begin (torv icons), or none");
    command.add_option("--release", options.expressions.release, "How notes end, or none");
    command.add_option("--transition", options.expressions.transition, "How notes go on into the next one");
    command.add_option("--vibrato", options.expressions.vibrato, "What long notes get, or none");
    command.add_flag("--breaths", options.breaths, "Breathe so that it is heard, before the song and in its pauses");
    command.add_flag("--plain", options.plain,
                     "Leave out the attacks, releases, transitions and vibratos, and what the song says of loudness, "
                     "bends, slurs, staccato, fermatas and the like");
    command
        .add_option("--part", options.parts,
                    "A part to sing, by its name or number (torv sing --list), who sings it, how loud in dB and where "
                    "from -1 (left) to 1, as in Alto=Alice:-3:0.5; may be repeated; else every part with words")
        ->type_name("PART[=VOICE[:DB[:PAN]]]")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--track", options.track, "The track to sing, counted from 1; else those with the lyrics")
        ->check(NumberFrom(1, 1024))
        ->excludes("--part");
    command.add_option("--transpose", options.transpose, "Semitones up, or down when negative")
        ->check(NumberFrom(-60, 60))
        ->capture_default_str();
    command.add_flag("--quiet", options.quiet, "No progress and no summary");
}

void AddInput(CLI::App& command, SongOptions& options) {
    command
        .add_option("INPUT", options.input,
                    "The song: a standard MIDI file, a MusicXML score or a UST; - is standard input")
        ->required();
}

void AddRate(CLI::App& command, unsigned& rate) {
    command.add_option("--rate", rate, "Samples a second: 44100, 48000 or 96000")
        ->check(OneOf({"44100", "48000", "96000"}))
        ->capture_default_str();
}

/// How a sound file is written, wherever one is.
void AddSoundOutput(CLI::App& command, SoundOptions& options) {
    command
        .add_option("--format", options.format,
                    "The kind of sound file, as an ending: wav, flac, ogg, ...; else the name's own ending says it")
        ->type_name("ENDING");
    command
        .add_option("--bits", options.bits,
                    "Bits of a sample: 16, 24, or 32 as floats; kinds that lose something anyway take no notice")
        ->check(OneOf({"16", "24", "32"}))
        ->capture_default_str();
    command
        .add_option("--normalize", options.normalize,
                    "Make all louder or softer, so that the loudest sample is at -1 dB, or at so many")
        ->type_name("[DB]")
        ->check(NumberFrom(-60, 0));
}

/// Loudness is dB everywhere.
CLI::Option* AddLevel(CLI::App& command, double& level) {
    return command.add_option("--level", level, "Loudness in dB: 0 as sung, -6 half the amplitude")
        ->type_name("DB")
        ->check(NumberFrom(-60, 24))
        ->capture_default_str();
}

void AddRange(CLI::App& command, std::string& from, std::string& to) {
    command
        .add_option("--from", from,
                    "Where to begin: a bar as the song counts, a beat of it, or a time, as in 9, 9:3, 1:23.5 or 12.5s")
        ->type_name("PLACE");
    command.add_option("--to", to, "Where to end; else the song's end")->type_name("PLACE");
}

CLI::App* AddSing(CLI::App& app, SingOptions& options) {
    CLI::App* const sing = app.add_subcommand("sing", "Sing song files with lyrics into wave files");
    sing->add_option("INPUT", options.inputs,
                     "The songs: standard MIDI files, MusicXML scores or USTs; - is standard input")
        ->required();
    AddSong(*sing, options.song);
    sing->add_option("-o,--output", options.output,
                     "The sound file to write, of the kind that its ending says (.wav, .flac, .ogg, ...), or - for "
                     "standard output; of several songs the folder for theirs")
        ->type_name("FILE");
    sing->add_option("--practice", options.practice,
                     "Also write a wave for every part with this part in front, and one of all, into this folder")
        ->type_name("FOLDER");
    sing->add_option("--band", options.band,
                     "The parts that nobody sings are played too, 9 dB softer than the voices, or louder by so many dB "
                     "than these; with FluidSynth, not on Windows")
        ->type_name("[DB]")
        ->check(NumberFrom(-60, 24));
    sing->add_option("--soundfont", options.soundFont, "The band's sound font (.sf2, .sf3); else the system's")
        ->type_name("FILE");
    sing->add_flag("--list", options.list, "Only list the song's parts and who would sing them");
    AddRange(*sing, options.from, options.to);
    sing->add_option_function<std::string>(
            "--lead-in",
            [&options](const std::string& text) { options.leadIn = text == "auto" ? std::nullopt : NumberOf(text); },
            "Seconds that the wave begins before the song (or --from); auto keeps what is sung before the first beat")
        ->type_name("auto|SECONDS")
        ->check(
            CLI::Validator([](std::string& text) { return text == "auto" ? std::string() : NumberFrom(0, 60)(text); },
                           "auto or 0 to 60"))
        ->default_str("auto");
    AddRate(*sing, options.rate);
    AddSoundOutput(*sing, options.sound);
    AddLevel(*sing, options.level);
    sing->add_option_function<double>(
            "--volume",
            [&options](double factor) {
                options.level = 20 * std::log10(factor);
                char text[120];
                std::snprintf(text, sizeof text,
                              "--volume goes with the next release: --level %.1f says the same in dB", options.level);
                Remark(false, text);
            },
            "Loudness as a factor; goes with the next release, --level stays")
        ->check(NumberFrom(0.0001, 16))
        ->excludes("--level");
    sing->add_option("--pan", options.pan, "Makes the wave of a single part stereo: -1 left, 0 centre, 1 right")
        ->check(NumberFrom(-1, 1));
    sing->add_option(
            "--report", options.reports,
            "Also write what was sung: .html is a page to look at and listen to, .json every note, .lab labels "
            "for a sound editor, .lrc karaoke lines; may be repeated")
        ->type_name("FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    sing->footer(
        "Example: torv sing song.mid -o song.wav --voice Thomas --dynamics 5=Crescendo\n"
        "The wave begins where the song does, or with the consonants before its first beat. Without lyrics the song is "
        "sung on a vowel.");
    return sing;
}

CLI::App* AddPlay(CLI::App& app, PlayOptions& options) {
    CLI::App* const play = app.add_subcommand("play", "Sing a song with lyrics through the sound card");
    AddInput(*play, options.song);
    AddSong(*play, options.song);
    AddRange(*play, options.from, options.to);
    play->add_flag("--loop", options.loop, "Again and again, until q is pressed");
    play->add_option("--device", options.device, "The wave output (torv devices); else the first one");
    AddRate(*play, options.rate);
    AddLevel(*play, options.level);
    play->add_option("--volume", options.level, "Loudness in dB; goes with the next release, --level stays")
        ->check(NumberFrom(-60, 12))
        ->excludes("--level");
    play->footer(
        "Example: torv play song.mid --from 9 --to 17 --loop\n"
        "On a terminal: space pauses and goes on, left and right seek 5 s, up and down change the volume, Home "
        "goes to the beginning, q quits.");
    return play;
}

CLI::App* AddEncode(CLI::App& app, EncodeOptions& options) {
    CLI::App* const encode = app.add_subcommand("encode", "Write a song as a MIDI file in the voice engine's dialect");
    AddInput(*encode, options.song);
    AddSong(*encode, options.song);
    encode->add_option("-o,--output", options.output, "The MIDI file to write; - is standard output")->required();
    encode->footer(
        "The engine must know of a note two seconds ahead, so that the song begins some bars into the file.");
    return encode;
}

CLI::App* AddInfo(CLI::App& app, InfoOptions& options) {
    CLI::App* const info = app.add_subcommand("info", "Describe a song file or a sound file");
    info->add_option("FILE", options.input, "The file; - is standard input")->required();
    info->add_flag("--json", options.json, "As JSON");
    return info;
}

CLI::App* AddPhonemes(CLI::App& app, PhonemesOptions& options) {
    CLI::App* const phonemes = app.add_subcommand("phonemes", "Show how a song's words are pronounced");
    phonemes->add_option("INPUT", options.song.input,
                         "The song: a standard MIDI file, a MusicXML score or a UST; - is standard input");
    phonemes->add_option("--text", options.text, "Words in place of a song, with hyphens between syllables")
        ->type_name("WORDS");
    AddWords(*phonemes, options.song);
    phonemes->add_flag("--json", options.json, "As JSON");
    phonemes->footer("Example: torv phonemes --text \"si-lent night[n aI t]\"\n"
                     "In any lyric and in --words, brackets behind a word give its phonemes by hand.");
    return phonemes;
}

CLI::App* AddVoices(CLI::App& app, ListOptions& options) {
    CLI::App* const voices = app.add_subcommand("voices", "List the voices that can sing");
    voices->add_flag("--json", options.json, "As JSON, with the voices' parameters");
    return voices;
}

CLI::App* AddIcons(CLI::App& app, ListOptions& options) {
    CLI::App* const icons = app.add_subcommand("icons", "List the expressions and dynamics that notes can have");
    icons->add_option("--kind", options.kind, "Only one kind: " + IconKindNames());
    icons->add_flag("--json", options.json, "As JSON");
    return icons;
}

CLI::App* AddDevices(CLI::App& app, ListOptions& options) {
    CLI::App* const devices = app.add_subcommand("devices", "List the wave and MIDI outputs");
    devices->add_flag("--json", options.json, "As JSON");
    return devices;
}

CLI::App* AddMix(CLI::App& app, MixOptions& options) {
    CLI::App* const mix = app.add_subcommand("mix", "Mix sound files into a stereo one");
    mix->add_option("FILES", options.inputs,
                    "Sound files of one rate, each with its level in dB and pan (-1..1); - is standard input")
        ->type_name("FILE[:DB[:PAN]]")
        ->required();
    mix->add_option("-o,--output", options.output,
                    "The sound file to write, of the kind that its ending says, or - for standard output")
        ->type_name("FILE")
        ->required();
    AddSoundOutput(*mix, options.sound);
    mix->add_flag("--quiet", options.quiet, "No summary");
    mix->footer("Example: torv mix voice.wav piano.wav:-6 strings.wav:-9.5:0.4 -o song.wav\n"
                "All begin together.");
    return mix;
}

} // namespace

CommandLine::CommandLine()
    : singing(AddSing(app, sing)), playing(AddPlay(app, play)), encoding(AddEncode(app, encode)),
      describing(AddInfo(app, info)), spelling(AddPhonemes(app, phonemes)), mixing(AddMix(app, mix)),
      voices(AddVoices(app, list)), icons(AddIcons(app, list)), devices(AddDevices(app, list)) {
    app.require_subcommand(1);
    const auto formatter = std::make_shared<HelpFormatter>(TerminalWidth(stdout));
    app.formatter(formatter);
    for (CLI::App* const verb : app.get_subcommands({})) {
        verb->group("Verbs");
        verb->formatter(formatter);
        verb->allow_windows_style_options(false); // a path may begin with a slash everywhere
    }
    app.footer("torv VERB --help tells what one can do, as in torv sing --help.");
    app.set_version_flag("--version", std::string("torv ") + kTorvVersion);
}
