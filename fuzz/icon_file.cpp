// Icons of every kind from any section of any file; what they describe reads back.
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_singer.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/typed_file/typed_file.h"

namespace {

void Exercise(CIconObject& icon, CxTypedFile& file, const char* section) {
    icon.ConstructParameter(&file, section);
    icon.TrimIconTail(icon.GetLength() / 2);
    icon.TrimIconHead(icon.GetLength() / 2);
    CxTypedFile described;
    icon.DescribeParameter(&described, "Icon");
    icon.ConstructParameter(&described, "Icon");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CxTypedFile file;
    file.Load(data, static_cast<DWORD>(size));
    CxSectionMap& sections = *file.GetSectionMap();
    for (POSITION at = sections.GetStartPosition(); at;) {
        CString name;
        CxEntryMap* entries = nullptr;
        sections.GetNextAssoc(at, name, entries);
        CIconNoteAttack attack(1, 1, 1);
        CIconNoteTransit transit(3, 3, 1);
        CIconSinger singer;
        CIconVibrato vibrato(4, 4, 1);
        Exercise(attack, file, name);
        Exercise(transit, file, name);
        Exercise(singer, file, name);
        Exercise(vibrato, file, name);
        for (const int articulation : {1, 2, 9}) {
            CIconDynamics dynamics(5, articulation, 1);
            Exercise(dynamics, file, name);
            CBreakPointArray array;
            dynamics.NormalizeBreakPointArray(1000, array, 72);
        }
    }
    return 0;
}
