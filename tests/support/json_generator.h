// Random documents that are nearly right.
#ifndef TESTS_SUPPORT_JSON_GENERATOR_H
#define TESTS_SUPPORT_JSON_GENERATOR_H

#include <iterator>
#include <random>
#include <string>

class JsonGenerator {
  public:
    explicit JsonGenerator(unsigned seed) : random_(seed) {}

    size_t below(size_t bound) {
        return random_() % bound;
    }

    std::string document() {
        text_.clear();
        gap();
        below(4) == 0 ? array(0) : object(0);
        for (size_t edits = below(2) == 0 ? 0 : below(3); edits > 0; edits--)
            edit();
        return text_;
    }

  private:
    static constexpr const char* MULTI_BYTE[] = {"\xC3\xA9", "\xE6\x97\xA5",
                                                 "\xED\xA0\xBD\xED\xB8\x80"};

    template <size_t N>
    const char* one_of(const char* const (&choices)[N]) {
        return choices[below(N)];
    }

    size_t length() {
        constexpr size_t AROUND[] = {16, 32, 48, 64, 254, 255, 256, 510, 512, 766};
        return below(12) != 0 ? below(24) : AROUND[below(std::size(AROUND))] + below(5) - 2;
    }

    void gap() {
        static const char* const GAPS[] = {"\n",        "\r\n  ", "\t",     "// note\n", "//\n",
                                           "/* * / */", "/***/",  "/*\n*/", "\x01",      "\x1f"};
        const size_t choice = below(40);
        if (choice < std::size(GAPS))
            text_ += GAPS[choice];
        else if (choice < 14)
            text_.append(below(70), ' ');
        else if (choice < 24)
            text_ += ' ';
    }

    void quoted() {
        static const char* const PIECES[] = {"/",         "//",
                                             "\t",        "\x01",
                                             "\x7f",      "\\b\\f\\n\\r\\t",
                                             "\\u0041",   "\\u00e9",
                                             "\\u20AC",   "\\ud83d\\ude00",
                                             "\\u0000",   "\\x5c",
                                             "\\x0",      "\\u 1f ",
                                             "\\u+1g1",   "\\u-12f",
                                             "\\u0x1f",   "\\x-1",
                                             "\\u\t\n 1", "\\u\x0b\x0c\r1",
                                             "\\u12'\"",  "\\u12\xC3\xA9\xE6\x97\xA5"};
        static const char* const BROKEN[] = {
            "\\u0xg1", "\\x0x", "\\u--12", "\\u\u00A0041", "\\u\u2003123", "\\\\", "\\\"", "\\",
            "\n",      "\r",    "'",       "\"",           "\xC0\x80"};
        const char* const quote = below(2) == 0 ? "'" : "\"";
        text_ += quote;
        for (size_t left = length(); left > 0; left--) {
            const size_t choice = below(80);
            text_ += choice == 0 ? one_of(PIECES) : choice < 5 ? one_of(MULTI_BYTE) : "x";
        }
        if (below(50) == 0)
            text_ += one_of(BROKEN);
        text_ += quote;
    }

    void word() {
        for (size_t left = length() + 1; left > 0; left--)
            text_ += below(8) == 0 ? one_of(MULTI_BYTE) : below(30) == 0 ? "'" : "w";
    }

    void number() {
        static const char* const NUMBERS[] = {"1e",       "0x",        "1.",
                                              ".5",       "1e400",     "-1e-400",
                                              "0x1p3",    "0xfe",      "0x.8",
                                              "0x1.8p-1", "0xe",       "+5",
                                              "-",        "+",         "nan.",
                                              "infe",     "inf.",      "nane",
                                              "-nan.e",   "infinity.", "1e5x",
                                              "08",       "0b1",       "0o7",
                                              "1_000",    "1\xD9\xA3", "\xEF\xBC\x91",
                                              "1e+",      "1e+5",      "1.e",
                                              ".e5",      "e5",        "-.5",
                                              "+.5",      "00",        "-0",
                                              "-0.0",     "0e0",       "00.5",
                                              "0x1F",     "0X1f",      "-0x8000000000000000",
                                              "0777777",  "1.0f",      "1L"};
        static const char* const MARKS[] = {".", "e", "E", "e-", "e+",  "x",
                                            "-", "+", "p", "_",  "inf", "0x"};
        if (below(3) == 0) {
            text_ += one_of(NUMBERS);
            return;
        }
        if (below(3) == 0)
            text_ += below(3) == 0 ? '+' : '-';
        const size_t digits = 1 + below(below(3) == 0 ? 31 : 20);
        const size_t mark = below(2) == 0 ? digits : below(digits);
        for (size_t i = 0; i < digits; i++) {
            if (i == mark)
                text_ += below(2) == 0 ? "." : one_of(MARKS);
            text_ += static_cast<char>('0' + below(10));
        }
        if (below(6) == 0)
            text_ += "e" + std::to_string(static_cast<int>(below(700)) - 350);
    }

    void scalar() {
        static const char* const LITERALS[] = {"true", "False", "NULL", "nul", "truex", "falsE"};
        const size_t choice = below(8);
        if (choice < 3)
            quoted();
        else if (choice < 6)
            number();
        else if (choice == 6)
            word();
        else
            text_ += one_of(LITERALS);
    }

    void value(size_t depth) {
        const size_t choice = below(depth < 6 ? 5 : 3);
        if (choice < 3)
            scalar();
        else if (choice == 3)
            array(depth + 1);
        else
            object(depth + 1);
    }

    void array(size_t depth) {
        static const char* const SEPARATORS[] = {",", " ", ", ", ",,", "\n"};
        text_ += '[';
        for (size_t left = below(6); left > 0; left--) {
            gap();
            value(depth);
            gap();
            text_ += one_of(SEPARATORS);
        }
        text_ += ']';
    }

    void object(size_t depth) {
        text_ += '{';
        for (size_t left = below(6); left > 0; left--) {
            gap();
            below(3) == 0 ? scalar() : word();
            gap();
            text_ += below(3) == 0 ? '=' : ':';
            gap();
            value(depth);
            gap();
            text_ += below(3) == 0 ? ';' : ',';
        }
        gap();
        text_ += '}';
    }

    void edit() {
        static const char* const INSERTED[] = {"{",  "}",  "[",    "]",  ":", "=",       ",",
                                               ";",  "'",  "\"",   "\\", "/", "*",       "#",
                                               "\n", "\r", "\x01", "0",  "e", "\xC3\xA9"};
        const size_t place = below(text_.size() + 1);
        const size_t choice = below(20);
        if (choice < 8)
            text_.insert(place, one_of(INSERTED));
        else if (choice < 13)
            text_.erase(place, 1 + below(3));
        else if (choice < 15)
            text_.insert(place, text_.substr(below(text_.size() + 1), below(40)));
        else if (choice < 17)
            text_.resize(place);
        else if (place < text_.size() && text_[place] > 0)
            text_[place] ^= static_cast<char>(1 << below(6));
        else
            text_.insert(place, below(2) == 0 ? "\xC0\x80" : "\xC3");
    }

    std::mt19937 random_;
    std::string text_;
};

#endif
