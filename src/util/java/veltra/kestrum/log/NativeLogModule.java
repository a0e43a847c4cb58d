package veltra.kestrum.log;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.lang.invoke.VarHandle;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.IntBuffer;
import java.util.List;
import java.util.NoSuchElementException;
import java.util.Objects;
import java.util.Optional;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.ConcurrentMap;
import java.util.function.Supplier;
import veltra.kestrum.os.NativeLibrary;

/**
 * A log module of a native component, for logging from Java.
 *
 * <p>Java and native code share the module: its levels, its decorations and its stream. When one
 * side sets a level, the other sees it immediately, and option strings reach both.
 *
 * <pre>{@code
 * private static final NativeLogModule GC = NativeLogModule.get("gc");
 *
 * if (GC.isEnabled(Level.DEBUG)) {
 *     GC.print(Level.DEBUG, "freed " + count + " objects");
 * }
 * }</pre>
 *
 * <p>All methods may be called from any thread. Null, where a name, a level or a text is wanted,
 * gives a {@link NullPointerException}.
 */
public final class NativeLogModule {
    /** How much a module tells, and how important a message is. */
    public enum Level {
        /** Messages that are always printed; a module that prints no others. */
        QUIET,
        /** Something failed. */
        ERROR,
        /** Something is doubtful. */
        WARN,
        /** Something of interest happened. */
        INFO,
        /** Details that help to find a fault. */
        DEBUG,
        /** Every step. */
        TRACE;

        private static final Level[] VALUES = values();

        // A number that names no level enables every message, as TRACE does.
        private static Level of(int word) {
            return word >= 0 && word < VALUES.length ? VALUES[word] : TRACE;
        }
    }

    /** How much a component checks itself. */
    public enum Sanity {
        /** Not at all. */
        NONE,
        /** Checks that cost almost nothing. */
        MINIMAL,
        /** Checks for careful users. */
        CHECK,
        /** Checks that help to find a fault. */
        DEBUG,
        /** Everything, with a trace. */
        TRACE;

        private static final Sanity[] VALUES = values();

        private static Sanity of(int word) {
            return word >= 0 && word < VALUES.length ? VALUES[word] : TRACE;
        }
    }

    // The longest message, in bytes of the virtual machine's UTF-8. A character takes at least one
    // byte, so longer texts need not be passed whole.
    private static final int MESSAGE_BYTES = 1022;
    private static final ConcurrentMap<String, NativeLogModule> MODULES = new ConcurrentHashMap<>();
    // Stands for no module. It is needed because the native that finds modules is an instance
    // method.
    private static final NativeLogModule FINDER;

    static {
        NativeLibrary.load();
        initIDs();
        // A direct buffer, as native code makes them: as long as a program loads no other class of
        // IntBuffer, compiled code need not test the class on each read.
        ByteBuffer none = ByteBuffer.allocateDirect(Integer.BYTES);
        FINDER = new NativeLogModule(0, new String[] {""}, none, none, 0, 0);
    }

    private final long module;
    private final String[] names;
    private final IntBuffer level;
    private final IntBuffer sanity;
    private final Level defaultLevel;
    private final Sanity defaultSanity;

    // Called from native code.
    private NativeLogModule(long module, String[] names, ByteBuffer level, ByteBuffer sanity,
            int defaultLevel, int defaultSanity) {
        this.module = module;
        this.names = names;
        this.level = level.order(ByteOrder.nativeOrder()).asIntBuffer();
        this.sanity = sanity.order(ByteOrder.nativeOrder()).asIntBuffer();
        this.defaultLevel = Level.of(defaultLevel);
        this.defaultSanity = Sanity.of(defaultSanity);
    }

    private static native void initIDs();

    private native NativeLogModule getModule0(String name);

    private static native String[] getModuleNames0();

    private static native void output(long module, int level, String str);

    /**
     * Finds a module by its name or its alias.
     *
     * <p>When several components have a module of that name, the one loaded last counts, as in
     * option strings. A module that was found is remembered under that name: the same name gives
     * the same object, also after another component with such a module is loaded. Name and alias
     * give two objects for one module.
     *
     * @param name the name or alias; upper and lower case differ
     * @return the module
     * @throws IllegalArgumentException with the message "no such logmodule", if no component loaded
     *     so far has such a module; a retired name is none. Its cause, a
     *     {@link NoSuchElementException}, tells the name.
     */
    public static NativeLogModule get(String name) {
        NativeLogModule known = MODULES.get(Objects.requireNonNull(name, "name"));
        return known != null ? known : MODULES.computeIfAbsent(name, NativeLogModule::find);
    }

    private static NativeLogModule find(String name) {
        try {
            return FINDER.getModule0(name);
        } catch (IllegalArgumentException e) {
            e.initCause(new NoSuchElementException("log module \"" + name + "\""));
            throw e;
        }
    }

    /**
     * Lists the modules of all components loaded so far.
     *
     * @return the names, without aliases, sorted by their bytes; a name comes up once for each
     *     component that has such a module
     * @throws OutOfMemoryError if there is no memory for the list
     */
    public static List<String> names() {
        return List.of(getModuleNames0());
    }

    /**
     * Returns the module's name.
     *
     * @return the name, even if the module was found by its alias
     */
    public String name() {
        return names[0];
    }

    /**
     * Returns the module's alias.
     *
     * @return the second name, if it has one
     */
    public Optional<String> alias() {
        return names.length > 1 ? Optional.of(names[1]) : Optional.empty();
    }

    /**
     * Tests whether messages of a level are to be printed. The cost is that of reading one word.
     *
     * @param at the message's level
     * @return true if the module's level is that one or a more detailed one
     */
    public boolean isEnabled(Level at) {
        return Integer.compareUnsigned(read(level), at.ordinal()) >= 0;
    }

    /**
     * Returns the module's level.
     *
     * @return the level that the module has now
     */
    public Level level() {
        return Level.of(read(level));
    }

    /**
     * Sets the module's level, and not that of modules that it is linked to.
     *
     * @param to the new level
     */
    public void setLevel(Level to) {
        write(level, to.ordinal());
    }

    /**
     * Returns the level that a reset gives the module.
     *
     * @return the default level of the module's component
     */
    public Level defaultLevel() {
        return defaultLevel;
    }

    /**
     * Tests whether the component is to check itself to some extent.
     *
     * @param check the extent
     * @return true if the module's sanity level is that one or a more thorough one
     */
    public boolean isChecked(Sanity check) {
        return Integer.compareUnsigned(read(sanity), check.ordinal()) >= 0;
    }

    /**
     * Returns the module's sanity level.
     *
     * @return the sanity level that the module has now
     */
    public Sanity sanity() {
        return Sanity.of(read(sanity));
    }

    /**
     * Sets the module's sanity level, and not that of modules that it is linked to.
     *
     * @param to the new sanity level
     */
    public void setSanity(Sanity to) {
        write(sanity, to.ordinal());
    }

    /**
     * Returns the sanity level that a reset gives the module.
     *
     * @return the default sanity level of the module's component
     */
    public Sanity defaultSanity() {
        return defaultSanity;
    }

    /**
     * Prints a message if its level is enabled. Where making the text costs something, test
     * {@link #isEnabled} first and {@link #print} it. A null text is noticed only when it is printed.
     *
     * @param at the message's level
     * @param text the finished message
     */
    public void log(Level at, String text) {
        if (isEnabled(at)) {
            print(at, text);
        }
    }

    /**
     * Prints a message if its level is enabled, and makes its text only then.
     *
     * @param at the message's level
     * @param text makes the finished message; called at most once, on this thread
     */
    public void log(Level at, Supplier<String> text) {
        if (isEnabled(at)) {
            print(at, text.get());
        }
    }

    /**
     * Prints a message and a stack trace if their level is enabled: a line for the message, then one
     * for each line of {@link Throwable#printStackTrace()}, causes and suppressed exceptions
     * included. A line of the trace that is too long for one message goes on in further ones. Lines
     * of other threads may come in between.
     *
     * @param at the level of all lines
     * @param text the finished message
     * @param thrown what was thrown; null for none
     */
    public void log(Level at, String text, Throwable thrown) {
        if (!isEnabled(at)) {
            return;
        }
        print(at, text);
        if (thrown != null) {
            StringWriter trace = new StringWriter();
            thrown.printStackTrace(new PrintWriter(trace, true));
            trace.toString().lines().forEach(line -> printWhole(at, line));
        }
    }

    private void printWhole(Level at, String line) {
        int start = 0;
        int bytes = 0;
        for (int i = 0; i < line.length(); i++) {
            char c = line.charAt(i);
            int size = c == 0 || c >= 0x80 ? c >= 0x800 ? 3 : 2 : 1;
            if (bytes + size > MESSAGE_BYTES) {
                print(at, line.substring(start, i));
                start = i;
                bytes = 0;
            }
            bytes += size;
        }
        print(at, line.substring(start));
    }

    /**
     * Prints a message whatever the module's level is: one line with the module's decorations, on
     * the module's stream, whole and flushed. The text is printed as it is and cut after 1022 bytes of
     * the virtual machine's UTF-8, within a character if need be.
     *
     * @param at the message's level, which the line may show
     * @param text the finished message
     * @throws NullPointerException if the text is null
     */
    public void print(Level at, String text) {
        boolean isCut = text != null && text.length() > MESSAGE_BYTES + 1;
        output(module, at.ordinal(), isCut ? text.substring(0, MESSAGE_BYTES + 1) : text);
    }

    /** Returns the module's name. */
    @Override
    public String toString() {
        return name();
    }

    // The fence makes each call read the word again, also in a loop that waits for a level to
    // change.
    private static int read(IntBuffer word) {
        VarHandle.loadLoadFence();
        return word.get(0);
    }

    private static void write(IntBuffer word, int value) {
        word.put(0, value);
        VarHandle.storeStoreFence();
    }
}
