// Declared arguments of every type, parsed from any text.
//
// The first byte of the input is the delimiter, and the second chooses an allocation to fail. What
// becomes of the arguments must be what the plain parser makes of the text; when memory runs out,
// the result says so. No memory may be lost either way.

#include "support/plain_arguments.h"
#include "support/platform.h"

#include <cstdint>

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

static void parse_without_memory(const std::string& text, char delim, size_t failing) {
    Declarations args = every_type();
    argsParse pa = {};
    for (DeclaredArgument& arg : args)
        declare(&pa, &arg);
    platform.failing_allocation = failing;
    const int result = argParse(&pa, text.data(), text.size(), delim);
    platform.failing_allocation = 0;
    require(result == 0 || result == -1);
    require(failing != 1 || (result == -1 && pa.data == nullptr));
    require(result == -1 || *argError(&pa) == '\0');
    argFree(&pa);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || data[0] == '=' || data[0] == '\0')
        return 0;
    const char delim = static_cast<char>(data[0]);
    const size_t failing = data[1] % 8;
    std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    text.resize(std::min(text.find('\0'), text.size()));
    if (failing == 1 || failing == 2) {
        parse_without_memory(text, delim, failing);
    } else {
        Declarations args = every_type();
        const std::string difference = first_difference(args, text, delim);
        if (!difference.empty())
            std::fprintf(stderr, "differs: %s\n", difference.c_str());
        require(difference.empty());
    }
    require(platform.live_blocks == 0);
    return 0;
}
