#include "fourier.h"

#include "place.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace rve {

namespace {

using Complex = std::complex<float>;

// Without the checks for infinities that the library's own product makes.
Complex Product(Complex a, Complex b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

} // namespace

Fourier::Fourier() {
    for (int k = 0; k < kMostPoints / 2; ++k) {
        const double angle = 2 * std::numbers::pi * k / kMostPoints;
        m_turns[Place(k)] = {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
    }
}

// Two real points are made at once, as the real and the imaginary part of half as many complex ones.
void Fourier::ToSignal(Complex* spectrum, int points, float* signal) const {
    const int half = points / 2;
    const int turn = kMostPoints / points;
    auto* const z = reinterpret_cast<Complex*>(signal);
    // X[k] and X[half - k] give even and odd points together; a signal's real part needs the spectrum's mirror image.
    for (int k = 0; k <= half / 2; ++k) {
        const Complex a = k == 0 ? Complex(spectrum[0].real() * 2, 0) : spectrum[k];
        const Complex b = k == 0 ? Complex(0, 0) : std::conj(spectrum[half - k]);
        const Complex sum = a + b, difference = a - b;
        const Complex odd = Product(difference, m_turns[Place(k * turn)]);
        const Complex i_odd(-odd.imag(), odd.real());
        spectrum[k] = (sum + i_odd) * 0.5F;
        if (k > 0 && k < half - k)
            spectrum[half - k] = std::conj(sum - i_odd) * 0.5F;
    }
    // Bits of the index in reverse order, then butterflies.
    for (int i = 0, j = 0; i < half; ++i) {
        z[j] = spectrum[i];
        int bit = half >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
    }
    for (int length = 2; length <= half; length *= 2) {
        const int stride = kMostPoints / length;
        const int reach = length / 2;
        for (int base = 0; base < half; base += length)
            for (int k = 0; k < reach; ++k) {
                const Complex odd = Product(z[base + k + reach], m_turns[Place(k * stride)]);
                const Complex even = z[base + k];
                z[base + k] = even + odd;
                z[base + k + reach] = even - odd;
            }
    }
}

const Fourier& SharedFourier() {
    static const Fourier fourier;
    return fourier;
}

} // namespace rve
