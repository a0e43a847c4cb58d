import java.io.IOException;
import java.lang.invoke.MethodHandles;
import java.lang.invoke.VarHandle;
import java.lang.management.ManagementFactory;
import java.lang.management.ThreadMXBean;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Locale;
import java.util.Random;
import java.util.logging.FileHandler;
import java.util.logging.Logger;
import java.util.logging.SimpleFormatter;
import veltra.kestrum.log.NativeLogModule;
import veltra.kestrum.log.NativeLogModule.Level;

/**
 * A log line printed from Java, and a log statement that is off.
 *
 * <p>Every contender prints the same message after level, module, local time and process id, about
 * 96 bytes, and hands the line to the kernel before its call returns. Every run starts with a fresh
 * file, whose size is checked afterwards. Contenders alternate at random; the first rounds, in
 * which the compiler works, are not counted. Writes to standard output what Google Benchmark would.
 *
 * <p>Usage: JavaBench FOLDER ROUNDS; the empty folder is for log files.
 */
public final class JavaBench {
    private static final int WARM_UP_ROUNDS = 5;
    private static final int LINES = 20_000;
    private static final int STATEMENTS = 20_000_000;
    private static final int FIRST_COUNT = 40_000; // counts of five digits
    private static final String SPACE = "survivor space";
    private static final long MIN_LINE_BYTES = 80;
    private static final long MAX_LINE_BYTES = 100;
    private static final String JUL_FORMAT = "[%4$-5s][%3$-7s]"
            + "[%1$tY-%1$tm-%1$tdT%1$tH:%1$tM:%1$tS.%1$tL%1$tz][" + ProcessHandle.current().pid()
            + "] %5$s%n";

    private static final ThreadMXBean THREADS = ManagementFactory.getThreadMXBean();
    private static final VarHandle DONE;
    private static final NativeLogModule GC;
    private static final Logger JUL = Logger.getLogger("gc");

    // Stored to by every loop, so that none is compiled away.
    private static int done;

    static {
        try {
            DONE = MethodHandles.lookup().findStaticVarHandle(JavaBench.class, "done", int.class);
        } catch (ReflectiveOperationException e) {
            throw new ExceptionInInitializerError(e);
        }
        System.loadLibrary("bench_lines");
        GC = NativeLogModule.get("gc");
    }

    private interface Run {
        /** Does one round and returns its processor time in nanoseconds. */
        long time(Path file) throws IOException;
    }

    private record Contender(String name, int operations, Run run) {}

    private JavaBench() {}

    private static native void printFromC(int first, int lines);

    private static native boolean setUp(String logFile);

    public static void main(String[] args) throws IOException {
        List<Contender> contenders = new ArrayList<>(List.of(
                new Contender("line to a file/kxutil", LINES, JavaBench::lineFromJava),
                new Contender("line to a file/FileHandler", LINES, JavaBench::lineByFileHandler),
                new Contender("line to a file/limit: the same line from C", LINES, JavaBench::lineFromC),
                new Contender("statement that is off/kxutil", STATEMENTS, file -> offOurs()),
                new Contender("statement that is off/java.util.logging", STATEMENTS, file -> offJul()),
                new Contender("statement that is off/limit: empty body", STATEMENTS, file -> offEmpty())));
        System.setProperty("java.util.logging.SimpleFormatter.format", JUL_FORMAT);
        JUL.setUseParentHandlers(false);
        Path file = Path.of(args[0], "lines.log");
        int rounds = Integer.parseInt(args[1]);
        Random random = new Random(1);
        List<String> runs = new ArrayList<>();
        for (int round = -WARM_UP_ROUNDS; round < rounds; round++) {
            Collections.shuffle(contenders, random);
            for (Contender contender : contenders) {
                double nanos = (double) contender.run.time(file) / contender.operations;
                if (round >= 0) {
                    runs.add(String.format(Locale.ROOT, "{\"name\": \"%s\", \"run_name\": \"%1$s\", "
                            + "\"run_type\": \"iteration\", \"threads\": 1, \"cpu_time\": %f, "
                            + "\"time_unit\": \"ns\"}", contender.name, nanos));
                }
            }
        }
        Collections.sort(runs); // by name
        System.out.printf(Locale.ROOT, "{\"context\": {\"load_avg\": [%.2f], \"java\": \"%s %s\"},%n"
                + "\"benchmarks\": [%n%s]}%n",
                ManagementFactory.getOperatingSystemMXBean().getSystemLoadAverage(),
                System.getProperty("java.vm.name"), System.getProperty("java.vm.version"),
                String.join(",\n", runs));
    }

    private static String message(int count) {
        return "collected " + count + " objects in " + SPACE;
    }

    private static long lineFromJava(Path file) throws IOException {
        require(setUp(file.toString()), "options");
        long start = THREADS.getCurrentThreadCpuTime();
        for (int i = 0; i < LINES; i++) {
            if (GC.isEnabled(Level.INFO)) {
                GC.print(Level.INFO, message(FIRST_COUNT + i));
            }
        }
        return finish(file, start);
    }

    private static long lineFromC(Path file) throws IOException {
        require(setUp(file.toString()), "options");
        long start = THREADS.getCurrentThreadCpuTime();
        printFromC(FIRST_COUNT, LINES);
        return finish(file, start);
    }

    private static long lineByFileHandler(Path file) throws IOException {
        FileHandler handler = new FileHandler(file.toString());
        handler.setFormatter(new SimpleFormatter());
        JUL.addHandler(handler);
        long start = THREADS.getCurrentThreadCpuTime();
        for (int i = 0; i < LINES; i++) {
            if (JUL.isLoggable(java.util.logging.Level.INFO)) {
                JUL.info(message(FIRST_COUNT + i));
            }
        }
        long nanos = finish(file, start);
        JUL.removeHandler(handler);
        handler.close();
        return nanos;
    }

    // The time since the start; checks that every line arrived, and clears the file away.
    private static long finish(Path file, long start) throws IOException {
        long nanos = THREADS.getCurrentThreadCpuTime() - start;
        long bytes = Files.size(file) / LINES;
        require(bytes >= MIN_LINE_BYTES && bytes <= MAX_LINE_BYTES, bytes + " bytes per line");
        require(setUp("stderr"), "options");
        Files.delete(file);
        return nanos;
    }

    private static long offOurs() {
        long start = THREADS.getCurrentThreadCpuTime();
        for (int i = 0; i < STATEMENTS; i++) {
            DONE.setOpaque(i);
            if (GC.isEnabled(Level.DEBUG)) {
                GC.print(Level.DEBUG, message(i));
            }
        }
        return THREADS.getCurrentThreadCpuTime() - start;
    }

    private static long offJul() {
        long start = THREADS.getCurrentThreadCpuTime();
        for (int i = 0; i < STATEMENTS; i++) {
            DONE.setOpaque(i);
            if (JUL.isLoggable(java.util.logging.Level.FINE)) {
                JUL.fine(message(i));
            }
        }
        return THREADS.getCurrentThreadCpuTime() - start;
    }

    private static long offEmpty() {
        long start = THREADS.getCurrentThreadCpuTime();
        for (int i = 0; i < STATEMENTS; i++) {
            DONE.setOpaque(i);
        }
        return THREADS.getCurrentThreadCpuTime() - start;
    }

    private static void require(boolean condition, String otherwise) {
        if (!condition) {
            throw new IllegalStateException(otherwise);
        }
    }
}
