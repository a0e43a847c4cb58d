// Option strings parsed into declared arguments.
//
// Every contender declares, parses and releases each time: one argument for each item, of eight
// types, in another order than the items. What the settings are afterwards is checked. Values have
// multipliers and units, which the peers read by strtoull() and a table. getsubopt() works on a
// copy of the text. GOption and CLI11 read no option strings but words of a command line, which
// they get for free.

#include "util/export/arguments.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <stdlib.h>
#include <string.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <random>
#include <string>
#include <vector>

// What one group of eight arguments sets.
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

// So many groups of arguments, as names and as text.
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

struct Ours {
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
    ~Ours() {
        argFree(&pa);
    }
};

static size_t read_size(const char* text) {
    char* end;
    const size_t number = strtoull(text, &end, 10);
    return *end == 'k'   ? number << 10
           : *end == 'm' ? number << 20
           : *end == 'g' ? number << 30
                         : number;
}

static nanotime read_time(const char* text) {
    static const struct {
        const char* name;
        nanotime factor;
    } UNITS[] = {{"ns", 1}, {"us", 1000}, {"ms", 1'000'000}, {"s", 1'000'000'000}};
    char* end;
    const nanotime number = strtoll(text, &end, 10);
    for (const auto& unit : UNITS)
        if (strcmp(end, unit.name) == 0)
            return number * unit.factor;
    return 0;
}

static void set(Settings& s, size_t kind, const char* value) {
    switch (kind) {
        case 0: s.threads = static_cast<int>(strtol(value, nullptr, 10)); break;
        case 1: s.size = read_size(value); break;
        case 2: s.pause = read_time(value); break;
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

// A character-by-character scan, and the declared names one after the other.
struct HandScan {
    char* copy = nullptr;

    bool parse(const Input& in, Settings* settings, size_t) {
        copy = strdup(in.text.c_str());
        for (char* p = copy; *p != '\0';) {
            char* const name = p;
            p += strcspn(p, "=,");
            char* value = p;
            if (*p == '=') {
                *p++ = '\0';
                value = p;
                p += strcspn(p, ",");
            }
            if (*p == ',')
                *p++ = '\0';
            size_t argument = 0;
            while (in.tokens[argument] != nullptr && strcmp(in.tokens[argument], name) != 0)
                argument++;
            if (in.tokens[argument] == nullptr)
                return false;
            set(settings[argument / KINDS], argument % KINDS, value);
        }
        return true;
    }
    ~HandScan() {
        free(copy);
    }
};

struct GOption {
    GOptionContext* context = g_option_context_new(nullptr);
    Settings* settings = nullptr;
    size_t groups = 0;

    bool parse(const Input& in, Settings* first, size_t count) {
        settings = first;
        groups = count;
        gboolean trace[MAX_GROUPS] = {};
        char *size[MAX_GROUPS] = {}, *pause[MAX_GROUPS] = {};
        GOptionEntry entries[MAX_GROUPS * KINDS + 1] = {};
        for (size_t i = 0; i < groups; i++) {
            Settings& s = settings[i];
            const auto declare = [&](size_t kind, GOptionArg arg, void* target) {
                entries[i * KINDS + kind] = {in.name(i, kind), 0, 0, arg, target, "", nullptr};
            };
            declare(0, G_OPTION_ARG_INT, &s.threads);
            declare(1, G_OPTION_ARG_STRING, &size[i]);
            declare(2, G_OPTION_ARG_STRING, &pause[i]);
            declare(3, G_OPTION_ARG_INT64, &s.offset);
            declare(4, G_OPTION_ARG_NONE, &trace[i]);
            declare(5, G_OPTION_ARG_STRING, &s.mode);
            declare(6, G_OPTION_ARG_FILENAME, &s.path);
            declare(7, G_OPTION_ARG_DOUBLE, &s.ratio);
        }
        g_option_context_add_main_entries(context, entries, nullptr);
        std::vector<char*> words = {const_cast<char*>("bench")};
        for (const std::string& word : in.words)
            words.push_back(const_cast<char*>(word.c_str()));
        words.push_back(nullptr);
        char** argv = words.data();
        int argc = static_cast<int>(in.words.size()) + 1;
        const bool ok = g_option_context_parse(context, &argc, &argv, nullptr);
        for (size_t i = 0; i < groups; i++) {
            settings[i].trace = trace[i];
            settings[i].size = read_size(size[i]);
            settings[i].pause = read_time(pause[i]);
            g_free(size[i]);
            g_free(pause[i]);
        }
        return ok;
    }
    ~GOption() {
        for (size_t i = 0; i < groups; i++) {
            g_free(const_cast<char*>(settings[i].mode));
            g_free(const_cast<char*>(settings[i].path));
        }
        g_option_context_free(context);
    }
};

struct Cli11 {
    CLI::App app;
    std::string modes[MAX_GROUPS], paths[MAX_GROUPS];

    bool parse(const Input& in, Settings* settings, size_t groups) {
        for (size_t i = 0; i < groups; i++) {
            Settings& s = settings[i];
            const auto name = [&](size_t kind) { return std::string("--") + in.name(i, kind); };
            app.add_option(name(0), s.threads);
            app.add_option_function<std::string>(
                name(1), [&s](const std::string& value) { s.size = read_size(value.c_str()); });
            app.add_option_function<std::string>(
                name(2), [&s](const std::string& value) { s.pause = read_time(value.c_str()); });
            app.add_option(name(3), s.offset);
            app.add_flag(name(4), s.trace);
            app.add_option(name(5), modes[i]);
            app.add_option(name(6), paths[i]);
            app.add_option(name(7), s.ratio);
        }
        app.parse(std::vector<std::string>(in.words.rbegin(), in.words.rend()));
        for (size_t i = 0; i < groups; i++) {
            settings[i].mode = modes[i].c_str();
            settings[i].path = paths[i].c_str();
        }
        return true;
    }
};

template <typename Contender>
static void parse(benchmark::State& state) {
    const size_t groups = static_cast<size_t>(state.range(0)) / KINDS;
    const Input in(groups);
    bool ok = true;
    for (auto _ : state) {
        Settings settings[MAX_GROUPS];
        Contender contender;
        ok &= contender.parse(in, settings, groups);
        for (size_t i = 0; i < groups; i++)
            ok &= settings[i].are_expected();
    }
    if (!ok)
        state.SkipWithError("a setting is wrong");
}

BENCHMARK(parse<Ours>)->Name("declared/kxutil")->RangeMultiplier(2)->Range(8, 64);
BENCHMARK(parse<HandScan>)->Name("declared/hand scan")->RangeMultiplier(2)->Range(8, 64);
BENCHMARK(parse<Getsubopt>)->Name("declared/getsubopt")->RangeMultiplier(2)->Range(8, 64);
BENCHMARK(parse<GOption>)->Name("declared/GOption")->RangeMultiplier(2)->Range(8, 64);
BENCHMARK(parse<Cli11>)->Name("declared/CLI11")->RangeMultiplier(2)->Range(8, 64);
