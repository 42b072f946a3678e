#pragma once

#include <string>

/// Prints the voices of the databases: name, language and what the engine is told of them.
void ListVoices(bool json);

/// Prints the icons of the databases, of one kind (as IconKind has its name) or, with an empty name, of all.
void ListIcons(const std::string& kind, bool json);

/// "attack, transition, ...", for messages.
std::string IconKindNames();
