import demo.Vm;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.Optional;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.stream.IntStream;
import veltra.kestrum.log.NativeLogModule;
import veltra.kestrum.log.NativeLogModule.Level;
import veltra.kestrum.log.NativeLogModule.Sanity;
import veltra.kestrum.os.NativeLibrary;
import veltra.kestrum.os.Process;
import veltra.kestrum.os.Timing;

/**
 * The Java classes over the library in a real virtual machine, with the components of the examples.
 *
 * <p>Usage: BridgeTest LIBRARY_FOLDER, with java.library.path leading to the components only. The
 * first failed check ends it.
 */
public final class BridgeTest {
    private interface Check {
        void run() throws Exception;
    }

    private static Path folder;
    private static NativeLogModule gc;
    private static NativeLogModule vm;

    public static void main(String[] args) throws Exception {
        folder = Files.createTempDirectory("kxutil_java");
        try {
            namesWhatItLooksFor();
            System.setProperty(NativeLibrary.FOLDER_PROPERTY, args[0]);
            Vm.start();
            gc = NativeLogModule.get("collector");
            vm = NativeLogModule.get("VM");
            findsAndLists();
            sharesLevels();
            printsTexts();
            throwsExceptions();
            printsFromManyThreads();
            looksUpWithoutLeak();
            readsProcessAndCounter();
        } finally {
            try (var files = Files.list(folder)) {
                files.forEach(file -> file.toFile().delete());
            }
            Files.delete(folder);
        }
    }

    private static void namesWhatItLooksFor() {
        String error = thrownBy(NativeLibrary::load).getMessage();
        require(error.startsWith("Cannot load libkxutil.so from java.library.path, which is "
                + System.getProperty("java.library.path") + ";"), error);
        System.setProperty(NativeLibrary.FOLDER_PROPERTY, folder.toString());
        error = thrownBy(NativeLibrary::load).getMessage();
        require(error.startsWith("Cannot load " + folder + "/libkxutil.so,"), error);
    }

    private static void findsAndLists() {
        same(List.of("VM", "deopt", "gc", "gc", "heap", "inline", "jit", "sweep", "util"),
                NativeLogModule.names());
        same("gc", gc.name());
        same(Optional.of("collector"), gc.alias());
        same(gc, NativeLogModule.get("collector"));
        same(Optional.empty(), NativeLogModule.get("gc").alias()); // the linked module is newer
        same(Level.WARN, gc.defaultLevel());
        same(Sanity.NONE, gc.defaultSanity());
    }

    private static void sharesLevels() throws IOException {
        Vm.option("--log", "gc=trace,VM=error");
        Vm.option("--sanity", "gc=check");
        same(List.of(Level.TRACE, Level.ERROR), List.of(gc.level(), vm.level()));
        same(List.of(Sanity.CHECK, Sanity.NONE), List.of(gc.sanity(), vm.sanity()));
        require(gc.isChecked(Sanity.CHECK) && !gc.isChecked(Sanity.DEBUG), "sanity");
        require(vm.isEnabled(Level.ERROR) && !vm.isEnabled(Level.WARN), "level");
        vm.setLevel(Level.DEBUG);
        vm.setSanity(Sanity.TRACE);
        NativeLogModule.get("gc").setLevel(Level.QUIET);
        Vm.option("--log-file", file("log"));
        Vm.collect(1);
        NativeLogModule.get("gc").setLevel(Level.INFO);
        Vm.collect(2);
        same(List.of("[INFO ][gc     ] native: round 2"), lines("log"));
        Vm.list(file("listing"));
        same("\tVM: level=DEBUG, decorations=3, sanity=TRACE", lines("listing").get(0));
        Vm.option("--sanity", "none");
    }

    private static void printsTexts() throws IOException {
        Vm.option("--log-file", "VM=" + file("texts"));
        String[] texts = {"%s %n 100%", "", "caf\u00e9 \u4e2d\u6587", "two\nlines\n", "x".repeat(10_000)};
        for (String text : texts) {
            vm.print(Level.TRACE, text); // whatever the level is
        }
        Vm.option("--log", "VM=warn");
        vm.log(Level.INFO, "off");
        vm.log(Level.WARN, "\ud83d\ude00"); // two surrogates, encoded one by one
        String trace = "[TRACE][VM     ] ";
        String expected = trace + texts[0] + "\n" + trace + "\n" + trace + texts[2] + "\n" + trace
                + texts[3] + trace + "x".repeat(1022) + "\n";
        byte[] last = {(byte) 0xed, (byte) 0xa0, (byte) 0xbd, (byte) 0xed, (byte) 0xb8, (byte) 0x80};
        byte[] printed = Files.readAllBytes(Path.of(file("texts")));
        int surrogates = printed.length - last.length - 1;
        same(expected + "[WARN ][VM     ] ", new String(printed, 0, surrogates, StandardCharsets.UTF_8));
        require(Arrays.equals(last, 0, 6, printed, surrogates, printed.length - 1), "surrogates");
    }

    private static void throwsExceptions() {
        Throwable thrown = thrownBy(() -> NativeLogModule.get("verbosegc")); // has retired
        same("java.lang.IllegalArgumentException: no such logmodule", thrown.toString());
        thrown = thrownBy(() -> vm.print(Level.ERROR, null));
        same("java.lang.NullPointerException: ", thrown.toString());
        same(NullPointerException.class, thrownBy(() -> NativeLogModule.get(null)).getClass());
        same(NullPointerException.class, thrownBy(() -> getModule0(null)).getClass());
    }

    private static void printsFromManyThreads() throws Exception {
        Vm.option("--log-file", file("many"));
        AtomicBoolean done = new AtomicBoolean();
        Thread meddler = new Thread(() -> {
            for (int i = 0; !done.get(); i++) {
                NativeLogModule.names();
                Vm.list(file("listing"));
                gc.setLevel(i % 2 == 0 ? Level.TRACE : Level.QUIET);
                Vm.option("--log", "jit=" + (i % 2 == 0 ? "debug" : "error"));
            }
        });
        meddler.start();
        List<String> expected = new ArrayList<>();
        List<Thread> writers = new ArrayList<>();
        for (int t = 0; t < 8; t++) {
            NativeLogModule module = t % 2 == 0 ? gc : NativeLogModule.get("jit");
            String text = "thread " + t + " " + "-".repeat(100 * t) + " line ";
            for (int i = 0; i < 500; i++) {
                expected.add(String.format("[INFO ][%-7s] %s%d", module.name(), text, i));
            }
            writers.add(new Thread(() -> IntStream.range(0, 500).forEach(
                    i -> module.print(Level.INFO, text + i))));
        }
        writers.forEach(Thread::start);
        for (Thread writer : writers) {
            writer.join();
        }
        done.set(true);
        meddler.join();
        List<String> printed = new ArrayList<>(lines("many"));
        printed.sort(null);
        expected.sort(null);
        same(expected, printed);
    }

    // The compiler takes memory while it works; a leak goes on in every round.
    private static void looksUpWithoutLeak() throws Exception {
        long grown = Long.MAX_VALUE;
        for (int round = 0; round < 6 && grown >= 500; round++) {
            long before = residentPages();
            lookUp(100_000);
            grown = residentPages() - before;
        }
        require(grown < 500, "grown by " + grown + " pages");
    }

    private static void lookUp(int times) throws Exception {
        String unknown = "no such module ".repeat(20);
        for (int i = 0; i < times; i++) {
            require(getModule0("heap").name().equals("heap"), "a module");
            if (i % 10 == 0) {
                thrownBy(() -> NativeLogModule.get(unknown));
                NativeLogModule.names();
            }
        }
    }

    private static void readsProcessAndCounter() throws Exception {
        same(ProcessHandle.current().pid(), (long) Process.getpid());
        long java = System.nanoTime();
        long ticks = Timing.counterTime();
        long nanos = Timing.nanoTime();
        java = System.nanoTime() - java;
        require(ticks > 0 && nanos - Timing.toNanos(ticks) >= 0, "the counter runs backwards");
        require(nanos - Timing.toNanos(ticks) <= java, "the counter runs too fast");
        same(Timing.ticksPerSecond(), hidden(Timing.class, "init").invoke(null)); // once more
        require(Timing.counterTime() > ticks, "the counter stands still");
        Method convert = hidden(Timing.class, "toNanos", long.class, long.class);
        same(9_000_000_000_333_333_333L, convert.invoke(null, 27_000_000_001_000_000L, 3_000_000L));
        same(-333L, convert.invoke(null, -1L, 3_000_000L));
    }

    private static long residentPages() throws IOException {
        return Long.parseLong(Files.readString(Path.of("/proc/self/statm")).split(" ")[1]);
    }

    // The look-up behind the cache.
    private static NativeLogModule getModule0(String name) throws Exception {
        try {
            return (NativeLogModule) hidden(NativeLogModule.class, "getModule0", String.class)
                    .invoke(gc, name);
        } catch (InvocationTargetException e) {
            throw (Exception) e.getCause();
        }
    }

    private static Method hidden(Class<?> owner, String name, Class<?>... types) throws Exception {
        Method method = owner.getDeclaredMethod(name, types);
        method.setAccessible(true);
        return method;
    }

    private static String file(String name) {
        return folder.resolve(name).toString();
    }

    private static List<String> lines(String name) throws IOException {
        return Files.readAllLines(Path.of(file(name)));
    }

    private static Throwable thrownBy(Check check) {
        try {
            check.run();
        } catch (Throwable e) {
            return e;
        }
        throw new AssertionError("nothing thrown");
    }

    private static void same(Object expected, Object actual) {
        require(Objects.equals(expected, actual), "expected " + expected + ", not " + actual);
    }

    private static void require(boolean condition, String otherwise) {
        if (!condition) {
            throw new AssertionError(otherwise);
        }
    }
}
