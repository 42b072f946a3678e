"""What the listener expects of every sound: the Gaussians of its acoustic model, read from its files. A frame of speech
is 13 cepstra, their slopes and the slopes of these, and a state of a sound ("senone") weighs the Gaussians of its phone
for each of the three on its own."""
import struct

import numpy as np

from listener import MODEL

FOLDER = MODEL / "en-us"
STREAM = 13  # values in each of the three
NEAREST = 6  # Gaussians that count, as for the listener
DENSITIES = 128
WEIGHT_UNIT = 1024 * np.log(1.0001)  # of a stored weight, as a natural logarithm
SMALLEST_VARIANCE = 1e-4
LIFTER = 1 + 11 * np.sin(np.pi * np.arange(STREAM) / 22)  # what the listener multiplies the cepstra by
LOWEST, HIGHEST, FILTERS = 130, 6800, 25  # Hz, of its ear
WITHIN, FIRST, LAST, ONLY = range(4)  # places of a sound in its word
TAPS = (((0, 1),), ((2, 1), (-2, -1)), ((3, 1), (-1, -1), (1, -1), (-3, 1)))  # frames away that each of the three adds
REACH = 3


def gaussians(name):
    """Means or variances: for each stream an array of (phones, densities, values)."""
    data = (FOLDER / name).read_bytes()
    at = data.index(b"endhdr\n") + len(b"endhdr\n") + 4  # and the mark of the byte order
    phones, streams, densities = struct.unpack_from("<3i", data, at)
    widths = struct.unpack_from(f"<{streams}i", data, at + 12)
    values = np.frombuffer(data, "<f4", offset=at + 16 + 4 * streams)[:phones * densities * sum(widths)]
    return values.reshape(phones, streams, densities, STREAM).transpose(1, 0, 2, 3).astype(float)


class AcousticModel:
    def __init__(self):
        self.means = gaussians("means")
        self.variances = np.maximum(gaussians("variances"), SMALLEST_VARIANCE)
        self.heights = -0.5 * np.log(2 * np.pi * self.variances).sum(axis=3)
        self._read_states((FOLDER / "mdef").read_bytes())
        data = (FOLDER / "sendump").read_bytes()
        count = 3 * DENSITIES * len(self.phone_of)
        stored = np.frombuffer(data, "u1", offset=len(data) - count).reshape(3, DENSITIES, -1)
        self.weights = -WEIGHT_UNIT * stored.astype(float)

    def _read_states(self, data):
        at = 12 + struct.unpack_from("<i", data, 8)[0]
        bases, sounds, per_sound, _, senones, _, sequences, _, tree, _ = struct.unpack_from("<10i", data, at)
        names = data[at + 40:].split(b"\0", bases)
        self.phones = [name.decode() for name in names[:bases]]
        at += 40 + (sum(len(name) + 1 for name in names[:bases]) + 3) // 4 * 4 + 8 * tree
        kind = np.dtype([("states", "<i4"), ("moves", "<i4"), ("context", "u1", 4)])
        table = np.frombuffer(data, kind, sounds, at)
        at += table.nbytes + 4
        states = np.frombuffer(data, "<u2", sequences * per_sound, at).reshape(-1, per_sound)
        self.alone = [states[sound["states"]] for sound in table[:bases]]
        self.between = {}
        self.phone_of = np.zeros(senones, int)
        for number, sound in enumerate(table):
            place, phone, before, after = sound["context"] if number >= bases else (0, number, 0, 0)
            self.phone_of[states[sound["states"]]] = phone
            if number >= bases:
                self.between[phone, before, after, place] = states[sound["states"]]

    def states(self, phone, before, after, place):
        """The senones of a phone between two others."""
        numbers = [self.phones.index(name) for name in (phone, before, after)]
        for where in (place, WITHIN, FIRST, LAST, ONLY):
            if (*numbers, where) in self.between:
                return self.between[(*numbers, where)]
        return self.alone[numbers[0]]

    def likelihoods(self, frames, senones):
        """How well frames of (count, 39) fit senones: natural logarithms, an array of (count, senones)."""
        result = np.zeros((len(frames), len(senones)))
        for stream in range(3):
            x = frames[:, STREAM * stream:STREAM * (stream + 1)]
            for phone in np.unique(self.phone_of[senones]):
                own = np.flatnonzero(self.phone_of[senones] == phone)
                mean, variance = self.means[stream, phone], self.variances[stream, phone]
                fit = self.heights[stream, phone] - 0.5 * (x ** 2 @ (1 / variance).T - 2 * x @ (mean / variance).T +
                                                           (mean ** 2 / variance).sum(axis=1))
                nearest = np.argpartition(-fit, NEAREST, axis=1)[:, :NEAREST]
                weighed = (np.take_along_axis(fit, nearest, 1)[:, :, None] +
                           self.weights[stream][:, senones[own]][nearest])
                result[:, own] += np.logaddexp.reduce(weighed, axis=1)
        return result

    def gradient(self, frames, senones):
        """How the likelihood of each frame under its senone changes with its values: both (count, 39)."""
        result = np.zeros_like(frames)
        for stream in range(3):
            own = slice(STREAM * stream, STREAM * (stream + 1))
            for phone in np.unique(self.phone_of[senones]):
                at = np.flatnonzero(self.phone_of[senones] == phone)
                mean, variance, x = self.means[stream, phone], self.variances[stream, phone], frames[at, own]
                fit = (self.heights[stream, phone] - 0.5 * ((x[:, None] - mean) ** 2 / variance).sum(axis=2) +
                       self.weights[stream][:, senones[at]].T)
                share = np.exp(fit - np.logaddexp.reduce(fit, axis=1)[:, None])
                result[at, own] = share @ (mean / variance) - x * (share @ (1 / variance))
        return result

    def path(self, frames, pronunciations):
        """The likeliest way through the sounds of words, silence around them: for every frame a senone, and the number
        of its sound, of which the first is the silence before the words."""
        sounds = [("SIL", WITHIN)]
        for word in pronunciations:
            places = [ONLY] if len(word) == 1 else [FIRST, *[WITHIN] * (len(word) - 2), LAST]
            sounds += zip(word, places)
        sounds.append(("SIL", WITHIN))
        chain = []
        for i, (phone, place) in enumerate(sounds):
            states = (self.alone[self.phones.index(phone)] if phone == "SIL" else
                      self.states(phone, sounds[i - 1][0], sounds[i + 1][0], place))
            chain += [(senone, i) for senone in states]
        senones = np.array([senone for senone, _ in chain])
        known, column = np.unique(senones, return_inverse=True)
        fit = self.likelihoods(frames, known)[:, column]
        best = np.full(len(chain), -np.inf)
        best[0] = fit[0, 0]
        moved = np.zeros(fit.shape, bool)
        for t in range(1, len(fit)):
            from_before = np.concatenate([[-np.inf], best[:-1]])
            moved[t] = from_before > best
            best = np.maximum(from_before, best) + fit[t]
        state = len(chain) - 1
        way = []
        for t in range(len(fit) - 1, -1, -1):
            way.append(state)
            state -= moved[t, state]
        way.reverse()
        return senones[way], np.array([chain[state][1] for state in way])


def with_slopes(cepstra):
    """Frames of (count, 39) from cepstra of (count, 13), as the listener makes them; the mean is taken off."""
    cepstra = cepstra - cepstra.mean(axis=0)
    count = len(cepstra)
    far = np.pad(cepstra, ((REACH, REACH), (0, 0)), mode="edge")
    return np.hstack([sum(sign * far[REACH + away:REACH + away + count] for away, sign in taps) for taps in TAPS])


def through_slopes(gradient):
    """What a gradient of (count, 39) is for the cepstra that the frames were made from: (count, 13)."""
    count = len(gradient)
    far = np.zeros((count + 2 * REACH, STREAM))
    for stream, taps in enumerate(TAPS):
        for away, sign in taps:
            far[REACH + away:REACH + away + count] += sign * gradient[:, STREAM * stream:STREAM * (stream + 1)]
    return far[REACH:-REACH]
