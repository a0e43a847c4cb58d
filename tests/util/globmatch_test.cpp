#include "util/export/globmatch.h"
#include "support/glob_judge.h"
#include "support/platform.h"

#include <gtest/gtest.h>
#include <random>

using std::string;
using std::vector;

// All texts over the alphabet of at most the given length.
static vector<string> all_texts(const string& alphabet, size_t longest) {
    vector<string> texts = {""};
    for (size_t i = 0; i < texts.size(); i++)
        if (texts[i].size() < longest)
            for (char c : alphabet)
                texts.push_back(texts[i] + c);
    return texts;
}

// A dot ends a piece without a separator, a slash one with the separator 'a', a star one with '*'.
static Subject subject_of(const string& text) {
    Subject subject = {{""}, ""};
    for (char c : text)
        if (c == 'a' || c == 'b') {
            subject.strings.back() += c;
        } else {
            subject.strings.emplace_back();
            subject.separators += c == '.' ? '\0' : c == '/' ? 'a' : c;
        }
    return subject;
}

TEST(Glob, MatchesAsDescribedForAllShortPatternsAndSubjects) {
    const vector<string> patterns = all_texts("ab*", 5);
    for (const string& text : all_texts("ab./*", 5)) {
        const Subject subject = subject_of(text);
        for (const string& glob : patterns)
            ASSERT_EQ(glob_matches(glob, subject), should_match(glob, subject))
                << glob << " on " << text;
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
        // In a block of exactly its size, so that the address sanitizer watches both ends.
        const vector<char> exact(s.c_str(), s.c_str() + s.size() + 1);
        ASSERT_TRUE(globMatch(glob.c_str(), exact.data())) << glob << " on " << s;
        if (!glob.empty())
            glob[random() % glob.size()] = 'a';
        ASSERT_EQ(globMatch(glob.c_str(), exact.data()), should_match(glob, {{s}, ""}))
            << glob << " on " << s;
    }
}

TEST(Glob, MatchesAClassNameInEveryForm) {
    const std::pair<const char*, bool> CASES[] = {
        {"java.lang.*", true}, {"*lang.S*g", true}, {"javalang*", false}, {"java?lang*", false}};
    for (const auto& [glob, matches] : CASES) {
        EXPECT_EQ(globMatch(glob, "java.lang.String"), matches) << glob;
        EXPECT_EQ(glob_matches(glob, {{"java", "lang", "String"}, ".."}), matches) << glob;
        EXPECT_EQ(globMatchList(glob, 3, "java", '.', "lang", '.', "String", '*'), matches) << glob;
    }
    EXPECT_TRUE(globMatchList("abcd", 2, "ab", 0, "cd", 0));
    EXPECT_TRUE(globMatchList("abcd", 1, "abcd", 'x'));
    EXPECT_TRUE(globMatchList("", 0) && globMatchArray("*", nullptr, 0, nullptr));
}

// Trying all combinations of the stars would take far too long.
TEST(Glob, HostilePatternsTakeNoLongerThanTheirLengthTimesTheSubjects) {
    const string a(4000, 'a');
    string stars;
    for (int i = 0; i < 2000; i++)
        stars += "a*";
    for (const string& glob : {stars + "b", "*" + a.substr(2000) + "b*", stars + "b*c"}) {
        EXPECT_FALSE(globMatch(glob.c_str(), a.c_str()));
        EXPECT_FALSE(glob_matches(glob, {{a, a}, "a"}));
        EXPECT_FALSE(glob_matches(glob, {vector<string>(4000, "a"), string(4000, '\0')}));
    }
    vector<string> late(400000, "");
    late.push_back("c");
    EXPECT_FALSE(glob_matches("*b", {late, string(400000, '\0')}));
}

// The patterns, each with a letter in front for its type.
static string text_of(const patternset& set) {
    string text;
    for (unsigned i = 0; i < set.num_patterns; i++)
        text += string(1, "r?mf"[set.patterns[i].type + 1]) + set.patterns[i].str + ' ';
    return text;
}

// Sources of sets, and what they are split into.
const std::pair<const char*, const char*> SETS[] = {
    {"foo*,-foobar", "mfoo* rfoobar "},
    {" a", "m ma "},
    {"a,", "ma m "},
    {"  , ,, ", "m m "},
    {"+-x -+y -,+", "f-x r+y r f "},
    {"a b +a*b ,-* +never", "ma mb fa*b r* fnever "},
    {"", ""}};

TEST(PatternSet, SplitsItsSourceAndAnswersByTheFirstMatch) {
    platform = Platform{};
    for (const auto& [source, expected] : SETS) {
        SCOPED_TRACE(source);
        string copy = source;
        patternset set = {nullptr, 5};
        ASSERT_EQ(patternSetCreate(&set, copy.c_str()), 0);
        copy.assign(copy.size(), '#');  // not needed any more
        EXPECT_EQ(platform.live_blocks, *source == '\0' ? 0 : 1);
        EXPECT_EQ(text_of(set), expected);
        for (const char* s : {"", "foobar", "fooz", "x", "y", "-x", "+y", "a", "b", "azb"}) {
            MatchType first = NOMATCH;
            for (unsigned i = set.num_patterns; i-- > 0;)
                if (should_match(set.patterns[i].str, {{s}, ""}))
                    first = set.patterns[i].type;
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
    patternset set = {nullptr, 5};
    EXPECT_EQ(patternSetCreate(&set, nullptr), 0);
    EXPECT_EQ(set.num_patterns, 0U);
    EXPECT_EQ(patternSetMatchArray(&set, nullptr, 0, nullptr), NOMATCH);
}
