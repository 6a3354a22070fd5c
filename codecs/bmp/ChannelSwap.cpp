#include "codecs/bmp/ChannelSwap.h"

#include <utility>

#if defined(__x86_64__)
#include <tmmintrin.h>
#endif

namespace paperline {

namespace {

void swapOneByOne(uint8_t* bytes, size_t count) {
    for (const uint8_t* end = bytes + 3 * count; bytes != end; bytes += 3)
        std::swap(bytes[0], bytes[2]);
}

#if defined(__x86_64__)

// Sixteen groups at a time fill three registers; only the two groups that cross a register boundary
// need bytes of a neighbour.
__attribute__((target("ssse3"))) size_t swapBySixteen(uint8_t* bytes, size_t count) {
    constexpr char no = -1; // yields a zero byte
    const __m128i first = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, no);
    const __m128i firstFromSecond =
        _mm_setr_epi8(no, no, no, no, no, no, no, no, no, no, no, no, no, no, no, 1);
    const __m128i second = _mm_setr_epi8(0, no, 4, 3, 2, 7, 6, 5, 10, 9, 8, 13, 12, 11, no, 15);
    const __m128i secondFromFirst =
        _mm_setr_epi8(no, 15, no, no, no, no, no, no, no, no, no, no, no, no, no, no);
    const __m128i secondFromThird =
        _mm_setr_epi8(no, no, no, no, no, no, no, no, no, no, no, no, no, no, 0, no);
    const __m128i third = _mm_setr_epi8(no, 3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10, 15, 14, 13);
    const __m128i thirdFromSecond =
        _mm_setr_epi8(14, no, no, no, no, no, no, no, no, no, no, no, no, no, no, no);
    const size_t blocks = count / 16;
    for (size_t block = 0; block < blocks; ++block, bytes += 48) {
        auto* place = reinterpret_cast<__m128i*>(bytes);
        const __m128i a = _mm_loadu_si128(place);
        const __m128i b = _mm_loadu_si128(place + 1);
        const __m128i c = _mm_loadu_si128(place + 2);
        _mm_storeu_si128(
            place, _mm_or_si128(_mm_shuffle_epi8(a, first), _mm_shuffle_epi8(b, firstFromSecond)));
        _mm_storeu_si128(place + 1,
                         _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(b, second),
                                                   _mm_shuffle_epi8(a, secondFromFirst)),
                                      _mm_shuffle_epi8(c, secondFromThird)));
        _mm_storeu_si128(
            place + 2,
            _mm_or_si128(_mm_shuffle_epi8(c, third), _mm_shuffle_epi8(b, thirdFromSecond)));
    }
    return blocks * 16;
}

#endif

} // namespace

void swapFirstAndThird(uint8_t* bytes, size_t count) {
    size_t done = 0;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("ssse3"))
        done = swapBySixteen(bytes, count);
#endif
    swapOneByOne(bytes + 3 * done, count - done);
}

} // namespace paperline
