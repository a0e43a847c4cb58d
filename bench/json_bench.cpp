// Documents read as events, in seven shapes and three sizes; one shape in more.
//
// Everybody's callback, or walk, counts the events and adds up the bytes of strings and the
// numbers; before anything is measured, the sums of all are compared. Documents are plain JSON of
// characters up to U+FFFF, without the escapes that only some know.

#include "json_peers.h"
#include "util/export/json.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

// The pieces of documents. Numbers and texts are drawn at random, the same on every run.
class Writer {
  public:
    std::string text;

    size_t below(size_t bound) {
        return random_() % bound;
    }
    Writer& operator<<(std::string_view piece) {
        text += piece;
        return *this;
    }

    // A string of `words` words out of `vocabulary`.
    template <size_t N>
    void quote(size_t words, const char* const (&vocabulary)[N]) {
        text += '"';
        for (size_t i = 0; i < words; i++)
            (*this << (i > 0 ? " " : "")) << vocabulary[below(N)];
        text += '"';
    }

    // An integer of `digits` digits, a third of them negative.
    void integer(size_t digits) {
        text += below(3) == 0 ? "-" : "";
        text += static_cast<char>('1' + below(9));
        while (--digits > 0)
            text += static_cast<char>('0' + below(10));
    }

    void decimal(const char* format, double range) {
        const double unit = static_cast<double>(random_()) / static_cast<double>(random_.max());
        char digits[40];
        std::snprintf(digits, sizeof digits, format, (unit - 0.5) * range);
        text += digits;
    }

  private:
    std::mt19937_64 random_{20260401};
};

static const char* const WORDS[] = {"collector", "heap", "a",          "survivor",
                                    "threads",   "with", "pause",      "region",
                                    "queue",     "of",   "concurrent", "log"};
static const char* const FOREIGN[] = {"été",  "Größe",  "日本語", "ключ",
                                      "中文", "память", "ñandú",  "ok"};
static const char* const ESCAPED[] = {R"(line\n)",  R"(\tcolumn)", R"(caf\u00e9)",    "plain",
                                      "words",      R"(bell\b)",   R"(\u65e5\u672c)", "between",
                                      R"(end\r\n)", "them"};

static void string_record(Writer& out) {
    out << R"({"name":)";
    out.quote(2, WORDS);
    out << R"(,"kind":)";
    out.quote(1, WORDS);
    out << R"(,"description":)";
    out.quote(5 + out.below(12), WORDS);
    out << "}";
}

static void foreign_record(Writer& out) {
    out << R"({"имя":)";
    out.quote(2, FOREIGN);
    out << R"(,"説明":)";
    out.quote(4 + out.below(8), FOREIGN);
    out << "}";
}

static void escaped_record(Writer& out) {
    out << R"({"path":)";
    out.quote(2, ESCAPED);
    out << R"(,"message":)";
    out.quote(4 + out.below(8), ESCAPED);
    out << "}";
}

static void integer_row(Writer& out) {
    out << "[";
    for (int i = 0; i < 8; i++) {
        out << (i > 0 ? "," : "");
        out.integer(1 + out.below(out.below(2) == 0 ? 4 : 18));
    }
    out << "]";
}

static void decimal_row(Writer& out) {
    out << "[";
    for (int i = 0; i < 4; i++) {
        out << (i > 0 ? "," : "");
        out.decimal("%.17g", 360);
    }
    out << "]";
}

static void catalogue_record(Writer& out) {
    out << R"({"id":)";
    out.integer(5);
    out << R"(,"name":)";
    out.quote(2, WORDS);
    out << R"(,"price":)";
    out.decimal("%.2f", 2000);
    out << R"(,"stock":)";
    out.integer(2);
    out << (out.below(2) == 0 ? R"(,"sold":true)" : R"(,"sold":false)") << R"(,"tags":[)";
    out.quote(1, WORDS);
    out << ",";
    out.quote(1, WORDS);
    out << R"(],"next":null})";
}

static void configuration_section(Writer& out) {
    out << "{\n        \"module\": ";
    out.quote(1, WORDS);
    out << ",\n        \"enabled\": " << (out.below(2) == 0 ? "true" : "false");
    out << ",\n        \"limits\": {\n            \"threads\": ";
    out.integer(2);
    out << ",\n            \"ratio\": ";
    out.decimal("%.3f", 2);
    out << "\n        },\n        \"file\": ";
    out.quote(2, WORDS);
    out << "\n    }";
}

struct Shape {
    const char* name;
    void (*write_record)(Writer&);
    const char* gap = "";  // before every record
    std::vector<size_t> sizes = {200, 64 << 10, 4 << 20};
};

static const Shape SHAPES[] = {
    {"strings", string_record},
    {"beyond ASCII", foreign_record},
    {"escapes", escaped_record},
    {"integers", integer_row},
    {"doubles", decimal_row},
    {"catalogue", catalogue_record, "", {200, 1 << 10, 8 << 10, 64 << 10, 512 << 10, 4 << 20}},
    {"configuration", configuration_section, "\n    "},
};

// Whole records up to about the size.
static std::string make_document(const Shape& shape, size_t size) {
    Writer out;
    out << "[";
    do {
        out << (out.text.size() > 1 ? "," : "") << shape.gap;
        shape.write_record(out);
    } while (out.text.size() < size - 50);
    out << (*shape.gap != '\0' ? "\n]\n" : "]");
    return out.text;
}

static void add_up(JSONType type, const JSONVal* value, void* arg) {
    auto* totals = static_cast<Totals*>(arg);
    if (type == JSON_STRING || type == JSON_KEY)
        totals->text(value->str.length);
    else if (type == JSON_INTEGER)
        totals->integer(static_cast<uint64_t>(value->int_value));
    else if (type == JSON_FLOAT)
        totals->decimal(value->double_value);
    else
        totals->events++;
}

static bool read_ours(const std::string& document, Totals* totals) {
    char error[200];
    return jsonParse(document.c_str(), add_up, totals, error, sizeof error) == 0;
}

static const Contender OURS = {"kxutil", read_ours};

// Ends the program when a contender reads something else than the first.
static Totals check(const Contender& contender, const std::string& document,
                    const Totals* expected) {
    constexpr double ROUNDING = 1e-12;  // for those whose decimals are not exact
    Totals found;
    bool same = contender.read(document, &found);
    if (same && expected != nullptr) {
        const double off = std::abs(found.decimals - expected->decimals);
        same = found.events == expected->events && found.string_bytes == expected->string_bytes &&
               found.integers == expected->integers &&
               off <= (contender.exact ? 0 : ROUNDING * std::abs(expected->decimals));
    }
    if (!same) {
        std::fprintf(stderr, "%s reads this differently: %.200s\n", contender.name,
                     document.c_str());
        std::exit(1);
    }
    return found;
}

static void measure(benchmark::State& state, const Contender* contender,
                    const std::string* document) {
    Totals totals;
    for (auto _ : state) {
        benchmark::DoNotOptimize(contender->read(*document, &totals));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(document->size()) * state.iterations());
}

int main(int argc, char** argv) {
    constexpr double MIN_SECONDS = 0.02;  // there are many of them
    benchmark::Initialize(&argc, argv);
    std::vector<Contender> contenders(std::begin(PEERS), std::end(PEERS));
    contenders.insert(contenders.begin(), OURS);
    for (const Shape& shape : SHAPES)
        for (size_t size : shape.sizes) {
            auto* const document = new std::string(make_document(shape, size));  // for good
            document->reserve(document->size() + PADDING_BYTES);
            const Totals totals = check(OURS, *document, nullptr);
            for (const Contender& contender : contenders) {
                check(contender, *document, &totals);
                std::string name = shape.name;
                name.append("/").append(contender.name).append("/").append(std::to_string(size));
                benchmark::RegisterBenchmark(name.c_str(), measure, &contender, document)
                    ->MinTime(MIN_SECONDS);
            }
        }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
