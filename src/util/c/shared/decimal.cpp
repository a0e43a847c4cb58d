// The table of the powers of five, computed by the compiler, and the locale's decimal point.

#include "util/c/shared/decimal.h"

#include <langinfo.h>
#include <string.h>

// An integer with room for 5^342, and for 2^959 / 5^342, which has more than 128 bits.
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

    // The 128 bits from the highest one that is set.
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

// Powers are truncated to their leading bits, except the reciprocals down to 5^-27, which are
// rounded up.
constexpr PowersOfFive make_powers() noexcept {
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

constinit const PowersOfFive POWERS_OF_FIVE = make_powers();

// Not localeconv(), which fills a record that all threads share.
const char* decimal_point() {
    return nl_langinfo(RADIXCHAR);
}

bool locale_has_point() {
    const char* const point = decimal_point();
    return point[0] == '.' && point[1] == '\0';
}

bool locale_is_ascii() {
    const char* const name = nl_langinfo(CODESET);
    return strcmp(name, "ANSI_X3.4-1968") == 0 || strcmp(name, "ASCII") == 0;
}
