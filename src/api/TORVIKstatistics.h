/*
 * TORVIK, extension: counts of what became of every frame the adapter handed out, so that a measurement application can
 * prove that it has lost nothing, or tell what it has lost. Plain C99, usable from C++. The conventions are those of
 * TORVIK.h.
 *
 * All numbers count from the loading of the library on. Nothing resets them: neither activation nor release nor reading
 * them. For an interval take the difference of two readings.
 */
#ifndef TORVIK_STATISTICS_H
#define TORVIK_STATISTICS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Later versions of the library append fields.
 *
 * In every reading of one device framesRouted is the sum of framesInAssembly and the thirteen fields from framesStored
 * to framesBeyondChannels, and answersStored is at least answersTaken + answersDiscarded; the rest still waits. Once no
 * frame is under way, framesReceived is the sum of framesRouted of all devices, framesWithoutDevice and
 * framesNotRouted. (When the receive thread is kept from running in the middle of a change, a reading gives up after
 * a hundred waits of 1 ms, which the system may stretch to 1.6 s in all, and may be one frame out.)
 */
typedef struct TORVIKstatistics {
    uint32_t size;             /* in: sizeof(TORVIKstatistics); out: how many bytes have been written */
    uint32_t framesInAssembly; /* wait for the rest of their set (not since loading: now) */

    /* The device's frames, by where they ended. */
    uint64_t framesRouted;           /* its answer or value identifier, while it was active */
    uint64_t framesStored;           /* value stored in a complete set */
    uint64_t answersStored;          /* put into the answer ring */
    uint64_t answersNotStored;       /* dropped: the answers were locked for 10000 ms, or the device was activated anew
                                        between routing and storing */
    uint64_t commandFrames;          /* dropped: first data byte 0x80..0xFF */
    uint64_t framesWrongChannel;     /* dropped: channel index 8..15 */
    uint64_t framesNoChannelCount;   /* dropped: the number of channels is not known yet, or is not 1..8 */
    uint64_t framesOutsideSet;       /* dropped: the first frame of their set is missing */
    uint64_t framesOfIncompleteSets; /* dropped: the next set began before theirs was complete */
    uint64_t framesOfBrokenSets;     /* dropped: another sequence number came within their set; that frame, too */
    uint64_t framesOfLockedSets;     /* dropped: the values were locked for 10000 ms */
    uint64_t framesOfReleasedSets;   /* dropped: the device was released or activated anew; counted with the first value
                                        frame after that */
    uint64_t framesReplaced;         /* dropped: a later frame of the same channel and set took their place */
    uint64_t framesBeyondChannels;   /* dropped with their set stored: no channel of the device has their index */

    /* The device's sets (one value of each channel). */
    uint64_t setsStored;
    uint64_t setsIncomplete; /* begun and dropped, for the reasons above */
    uint64_t setsBroken;
    uint64_t setsLocked;
    uint64_t setsReleased;
    uint64_t setsMissing;   /* by the sequence numbers of the sets stored before and after, dropped ones included;
                               nothing when the numbers go back, as after a restart of the device,
                               or jump by 32768 and more, which looks like that */
    uint64_t sequenceJumps; /* stored sets whose number does not follow that of the set stored before */

    /* The device's values. */
    uint64_t valuesStale;       /* stored a second time, because another frame took the place of theirs in their set */
    uint64_t valuesOverwritten; /* by newer ones in a full buffer before they were read */
    uint64_t valuesCleared;     /* thrown away unread: TORVIKclearDLLbuffer, a restart of the device by the library,
                                   TORVIKrelease(0), an activation, a change of the buffer size by an activation of any
                                   device (what does not fit; after an overflow also what was lost but still counted as
                                   waiting); those of a single released device are counted at its next activation */

    /* The device's answers. */
    uint64_t answersTaken;       /* by a call that waited for an answer */
    uint64_t answersOverwritten; /* by newer ones in a full ring before they were taken */
    uint64_t answersDiscarded;   /* thrown away untaken: counted at the next activation or by TORVIKrelease(0) */

    /* The adapter, the same for every device number. */
    uint64_t framesReceived;      /* handed out by the adapter */
    uint64_t framesWithoutDevice; /* dropped: no active device has their identifier */
    uint64_t framesNotRouted;     /* dropped: the answers were locked for 10000 ms, or the adapter came back with them
                                     after its thread had been given up */

    /* What the adapter reported in place of a frame, by status. */
    uint64_t faultsBusLight;        /* 0x4 */
    uint64_t faultsBusHeavy;        /* 0x8 */
    uint64_t faultsBusOff;          /* 0x10 */
    uint64_t faultsQueueOverrun;    /* 0x40: its queue was full, and frames are lost */
    uint64_t faultsIllegalHardware; /* 0x1400 */
    uint64_t faultsOther;           /* any other status but 0 and 0x20 */
    uint64_t lastOtherFault;        /* the last of these statuses; 0: there was none */
} TORVIKstatistics;

/*
 * Reads the counts of one device and those of the adapter. Works at any time: needs neither adapter nor active device,
 * waits for no other call and holds nothing up.
 *   deviceNo    in      device number 1..39; 0: the sums of all devices, each read by itself
 *   statistics  in/out  size says how much room there is, at least 8; only so much is written, in whole fields,
 *                       and size tells how much that was; null is refused
 *   result      0 or -1
 *   errors      0x30000100  device number above 39, statistics is null, or size is below 8
 *               0x30000113  the library is being unloaded
 *   sends       nothing
 */
int32_t TORVIKgetStatistics(int32_t deviceNo, TORVIKstatistics* statistics);

#ifdef __cplusplus
}
#endif

#endif
