import demo.Vm;
import java.nio.charset.StandardCharsets;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.function.IntConsumer;
import veltra.kestrum.log.NativeLogModule;
import veltra.kestrum.log.NativeLogModule.Level;
import veltra.kestrum.log.NativeLogModule.Sanity;
import veltra.kestrum.os.NativeLibrary;
import veltra.kestrum.os.Process;
import veltra.kestrum.os.Timing;

/**
 * The Java classes over the library in a real virtual machine, with the components of the examples.
 *
 * <p>Usage: BridgeTest LIBRARY_FOLDER SECONDS, with java.library.path leading to the components
 * only. Many threads print for SECONDS. The first failed check ends it.
 */
public final class BridgeTest {
    private static final int PRINTERS = 6; // of which two are native code
    private static final int MAX_LINES = 10_000_000; // of a printer; the next one's ids follow
    private static final String[] OPTIONS = {
        "--log-file gc=%s/one", "--log-file gc=>class", "--log-file gc=%s/two", "--log-file gc=>jit",
        "--log-file thread=%s/three,except=>thread", "--log-file thread=stderr,except=stderr",
        "--decorations level,module", "--decorations timestamp,pid,collections",
        "--decorations millis,nanos,osthreadid", "--decorations ",
        "--log jit=trace,gc=debug,thread", "--log jit=quiet,gc=info,thread=quiet",
        "--sanity gc=check,jit", "--sanity none"};
    private static final LongSummaryStatistics CHANGES = new LongSummaryStatistics(); // nanoseconds
    private static volatile boolean done;
    private static String folder;
    private static long lines;

    public static void main(String[] args) throws Exception {
        folder = Files.createTempDirectory("kxutil_java").toString();
        try {
            System.setProperty(NativeLibrary.FOLDER_PROPERTY, folder);
            same("java.lang.UnsatisfiedLinkError: Cannot load " + folder + "/libkxutil.so",
                    thrownBy(NativeLibrary::load).split(",")[0]);
            System.setProperty(NativeLibrary.FOLDER_PROPERTY, args[0]);
            Vm.start();
            sharesModules(NativeLogModule.get("collector"), NativeLogModule.get("VM"));
            printsTexts(NativeLogModule.get("VM"));
            readsProcessAndCounter();
            int rounds = 0;
            long end = System.nanoTime() + Integer.parseInt(args[1]) * 1_000_000_000L;
            for (; System.nanoTime() < end; rounds++) {
                printsFromManyThreads(rounds);
            }
            System.out.println(rounds + " rounds, " + lines + " lines, " + CHANGES.getCount()
                    + " option changes, the longest " + CHANGES.getMax() / 1_000_000 + " ms");
        } finally {
            done = true;
            new ProcessBuilder("rm", "-r", folder).start();
        }
    }

    private static void sharesModules(NativeLogModule gc, NativeLogModule vm) throws Exception {
        same(List.of("VM", "class", "except", "gc", "gc", "gc", "jit", "machine", "thread", "util"),
                NativeLogModule.names());
        NativeLogModule linked = NativeLogModule.get("gc"); // the newest of that name
        same(List.of("gc", Optional.of("collector"), Optional.empty(), Level.WARN, Sanity.NONE),
                List.of(gc.name(), gc.alias(), linked.alias(), gc.defaultLevel(), gc.defaultSanity()));
        option("--log gc=trace,VM=error");
        option("--sanity gc=check");
        same(List.of(Level.TRACE, Level.ERROR, Sanity.CHECK, Sanity.NONE),
                List.of(gc.level(), vm.level(), gc.sanity(), vm.sanity()));
        same(List.of(true, false, true, false), List.of(gc.isChecked(Sanity.CHECK),
                gc.isChecked(Sanity.DEBUG), vm.isEnabled(Level.ERROR), vm.isEnabled(Level.WARN)));
        vm.setLevel(Level.DEBUG);
        vm.setSanity(Sanity.TRACE);
        Vm.list(folder + "/listing");
        same("\tVM: level=DEBUG, decorations=3, sanity=TRACE", take("listing").get(0));
        option("--log-file %s/log");
        linked.setLevel(Level.QUIET);
        Vm.collect(1);
        linked.setLevel(Level.INFO);
        Vm.collect(2);
        same(List.of("[INFO ][gc     ] native: round 2"), take("log"));
    }

    private static void printsTexts(NativeLogModule vm) throws Exception {
        option("--log-file VM=%s/texts");
        vm.print(Level.TRACE, "%s %n 100%"); // whatever the level is
        vm.print(Level.TRACE, "caf\u00e9" + "x".repeat(10_000));
        option("--log VM=warn");
        vm.log(Level.INFO, "off");
        vm.log(Level.WARN, "\ud83d\ude00"); // two surrogates, encoded one by one
        same(List.of("[TRACE][VM     ] %s %n 100%",
                "[TRACE][VM     ] caf\u00c3\u00a9" + "x".repeat(1022 - 5),
                "[WARN ][VM     ] \u00ed\u00a0\u00bd\u00ed\u00b8\u0080"), take("texts"));
        same("java.lang.IllegalArgumentException: no such logmodule",
                thrownBy(() -> NativeLogModule.get("verbosegc"))); // has retired
        same("java.lang.NullPointerException: ", thrownBy(() -> vm.print(Level.ERROR, null)));
    }

    private static void readsProcessAndCounter() throws Exception {
        same(ProcessHandle.current().pid(), (long) Process.getpid());
        long java = System.nanoTime();
        long ticks = Timing.counterTime();
        long passed = Timing.nanoTime() - Timing.toNanos(ticks);
        java = System.nanoTime() - java;
        require(passed > 0 && passed <= java, "the counter: " + passed + " of " + java);
        same(1_000_000_000L, Timing.toNanos(Timing.ticksPerSecond()));
        var convert = Timing.class.getDeclaredMethod("toNanos", long.class, long.class);
        convert.setAccessible(true);
        same(9_000_000_000_333_333_333L, convert.invoke(null, 27_000_000_001_000_000L, 3_000_000L));
    }

    // Without pauses, while options change, modules are listed and components register. "jit" and
    // "class" hold a file each, between which "gc" moves; each line is in one, once and whole.
    private static void printsFromManyThreads(int round) throws Exception {
        option("--log quiet,gc=info");
        option("--log-file %1$s/one,class=%1$s/two");
        done = false;
        List<CompletableFuture<Integer>> threads = new ArrayList<>();
        for (int p = 0; p < PRINTERS; p++) {
            NativeLogModule module = NativeLogModule.get(p % 2 == 0 ? "gc" : "jit");
            threads.add(repeat(p * MAX_LINES,
                    p < 2 ? Vm::collect : id -> module.print(Level.INFO, text(id))));
        }
        IntConsumer change = n -> option(OPTIONS[ThreadLocalRandom.current().nextInt(OPTIONS.length)]);
        threads.add(repeat(0, change));
        threads.add(repeat(0, change));
        threads.add(repeat(0, n -> NativeLogModule.names()));
        threads.add(repeat(0, n -> Vm.list("/dev/null")));
        for (int i = 0; i < 16; i++) {
            Thread.sleep(20);
            if (round < 30) { // there is no room for thousands of libraries
                Path copy = Path.of(folder, "component" + round + "." + i);
                Files.copy(Path.of(System.getProperty("java.library.path"), "libvm.so"), copy);
                timed(() -> System.load(copy.toString()));
            }
        }
        done = true;
        threads.forEach(CompletableFuture::join);
        option("--log-file stderr");
        BitSet found = new BitSet();
        for (String line : take("one", "two")) {
            String text = line.replaceFirst("(\\[[^]]*])* ?", "");
            int id = Integer.parseInt(text.replaceAll("\\D", ""));
            require(text.equals(text(id)) && !found.get(id), "torn or twice: " + line);
            found.set(id);
        }
        for (int p = 0; p < PRINTERS; p++) {
            same(threads.get(p).join(), found.nextClearBit(p * MAX_LINES)); // the first that is lost
        }
        lines += found.cardinality();
    }

    private static CompletableFuture<Integer> repeat(int first, IntConsumer action) {
        return CompletableFuture.supplyAsync(() -> {
            int id = first;
            while (!done) {
                action.accept(id++);
            }
            return id;
        }, task -> new Thread(task).start());
    }

    private static String text(int id) {
        return id < 2 * MAX_LINES ? "native: round " + id : "java " + id + " " + "-".repeat(id % 200 + 1);
    }

    private static void option(String option) {
        String[] words = String.format(option, folder).split(" ", 2);
        timed(() -> Vm.option(words[0], words[1]));
    }

    private static void timed(Runnable change) {
        long nanos = System.nanoTime();
        change.run();
        nanos = System.nanoTime() - nanos;
        require(nanos < 1_000_000_000, "an option or a load took " + nanos + " ns");
        synchronized (CHANGES) {
            CHANGES.accept(nanos);
        }
    }

    // The lines of files, which are gone then.
    private static List<String> take(String... names) throws Exception {
        List<String> lines = new ArrayList<>();
        for (String name : names) {
            lines.addAll(Files.readAllLines(Path.of(folder, name), StandardCharsets.ISO_8859_1));
            Files.delete(Path.of(folder, name));
        }
        return lines;
    }

    private static String thrownBy(Runnable action) {
        try {
            action.run();
        } catch (Throwable e) {
            return e.toString();
        }
        throw new AssertionError("nothing thrown");
    }

    private static void same(Object expected, Object actual) {
        require(expected.equals(actual), "expected " + expected + ", not " + actual);
    }

    private static void require(boolean condition, String otherwise) {
        if (!condition) {
            throw new AssertionError(otherwise);
        }
    }
}
