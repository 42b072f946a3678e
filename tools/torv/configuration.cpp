#include "configuration.h"

#include "command_names.h"
#include "errors.h"

#include <torv/songs/nearest_names.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <utility>

using torv::songs::SuggestNames;

namespace {

std::string Trimmed(const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

[[noreturn]] void Fail(const std::string& where, const std::string& what) { throw WrongUse{where + ": " + what}; }

bool HasOption(const CLI::App& verb, const std::string& name) {
    return verb.get_option_no_throw("--" + name) != nullptr && name != "help";
}

/// The verbs that a line is for.
class Section {
public:
    explicit Section(CLI::App& app) : m_app(app), m_verbs(app.get_subcommands([](CLI::App*) { return true; })) {}

    void Begin(const std::string& where, const std::string& name) {
        m_verbs = m_app.get_subcommands([&](CLI::App* verb) { return verb->get_name() == name; });
        if (m_verbs.empty())
            Fail(where, "there is no verb \"" + name + "\": " + SuggestNames(VerbNames(m_app), name));
    }
    /// Whether the verb that runs is one that the option is for.
    bool IsFor(const std::string& where, const CLI::App* running, const std::string& name) const {
        if (std::none_of(m_verbs.begin(), m_verbs.end(), [&](const CLI::App* verb) { return HasOption(*verb, name); }))
            Fail(where, "there is no option \"" + name + "\"" +
                            (m_verbs.size() == 1 ? " of torv " + m_verbs.front()->get_name() : std::string()) + ": " +
                            SuggestNames(Names(), name));
        return std::find(m_verbs.begin(), m_verbs.end(), running) != m_verbs.end() && HasOption(*running, name);
    }

private:
    /// As they stand in the file, without hyphens before them.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const CLI::App* const verb : m_verbs)
            for (const std::string& name : OptionNames(*verb))
                if (HasOption(*verb, name.substr(2)) &&
                    std::find(names.begin(), names.end(), name.substr(2)) == names.end())
                    names.push_back(name.substr(2));
        return names;
    }

    CLI::App& m_app;
    std::vector<CLI::App*> m_verbs;
};

/// Whether the name is the wish's value or one of its fields, as in "9=Susan" and "Alto=Susan:-3".
bool Holds(const StandingWish& wish, const std::string& name) {
    const std::string& value = wish.value;
    const auto isBorder = [&value](size_t at) { return at >= value.size() || value[at] == '=' || value[at] == ':'; };
    for (size_t at = value.find(name); at != std::string::npos; at = value.find(name, at + 1))
        if ((at == 0 || isBorder(at - 1)) && isBorder(at + name.size()))
            return true;
    return false;
}

/// An error begins with the option or file that it is about, or has the name that is wrong in quotes.
bool IsAbout(const std::string& error, const StandingWish& wish) {
    const size_t quote = error.find('"');
    const std::string name =
        quote == std::string::npos ? std::string() : error.substr(quote + 1, error.find('"', quote + 1) - quote - 1);
    return error.starts_with(wish.option + " ") || error.starts_with(wish.option + ":") ||
           (!wish.value.empty() && error.starts_with(wish.value + ":")) || (!name.empty() && Holds(wish, name));
}

bool IsSaid(const CLI::Option& option) {
    const auto& others = option.get_excludes();
    return option.count() > 0 ||
           std::any_of(others.begin(), others.end(), [](const CLI::Option* other) { return other->count() > 0; });
}

} // namespace

std::string ConfigurationPath() {
    const auto variable = [](const char* name) {
        const char* const value = std::getenv(name);
        return std::string(value ? value : "");
    };
#ifdef _WIN32
    const std::string folder = variable("APPDATA");
#else
    const std::string home = variable("HOME");
    const std::string named = variable("XDG_CONFIG_HOME");
    const std::string folder = !named.empty() || home.empty() ? named : home + "/.config";
#endif
    return folder.empty() ? folder : folder + "/torv/torv.conf";
}

std::vector<StandingWish> ApplyConfiguration(CLI::App& app, const std::string& path) {
    std::vector<StandingWish> wishes;
    std::ifstream file(path);
    const std::vector<CLI::App*> running = app.get_subcommands();
    if (!file || path.empty() || running.empty())
        return wishes;
    const auto options = running.front()->get_options();
    std::vector<const CLI::Option*> said;
    std::copy_if(options.begin(), options.end(), std::back_inserter(said),
                 [](const CLI::Option* option) { return IsSaid(*option); });
    Section section(app);
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        const std::string where = path + ":" + std::to_string(number);
        const std::string line = Trimmed(text);
        if (line.find('\0') != std::string::npos)
            Fail(where, "this is no text: save the wishes as plain text");
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            section.Begin(where, Trimmed(line.substr(1, line.find(']') - 1)));
            continue;
        }
        const size_t equals = line.find('=');
        const std::string name = Trimmed(line.substr(0, equals));
        const std::string value = equals == std::string::npos ? std::string() : Trimmed(line.substr(equals + 1));
        if (!section.IsFor(where, running.front(), name))
            continue;
        CLI::Option* const option = running.front()->get_option("--" + name);
        if (std::find(said.begin(), said.end(), option) != said.end())
            continue;
        try {
            const bool isFlag = option->get_expected_max() == 0;
            if (!isFlag && value.empty())
                Fail(where, std::string(name).append(" needs a value, as in ").append(name).append(" = ..."));
            if (option->get_multi_option_policy() != CLI::MultiOptionPolicy::TakeAll)
                option->clear(); // of a line before
            option->add_result(isFlag ? option->get_flag_value("--" + name, value) : value);
            option->run_callback();
            wishes.push_back({where, "--" + name, value});
        } catch (const CLI::Error& error) {
            Fail(where, error.what());
        }
    }
    return wishes;
}

std::string WithItsPlace(const std::string& error, const std::vector<StandingWish>& wishes) {
    const auto found = std::find_if(wishes.rbegin(), wishes.rend(),
                                    [&error](const StandingWish& wish) { return IsAbout(error, wish); });
    return found == wishes.rend() ? error : found->where + ": " + error;
}
