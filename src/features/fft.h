// The radix-2 discrete Fourier transform behind the frequency features.
#ifndef ZANDO_FEATURES_FFT_H
#define ZANDO_FEATURES_FFT_H

namespace zando {

// Failure text of a transform whose length is not a power of two.
extern const char* const kFftUnsupportedLength;

// In place, forward sign, unnormalised: X[k] = sum over j of x[j] * exp(-2 pi i j k / count), with
// real and imaginary parts in separate arrays of count values. Returns null on success, or
// kFftUnsupportedLength (leaving the data as it was) when count is not a power of two.
const char* fft(double* real, double* imag, int count);

// Number of series that fftLanes transforms side by side.
constexpr int kFftLanes = 8;

// The same transform on kFftLanes interleaved series at once: value k of series l is at index
// k * kFftLanes + l. Only coefficients 0 to wanted - 1 are computed, and each of them comes out
// exactly as fft alone would give it; the values beyond are left half-done.
const char* fftLanes(double* real, double* imag, int count, int wanted);

}  // namespace zando

#endif  // ZANDO_FEATURES_FFT_H
