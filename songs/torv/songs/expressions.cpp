#include "torv/songs/expressions.h"

namespace torv::songs {

namespace {

constexpr const char* kNone = "none";

DWORD Find(const Databases& databases, const IconKind& kind, const std::string& name, bool isUsual) {
    if (name == kNone || (name.empty() && !isUsual))
        return 0;
    if (!name.empty())
        return databases.Find(kind, name);
    const std::vector<Databases::Entry> all = databases.List(kind);
    return all.empty() ? 0 : all.front().id;
}

/// 0 where the databases have no such transition.
DWORD FindSlide(const Databases& databases) {
    for (const Databases::Entry& entry : databases.List(kTransitions))
        if (entry.name == "Slow Transition")
            return entry.id;
    return 0;
}

} // namespace

Expressions FindExpressions(const Databases& databases, const ExpressionNames& names) {
    return {Find(databases, kAttacks, names.attack, true), Find(databases, kReleases, names.release, true),
            Find(databases, kTransitions, names.transition, false), FindSlide(databases),
            Find(databases, kVibratos, names.vibrato, true)};
}

} // namespace torv::songs
