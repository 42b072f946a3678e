% Old Hundredth (1551) with Thomas Ken's words (1674), as hymn.mid and hymn.musicxml have it:
% "lilypond hymn.ly" engraves it and writes the MIDI file that torv sings.
\version "2.20.0"

\header {
  title = "Old Hundredth"
  composer = "Genevan Psalter, 1551"
}

global = { \key g \major \time 4/4 \tempo 4 = 80 }

soprano = \relative c'' {
  \global
  g4 g fis e | d g a b~ | b1 |
  b4 b b a | g c b a~ | a1 |
  g4 a b a | g e fis g~ | g1 |
  d'4 b g a | c b a g~ | g1 \bar "|."
}

alto = \relative c' {
  \global
  d4 d d b | a d d d~ | d1 |
  d4 d d d | d e d d~ | d1 |
  d4 d d d | d c d d~ | d1 |
  d4 d e d | e d d d~ | d1
}

tenor = \relative c' {
  \global
  b4 b a g | fis g fis g~ | g1 |
  g4 g g fis | b g g fis~ | fis1 |
  b4 fis g fis | g g a b~ | b1 |
  g4 g b fis | g g fis b~ | b1
}

bass = \relative c' {
  \global
  g4 g d e | d b d g,~ | g1 |
  g'4 g g d | g c, g' d~ | d1 |
  g4 d g d | b c d g~ | g1 |
  b,4 g' e d | c g' d g,~ | g1
}

words = \lyricmode {
  Praise God, from whom all bles -- sings flow
  Praise Him, all crea -- tures here be -- low
  Praise Him a -- bove, ye heav'n -- ly host
  Praise Fa -- ther, Son, and Ho -- ly Ghost.
}

\score {
  \new ChoirStaff <<
    \new Staff \with { instrumentName = "Soprano" midiInstrument = "choir aahs" } <<
      \new Voice = "soprano" \soprano
      \new Lyrics \lyricsto "soprano" \words
    >>
    \new Staff \with { instrumentName = "Alto" midiInstrument = "choir aahs" } <<
      \new Voice = "alto" \alto
      \new Lyrics \lyricsto "alto" \words
    >>
    \new Staff \with { instrumentName = "Tenor" midiInstrument = "choir aahs" } <<
      \new Voice = "tenor" { \clef "treble_8" \tenor }
      \new Lyrics \lyricsto "tenor" \words
    >>
    \new Staff \with { instrumentName = "Bass" midiInstrument = "choir aahs" } <<
      \new Voice = "bass" { \clef bass \bass }
      \new Lyrics \lyricsto "bass" \words
    >>
  >>
  \layout { }
  \midi { }
}
