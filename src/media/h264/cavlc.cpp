// residual_block_cavlc(): coeff_token, levels, total_zeros, run_before (9.2.1 to 9.2.3).
#include "media/h264/cavlc.h"

#include <algorithm>
#include <cstdlib>

namespace h264 {

namespace {

using namespace cavlc;

constexpr u32 ChromaDcCoeffs = 4;
constexpr u32 MaxLevelPrefix = 15; // longer ones belong to profiles with more bits per sample
constexpr u32 MaxSuffixLength = 6;

// The level that makes the next suffix longer, by suffixLength.
constexpr i32 SuffixThreshold[MaxSuffixLength + 1] = {0, 3, 6, 12, 24, 48, INT32_MAX};

// A stretch of the data in a register: a block takes few dozen bits in many small steps, and each step would
// otherwise begin with a load. What was taken is given back to the reader at the end.
class BitWindow {
public:
    explicit BitWindow(BitReader& bits) : reader(bits), window(bits.Peek57()) {}
    ~BitWindow() { reader.Skip(taken); }
    BitWindow(const BitWindow&) = delete;
    BitWindow& operator=(const BitWindow&) = delete;

    // The next 32 bits, left-aligned.
    u32 Peek32() {
        constexpr u32 BitsInWindow = 57;
        if (taken > BitsInWindow - 32) {
            reader.Skip(taken);
            taken = 0;
            window = reader.Peek57();
        }
        return static_cast<u32>(window >> 32);
    }
    // At most 32 bits.
    void Skip(u32 bits) {
        window <<= bits;
        taken += bits;
    }

private:
    BitReader& reader;
    u64 window; // left-aligned
    u32 taken = 0;
};

// 9.2.1, Table 9-5
CoeffToken ReadCoeffToken(BitWindow& reader, CoeffTokenClass tokenClass) {
    const u32 bits = reader.Peek32();
    if (tokenClass == Nc8Up) {
        const CoeffToken token = fixedLengthTokens.entries[bits >> (32 - FixedTokenBits)];
        reader.Skip(token.length);
        return token;
    }
    const u32 zeros = std::min<u32>(static_cast<u32>(std::countl_zero(bits)), MaxLeadingZeros);
    const CoeffToken token = coeffTokens.entries[tokenClass][zeros][bits << zeros << 1 >> 29];
    reader.Skip(token.length);
    return token;
}

// 9.2.2.1, one level behind the trailing ones. `firstBias` is 2 where the level cannot be +-1.
bool ReadLevel(BitWindow& reader, u32* suffixLength, u32 firstBias, i32* level) {
    const u32 bits = reader.Peek32();
    const u32 level_prefix = static_cast<u32>(std::countl_zero(bits));
    if (level_prefix > MaxLevelPrefix)
        return false;
    u32 levelSuffixSize = *suffixLength;
    if (level_prefix == 15)
        levelSuffixSize = 12;
    else if (level_prefix == 14 && *suffixLength == 0)
        levelSuffixSize = 4;
    const u32 behindPrefix = bits << level_prefix << 1;
    const u32 level_suffix = levelSuffixSize == 0 ? 0 : behindPrefix >> (32 - levelSuffixSize);
    reader.Skip(level_prefix + 1 + levelSuffixSize);

    u32 levelCode = (level_prefix << *suffixLength) + level_suffix + firstBias;
    if (level_prefix == 15 && *suffixLength == 0)
        levelCode += 15;
    const i32 magnitude = static_cast<i32>(levelCode + 2) >> 1;
    *level = (levelCode & 1) != 0 ? -magnitude : magnitude;
    if (*suffixLength == 0)
        *suffixLength = 1;
    if (magnitude > SuffixThreshold[*suffixLength])
        ++*suffixLength;
    return true;
}

// 9.2.2: all levels, from the highest frequency to the lowest.
bool ReadLevels(BitWindow& reader, const CoeffToken& token, i32* level) {
    const u32 signs = reader.Peek32(); // trailing_ones_sign_flag
    for (u32 i = 0; i < token.trailingOnes; ++i)
        level[i] = 1 - 2 * static_cast<i32>(signs >> (31 - i) & 1);
    reader.Skip(token.trailingOnes);
    u32 suffixLength = token.totalCoeff > 10 && token.trailingOnes < 3 ? 1 : 0;
    u32 firstBias = token.trailingOnes < 3 ? 2 : 0;
    for (u32 i = token.trailingOnes; i < token.totalCoeff; ++i) {
        if (!ReadLevel(reader, &suffixLength, firstBias, &level[i]))
            return false;
        firstBias = 0;
    }
    return true;
}

// 9.2.3; ResidualError when no code fits.
i32 ReadTotalZeros(BitWindow& reader, u32 totalCoeff, u32 maxNumCoeff) {
    const u32 bits = reader.Peek32();
    const Code code = maxNumCoeff == ChromaDcCoeffs
                          ? chromaDcTotalZeros.entries[totalCoeff - 1][bits >> 29]
                          : totalZeros.entries[totalCoeff - 1][bits >> (32 - TotalZerosBits)];
    reader.Skip(code.length);
    return code.length == 0 || code.value + totalCoeff > maxNumCoeff ? ResidualError : code.value;
}

// 9.2.3, Table 9-10
u32 ReadRunBefore(BitWindow& reader, u32 zerosLeft) {
    constexpr u32 LongestCode = 11;
    const u32 bits = reader.Peek32();
    const Code code = runBefore.entries[std::min(zerosLeft, 7u) - 1][bits >> 29];
    if (code.length != 0) {
        reader.Skip(code.length);
        return code.value;
    }
    const u32 zeros = static_cast<u32>(std::countl_zero(bits)); // 0001: 7, 00001: 8, ...
    reader.Skip(std::min(zeros + 1, LongestCode));
    return zeros + 4;
}

// Writes the levels at their places, the last coefficient of the scan first.
bool PlaceLevels(BitWindow& reader, const i32* level, u32 totalCoeff, u32 zerosLeft,
                 const ResidualTarget& target) {
    u32 coeffNum = zerosLeft + totalCoeff - 1;
    for (u32 i = 0;; ++i) {
        const u8 position = target.scan[coeffNum];
        target.coefficients[position] =
            target.scale != nullptr ? level[i] * target.scale[position] : level[i];
        if (i + 1 == totalCoeff)
            return true;
        if (zerosLeft > 0) {
            const u32 run_before = ReadRunBefore(reader, zerosLeft);
            if (run_before > zerosLeft)
                return false;
            zerosLeft -= run_before;
            coeffNum -= run_before;
        }
        --coeffNum;
    }
}

} // namespace

i32 DecodeResidualBlock(BitReader& stream, CoeffTokenClass tokenClass, u32 maxNumCoeff,
                        const ResidualTarget& target) {
    BitWindow reader(stream);
    const CoeffToken token = ReadCoeffToken(reader, tokenClass);
    if (token.length == 0 || token.totalCoeff > maxNumCoeff)
        return ResidualError;
    if (token.totalCoeff == 0)
        return 0;
    i32 level[16]; // [from high to low frequency]
    if (!ReadLevels(reader, token, level))
        return ResidualError;
    i32 zeros = 0;
    if (token.totalCoeff < maxNumCoeff)
        zeros = ReadTotalZeros(reader, token.totalCoeff, maxNumCoeff);
    if (zeros < 0 || !PlaceLevels(reader, level, token.totalCoeff, static_cast<u32>(zeros), target))
        return ResidualError;
    return token.totalCoeff;
}

} // namespace h264
