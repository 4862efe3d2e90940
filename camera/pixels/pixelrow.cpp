#include "pixelrow.h"

#include <QtEndian>

#if defined(__x86_64__) || defined(_M_X64)
#define KORVEX_X64
#include <immintrin.h>
#ifdef _MSC_VER
#include <intrin.h>
#endif
#if defined(__GNUC__) || defined(__clang__)
#define KORVEX_AVX2 __attribute__((target("avx2")))
#else
#define KORVEX_AVX2 // this compiler needs no leave
#endif
#endif

namespace PixelRow {

namespace {

// Two pixels, each in the lower half of 32 bits, become R, G and B in the lower
// three bytes.
quint64 expanded(quint64 pixels)
{
    return (pixels >> 8 & 0x000000F8000000F8) | (pixels << 5 & 0x0000FC000000FC00) |
           (pixels << 19 & 0x00F8000000F80000);
}

} // namespace

// Four pixels at a time: one load, and no byte is touched by itself.
void portable(const uchar *source, int width, bool bigEndian, uchar *output)
{
    constexpr quint64 lowBytes = 0x00FF00FF00FF00FF;
    constexpr quint64 lowHalves = 0x0000FFFF0000FFFF;
    int i = 0;
    for (; i + 4 <= width; i += 4, source -= 8, output += 12) {
        quint64 pixels = qFromLittleEndian<quint64>(source - 6);
        if (bigEndian)
            pixels = (pixels & lowBytes) << 8 | (pixels >> 8 & lowBytes);
        const quint64 fourthAndSecond = expanded(pixels & lowHalves);
        const quint64 thirdAndFirst = expanded(pixels >> 16 & lowHalves);
        qToLittleEndian<quint64>(thirdAndFirst >> 32 | fourthAndSecond >> 32 << 24 | thirdAndFirst << 48,
                                 output);
        qToLittleEndian<quint32>(static_cast<quint32>((thirdAndFirst >> 16 & 0xFF) | fourthAndSecond << 8),
                                 output + 8);
    }
    for (; i < width; ++i, source -= 2, output += 3) {
        const quint64 pixel =
            expanded(bigEndian ? qFromBigEndian<quint16>(source) : qFromLittleEndian<quint16>(source));
        output[0] = static_cast<uchar>(pixel);
        output[1] = static_cast<uchar>(pixel >> 8);
        output[2] = static_cast<uchar>(pixel >> 16);
    }
}

#ifdef KORVEX_X64

namespace {

// Sixteen pixels are one load, in two lanes that do the same. Red and green are
// put into the two bytes of each word, blue into the lower one of another; two
// shuffles for each part of the output put them in their places, last pixel first.
KORVEX_AVX2 void avx2(const uchar *source, int width, bool bigEndian, uchar *output)
{
    constexpr char z = -1; // in a shuffle: a byte of 0
    const __m256i order = _mm256_broadcastsi128_si256(
        bigEndian ? _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)
                  : _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    const __m256i redGreen1 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(14, 15, z, 12, 13, z, 10, 11, z, 8, 9, z, 6, 7, z, 4));
    const __m256i blue1 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(z, z, 14, z, z, 12, z, z, 10, z, z, 8, z, z, 6, z));
    const __m256i redGreen2 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(5, z, 2, 3, z, 0, 1, z, z, z, z, z, z, z, z, z));
    const __m256i blue2 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(z, 4, z, z, 2, z, z, 0, z, z, z, z, z, z, z, z));
    const __m256i redMask = _mm256_set1_epi16(0x00F8);
    const __m256i greenMask = _mm256_set1_epi16(static_cast<short>(0xFC00));
    int i = 0;
    for (; i + 16 <= width; i += 16, source -= 32, output += 48) {
        __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source - 30));
        pixels = _mm256_shuffle_epi8(pixels, order);
        const __m256i redGreen = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(pixels, 8), redMask),
                                                 _mm256_and_si256(_mm256_slli_epi16(pixels, 5), greenMask));
        const __m256i blue = _mm256_slli_epi16(pixels, 3); // of which the lower byte is taken
        const __m256i begin =
            _mm256_or_si256(_mm256_shuffle_epi8(redGreen, redGreen1), _mm256_shuffle_epi8(blue, blue1));
        const __m256i rest =
            _mm256_or_si256(_mm256_shuffle_epi8(redGreen, redGreen2), _mm256_shuffle_epi8(blue, blue2));
        // Each lane is 24 bytes, the upper one the first.
        _mm_storeu_si128(reinterpret_cast<__m128i *>(output), _mm256_extracti128_si256(begin, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(output + 16), _mm256_extracti128_si256(rest, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(output + 24), _mm256_castsi256_si128(begin));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(output + 40), _mm256_castsi256_si128(rest));
    }
    portable(source, width - i, bigEndian, output);
}

// That the processor has it, and that the system keeps its registers.
bool hasAvx2()
{
#ifdef _MSC_VER
    int registers[4]; // EAX, EBX, ECX, EDX
    __cpuid(registers, 1);
    constexpr int avxAndSaving = 1 << 28 | 1 << 27;
    if ((registers[2] & avxAndSaving) != avxAndSaving || (_xgetbv(0) & 6) != 6)
        return false;
    __cpuidex(registers, 7, 0);
    return (registers[1] & 1 << 5) != 0;
#else
    return __builtin_cpu_supports("avx2");
#endif
}

} // namespace

Decode vectorised()
{
    static const Decode decode = hasAvx2() ? avx2 : nullptr;
    return decode;
}

#else

Decode vectorised()
{
    return nullptr;
}

#endif

} // namespace PixelRow
