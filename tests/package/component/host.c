// Starts the component; calls only the platform layer itself.
#include "osal/export/osal_threads.h"

int cache_start(const char* options);

int main(int argc, char** argv) {
    return osGetProcessID() > 0 && argc == 2 ? cache_start(argv[1]) : 1;
}
