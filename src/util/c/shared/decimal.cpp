// The nearest double by one or two multiplications: the mantissa times the leading 128 bits of the
// power of five. The power of two goes straight into the exponent. The product's upper bits are
// the result's, unless they lie so close to the middle between two doubles that the bits cut off
// the power could matter; the bounds below are those of Lemire, "Number Parsing at a Gigabyte
// per Second" (2021), whose proof covers all 64-bit mantissas.

#include "util/c/shared/decimal.h"

#include <langinfo.h>
#include <bit>

__extension__ using uint128 = unsigned __int128;

constexpr int MIN_POWER = -342;
constexpr int MAX_POWER = 308;

struct Power {
    u8 high, low;
};

struct PowersOfFive {
    Power of[MAX_POWER - MIN_POWER + 1];
};

// An integer with room for 5^342 as well as for 2^959 divided by it to 128 bits.
struct BigInteger {
    static constexpr int WORDS = 15;
    u8 words[WORDS] = {};  // the least significant first

    constexpr void times5() {
        uint128 carry = 0;
        for (u8& word : words) {
            carry += static_cast<uint128>(word) * 5;
            word = static_cast<u8>(carry);
            carry >>= 64;
        }
    }

    constexpr void divide_by5() {
        u8 rest = 0;
        for (int i = WORDS - 1; i >= 0; i--) {
            const uint128 dividend = static_cast<uint128>(rest) << 64 | words[i];
            words[i] = static_cast<u8>(dividend / 5);
            rest = static_cast<u8>(dividend % 5);
        }
    }

    // The 128 bits from the first that is set.
    constexpr uint128 leading_bits() const {
        int top = WORDS - 1;
        while (words[top] == 0)
            top--;
        const auto word = [&](int i) { return i >= 0 ? words[i] : 0; };
        const uint128 upper = static_cast<uint128>(word(top)) << 64 | word(top - 1);
        const int shift = std::countl_zero(words[top]);
        return shift == 0 ? upper : upper << shift | word(top - 2) >> (64 - shift);
    }
};

// Leading bits are cut off, but for the short reciprocals, which are rounded up.
constexpr PowersOfFive make_powers() {
    constexpr int LAST_ROUNDED_UP = -27;
    PowersOfFive powers = {};
    const auto set = [&](int power, uint128 bits) {
        powers.of[power - MIN_POWER] = {static_cast<u8>(bits >> 64), static_cast<u8>(bits)};
    };
    BigInteger big;
    big.words[0] = 1;
    for (int power = 0; power <= MAX_POWER; power++, big.times5())
        set(power, big.leading_bits());
    big = {};
    big.words[BigInteger::WORDS - 1] = static_cast<u8>(1) << 63;
    for (int power = -1; power >= MIN_POWER; power--) {
        big.divide_by5();
        set(power, big.leading_bits() + (power >= LAST_ROUNDED_UP ? 1 : 0));
    }
    return powers;
}

constexpr PowersOfFive POWERS = make_powers();

constexpr int SIGNIFICAND_BITS = 52;  // stored ones
constexpr int EXTRA_BITS = 3;         // implicit bit, rounding bit, and a product's possible zero
constexpr int EXPONENT_BIAS = 1023;
constexpr int INFINITE_EXPONENT = 0x7FF;

// Between these, a product may be exact, and a tie really is one.
constexpr int MIN_TIE_POWER = -4;
constexpr int MAX_TIE_POWER = 23;

// Between these, the power of five is known well enough for every product.
constexpr int MIN_EXACT_POWER = -27;
constexpr int MAX_EXACT_POWER = 55;

// The leading 128 bits of the product, of which the upper 64 are right unless the lower are all
// ones. The second half of the power is needed only when it could carry into the result's bits.
static inline uint128 product(u8 mantissa, const Power& power) {
    constexpr u8 BELOW_RESULT = ~static_cast<u8>(0) >> (SIGNIFICAND_BITS + EXTRA_BITS);
    uint128 result = static_cast<uint128>(mantissa) * power.high;
    if ((static_cast<u8>(result >> 64) & BELOW_RESULT) == BELOW_RESULT)
        result += static_cast<uint128>(mantissa) * power.low >> 64;
    return result;
}

// floor(log2(10^exponent)), right throughout the table.
static inline int binary_exponent(int exponent) {
    return (217706 * exponent) >> 16;
}

// Two additions, because asking the processor for its mode takes longer.
static inline bool rounds_to_nearest() {
    static const volatile float tiny = 0x1p-60F;
    return 1.0F + tiny == 1.0F - tiny;
}

bool decimal_by_product(bool negative, u8 mantissa, s8 exponent, double* result) {
    if (mantissa == 0 || exponent < MIN_POWER || exponent > MAX_POWER || !rounds_to_nearest())
        return false;
    const int power = static_cast<int>(exponent);
    const int zeros = std::countl_zero(mantissa);
    const uint128 bits = product(mantissa << zeros, POWERS.of[power - MIN_POWER]);
    const u8 high = static_cast<u8>(bits >> 64), low = static_cast<u8>(bits);
    if (low == ~static_cast<u8>(0) && (power < MIN_EXACT_POWER || power > MAX_EXACT_POWER))
        return false;

    const int upper_bit = static_cast<int>(high >> 63);
    const int shift = upper_bit + 64 - SIGNIFICAND_BITS - EXTRA_BITS;
    u8 significand = high >> shift;
    int biased = binary_exponent(power) + 63 + upper_bit - zeros + EXPONENT_BIAS;
    if (biased <= 0)
        return false;
    const bool tie = low <= 1 && (significand & 3) == 1 && significand << shift == high;
    if (tie && power >= MIN_TIE_POWER && power <= MAX_TIE_POWER)
        significand--;
    significand = (significand + 1) >> 1;
    if (significand == static_cast<u8>(2) << SIGNIFICAND_BITS) {
        significand >>= 1;
        biased++;
    }
    if (biased >= INFINITE_EXPONENT)
        return false;
    significand &= (static_cast<u8>(1) << SIGNIFICAND_BITS) - 1;
    *result = std::bit_cast<double>(u8{negative} << 63 |
                                    static_cast<u8>(biased) << SIGNIFICAND_BITS | significand);
    return true;
}

// Not localeconv(), which fills a record that all threads share.
bool decimal_point_is_usual() {
    const char* const point = nl_langinfo(RADIXCHAR);
    return point[0] == '.' && point[1] == '\0';
}
