/*
 * Control of the virtual adapter: what a test does to the virtual bus and to its simulated amplifiers. The functions
 * are exported by the virtual adapter library beside the ten CAN_* entry points. Plain C99; callable from any thread.
 * A call that runs out of memory changes nothing, and returns -1, 0 or nothing.
 */
#ifndef TORVIK_VIRTUAL_CONTROL_H
#define TORVIK_VIRTUAL_CONTROL_H

#include <stdint.h>

#ifdef __cplusplus
#define VIRTUAL_NOEXCEPT noexcept
extern "C" {
#else
#define VIRTUAL_NOEXCEPT
#endif

typedef struct VirtualFrame {
    uint32_t id;    /* CAN identifier */
    uint8_t type;   /* message type as the entry points use it: 0 standard, 2 extended */
    uint8_t length; /* 0..255: lengths above 8 are delivered as they are */
    uint8_t data[8];
} VirtualFrame;

enum VirtualEntry {
    VIRTUAL_INITIALIZE,
    VIRTUAL_UNINITIALIZE,
    VIRTUAL_RESET,
    VIRTUAL_GET_STATUS,
    VIRTUAL_READ,
    VIRTUAL_WRITE,
    VIRTUAL_FILTER_MESSAGES,
    VIRTUAL_GET_VALUE,
    VIRTUAL_SET_VALUE,
    VIRTUAL_GET_ERROR_TEXT,
    VIRTUAL_ENTRY_COUNT
};

enum VirtualAnswerAction {
    VIRTUAL_ANSWER_DROP,   /* the command is carried out, its answer is not sent */
    VIRTUAL_ANSWER_DELAY,  /* the answer is sent `microseconds` after the command */
    VIRTUAL_ANSWER_DOUBLE, /* the answer is sent twice */
    VIRTUAL_ANSWER_REPLACE /* `answer` is sent in place of the device's answer; the command is not carried out */
};

#define VIRTUAL_FOR_EVER 0xFFFFFFFFu
#define VIRTUAL_ANY_COMMAND 0x100u

typedef struct VirtualCounters {
    uint64_t calls[VIRTUAL_ENTRY_COUNT]; /* calls of each entry point */
    uint64_t framesRead;                 /* frames handed out by CAN_Read */
    uint64_t framesWritten;              /* frames accepted by CAN_Write */
    uint64_t framesQueued;               /* frames put into the receive queue */
    uint64_t framesOverrun;              /* frames lost because the receive queue was full */
    uint64_t framesDiscarded;            /* frames thrown away by CAN_Reset, CAN_Uninitialize or virtualReset */
    uint64_t commandsReceived;           /* command frames that reached a simulated amplifier */
    uint64_t answersSent;
    uint64_t answersDropped; /* by VIRTUAL_ANSWER_DROP, or because 65,536 answers of the device were waiting already */
    uint64_t valueFramesSent;
} VirtualCounters;

/* Back to the state after loading: configured bench (environment or default), channel closed, queues, rules, history
 * and counters empty. Simulated amplifiers forget what was written to them. Result: 0, -1 as virtualConfigure. */
int32_t virtualReset(void) VIRTUAL_NOEXCEPT;

/* Replaces the bench by the one described in a TOML text / file. Result: 0; -1 and the bench unchanged when it is not
 * understood, virtualMessage says why with line and column. A file is read once, up to 1 MiB; a pipe that does not end
 * within 10 s is not understood. */
int32_t virtualConfigure(const char* toml) VIRTUAL_NOEXCEPT;
int32_t virtualConfigureFile(const char* path) VIRTUAL_NOEXCEPT;

/* Why the last bench was not understood, at most 1023 bytes; empty if it was. The pointer stays the same; its text
 * changes with the next virtualReset, virtualConfigure or virtualConfigureFile. Never null. */
const char* virtualMessage(void) VIRTUAL_NOEXCEPT;

/* Puts frames into the receive queue as if they came from the bus. Result: number of frames queued. */
uint32_t virtualPushFrames(const VirtualFrame* frames, uint32_t count) VIRTUAL_NOEXCEPT;

/* Lets calls of one entry point return `status` without doing anything: `skip` calls go through first, then `count`
 * calls fail (VIRTUAL_FOR_EVER: all); count 0 ends it. One rule per entry point, the latest counts. */
void virtualFailCalls(uint32_t entry, uint32_t status, uint32_t skip, uint32_t count) VIRTUAL_NOEXCEPT;

/* Changes what happens to the next `times` answers of one device (its index in the bench, 0 the first) to one command
 * code (VIRTUAL_ANY_COMMAND: every). `answer`: 8 bytes, used by VIRTUAL_ANSWER_REPLACE only. Rules are tried in the
 * order they were given; the first that fits is used. */
void virtualAnswerRule(uint32_t device, uint32_t command, uint32_t action, uint32_t times, uint32_t microseconds,
                       const uint8_t* answer) VIRTUAL_NOEXCEPT;
void virtualClearAnswerRules(void) VIRTUAL_NOEXCEPT;

/* Holds a device's free-running stream (1) or lets it go again (0); the device's own start and stop state is kept. */
void virtualHoldStream(uint32_t device, uint32_t hold) VIRTUAL_NOEXCEPT;

/* Emits complete sets of a device now, whether its stream runs or not: at most 65,536 a call. Result: number of frames
 * queued. */
uint32_t virtualSendSets(uint32_t device, uint32_t sets) VIRTUAL_NOEXCEPT;

/* The next `times` value frames of one channel index (0 the first) of a device are left out / sent twice. */
void virtualSkipFrame(uint32_t device, uint32_t channel, uint32_t times) VIRTUAL_NOEXCEPT;
void virtualRepeatFrame(uint32_t device, uint32_t channel, uint32_t times) VIRTUAL_NOEXCEPT;

/* Foreign traffic: frames of this identifier fill so many percent of the bus (0: none). */
void virtualBusLoad(uint32_t percent, uint32_t id) VIRTUAL_NOEXCEPT;

/* While paused (1), reading finds nothing and nobody is woken; frames go on collecting in the queue (32,767 at most).
 */
void virtualPause(uint32_t pause) VIRTUAL_NOEXCEPT;

/* Frames waiting to be read. */
uint32_t virtualQueued(void) VIRTUAL_NOEXCEPT;

void virtualGetCounters(VirtualCounters* counters) VIRTUAL_NOEXCEPT;

/* Takes the oldest frames accepted by CAN_Write out of the history (which keeps the latest 65,536).
 * Result: number of frames taken. */
uint32_t virtualTakeWritten(VirtualFrame* frames, uint32_t capacity) VIRTUAL_NOEXCEPT;

/* The value that set number `set` (0 the first; its low 16 bits are the sequence number) of a device carries on one
 * channel index, as a receiver decodes it: raw counts for integers. Digital filters are left out: it is what the set
 * carries while none is on, since what a filter makes of it depends on the sets that were sent before. Result: 0; -1
 * and nothing written when there is no such device or channel. */
int32_t virtualValue(uint32_t device, uint32_t channel, uint64_t set, double* value) VIRTUAL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
