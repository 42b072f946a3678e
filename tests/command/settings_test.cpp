// What is made from the table of options: the manual page, completion, and the configuration file.
#include "command_line.h"
#include "configuration.h"
#include "errors.h"
#include "help.h"
#include "manual.h"
#include "run_command.h"

#include <doctest/doctest.h>

namespace {

std::string FailureOf(const Folder& folder, const std::string& content) {
    const std::string path = folder.File("torv.conf", {content.begin(), content.end()});
    CommandLine line;
    line.app.parse("sing a.mid", false);
    try {
        ApplyConfiguration(line.app, path);
    } catch (const WrongUse& error) {
        return error.message;
    }
    return {};
}

} // namespace

TEST_CASE("settings: the manual page and the completion have every verb and every option") {
    const CommandLine line;
    const std::string page = ManualPage(line.app, "1.2");
    const std::string completion = BashCompletion(line.app);
    size_t options = 0;
    for (const CLI::App* verb : line.app.get_subcommands([](const CLI::App*) { return true; })) {
        CHECK(page.find(".SS torv " + verb->get_name()) != std::string::npos);
        for (const CLI::Option* option : verb->get_options())
            for (const std::string& name : option->get_lnames()) {
                CHECK(completion.find("--" + name + " ") != std::string::npos);
                std::string escaped = "\\-\\-";
                for (const char c : name)
                    escaped += c == '-' ? "\\-" : std::string(1, c);
                CHECK_MESSAGE(page.find(escaped) != std::string::npos, name);
                ++options;
            }
    }
    CHECK(options > 50);
    CHECK(page.find("\\fIINPUT...\\&\\fR") != std::string::npos);
    CHECK(page.find("PART[=VOICE[:DB[:PAN]]]") != std::string::npos);
    CHECK(completion.find("\"sing --rate\") values=\"44100 48000 96000\"") != std::string::npos);
}

TEST_CASE("settings: help fits the terminal, and says what a value may be") {
    CommandLine line;
    CLI::App* const sing = line.app.get_subcommand("sing");
    for (const size_t columns : {72, 90}) {
        sing->formatter(std::make_shared<HelpFormatter>(columns));
        std::istringstream lines(sing->help());
        size_t longest = 0;
        for (std::string text; std::getline(lines, text);)
            longest = std::max(longest, text.size());
        CHECK(longest <= columns);
        CHECK(longest + 6 > columns);
    }
    const std::string help = sing->help();
    for (const std::string text :
         {"\n  --language ja|en|auto       What", "\n  --level DB                  Loud",
          "\n  --part PART[=VOICE[:DB[:PAN]]]\n          ", "\n  --plain                     Leave"})
        CHECK_MESSAGE(help.find(text) != std::string::npos, text);
    CHECK(help.find("\n  INPUT                       The") != std::string::npos);
    CHECK(DescriptionOf(*sing->get_option("--level")).ends_with("amplitude (-60 to 24; else 0)"));
    CHECK(DescriptionOf(*sing->get_option("--language")).ends_with("at them (else auto)"));
    CHECK(DescriptionOf(*sing->get_option("--normalize")).ends_with("so many (-60 to 0)"));
}

TEST_CASE("settings: standing wishes hold where the command line says nothing, and are refused by line") {
    const Folder folder;
    const std::string content =
        "# mine\n\nrate=48000\r\n[sing]\n  voice = Thomas \nquiet\nlevel = -3\nat = 1=mf\nat = 2=f\n"
        "[play]\nlevel = 5\n";
    const std::string path = folder.File("torv.conf", {content.begin(), content.end()});
    CommandLine line;
    line.app.parse("sing a.mid --voice Susan --volume 2", false);
    ApplyConfiguration(line.app, path);
    CHECK(line.sing.rate == 48000);
    CHECK(line.sing.song.voice == "Susan");
    CHECK(line.sing.song.quiet);
    CHECK(line.sing.level == doctest::Approx(6.02).epsilon(0.01)); // which is what --volume said
    CHECK(line.sing.song.at == std::vector<std::string>{"1=mf", "2=f"});
    CHECK(line.play.level == 0);
    CHECK(line.play.rate == 44100);

    CHECK(FailureOf(folder, "rate = 48000\nrate = 5\n").find("torv.conf:2: ") != std::string::npos);
    CHECK(FailureOf(folder, "\n[dance]").find("torv.conf:2: there is no verb \"dance\"") != std::string::npos);
    CHECK(FailureOf(folder, "[sing]\nvioce = x")
              .find("torv.conf:2: there is no option \"vioce\" of torv sing: did you mean voice") != std::string::npos);
    CHECK(FailureOf(folder, "voice =").find("torv.conf:1: voice needs a value") != std::string::npos);
    CHECK(FailureOf(folder, "[play]\nlevel = loud").empty()); // it is not what is asked for now

    // What only the databases or the song can refuse is told with its place too, and as wrong use as ever.
    const std::vector<StandingWish> wishes{{"torv.conf:1", "--voice", "Nobody"},
                                           {"torv.conf:2", "--at", "9=Nobdy"},
                                           {"torv.conf:3", "--part", "Alto=None:-3"},
                                           {"torv.conf:4", "--soundfont", "my.sf2"},
                                           {"torv.conf:5", "--to", "0:01"}};
    const auto lineOf = [&wishes](const std::string& error) {
        const std::string said = WithItsPlace(error, wishes);
        return said == error ? '-' : said.at(std::string("torv.conf:").size());
    };
    CHECK(lineOf("there is no voice \"Nobody\": did you mean Ryo?") == '1');
    CHECK(lineOf("there is no voice or dynamic level \"Nobdy\": did you mean Ryo?") == '2');
    CHECK(lineOf("there is no voice \"None\": did you mean Ryo?") == '3');
    CHECK(lineOf("my.sf2: cannot be opened") == '4');
    CHECK(lineOf("--to: there is no such bar") == '5');
    CHECK(lineOf("--to 0:01: lies before the beginning") == '5');
    for (const char* const other : {"there is no voice \"Nob\"", "there is no voice \"body\"", "--total: is no option",
                                    "a.mid: is empty", "\"\""})
        CHECK_MESSAGE(lineOf(other) == '-', other);
    fs::create_directories(folder.path / "nowhere" / "torv");
    folder.File("nowhere/torv/torv.conf", {'v', 'o', 'i', 'c', 'e', '=', 'X'});
    const Run run =
        folder.Torv("sing " + folder.File("a.mid", MidiFile(0, 480, {TrackBytes().On(0, 60).Off(480, 60)})) + " -o " +
                    kIn + "a.wav");
    CHECK(run.status == 2);
    CHECK(run.said.find("torv.conf:1: there is no voice \"X\"") != std::string::npos);
    CHECK(folder.Torv("--version").said == std::string("torv ") + kTorvVersion + "\n");
}
