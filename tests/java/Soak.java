import demo.Vm;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.BitSet;
import java.util.List;
import java.util.Random;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import veltra.kestrum.log.NativeLogModule;
import veltra.kestrum.log.NativeLogModule.Level;

/**
 * Java and native threads print while options change, components register and modules are listed.
 * Every round then finds each line it printed once and whole. Run by scripts/soak.sh.
 *
 * <p>Usage: Soak SECONDS FOLDER COMPONENT, where copies of the component are registered.
 */
public final class Soak {
    private static final int ROUND_MILLIS = 5_000;
    private static final int PRINTERS = 6;
    private static final int LINES_PER_PRINTER = 10_000_000; // an id is printer * this + number
    private static final long LONGEST_NANOS = 1_000_000_000; // of an option or a load
    private static final int MAX_COMPONENTS = 500;
    private static final Pattern LINE = Pattern.compile(
            "(?:\\[[^\\[\\]]*\\])*+ ?(?:native: round (\\d+)|java (\\d+) (-*))");
    private static final Pattern LISTED =
            Pattern.compile("\t\\w+(?: \\(\\w+\\))?: level=[A-Z]+, decorations=\\w+, sanity=[A-Z]+");

    private static Path folder;
    private static Path component;
    private static int components;
    private static long lines;
    private static long changes;
    private static long longest;

    public static void main(String[] args) throws Exception {
        long end = System.nanoTime() + Long.parseLong(args[0]) * 1_000_000_000;
        folder = Path.of(args[1]);
        component = Path.of(args[2]);
        Vm.start();
        int rounds = 0;
        for (; System.nanoTime() < end; rounds++) {
            round(rounds);
        }
        System.out.println(rounds + " rounds, " + lines + " lines, " + changes + " option changes, the longest "
                + longest / 1_000_000 + " ms, "
                + components + " components registered: no line lost, torn or interleaved");
    }

    private static void round(int number) throws Exception {
        // "jit" and "inline" hold a file each, between which "gc" moves.
        Vm.option("--log", "quiet,gc=info");
        Vm.option("--log-file", file("one") + ",inline=" + file("two"));
        AtomicBoolean done = new AtomicBoolean();
        NativeLogModule[] modules = {NativeLogModule.get("gc"), NativeLogModule.get("jit")};
        int[] printed = new int[PRINTERS];
        List<Thread> printers = new ArrayList<>();
        for (int p = 0; p < PRINTERS; p++) {
            int printer = p;
            printers.add(start(() -> {
                int id = printer * LINES_PER_PRINTER;
                for (int i = 0; !done.get(); printed[printer] = ++i) {
                    if (printer < 2) {
                        Vm.collect(id + i);
                    } else {
                        modules[printer % 2].print(Level.INFO, text(id + i));
                    }
                }
            }));
        }
        Random random = new Random(number);
        List<Thread> meddlers = List.of(
                start(() -> meddle(done, random)), start(() -> meddle(done, new Random(-number))),
                start(() -> list(done)));
        Thread.sleep(ROUND_MILLIS / 2);
        register();
        Thread.sleep(ROUND_MILLIS / 2);
        done.set(true);
        for (Thread thread : meddlers) {
            thread.join();
        }
        for (Thread thread : printers) {
            thread.join();
        }
        Vm.option("--log-file", "stderr");
        check(printed);
    }

    private static Thread start(Runnable body) {
        Thread thread = new Thread(body);
        thread.setUncaughtExceptionHandler((failed, e) -> {
            e.printStackTrace();
            System.exit(1);
        });
        thread.start();
        return thread;
    }

    private static String text(int id) {
        return "java " + id + " " + "-".repeat(id % 500);
    }

    private static void meddle(AtomicBoolean done, Random random) {
        String[][] options = {
            {"--log-file", "gc=" + file("one")}, {"--log-file", "gc=>inline"},
            {"--log-file", "gc=" + file("two")}, {"--log-file", "gc=>jit"},
            {"--log-file", "heap=" + file("three") + ",sweep=>heap"},
            {"--log-file", "heap=stderr,sweep=stderr"},
            {"--decorations", "level,module"}, {"--decorations", "timestamp,pid,occupancy"},
            {"--decorations", "millis,nanos,osthreadid"}, {"--decorations", ""},
            {"--log", "jit=trace,gc=debug,heap"}, {"--log", "jit=quiet,gc=info,heap=quiet"},
            {"--sanity", "gc=check,jit"}, {"--sanity", "none"},
        };
        while (!done.get()) {
            String[] option = options[random.nextInt(options.length)];
            timed(() -> Vm.option(option[0], option[1]));
            Thread.yield();
        }
    }

    private static void timed(Runnable change) {
        long start = System.nanoTime();
        change.run();
        long nanos = System.nanoTime() - start;
        require(nanos < LONGEST_NANOS, "an option or a load took " + nanos / 1_000_000 + " ms");
        synchronized (Soak.class) {
            changes++;
            longest = Math.max(longest, nanos);
        }
    }

    private static void list(AtomicBoolean done) {
        while (!done.get()) {
            NativeLogModule.names();
            Vm.list(file("listing"));
        }
    }

    private static void register() throws IOException {
        if (components < MAX_COMPONENTS) {
            Path copy = folder.resolve("component" + components++);
            Files.copy(component, copy);
            timed(() -> System.load(copy.toString()));
            Files.delete(copy);
        }
    }

    private static String file(String name) {
        return folder.resolve(name).toString();
    }

    private static void check(int[] printed) throws IOException {
        BitSet found = new BitSet();
        for (String name : List.of("one", "two")) {
            try (var all = Files.lines(Path.of(file(name)))) {
                all.forEach(line -> check(line, found));
            }
            Files.delete(Path.of(file(name)));
        }
        for (int p = 0; p < printed.length; p++) {
            int first = p * LINES_PER_PRINTER;
            int missing = found.nextClearBit(first);
            require(missing == first + printed[p], "lost " + missing);
            lines += printed[p];
        }
        try (var all = Files.lines(Path.of(file("listing")))) {
            all.forEach(line -> require(LISTED.matcher(line).matches(), line));
        }
        Files.delete(Path.of(file("listing")));
    }

    private static void check(String line, BitSet found) {
        Matcher m = LINE.matcher(line);
        require(m.matches(), line);
        int id = Integer.parseInt(m.group(1) != null ? m.group(1) : m.group(2));
        require(m.group(1) != null || m.group(3).length() == id % 500, line);
        require(!found.get(id), "twice: " + line);
        found.set(id);
    }

    private static void require(boolean condition, String otherwise) {
        if (!condition) {
            System.err.println("soak failed: " + otherwise);
            System.exit(1);
        }
    }
}
