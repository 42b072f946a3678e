"""What is sung: hyphens part the syllables, of which each has a note of its own.

WORDS and LINES are for tuning by, COLOURING_LINES for the banks' colours alone; HELD_OUT and HELD_OUT_LINES are others of
the same kind, for a look now and then.
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
i've been a wild ro-ver for ma-ny a year
come all you fair and ten-der girls
the first time e-ver i saw your face
as i was wal-king down the street one day
in the big rock can-dy moun-tain there's a land that's fair and bright
oh the cuck-oo is a pret-ty bird she sings as she flies
fare thee well my own true love
black-bird sing-ing in the tree so high
green sleeves was all my joy
my grand-fa-ther's clock was too large for the shelf
i'll take you home a-gain kath-leen
come live with me and be my love
where the bee sucks there suck i
full fa-thom five thy fa-ther lies
it was a lo-ver and his lass
hold the fort for i am co-ming
a migh-ty for-tress is our god
praise god from whom all bles-sings flow
how can i keep from sing-ing
shall we ga-ther at the ri-ver
bles-sed as-sur-ance je-sus is mine
just as i am with-out one plea
what a friend we have in je-sus
on-ward christ-ian sol-diers mar-ching as to war
good mor-ning mer-ry sun-shine what makes you wake so soon
the owl and the pus-sy cat went to sea
here we go round the mul-ber-ry bush
i saw three ships come sai-ling in
ding dong mer-ri-ly on high
once in ro-yal da-vid's ci-ty stood a lowly cat-tle shed
when good king ar-thur ruled this land
there was a crook-ed man who walked a crook-ed mile
who killed cock rob-in i said the spar-row
old king cole was a mer-ry old soul
i love lit-tle pus-sy her coat is so warm
to mar-ket to mar-ket to buy a fat pig
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
COLOURING_LINES = """
twin-kle twin-kle lit-tle star how i won-der what you are
old mac-don-ald had a farm and on his farm he had a cow
i've been wor-king on the rail-road all the live long day
oh su-san-na don't you cry for me
clem-en-tine you are lost and gone for-ev-er
way down up-on the swa-nee ri-ver far far a-way
the sun shines bright on my old home
when john-ny comes mar-ching home a-gain
bat-tle cry of free-dom down with the trai-tors up with the star
deck the halls with boughs of hol-ly
hark the he-rald an-gels sing glo-ry to the new born king
god rest you mer-ry gen-tle-men let no-thing you dis-may
good king looked out on the feast of ste-phen
the first no-el the an-gel did say
we three kings bea-ring gifts we tra-vel so far
o come all ye faith-ful joy-ful and tri-um-phant
jin-gle bells jin-gle bells jin-gle all the way
auld friends should be for-got and ne-ver brought to mind
lon-ger is the road that leads me to my love
there is a ta-vern in the town
should old ac-quain-tance be for-got
scar-bo-rough fair are you go-ing there
drink to me on-ly with thine eyes
the last rose of sum-mer left bloo-ming a-lone
be-lieve me if all those young charms
red is the rose that in yon-der gar-den grows
black is the co-lor of my true love's hair
i gave my love a cher-ry with-out a stone
hush lit-tle ba-by don't say a word
rock a bye ba-by on the tree top when the wind blows
the old clock struck and the mouse ran up the clock
ba ba black sheep have you a-ny wool
jack and jill went up the hill to fetch a pail of wa-ter
hump-ty dump-ty sat on a wall
three blind mice see how they run
pop goes the wea-sel round and round the bush
po-ly put the ket-tle on we'll all have tea
lit-tle bo peep has lost her sheep
take me out to the ball game take me out with the crowd
dai-sy dai-sy give me your an-swer do
come a-way with me lu-cille in my mer-ry ma-chine
shine on shine on har-vest moon up in the sky
by the light of the sil-ve-ry moon i want to spoon
meet me to-night in dream-land
let me call you sweet-heart i'm in love with you
my wild i-rish rose the sweet-est flow-er that grows
when i-rish eyes are smi-ling sure it's like a morn in spring
on top of old smo-ky all co-vered with snow
down in the val-ley val-ley so low
go tell it on the moun-tain o-ver the hills and far a-way
a-bide with me fast falls the e-ven tide
rock of a-ges cleft for me let me hide my-self in thee
i know where i'm go-ing and i know who's go-ing with me
blow winds blow and the ship goes sai-ling by
oh where have you been bil-ly boy bil-ly boy
the bear went o-ver the moun-tain to see what he could see
yan-kee doo-dle went to town a ri-ding on a po-ny
sky-lark have you a-ny-thing to say to me
hot cross buns one a pen-ny two a pen-ny
pat a cake pat a cake ba-ker's man
there was an old wo-man who lived in a shoe
mis-tress ma-ry quite con-tra-ry how does your gar-den grow
pe-ter pe-ter pump-kin ea-ter had a wife and could-n't keep her
i had a lit-tle nut tree no-thing would it bear
the north wind doth blow and we shall have snow
sleep my child and peace at-tend thee all through the night
ear-ly one mor-ning just as the sun was ri-sing
this old man he played one he played knick knack on my thumb
from this val-ley they say you are go-ing
in a ca-vern in a can-yon ex-ca-va-ting for a mine
as i walked out in the streets of la-re-do
bring back bring back my bon-ny to me
we wish you a mer-ry christ-mas and a hap-py new year
it came up-on the mid-night clear that glo-rious song of old
the hol-ly and the i-vy when they are both full grown
while shep-herds watched their flocks by night
this lit-tle light of mine i'm gon-na let it shine
no-bo-dy knows the trou-ble i've seen
were you there when they cru-ci-fied my lord
mine eyes have seen the glo-ry of the co-ming of the lord
the cam-els are co-ming ho ho
will ye no come back a-gain bet-ter loved ye can-not be
the min-strel boy to the war is gone in the ranks of death you'll find him
o dan-ny boy the pipes the pipes are cal-ling
cock-les and mus-sels a-live a-live oh
i dreamed that i dwelt in mar-ble halls with vas-sals and serfs at my side
in dub-lin's fair ci-ty where the girls are so pret-ty
""".strip().splitlines()
