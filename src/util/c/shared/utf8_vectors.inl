// Validation of the virtual machine's UTF-8 by vectors. The idea is in utf8.cpp.

struct Check {
    Bytes errors;             // a byte's highest bit is set after any error at its place
    Bytes smallest, largest;  // of all bytes
};

// Places of the text, one for each byte of a vector: the bytes there, and those one and two before.
struct Places {
    Bytes bytes, before, two_before;
};

VECTOR_INLINE Places first_places(const unsigned char* p) {
    const Bytes bytes = load(p);
    return {bytes, moved_up<1>(bytes), moved_up<2>(bytes)};
}

VECTOR_INLINE Places places_at(const unsigned char* p) {
    return {load(p), load(p - 1), load(p - 2)};
}

// A continuation byte must stand one place after a lead byte and two places after the lead byte of
// three bytes, and nowhere else. The highest bit of each operand tells one of these three facts.
VECTOR_INLINE void check_form(Check* check, const Places& places) {
    const Bytes after_lead = reduced(places.before, 0xC0 - 0x80);
    const Bytes after_three = reduced(places.two_before, 0xE0 - 0x80);
    const Bytes continuation = places.bytes & ~(places.bytes + places.bytes);
    check->errors |= (after_lead | after_three) ^ continuation;
    check->smallest = smaller(check->smallest, places.bytes);
    check->largest = larger(check->largest, places.bytes);
}

// 0 where the byte before is C0, C1 or E0, which may begin an overlong form, or E1, which this
// quick test does not tell from E0.
VECTOR_INLINE Bytes overlong_hints(const Places& places) {
    return (places.before & 0xDE) ^ 0xC0;
}

// C0 must be followed by 80, E0 by A0 or above; C1 is always wrong.
VECTOR_INLINE void check_overlong(Check* check, const Places& places) {
    const Bytes bytes = places.bytes, before = places.before;
    const auto overlong = ((before == 0xC0) & (bytes != 0x80)) | (before == 0xC1) |
                          ((before == 0xE0) & (bytes < 0xA0));
    check->errors |= reinterpret_cast<Bytes>(overlong);
}

// True when four vectors are ASCII; zeros are then the only possible errors in them.
VECTOR_INLINE bool are_ascii(const unsigned char* p, Bytes* smallest) {
    const Bytes a = load(p), b = load(p + WIDTH);
    const Bytes c = load(p + 2 * WIDTH), d = load(p + 3 * WIDTH);
    if (any_high((a | b) | (c | d)))
        return false;
    *smallest = smaller(*smallest, smaller(smaller(a, b), smaller(c, d)));
    return true;
}

template <bool relax>
VECTOR_INLINE void check_four(Check* check, const unsigned char* p) {
    const Places a = places_at(p), b = places_at(p + WIDTH);
    const Places c = places_at(p + 2 * WIDTH), d = places_at(p + 3 * WIDTH);
    check_form(check, a);
    check_form(check, b);
    check_form(check, c);
    check_form(check, d);
    if (!relax && any_zero(smaller(smaller(overlong_hints(a), overlong_hints(b)),
                                   smaller(overlong_hints(c), overlong_hints(d))))) {
        check_overlong(check, a);
        check_overlong(check, b);
        check_overlong(check, c);
        check_overlong(check, d);
    }
}

VECTOR_INLINE bool is_valid(const Check& check) {
    return !any_high(check.errors | reduced(check.largest, 0xF0 - 0x80)) &&
           !any_zero(check.smallest);
}

constexpr ptrdiff_t FOUR = 4 * WIDTH;

template <bool relax>
VECTOR_CODE static bool validate_all(const unsigned char* p, const unsigned char* end) {
    // Vectors at the end may overlap those before, which does no harm.
    const auto at = [end](const unsigned char* q) { return std::min(q, end - WIDTH); };
    if (const Bytes a = load(p); end - p <= FOUR && !any_high(a)) {
        const Bytes b = load(at(p + WIDTH)), c = load(at(p + 2 * WIDTH)), d = load(end - WIDTH);
        if (!any_high(b | c | d))
            return !any_zero(smaller(smaller(a, b), smaller(c, d)));
    }
    if (end[-1] >= 0xC0 || end[-2] >= 0xE0)  // the text ends within a character
        return false;
    const Places first = first_places(p);
    Check check = {Bytes{}, first.bytes, first.bytes};
    check_form(&check, first);
    p += WIDTH;
    while (end - p >= FOUR) {
        // Long stretches of most texts are ASCII; a loop for them alone keeps its state in
        // registers. It may not start where the two bytes before require continuations.
        if ((p[-1] | p[-2]) < 0x80)
            while (end - p >= FOUR && are_ascii(p, &check.smallest))
                p += FOUR;
        // After other characters, more of them are likely to follow.
        for (int i = 0; i < 2 && end - p >= FOUR; i++, p += FOUR)
            check_four<relax>(&check, p);
    }

    // The rest.
    Bytes hints = overlong_hints(first);
    for (const unsigned char* q = p; q < end; q += WIDTH) {
        const Places places = places_at(at(q));
        check_form(&check, places);
        hints = smaller(hints, overlong_hints(places));
    }
    if (!relax && any_zero(hints)) {
        check_overlong(&check, first);
        for (const unsigned char* q = p; q < end; q += WIDTH)
            check_overlong(&check, places_at(at(q)));
    }
    return is_valid(check);
}

// Texts of a vector or more, but not of exactly one byte more: the last vector would begin at the
// second byte, which does not have two bytes before it.
VECTOR_CODE static bool validate(const unsigned char* p, size_t length, bool relax) {
    return relax ? validate_all<true>(p, p + length) : validate_all<false>(p, p + length);
}
