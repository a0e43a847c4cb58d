package demo;

import veltra.kestrum.os.NativeLibrary;

/** Stands in for the virtual machine: loads its native components and reads its command line. */
public final class Vm {
    private Vm() {}

    /** Loads the library and the components; called first. */
    public static void start() {
        NativeLibrary.load();
        System.loadLibrary("gc");
        System.loadLibrary("jit");
        System.loadLibrary("vm"); // after the collector, whose module it links to
    }

    /**
     * Applies an option such as {@code --log}.
     *
     * @throws IllegalArgumentException with the reason, if it is rejected
     */
    public static native void option(String name, String value);

    /** Appends the listing of all modules to a file, or to standard output for "-". */
    public static native void list(String file);

    /** Logs from native code, on the module "gc" of a component that is linked to the collector. */
    public static native void collect(int round);
}
