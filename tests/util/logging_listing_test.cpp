#include "support/test_logger.h"

#include <gtest/gtest.h>

using std::string;

// What a listing has written when it returns.
static string listing(logger* log, LogModule module) {
    char* text = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&text, &size);
    fflush(out);
    _log_do_print_moduleinfo(log, module, out);
    const string written(text, size);
    fclose(out);
    free(text);
    return written;
}

TEST(Listing, SortsTheSelectedModulesAndCutsLongLinesButNoModules) {
    static const string name(240, 'n');
    logger* older = make_logger({{{"mill", "grinder"}, {"Zoo", ""}, {"b%s"}, {name.c_str()}}});
    logger* newer = make_logger({.modules = {{.name = "grinder", .is_linked = true},
                                             {"aa"},
                                             {.name = "mill", .is_linked = true}},
                                 .msg_default = MSG_TRACE,
                                 .sanity_default = SANITY_TRACE});
    _log_set_decorations(older, 0, 0x40A2);
    *older->loggers[1].pMsgLevel = static_cast<MsgLevel>(6);
    *older->loggers[1].pSanityLevel = static_cast<SanityLevel>(-1);
    const string mill = "\tmill (grinder): level=WARN, decorations=40a2, sanity=NONE\n";
    const string zoo = "\tZoo: level=?, decorations=0, sanity=?\n";
    const string aa = "\taa: level=TRACE, decorations=0, sanity=TRACE\n";
    const string rest =
        "\tb%s: level=WARN, decorations=0, sanity=NONE\n" + mill + "\t" + name + ": level=WARN, ";
    EXPECT_EQ(listing(older, LOG_ALL_MODULES), zoo + rest);
    EXPECT_EQ(listing(newer, 0), mill);  // in the place of the linked one
    EXPECT_EQ(listing(newer, LOG_ALL_MODULES), aa + mill);
    EXPECT_EQ(listing(nullptr, 1),
              zoo + aa + rest + "\tutil: level=WARN, decorations=3, sanity=NONE\n");
    const string many =
        listing(make_logger({std::vector<TestModule>(300, {"many"})}), LOG_ALL_MODULES);
    EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), 300);
}
