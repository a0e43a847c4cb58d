// Option strings, walked and copied out. Walking gives name and value of every item, as pointers
// and lengths; copying, as two strings on the heap, which are then freed.

#include "bench.h"
#include "osal/export/osal_msmalloc.h"
#include "util/export/arguments.h"

#include <glib.h>
#include <stdlib.h>
#include <string.h>
#include <algorithm>
#include <random>
#include <vector>

struct Item {
    const char* name;
    size_t n_len;
    const char* value;
    size_t v_len;
};

static void consume(Item item) {
    benchmark::DoNotOptimize(static_cast<const char* const&>(item.name));
    benchmark::DoNotOptimize(static_cast<const size_t&>(item.n_len));
    benchmark::DoNotOptimize(static_cast<const char* const&>(item.value));
    benchmark::DoNotOptimize(static_cast<const size_t&>(item.v_len));
}

// An option string of `count` items, about two thirds of them with a value.
static std::string make_options(int count) {
    static const char* const ITEMS[] = {"verbose",
                                        "heap=64m",
                                        "collector=generational",
                                        "trace",
                                        "threads=8",
                                        "compressed",
                                        "log=/var/log/app/gc.log",
                                        "pause=200ms",
                                        "stack=1m",
                                        "noverify",
                                        "path=lib/app.jar:lib/ext.jar",
                                        "encoding=UTF-8",
                                        "agent=heap",
                                        "port=8787",
                                        "quiet",
                                        "survivors=12"};
    std::string text = "banner=Started by init";
    for (int i = 0; i < count - 1; i++)
        text.append(",").append(ITEMS[static_cast<size_t>(i) % std::size(ITEMS)]);
    return text;
}

static int walk_ours(const char* text) {
    int items = 0;
    ArgIter iter;
    for (argIterInitDefault(&iter, text); !argIterDone(&iter); items++) {
        argIterNext(&iter);
        consume({iter.name, iter.n_len, iter.value, iter.v_len});
    }
    return items;
}

static int copy_ours(const char* text) {
    int items = 0;
    ArgIter iter;
    char *name, *value;
    for (argIterInitDefault(&iter, text); argIterGetNext(&iter, &name, &value); items++) {
        consume({name, 0, value, 0});
        gsFree(name);
        gsFree(value);
    }
    return items;
}

static void consume_copies(Item item) {
    char* const name = strndup(item.name, item.n_len);
    char* const value = strndup(item.value, item.v_len);
    consume({name, item.n_len, value, item.v_len});
    free(name);
    free(value);
}

// Character by character; each is read once.
template <typename Consume>
static int scan(const char* text, Consume consume_item) {
    int items = 0;
    for (const char* p = text; *p != '\0'; items++) {
        Item item = {p, 0, nullptr, 0};
        while (*p != '\0' && *p != ',' && *p != '=')
            p++;
        item.n_len = static_cast<size_t>(p - item.name);
        if (*p == '=')
            p++;
        item.value = p;
        while (*p != '\0' && *p != ',')
            p++;
        item.v_len = static_cast<size_t>(p - item.value);
        consume_item(item);
        if (*p == ',')
            p++;
    }
    return items;
}

template <typename Work>
static void add_contender(const char* work_name, const char* contender, Work work) {
    for (int count : {8, 64}) {
        const std::string options = make_options(count);
        require(work(options.c_str()) == count, "not every item was found");
        const std::string name = work_name + std::to_string(count) + " items";
        add_loop(name, contender, [=] { benchmark::DoNotOptimize(work(options.c_str())); });
    }
}

// What one group of eight arguments sets, one of each type.
struct Settings {
    int threads = 0;
    size_t size = 0;
    nanotime pause = 0;
    s8 offset = 0;
    bool trace = false;
    const char* mode = "";
    const char* path = "";
    double ratio = 0;

    bool are_expected() const {
        return threads == 8 && size == 64 << 20 && pause == 200'000'000 && offset == -12 && trace &&
               strcmp(mode, "fast") == 0 && strcmp(path, "/var/lib/app") == 0 && ratio == 0.75;
    }
};

constexpr size_t KINDS = 8;
constexpr size_t MAX_GROUPS = 8;
constexpr const char* GROUPS[MAX_GROUPS] = {"gc",    "jit", "heap", "stack",
                                            "class", "log", "net",  "monitor"};
constexpr const char* NAMES[KINDS] = {"threads", "size", "pause", "offset",
                                      "trace",   "mode", "path",  "ratio"};
constexpr const char* VALUES[KINDS] = {"=8", "=64m",  "=200ms",        "=-12",
                                       "",   "=fast", "=/var/lib/app", "=0.75"};

// A number of groups of arguments, as names and as text, in which they have another order.
struct Input {
    std::vector<std::string> names, words;
    std::vector<char*> tokens;
    std::string text;

    explicit Input(size_t groups) {
        for (size_t i = 0; i < groups * KINDS; i++) {
            names.push_back(std::string(GROUPS[i / KINDS]) + "-" + NAMES[i % KINDS]);
            words.push_back("--" + names[i] + VALUES[i % KINDS]);
        }
        std::shuffle(words.begin(), words.end(), std::mt19937(20260329));
        for (const std::string& word : words)
            text += (text.empty() ? "" : ",") + word.substr(2);
        for (std::string& name : names)
            tokens.push_back(name.data());
        tokens.push_back(nullptr);
    }
    const char* name(size_t group, size_t kind) const {
        return names[group * KINDS + kind].c_str();
    }
};

struct Declared {
    argsParse pa = {};
    argInfo info[MAX_GROUPS * KINDS];

    bool parse(const Input& in, Settings* settings, size_t groups) {
        argInfo* a = info;
        for (size_t i = 0; i < groups; i++) {
            Settings& s = settings[i];
            s.threads = argAddint(in.name(i, 0), &pa, a++, &s.threads, 0, "", nullptr, 0);
            s.size = argAddsize_t(in.name(i, 1), &pa, a++, &s.size, 0, "", nullptr, 0);
            s.pause = argAddnanotime(in.name(i, 2), &pa, a++, &s.pause, 0, "", nullptr, 0);
            s.offset = argAdds8(in.name(i, 3), &pa, a++, &s.offset, 0, "", nullptr, 0);
            s.trace = argAddbool(in.name(i, 4), &pa, a++, &s.trace, false, "", nullptr, 0);
            s.mode = argAddpcchar(in.name(i, 5), &pa, a++, &s.mode, "", "", nullptr, 0);
            s.path = argAddpcchar(in.name(i, 6), &pa, a++, &s.path, "", "", nullptr, 0);
            s.ratio = argAdddouble(in.name(i, 7), &pa, a++, &s.ratio, 0, "", nullptr, 0);
        }
        return argParse(&pa, in.text.c_str(), in.text.size(), ',') == 0;
    }
    ~Declared() {
        argFree(&pa);
    }
};

// A number with a multiplier or unit.
static s8 read_scaled(const char* text) {
    static const struct {
        const char* name;
        s8 factor;
    } UNITS[] = {{"k", 1 << 10}, {"m", 1 << 20},    {"g", 1 << 30},      {"ns", 1},
                 {"us", 1000},   {"ms", 1'000'000}, {"s", 1'000'000'000}};
    char* end;
    const s8 number = strtoll(text, &end, 10);
    for (const auto& unit : UNITS)
        if (strcmp(end, unit.name) == 0)
            return number * unit.factor;
    return number;
}

static void set(Settings& s, size_t kind, const char* value) {
    switch (kind) {
        case 0: s.threads = static_cast<int>(strtol(value, nullptr, 10)); break;
        case 1: s.size = static_cast<size_t>(read_scaled(value)); break;
        case 2: s.pause = read_scaled(value); break;
        case 3: s.offset = strtol(value, nullptr, 10); break;
        case 4: s.trace = true; break;
        case 5: s.mode = value; break;
        case 6: s.path = value; break;
        default: s.ratio = strtod(value, nullptr); break;
    }
}

struct Getsubopt {
    char* copy = nullptr;

    bool parse(const Input& in, Settings* settings, size_t) {
        copy = strdup(in.text.c_str());
        char *rest = copy, *value;
        while (*rest != '\0') {
            const int found = getsubopt(&rest, in.tokens.data(), &value);
            if (found < 0)
                return false;
            const auto argument = static_cast<size_t>(found);
            set(settings[argument / KINDS], argument % KINDS, value);
        }
        return true;
    }
    ~Getsubopt() {
        free(copy);
    }
};

struct GOption {
    GOptionContext* context = g_option_context_new(nullptr);
    struct {
        int threads;
        char *size, *pause;
        gint64 offset;
        gboolean trace;
        char *mode, *path;
        double ratio;
    } values[MAX_GROUPS] = {};

    void declare(const Input& in, size_t groups) {
        GOptionEntry entries[MAX_GROUPS * KINDS + 1] = {};
        GOptionEntry* next = entries;
        for (size_t i = 0; i < groups; i++) {
            auto& v = values[i];
            *next++ = {in.name(i, 0), 0, 0, G_OPTION_ARG_INT, &v.threads, "", nullptr};
            *next++ = {in.name(i, 1), 0, 0, G_OPTION_ARG_STRING, &v.size, "", nullptr};
            *next++ = {in.name(i, 2), 0, 0, G_OPTION_ARG_STRING, &v.pause, "", nullptr};
            *next++ = {in.name(i, 3), 0, 0, G_OPTION_ARG_INT64, &v.offset, "", nullptr};
            *next++ = {in.name(i, 4), 0, 0, G_OPTION_ARG_NONE, &v.trace, "", nullptr};
            *next++ = {in.name(i, 5), 0, 0, G_OPTION_ARG_STRING, &v.mode, "", nullptr};
            *next++ = {in.name(i, 6), 0, 0, G_OPTION_ARG_FILENAME, &v.path, "", nullptr};
            *next++ = {in.name(i, 7), 0, 0, G_OPTION_ARG_DOUBLE, &v.ratio, "", nullptr};
        }
        g_option_context_add_main_entries(context, entries, nullptr);
    }
    bool parse(const Input& in, Settings* settings, size_t groups) {
        declare(in, groups);
        std::vector<char*> words = {const_cast<char*>("bench")};
        for (const std::string& word : in.words)
            words.push_back(const_cast<char*>(word.c_str()));
        char** argv = words.data();
        int argc = static_cast<int>(words.size());
        const bool ok = g_option_context_parse(context, &argc, &argv, nullptr);
        for (size_t i = 0; ok && i < groups; i++) {
            const auto& v = values[i];
            const auto size = static_cast<size_t>(read_scaled(v.size));
            settings[i] = {v.threads, size,   read_scaled(v.pause), v.offset, v.trace != 0, v.mode,
                           v.path,    v.ratio};
        }
        return ok;
    }
    ~GOption() {
        for (const auto& v : values)
            for (char* text : {v.size, v.pause, v.mode, v.path})
                g_free(text);
        g_option_context_free(context);
    }
};

template <typename Contender>
static void add_declared(const char* name) {
    for (size_t groups : {size_t{1}, MAX_GROUPS})
        add("declared, " + std::to_string(groups * KINDS) + " items", name,
            [groups](benchmark::State& state) {
                const Input in(groups);
                bool ok = true;
                for (auto _ : state) {
                    Settings settings[MAX_GROUPS];
                    Contender contender;
                    ok &= contender.parse(in, settings, groups);
                    for (size_t i = 0; i < groups; i++)
                        ok &= settings[i].are_expected();
                }
                require(ok, "a setting is wrong");
            });
}

void add_all() {
    add_contender("walking, ", "kxutil", walk_ours);
    add_contender("walking, ", "hand scan", [](const char* text) { return scan(text, consume); });
    add_contender("copying, ", "kxutil", copy_ours);
    add_contender("copying, ", "hand scan",
                  [](const char* text) { return scan(text, consume_copies); });
    add_declared<Declared>("kxutil");
    add_declared<Getsubopt>("getsubopt");
    add_declared<GOption>("GOption");
}
