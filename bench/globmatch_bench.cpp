// Dotted class names matched, and a hostile pattern, on which a matcher that tries all combinations
// runs for seconds. Every contender's answers are checked before it is timed.

#include "bench.h"
#include "util/export/globmatch.h"

#include <fnmatch.h>
#include <glib.h>
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

static const Case CASES[] = {
    {"`java.util.*`", {"java.util.*"}, CLASS_NAMES},
    {"`*Exception`", {"*Exception"}, CLASS_NAMES},
    {"`*.server.*Map`", {"*.server.*Map"}, CLASS_NAMES},
    {"`*.*.http.*Request*`", {"*.*.http.*Request*"}, CLASS_NAMES},
    {"set of 8 patterns",
     {"java.lang.*", "java.util.*", "*Exception", "com.acme.*Impl", "*.http.*", "*Proxy*",
      "org.example.*.cache.*", "*Controller*"},
     CLASS_NAMES},
    {"hostile `a*a*a*a*a*a*a*a*b`", {"a*a*a*a*a*a*a*a*b"}, {std::string(200, 'a')}},
};

struct Ours {
    std::string first;
    bool single;
    patternset set;
    explicit Ours(const Names& patterns) : first(patterns[0]), single(patterns.size() == 1) {
        std::string source;
        for (const std::string& text : patterns)
            source += (source.empty() ? "" : ",") + text;
        patternSetCreate(&set, source.c_str());
    }
    bool matches(const std::string& s) {
        return single ? globMatch(first.c_str(), s.c_str())
                      : patternSetMatch(&set, s.c_str()) == MATCH;
    }
};

struct Glib {
    std::vector<GPatternSpec*> all;
    explicit Glib(const Names& patterns) {
        for (const std::string& text : patterns)
            all.push_back(g_pattern_spec_new(text.c_str()));
    }
    bool matches(const std::string& s) {
        for (GPatternSpec* compiled : all)
            if (g_pattern_spec_match_string(compiled, s.c_str()))
                return true;
        return false;
    }
};

struct Fnmatch {
    const Names& patterns;
    explicit Fnmatch(const Names& its_patterns) : patterns(its_patterns) {}
    bool matches(const std::string& s) {
        for (const std::string& text : patterns)
            if (fnmatch(text.c_str(), s.c_str(), 0) == 0)
                return true;
        return false;
    }
};

template <typename Contender>
static void add_contender(const Case& c, const char* name) {
    auto& contender = *new Contender(c.patterns);  // never freed
    Fnmatch reference(c.patterns);
    for (const std::string& s : c.subjects)
        require(contender.matches(s) == reference.matches(s), "wrong answer");
    add(c.name, name, [&](benchmark::State& state) {
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(c.subjects.size())))
            for (const std::string& s : c.subjects)
                benchmark::DoNotOptimize(contender.matches(s));
    });
}

void add_all() {
    for (const Case& c : CASES) {
        add_contender<Ours>(c, "kxutil");
        add_contender<Glib>(c, "GPatternSpec");
        add_contender<Fnmatch>(c, "fnmatch");
    }
}
