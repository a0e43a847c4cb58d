package demo;

import java.util.ArrayList;
import java.util.List;
import veltra.kestrum.log.NativeLogModule;
import veltra.kestrum.log.NativeLogModule.Level;
import veltra.kestrum.os.Process;
import veltra.kestrum.os.Timing;

/**
 * Java threads that log through the modules of native components.
 *
 * <p>Takes the options of {@link Vm#option} with a value each, and {@code --list FILE}, which at the
 * end appends the listing of modules to that file, or to standard output for "-".
 */
public final class Main {
    private static final int THREADS = 3;
    private static final int ROUNDS = 2;

    private Main() {}

    public static void main(String[] args) throws InterruptedException {
        Vm.start();
        String listing = null;
        try {
            for (int i = 0; i + 1 < args.length; i += 2) {
                if (args[i].equals("--list")) {
                    listing = args[i + 1];
                } else {
                    Vm.option(args[i], args[i + 1]);
                }
            }
        } catch (IllegalArgumentException e) {
            System.err.println("rejected: " + e.getMessage());
            System.exit(2);
        }
        long start = Timing.nanoTime();
        work();
        NativeLogModule vm = NativeLogModule.get("VM");
        if (vm.isEnabled(Level.DEBUG)) {
            vm.print(Level.DEBUG, "process " + Process.getpid() + " worked for "
                    + (Timing.nanoTime() - start) / 1000 + " us");
        }
        if (listing != null) {
            Vm.list(listing);
        }
    }

    private static void work() throws InterruptedException {
        NativeLogModule gc = NativeLogModule.get("collector"); // an alias of "gc"
        NativeLogModule jit = NativeLogModule.get("jit");
        List<Thread> workers = new ArrayList<>();
        for (int t = 0; t < THREADS; t++) {
            String name = "Java thread " + t;
            workers.add(new Thread(() -> {
                for (int round = 0; round < ROUNDS; round++) {
                    jit.log(Level.INFO, name + ": round " + round);
                    gc.log(Level.INFO, name + ": round " + round);
                }
            }));
        }
        workers.forEach(Thread::start);
        for (Thread worker : workers) {
            worker.join();
        }
        Vm.collect(ROUNDS);
    }
}
