/* Preloaded into the tool: on SIGUSR1 does to the virtual bus what BUS_DISTURBANCE names, an action and its times. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "virtual_control.h"

static void fail(const char* reason) {
    fprintf(stderr, "bus_disturber: %s\n", reason);
    _exit(99);
}

static void disturb(void) {
    char action[32];
    unsigned times = 0;
    const char* disturbance = getenv("BUS_DISTURBANCE");
    if (disturbance == NULL || sscanf(disturbance, "%31s %u", action, &times) != 2) fail("no disturbance named");
    void* adapter = dlopen("libpcanbasic.so", RTLD_NOW | RTLD_NOLOAD);
    if (adapter == NULL) fail("the virtual adapter is not loaded");
    void (*skipFrame)(uint32_t, uint32_t, uint32_t) = NULL;
    void (*failCalls)(uint32_t, uint32_t, uint32_t, uint32_t) = NULL;
    *(void**)&skipFrame = dlsym(adapter, "virtualSkipFrame");
    *(void**)&failCalls = dlsym(adapter, "virtualFailCalls");
    if (skipFrame == NULL || failCalls == NULL) fail("this is not the virtual adapter");
    if (strcmp(action, "skip-first-channel") == 0) {
        skipFrame(0, 0, times);
    } else if (strcmp(action, "bus-off") == 0) {
        failCalls(VIRTUAL_READ, 0x10, 0, times);
    } else {
        fail("unknown disturbance");
    }
}

static void* waitForSignal(void* unused) {
    (void)unused;
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    int number = 0;
    while (sigwait(&signals, &number) == 0)
        disturb();
    return NULL;
}

/* Before the tool's own threads start, which then leave the signal to the one that waits for it. */
__attribute__((constructor)) static void start(void) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    pthread_t thread;
    if (pthread_sigmask(SIG_BLOCK, &signals, NULL) != 0 || pthread_create(&thread, NULL, waitForSignal, NULL) != 0) {
        fail("cannot wait for the signal");
    }
}
