#include "editor.h"

#include "environment.h"
#include "failure.h"

#include <cstdlib>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace vedit {

using companion::Environment;

namespace {

#if defined(_WIN32)

bool HasTerminal() { return _isatty(0) != 0; }

// The command processor takes the outer quotes away.
std::string CommandLine(const std::string& command, const std::string& file) {
    return "\"" + command + " \"" + file + "\"\"";
}

constexpr int kNotFound = 9009;
int ExitCode(int result) { return result == kNotFound ? -1 : result; }

#else

bool HasTerminal() { return isatty(STDIN_FILENO) != 0; }

std::string CommandLine(const std::string& command, const std::string& file) {
    std::string quoted;
    for (const char each : file)
        quoted += each == '\'' ? std::string("'\\''") : std::string(1, each);
    return command + " '" + quoted + "'";
}

/// Negative when the shell found nothing to run.
int ExitCode(int result) {
    const int code = WIFEXITED(result) ? WEXITSTATUS(result) : 1;
    return result == -1 || code == 126 || code == 127 ? -1 : code;
}

#endif

} // namespace

std::string EditorCommand() {
    // Ours may be a program with windows; those that the system names mostly want a terminal.
    if (std::string own = Environment("TORV_EDITOR"); !own.empty())
        return own;
    Require(HasTerminal(), VEDIT_NO_EDITOR);
    for (const char* name : {"VISUAL", "EDITOR"})
        if (std::string command = Environment(name); !command.empty())
            return command;
    Fail(VEDIT_NO_EDITOR);
}

void RunEditor(const std::string& command, const std::string& file) {
    const int code = ExitCode(std::system(CommandLine(command, file).c_str()));
    Require(code >= 0, VEDIT_NO_EDITOR);
    Require(code == 0, VEDIT_CANCELLED);
}

} // namespace vedit
