package veltra.kestrum.log.platform;

import java.lang.System.Logger;
import java.text.MessageFormat;
import java.util.MissingResourceException;
import java.util.ResourceBundle;
import veltra.kestrum.log.NativeLogModule;

/**
 * Makes the loggers of {@link System#getLogger} print to native log modules. The system property
 * {@code veltra.kestrum.log.modules} maps the names of loggers to modules: a list of
 * {@code prefix=module}, where the longest prefix in whole parts counts, and of one bare module for
 * all other names, as in {@code com.acme=app,java=jdk,other}.
 *
 * <p>A logger always has the present level of its module. If a logger is mapped to no module, or to
 * one that does not exist when the logger is made, or if the library cannot be loaded,
 * {@code java.util.logging} takes its messages. Without the Java module {@code java.logging}, those
 * of level INFO or above go to standard error. A missing log module or library is reported once on
 * standard error.
 */
public final class NativeLoggerFinder extends System.LoggerFinder {
    /** For the service loader. */
    public NativeLoggerFinder() {}

    @Override
    public Logger getLogger(String name, Module module) {
        return ModuleMap.moduleOf(name)
                .<Logger>map(found -> new ModuleLogger(name, found))
                .orElseGet(() -> fallback(name));
    }

    private static Logger fallback(String name) {
        boolean hasJul = ModuleLayer.boot().findModule("java.logging").isPresent();
        return hasJul ? new JulLogger(name) : new ErrorLogger(name);
    }

    // What the three kinds share: the text of a message.
    private abstract static class TextLogger implements Logger {
        private final String name;

        TextLogger(String name) {
            this.name = name;
        }

        abstract void write(Level level, String text, Throwable thrown);

        @Override
        public final String getName() {
            return name;
        }

        @Override
        public final void log(Level level, ResourceBundle bundle, String text, Throwable thrown) {
            if (isLoggable(level)) {
                write(level, translated(bundle, text), thrown);
            }
        }

        @Override
        public final void log(Level level, ResourceBundle bundle, String text, Object... values) {
            if (isLoggable(level)) {
                write(level, formatted(translated(bundle, text), values), null);
            }
        }

        private static String translated(ResourceBundle bundle, String key) {
            try {
                return bundle == null || key == null ? String.valueOf(key) : bundle.getString(key);
            } catch (MissingResourceException | ClassCastException e) {
                return key;
            }
        }

        private static String formatted(String format, Object... values) {
            try {
                boolean isPlain = values == null || values.length == 0;
                return isPlain ? format : MessageFormat.format(format, values);
            } catch (IllegalArgumentException e) {
                return format; // as it stands, rather than nothing
            }
        }
    }

    private static final class ModuleLogger extends TextLogger {
        private final NativeLogModule module;

        ModuleLogger(String name, NativeLogModule module) {
            super(name);
            this.module = module;
        }

        @Override
        public boolean isLoggable(Level level) {
            return level != Level.OFF && module.isEnabled(moduleLevel(level));
        }

        @Override
        void write(Level level, String text, Throwable thrown) {
            module.log(moduleLevel(level), text, thrown);
        }

        private static NativeLogModule.Level moduleLevel(Level level) {
            return switch (level) {
                case ERROR, OFF -> NativeLogModule.Level.ERROR;
                case WARNING -> NativeLogModule.Level.WARN;
                case INFO -> NativeLogModule.Level.INFO;
                case DEBUG -> NativeLogModule.Level.DEBUG;
                case TRACE, ALL -> NativeLogModule.Level.TRACE;
            };
        }
    }

    private static final class JulLogger extends TextLogger {
        private final java.util.logging.Logger target;

        JulLogger(String name) {
            super(name);
            target = java.util.logging.Logger.getLogger(name);
        }

        @Override
        public boolean isLoggable(Level level) {
            return level != Level.OFF && target.isLoggable(julLevel(level));
        }

        @Override
        void write(Level level, String text, Throwable thrown) {
            var record = new java.util.logging.LogRecord(julLevel(level), text);
            record.setLoggerName(getName());
            record.setThrown(thrown);
            record.setSourceClassName(getName()); // not this class
            target.log(record);
        }

        private static java.util.logging.Level julLevel(Level level) {
            return switch (level) {
                case ERROR, OFF -> java.util.logging.Level.SEVERE;
                case WARNING -> java.util.logging.Level.WARNING;
                case INFO -> java.util.logging.Level.INFO;
                case DEBUG -> java.util.logging.Level.FINE;
                case TRACE, ALL -> java.util.logging.Level.FINER;
            };
        }
    }

    private static final class ErrorLogger extends TextLogger {
        ErrorLogger(String name) {
            super(name);
        }

        @Override
        public boolean isLoggable(Level level) {
            return level != Level.OFF && level.getSeverity() >= Level.INFO.getSeverity();
        }

        @Override
        void write(Level level, String text, Throwable thrown) {
            System.err.println(level + " " + getName() + ": " + text);
            if (thrown != null) {
                thrown.printStackTrace();
            }
        }
    }
}
