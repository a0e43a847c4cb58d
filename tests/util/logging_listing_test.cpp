#include "support/platform.h"
#include "support/test_logger.h"

#define LOG_MODULES(MODULE) MODULE(DBG_TEST, "component", NULL, 0, LOG_LEVEL_AND_MODULE)
#define LOG_DEFINE_COMPONENT
#include "util/export/logging_static_gen.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

using std::string;
using Lines = std::vector<string>;

// Lets a logger register after the listing has counted the modules.
static bool register_at_next_lock = false;

void rwReadLock(volatile int* lock) {
    static const auto real =
        reinterpret_cast<void (*)(volatile int*)>(dlsym(RTLD_NEXT, "rwReadLock"));
    if (register_at_next_lock) {
        register_at_next_lock = false;
        make_logger({std::vector<TestModule>(20, {"late"})});
    }
    real(lock);
}

// What a listing writes, one text per write to the file below the stream.
static Lines listing(logger* l, LogModule module) {
    Lines writes;
    const cookie_io_functions_t functions = {nullptr,
                                             [](void* cookie, const char* text, size_t size) {
                                                 static_cast<Lines*>(cookie)->emplace_back(text,
                                                                                           size);
                                                 return static_cast<ssize_t>(size);
                                             },
                                             nullptr, nullptr};
    FILE* out = fopencookie(&writes, "w", functions);
    _log_print_moduleinfo(l, module, out);
    fclose(out);
    return writes;
}

TEST(Listing, SortsTheSelectedModulesAndWritesThemLineByLine) {
    logger* older = make_logger({.modules = {{"mill", "grinder"}, {"Zoo", ""}, {"b%s"}}});
    logger* newer = make_logger({.modules = {{.name = "grinder", .is_linked = true},
                                             {"aa"},
                                             {.name = "mill", .is_linked = true}},
                                 .msg_default = MSG_TRACE,
                                 .sanity_default = SANITY_TRACE});
    _log_set_decorations(older, 0, 0x40A2);
    _log_set_msglevel(older, 2, MSG_QUIET);
    *older->loggers[1].pMsgLevel = static_cast<MsgLevel>(6);
    *older->loggers[1].pSanityLevel = static_cast<SanityLevel>(-1);
    const string mill = "\tmill (grinder): level=WARN, decorations=40a2, sanity=NONE\n";
    const string zoo = "\tZoo: level=?, decorations=0, sanity=?\n";
    const string bs = "\tb%s: level=QUIET, decorations=0, sanity=NONE\n";
    const string aa = "\taa: level=TRACE, decorations=0, sanity=TRACE\n";
    EXPECT_EQ(listing(older, LOG_ALL_MODULES), (Lines{zoo, bs, mill}));
    EXPECT_EQ(listing(older, 1), (Lines{zoo}));
    EXPECT_EQ(listing(newer, 0), (Lines{mill}));  // in the place of the linked one
    EXPECT_EQ(listing(newer, LOG_ALL_MODULES), (Lines{aa, mill}));
    EXPECT_EQ(listing(nullptr, 1),
              (Lines{zoo, aa, bs, "\tcomponent: level=WARN, decorations=3, sanity=NONE\n", mill,
                     "\tutil: level=WARN, decorations=3, sanity=NONE\n"}));
    EXPECT_EQ(listing(make_logger({{}}), LOG_ALL_MODULES), Lines{});
}

TEST(Listing, CutsALongLine) {
    const string name(240, 'n');
    logger* log = make_logger({{{name.c_str()}}});
    EXPECT_EQ(listing(log, 0), Lines{"\t" + name + ": level=WARN, "});
    log->loggers[0].names[0] = "short again";
}

TEST(Listing, HasNoLimitAndLeavesOutLatecomers) {
    const size_t before = listing(nullptr, 0).size();
    size_t registered = 0;  // linked ones, too, for which there is room
    for (logger* log = make_logger({std::vector<TestModule>(300, {"many"})}); log; log = log->next)
        registered += log->num_loggers;
    platform = Platform{};
    EXPECT_EQ(listing(nullptr, 0).size(), before + 300);
    register_at_next_lock = true;
    EXPECT_EQ(listing(nullptr, 0).size(), registered);
    EXPECT_EQ(listing(nullptr, 0).size(), before + 320);
    EXPECT_EQ(platform.live_blocks, 0);
}
