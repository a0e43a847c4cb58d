// Matching dotted class names of 20 to 60 characters, and the pattern that makes a matcher which
// tries all combinations run for seconds. Every contender gives the same answers, which is checked
// before it is timed. GLib's patterns are compiled beforehand; fnmatch and we read the text each
// time. A set answers with its first pattern that matches; the peers ask one pattern after the
// other.

#include "util/export/globmatch.h"

#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <glib.h>
#include <string>
#include <vector>

using Names = std::vector<std::string>;

static const Names CLASS_NAMES = {
    "java.lang.StringBuilder",
    "java.util.concurrent.ConcurrentHashMap",
    "java.util.HashMap$TreeNode",
    "org.example.server.http.RequestDispatcher",
    "java.util.concurrent.locks.ReentrantReadWriteLock",
    "com.acme.billing.invoice.InvoiceRepositoryImpl",
    "javax.management.remote.JMXConnectorServer",
    "org.example.server.cache.SessionCacheManager$Entry",
    "java.nio.channels.FileChannelImpl",
    "java.lang.IllegalArgumentException",
    "org.example.util.text.LineBreakIterator",
    "com.acme.billing.ledger.AccountBalanceException",
    "java.io.UncheckedIOException",
    "java.util.stream.ReferencePipeline",
    "com.acme.web.controller.CustomerController$Proxy12",
    "org.example.server.http.HeaderMap",
};

struct Case {
    const char* name;
    Names patterns;
    Names subjects;
};

static Case hostile(const char* name, size_t length) {
    return {name, {"a*a*a*a*a*a*a*a*b"}, {std::string(length, 'a')}};
}

static const Case CASES[] = {
    {"prefix", {"java.util.*"}, CLASS_NAMES},
    {"suffix", {"*Exception"}, CLASS_NAMES},
    {"2 stars", {"*.server.*Map"}, CLASS_NAMES},
    {"4 stars", {"*.*.http.*Request*"}, CLASS_NAMES},
    {"set of 8",
     {"java.lang.*", "java.util.*", "*Exception", "com.acme.*Impl", "*.http.*", "*Proxy*",
      "org.example.*.cache.*", "*Controller*"},
     CLASS_NAMES},
    hostile("hostile", 200),
    hostile("hostile 25", 25),
    hostile("hostile 50", 50),
    hostile("hostile 100", 100),
    hostile("hostile 200", 200),
    hostile("hostile 400", 400),
};

class Ours {
  public:
    explicit Ours(const Names& patterns) : first_(patterns[0]), single_(patterns.size() == 1) {
        std::string source;
        for (const std::string& text : patterns)
            source += (source.empty() ? "" : ",") + text;
        patternSetCreate(&set_, source.c_str());
    }
    ~Ours() {
        patternSetFree(&set_);
    }
    bool matches(const std::string& s) {
        return single_ ? globMatch(first_.c_str(), s.c_str())
                       : patternSetMatch(&set_, s.c_str()) == MATCH;
    }

  private:
    std::string first_;
    bool single_;
    patternset set_;
};

class Glib {
  public:
    explicit Glib(const Names& patterns) {
        for (const std::string& text : patterns)
            patterns_.push_back(g_pattern_spec_new(text.c_str()));
    }
    ~Glib() {
        for (GPatternSpec* compiled : patterns_)
            g_pattern_spec_free(compiled);
    }
    bool matches(const std::string& s) {
        for (GPatternSpec* compiled : patterns_)
            if (g_pattern_spec_match_string(compiled, s.c_str()))
                return true;
        return false;
    }

  private:
    std::vector<GPatternSpec*> patterns_;
};

class Fnmatch {
  public:
    explicit Fnmatch(const Names& patterns) : patterns_(patterns) {}
    bool matches(const std::string& s) {
        for (const std::string& text : patterns_)
            if (fnmatch(text.c_str(), s.c_str(), 0) == 0)
                return true;
        return false;
    }

  private:
    Names patterns_;
};

template <typename Contender>
static void match(benchmark::State& state, const Case& c) {
    Contender contender(c.patterns);
    Fnmatch reference(c.patterns);
    for (const std::string& s : c.subjects)
        if (contender.matches(s) != reference.matches(s))
            return state.SkipWithError("wrong answer");
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(c.subjects.size())))
        for (const std::string& s : c.subjects)
            benchmark::DoNotOptimize(contender.matches(s));
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const Case& c : CASES) {
        const auto add = [&](const char* contender, void (*run)(benchmark::State&, const Case&)) {
            benchmark::RegisterBenchmark((std::string(c.name) + "/" + contender).c_str(), run, c);
        };
        add("kxutil", match<Ours>);
        add("GPatternSpec", match<Glib>);
        add("fnmatch", match<Fnmatch>);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
