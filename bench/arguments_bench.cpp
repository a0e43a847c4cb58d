// Option strings, walked and copied out.
//
// Walking gives name and value of every item, as pointers and lengths; copying, as two strings of
// the heap, which are then released. The hand-written scans are what a caller would write for one
// known string: they stop at ',' and
// '=' and know neither quotes nor other delimiters, and being in this file they are inlined. The
// iterator does know them, behind calls into the library. No value is quoted, so everybody finds
// the same items. The text never changes, so branches are predicted better than in a start-up that
// reads its options once.

#include "osal/export/osal_msmalloc.h"
#include "util/export/arguments.h"

#include <benchmark/benchmark.h>
#include <stdlib.h>
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
    static int copy(const char* text) {
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
};

static char* copy_of(const char* text, size_t len) {
    char* const copy = static_cast<char*>(malloc(len + 1));
    memcpy(copy, text, len);
    copy[len] = '\0';
    return copy;
}

static void consume_copies(Item item) {
    item.name = copy_of(item.name, item.n_len);
    item.value = copy_of(item.value, item.v_len);
    consume(item);
    free(const_cast<char*>(item.name));
    free(const_cast<char*>(item.value));
}

// Character by character, each looked at once.
struct HandScan {
    template <typename Consume>
    static int scan(const char* text, Consume consume) {
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
    static int walk(const char* text) {
        return scan(text, consume);
    }
    static int copy(const char* text) {
        return scan(text, consume_copies);
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

template <int (*work)(const char* text)>
static void over_items(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::string options = make_options(count);
    const char* text = options.c_str();
    int items = count;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        items = work(text);
        benchmark::DoNotOptimize(items);
    }
    if (items != count)
        state.SkipWithError("not every item was found");
    state.counters["bytes"] = static_cast<double>(options.size());
}

static void walked(benchmark::internal::Benchmark* added) {
    added->Arg(1)->Arg(8)->Arg(64)->Arg(512);
}

BENCHMARK(over_items<Ours::walk>)->Name("walk/kxutil")->Apply(walked);
BENCHMARK(over_items<HandScan::walk>)->Name("walk/hand scan")->Apply(walked);
BENCHMARK(over_items<MemchrScan::walk>)->Name("walk/memchr scan")->Apply(walked);
BENCHMARK(over_items<LimitCommas::walk>)->Name("walk/limit: commas only")->Apply(walked);
BENCHMARK(over_items<Ours::copy>)->Name("copy/kxutil")->Arg(8)->Arg(64);
BENCHMARK(over_items<HandScan::copy>)->Name("copy/hand scan")->Arg(8)->Arg(64);
