#include "player/interpolation.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <cpuid.h>
#include <immintrin.h>

namespace player {

namespace {

constexpr UInt32 mostFrames = 4096;
constexpr double largestStep = 4096;
constexpr double exactLimit =
    4503599627370496.0; // 2^52: below it a double and a half still adds without loss

/// 1 over the last place of a float's significand; the float is normal. No library call: frexp is slow here.
double placesPerUnit(float step)
{
    std::uint32_t bits;
    std::memcpy(&bits, &step, sizeof bits);
    const std::uint64_t exponent =
        bits >> 23 & 0xFF; // of 2^(exponent - 127), whose last place is 2^-23 of it
    const std::uint64_t reciprocal = (1023 + 127 + 23 - exponent) << 52;
    double result;
    std::memcpy(&result, &reciprocal, sizeof result);
    return result;
}

bool isWhole(double value) { return (value + exactLimit) - exactLimit == value; } // for 0 to 2^52

/// The two frames at the lanes' places: whole parts, and what is between.
struct Lanes {
    explicit Lanes(__m128d place)
        : index(_mm_cvttpd_epi32(place)), between(_mm_sub_pd(place, _mm_cvtepi32_pd(index)))
    {
    }
    int first() const { return _mm_cvtsi128_si32(index); }
    int second() const { return _mm_cvtsi128_si32(_mm_shuffle_epi32(index, 1)); }

    __m128i index;
    __m128d between;
};

__m128 pairAt(const float* samples)
{
    return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples)));
}

/// Two frames of mono, in the low half.
__m128 twoOfMono(const float* samples, __m128d place)
{
    const Lanes lanes(place);
    const __m128 both = _mm_unpacklo_ps(pairAt(samples + lanes.first()), pairAt(samples + lanes.second()));
    const __m128d s0 = _mm_cvtps_pd(both);
    const __m128d s1 = _mm_cvtps_pd(_mm_movehl_ps(both, both));
    const __m128d rest = _mm_sub_pd(_mm_set1_pd(1), lanes.between);
    return _mm_cvtpd_ps(_mm_add_pd(_mm_mul_pd(s1, lanes.between), _mm_mul_pd(rest, s0)));
}

/// Two frames of stereo: left, right, left, right.
__m128 twoOfStereo(const float* samples, __m128d place)
{
    const Lanes lanes(place);
    const __m128 a = _mm_loadu_ps(samples + 2 * lanes.first());
    const __m128 b = _mm_loadu_ps(samples + 2 * lanes.second());
    const __m128 narrow = _mm_cvtpd_ps(lanes.between);
    const __m128 t = _mm_unpacklo_ps(narrow, narrow);
    const __m128 rest = _mm_sub_ps(_mm_set1_ps(1), t);
    return _mm_add_ps(_mm_mul_ps(t, _mm_movehl_ps(b, a)), _mm_mul_ps(rest, _mm_movelh_ps(a, b)));
}

/// What is left over behind the last whole group.
Stretch restOf(const Stretch& stretch, UInt32 done)
{
    return {stretch.samples, stretch.place + done * stretch.step, stretch.step, stretch.frames - done};
}

} // namespace

UInt32 exactFrames(double position, double step, UInt32 frames)
{
    constexpr double leastStep = 1.0 / (1 << 30); // far from what is not normal
    if (!(step >= leastStep && step <= largestStep) || !(position >= 0)) return 0;
    const double places = position * placesPerUnit(static_cast<float>(step));
    if (!(places < exactLimit) || !isWhole(places)) return 0;
    return std::min(frames, mostFrames);
}

UInt32 framesInside(const Stretch& stretch, std::int32_t count)
{
    // Frame n is inside while n is below the quotient, so as many as it has whole ones surely are.
    const double quotient = (count - 1 - stretch.place) / stretch.step;
    if (!(quotient >= 1)) return 0;
    return quotient >= stretch.frames ? stretch.frames : static_cast<UInt32>(quotient);
}

// ---- two positions at a time, on every processor ----

void interpolateMonoInPairs(const Stretch& stretch, float* out)
{
    const UInt32 whole = stretch.frames & ~UInt32{3};
    __m128d place = _mm_set_pd(stretch.place + stretch.step, stretch.place);
    const __m128d two = _mm_set1_pd(2 * stretch.step), four = _mm_set1_pd(4 * stretch.step);
    for (UInt32 i = 0; i < whole; i += 4) {
        const __m128 low = twoOfMono(stretch.samples, place);
        const __m128 high = twoOfMono(stretch.samples, _mm_add_pd(place, two));
        _mm_storeu_ps(out + i, _mm_movelh_ps(low, high));
        place = _mm_add_pd(place, four);
    }
    interpolateMonoSingly(restOf(stretch, whole), out + whole);
}

void interpolateStereoInPairs(const Stretch& stretch, float* out)
{
    const UInt32 whole = stretch.frames & ~UInt32{1};
    __m128d place = _mm_set_pd(stretch.place + stretch.step, stretch.place);
    const __m128d two = _mm_set1_pd(2 * stretch.step);
    for (UInt32 i = 0; i < whole; i += 2) {
        _mm_storeu_ps(out + 2 * i, twoOfStereo(stretch.samples, place));
        place = _mm_add_pd(place, two);
    }
    interpolateStereoSingly(restOf(stretch, whole), out + 2 * whole);
}

// ---- four at a time, on processors with wider registers ----

namespace {

#define KVX_WIDE __attribute__((target("avx")))

/// A long buffer comes from far away: ask for what is wanted next while this is computed. Reaching behind the
/// end of the buffer does no harm.
inline void askAhead(const float* samples)
{
    constexpr int bytesAhead = 1024;
    _mm_prefetch(reinterpret_cast<const char*>(samples) + bytesAhead, _MM_HINT_T0);
}

KVX_WIDE inline __m256d fourPlaces(const Stretch& stretch)
{
    return _mm256_set_pd(stretch.place + 3 * stretch.step, stretch.place + 2 * stretch.step,
                         stretch.place + stretch.step, stretch.place);
}

bool asksForWideLanes()
{
    unsigned a, b, c = 0, d;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_AVX) || !(c & bit_OSXSAVE)) return false;
    // The system must keep the wide registers, too.
    unsigned low, high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & 6) == 6;
}

} // namespace

bool hasWideLanes()
{
    static const bool has = asksForWideLanes();
    return has;
}

/// While a step is at most one frame, the samples around four places stand in five: two loads, whose parts
/// are picked by the distance from the first.
KVX_WIDE void interpolateMonoWide(const Stretch& stretch, float* out)
{
    // Where the places are close together, five samples may reach behind the last neighbour that there is.
    const int lastFirst = static_cast<int>(stretch.place + (stretch.frames - 1.0) * stretch.step) - 3;
    const UInt32 whole = stretch.step <= 1 ? stretch.frames & ~UInt32{3} : 0;
    __m256d place = fourPlaces(stretch);
    const __m256d four = _mm256_set1_pd(4 * stretch.step), one = _mm256_set1_pd(1);
    UInt32 i = 0;
    for (; i < whole; i += 4) {
        const __m128i index = _mm256_cvttpd_epi32(place);
        const int first = _mm_cvtsi128_si32(index);
        if (first > lastFirst) break;
        const __m256d t = _mm256_sub_pd(place, _mm256_cvtepi32_pd(index));
        const float* const from = stretch.samples + first;
        askAhead(from);
        const __m128i distance = _mm_sub_epi32(index, _mm_shuffle_epi32(index, 0));
        const __m256d s0 = _mm256_cvtps_pd(_mm_permutevar_ps(_mm_loadu_ps(from), distance));
        const __m256d s1 = _mm256_cvtps_pd(_mm_permutevar_ps(_mm_loadu_ps(from + 1), distance));
        const __m256d sum = _mm256_add_pd(_mm256_mul_pd(s1, t), _mm256_mul_pd(_mm256_sub_pd(one, t), s0));
        _mm_storeu_ps(out + i, _mm256_cvtpd_ps(sum));
        place = _mm256_add_pd(place, four);
    }
    interpolateMonoInPairs(restOf(stretch, i), out + i);
}

KVX_WIDE void interpolateStereoWide(const Stretch& stretch, float* out)
{
    const UInt32 whole = stretch.frames & ~UInt32{3};
    __m256d place = fourPlaces(stretch);
    const __m256d four = _mm256_set1_pd(4 * stretch.step);
    const __m256 one = _mm256_set1_ps(1);
    for (UInt32 i = 0; i < whole; i += 4) {
        const __m128i index = _mm256_cvttpd_epi32(place);
        const __m128 between = _mm256_cvtpd_ps(_mm256_sub_pd(place, _mm256_cvtepi32_pd(index)));
        const __m256 t = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_unpacklo_ps(between, between)),
                                              _mm_unpackhi_ps(between, between), 1);
        // Each load is a pair of frames: left, right, left, right.
        askAhead(stretch.samples + 2 * _mm_cvtsi128_si32(index));
        const auto at = [&](int frame) { return _mm_castps_pd(_mm_loadu_ps(stretch.samples + 2 * frame)); };
        const __m256d even = _mm256_insertf128_pd(_mm256_castpd128_pd256(at(_mm_cvtsi128_si32(index))),
                                                  at(_mm_extract_epi32(index, 2)), 1);
        const __m256d odd = _mm256_insertf128_pd(_mm256_castpd128_pd256(at(_mm_extract_epi32(index, 1))),
                                                 at(_mm_extract_epi32(index, 3)), 1);
        const __m256 s0 = _mm256_castpd_ps(_mm256_unpacklo_pd(even, odd));
        const __m256 s1 = _mm256_castpd_ps(_mm256_unpackhi_pd(even, odd));
        _mm256_storeu_ps(out + 2 * i,
                         _mm256_add_ps(_mm256_mul_ps(t, s1), _mm256_mul_ps(_mm256_sub_ps(one, t), s0)));
        place = _mm256_add_pd(place, four);
    }
    interpolateStereoInPairs(restOf(stretch, whole), out + 2 * whole);
}

void interpolateMono(const Stretch& stretch, float* out)
{
    if (hasWideLanes())
        interpolateMonoWide(stretch, out);
    else
        interpolateMonoInPairs(stretch, out);
}

void interpolateStereo(const Stretch& stretch, float* out)
{
    if (hasWideLanes())
        interpolateStereoWide(stretch, out);
    else
        interpolateStereoInPairs(stretch, out);
}

void interpolateMonoSingly(const Stretch& stretch, float* out)
{
    double place = stretch.place;
    for (UInt32 i = 0; i < stretch.frames; ++i, place += stretch.step) {
        const auto k = static_cast<std::int32_t>(place);
        const float s0 = stretch.samples[k], s1 = stretch.samples[k + 1];
        const double t = place - k;
        out[i] = static_cast<float>(s1 * t + (1.0 - t) * s0);
    }
}

void interpolateStereoSingly(const Stretch& stretch, float* out)
{
    double place = stretch.place;
    for (UInt32 i = 0; i < stretch.frames; ++i, place += stretch.step) {
        const auto k = static_cast<std::int32_t>(place);
        const float* const pair = stretch.samples + 2 * static_cast<std::ptrdiff_t>(k);
        const float t = static_cast<float>(place - k);
        for (int c = 0; c < 2; ++c)
            out[2 * i + static_cast<UInt32>(c)] = t * pair[2 + c] + (1.0f - t) * pair[c];
    }
}

} // namespace player
