import java.io.IOException;
import java.io.InputStream;

/**
 * A program for the agent to watch: each round of a worker allocates, throws and loads a class.
 *
 * <p>Usage: Busy WORKERS ROUNDS, where 0 means without end. Prints "worker round" for each one
 * finished.
 */
public final class Busy {
    private static final int BLOCKS = 64;
    private static final int BLOCK_BYTES = 1 << 14;

    private Busy() {}

    /** The class that each round loads again. */
    static final class Item {}

    /** Thrown for each block. */
    static final class Lost extends RuntimeException {
        private static final long serialVersionUID = 1;
    }

    private static final class Loader extends ClassLoader {
        Class<?> define(byte[] bytes) {
            return defineClass("Busy$Item", bytes, 0, bytes.length);
        }
    }

    public static void main(String[] args) throws IOException {
        Thread.setDefaultUncaughtExceptionHandler((thread, exception) -> {}); // each worker ends by one
        int rounds = Integer.parseInt(args[1]);
        byte[] item;
        try (InputStream in = Busy.class.getResourceAsStream("Busy$Item.class")) {
            item = in.readAllBytes();
        }
        for (int worker = 0; worker < Integer.parseInt(args[0]); worker++) {
            String name = "worker " + worker;
            new Thread(() -> work(name, rounds, item), name).start();
        }
    }

    private static void work(String name, int rounds, byte[] item) {
        for (int round = 0; rounds == 0 || round < rounds; round++) {
            for (int i = 0; i < BLOCKS; i++) {
                try {
                    lose(new byte[BLOCK_BYTES]);
                } catch (Lost e) {
                    continue;
                }
            }
            new Loader().define(item);
            System.out.println(name + " " + round);
        }
        lose(null);
    }

    private static void lose(byte[] block) {
        throw new Lost();
    }
}
