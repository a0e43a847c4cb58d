// How the garbage collector of the demo reads its option string.

#include "gc_options.h"

#include "component.h"
#include "gc_log.h"
#include "util/export/arguments.h"

#include <stdio.h>
#include <string.h>

static const size_t DEFAULT_REGION = (size_t)64 << 20;
static const size_t REGION_BOUNDS[] = {(size_t)16 << 20, (size_t)4 << 30};

gc_options options = {.region = (size_t)64 << 20};

// Freed only by the next call: the names of the phases lie in it.
static argsParse context;

static int check_region(char* errbuf, size_t errlen) {
    ArgVal region = {.vsize_t = options.region};
    char reason[128];
    if (argCheckBounds(TYPE_size_t, &region, REGION_BOUNDS, reason, sizeof reason) == 0)
        return 0;
    snprintf(errbuf, errlen, "Region %s", reason);
    return -1;
}

int component_configure(const char* text, char* errbuf, size_t errlen) {
    static argInfo region, pause, verify, phase, unknown;
    pcchar unknown_name = NULL, unknown_value = NULL;
    gc_options* const o = &options;
    argFree(&context);
    context = (argsParse){0};
    o->region = argAddsize_t("region", &context, &region, &o->region, DEFAULT_REGION,
                             "size of a worker's region", NULL, 0);
    o->pause = argAddnanotime("pause", &context, &pause, &o->pause, 0,
                              "longest collection without a warning", NULL, 0);
    o->verify = argAddbool("verify", &context, &verify, &o->verify, false,
                           "verifies after each collection", "v,check,", 0);
    o->phases[0] = argAddpcchar("phase", &context, &phase, &o->phases[0], NULL,
                                "phase to tell of, in their order", NULL, _multiple);
    argAddFallback(&context, &unknown, &unknown_name, &unknown_value);
    if (argParse(&context, text, strlen(text), ',') != 0) {
        snprintf(errbuf, errlen, "%s", argError(&context));
        return -1;
    }
    argGetValues(&context, &phase, o->phases, MAX_PHASES);
    o->num_phases = phase.handled < MAX_PHASES ? phase.handled : MAX_PHASES;
    if (unknown_name != NULL)
        logPrint(DBG_GC, MSG_WARN, "no such option: %s=%s", unknown_name, unknown_value);
    return check_region(errbuf, errlen);
}
