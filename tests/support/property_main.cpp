// Runs a fuzz target as a test: on its corpus, and on random mixtures of the corpus and the words
// of its dictionary. Each run tries the same inputs. An input that ends the program is printed as
// hexadecimal digits.
//
//     PROGRAM CORPUS-FOLDER DICTIONARY

#include "support/temp_folder.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

constexpr size_t INPUTS = 30000;

static std::mt19937 chance(20260412);
static std::string input;

static void print_input(int signal) {
    for (const unsigned char c : input)
        std::fprintf(stderr, "%02x", unsigned{c});
    std::signal(signal, SIG_DFL);  // which the same instruction raises again
}

// Texts between double quotes, one a line, in which "\xHH" is a byte and "\" quotes others.
static std::vector<std::string> words_of(std::ifstream dictionary) {
    std::vector<std::string> words;
    for (std::string line, word; std::getline(dictionary, line); word.clear()) {
        for (const char* p = line.c_str() + 1; line[0] == '"' && p[1] != '\0'; p++) {
            unsigned byte = p[*p == '\\'];
            p += std::sscanf(p, "\\x%2x", &byte) == 1 ? 3 : *p == '\\';
            word += static_cast<char>(byte);
        }
        if (!word.empty())
            words.push_back(word);
    }
    return words;
}

static void change(const std::string& word) {
    const size_t at = chance() % (input.size() + 1), count = chance() % 16;
    switch (chance() % 5) {
        case 0: input.erase(at, count); break;
        case 1: input.insert(at, input.substr(chance() % (at + 1), count)); break;
        case 2: input.insert(at, count * count, word.back()); break;
        case 3: input.replace(at, count % 2, 1, static_cast<char>(chance())); break;
        default: input.insert(at, word);
    }
}

int main(int, char** argv) {
    for (int signal : {SIGILL, SIGABRT})
        std::signal(signal, print_input);
    std::vector<std::string> corpus;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
        corpus.push_back(read_file(entry.path()));
    std::ranges::sort(corpus);  // folders have no order
    const std::vector<std::string> words = words_of(std::ifstream(argv[2]));
    for (size_t i = 0; i < INPUTS; i++) {
        input = corpus[i % corpus.size()];
        for (size_t changes = i < corpus.size() ? 0 : 1 + chance() % 8; changes > 0; changes--)
            change(words[chance() % words.size()]);
        const std::vector<uint8_t> exact(input.begin(), input.end());  // a block of its own size
        LLVMFuzzerTestOneInput(exact.data(), exact.size());
    }
}
