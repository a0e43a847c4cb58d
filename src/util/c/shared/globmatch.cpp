// Glob matching without recursion, which backtracks no further than to the latest star.
//
// The literal after a star may stand at any later place. The leftmost place where it matches is the
// best one, because it leaves the most text for the rest of the pattern. So no earlier star is ever
// tried again.
//
// Most subjects are one string, which is searched for the literals between stars, 16 places at a
// time. A subject in pieces is walked character by character, and after a mismatch again from the
// latest star on.

#include "util/export/globmatch.h"

#include "osal/export/osal_msmalloc.h"
#include "util/c/shared/vector/block.h"

#include <stdarg.h>
#include <string.h>

static_assert(sizeof(pattern) == 16 && offsetof(pattern, type) == 8 && sizeof(MatchType) == 4);
static_assert(sizeof(patternset) == 16 && offsetof(patternset, num_patterns) == 8);

// One string.
struct Text {
    const char* begin;
    const char* end;  // null until it is needed
};

static bool same(const char* a, const char* b, size_t count) {
    for (size_t i = 0; i < count; i++)
        if (a[i] != b[i])
            return false;
    return true;
}

// The text between two stars.
struct Literal {
    const char* begin;
    size_t length;  // not 0
};

// One bit for each of the 16 places from p on: set where the literal's first and last characters
// match.
static unsigned candidates(const char* p, Literal literal) {
    const size_t last = literal.length - 1;
    return bits_of(equal_to(load_block(p), literal.begin[0]) &
                   equal_to(load_block(p + last), literal.begin[last]));
}

// The first place from `from` on where the literal stands, or null. `text` may begin before `from`:
// the last block then starts before `from`, so that it does not pass the end.
static const char* find(const Text& text, const char* from, Literal literal) {
    if (static_cast<size_t>(text.end - from) < literal.length)
        return nullptr;
    const char* const last = text.end - literal.length;
    if (last - text.begin < BLOCK_BYTES - 1) {
        for (; from <= last; from++)
            if (same(from, literal.begin, literal.length))
                return from;
        return nullptr;
    }
    while (from <= last) {
        const char* const block = last - from < BLOCK_BYTES - 1 ? last - (BLOCK_BYTES - 1) : from;
        unsigned places = candidates(block, literal) & (~0U << (from - block));
        for (; places != 0; places &= places - 1) {
            const char* const place = block + __builtin_ctz(places);
            if (same(place, literal.begin, literal.length))
                return place;
        }
        from = block + BLOCK_BYTES;
    }
    return nullptr;
}

// True only for characters that are neither a star nor the terminator. Letters, digits and dots are
// above the star; the few characters below it only take longer.
static bool is_surely_literal(char c) {
    return static_cast<unsigned char>(c) > '*';
}

// For how many places in a row `goes_on` holds; unrolled four times.
template <typename Condition>
static size_t run_length(Condition goes_on) {
    for (size_t i = 0;; i += 4) {
        if (!goes_on(i))
            return i;
        if (!goes_on(i + 1))
            return i + 1;
        if (!goes_on(i + 2))
            return i + 2;
        if (!goes_on(i + 3))
            return i + 3;
    }
}

// The literal that starts at p.
static Literal literal_at(const char* p) {
    const char* const begin = p;
    for (;; p++) {
        p += run_length([=](size_t i) { return is_surely_literal(p[i]); });
        if (*p == '*' || *p == '\0')
            return {begin, static_cast<size_t>(p - begin)};
    }
}

// Matches the pattern after a star against the text from `from` on. Out of line, because its caller
// usually decides by the pattern's literal start alone and then needs no stack frame.
[[gnu::noinline]] static bool match_from_star(const char* p, Text text, const char* from) {
    for (;;) {
        while (*p == '*')
            p++;
        if (*p == '\0')
            return true;
        const Literal literal = literal_at(p);
        p += literal.length;
        if (text.end == nullptr)
            text.end = from + strlen(from);
        if (*p == '\0')
            return static_cast<size_t>(text.end - from) >= literal.length &&
                   same(text.end - literal.length, literal.begin, literal.length);
        from = find(text, from, literal);
        if (from == nullptr)
            return false;
        from += literal.length;
    }
}

// How many characters are equal at the start of pattern and text, before the first star.
static inline size_t literal_start(const char* p, const char* s) {
    for (size_t start = 0;; start++) {
        start += run_length([p = p + start, s = s + start](size_t i) {
            return p[i] == s[i] && is_surely_literal(p[i]);
        });
        if (p[start] == '*' || p[start] == '\0' || p[start] != s[start])
            return start;
    }
}

static bool match_text(const char* p, Text text) {
    const size_t start = literal_start(p, text.begin);
    if (p[start] != '*')
        return p[start] == text.begin[start];
    return p[start + 1] == '\0' || match_from_star(p + start + 1, text, text.begin + start);
}

// A subject in pieces.
struct Pieces {
    const char* const* strings;
    const char* separators;
    unsigned int count;  // at least 2
};

// A place in such a subject: before a character of a string, or at a string's end.
struct Place {
    const char* s;
    unsigned int string;
};

static bool is_last(const Pieces& pieces, const Place& place) {
    return place.string == pieces.count - 1;
}

// Takes the subject's next character, passing boundaries without a separator; false at its end.
static bool next_character(const Pieces& pieces, Place* place, char* c) {
    while (*place->s == '\0') {
        if (is_last(pieces, *place))
            return false;
        *c = pieces.separators[place->string];
        place->string++;
        place->s = pieces.strings[place->string];
        if (*c != '\0')
            return true;
    }
    *c = *place->s++;
    return true;
}

enum class Result { MATCHED, DIFFERENT, SUBJECT_ENDED };

// Matches up to the next star or the end of the pattern, which must also be the end of the subject.
// The place moves to the next string only to take a character. So a pattern that ends at the end of
// a string does not match the strings after it, even if all of them are empty.
static Result match_literal(const char** p, const Pieces& pieces, Place* place) {
    for (char c; **p != '*' && **p != '\0'; (*p)++) {
        if (!next_character(pieces, place, &c))
            return Result::SUBJECT_ENDED;
        if (c != **p)
            return Result::DIFFERENT;
    }
    const bool at_end = is_last(pieces, *place) && *place->s == '\0';
    return **p == '*' || at_end ? Result::MATCHED : Result::DIFFERENT;
}

static bool globmatch(const char* p, const Pieces& pieces) {
    Place place = {pieces.strings[0], 0};
    const char* after_star = nullptr;
    Place star_end = place;
    for (char skipped;;) {
        const Result result = match_literal(&p, pieces, &place);
        if (result == Result::MATCHED) {
            while (*p == '*')
                p++;
            if (*p == '\0')
                return true;
            after_star = p;
            star_end = place;
            continue;
        }
        // A later place would leave even less of the subject.
        if (result == Result::SUBJECT_ENDED || after_star == nullptr ||
            !next_character(pieces, &star_end, &skipped))
            return false;
        p = after_star;
        place = star_end;
    }
}

// Collects the pairs of a call on the stack and passes them on. The copies are smaller than the
// arguments, so the stack suffices.
template <typename Use>
static auto match_list(unsigned int n, va_list pairs, Use use) {
    const char** strs = static_cast<const char**>(__builtin_alloca(n * sizeof(const char*)));
    char* separators = static_cast<char*>(__builtin_alloca(n));
    for (unsigned int i = 0; i < n; i++) {
        strs[i] = va_arg(pairs, const char*);
        separators[i] = static_cast<char>(va_arg(pairs, int));
    }
    return use(strs, separators);
}

bool globMatch(const char* glob, const char* s) {
    return match_text(glob, {s, nullptr});
}

bool globMatchArray(const char* glob, const char** strs, unsigned int n_strs,
                    const char* separators) {
    if (n_strs < 2)
        return globMatch(glob, n_strs == 1 ? strs[0] : "");
    return globmatch(glob, {strs, separators, n_strs});
}

bool globMatchList(const char* glob, unsigned int n, ...) {
    va_list pairs;
    va_start(pairs, n);
    const bool result = match_list(n, pairs, [=](const char** strs, const char* separators) {
        return globMatchArray(glob, strs, n, separators);
    });
    va_end(pairs);
    return result;
}

// Measures the first pattern of a list and moves on to the next; false when there is no next one.
static bool separate(const char** list, size_t* length) {
    static const char split[] = " ,";
    *length = strcspn(*list, split);
    const char* const gap = *list + *length;
    *list = gap + strspn(gap, split);
    return *gap != '\0';
}

static pattern make_pattern(char* text) {
    switch (*text) {
        case '+': return {text + 1, FORCE};
        case '-': return {text + 1, REJECT};
        default: return {text, MATCH};
    }
}

int patternSetCreate(patternset* dst, const char* str) {
    *dst = {nullptr, 0};
    if (str == nullptr || *str == '\0')
        return 0;
    size_t length;
    size_t count = 1;
    for (const char* rest = str; separate(&rest, &length);)
        count++;
    if (count > UINT32_MAX)
        return -1;
    void* block = gsMalloc(count * sizeof(pattern) + strlen(str) + 1);
    if (block == nullptr)
        return -1;
    *dst = {static_cast<pattern*>(block), static_cast<uint32_t>(count)};
    char* text = reinterpret_cast<char*>(dst->patterns + count);
    for (size_t i = 0; i < count; i++) {
        const char* const piece = str;
        separate(&str, &length);
        memcpy(text, piece, length);
        text[length] = '\0';
        dst->patterns[i] = make_pattern(text);
        text += length + 1;
    }
    return 0;
}

template <typename Matches>
static MatchType first_match(const patternset* ps, Matches matches) {
    for (uint32_t i = 0; i < ps->num_patterns; i++)
        if (matches(ps->patterns[i].str))
            return ps->patterns[i].type;
    return NOMATCH;
}

MatchType patternSetMatch(patternset* ps, const char* str) {
    const Text text = {str, str + strlen(str)};
    return first_match(ps, [=](const char* glob) { return match_text(glob, text); });
}

MatchType patternSetMatchArray(patternset* ps, const char** strs, unsigned int n_strs,
                               const char* separators) {
    if (n_strs < 2)
        return patternSetMatch(ps, n_strs == 1 ? strs[0] : "");
    const Pieces pieces = {strs, separators, n_strs};
    return first_match(ps, [&](const char* glob) { return globmatch(glob, pieces); });
}

MatchType patternSetMatchList(patternset* ps, unsigned int n, ...) {
    va_list pairs;
    va_start(pairs, n);
    const MatchType result = match_list(n, pairs, [=](const char** strs, const char* separators) {
        return patternSetMatchArray(ps, strs, n, separators);
    });
    va_end(pairs);
    return result;
}

void patternSetFree(patternset* p) {
    if (p->patterns == nullptr)
        return;
    gsFree(p->patterns);
    *p = {nullptr, 0};
}
