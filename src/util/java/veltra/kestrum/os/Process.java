package veltra.kestrum.os;

/**
 * The running process as the platform layer sees it. Name it in full, or import it alone: with
 * a wildcard import of this package the simple name is ambiguous, because it also means
 * {@link java.lang.Process}.
 */
public final class Process {
    static {
        NativeLibrary.load();
    }

    private Process() {}

    /**
     * Returns the id of the running process.
     *
     * @return the process id, as on log lines decorated with it
     */
    public static native int getpid();
}
