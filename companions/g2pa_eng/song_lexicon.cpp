#include "dictionary.h"

#include <algorithm>
#include <utility>

namespace g2pa_eng {
namespace {

// One word and its phones before each semicolon. Words stand here because they are common in songs, because singers
// say them otherwise than speakers do, or because their spelling misleads.
constexpr std::string_view lexicon = R"(
a ax; an ae n; the dh ax; thee dh iy; thy dh ay; thou dh aw; thine dh ay n; and ae n d; or ao r; nor n ao r;
but b ah t; if ih f; of ah v; off ao f; on aa n; in ih n; to t uw; too t uw; two t uw; for f ao r; from f r ah m;
with w ih dh; without w ih dh aw1 t; within w ih dh ih1 n; into ih1 n t uw; onto aa1 n t uw; upon ax p aa1 n; at ae t;
by b ay; as ae z; than dh ae n; then dh eh n; so s ow; no n ow; not n aa t; yes y eh s; up ah p; down d aw n;
out aw t; about ax b aw1 t; above ax b ah1 v; below b ih l ow1; over ow1 v er; under ah1 n d er; around ax r aw1 n d;
along ax l ao1 ng; again ax g eh1 n; against ax g eh1 n s t; away ax w ey1; across ax k r ao1 s; after ae1 f t er;
before b ih f ao1 r; behind b ih hh ay1 n d; beside b ih s ay1 d; between b ih t w iy1 n; beyond b ih y aa1 n d;
through th r uw; though dh ow; thought th ao t; although ao l dh ow1; until ax n t ih1 l; till t ih l; while w ay l;
i ay; me m iy; my m ay; mine m ay n; myself m ay s eh1 l f; you y uw; your y ao r; yours y ao r z;
yourself y ao r s eh1 l f; he hh iy; him hh ih m; his hh ih z; she sh iy; her hh er; it ih t; its ih t s; we w iy;
us ah s; our aw er; ours aw er z; they dh ey; them dh eh m; their dh eh r; theirs dh eh r z; this dh ih s;
that dh ae t; these dh iy z; those dh ow z; who hh uw; whom hh uw m; whose hh uw z; what w ah t; which w ih ch;
when w eh n; where w eh r; why w ay; how hh aw; here hh ih r; there dh eh r; be b iy; am ae m; is ih z; are aa r;
was w aa z; were w er; been b ih n; being b iy1 ih ng; do d uw; does d ah z; did d ih d; done d ah n;
doing d uw1 ih ng; have hh ae v; has hh ae z; had hh ae d; having hh ae1 v ih ng; will w ih l; would w uh d;
shall sh ae l; should sh uh d; can k ae n; could k uh d; may m ey; might m ay t; must m ah s t; go g ow; goes g ow z;
going g ow1 ih ng; gone g ao n; went w eh n t; come k ah m; comes k ah m z; coming k ah1 m ih ng; came k ey m;
become b ih k ah1 m; say s ey; says s eh z; said s eh d; see s iy; seen s iy n; saw s ao; know n ow; knows n ow z;
knew n uw; known n ow n; make m ey k; made m ey d; take t ey k; took t uh k; taken t ey1 k ax n; give g ih v;
gives g ih v z; given g ih1 v ax n; gave g ey v; live l ih v; lives l ih v z; living l ih1 v ih ng; alive ax l ay1 v;
life l ay f; love l ah v; loves l ah v z; loved l ah v d; loving l ah1 v ih ng; lover l ah1 v er; lovers l ah1 v er z;
lovely l ah1 v l iy; beloved b ih l ah1 v ax d; want w aa n t; wants w aa n t s; wanted w aa1 n t ax d; need n iy d;
put p uh t; get g eh t; got g aa t; getting g eh1 t ih ng; gotten g aa1 t ax n; let l eh t; look l uh k; feel f iy l;
felt f eh l t; find f ay n d; found f aw n d; mind m ay n d; kind k ay n d; blind b l ay n d; hear hh ih r;
heard hh er d; heart hh aa r t; hearts hh aa r t s; tear t ih r; tears t ih r z; bear b eh r; wear w eh r;
near n ih r; dear d ih r; clear k l ih r; year y ih r; years y ih r z; fear f ih r; ear ih r; earth er th;
early er1 l iy; learn l er n; pearl p er l; think th ih ng k; bring b r ih ng; brought b r ao t; bought b ao t;
caught k ao t; taught t ao t; fought f ao t; daughter d ao1 t er; laugh l ae f; laughing l ae1 f ih ng;
laughter l ae1 f t er; enough ih n ah1 f; rough r ah f; tough t ah f; cough k ao f; walk w ao k; talk t ao k;
call k ao l; fall f ao l; all ao l; always ao1 l w ey z; already ao l r eh1 d iy; almost ao1 l m ow s t; tell t eh l;
told t ow l d; old ow l d; cold k ow l d; gold g ow l d; golden g ow1 l d ax n; hold hh ow l d; soul s ow l;
sold s ow l d; world w er l d; word w er d; words w er d z; work w er k; worth w er th; worry w er1 iy; girl g er l;
boy b oy; man m ae n; men m eh n; woman w uh1 m ax n; women w ih1 m ax n; people p iy1 p ax l; child ch ay l d;
children ch ih1 l d r ax n; baby b ey1 b iy; mother m ah1 dh er; father f aa1 dh er; brother b r ah1 dh er;
sister s ih1 s t er; friend f r eh n d; friends f r eh n d z; other ah1 dh er; another ax n ah1 dh er;
together t ax g eh1 dh er; either iy1 dh er; neither n iy1 dh er; weather w eh1 dh er; feather f eh1 dh er;
heaven hh eh1 v ax n; seven s eh1 v ax n; eleven ih l eh1 v ax n; hell hh eh l; god g aa d; lord l ao r d;
angel ey1 n jh ax l; angels ey1 n jh ax l z; holy hh ow1 l iy; silent s ay1 l ax n t; night n ay t; nights n ay t s;
tonight t ax n ay1 t; light l ay t; bright b r ay t; right r ay t; high hh ay; sky s k ay; star s t aa r;
stars s t aa r z; sun s ah n; moon m uw n; rain r ey n; snow s n ow; wind w ih n d; fire f ay er; water w ao1 t er;
river r ih1 v er; ocean ow1 sh ax n; sea s iy; island ay1 l ax n d; mountain m aw1 n t ax n; flower f l aw1 er;
flowers f l aw1 er z; power p aw1 er; hour aw er; hours aw er z; tower t aw1 er; day d ey; days d ey z;
today t ax d ey1; tomorrow t ax m aa1 r ow; yesterday y eh1 s t er d ey; morning m ao1 r n ih ng;
evening iy1 v n ih ng; time t ay m; one w ah n; once w ah n s; none n ah n; three th r iy; four f ao r; five f ay v;
six s ih k s; eight ey t; nine n ay n; ten t eh n; twelve t w eh l v; zero z ih1 r ow; twenty t w eh1 n t iy;
thirty th er1 t iy; forty f ao1 r t iy; fifty f ih1 f t iy; sixty s ih1 k s t iy; seventy s eh1 v ax n t iy;
eighty ey1 t iy; ninety n ay1 n t iy; thirteen th er t iy1 n; fourteen f ao r t iy1 n; fifteen f ih f t iy1 n;
sixteen s ih k s t iy1 n; seventeen s eh v ax n t iy1 n; eighteen ey t iy1 n; nineteen n ay n t iy1 n;
hundred hh ah1 n d r ax d; thousand th aw1 z ax n d; million m ih1 l y ax n; first f er s t; last l ae s t;
second s eh1 k ax n d; every eh1 v r iy; everyone eh1 v r iy w ah n; everything eh1 v r iy th ih ng;
everybody eh1 v r iy b aa d iy; everywhere eh1 v r iy w eh r; ever eh1 v er; never n eh1 v er; forever f er eh1 v er;
whatever w ah t eh1 v er; any eh1 n iy; anyone eh1 n iy w ah n; anything eh1 n iy th ih ng; anymore eh n iy m ao1 r;
many m eh1 n iy; only ow1 n l iy; some s ah m; someone s ah1 m w ah n; something s ah1 m th ih ng;
somewhere s ah1 m w eh r; sometimes s ah1 m t ay m z; nothing n ah1 th ih ng; nobody n ow1 b aa d iy;
somebody s ah1 m b aa d iy; body b aa1 d iy; much m ah ch; such s ah ch; more m ao r; most m ow s t; both b ow th;
each iy ch; very v eh1 r iy; just jh ah s t; even iy1 v ax n; still s t ih l; yet y eh t; because b ih k ao1 z;
maybe m ey1 b iy; please p l iy z; sorry s aa1 r iy; sure sh uh r; sugar sh uh1 g er; pretty p r ih1 t iy;
little l ih1 t ax l; big b ih g; good g uh d; goodbye g uh d b ay1; bye b ay; hello hh ax l ow1; better b eh1 t er;
beautiful b y uw1 t ax f ax l; beauty b y uw1 t iy; wonderful w ah1 n d er f ax l; wonder w ah1 n d er;
happy hh ae1 p iy; sad s ae d; lonely l ow1 n l iy; alone ax l ow1 n; blue b l uw; true t r uw; truth t r uw th;
new n uw; young y ah ng; great g r ey t; sweet s w iy t; dream d r iy m; dreams d r iy m z; music m y uw1 z ih k;
song s ao ng; sing s ih ng; dance d ae n s; piano p iy ae1 n ow; guitar g ih t aa1 r; voice v oy s; sound s aw n d;
hand hh ae n d; hands hh ae n d z; eye ay; eyes ay z; face f ey s; kiss k ih s; touch t ah ch; blood b l ah d;
door d ao r; floor f l ao r; poor p uh r; move m uw v; lose l uw z; lost l ao s t; prove p r uw v; shoe sh uw;
shoes sh uw z; whole hh ow l; half hh ae f; hope hh ow p; home hh ow m; house hh aw s; road r ow d; town t aw n;
city s ih1 t iy; country k ah1 n t r iy; street s t r iy t; window w ih1 n d ow; answer ae1 n s er;
question k w eh1 s ch ax n; listen l ih1 s ax n; castle k ae1 s ax l; whistle w ih1 s ax l;
christmas k r ih1 s m ax s; jesus jh iy1 z ax s; mary m eh1 r iy; merry m eh1 r iy; jingle jh ih1 ng g ax l;
twinkle t w ih1 ng k ax l; diamond d ay1 m ax n d; single s ih1 ng g ax l; angry ae1 ng g r iy;
hungry hh ah1 ng g r iy; finger f ih1 ng g er; stronger s t r ao1 ng g er; longer l ao1 ng g er;
younger y ah1 ng g er; color k ah1 l er; colour k ah1 l er; honey hh ah1 n iy; money m ah1 n iy; monkey m ah1 ng k iy;
front f r ah n t; month m ah n th; son s ah n; won w ah n; wolf w uh l f; ghost g ow s t; climb k l ay m; sign s ay n;
wild w ay l d; wise w ay z; promise p r aa1 m ax s; machine m ax sh iy1 n; police p ax l iy1 s; idea ay d iy1 ax;
real r iy l; really r iy1 l iy; lion l ay1 ax n; quiet k w ay1 ax t; riot r ay1 ax t; poem p ow1 ax m;
science s ay1 ax n s; violin v ay ax l ih1 n; family f ae1 m ax l iy; memory m eh1 m er iy; memories m eh1 m er iy z;
history hh ih1 s t er iy; story s t ao1 r iy; glory g l ao1 r iy; victory v ih1 k t er iy; america ax m eh1 r ax k ax;
miracle m ih1 r ax k ax l; universe y uw1 n ax v er s; paradise p eh1 r ax d ay s; read r iy d; head hh eh d;
dead d eh d; bread b r eh d; ready r eh1 d iy; steady s t eh1 d iy; instead ih n s t eh1 d; breath b r eh th;
death d eh th; build b ih l d; built b ih l t; guess g eh s; busy b ih1 z iy; business b ih1 z n ax s;
bury b eh1 r iy; minute m ih1 n ax t; lie l ay; die d ay; tie t ay; pie p ay; cried k r ay d; cry k r ay; try t r ay;
fly f l ay; ooh uw; oo uw; oh ow; o ow; ah aa; aah aa; eh eh; uh ah; huh hh ah; ha hh aa; la l aa; na n aa; da d aa;
ba b aa; ma m aa; pa p aa; ra r aa; ya y aa; fa f aa; hey hh ey; yeah y ae; yea y ey; whoa w ow; wow w aw; ay ay;
doo d uw; shoo sh uw; boo b uw; hm hh m; hmm hh m; mm m; mmm m; sh sh; shh sh; gonna g ah1 n ax; wanna w aa1 n ax;
gotta g aa1 t ax; cuz k ah z; mr m ih1 s t er; mrs m ih1 s ax z; okay ow k ey1; ok ow k ey1; tv t iy v iy1;
solo s ow1 l ow; alleluia ae l ax l uw1 y ax; hallelujah hh ae l ax l uw1 y ax; amen aa m eh1 n; amor aa m ao1 r;
cafe k ae f ey1; i'm ay m; i'll ay l; i've ay v; i'd ay d; you're y ao r; you'll y uw l; you've y uw v; you'd y uw d;
he's hh iy z; she's sh iy z; it's ih t s; we're w ih r; we'll w iy l; we've w iy v; we'd w iy d; they're dh eh r;
they'll dh ey l; they've dh ey v; they'd dh ey d; that's dh ae t s; let's l eh t s; what's w ah t s; don't d ow n t;
won't w ow n t; can't k ae n t; ain't ey n t; aren't aa r n t; weren't w er n t; shan't sh ae n t; y'all y ao l;
ma'am m ae m; o'er ao r; e'er eh r; ne'er n eh r; 'tis t ih z; 'twas t w aa z; 'twill t w ih l; 'cause k ah z;
'til t ih l; 'bout b aw t; 'round r aw n d; 'em ax m; 'neath n iy th; 'n ax n; 'n' ax n; an' ae n; ol' ow l; o' ax;
o'clock ax k l aa1 k; lil' l ih l;
tra t r aa; sha sh aa; dee d iy; dum d ah m; ho hh ow;
now n aw; cow k aw; tongue t ah ng;
nature n ey1 ch er; danger d ey1 n jh er; stranger s t r ey1 n jh er;
strangers s t r ey1 n jh er z; tiger t ay1 g er; chorus k ao1 r ax s; photo f ow1 t ow;
)";

struct Entry {
    std::string_view word;
    std::string_view phones;
};

std::vector<Entry> ReadLexicon() {
    std::vector<Entry> entries;
    for (size_t at = 0; (at = lexicon.find_first_not_of(" \n", at)) != lexicon.npos;) {
        const size_t end = lexicon.find(';', at);
        const std::string_view entry = lexicon.substr(at, end - at);
        const size_t blank = entry.find(' ');
        entries.push_back({entry.substr(0, blank), entry.substr(blank + 1)});
        at = end + 1;
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.word < b.word; });
    return entries;
}

} // namespace

std::optional<Phones> FindSongWord(std::string_view word) {
    static const std::vector<Entry> entries = ReadLexicon();
    const auto found =
        std::lower_bound(entries.begin(), entries.end(), word,
                         [](const Entry& entry, std::string_view wanted) { return entry.word < wanted; });
    if (found == entries.end() || found->word != word)
        return std::nullopt;
    Phones phones;
    AppendPhones(phones, found->phones);
    return phones;
}

} // namespace g2pa_eng
