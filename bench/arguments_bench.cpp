// Walking an option string: name and value of every item, as pointers and lengths.
//
// The hand-written scans are what a caller would write for one known string: they stop at ',' and
// '=' and know neither quotes nor other delimiters, and being in this file they are inlined. The
// iterator does know them, behind calls into the library. No value is quoted, so everybody finds
// the same items. The text never changes, so branches are predicted better than in a start-up that
// reads its options once.

#include "util/export/arguments.h"

#include <benchmark/benchmark.h>
#include <string.h>
#include <string>

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
    static const char* const ITEMS[] = {
        "verbose",
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
        "survivors=12",
    };
    std::string text = "banner=Started by init";
    for (int i = 0; i < count - 1; i++)
        text.append(",").append(ITEMS[static_cast<size_t>(i) % std::size(ITEMS)]);
    return text;
}

struct Ours {
    static int walk(const char* text) {
        int items = 0;
        ArgIter iter;
        for (argIterInitDefault(&iter, text); !argIterDone(&iter); items++) {
            argIterNext(&iter);
            consume({iter.name, iter.n_len, iter.value, iter.v_len});
        }
        return items;
    }
};

// Character by character, each looked at once.
struct HandScan {
    static int walk(const char* text) {
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
            consume(item);
            if (*p == ',')
                p++;
        }
        return items;
    }
};

// The item's end by memchr(), then its '=' within.
struct MemchrScan {
    static int walk(const char* text) {
        int items = 0;
        const char* const end = text + strlen(text);
        for (const char* p = text; p < end; items++) {
            const void* comma = memchr(p, ',', static_cast<size_t>(end - p));
            const char* stop = comma != nullptr ? static_cast<const char*>(comma) : end;
            const void* equals = memchr(p, '=', static_cast<size_t>(stop - p));
            const char* n_end = equals != nullptr ? static_cast<const char*>(equals) : stop;
            const char* value = n_end < stop ? n_end + 1 : stop;
            consume({p, static_cast<size_t>(n_end - p), value, static_cast<size_t>(stop - value)});
            p = stop < end ? stop + 1 : end;
        }
        return items;
    }
};

// Finds the commas and nothing else.
struct LimitCommas {
    static int walk(const char* text) {
        int items = 1;
        for (const char* p = text; (p = strchr(p, ',')) != nullptr; p++)
            items++;
        return items;
    }
};

template <typename Contender>
static void walk(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::string options = make_options(count);
    const char* text = options.c_str();
    int items = count;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        items = Contender::walk(text);
        benchmark::DoNotOptimize(items);
    }
    if (items != count)
        state.SkipWithError("not every item was found");
    state.counters["bytes"] = static_cast<double>(options.size());
}

BENCHMARK(walk<Ours>)->Name("walk/kxutil")->Arg(8)->Arg(64);
BENCHMARK(walk<HandScan>)->Name("walk/hand scan")->Arg(8)->Arg(64);
BENCHMARK(walk<MemchrScan>)->Name("walk/memchr scan")->Arg(8)->Arg(64);
BENCHMARK(walk<LimitCommas>)->Name("walk/limit: commas only")->Arg(8)->Arg(64);
