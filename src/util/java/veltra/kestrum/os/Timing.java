package veltra.kestrum.os;

/**
 * The platform layer's high-resolution counter.
 *
 * <p>It never runs backwards and is not moved by changes of the wall clock. It counts from an
 * unspecified start and is meant for differences. Native components read the same counter, so
 * their readings and Java's can be compared.
 */
public final class Timing {
    private static final long NANOS_PER_SECOND = 1_000_000_000;
    private static final long TICKS_PER_SECOND;

    static {
        NativeLibrary.load();
        TICKS_PER_SECOND = init();
    }

    private Timing() {}

    /** Registers {@link #counterTime} and returns the counter's ticks per second. */
    private static native long init();

    /**
     * Returns the counter.
     *
     * @return the current reading, in ticks
     */
    public static native long counterTime();

    /**
     * Returns how fast the counter runs.
     *
     * @return ticks per second, constant while the process runs
     */
    public static long ticksPerSecond() {
        return TICKS_PER_SECOND;
    }

    /**
     * Converts ticks to nanoseconds, rounding towards zero.
     *
     * @param ticks a reading of the counter, or the difference of two
     * @return the nanoseconds that many ticks take
     */
    public static long toNanos(long ticks) {
        return toNanos(ticks, TICKS_PER_SECOND);
    }

    // Converts whole seconds and the rest separately, so that neither product exceeds a long: that
    // of the rest does not for counters of up to 9 GHz, and that of the seconds only when the
    // result does.
    static long toNanos(long ticks, long ticksPerSecond) {
        return ticks / ticksPerSecond * NANOS_PER_SECOND
                + ticks % ticksPerSecond * NANOS_PER_SECOND / ticksPerSecond;
    }

    /**
     * Returns the counter in nanoseconds.
     *
     * @return the current reading, converted
     */
    public static long nanoTime() {
        return toNanos(counterTime());
    }
}
