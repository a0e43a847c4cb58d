package veltra.kestrum.os;

/** A class of this name that has nothing to register: its initialisation has to fail. */
final class Timing {
    private static native long init();

    /** Usage: Timing LIBRARY. Ends with 1 unless the library objects. */
    public static void main(String[] args) {
        System.load(args[0]);
        try {
            init();
            System.exit(1);
        } catch (NoSuchMethodError e) {
            System.out.println("passed: " + e.getMessage());
        }
    }
}
