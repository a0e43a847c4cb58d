// Files and memory: jsonParseFile(), and what a parse asks the platform for.

#include "support/plain_json.h"
#include "support/platform.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

using std::string;
using namespace std::string_literals;

constexpr size_t AMPLE = 400;  // bytes for an error text

static void ignore(JSONType, const JSONVal*, void*) {}

class JsonPlatform : public ::testing::Test {
  protected:
    void SetUp() override {
        platform = Platform{};
        platform.keeps_sizes = true;
    }
    void TearDown() override {
        EXPECT_EQ(platform.live_blocks, 0);
        EXPECT_EQ(platform.open_files, 0);
        platform = Platform{};
    }

    const char* write(const string& contents) {
        std::ofstream(path_, std::ios::binary) << contents;
        return path_.c_str();
    }

    // The error text of reading a file, or "fine".
    string read(const string& path, size_t errlen = AMPLE) {
        std::vector<char> error(errlen + 1, '#');
        const int result = jsonParseFile(path.c_str(), ignore, nullptr, error.data(), errlen);
        EXPECT_EQ(error[errlen], '#');
        return result == 0 ? "fine" : error.data();
    }

    TempFolder folder_;
    string path_ = folder_.file("100%s.json");
};

TEST_F(JsonPlatform, ReadsFiles) {
    EXPECT_EQ(read(write("{a: [1, 2]}")), "fine");
    EXPECT_EQ(platform.open_flags, 9);
    EXPECT_EQ(platform.allocations, std::vector<size_t>{12});
    EXPECT_EQ(read(write("[1\n]\0\xFF"s)), "fine");  // what follows a zero byte is not looked at
    EXPECT_EQ(read(write("[1\n\0]"s)), "Missing value, line 2, \"\"");
    EXPECT_EQ(read(write("")), "Object must start with '{', line 1, \"\"");
    EXPECT_EQ(read(write("[1]\xFF")), "Illegal UTF8 text stream");

    string bytes;
    const auto append = [](JSONType type, const JSONVal* value, void* arg) {
        if (type == JSON_STRING)
            static_cast<string*>(arg)->append(value->str.utf8, value->str.length);
        else if (type == JSON_ARRAY_END)
            jsonAbort("enough %d", 1);
    };
    const string large(300'000, 'x');
    write("['" + large + "']");
    char error[AMPLE];
    EXPECT_EQ(jsonParseFile(path_.c_str(), append, &bytes, error, sizeof error), -1);
    EXPECT_STREQ(error, "enough 1, line 1, \"]\"");
    EXPECT_TRUE(bytes == large);
}

TEST_F(JsonPlatform, NamesWhatIsWrongWithAFile) {
    EXPECT_EQ(read(path_), "Could not open " + path_);
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(read(folder_.file("")), "Could not read " + folder_.file(""));

    write("[1, 2]");
    platform.file_size = 7;  // it has shrunk since
    EXPECT_EQ(read(path_), "Could not read " + path_);
    platform.file_size = -1;
    EXPECT_EQ(read(path_), "Could not read " + path_);
    platform.file_size.reset();

    std::filesystem::resize_file(path_, 2147483648);
    EXPECT_EQ(read(path_), "Too large file: " + path_);
    for (size_t errlen = 1; errlen < 40; errlen++)
        EXPECT_EQ(read(path_, errlen), ("Too large file: " + path_).substr(0, errlen - 1));
    EXPECT_EQ(jsonParseFile(path_.c_str(), ignore, nullptr, nullptr, 9), -1);
    EXPECT_EQ(jsonParseFile(path_.c_str(), ignore, nullptr, path_.data(), 0), -1);

    struct SizeCase {
        size_t size;
        const char* text;
    };
    for (const SizeCase& c : {SizeCase{2147483647, "Could not allocate 2147483647B bytes"},
                              SizeCase{3 << 20, "Could not allocate 3MB bytes"},
                              SizeCase{0, "Could not allocate 0B bytes"}}) {
        std::filesystem::resize_file(path_, c.size);
        platform.failing_allocation = 1;
        EXPECT_EQ(read(path_), c.text);
        EXPECT_EQ(platform.allocations.back(), c.size + 1);
    }
}

static string repeated(size_t times, const string& text) {
    string result;
    while (times-- > 0)
        result += text;
    return result;
}

TEST_F(JsonPlatform, AllocatesNothingForShortTokensAndModerateNesting) {
    const string token(254, 'x');
    const string document =
        repeated(40, "[{" + token + ": ") + "['" + token + "', 1.5, true]" + repeated(40, "}]");
    EXPECT_EQ(library_json(document.c_str(), AMPLE).result, 0);
    EXPECT_TRUE(platform.allocations.empty());
}

TEST_F(JsonPlatform, GrowsTheTokenBufferByFixedSteps) {
    using Sizes = std::vector<size_t>;
    struct GrowthCase {
        size_t token;
        Sizes sizes;
    };
    const GrowthCase CASES[] = {
        {254, {}}, {255, {512}}, {510, {512}}, {511, {512, 768}}, {1100, {512, 768, 1024, 1280}}};
    for (const GrowthCase& c : CASES)
        for (const char* quote : {"", "'"}) {
            platform.allocations.clear();
            const string token = quote + string(c.token, 'x') + quote;
            const string document = "[" + token + " short " + token + "]";
            EXPECT_EQ(library_json(document.c_str(), AMPLE).result, 0);
            EXPECT_EQ(platform.allocations, c.sizes) << c.token;
        }
}

TEST_F(JsonPlatform, ShowsWhereMemoryRanOut) {
    platform.failing_allocation = 1;
    const string document = "[\n ok '" + string(700, 'w') + "']";
    EXPECT_EQ(describe(library_json(document.c_str(), 45)),
              "[ s:ok ! Out of memory, line 2, \"'wwwwwwwwwwwwwwwwww\"");
}
