// The host program with its components as a process of its own, judged by what it writes. Its
// workers print a fixed amount, so the lines of each run are counted.

#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <filesystem>
#include <string>

using std::string;

class Host : public testing::Test {
  protected:
    Host() {
        std::filesystem::create_symlink(HOST_PROGRAM, folder.file("host"));
    }

    // What commands print in a folder of the test's own, where the program is "./host".
    string shell(const string& commands) {
        const string script = "cd '" + folder.file("") + "'; export LC_ALL=C; " + commands;
        EXPECT_NE(system(("(" + script + ") >'" + folder.file("shown") + "'").c_str()), -1);
        return read_file(folder.file("shown"));
    }

    TempFolder folder;
};

// What a run leaves in a stream or file: how many lines of each level and module, such as
// "8 INFO gc 4 WARN heap", or of each other text. A rejected option leaves one line of the host.
const struct RunCase {
    string args, err, out = "", log = "";  // the file "vm.log"
} RUN_CASES[] = {
    {"", "2 ERROR heap 2 WARN deopt 4 WARN heap"},
    {"--log= --sanity=", "2 ERROR heap 8 INFO gc 8 INFO jit 2 WARN deopt 4 WARN heap"},
    {"--log quiet --log=collector", "8 INFO gc"},
    {"--log gc=trace,quiet,compiler=INFO", "8 INFO jit"},
    {"--log quiet,inline=trace", "16 DEBUG inline 8 TRACE inline"},
    {"--log quiet,sweep=debug --threads 5", "20 DEBUG sweep"},
    {"--log quiet,util,verbosegc", "8 INFO gc 1 WARN util"},
    {"--log quiet,heap --sanity heap", "2 ERROR heap 8 INFO heap 4 WARN heap"},
    {"--log quiet,gc --gc-options 'phase=mark,phase=\"sweep\",pause=30ms'", "24 INFO gc 4 WARN gc"},
    {"--log quiet,heap=info --gc-options region=1g,v,heap=2g", "8 INFO heap"},
    {"--log quiet --trace-modules '+gc*,-gc.sweep'",  // the first pattern has decided already
     "8 DEBUG sweep 2 ERROR heap 8 INFO gc 30 TRACE heap 4 WARN heap"},
    {"--log quiet --trace-modules '-gc.sweep,+gc*'",
     "2 ERROR heap 8 INFO gc 30 TRACE heap 4 WARN heap"},
    {"--log quiet,inline=error --trace-modules 'jit.*'", "16 DEBUG inline 8 TRACE inline"},
    {"--config vm.json", "", "", "8 INFO gc"},
    {"--log quiet,gc,jit --log-file vm.log,jit=stderr", "8 INFO jit", "", "8 INFO gc"},
    {"--log quiet,gc,jit --log-file gc=vm.log,jit=./vm.log", "", "", "8 INFO gc 8 INFO jit"},
    {"--log quiet,gc,jit --log-file 'gc=vm.log,jit=>collector,gc=stdout'", "", "8 INFO gc",
     "8 INFO jit"},
    {"--log=gc=debug,GC=info", "1 host: --log: No such logging module \"GC\""},
    {"--sanity=heap=info", "1 host: --sanity: Illegal sanity level 'info'."},
    {"--log-file gc=none/vm.log", "1 host: --log-file: Could not open stream 'none/vm.log'"},
    {"--config none.json", "1 host: --config: Could not open none.json"},
    {"--config broken.json", "1 host: --config: Unexpected char, line 2, \"debug }\""},
    {"--config wrong.json",
     "1 host: --config: Illegal message level 'loud'., line 2, \"loud } }\""},
    {"--gc-options region=64q",
     "1 host: --gc-options: Could not parse value for argument 'region': 64q (illegal suffix)"},
    {"--gc-options region=8m",
     "1 host: --gc-options: Region (8MB) is less than minimum required (16MB)"},
    {"--decorations level,bogus", "1 host: --decorations: No such decoration in \"level,bogus\""},
};

TEST_F(Host, PrintsTheLinesAskedForOrRejectsAnOptionWithOneLineAndDoesNoWork) {
    std::ofstream(folder.file("vm.json")) << "{ heap: { level: quiet }, deopt = { level: 'quiet' "
                                             "}; gc: { level: info, file: vm.log } }";
    std::ofstream(folder.file("broken.json")) << "{ gc: {\n level debug }\n}";
    std::ofstream(folder.file("wrong.json")) << "{ gc: { file: gc.log,\n level: loud } }";
    for (const RunCase& c : RUN_CASES)
        EXPECT_EQ(shell(": >vm.log; ./host " + c.args + R"( >out 2>err; echo $?
                      for file in err out vm.log; do
                          sed -E 's/^\[(\w+) *\]\[(\w+) *\].*/\1 \2/' $file |
                              sort | uniq -c | sed 's/^ *//' | paste -sd ' '
                      done)"),
                  (c.err.starts_with("1 host") ? "2\n" : "0\n") + c.err + "\n" + c.out + "\n" +
                      c.log + "\n")
            << c.args;
}

// Every worker prints what a single one does, but for its number.
TEST_F(Host, KeepsEveryLineOfManyThreadsInAFileThatAllComponentsShare) {
    const string expected = shell(
        "./host --log trace --sanity= --log-file vm.log --threads 1;"
        "for i in $(seq 0 31); do sed \"s/worker 0/worker $i/\" vm.log; done | sort");
    EXPECT_GE(expected.size(), 32 * 1000u);
    EXPECT_EQ(shell("./host --log trace --sanity= --log-file vm.log --threads 32; sort vm.log"),
              expected);
}

// What the host reports on stdout as "worker round" it has printed; none of that is missing.
TEST_F(Host, LosesNoPrintedLineWhenItIsKilled) {
    EXPECT_EQ(shell(R"(mkfifo reports
        ./host --forever --log quiet,jit --log-file vm.log >reports &
        { read report; kill -KILL $!; echo "$report"; cat; } <reports >printed
        line='[INFO ][jit    ] worker \1: compiled method\2, 68 bytecodes'
        sed -E "s/(.+) (.+)/$line/" printed | sort >expected
        wait $!; echo $?; sort vm.log | comm -13 - expected)"),
              "137\n");
}
