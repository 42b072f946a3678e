/// The voices as a host changes them. A change is made to what stands on disk, which other processes may have changed
/// since. What fails leaves all as it was.
#pragma once

#include "torv/abi/dbm.h"
#include "user_file.h"
#include "voices.h"

#include <string>

namespace dbm {

class VoiceStore {
public:
    VoiceStore(const std::string& ownFolder, const std::string& userFolder);

    const Voices& All() const { return m_voices; }

    void Install(const std::string& definitionFile);
    void Uninstall(int32_t voice);

    int32_t Create(int32_t language, int32_t voice, const std::string& name);
    int32_t Copy(int32_t language, int32_t program, const std::string& name);
    void Delete(int32_t language, int32_t program);
    void Move(int32_t language, int32_t program, int32_t toLanguage, int32_t toProgram);
    void Rename(int32_t language, int32_t program, const std::string& name);
    /// Pairs up to one whose name is null.
    void SetParameters(int32_t language, int32_t program, const DBMTextPair* pairs);

private:
    /// Takes over what others wrote.
    void Read();
    template <typename Edit>
    void Change(Edit edit);
    /// Adds the singer that `make(voices)` makes at the lowest free program, which comes back.
    template <typename Make>
    int32_t AddAnywhere(Make make);

    Voices m_own;    ///< as they came with the library
    Voices m_voices; ///< with what the user made
    UserFile m_file;
};

} // namespace dbm
