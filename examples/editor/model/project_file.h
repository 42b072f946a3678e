#pragma once

#include "document.h"

#include <string_view>

/// The editor's own file: the document as JSON that a person can read. What is read is looked at in full before any of
/// it is taken: unknown bytes give one EditorError, which says where, and no half of a song.
namespace editor {

std::string ProjectText(const Document& document);
/// `name` is only named in errors.
Document ReadProject(std::string_view text, const std::string& name);

/// The file is replaced when the new one is whole; what was there stays when that fails.
void SaveProject(const Document& document, const std::string& path);
Document LoadProject(const std::string& path);

} // namespace editor
