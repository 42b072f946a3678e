#include "manual.h"

#include "catalogue.h"
#include "help.h"

#include <algorithm>

namespace {

using Verbs = std::vector<const CLI::App*>;

Verbs VerbsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& verb) {
    return verb.get_options([](const CLI::Option* option) { return !option->get_group().empty(); });
}

/// What the option's value may be, where there is a fixed list.
std::string ChoicesOf(const CLI::Option& option) {
    std::string choices = option.get_type_name().find('{') == std::string::npos ? "" : ValueNameOf(option);
    std::replace(choices.begin(), choices.end(), '|', ' ');
    return choices;
}

/// As troff wants it: hyphens that can be copied, no line that begins with a command.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (escaped.empty() || escaped.back() == '\n')
            escaped += c == '.' || c == '\'' ? "\\&" : "";
        escaped += c == '-' ? "\\-" : c == '\\' ? "\\e" : std::string(1, c);
        if (c == '\n')
            escaped.insert(escaped.size() - 1, "\n.br");
    }
    return escaped;
}

std::string OptionEntry(const CLI::Option& option) {
    const bool isPositional = option.get_positional();
    std::string name = option.get_name(isPositional, !isPositional);
    if (const size_t comma = name.find(','); comma != std::string::npos)
        name.insert(comma + 1, " ");
    std::string entry = ".TP\n\\fB" + Escaped(name) + "\\fR";
    if (const std::string value = ValueNameOf(option); !value.empty() && !isPositional)
        entry += " \\fI" + Escaped(value) + "\\fR";
    return entry + "\n" + Escaped(DescriptionOf(option)) + ".\n";
}

} // namespace

std::string ManualPage(const CLI::App& app, const std::string& version) {
    std::string page = ".TH TORV 1 \"\" \"torv " + version + "\" \"User Commands\"\n.SH NAME\ntorv \\- sings scores\n" +
                       ".SH SYNOPSIS\n";
    for (const CLI::App* verb : VerbsOf(app)) {
        page += ".B torv " + verb->get_name() + "\n";
        for (const CLI::Option* option : OptionsOf(*verb))
            if (option->get_positional())
                page += "\\fI" + Escaped(option->get_name(true)) + (option->get_expected_max() > 1 ? "...\\&" : "") +
                        "\\fR\n";
        page += "[\\fIoptions\\fR]\n.br\n";
    }
    page += ".SH DESCRIPTION\n";
    for (const CLI::App* verb : VerbsOf(app)) {
        page += ".SS torv " + verb->get_name() + "\n" + Escaped(verb->get_description()) + ".\n";
        for (const CLI::Option* option : OptionsOf(*verb))
            page += OptionEntry(*option);
        if (!verb->get_footer().empty())
            page += ".PP\n" + Escaped(verb->get_footer()) + "\n";
    }
    return page + ".SH FILES\n.TP\n.I ~/.config/torv/torv.conf\n" +
           Escaped(
               "Standing wishes, below $XDG_CONFIG_HOME where that is set: lines as in \"rate = 48000\", named as the "
               "options are; those behind a line as in [sing] are for that verb alone. The command line wins.") +
           "\n.SH EXIT STATUS\n" + Escaped("0, or 1 for bad input and what cannot be written, or 2 for wrong use.") +
           "\n";
}

std::string BashCompletion(const CLI::App& app) {
    std::string kinds = IconKindNames();
    std::erase(kinds, ',');
    std::string names;
    std::string options;
    std::string choices;
    for (const CLI::App* verb : VerbsOf(app)) {
        names += verb->get_name() + " ";
        options += "    " + verb->get_name() + ") options=\"";
        for (const CLI::Option* option : OptionsOf(*verb)) {
            for (const std::string& name : option->get_lnames())
                options += "--" + name + " ";
            for (const std::string& name : option->get_lnames())
                if (const std::string values = ChoicesOf(*option); !values.empty())
                    choices.append("    \"")
                        .append(verb->get_name())
                        .append(" --")
                        .append(name)
                        .append("\") values=\"")
                        .append(values)
                        .append("\" ;;\n");
        }
        options += "\" ;;\n";
    }
    return "# bash completion of torv; what is no option is a file.\n"
           "_torv() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} options= values=\n"
           "    if [ \"$COMP_CWORD\" = 1 ]; then\n"
           "        COMPREPLY=($(compgen -W \"" +
           names +
           "--help --version\" -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case \"${COMP_WORDS[1]}\" in\n" +
           options +
           "    esac\n"
           "    case \"${COMP_WORDS[1]} ${COMP_WORDS[COMP_CWORD - 1]}\" in\n" +
           choices +
           "    esac\n"
           // Names may have blanks in them: they stand between columns that two blanks part.
           "    local names=\n"
           "    case \"${COMP_WORDS[COMP_CWORD - 1]}\" in\n"
           "    --voice) names=$(torv voices 2>/dev/null | awk -F '  +' 'NR > 1 { print $1 }') ;;\n"
           "    --attack | --release | --transition | --vibrato | --dynamics)\n"
           "        names=$(torv icons --kind \"${COMP_WORDS[COMP_CWORD - 1]#--}\" 2>/dev/null | awk -F '  +' 'NR > 1 "
           "{ "
           "print $2 }') ;;\n"
           "    --kind) values=\"" +
           kinds +
           "\" ;;\n"
           "    esac\n"
           "    if [ -n \"$names\" ]; then\n"
           "        local IFS=$'\\n'\n"
           "        COMPREPLY=($(compgen -W \"$names\" -- \"$word\"))\n"
           "        COMPREPLY=(\"${COMPREPLY[@]// /\\\\ }\")\n"
           "    elif [ -n \"$values\" ]; then\n"
           "        COMPREPLY=($(compgen -W \"$values\" -- \"$word\"))\n"
           "    elif [[ $word == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$options\" -- \"$word\"))\n"
           "    fi\n"
           "}\n"
           "complete -o default -F _torv torv\n";
}
