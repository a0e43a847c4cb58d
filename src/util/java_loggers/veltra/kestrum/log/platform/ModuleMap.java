package veltra.kestrum.log.platform;

import java.util.HashMap;
import java.util.Map;
import java.util.Optional;
import java.util.concurrent.ConcurrentHashMap;
import veltra.kestrum.log.NativeLogModule;

// Which native module stands for a Java logger, as the system property says.
final class ModuleMap {
    static final String PROPERTY = "veltra.kestrum.log.modules";

    private static final Map<String, String> MODULE_OF_PREFIX = new HashMap<>();
    private static final Map<String, Boolean> MISSED = new ConcurrentHashMap<>();

    static {
        for (String item : System.getProperty(PROPERTY, "").split(",")) {
            int end = item.indexOf('=');
            if (!item.isEmpty()) {
                MODULE_OF_PREFIX.put(item.substring(0, Math.max(end, 0)), item.substring(end + 1));
            }
        }
    }

    private ModuleMap() {}

    // The module of the longest prefix of the name, in whole parts, or else of the bare item. Empty
    // when there is none, or when it cannot be used, which is reported once on standard error.
    static Optional<NativeLogModule> moduleOf(String logger) {
        String prefix = logger;
        while (!MODULE_OF_PREFIX.containsKey(prefix)) {
            if (prefix.isEmpty()) {
                return Optional.empty();
            }
            prefix = prefix.substring(0, Math.max(prefix.lastIndexOf('.'), 0));
        }
        String module = MODULE_OF_PREFIX.get(prefix);
        try {
            return Optional.of(NativeLogModule.get(module));
        } catch (IllegalArgumentException | LinkageError e) {
            if (MISSED.put(module, true) == null) {
                System.err.println("Java loggers cannot use the log module " + module + ": "
                        + e.getMessage());
            }
            return Optional.empty();
        }
    }
}
