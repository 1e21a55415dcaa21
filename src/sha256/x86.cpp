#include "sha256/blocks.h"

#if defined(__x86_64__) || defined(__i386__)

#include <cpuid.h>
#include <immintrin.h>

namespace sha256::blocks {

bool HasShaInstructions() {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0) return false;
  constexpr unsigned kNeeded = bit_SSSE3 | bit_SSE4_1;
  if ((c & kNeeded) != kNeeded) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_SHA) != 0;
}

namespace {

// The state in the order that the instructions expect: a b e f and c d g h, highest word first.
struct Halves {
  __m128i abef;
  __m128i cdgh;
};

__attribute__((target("sha,sse4.1"))) inline __m128i LoadWords(const std::uint8_t* bytes) {
  const __m128i swap = _mm_set_epi64x(0x0c0d0e0f08090a0bLL, 0x0405060700010203LL);
  return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), swap);
}

__attribute__((target("sha,sse4.1"), always_inline)) inline void FourRounds(Halves& s,
                                                                            __m128i words,
                                                                            std::size_t group) {
  const __m128i k = _mm_load_si128(reinterpret_cast<const __m128i*>(&kRound[group * 4]));
  const __m128i sum = _mm_add_epi32(words, k);
  s.cdgh = _mm_sha256rnds2_epu32(s.cdgh, s.abef, sum);
  s.abef = _mm_sha256rnds2_epu32(s.abef, s.cdgh, _mm_shuffle_epi32(sum, 0x0E));
}

// The next four words of the message schedule from the sixteen before them, oldest first.
__attribute__((target("sha,sse4.1"), always_inline)) inline __m128i NextWords(__m128i w0,
                                                                              __m128i w1,
                                                                              __m128i w2,
                                                                              __m128i w3) {
  const __m128i seven_back = _mm_alignr_epi8(w3, w2, 4);
  const __m128i partial = _mm_add_epi32(_mm_sha256msg1_epu32(w0, w1), seven_back);
  return _mm_sha256msg2_epu32(partial, w3);
}

}  // namespace

// A 32-bit Windows caller may have a stack that is aligned to 4 bytes only.
#ifdef __i386__
__attribute__((force_align_arg_pointer))
#endif
__attribute__((target("sha,sse4.1"))) void
CompressWithShaInstructions(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count) {
  const __m128i abcd = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state));
  const __m128i efgh = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4));
  const __m128i badc = _mm_shuffle_epi32(abcd, 0xB1);
  const __m128i hgfe = _mm_shuffle_epi32(efgh, 0x1B);
  Halves s{_mm_alignr_epi8(badc, hgfe, 8), _mm_blend_epi16(hgfe, badc, 0xF0)};
  for (; count > 0; --count, blocks += 64) {
    const Halves before = s;
    __m128i w0 = LoadWords(blocks);
    __m128i w1 = LoadWords(blocks + 16);
    __m128i w2 = LoadWords(blocks + 32);
    __m128i w3 = LoadWords(blocks + 48);
#pragma GCC unroll 4
    for (std::size_t group = 0; group < 16; group += 4) {
      FourRounds(s, w0, group);
      FourRounds(s, w1, group + 1);
      FourRounds(s, w2, group + 2);
      FourRounds(s, w3, group + 3);
      if (group == 12) break;
      w0 = NextWords(w0, w1, w2, w3);
      w1 = NextWords(w1, w2, w3, w0);
      w2 = NextWords(w2, w3, w0, w1);
      w3 = NextWords(w3, w0, w1, w2);
    }
    s.abef = _mm_add_epi32(s.abef, before.abef);
    s.cdgh = _mm_add_epi32(s.cdgh, before.cdgh);
  }
  const __m128i feba = _mm_shuffle_epi32(s.abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(s.cdgh, 0xB1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_blend_epi16(feba, dchg, 0xF0));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), _mm_alignr_epi8(dchg, feba, 8));
}

}  // namespace sha256::blocks

#else

namespace sha256::blocks {

bool HasShaInstructions() {
  return false;
}
void CompressWithShaInstructions(std::uint32_t* state, const std::uint8_t* blocks,
                                 std::size_t count) {
  CompressPortable(state, blocks, count);
}

}  // namespace sha256::blocks

#endif
