// Files and memory: jsonParseFile(), and what a parse asks the platform for.

#include "support/json_outcome.h"
#include "support/platform.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <vector>

using std::string;
using namespace std::string_literals;

static void abort_at_text(JSONType type, const JSONVal* value, void*) {
    if (type == JSON_STRING)
        jsonAbort("text of %zu", value->str.length);
}

// With an error buffer of each size; the text is cut to it.
static void expect_read(const string& path, const string& error, const Platform& settings = {}) {
    for (size_t errlen : {1, 5, 20, 30, 5000}) {
        platform = settings;
        string text(errlen + 1, '#');
        const int result = jsonParseFile(path.c_str(), abort_at_text, nullptr, &text[0], errlen);
        EXPECT_EQ(result, error.empty() ? 0 : -1) << error;
        EXPECT_EQ(text.c_str(), result == 0 ? string(errlen + 1, '#') : cut_error(error, errlen));
        EXPECT_EQ(text[errlen], '#');
        EXPECT_EQ(platform.live_blocks, 0);
    }
    EXPECT_EQ(jsonParseFile("", abort_at_text, nullptr, nullptr, 9), -1);
}

const std::pair<string, string> FILES[] = {
    {"{a: [1, 2]}", ""},
    {"[1\n]\0\xFF"s, ""},  // what follows a zero byte is not read
    {"[1\n\0]"s, "Missing value, line 2, \"\""},
    {"", "Object must start with '{', line 1, \"\""},
    {"[1]\xFF", "Illegal UTF8 text stream"},
    {"[['\n", "Unterminated string, line 2, \"'\""},
    {"[\n{a: " + string(300'000, 'x'), "text of 300000, line 2, \"" + string(300'000, 'x')},
};

TEST(JsonFile, IsReadWholeOrNamedInTheError) {
    const TempFolder folder;
    const string path = folder.file("100%s.json");
    expect_read(path, "Could not open " + path);
    EXPECT_FALSE(std::filesystem::exists(path));
    expect_read(folder.file(""), "Could not read " + folder.file(""));
    for (const auto& [contents, error] : FILES) {
        std::ofstream(path, std::ios::binary) << contents;
        expect_read(path, error);
    }
    const std::pair<size_t, string> SIZES[] = {{2147483648, "Too large file: " + path},
                                               {2147483647, "Could not allocate 2147483647B bytes"},
                                               {3 << 20, "Could not allocate 3MB bytes"},
                                               {0, "Could not allocate 0B bytes"}};
    for (const auto& [size, error] : SIZES) {
        std::filesystem::resize_file(path, size);
        expect_read(path, error, {.failing_allocation = 1, .keeps_sizes = true});
        EXPECT_EQ(platform.allocations, std::vector<size_t>(size < 2147483648 ? 1 : 0, size + 1));
    }
}

static void expect_allocations(const string& document, const std::vector<size_t>& sizes,
                               const string& first_failure) {
    for (size_t failing = 0; failing <= sizes.size(); failing++) {
        platform = {.failing_allocation = failing, .keeps_sizes = true};
        const JsonOutcome outcome = json_outcome(document.c_str());
        EXPECT_EQ(platform.live_blocks, 0);
        EXPECT_TRUE(failing > 0 || platform.allocations == sizes) << document;
        const string error = "Out of memory" + (failing == 1 ? ", line " + first_failure : "");
        EXPECT_EQ(outcome.error.substr(0, error.size()), failing == 0 ? "" : error);
    }
}

TEST(JsonMemory, IsAskedForByLongTokensAndDeepNestingOnly) {
    expect_allocations(repeated(512, "[{k: ") + "1" + repeated(512, "}]"), {}, "");
    expect_allocations(repeated(1025, "\n[") + repeated(1025, "\n]"), {2048}, "1026, \"[\"");
    expect_allocations(repeated(2049, "\n[") + repeated(2049, "\n]"), {2048, 4096}, "1026, \"[\"");
    const std::pair<size_t, std::vector<size_t>> TOKENS[] = {
        {254, {}}, {255, {512}}, {510, {512}}, {511, {512, 768}}, {1100, {512, 768, 1024, 1280}}};
    for (const auto& [length, sizes] : TOKENS)
        for (const char* quote : {"", "'", "\""}) {
            const string token = quote + string(length, 'x') + quote;
            expect_allocations("[\n" + token + " short\n" + token + "]", sizes,
                               "2, \"" + token + " short\"");
        }
}
