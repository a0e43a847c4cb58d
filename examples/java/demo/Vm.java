package demo;

import veltra.kestrum.os.NativeLibrary;

/** Stands in for the virtual machine: loads its native components and reads its command line. */
public final class Vm {
    private Vm() {}

    /** Loads the library and the components; called first. */
    public static void start() {
        NativeLibrary.load();
        System.loadLibrary("kxagent"); // two components, which need no virtual machine to log
        System.loadLibrary("vm"); // after the module that it links to
    }

    /**
     * Applies an option such as {@code --log}.
     *
     * @throws IllegalArgumentException with the reason, if it is rejected
     */
    public static native void option(String name, String value);

    /** Appends the listing of all modules to a file, or to standard output for "-". */
    public static native void list(String file);

    /** Logs from native code, on a module "gc" that is linked to that of another component. */
    public static native void collect(int round);
}
