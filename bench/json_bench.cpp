// Documents read as events, in seven shapes and three sizes.
//
// Each contender's callback, or walk, counts the events and adds up the bytes of strings and the
// numbers. The sums are compared before anything is measured. Documents are plain JSON of
// characters up to U+FFFF, without the escapes that only some contenders know.

#include "bench.h"
#include "json_peers.h"
#include "util/c/shared/vector/choice.h"
#include "util/export/json.h"

#include <cstdio>
#include <random>

// The pieces of documents. Numbers and texts are drawn at random, the same on every run.
class Writer {
  public:
    std::string text;

    size_t below(size_t bound) {
        return random_() % bound;
    }
    Writer& put(const char* piece) {
        text += piece;
        return *this;
    }
    // A string of `words` words out of `vocabulary`.
    template <size_t N>
    Writer& quote(size_t words, const char* const (&vocabulary)[N]) {
        text += '"';
        for (size_t i = 0; i < words; i++)
            put(i > 0 ? " " : "").put(vocabulary[below(N)]);
        return put("\"");
    }
    // An integer of `digits` digits, a third of them negative.
    Writer& integer(size_t digits) {
        put(below(3) == 0 ? "-" : "");
        text += static_cast<char>('1' + below(9));
        while (--digits > 0)
            text += static_cast<char>('0' + below(10));
        return *this;
    }
    Writer& decimal(const char* format, double range) {
        const double unit = static_cast<double>(random_()) / static_cast<double>(random_.max());
        char digits[40];
        std::snprintf(digits, sizeof digits, format, (unit - 0.5) * range);
        return put(digits);
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
    out.put(R"({"name":)").quote(2, WORDS).put(R"(,"kind":)").quote(1, WORDS);
    out.put(R"(,"description":)").quote(5 + out.below(12), WORDS).put("}");
}

static void foreign_record(Writer& out) {
    out.put(R"({"имя":)").quote(2, FOREIGN);
    out.put(R"(,"説明":)").quote(4 + out.below(8), FOREIGN).put("}");
}

static void escaped_record(Writer& out) {
    out.put(R"({"path":)").quote(2, ESCAPED);
    out.put(R"(,"message":)").quote(4 + out.below(8), ESCAPED).put("}");
}

static void integer_row(Writer& out) {
    for (int i = 0; i < 8; i++)
        out.put(i > 0 ? "," : "[").integer(1 + out.below(out.below(2) == 0 ? 4 : 18));
    out.put("]");
}

static void decimal_row(Writer& out) {
    for (int i = 0; i < 4; i++)
        out.put(i > 0 ? "," : "[").decimal("%.17g", 360);
    out.put("]");
}

static void catalogue_record(Writer& out) {
    out.put(R"({"id":)").integer(5).put(R"(,"name":)").quote(2, WORDS);
    out.put(R"(,"price":)").decimal("%.2f", 2000).put(R"(,"stock":)").integer(2);
    out.put(out.below(2) == 0 ? R"(,"sold":true)" : R"(,"sold":false)");
    out.put(R"(,"tags":[)").quote(1, WORDS).put(",").quote(1, WORDS).put(R"(],"next":null})");
}

static void configuration_section(Writer& out) {
    out.put("{\n        \"module\": ").quote(1, WORDS);
    out.put(",\n        \"enabled\": ").put(out.below(2) == 0 ? "true" : "false");
    out.put(",\n        \"limits\": {\n            \"threads\": ").integer(2);
    out.put(",\n            \"ratio\": ").decimal("%.3f", 2);
    out.put("\n        },\n        \"file\": ").quote(2, WORDS).put("\n    }");
}

struct Shape {
    const char* name;
    void (*write_record)(Writer&);
    const char* gap = "";  // before every record
};

static const Shape SHAPES[] = {
    {"strings", string_record},
    {"beyond ASCII", foreign_record},
    {"escapes", escaped_record},
    {"integers", integer_row},
    {"doubles", decimal_row},
    {"catalogue", catalogue_record},
    {"configuration", configuration_section, "\n    "},
};

static const Size SIZES[] = {{", 200 bytes", 200}, {", 64 KiB", 64 << 10}, {", 4 MiB", 4 << 20}};

// Whole records up to about the size.
static std::string make_document(const Shape& shape, size_t bytes) {
    Writer out;
    out.put("[");
    do {
        out.put(out.text.size() > 1 ? "," : "").put(shape.gap);
        shape.write_record(out);
    } while (out.text.size() < bytes - 50);
    return out.text + (*shape.gap != '\0' ? "\n]\n" : "]");
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

static void add_contender(const std::string& name, Contender contender,
                          const std::string* document) {
    Totals ours, found;
    require(read_ours(*document, &ours) && contender.read(*document, &found) && found == ours,
            std::string(contender.name) + " reads this differently: " + document->substr(0, 200));
    add_loop(name, contender.name, [=] {
        Totals totals;
        benchmark::DoNotOptimize(contender.read(*document, &totals));
        benchmark::DoNotOptimize(totals);
    });
}

void add_all() {
    benchmark::AddCustomContext(
        "kernels",
        "kxutil by vectors of up to " + std::to_string(vector_bytes) + " bytes, " + peer_kernels());
    for (const Shape& shape : SHAPES)
        for (const Size& size : SIZES) {
            auto* const document = new std::string(make_document(shape, size.bytes));  // kept
            document->reserve(document->size() + PADDING_BYTES);
            const std::string name = std::string(shape.name) + size.name;
            add_contender(name, {"kxutil", read_ours}, document);
            for (const Contender& peer : PEERS)
                add_contender(name, peer, document);
        }
}
