// Opens a component at run time, as a virtual machine does, and starts it as its host would.
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    int (*start)(const char*) = NULL;
    void* const component = argc == 3 ? dlopen(argv[1], RTLD_NOW) : NULL;
    void* const symbol = component != NULL ? dlsym(component, "cache_start") : NULL;
    if (symbol == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    memcpy(&start, &symbol, sizeof start);
    return start(argv[2]);
}
