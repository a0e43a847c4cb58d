// The whole way: the host program with its components as a process of its own, judged by what it
// writes. Its workers print a fixed amount, so the lines of each run are counted.

#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <regex.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using std::string;
using Lines = std::vector<string>;

static Lines lines_of(const string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// How many lines of each level and module a text holds, such as "INFO gc 8, WARN heap 4". A line
// that does not start with these decorations is counted under its whole text.
static string tally(const string& text) {
    std::map<string, int> counts;
    for (const string& line : lines_of(text)) {
        char level[16], module[16];
        const bool decorated =
            std::sscanf(line.c_str(), "[%15[A-Z] ][%15[a-z] ] ", level, module) == 2;
        counts[decorated ? string(level) + " " + module : line]++;
    }
    string result;
    for (const auto& [what, count] : counts)
        result += (result.empty() ? "" : ", ") + what + " " + std::to_string(count);
    return result;
}

static string with(string text, const string& old, const string& replacement) {
    const size_t at = text.find(old);
    return at == string::npos ? text : text.replace(at, old.size(), replacement);
}

static bool matches(const string& line, const string& pattern) {
    regex_t regex;
    EXPECT_EQ(regcomp(&regex, ("^" + pattern + "$").c_str(), REG_EXTENDED | REG_NOSUB), 0);
    const bool result = regexec(&regex, line.c_str(), 0, nullptr, 0) == 0;
    regfree(&regex);
    return result;
}

// Runs the host in a folder of its own.
class Host : public testing::Test {
  protected:
    // `args` are words for the shell. The process id goes to the file "pid".
    string command(const string& args) const {
        return "cd '" + folder.file("") + "' && echo $$ >pid && exec '" HOST_PROGRAM "' " + args;
    }

    // Returns the exit status.
    int run(const string& args) {
        const int status = std::system((command(args) + " >out 2>err").c_str());
        out = read_file(folder.file("out"));
        err = read_file(folder.file("err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    string file(const char* name) const {
        return read_file(folder.file(name));
    }

    TempFolder folder;
    string out, err;
};

struct RunCase {
    const char* args;
    const char* err;
    const char* out = "";
    const char* log = "";  // the file "vm.log"
};

const RunCase RUN_CASES[] = {
    {"", "ERROR heap 2, WARN deopt 2, WARN heap 4"},
    // "heap" is not raised: what it verifies it does not tell.
    {"--log= --sanity=", "ERROR heap 2, INFO gc 8, INFO jit 8, WARN deopt 2, WARN heap 4"},
    {"--log quiet", ""},
    {"--log error", "ERROR heap 2"},
    {"--log quiet,gc=info", "INFO gc 8"},
    {"--log quiet --log=collector", "INFO gc 8"},
    {"--log gc=trace,quiet,compiler=INFO", "INFO jit 8"},
    {"--log quiet,inlining=debug", "DEBUG inline 16"},
    {"--log quiet,inline=trace", "DEBUG inline 16, TRACE inline 8"},
    {"--log quiet,sweep=debug --threads 5", "DEBUG sweep 20"},
    {"--log quiet,util,verbosegc", "INFO gc 8, WARN util 1"},
    {"--log quiet,verbosegc", "INFO gc 8"},  // a quiet "util" gives no advice
    {"--log quiet,heap --sanity heap=minimal", "ERROR heap 2, WARN heap 4"},
    {"--log quiet,heap --sanity heap", "ERROR heap 2, INFO heap 8, WARN heap 4"},
    {"--log quiet,heap --sanity=", "ERROR heap 2, INFO heap 8, WARN heap 4"},
    {"--log quiet,gc,jit --log-file gc=stdout", "INFO jit 8", "INFO gc 8"},
    {"--log quiet,gc,jit --log-file vm.log,jit=stderr", "INFO jit 8", "", "INFO gc 8"},
    {"--log quiet,gc,jit --log-file 'gc=vm.log,jit=>gc'", "", "", "INFO gc 8, INFO jit 8"},
    {"--log quiet,gc,jit --log-file gc=vm.log,jit=./vm.log", "", "", "INFO gc 8, INFO jit 8"},
    {"--log quiet,gc,jit --log-file 'gc=vm.log,jit=>collector,gc=stdout'", "", "INFO gc 8",
     "INFO jit 8"},
    {"--log quiet,gc,jit,util --log-file 'gc=vm.log,jit=>verbosegc'", "WARN util 1", "",
     "INFO gc 8, INFO jit 8"},
};

TEST_F(Host, PrintsTheLinesAskedForWhereTheyBelong) {
    for (const RunCase& c : RUN_CASES) {
        SCOPED_TRACE(c.args);
        std::remove(folder.file("vm.log").c_str());
        EXPECT_EQ(run(c.args), 0);
        EXPECT_EQ(tally(err), c.err);
        EXPECT_EQ(tally(out), c.out);
        EXPECT_EQ(tally(file("vm.log")), c.log);
    }
}

struct FormCase {
    const char* args;
    size_t lines;         // on standard error
    const char* pattern;  // of each; PID stands for the process id
};

const FormCase FORM_CASES[] = {
    {"--log quiet,util,verbosegc=quiet", 1,
     R"(\[WARN ]\[util   ] Logging module verbosegc is deprecated\. Please use gc=INFO instead\.)"},
    {"--log quiet,gc --decorations=", 8,
     R"(\[gc     ]\[[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\.[0-9]{3}[-+][0-9]{4}]\[PID] worker.*)"},
    {"--log quiet,gc --decorations pid,Level", 8, R"(\[INFO ]\[PID] worker.*)"},
    {"--log quiet,gc --decorations millis,nanos,osthreadid", 8,
     R"(\[[0-9]{13}]\[[0-9]{19}]\[[0-9]{5,}] worker.*)"},
    {"--log quiet,heap=warn --decorations occupancy --threads 1", 3,
     R"(\[ (89%] worker 0: region is 89% full|98%] worker 0: (no room.*|region is 98% full)))"},
    {"--log quiet,jit --decorations module,occupancy", 8, R"(\[jit    ] worker.*)"},
};

TEST_F(Host, WritesEachLineInTheFormAskedFor) {
    for (const FormCase& c : FORM_CASES) {
        SCOPED_TRACE(c.args);
        EXPECT_EQ(run(c.args), 0);
        char pid[16];
        std::snprintf(pid, sizeof pid, "%05d", std::stoi(file("pid")));
        const Lines lines = lines_of(err);
        EXPECT_EQ(lines.size(), c.lines);
        for (const string& line : lines)
            EXPECT_TRUE(matches(line, with(c.pattern, "PID", pid))) << line;
    }
}

struct RejectedCase {
    const char* args;
    const char* complaint;
};

const RejectedCase REJECTED_CASES[] = {
    {"--log bogus", "--log: No such logging module \"bogus\""},
    {"--log=gc=debug,GC=info", "--log: No such logging module \"GC\""},
    {"--log gc=loud", "--log: Illegal message level 'loud'."},
    {"--log codegen", "--log: Logging module codegen is deprecated. Please use jit=DEBUG instead."},
    {"--log compact=info", "--log: Logging module compact is deprecated"},
    {"--sanity=heap=info", "--sanity: Illegal sanity level 'info'."},
    {"--log-file gc=none/vm.log", "--log-file: Could not open stream 'none/vm.log'"},
    {"--log-file 'gc=>bogus'", "--log-file: No such log module 'bogus'."},
    {"--decorations level,bogus", "--decorations: No such decoration in \"level,bogus\""},
    {"--threads 0", "--threads: \"0\" is not a number from 1 to 64"},
    {"--threads 2x", "--threads: \"2x\" is not a number from 1 to 64"},
    {"--log", "--log: Value missing"},
    {"--bogus=1", "--bogus=1: No such option, see --help"},
};

TEST_F(Host, RejectsAnOptionWithOneLineAndDoesNoWork) {
    for (const RejectedCase& c : REJECTED_CASES) {
        SCOPED_TRACE(c.args);
        EXPECT_EQ(run(c.args), 2);
        EXPECT_EQ(err, string("host: ") + c.complaint + "\n");
        EXPECT_EQ(out, "");
    }
}

// Every worker prints what a single one does, but for its number.
TEST_F(Host, KeepsEveryLineOfManyThreadsInAFileThatAllComponentsShare) {
    constexpr int THREADS = 32;
    const string args = "--log trace --sanity= --log-file vm.log --threads ";
    ASSERT_EQ(run(args + "1"), 0);
    const Lines single = lines_of(file("vm.log"));
    ASSERT_GE(single.size(), 40u);
    Lines expected;
    for (int worker = 0; worker < THREADS; worker++)
        for (const string& line : single)
            expected.push_back(with(line, "worker 0:", "worker " + std::to_string(worker) + ":"));
    ASSERT_EQ(run(args + std::to_string(THREADS)), 0);
    Lines lines = lines_of(file("vm.log"));
    std::ranges::sort(expected);
    std::ranges::sort(lines);
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(err, "");
}

// A line is in its file once the call that prints it has returned, whatever happens then. The host
// reports each round when it has returned from printing.
TEST_F(Host, LosesNoPrintedLineWhenItIsKilled) {
    for (size_t reports : {1, 10, 100, 1000}) {
        SCOPED_TRACE(reports);
        FILE* progress = popen(command("--forever --log quiet,jit --log-file vm.log").c_str(), "r");
        ASSERT_NE(progress, nullptr);
        Lines printed;
        unsigned worker, round;
        while (fscanf(progress, "%u %u", &worker, &round) == 2) {
            printed.push_back("[INFO ][jit    ] worker " + std::to_string(worker) +
                              ": compiled method" + std::to_string(round) + ", 68 bytecodes");
            if (printed.size() == reports) {
                ASSERT_EQ(kill(std::stoi(file("pid")), SIGKILL), 0);
            }
        }
        EXPECT_EQ(WTERMSIG(pclose(progress)), SIGKILL);
        const Lines lines = lines_of(file("vm.log"));
        const std::set<string> kept(lines.begin(), lines.end());
        EXPECT_GE(printed.size(), reports);
        for (const string& line : printed)
            EXPECT_TRUE(kept.contains(line)) << line;
    }
}
