// MD5 (RFC 1321), to name pictures by their content.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

class Md5 {
public:
    void Add(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        length += size;
        while (size > 0) {
            const std::size_t taken = size < sizeof block - filled ? size : sizeof block - filled;
            std::memcpy(block + filled, bytes, taken);
            filled += taken;
            bytes += taken;
            size -= taken;
            if (filled == sizeof block)
                Digest();
        }
    }

    // The sum as 32 hexadecimal digits. Nothing may be added behind it.
    std::string Finish() {
        const std::uint64_t bits = length * 8;
        const std::uint8_t stop = 0x80;
        const std::uint8_t zero = 0;
        Add(&stop, 1);
        while (filled != sizeof block - 8)
            Add(&zero, 1);
        std::uint8_t tail[8];
        for (unsigned i = 0; i < 8; ++i)
            tail[i] = static_cast<std::uint8_t>(bits >> (8 * i));
        Add(tail, sizeof tail);
        std::string text;
        for (std::uint32_t word : state) {
            for (unsigned i = 0; i < 4; ++i) {
                char digits[3];
                std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(word >> (8 * i) & 255));
                text += digits;
            }
        }
        return text;
    }

    static std::string Of(const void* data, std::size_t size) {
        Md5 sum;
        sum.Add(data, size);
        return sum.Finish();
    }

private:
    static constexpr std::uint32_t Sines[64] = {
        0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
        0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
        0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
        0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
        0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
        0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
        0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
        0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};
    static constexpr std::uint8_t Shifts[4][4] = {
        {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

    static std::uint32_t Mix(unsigned round, std::uint32_t x, std::uint32_t y, std::uint32_t z) {
        switch (round) {
        case 0:
            return (x & y) | (~x & z);
        case 1:
            return (x & z) | (y & ~z);
        case 2:
            return x ^ y ^ z;
        default:
            return y ^ (x | ~z);
        }
    }

    void Digest() {
        constexpr unsigned Step[4] = {1, 5, 3, 7};
        constexpr unsigned Start[4] = {0, 1, 5, 0};
        std::uint32_t words[16];
        for (unsigned i = 0; i < 16; ++i) {
            const std::uint8_t* b = block + i * 4;
            words[i] = b[0] | static_cast<std::uint32_t>(b[1]) << 8 | static_cast<std::uint32_t>(b[2]) << 16 |
                       static_cast<std::uint32_t>(b[3]) << 24;
        }
        auto [a, b, c, d] = state;
        for (unsigned i = 0; i < 64; ++i) {
            const unsigned round = i / 16;
            const std::uint32_t sum =
                a + Mix(round, b, c, d) + words[(Start[round] + Step[round] * i) % 16] + Sines[i];
            a = d;
            d = c;
            c = b;
            b += std::rotl(sum, Shifts[round][i % 4]);
        }
        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
        filled = 0;
    }

    std::array<std::uint32_t, 4> state = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    std::uint64_t length = 0; // bytes
    std::uint8_t block[64] = {};
    std::size_t filled = 0; // bytes of the block
};
