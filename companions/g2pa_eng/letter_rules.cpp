#include "letter_rules.h"

#include <array>
#include <vector>

namespace g2pa_eng {
namespace {

// left(letters)right phones; of the rules of a letter the first that fits wins. In the surroundings a small letter is
// itself, V a vowel letter (aeiouy), C a consonant letter, E one of e i y, * any consonants or none, and ^ and $ are
// the word's start and end.
constexpr std::string_view ruleText = R"(
^(a)$ ax; ^(a)rr ax; (augh) ao; (au) ao; (aw) ao; (air) eh r; ^*(are)$ eh r; (arr) ae r; w(ar) ao r; (ar)E eh r;
V*(ard)$ er d; V*(ar)$ er; (ar) aa r; (ai) ey; (ay) ey; (alk) ao k; (all) ao l; (alm) aa m; (alt) ao l t; (ald) ao l d;
(a)tion ey; ^*(a)Cle$ ey; V*(able)$ ax b ax l; V*(age)$ ih jh; V*(ace)$ ax s; V*(ate)$ ey t; (a)Ce$ ey; (ange)$ ey n jh;
(aste)$ ey s t; w(a)sh aa; w(a)t aa; w(a)n aa; qu(a) aa; ^*(a)$ aa; (a)$ ax; ^(a)CV ax; ^(a)tt ax; ^(a)cc ax; ^(a)ff ax;
^(a)nn ax; ^(a)llo ax; ^(a)ddr ax; ^(a)ppea ax; ^*(a)Cy$ ey; ^*(a)Cer ey;
^*(a)Cen ey; V*(al)$ ax l; V*(an)$ ax n; V*(ant)$ ax n t; V*(ance)$ ax n s; (a)V ey; (a) ae;
(eau) ow; (ear)C er; (ear) ih r; (ead)$ eh d; (eath)er eh dh; (eath)$ eh th; (ealth) eh l th; (easure) eh zh er;
(eant)$ eh n t; (ea) iy; (ee)r ih; (ee) iy; (eigh) ey; c(ei) iy; (ei)n ey; (ei) iy; ^*(ey) ey; (ey)$ iy; (ey) ey;
f(ew) y uw; (ew) uw; (eu) uw; ^*(ere)$ ih r; (err) eh r; (er)$ er; (er)V eh r; (er) er; ^*(e)$ iy; V*(e)$ ;
(e)Ce$ iy; V*(el)$ ax l; V*(en)$ ax n; V*(ent)$ ax n t; V*(ence)$ ax n s; V*(et)$ ax t; V*(ess)$ ax s;
^(ex)V ih g z; ^(ex) eh k s; ^(e)CV ih; ^b(e)CV ih; ^r(e)CV ih; ^d(e)CV ih; (eo) iy ow; (e) eh;
(igh) ay; (ign)$ ay n; (ild)$ ay l d; (ind)$ ay n d; ^*(ie)$ ay; (ie) iy; (ire)$ ay er; (irr) ih r; (ir)V ay r;
(ir) er; (ique)$ iy k; V*(ice)$ ih s; V*(ive)$ ih v; ^*(i)$ ay; (i)$ iy; (i)Cle$ ay; (i)Ce$ ay; ^*(i)V ay;
(i)V iy; (i) ih;
(oar) ao r; (oa) ow; ^*(oe)$ ow; (oe) uw; (ook) uh k; w(oo)d uh; t(oo)d uh; h(oo)d$ uh; (oor) ao r; (oo) uw; (oi) oy;
(oy) oy; (ought) ao t; (ough) ow; (ould)$ uh d; s(our) aw er; (our) ao r; V*(ous)$ ax s; (ou)ble ah; (oup) uw p;
y(ou) uw; (ou)th uw; (ou) aw; ^(ow)n ow; r(ow)n aw; t(ow)n aw; d(ow)n aw; l(ow)n aw; (ow)er aw; c(ow) aw; (ow)d aw;
(ow)l aw; (ow) ow; (ore) ao r; V*(or)$ er; w(or)C er; (orr) aa r; (or) ao r; (old) ow l d; c(ost) ao s t;
fr(ost) ao s t; (ost)$ ow s t; (other) ah dh er; (oll)$ ow l; (olk) ow k; l(ove) ah v; d(ove)$ ah v; c(ome) ah m;
s(ome) ah m; (o)tion ow; (o)Ce$ ow; (o)$ ow; V*(on)$ ax n; (ong) ao ng; (off) ao f; (oss) ao s; (oth) ao th;
^*(o)Cen ow; ^*(o)Cer ow; ^*(o)Cy$ ow; ^*(o)Cle$ ow; (o)V ow; (o) aa;
(uy) ay; g(ue)$ ; (ue)$ uw; g(u)E ; (ui)t uw; (uice) uw s; V*(ure)$ er; (ure)$ y uh r; (urr) er; (ur)V y uh r;
(ur) er; (ull)$ uh l; p(u)sh uh; V*(ul)$ ax l; V*(um)$ ax m; V*(us)$ ax s; ^(u)ni y uw; ^(u)s y uw; r(u)CV uw;
l(u)CV uw; j(u)CV uw; s(u)CV uw; d(u)CV uw; t(u)CV uw; n(u)CV uw; (u)CV y uw; (u)tion uw; (u)$ uw; (ua) w aa; (u) ah;
^(y)V y; V(y)V y; ^*(y)$ ay; (y)$ iy; (y)Ce$ ay; (y) ih;
m(b)$ ; (bb) b; (b) b;
^(chr) k r; s(ch) k; (ch) ch; (ck) k; (cc)E k s; (cc) k; (cial) sh ax l; (cious) sh ax s; (cian) sh ax n; s(c)E ;
(c)E s; (c) k;
(dge)$ jh; (dg)E jh; (dd) d; (d) d;
(ff) f; (f) f;
(gg) g; ^(gn) n; ^(gh) g; (gh) ; ^(g)i g; ^(g)et g; (ge)$ jh; (g)E jh; (g) g;
V(h)$ ; V(h)C ; (h) hh;
(j) jh;
^(kn) n; (kk) k; (k) k;
(ll) l; C(le)$ ax l; (l) l;
(mn)$ m; (mm) m; (m) m;
(ng)$ ng; (ng)th ng k; (nge)$ n jh; (ng)er ng g; (ng)E n jh; (ng)l ng g; (ng)r ng g; (ng)V ng g; (ng) ng; (nk) ng k;
(nx) ng k s; (nn) n; (n) n;
(ph) f; ^(ps) s; (pp) p; (p) p;
(que)$ k; (qu) k w; (q) k;
^(rh) r; (rr) r; (r) r;
(sch) s k; (sh) sh; (ssion) sh ax n; V(sion) zh ax n; (sion) sh ax n; (ssure) sh er; V(sure)$ zh er; (stle)$ s ax l;
(ss) s; i(se)$ z; u(se)$ z; ea(se)$ z; oo(se)$ s; o(se)$ z; (se)$ s; V(sm)$ z ax m; V(s)V z; (s) s;
(tch) ch; s(tion) ch ax n; (tion) sh ax n; (tial) sh ax l; (tious) sh ax s; (tient) sh ax n t; (ture)$ ch er;
(tual) ch uw ax l; V(th)er dh; V(the)$ dh; (th) th; (tt) t; s(t)en ; (t) t;
(vv) v; (v) v;
^(wr) r; (who) hh uw; (wh) w; (w) w;
^(x) z; (x) k s;
(zz) z; (z) z;
)";

struct Rule {
    std::string_view left;
    std::string_view letters;
    std::string_view right;
    std::string_view phones;
};
using RuleTable = std::array<std::vector<Rule>, 26>; // by the first of the letters

RuleTable ReadRules() {
    RuleTable table;
    for (size_t at = 0; (at = ruleText.find_first_not_of(" \n", at)) != ruleText.npos;) {
        const size_t end = ruleText.find(';', at);
        const std::string_view text = ruleText.substr(at, end - at);
        const size_t open = text.find('(');
        const size_t close = text.find(')');
        const size_t blank = text.find(' ');
        const Rule rule{text.substr(0, open), text.substr(open + 1, close - open - 1),
                        text.substr(close + 1, blank - close - 1), text.substr(blank + 1)};
        table[rule.letters[0] - 'a'].push_back(rule);
        at = end + 1;
    }
    return table;
}

bool FitsLetter(char pattern, char letter) {
    if (pattern == 'V')
        return IsVowelLetter(letter);
    if (pattern == 'C')
        return letter && !IsVowelLetter(letter);
    if (pattern == 'E')
        return letter == 'e' || letter == 'i' || letter == 'y';
    return pattern == letter;
}

/// Matches a pattern step by step away from the letters; `letterAt(n)` is the n-th letter in that direction, 0 beyond
/// the word.
template <typename PatternAt, typename LetterAt>
bool Fits(size_t length, PatternAt patternAt, LetterAt letterAt) {
    size_t distance = 0;
    for (size_t i = 0; i < length; ++i) {
        const char pattern = patternAt(i);
        if (pattern == '*') {
            while (FitsLetter('C', letterAt(distance)))
                ++distance;
        } else if (pattern == '^' || pattern == '$') {
            if (letterAt(distance))
                return false;
        } else if (!FitsLetter(pattern, letterAt(distance++))) {
            return false;
        }
    }
    return true;
}

bool Fits(const Rule& rule, std::string_view word, size_t at) {
    if (word.substr(at, rule.letters.size()) != rule.letters)
        return false;
    const size_t after = at + rule.letters.size();
    return Fits(
               rule.left.size(), [&](size_t i) { return rule.left[rule.left.size() - 1 - i]; },
               [&](size_t n) { return n < at ? word[at - 1 - n] : '\0'; }) &&
           Fits(
               rule.right.size(), [&](size_t i) { return rule.right[i]; },
               [&](size_t n) { return after + n < word.size() ? word[after + n] : '\0'; });
}

} // namespace

bool IsVowelLetter(char letter) { return std::string_view("aeiouy").find(letter) != std::string_view::npos; }

Phones SpellOut(std::string_view letters) {
    static const RuleTable table = ReadRules();
    Phones phones;
    for (size_t at = 0; at < letters.size();) {
        size_t taken = 1;
        for (const Rule& rule : table[letters[at] - 'a']) {
            if (!Fits(rule, letters, at))
                continue;
            AppendPhones(phones, rule.phones);
            taken = rule.letters.size();
            break;
        }
        at += taken;
    }
    return phones;
}

} // namespace g2pa_eng
