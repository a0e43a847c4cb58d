// Numbers of up to 32 characters, by vectors: digits with an optional point. The steps do not
// depend on the length, because branches on it would be mispredicted.

#include "util/c/shared/vector/digits.inl"

constexpr int MAX_CHARACTERS = 32;
constexpr u8 SIXTEEN_DIGITS = 10'000'000'000'000'000;
constexpr u8 MAX_UPPER = 999;  // above the lower sixteen digits; DECIMAL_DIGITS together

VECTOR_CODE static const char* send_number_fast(json* js, const char* token, const char* end) {
    const int count = static_cast<int>(end - token) - (*token == '-');
    // A second load, from one character earlier, takes the point out.
    if (count < 1 || count > MAX_CHARACTERS || end - js->start <= MAX_CHARACTERS)
        return send_number(js, token, end);
    Digits digits = with_last(count, digits_at(end - MAX_CHARACTERS), Digits{});
    const unsigned others = not_digits(digits);
    if (others == 0) {
        const Halves halves = halves_of(digits, count);
        return send_integer(js, token, end, halves.upper * SIXTEEN_DIGITS + halves.lower);
    }
    const int after = std::countl_zero(others);  // digits after the point
    if ((others & (others - 1)) != 0 || after == 0 || end[-after - 1] != '.')
        return send_number(js, token, end);
    const Digits moved = digits_at(end - MAX_CHARACTERS - 1);
    digits = with_last(after, digits, with_last(count - 1, moved, Digits{}));
    const Halves halves = halves_of(digits, count - 1);
    const u8 mantissa = halves.upper * SIXTEEN_DIGITS + halves.lower;
    double value;
    if (halves.upper > MAX_UPPER || js->decimal_point != json::POINT ||
        !decimal_to_double(*token == '-', mantissa, -after, &value))
        return send_number(js, token, end);
    return send_float(js, token, end, value);
}
