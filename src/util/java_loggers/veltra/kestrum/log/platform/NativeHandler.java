package veltra.kestrum.log.platform;

import java.util.logging.Handler;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.SimpleFormatter;
import veltra.kestrum.log.NativeLogModule;

/**
 * A handler of {@code java.util.logging} that prints to native log modules. The names of loggers are
 * mapped to modules as {@link NativeLoggerFinder} says; records of a logger that is mapped to none
 * are left to other handlers. A record is printed when the handler and the module both let it pass.
 */
public final class NativeHandler extends Handler {
    private final SimpleFormatter formatter = new SimpleFormatter();

    /** A handler that lets every record pass. */
    public NativeHandler() {
        setLevel(Level.ALL);
    }

    @Override
    public void publish(LogRecord record) {
        if (!isLoggable(record)) {
            return;
        }
        String name = record.getLoggerName();
        ModuleMap.moduleOf(name != null ? name : "").ifPresent(module -> {
            NativeLogModule.Level level = moduleLevel(record.getLevel().intValue());
            if (module.isEnabled(level)) {
                module.log(level, formatter.formatMessage(record), record.getThrown());
            }
        });
    }

    private static NativeLogModule.Level moduleLevel(int value) {
        if (value >= Level.SEVERE.intValue()) {
            return NativeLogModule.Level.ERROR;
        }
        if (value >= Level.WARNING.intValue()) {
            return NativeLogModule.Level.WARN;
        }
        if (value >= Level.INFO.intValue()) {
            return NativeLogModule.Level.INFO;
        }
        boolean isDetail = value >= Level.FINE.intValue();
        return isDetail ? NativeLogModule.Level.DEBUG : NativeLogModule.Level.TRACE;
    }

    /** Does nothing: lines are flushed when they are printed. */
    @Override
    public void flush() {}

    /** Does nothing: modules are never closed. */
    @Override
    public void close() {}
}
