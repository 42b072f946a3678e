/// A text file that only lives while its object does.
#pragma once

#include <string>

namespace vedit {

class TemporaryFile {
public:
    /// Fails with VEDIT_FILE_ERROR.
    explicit TemporaryFile(const std::string& content);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const { return m_path; }
    /// What is in it now. Fails with VEDIT_BAD_INPUT when it is gone or larger than a person would write.
    std::string Content() const;

private:
    std::string m_path;
};

} // namespace vedit
