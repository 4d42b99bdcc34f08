/* Preloaded into the tool: notes every TORVIKrelease in the file that RELEASE_WITNESS names, and passes it on. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

int32_t TORVIKrelease(int32_t deviceNo);

int32_t TORVIKrelease(int32_t deviceNo) {
    int32_t (*release)(int32_t) = NULL;
    *(void**)&release = dlsym(RTLD_NEXT, "TORVIKrelease");
    const char* path = getenv("RELEASE_WITNESS");
    FILE* file = path != NULL ? fopen(path, "a") : NULL;
    if (file != NULL) {
        fprintf(file, "%d\n", (int)deviceNo);
        fclose(file);
    }
    return release != NULL ? release(deviceNo) : -1;
}
