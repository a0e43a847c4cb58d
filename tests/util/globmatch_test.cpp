#include "util/export/globmatch.h"
#include "support/plain_glob.h"
#include "support/platform.h"

#include <gtest/gtest.h>
#include <random>

using std::string;
using std::vector;

static bool match_pieces(const string& glob, const PlainSubject& subject) {
    vector<const char*> strs;
    for (const string& s : subject.strings)
        strs.push_back(s.c_str());
    const char* separators = strs.size() > 1 ? subject.separators.data() : nullptr;
    return globMatchArray(glob.c_str(), strs.data(), strs.size(), separators);
}

// All texts over the alphabet of at most the given length.
static vector<string> all_texts(const string& alphabet, size_t longest) {
    vector<string> texts = {""};
    for (size_t i = 0; i < texts.size(); i++)
        if (texts[i].size() < longest)
            for (char c : alphabet)
                texts.push_back(texts[i] + c);
    return texts;
}

static vector<PlainSubject> all_subjects() {
    vector<PlainSubject> subjects;
    for (const string& whole : all_texts("ab", 6))
        subjects.push_back({{whole}, ""});
    const vector<string> pieces = all_texts("ab", 2);
    for (char first : {'\0', 'a', '*'})
        for (const string& x : pieces)
            for (const string& y : pieces) {
                subjects.push_back({{x, y}, {first}});
                for (char second : {'\0', 'b'})
                    for (const string& z : pieces)
                        subjects.push_back({{x, y, z}, {first, second}});
            }
    return subjects;
}

TEST(Glob, MatchesAsDescribedForAllShortPatternsAndSubjects) {
    const vector<string> patterns = all_texts("ab*", 5);
    for (const PlainSubject& subject : all_subjects())
        for (const string& glob : patterns) {
            const bool expected = plain_glob(glob.c_str(), subject);
            ASSERT_EQ(match_pieces(glob, subject), expected)
                << glob << " on " << testing::PrintToString(subject.strings)
                << testing::PrintToString(subject.separators);
        }
}

// Parts of the text are replaced by stars, so every pattern matches until a character is changed.
TEST(Glob, FindsLiteralsInLongTexts) {
    std::mt19937 random(20260329);
    for (int round = 0; round < 30000; round++) {
        string s(random() % 80, 'a');
        for (char& c : s)
            c = "aab$"[random() % 4];
        string glob = s;
        for (unsigned stars = random() % 4; stars > 0; stars--)
            glob.replace(random() % (glob.size() + 1), random() % 40, "*");
        // In a block of its own size, for the address sanitizer to watch both ends.
        const vector<char> exact(s.c_str(), s.c_str() + s.size() + 1);
        ASSERT_TRUE(globMatch(glob.c_str(), exact.data())) << glob << " on " << s;
        if (!glob.empty())
            glob[random() % glob.size()] = 'a';
        ASSERT_EQ(globMatch(glob.c_str(), exact.data()), plain_glob(glob.c_str(), {{s}, ""}))
            << glob << " on " << s;
    }
}

const std::pair<const char*, bool> CLASS_NAME_CASES[] = {
    {"java.lang.*", true}, {"java.*", true},     {"*String", true},
    {"java.lang", false},  {"javalang*", false}, {"java.lang.String", true},
    {"*lang.S*", true},    {"JAVA*", false},     {"java?lang.String", false},
};

TEST(Glob, MatchesAClassNameInEveryForm) {
    for (const auto& [glob, matches] : CLASS_NAME_CASES) {
        EXPECT_EQ(globMatch(glob, "java.lang.String"), matches) << glob;
        EXPECT_EQ(match_pieces(glob, {{"java", "lang", "String"}, ".."}), matches) << glob;
        EXPECT_EQ(globMatchList(glob, 3, "java", '.', "lang", '.', "String", '*'), matches) << glob;
    }
    EXPECT_TRUE(globMatchList("abcd", 2, "ab", 0, "cd", 0));
    EXPECT_TRUE(globMatchList("abcd", 1, "abcd", 'x'));
    EXPECT_TRUE(globMatchList("", 0) && globMatchArray("*", nullptr, 0, nullptr));
}

// Trying the stars in all combinations would take longer than anybody waits.
TEST(Glob, HostilePatternsTakeNoLongerThanTheirLengthTimesTheSubjects) {
    const string a(4000, 'a');
    string stars;
    for (int i = 0; i < 2000; i++)
        stars += "a*";
    for (const string& glob : {stars + "b", "*" + a.substr(2000) + "b*", stars + "b*c"}) {
        EXPECT_FALSE(globMatch(glob.c_str(), a.c_str()));
        EXPECT_FALSE(match_pieces(glob, {{a, a}, "a"}));
        EXPECT_FALSE(match_pieces(glob, {vector<string>(4000, "a"), string(4000, '\0')}));
    }
    vector<string> late(400000, "");
    late.push_back("c");
    EXPECT_FALSE(match_pieces("*b", {late, string(400000, '\0')}));
}

const char* const SET_SOURCES[] = {
    "foo*,-foobar",
    "-foobar foo*",
    "+x",
    "a,,b",
    " a",
    "a,",
    ",",
    "  , ,, ",
    "+-x -+y",
    "+",
    "-,+",
    "x",
    "*",
    "",
    "a b +a*b ,-* +never",
};

TEST(PatternSet, SplitsItsSourceAndAnswersByTheFirstMatch) {
    platform = Platform{};
    for (const char* source : SET_SOURCES) {
        SCOPED_TRACE(source);
        const auto expected = plain_patterns(source);
        string copy = source;
        patternset set = {nullptr, 5};
        ASSERT_EQ(patternSetCreate(&set, copy.c_str()), 0);
        copy.assign(copy.size(), '#');  // not needed any more
        EXPECT_EQ(platform.live_blocks, expected.empty() ? 0 : 1);
        ASSERT_EQ(set.num_patterns, expected.size());
        for (size_t i = 0; i < expected.size(); i++) {
            EXPECT_EQ(set.patterns[i].type, expected[i].first);
            EXPECT_EQ(set.patterns[i].str, expected[i].second);
        }
        for (const char* s : {"", "foobar", "fooz", "x", "y", "-x", "+y", "a", "b", "azb"}) {
            MatchType first = NOMATCH;
            for (size_t i = expected.size(); i-- > 0;)
                if (plain_glob(expected[i].second.c_str(), {{s}, ""}))
                    first = expected[i].first;
            const char* pieces[] = {s, s};
            EXPECT_EQ(patternSetMatch(&set, s), first) << s;
            EXPECT_EQ(patternSetMatchArray(&set, pieces, 1, nullptr), first) << s;
            EXPECT_EQ(patternSetMatchArray(&set, pieces, 2, "/"),
                      patternSetMatch(&set, (s + string("/") + s).c_str()));
            EXPECT_EQ(patternSetMatchList(&set, 1, s, '/'), first) << s;
        }
        patternSetFree(&set);
        patternSetFree(&set);
        EXPECT_EQ(patternSetMatch(&set, ""), NOMATCH);
        EXPECT_EQ(platform.live_blocks, 0);
    }
}

TEST(PatternSet, IsEmptyWithoutASource) {
    patternset set = {nullptr, 5};
    EXPECT_EQ(patternSetCreate(&set, nullptr), 0);
    EXPECT_EQ(set.num_patterns, 0U);
    EXPECT_EQ(patternSetMatchArray(&set, nullptr, 0, nullptr), NOMATCH);
}
