"""What is sung: hyphens part the syllables, of which each has a note of its own.

WORDS and LINES are for tuning by; HELD_OUT and HELD_OUT_LINES are others of the same kind, for a look now and then.
Between them each list of words has all sounds of English and its clusters. The lines are from songs whose authors died
long ago, a few with a word changed for one that the listener knows.
"""

WORDS = """
wa-ter bread milk house gar-den win-dow street school mor-ning eve-ning sum-mer win-ter spring moun-tain ri-ver o-cean
is-land for-est flow-er ap-ple or-ange ba-na-na cheese su-gar cof-fee kit-chen ta-ble chair floor door light night day
week month year fa-ther mo-ther bro-ther sis-ter child friend doc-tor tea-cher voice mu-sic dance song gui-tar pi-a-no
dream sleep walk run jump swim think speak laugh cry bird horse dog sheep mouse fish snake tree leaf grass stone fire
cloud thun-der rain snow storm sky star moon sun-shine gold sil-ver blue green yel-low white black brown pock-et num-ber
mo-ney pa-per let-ter ques-tion an-swer trea-sure vis-it joy boat bridge cas-tle king hear poor
""".split()

HELD_OUT = """
oil toy coin view use cute pure tour care deer beard arm heart car-pet corn word girl church earth nurse tongue bath
breathe cloth both tooth thumb three thir-sty fea-ther wea-ther vel-vet val-ley wave glove twelve zoo buzz price prize
plea-sure vi-sion shoul-der brush splash chi-cken lunch match judge page gi-ant en-gine square quick queen twin sweet
smile small sneeze snap plant blan-ket bloom clock glass glue press proud trip train drum drive crab cream great fresh
fruit screen scratch strong help belt shelf film lamp hand tent bank fox desk nest wasp lift hos-pi-tal um-brel-la
el-e-phant hap-py an-gry yes-ter-day to-mor-row wo-man u-ni-form hel-lo
""".split()

LINES = """
oh say can you see by the dawn's ear-ly light
row row row your boat gen-tly down the stream
a-ma-zing grace how sweet the sound
my bon-nie lies o-ver the o-cean
we'll take a cup of kind-ness yet
swing low sweet cha-ri-ot co-ming for to car-ry me home
oh when the saints go mar-ching in
si-lent night ho-ly night all is calm all is bright
she'll be co-ming round the moun-tain when she comes
lon-don bridge is fal-ling down my fair la-dy
home home on the range where the deer and the an-te-lope play
the wa-ter is wide i can-not cross o-ver
ma-ry had a lit-tle lamb its fleece was white as snow
joy to the world the lord is come
""".strip().splitlines()

HELD_OUT_LINES = """
the grand old duke of york he had ten thou-sand men
it's a long way to go my heart's right there
a-way in a man-ger no crib for a bed
the ash grove how grace-ful how plain-ly it's spea-king
o shen-an-do-ah i long to hear you
green grow the rush-es o what is your one
all things bright and beau-ti-ful all crea-tures great and small
i dream of ma-ry with the light brown hair
san-ta lu-ci-a hear how the sai-lors sing
sweet and low wind of the wes-tern sea
blow the man down give me some time to blow
near-er my god to thee
what shall we do with the drun-ken sai-lor
you take the high road and i'll take the low road
""".strip().splitlines()

# Kana, and the same in Latin letters: one group of them for each kana that has a note.
JAPANESE = [pair.split("=") for pair in """
あさ=a-sa いぬ=i-nu うみ=u-mi えき=e-ki おと=o-to かさ=ka-sa きた=ki-ta くも=ku-mo けむり=ke-mu-ri こころ=ko-ko-ro
さかな=sa-ka-na しろ=shi-ro すいか=su-i-ka せかい=se-ka-i そら=so-ra たまご=ta-ma-go ちから=chi-ka-ra つき=tsu-ki てがみ=te-ga-mi
とけい=to-ke-i なつ=na-tsu にわ=ni-wa ぬの=nu-no ねこ=ne-ko のはら=no-ha-ra はな=ha-na ひかり=hi-ka-ri ふゆ=fu-yu へや=he-ya
ほし=ho-shi まど=ma-do みなと=mi-na-to むし=mu-shi めがね=me-ga-ne もり=mo-ri やま=ya-ma ゆき=yu-ki よる=yo-ru りんご=ri-n-go
わらう=wa-ra-u がくせい=ga-ku-se-i ぎんこう=gi-n-ko-u げんき=ge-n-ki ごはん=go-ha-n ざぶとん=za-bu-to-n じかん=ji-ka-n
でんわ=de-n-wa どうぶつ=do-u-bu-tsu ばしょ=ba-sho びじん=bi-ji-n ぶどう=bu-do-u ぼうし=bo-u-shi ぱんだ=pa-n-da ぴあの=pi-a-no
しゃしん=sha-shi-n きょう=kyo-u おちゃ=o-cha りょこう=ryo-ko-u
""".split()]
