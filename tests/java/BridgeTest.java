import demo.Vm;
import java.io.*;
import java.nio.charset.StandardCharsets;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.concurrent.atomic.AtomicLong;
import java.util.function.IntConsumer;
import veltra.kestrum.log.NativeLogModule;
import veltra.kestrum.log.NativeLogModule.*;
import veltra.kestrum.os.*;
import veltra.kestrum.os.Process;

/**
 * The Java classes over the library in a real virtual machine, with the components of the examples,
 * which alone java.library.path leads to. Many threads print for SECONDS. The first failed check
 * ends it. Usage: BridgeTest LIBRARY_FOLDER SECONDS
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
    private static final AtomicLong LONGEST = new AtomicLong(); // option or load, in nanoseconds
    private static volatile boolean done;
    private static String folder;

    public static void main(String[] args) throws Exception {
        folder = Files.createTempDirectory("kxutil_java").toString();
        try {
            failsToLoad(folder + "\0", "Can't load"); // no Path can be made of it
            Files.copy(Path.of(args[0], "libkxutil.so"), Path.of(folder, "libkxutil.so"));
            failsToLoad(folder, "libkxosal.so: cannot open");
            System.setProperty(NativeLibrary.FOLDER_PROPERTY, args[0]);
            Vm.start();
            sharesModules(NativeLogModule.get("collector"), NativeLogModule.get("VM"));
            printsTexts(NativeLogModule.get("VM"));
            readsProcessAndCounter();
            long lines = 0;
            long end = System.nanoTime() + Integer.parseInt(args[1]) * 1_000_000_000L;
            for (int round = 0; System.nanoTime() < end; round++) {
                lines += printsFromManyThreads(round);
            }
            System.out.println(lines + " lines, the longest option or load " + LONGEST + " ns");
        } finally {
            done = true;
            new ProcessBuilder("rm", "-r", folder).start();
        }
    }

    private static void failsToLoad(String from, String why) {
        System.setProperty(NativeLibrary.FOLDER_PROPERTY, from);
        String told = thrownBy(NativeLibrary::load).toString();
        require(told.startsWith(UnsatisfiedLinkError.class.getName() + ": Cannot load " + from
                + "/libkxutil.so, in the folder that -Dveltra.kestrum.library.folder names (")
                && told.contains(why), told);
    }

    private static void sharesModules(NativeLogModule gc, NativeLogModule vm) throws Exception {
        NativeLogModule linked = NativeLogModule.get("gc"); // the newest of that name
        option("--log gc=trace,VM=error");
        option("--sanity gc=check");
        same(List.of("gc", Optional.of("collector"), Optional.empty(), Level.WARN, Sanity.NONE,
                List.of("VM", "class", "except", "gc", "gc", "gc", "jit", "machine", "thread", "util"),
                Level.TRACE, Sanity.CHECK, true, false, Level.ERROR, Sanity.NONE, true, false), List.of(
                gc.name(), gc.alias(), linked.alias(), gc.defaultLevel(), gc.defaultSanity(),
                NativeLogModule.names(),
                gc.level(), gc.sanity(), gc.isChecked(Sanity.CHECK), gc.isChecked(Sanity.DEBUG),
                vm.level(), vm.sanity(), vm.isEnabled(Level.ERROR), vm.isEnabled(Level.WARN)));
        vm.setLevel(Level.DEBUG);
        vm.setSanity(Sanity.TRACE);
        Vm.list(folder + "/list");
        same("\tVM: level=DEBUG, decorations=3, sanity=TRACE", contents("list").split("\n")[0]);
    }

    private static void printsTexts(NativeLogModule vm) throws Exception {
        String million = "caf\u00e9" + "x".repeat(1_000_000);
        String cut = "[TRACE][VM     ] caf\u00c3\u00a9" + "x".repeat(1022 - 5) + "\n";
        String chars = "\0\u00e9\u20ac"; // 7 bytes, 146 times in a line, 143 times in the first
        String bytes = "\u00c0\u0080\u00c3\u00a9\u00e2\u0082\u00ac";
        Exception thrown = new Exception(chars.repeat(143 + 146) + "end", new Error("cause"));
        thrown.addSuppressed(new Error("suppressed"));
        StringWriter trace = new StringWriter();
        thrown.printStackTrace(new PrintWriter(trace));
        option("--log-file VM=%s/texts");
        vm.print(Level.TRACE, "%s %n 100%"); // whatever the level is
        vm.print(Level.TRACE, million);
        vm.print(Level.TRACE, million.substring(0, 1023));
        option("--log VM=warn");
        vm.log(Level.INFO, "off");
        vm.log(Level.INFO, () -> Objects.requireNonNull(null));
        vm.log(Level.INFO, "off", thrown);
        vm.log(Level.WARN, () -> "\ud83d\ude00"); // two surrogates, encoded one by one
        vm.log(Level.WARN, "on", thrown);
        same("[TRACE][VM     ] %s %n 100%\n" + cut + cut + "\u00ed\u00a0\u00bd\u00ed\u00b8\u0080\non\n"
                + trace.toString().replace(chars.repeat(143 + 146),
                        bytes.repeat(143) + "\n" + bytes.repeat(146) + "\n"),
                contents("texts").replace("[WARN ][VM     ] ", ""));
        Throwable unknown = thrownBy(() -> NativeLogModule.get("verbosegc")); // has retired
        same("java.lang.IllegalArgumentException: no such logmodule", unknown.toString());
        require(unknown.getCause().getMessage().contains("\"verbosegc\""), "no name");
        require(thrownBy(() -> vm.print(Level.WARN, null)) instanceof NullPointerException, "null");
    }

    private static void readsProcessAndCounter() {
        same(ProcessHandle.current().pid(), (long) Process.getpid());
        long before = System.nanoTime(); // of the same clock
        long now = Timing.nanoTime();
        require(before <= now && now <= System.nanoTime(), "the counter: " + now);
        same(1_000_000_000L, Timing.ticksPerSecond());
        same(27_000_000_001_000_000L, Timing.toNanos(27_000_000_001_000_000L)); // without overflow
    }

    // Without pauses, while options change, modules are listed and components register. "jit" and
    // "class" hold a file each, between which "gc" moves; each line is in one, once and whole.
    private static int printsFromManyThreads(int round) throws Exception {
        option("--log quiet,gc=info");
        option("--log-file %1$s/one,class=%1$s/two");
        done = false;
        List<CompletableFuture<Integer>> threads = new ArrayList<>();
        for (int p = 0; p < PRINTERS; p++) {
            NativeLogModule module = NativeLogModule.get(p % 2 == 0 ? "gc" : "jit");
            threads.add(repeat(p, p < 2 ? Vm::collect : id -> module.print(Level.INFO, text(id))));
        }
        IntConsumer change = n -> option(OPTIONS[(int) (Math.random() * OPTIONS.length)]);
        threads.addAll(List.of(repeat(0, change), repeat(0, change),
                repeat(0, n -> NativeLogModule.names()), repeat(0, n -> Vm.list("/dev/null"))));
        for (int i = 0; i < 16; i++) {
            Thread.sleep(20);
            if (round < 30) { // there is no room for thousands of libraries
                Path component = Path.of(System.getProperty("java.library.path"), "libvm.so");
                Path copy = Files.copy(component, Path.of(folder, "component" + round + "." + i));
                timed(() -> System.load(copy.toString()));
            }
        }
        done = true;
        threads.forEach(CompletableFuture::join);
        option("--log-file stderr");
        BitSet found = new BitSet();
        for (String line : (contents("one") + contents("two")).split("\n")) {
            String text = line.replaceFirst("(\\[[^]]*])* ?", "");
            int id = Integer.parseInt(text.replaceAll("\\D", ""));
            require(text.equals(text(id)) && !found.get(id), "torn or twice: " + line);
            found.set(id);
        }
        for (int p = 0; p < PRINTERS; p++) {
            same(threads.get(p).join(), found.nextClearBit(p * MAX_LINES)); // the first one lost
        }
        return found.cardinality();
    }

    private static CompletableFuture<Integer> repeat(int printer, IntConsumer action) {
        return CompletableFuture.supplyAsync(() -> {
            int id = printer * MAX_LINES;
            while (!done) {
                action.accept(id++);
            }
            return id;
        }, task -> new Thread(task).start());
    }

    private static String text(int id) {
        return id < 2 * MAX_LINES ? "native: round " + id : "java " + id + "-".repeat(id % 200);
    }

    private static void option(String option) {
        String[] words = String.format(option, folder).split(" ", 2);
        timed(() -> Vm.option(words[0], words[1]));
    }

    private static void timed(Runnable change) {
        long start = System.nanoTime();
        change.run();
        long longest = LONGEST.accumulateAndGet(System.nanoTime() - start, Math::max);
        require(longest < 1_000_000_000, "an option or a load took " + longest + " ns");
    }

    private static String contents(String name) throws IOException {
        return Files.readString(Path.of(folder, name), StandardCharsets.ISO_8859_1);
    }

    private static Throwable thrownBy(Runnable action) {
        return CompletableFuture.runAsync(action).handle((none, e) -> e.getCause()).join();
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
