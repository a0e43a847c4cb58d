// Validation of text: ASCII, mixtures and text beyond ASCII, in three sizes.

#include "bench.h"
#include "util/c/shared/vector/choice.h"
#include "util/export/utf8.h"

#include <simdjson.h>
#include <random>
#include <vector>

using Characters = std::vector<std::string>;

struct Shape {
    const char* name;
    Characters characters;      // drawn at random
    Characters for_peers = {};  // used instead where their encoding differs
};

static const Shape SHAPES[] = {
    {"ascii", {"a"}},
    {"two-byte 5%", {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j",
                     "k", "l", "m", "n", "o", "p", "q", "r", "s", "\xC3\xA9"}},
    {"three-byte", {"\xE6\x97\xA5", "\xE6\x9C\xAC"}},
    {"mixed", {"a", "\xC3\xA9", "\xE6\x97\xA5"}},
    {"pairs",
     {"\xED\xA0\xBD\xED\xB8\x80", "\xED\xA0\xBD\xED\xB8\x81"},
     {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x81"}},
};

// Whole characters, filled up with ASCII.
static std::string make_text(const Characters& characters, size_t size) {
    std::mt19937 random(20260329);
    std::string text;
    while (text.size() + 6 <= size)
        text += characters[random() % characters.size()];
    return text.append(size - text.size(), '.');
}

static bool validate(const std::string& text) {
    return utf8_validate(text.data(), text.size(), false);
}

template <typename Validate>
static void add_contender(const std::string& name, const char* contender, const std::string& text,
                          Validate call) {
    require(call(text), "valid text was rejected");
    add_loop(name, contender, [=] {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(call(text));
    });
}

static const Size SIZES[] = {{", 64 bytes", 64}, {", 4 KiB", 4 << 10}, {", 1 MiB", 1 << 20}};

void add_all() {
    benchmark::AddCustomContext("kernels", "kxutil by vectors of " + std::to_string(vector_bytes) +
                                               " bytes, simdjson by " +
                                               simdjson::get_active_implementation()->name());
    for (const Shape& shape : SHAPES)
        for (const Size& size : SIZES) {
            const std::string name = std::string(shape.name) + size.name;
            const Characters& peers = shape.for_peers.empty() ? shape.characters : shape.for_peers;
            add_contender(name, "kxutil", make_text(shape.characters, size.bytes), validate);
            add_contender(name, "simdjson", make_text(peers, size.bytes),
                          [](const std::string& text) { return simdjson::validate_utf8(text); });
        }
}
