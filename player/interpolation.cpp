#include "player/interpolation.h"

#include <cstddef>
#include <cstdint>

#include <cpuid.h>
#include <immintrin.h>

namespace player {

namespace {

/// Two positions in frames, each split into a whole frame number and a fraction.
struct TwoPositions {
    explicit TwoPositions(__m128d position)
        : index(_mm_cvttpd_epi32(position)), fraction(_mm_sub_pd(position, _mm_cvtepi32_pd(index)))
    {
    }
    int first() const { return _mm_cvtsi128_si32(index); }
    int second() const { return _mm_cvtsi128_si32(_mm_shuffle_epi32(index, 1)); }

    __m128i index;
    __m128d fraction;
};

__m128 pairAt(const float* samples)
{
    return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples)));
}

/// Interpolate two mono frames. Returns them in the low half of the vector.
__m128 twoMonoFrames(const float* samples, __m128d position)
{
    const TwoPositions at(position);
    const __m128 both = _mm_unpacklo_ps(pairAt(samples + at.first()), pairAt(samples + at.second()));
    const __m128d s0 = _mm_cvtps_pd(both);
    const __m128d s1 = _mm_cvtps_pd(_mm_movehl_ps(both, both));
    const __m128d rest = _mm_sub_pd(_mm_set1_pd(1), at.fraction);
    return _mm_cvtpd_ps(_mm_add_pd(_mm_mul_pd(s1, at.fraction), _mm_mul_pd(rest, s0)));
}

/// Interpolate two stereo frames. Returns left, right, left, right.
__m128 twoStereoFrames(const float* samples, __m128d position)
{
    const TwoPositions at(position);
    const __m128 a = _mm_loadu_ps(samples + 2 * at.first());
    const __m128 b = _mm_loadu_ps(samples + 2 * at.second());
    const __m128 narrow = _mm_cvtpd_ps(at.fraction);
    const __m128 t = _mm_unpacklo_ps(narrow, narrow);
    const __m128 rest = _mm_sub_ps(_mm_set1_ps(1), t);
    return _mm_add_ps(_mm_mul_ps(t, _mm_movehl_ps(b, a)), _mm_mul_ps(rest, _mm_movelh_ps(a, b)));
}

/// Write two stereo frames: left, right, left, right.
template <bool isStereo>
void write(float* out, UInt32 channels, __m128 frames)
{
    if (isStereo) return _mm_storeu_ps(out, frames);
    _mm_storel_pi(reinterpret_cast<__m64*>(out), frames);
    _mm_storeh_pi(reinterpret_cast<__m64*>(out + channels), frames);
}

/// Return the rest of the span: the frames after its first `done` frames.
Span restOf(const Span& span, UInt32 done)
{
    return {span.samples, span.position + done * span.step, span.step, span.frames - done};
}

} // namespace

// ---- two positions at a time: SSE ----

void interpolateMonoSse(const Span& span, float* out)
{
    const UInt32 whole = span.frames & ~UInt32{3};
    __m128d position = _mm_set_pd(span.position + span.step, span.position);
    const __m128d two = _mm_set1_pd(2 * span.step), four = _mm_set1_pd(4 * span.step);
    for (UInt32 i = 0; i < whole; i += 4) {
        const __m128 low = twoMonoFrames(span.samples, position);
        const __m128 high = twoMonoFrames(span.samples, _mm_add_pd(position, two));
        _mm_storeu_ps(out + i, _mm_movelh_ps(low, high));
        position = _mm_add_pd(position, four);
    }
    interpolateMonoScalar(restOf(span, whole), out + whole);
}

// With `isStereo`, a constant, the usual output with two channels costs no branch and no multiplication.
template <bool isStereo>
static void stereoSse(const Span& span, float* out, UInt32 outputChannels)
{
    const UInt32 channels = isStereo ? 2 : outputChannels;
    const UInt32 whole = span.frames & ~UInt32{1};
    __m128d position = _mm_set_pd(span.position + span.step, span.position);
    const __m128d two = _mm_set1_pd(2 * span.step);
    for (UInt32 i = 0; i < whole; i += 2) {
        write<isStereo>(out + i * channels, channels, twoStereoFrames(span.samples, position));
        position = _mm_add_pd(position, two);
    }
    interpolateStereoScalar(restOf(span, whole), out + whole * channels, channels);
}

void interpolateStereoSse(const Span& span, float* out, UInt32 channels)
{
    channels == 2 ? stereoSse<true>(span, out, 2) : stereoSse<false>(span, out, channels);
}

// ---- four positions at a time: AVX ----

namespace {

#define KVX_AVX __attribute__((target("avx")))

/// Load the samples 1024 bytes ahead into the cache. A prefetch past the end of the buffer is harmless.
inline void prefetch(const float* samples)
{
    constexpr int bytesAhead = 1024;
    _mm_prefetch(reinterpret_cast<const char*>(samples) + bytesAhead, _MM_HINT_T0);
}

KVX_AVX inline __m256d fourPositions(const Span& span)
{
    return _mm256_set_pd(span.position + 3 * span.step, span.position + 2 * span.step,
                         span.position + span.step, span.position);
}

bool detectAvx()
{
    unsigned a, b, c = 0, d;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_AVX) || !(c & bit_OSXSAVE)) return false;
    // AVX is usable only if the operating system saves the AVX registers.
    unsigned low, high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & 6) == 6;
}

} // namespace

bool hasAvx()
{
    static const bool has = detectAvx();
    return has;
}

// If the step is at most one frame, five consecutive samples contain all neighbours of four positions. Two
// loads fetch these samples, and a permutation by the distance from the first index selects the neighbours.
KVX_AVX void interpolateMonoAvx(const Span& span, float* out)
{
    // The loop always loads five samples, even if the four positions need fewer, and must not read past the
    // last sample of the span.
    const int lastFirst = static_cast<int>(span.position + (span.frames - 1.0) * span.step) - 3;
    const UInt32 whole = span.step <= 1 ? span.frames & ~UInt32{3} : 0;
    __m256d position = fourPositions(span);
    const __m256d four = _mm256_set1_pd(4 * span.step), one = _mm256_set1_pd(1);
    UInt32 i = 0;
    for (; i < whole; i += 4) {
        const __m128i index = _mm256_cvttpd_epi32(position);
        const int first = _mm_cvtsi128_si32(index);
        if (first > lastFirst) break;
        const __m256d t = _mm256_sub_pd(position, _mm256_cvtepi32_pd(index));
        const float* const from = span.samples + first;
        prefetch(from);
        const __m128i distance = _mm_sub_epi32(index, _mm_shuffle_epi32(index, 0));
        const __m256d s0 = _mm256_cvtps_pd(_mm_permutevar_ps(_mm_loadu_ps(from), distance));
        const __m256d s1 = _mm256_cvtps_pd(_mm_permutevar_ps(_mm_loadu_ps(from + 1), distance));
        const __m256d sum = _mm256_add_pd(_mm256_mul_pd(s1, t), _mm256_mul_pd(_mm256_sub_pd(one, t), s0));
        _mm_storeu_ps(out + i, _mm256_cvtpd_ps(sum));
        position = _mm256_add_pd(position, four);
    }
    interpolateMonoSse(restOf(span, i), out + i);
}

template <bool isStereo>
KVX_AVX static void stereoAvx(const Span& span, float* out, UInt32 outputChannels)
{
    const UInt32 channels = isStereo ? 2 : outputChannels;
    const UInt32 whole = span.frames & ~UInt32{3};
    __m256d position = fourPositions(span);
    const __m256d four = _mm256_set1_pd(4 * span.step);
    const __m256 one = _mm256_set1_ps(1);
    for (UInt32 i = 0; i < whole; i += 4) {
        const __m128i index = _mm256_cvttpd_epi32(position);
        const __m128 fraction = _mm256_cvtpd_ps(_mm256_sub_pd(position, _mm256_cvtepi32_pd(index)));
        const __m256 t = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_unpacklo_ps(fraction, fraction)),
                                              _mm_unpackhi_ps(fraction, fraction), 1);
        // Each load below reads two stereo frames: left, right, left, right.
        prefetch(span.samples + 2 * _mm_cvtsi128_si32(index));
        const auto at = [&](int frame) { return _mm_castps_pd(_mm_loadu_ps(span.samples + 2 * frame)); };
        const __m256d even = _mm256_insertf128_pd(_mm256_castpd128_pd256(at(_mm_cvtsi128_si32(index))),
                                                  at(_mm_extract_epi32(index, 2)), 1);
        const __m256d odd = _mm256_insertf128_pd(_mm256_castpd128_pd256(at(_mm_extract_epi32(index, 1))),
                                                 at(_mm_extract_epi32(index, 3)), 1);
        const __m256 s0 = _mm256_castpd_ps(_mm256_unpacklo_pd(even, odd));
        const __m256 s1 = _mm256_castpd_ps(_mm256_unpackhi_pd(even, odd));
        const __m256 frames = _mm256_add_ps(_mm256_mul_ps(t, s1), _mm256_mul_ps(_mm256_sub_ps(one, t), s0));
        float* const to = out + i * channels;
        if (isStereo) {
            _mm256_storeu_ps(to, frames);
        } else {
            write<false>(to, channels, _mm256_castps256_ps128(frames));
            write<false>(to + 2 * channels, channels, _mm256_extractf128_ps(frames, 1));
        }
        position = _mm256_add_pd(position, four);
    }
    interpolateStereoSse(restOf(span, whole), out + whole * channels, channels);
}

void interpolateStereoAvx(const Span& span, float* out, UInt32 channels)
{
    channels == 2 ? stereoAvx<true>(span, out, 2) : stereoAvx<false>(span, out, channels);
}

void interpolateMono(const Span& span, float* out)
{
    hasAvx() ? interpolateMonoAvx(span, out) : interpolateMonoSse(span, out);
}

void interpolateStereo(const Span& span, float* out, UInt32 channels)
{
    hasAvx() ? interpolateStereoAvx(span, out, channels) : interpolateStereoSse(span, out, channels);
}

void interpolateMonoScalar(const Span& span, float* out)
{
    double position = span.position;
    for (UInt32 i = 0; i < span.frames; ++i, position += span.step) {
        const auto k = static_cast<std::int32_t>(position);
        const float s0 = span.samples[k], s1 = span.samples[k + 1];
        const double t = position - k;
        out[i] = static_cast<float>(s1 * t + (1.0 - t) * s0);
    }
}

void interpolateStereoScalar(const Span& span, float* out, UInt32 channels)
{
    double position = span.position;
    for (UInt32 i = 0; i < span.frames; ++i, position += span.step, out += channels) {
        const auto k = static_cast<std::int32_t>(position);
        const float* const pair = span.samples + 2 * static_cast<std::ptrdiff_t>(k);
        const float t = static_cast<float>(position - k);
        for (int c = 0; c < 2; ++c) out[c] = t * pair[2 + c] + (1.0f - t) * pair[c];
    }
}

} // namespace player
