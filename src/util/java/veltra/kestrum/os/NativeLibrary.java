package veltra.kestrum.os;

import java.io.File;

/**
 * The native library behind the classes of this tree, loaded when the first of them is used.
 *
 * <p>It is {@code libkxutil.so} in the folder that the system property {@value #FOLDER_PROPERTY}
 * names; without the property, in a folder of {@code java.library.path}. The platform layer
 * {@code libkxosal.so} lies beside it.
 */
public final class NativeLibrary {
    /** The system property that names the library's folder. */
    public static final String FOLDER_PROPERTY = "veltra.kestrum.library.folder";

    private static final String NAME = "kxutil";
    private static boolean loaded;

    private NativeLibrary() {}

    /**
     * Loads the library unless that is done already. Any thread may call this at any time.
     *
     * @throws UnsatisfiedLinkError if the library cannot be loaded; its message names what was
     *     looked for, where, and why it failed
     */
    public static synchronized void load() {
        if (loaded) {
            return;
        }
        String folder = System.getProperty(FOLDER_PROPERTY);
        if (folder != null) {
            loadFrom(folder);
        } else {
            loadFromLibraryPath();
        }
        loaded = true;
    }

    private static void loadFrom(String folder) {
        // Not a Path, because none can be made from a name that the locale cannot encode.
        String file = new File(folder, System.mapLibraryName(NAME)).getAbsolutePath();
        try {
            System.load(file);
        } catch (UnsatisfiedLinkError e) {
            throw explained("Cannot load " + file + ", in the folder that -D" + FOLDER_PROPERTY
                    + " names (" + e.getMessage() + ")", e);
        }
    }

    private static void loadFromLibraryPath() {
        try {
            System.loadLibrary(NAME);
        } catch (UnsatisfiedLinkError e) {
            throw explained("Cannot load " + System.mapLibraryName(NAME)
                    + " from java.library.path, which is "
                    + System.getProperty("java.library.path") + "; -D" + FOLDER_PROPERTY
                    + " is not set (" + e.getMessage() + ")", e);
        }
    }

    private static UnsatisfiedLinkError explained(String message, UnsatisfiedLinkError cause) {
        UnsatisfiedLinkError error = new UnsatisfiedLinkError(message);
        error.initCause(cause);
        return error;
    }
}
