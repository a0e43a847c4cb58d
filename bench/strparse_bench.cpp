// Numbers with multipliers and durations with units, from text.
//
// Every contender reads the same texts to the same values, suffix included; what it makes of them
// is checked first. The texts are terminated; a contender that wants their end has to find it, and
// runs once more with the end for free. Ours and the C library's are called across a shared
// library's boundary; the others are templates compiled into the loop.

#include "util/export/strparse.h"

#include <benchmark/benchmark.h>
#include <fast_float/fast_float.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <bit>
#include <charconv>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using Texts = std::vector<std::string>;

constexpr size_t TEXTS = 4096;  // more than a branch predictor learns by heart

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

constexpr Unit UNITS[] = {{"us", 1'000},
                          {"ms", 1'000'000},
                          {"s", 1'000'000'000},
                          {"m", 60'000'000'000},
                          {"h", 3'600'000'000'000},
                          {"d", 86'400'000'000'000},
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

struct Scanf {
    static bool read(std::string_view text, u8* value) {
        char suffix = '\0', ignored;
        const bool hex = is_hex(text);
        const int items = sscanf(text.data() + (hex ? 2 : 0), hex ? "%lx%c%c" : "%lu%c%c", value,
                                 &suffix, &ignored);
        return items > 0 && scale(value, suffix);
    }
    static bool read(std::string_view text, double* value) {
        char suffix = '\0';
        return sscanf(text.data(), "%lf%c", value, &suffix) > 0 && scale(value, suffix);
    }
    static bool read(std::string_view text, nanotime* value) {
        char unit[3] = "";
        return sscanf(text.data(), "%ld%2s", value, unit) == 2 && scale(value, unit);
    }
};

struct Strto {
    static bool read(std::string_view text, u8* value) {
        char* end;
        *value = strtoull(text.data(), &end, is_hex(text) ? 16 : 10);
        return end > text.data() && scale(value, *end);
    }
    static bool read(std::string_view text, double* value) {
        char* end;
        *value = strtod(text.data(), &end);
        return end > text.data() && scale(value, *end);
    }
    static bool read(std::string_view text, nanotime* value) {
        char* end;
        *value = strtoll(text.data(), &end, 10);
        return end > text.data() && scale(value, end);
    }
};

struct FromCharsKnownEnd {
    static bool read(std::string_view text, u8* value) {
        const int prefix = is_hex(text) ? 2 : 0;
        const auto [end, error] = std::from_chars(text.data() + prefix, text.data() + text.size(),
                                                  *value, prefix == 2 ? 16 : 10);
        return error == std::errc() && scale(value, *end);
    }
    static bool read(std::string_view text, double* value) {
        const auto [end, error] = std::from_chars(text.begin(), text.end(), *value);
        return error == std::errc() && scale(value, *end);
    }
};

struct FromChars {
    template <typename Value>
    static bool read(std::string_view text, Value* value) {
        return FromCharsKnownEnd::read(text.data(), value);
    }
};

struct FastFloatKnownEnd {
    static bool read(std::string_view text, double* value) {
        const auto [end, error] = fast_float::from_chars(text.begin(), text.end(), *value);
        return error == std::errc() && scale(value, *end);
    }
};

struct FastFloat {
    static bool read(std::string_view text, double* value) {
        return FastFloatKnownEnd::read(text.data(), value);
    }
};

struct Strlen {
    template <typename Value>
    static bool read(std::string_view text, Value* value) {
        *value = static_cast<Value>(strlen(text.data()));
        return true;
    }
};

static std::mt19937_64 random_bits(20260329);

static size_t below(size_t limit) {
    return random_bits() % limit;
}

template <typename Make>
static Texts make_texts(Make make) {
    Texts texts;
    for (size_t i = 0; i < TEXTS; i++)
        texts.push_back(make());
    return texts;
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

static std::string formatted(const char* format, double value) {
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
static void read(benchmark::State& state, const Texts* texts) {
    std::vector<std::string_view> views(texts->begin(), texts->end());
    for (std::string_view text : views) {
        Value value = 0, expected = 0;
        const bool ok = Contender::read(text, &value) && Scanf::read(text, &expected);
        if (!ok || (value != expected && !std::is_same_v<Contender, Strlen>))
            return state.SkipWithError("a text was read wrongly");
    }
    size_t i = 0;
    for (auto _ : state) {
        Value value = 0;
        bool ok = Contender::read(views[i], &value);
        benchmark::DoNotOptimize(ok);
        benchmark::DoNotOptimize(value);
        i = (i + 1) % TEXTS;
    }
}

template <typename Contender, typename Value>
static void add(const char* name, const char* contender, const Texts& texts) {
    benchmark::RegisterBenchmark((std::string(name) + "/" + contender).c_str(),
                                 read<Contender, Value>, new Texts(texts));
}

template <typename Value>
static void add_case(const char* name, const Texts& texts) {
    add<Ours, Value>(name, "kxutil", texts);
    add<Scanf, Value>(name, "sscanf", texts);
    add<Strto, Value>(name, "strto", texts);
    if constexpr (!std::is_same_v<Value, nanotime>) {
        add<FromChars, Value>(name, "std::from_chars", texts);
        add<FromCharsKnownEnd, Value>(name, "std::from_chars known end", texts);
    }
    if constexpr (std::is_same_v<Value, double>) {
        add<FastFloat, Value>(name, "fast_float", texts);
        add<FastFloatKnownEnd, Value>(name, "fast_float known end", texts);
    }
    add<Strlen, Value>(name, "limit: strlen", texts);
}

int main(int argc, char** argv) {
    const Texts small = make_texts([] { return digits(4); });
    const Texts large = make_texts([] { return digits(19); });
    add_case<u8>("small", small);
    add_case<u8>("small suffixed", make_texts([] { return with_multiplier(digits(4)); }));
    add_case<u8>("large", large);
    add_case<u8>("large suffixed", make_texts([] { return with_multiplier(digits(19)); }));
    add_case<u8>("hexadecimal", make_texts([] {
                     char text[32];
                     snprintf(text, sizeof text, "0x%lx", random_bits() >> below(60));
                     return std::string(text);
                 }));
    add_case<double>("double", make_texts(short_double));
    add_case<double>("double suffixed", make_texts([] { return with_multiplier(short_double()); }));
    add_case<double>("double of 17 digits", make_texts(long_double));
    add_case<nanotime>("duration",
                       make_texts([] { return digits(4) + UNITS[below(std::size(UNITS))].name; }));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
