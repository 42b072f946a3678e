#include "command_names.h"

#include <torv/songs/nearest_names.h>

#include <algorithm>
#include <cctype>

using torv::songs::SuggestNames;

namespace {

const CLI::App* FindVerb(const CLI::App& app, const std::string& name) {
    const std::vector<const CLI::App*> found =
        app.get_subcommands([&name](const CLI::App* verb) { return verb->get_name() == name; });
    if (found.empty())
        throw CLI::ArgumentMismatch("there is no verb \"" + name + "\": " + SuggestNames(VerbNames(app), name));
    return found.front();
}

/// "--level=-6" and "-osong.wav" name options, "-6" and "-" do not.
std::string OptionNamedIn(const std::string& argument) {
    if (argument.starts_with("--"))
        return argument.substr(0, argument.find('='));
    const bool isShort =
        argument.size() > 1 && argument[0] == '-' && std::isalpha(static_cast<unsigned char>(argument[1]));
    return isShort ? argument.substr(0, 2) : std::string();
}

} // namespace

std::vector<std::string> VerbNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const verb : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(verb->get_name());
    return names;
}

std::vector<std::string> OptionNames(const CLI::App& verb) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : verb.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

std::vector<std::string> WithKnownNames(const CLI::App& app, std::vector<std::string> arguments) {
    if (!arguments.empty() && arguments.front() == "help") {
        arguments.erase(arguments.begin());
        arguments.resize(std::min<size_t>(arguments.size(), 1));
        arguments.emplace_back("--help");
    }
    if (arguments.empty()) {
        std::string verbs;
        for (const std::string& name : VerbNames(app))
            verbs += (verbs.empty() ? "" : ", ") + name;
        throw CLI::RequiredError("say what to do: " + verbs, CLI::ExitCodes::RequiredError);
    }
    const CLI::App* const asked = arguments.front().starts_with('-') ? &app : FindVerb(app, arguments.front());
    for (const std::string& argument : arguments) {
        if (argument == "--")
            break; // names of files follow
        const std::string name = OptionNamedIn(argument);
        if (!name.empty() && !asked->get_option_no_throw(name))
            throw CLI::ArgumentMismatch("there is no option " + name +
                                        (asked == &app ? "" : " of torv " + asked->get_name()) + ": " +
                                        SuggestNames(OptionNames(*asked), name));
    }
    return arguments;
}
