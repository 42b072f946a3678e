"""Waves, and what can be measured in them without knowing who made them."""
import wave

import numpy as np


def read_wave(path):
    """Samples -1..1 of a mono file, and its rate."""
    with wave.open(str(path)) as file:
        data = np.frombuffer(file.readframes(file.getnframes()), "<i2")
        return data[::file.getnchannels()] / 32768, file.getframerate()


def write_wave(path, samples, rate):
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, rate, 0, "NONE", ""))
        file.writeframes((np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes())


def resample(samples, rate, wanted):
    """By the spectrum: everything below the new half rate stays, nothing above it folds back."""
    if rate == wanted:
        return samples
    count = int(round(len(samples) * wanted / rate))
    spectrum = np.fft.rfft(samples)
    kept = np.zeros(count // 2 + 1, dtype=complex)
    common = min(len(kept), len(spectrum))
    kept[:common] = spectrum[:common]
    return np.fft.irfft(kept, count) * (wanted / rate)


def rms_db(samples):
    return 10 * np.log10(np.mean(np.square(samples)) + 1e-20)


def click(samples, rate, join):
    """The largest step within 5 ms of a join over the mean of those of the 5 ms stretches around: about 1 without one."""
    bend = np.abs(np.diff(samples, 2))
    width = int(0.01 * rate)
    at = int(join * rate) - width // 2
    steps = [bend[at + i * width:at + (i + 1) * width].max() for i in range(-5, 6)
             if 0 <= at + i * width and at + (i + 1) * width <= len(bend)]
    return steps[len(steps) // 2] / (np.mean(steps) + 1e-12)


def spectrum(samples, rate, hz):
    """Of a steady tone: the power in each place, and which places are no harmonic's."""
    power = np.abs(np.fft.rfft(samples * np.blackman(len(samples)) ** 2)) ** 2
    places = np.fft.rfftfreq(len(samples), 1 / rate) / hz
    return power, (np.abs(places - np.round(places)) > 0.2) & (places > 0.5)


def noise(samples, rate, hz):
    """All that lies between the harmonics of a steady tone, in dB below the tone."""
    power, between = spectrum(samples, rate, hz)
    return 10 * np.log10(power.sum() / (power[between].sum() / 0.6 + 1e-30))


def strongest_line(samples, rate, hz):
    """The strongest tone between the harmonics of a steady one, in dB below it."""
    power, between = spectrum(samples, rate, hz)
    lines = np.convolve(power, np.ones(9), "same")[between]
    return 10 * np.log10(power.sum() / (lines.max() + 1e-30))
