/*
 * TORVIK, extension: sends any single command to a device and returns its answer, so that an application can use what
 * the other functions do not offer, or see an answer as the device sent it. Plain C99, usable from C++. The conventions
 * are those of TORVIK.h.
 */
#ifndef TORVIK_COMMAND_H
#define TORVIK_COMMAND_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Sends one command and waits for its one answer. Other calls on the device wait until it has come, as with every
 * command. The library draws no conclusions from the command: after one that starts or stops the value stream, changes
 * the number of channels or an identifier, it still works with what it knew before. Activate the device again after
 * such a command.
 *   deviceNo    in   device number 1..39
 *   code        in   command code, 0x00..0xFF but the following: 0x11, 0x1B and 0x53 have several answers, 0x3B and
 *                    0x78 have none
 *   parameters  in   `length` bytes, sent in this order; numbers of several bytes are big-endian on the wire.
 *                    May be null when length is 0
 *   length      in   number of parameter bytes, 0..6
 *   answer      out  the 8 bytes of the answer: 0 the header 0x40..0x7F, 1 the status, below 0x40 for a success, 2..7
 *                    the data. Written on a refusal, too; left as it was on any other failure. Null is rejected
 *   result      0; -1 when the device refused the command, and on every other failure
 *   errors      0x30000100  device number above 39, a code that is excluded above, length above 6, answer is null, or
 *                           parameters is null and length is not 0
 *               0x30000113  device not active
 *               0x40..0x99  the device refused the command: its status
 *               235, 223, 0x30000058, 212, 0x30000113 as every transaction (TORVIK.h)
 *   sends       `code` with `parameters`
 */
int32_t TORVIKcommand(int32_t deviceNo, uint8_t code, const uint8_t* parameters, uint32_t length, uint8_t answer[8]);

#ifdef __cplusplus
}
#endif

#endif
