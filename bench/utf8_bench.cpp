// Validation of text: ASCII, mixtures and text beyond ASCII, in three sizes; one mixture in more.
//
// Everybody validates the same bytes, but for pairs: characters beyond U+FFFF take six bytes in our
// form and four in the peers', so they get as many bytes of their own. The limit reads the memory
// and looks for a bit, which says nothing about its contents.

#include "util/export/utf8.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <immintrin.h>
#include <simdjson.h>
#include <random>
#include <string>
#include <vector>

struct Shape {
    const char* name;
    std::vector<std::string> characters;  // drawn at random
    bool four_bytes = false;              // for the peers, instead of six
    std::vector<size_t> sizes = {64, 4 << 10, 1 << 20};
};

static const Shape SHAPES[] = {
    {"ascii", {"a"}},
    {"two-byte 5%", {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j",
                     "k", "l", "m", "n", "o", "p", "q", "r", "s", "\xC3\xA9"}},
    {"three-byte", {"\xE6\x97\xA5", "\xE6\x9C\xAC"}},
    {"mixed",
     {"a", "\xC3\xA9", "\xE6\x97\xA5"},
     false,
     {16, 64, 256, 1 << 10, 4 << 10, 32 << 10, 256 << 10, 1 << 20}},
    {"pairs", {"\xED\xA0\xBD\xED\xB8\x80", "\xED\xA0\xBD\xED\xB8\x81"}, true},
};

// Whole characters, filled up with ASCII.
static std::string make_text(const std::vector<std::string>& characters, size_t size) {
    std::mt19937 random(20260329);
    std::string text;
    while (text.size() + 6 <= size)
        text += characters[random() % characters.size()];
    return text.append(size - text.size(), '.');
}

static bool ours(const std::string& text) {
    return utf8_validate(text.data(), text.size(), false);
}

static bool simdjson_peer(const std::string& text) {
    return simdjson::validate_utf8(text.data(), text.size());
}

static bool glib_peer(const std::string& text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != 0;
}

[[gnu::target("avx2")]] static bool limit_read(const std::string& text) {
    __m256i all = _mm256_setzero_si256();
    const char* p = text.data();
    for (size_t i = 0; i + 64 <= text.size(); i += 64) {
        const auto* block = reinterpret_cast<const __m256i*>(p + i);
        all = _mm256_or_si256(
            all, _mm256_or_si256(_mm256_loadu_si256(block), _mm256_loadu_si256(block + 1)));
    }
    return _mm256_testz_si256(all, _mm256_set1_epi8(0)) != 0;
}

static void validate(benchmark::State& state, bool (*check)(const std::string&),
                     const std::string& text) {
    bool valid = true;
    for (auto _ : state) {
        benchmark::ClobberMemory();
        valid = check(text) && valid;
    }
    if (!valid)
        state.SkipWithError("valid text was rejected");
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const Shape& shape : SHAPES)
        for (size_t size : shape.sizes) {
            const std::string text = make_text(shape.characters, size);
            const std::string for_peers =
                shape.four_bytes ? make_text({"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x81"}, size) : text;
            const auto add = [&](const char* contender, bool (*check)(const std::string&),
                                 const std::string& its_text) {
                const std::string name =
                    std::string(shape.name) + " " + std::to_string(size) + "/" + contender;
                benchmark::RegisterBenchmark(name.c_str(), validate, check, its_text);
            };
            add("kxutil", ours, text);
            add("simdjson", simdjson_peer, for_peers);
            add("g_utf8_validate", glib_peer, for_peers);
            add("limit: read", limit_read, text);
        }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
