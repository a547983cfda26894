// Scans over text, sixteen bytes at a time where the processor can.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define CONFERIX_SCAN_SSE2
#elif defined(__aarch64__) && defined(__ARM_NEON)
#include <arm_neon.h>
#define CONFERIX_SCAN_NEON
#endif

namespace conferix {

/// Whether two stretches of as many bytes are equal; for names, which are compared millions of times and are
/// too short for what a call of memcmp costs.
inline bool EqualBytes(const char* left, const char* right, std::size_t count) {
    if (count < 8)
        return std::equal(left, left + count, right);
    const auto differ = [&](std::size_t from) {
        std::uint64_t one = 0;
        std::uint64_t other = 0;
        std::memcpy(&one, left + from, 8);
        std::memcpy(&other, right + from, 8);
        return one != other;
    };
    for (std::size_t from = 0; from + 8 < count; from += 8)
        if (differ(from))
            return false;
    return !differ(count - 8);
}

/// True for a byte at which plain text ends: "<", "&", "]", a control character or one from 0x80.
constexpr bool EndsPlainText(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte >= 0x80 || c == '<' || c == '&' || c == ']';
}

/// The first byte in [at, end) at which plain text ends, or `end`.
inline const char* FindPlainTextEnd(const char* at, const char* end) {
#if defined(CONFERIX_SCAN_SSE2)
    // Compared as signed bytes, those from 0x80 are below the blank too.
    const __m128i blank = _mm_set1_epi8(0x20);
    const __m128i less = _mm_set1_epi8('<');
    const __m128i ampersand = _mm_set1_epi8('&');
    const __m128i bracket = _mm_set1_epi8(']');
    for (; end - at >= 16; at += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i found =
            _mm_or_si128(_mm_or_si128(_mm_cmplt_epi8(bytes, blank), _mm_cmpeq_epi8(bytes, less)),
                         _mm_or_si128(_mm_cmpeq_epi8(bytes, ampersand), _mm_cmpeq_epi8(bytes, bracket)));
        const auto mask = static_cast<std::uint32_t>(_mm_movemask_epi8(found));
        if (mask != 0)
            return at + std::countr_zero(mask);
    }
#elif defined(CONFERIX_SCAN_NEON)
    const int8x16_t blank = vdupq_n_s8(0x20);
    const uint8x16_t less = vdupq_n_u8('<');
    const uint8x16_t ampersand = vdupq_n_u8('&');
    const uint8x16_t bracket = vdupq_n_u8(']');
    for (; end - at >= 16; at += 16) {
        const uint8x16_t bytes = vld1q_u8(reinterpret_cast<const std::uint8_t*>(at));
        const uint8x16_t found =
            vorrq_u8(vorrq_u8(vcltq_s8(vreinterpretq_s8_u8(bytes), blank), vceqq_u8(bytes, less)),
                     vorrq_u8(vceqq_u8(bytes, ampersand), vceqq_u8(bytes, bracket)));
        // Four bits a byte.
        const std::uint64_t mask =
            vget_lane_u64(vreinterpret_u64_u8(vshrn_n_u16(vreinterpretq_u16_u8(found), 4)), 0);
        if (mask != 0)
            return at + (std::countr_zero(mask) >> 2);
    }
#endif
    while (at != end && !EndsPlainText(*at))
        ++at;
    return at;
}

} // namespace conferix
