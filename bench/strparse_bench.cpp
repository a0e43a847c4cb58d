// Numbers with multipliers and durations with units, from text. Every contender must read the same
// values from the same texts, suffix included; that is checked first.

#include "bench.h"
#include "util/export/strparse.h"

#include <fast_float/fast_float.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <algorithm>
#include <bit>
#include <charconv>
#include <random>
#include <string_view>
#include <vector>

using Texts = std::vector<std::string>;

constexpr size_t TEXTS = 4096;  // more than a branch predictor remembers

// A multiplier as a shift, or -1 when there is no such suffix.
static int shift_of(char suffix) {
    switch (suffix) {
        case '\0': return 0;
        case 'k':
        case 'K': return 10;
        case 'm':
        case 'M': return 20;
        case 'g':
        case 'G': return 30;
        default: return -1;
    }
}

static bool scale(u8* value, char suffix) {
    const int shift = shift_of(suffix);
    *value <<= shift & 63;
    return shift >= 0;
}

static bool scale(double* value, char suffix) {
    const int shift = shift_of(suffix);
    *value *= static_cast<double>(u8{1} << (shift & 63));
    return shift >= 0;
}

static bool is_hex(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && text[1] == 'x';
}

struct Unit {
    const char* name;
    nanotime factor;
};

constexpr nanotime SECOND = 1'000'000'000;
constexpr Unit UNITS[] = {{"us", 1000},       {"ms", 1'000'000},    {"s", SECOND},
                          {"m", 60 * SECOND}, {"h", 3600 * SECOND}, {"d", 86400 * SECOND},
                          {"ns", 1}};

static bool scale(nanotime* value, const char* name) {
    for (const Unit& unit : UNITS)
        if (strcmp(name, unit.name) == 0) {
            *value *= unit.factor;
            return true;
        }
    return false;
}

struct Ours {
    static bool read(std::string_view text, u8* value) {
        return strToSuffixULong(text.data(), value, nullptr);
    }
    static bool read(std::string_view text, double* value) {
        return strToSuffixDouble(text.data(), value, nullptr);
    }
    static bool read(std::string_view text, nanotime* value) {
        return strToSuffixNanoTime(text.data(), value, nullptr);
    }
};

struct Strto {
    static bool read(std::string_view text, nanotime* value) {
        char* end;
        *value = strtoll(text.data(), &end, 10);
        return end > text.data() && scale(value, end);
    }
};

struct FromChars {
    static bool read(std::string_view text, u8* value) {
        const char* const start = text.data();
        const bool hex = is_hex(text);
        const auto [end, error] =
            std::from_chars(start + (hex ? 2 : 0), start + strlen(start), *value, hex ? 16 : 10);
        return error == std::errc() && scale(value, *end);
    }
};

struct FastFloat {
    static bool read(std::string_view text, double* value) {
        const char* const start = text.data();
        const auto [end, error] = fast_float::from_chars(start, start + strlen(start), *value);
        return error == std::errc() && scale(value, *end);
    }
};

static std::mt19937_64 random_bits(20260329);

static size_t below(size_t limit) {
    return random_bits() % limit;
}

// Lengths are equally frequent.
static std::string digits(size_t most) {
    std::string text(1, static_cast<char>('1' + below(9)));
    for (size_t more = below(most); more > 0; more--)
        text += static_cast<char>('0' + below(10));
    return text;
}

static std::string with_multiplier(std::string number) {
    return number + "kKmMgG"[below(6)];
}

template <typename Value>
static std::string formatted(const char* format, Value value) {
    char text[64];
    snprintf(text, sizeof text, format, value);
    return text;
}

static std::string short_double() {
    return digits(4) + "." + digits(3);
}

// Of any magnitude from 1e-20 to 1e20.
static std::string long_double() {
    const double mantissa = 1 + static_cast<double>(random_bits()) * 0x1p-64;
    return formatted("%.17g", mantissa * std::bit_cast<double>((956 + below(134)) << 52));
}

template <typename Contender, typename Value>
static void add_contender(const char* name, const char* contender, const Texts& texts) {
    add(name, contender, [&texts](benchmark::State& state) {
        size_t i = 0;
        for (auto _ : state) {
            Value value = 0;
            bool ok = Contender::read(texts[i], &value);
            benchmark::DoNotOptimize(ok);
            benchmark::DoNotOptimize(value);
            i = (i + 1) % TEXTS;
        }
    });
}

template <typename Value, typename Peer>
static void add_case(const char* name, const char* peer, std::string (*make)()) {
    auto& texts = *new Texts(TEXTS);  // never freed
    std::generate(texts.begin(), texts.end(), make);
    for (const std::string& text : texts) {
        Value ours = 0, expected = 0;
        const bool ok = Ours::read(text, &ours) && Peer::read(text, &expected);
        require(ok && ours == expected, "read differently: " + text);
    }
    add_contender<Ours, Value>(name, "kxutil", texts);
    add_contender<Peer, Value>(name, peer, texts);
}

void add_all() {
    const auto integers = add_case<u8, FromChars>;
    integers("1 to 4 digits", "std::from_chars", [] { return digits(4); });
    integers("1 to 4 digits and a multiplier", "std::from_chars",
             [] { return with_multiplier(digits(4)); });
    integers("1 to 19 digits", "std::from_chars", [] { return digits(19); });
    integers("1 to 19 digits and a multiplier", "std::from_chars",
             [] { return with_multiplier(digits(19)); });
    integers("0x and 1 to 16 hexadecimal digits", "std::from_chars",
             [] { return formatted("0x%lx", random_bits() >> below(60)); });
    const auto doubles = add_case<double, FastFloat>;
    doubles("double of 2 to 7 digits", "fast_float", short_double);
    doubles("double of 2 to 7 digits and a multiplier", "fast_float",
            [] { return with_multiplier(short_double()); });
    doubles("double of 17 digits", "fast_float", long_double);
    add_case<nanotime, Strto>("duration", "strto",
                              [] { return digits(4) + UNITS[below(std::size(UNITS))].name; });
}
