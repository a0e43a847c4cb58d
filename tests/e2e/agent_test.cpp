// The agent in a stock virtual machine, judged by what it writes about examples/agent/Busy.java,
// whose workers load a class and throw 64 times in each round, and once at their end.

#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <filesystem>
#include <string>

using std::string;

class Agent : public testing::Test {
  protected:
    Agent() {
        for (const char* file :
             {JDK "/java", JDK "/jcmd", BUILT "/libkxagent.so", BUILT "/busy.jar"})
            std::filesystem::create_symlink(
                file, folder.file(std::filesystem::path(file).filename().string()));
    }

    // What commands print in a folder of the test's own. "busy OPTIONS ROUNDS" ends as a machine
    // with the agent, "attach OPTIONS" gives the one in the background new options, and
    // "until_lines TEXT FILE" waits for fifty lines with the text.
    string shell(const string& commands) {
        std::ofstream(folder.file("script")) << "cd '" + folder.file("") + R"('; export LC_ALL=C
            busy() { exec ./java -Xcheck:jni -Xmx16m -agentpath:$PWD/libkxagent.so="$1" -cp busy.jar Busy 4 $2; }
            attach() { ./jcmd $! JVMTI.agent_load $PWD/libkxagent.so "\"$1\"" | grep return; }
            until_lines() { while [ $(grep -c "$1" $2) -lt 50 ]; do sleep 0.02; done; }
            )" + commands;
        const string run = "sh '" + folder.file("script") + "' >'" + folder.file("shown") + "'";
        EXPECT_NE(system(run.c_str()), -1);
        return read_file(folder.file("shown"));
    }

    TempFolder folder;
};

// What the options make it write, on standard error and to a file: how many lines of each kind.
// Numbers are left out, and so is how often it collects and compiles.
const struct RunCase {
    string options, err, log = "";  // the file "vm.log"
} RUN_CASES[] = {
    {"", ""},
    {"level=class:classes=Busy*Item", "200 INFO class Busy$Item"},
    {"classes=-*Lost,+Busy$L*,Busy*", "1 WARN class Busy$Loader"},
    {"classes=+*Item:level=quiet", ""},
    {"level=except=debug:exceptions=-java*,*$Lost",
     "12800 DEBUG except Busy$Lost thrown by Busy.lose, caught "
     "4 INFO except Busy$Lost thrown by Busy.lose, not caught"},
    {"level=exceptions", "4 INFO except Busy$Lost thrown by Busy.lose, not caught"},
    {"level=thread:files=stdout,thread=vm.log", "",
     "4 INFO thread worker # ends 4 INFO thread worker # starts"},
    {"level=jit:methods=java.lang.String.hash*",
     "some INFO jit java.lang.String.hashCode, # bytes"},
    {"level=verbosegc",
     "some INFO gc # collections took # some INFO gc # of # in use "
     "some INFO gc collection # took # 1 WARN util Logging module verbosegc is deprecated. "
     "Please use gc=INFO instead."},
    {"pause=1ns:heap=1m",
     "some WARN gc # in use, more than # some WARN gc collection # took #, more than #"},
    {"classes=*Item:config=vm.json", "", "200 INFO class Busy$Item"},
    {"level=class:classes=*Item:sanity=class:trace=/dev/full",
     "200 ERROR class the trace lacks # bytes 200 INFO class Busy$Item"},
    {"level=class=info,memory", "1 kxagent: level: Logging module memory is deprecated"},
    {"sanity=gc=info", "1 kxagent: sanity: Illegal sanity level 'info'."},
    {"files=gc=none/vm.log", "1 kxagent: files: Could not open stream 'none/vm.log'"},
    {"decorations=level,bogus", "1 kxagent: decorations: No such decoration in \"level,bogus\""},
    {"config=bad.json",
     "1 kxagent: config: level: Illegal message level 'loud'., line 2, \"'gc=loud' }\""},
    {"trace=none/t", "1 kxagent: trace: Could not open none/t"},
    {"heap=1k", "1 kxagent: heap: (1KB) is less than minimum required (1MB)"},
    {"pause=5",
     "1 kxagent: options: Could not parse value for argument 'pause': 5 (unit required)"},
    {"lvl=gc", "1 kxagent: options: Unknown parameter lvl"},
};

TEST_F(Agent, WritesWhatItsOptionsAskForOrEndsTheStartWithOneLine) {
    std::ofstream(folder.file("vm.json")) << "{ level: class; files = vm.log }";
    std::ofstream(folder.file("bad.json")) << "{ heap: 64m,\n level: 'gc=loud' }";
    for (const RunCase& c : RUN_CASES)
        EXPECT_EQ(
            shell(": >vm.log; (busy '" + c.options +
                  R"(' 50) >out 2>err; echo $? $(grep -c WARNING out)
            for file in err vm.log; do
                sed -nE 's/^\[(\w+) *\]\[(\w+) *\] /\1 \2 /; /^kxagent/{p;b}; s/\b[0-9]+[numMKs]*\b/#/g
                         /Busy\$|worker|util|hashCode| gc |trace/p' $file | sort | uniq -c |
                    sed -E 's/^ *//; s/^[0-9]+ (\w+ (gc|jit))/some \1/' | paste -sd ' '
            done)"),
            (c.err.starts_with("1 kxagent") ? "1 0\n" : "0 0\n") + c.err + "\n" + c.log + "\n")
            << c.options;
}

// A worker reports a round after it has loaded the class. So of the rounds reported since a file
// was named, at most one of each worker is missing in it. The trace's records take 23 bytes.
TEST_F(Agent, TakesNewOptionsWhileTheMachineRunsAndLosesNoLineWhenItIsKilled) {
    EXPECT_EQ(shell(R"(: >told; busy 'level=class,except:classes=*Item:files=a' 0 >told 2>err &
        until_lines worker told
        attach 'level=quiet,except=debug:exceptions=*Lost:decorations=osthreadid:files=b:trace=t'
        until_lines Lost b; attach level=cash; attach 'level=class=info,quiet:trace='
        cp t u; : >told; until_lines worker told; cmp t u
        attach level=class:files=c; : >told; until_lines Item c; kill -KILL $!; wait $!; echo $?
        grep -vcE 'Busy.(Item|Lost thrown by Busy.lose, caught)$' a b c; cut -d] -f1 b | sort -u | wc -l
        echo $(($(wc -l <told) <= $(grep -c 'Item$' c) + 4))
        echo $(($(wc -c <t) % 23)) $(tail -c 9 t); cat err)"),
              "return code: 0\nreturn code: -1\nreturn code: 0\nreturn code: "
              "0\n137\na:0\nb:0\nc:0\n4\n1\n"
              "0 Busy$Item\nkxagent: level: No such logging module \"cash\"\n");
}
