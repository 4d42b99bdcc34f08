/*
 * TORVIK: operates VARDA strain-gauge and six-axis force/torque amplifiers on a CAN bus through a PCAN adapter.
 *
 * Plain C99, usable from C++. All functions may be called from any thread, also at the same time.
 *
 * Conventions
 *   deviceNo   The device number, 1..39. Its low 8 bits select the device (TORVIKrelease alone looks at the whole int).
 *   results    0 is success and -1 a failure, unless a function says otherwise. The reason of a failure is stored as
 *              the device's last error and read with TORVIKgetLastErrorText. A success leaves the last error as it is;
 *              only a successful activation clears it.
 *   text       Zero-terminated bytes. File names and texts use the process's own (on Windows: ANSI) code page.
 *   buffers    Belong to the caller, who provides at least the stated size.
 *
 * Errors that every function with a device transaction ("sends ...") can store, beside its own; one that awaits no
 * answer can store only 223 and 0x30000113 of them:
 *   235         0xEB: another command held the device for 4000 ms; its lock has been broken
 *   223         0xDF: the command frame could not be written, or the adapter is closed
 *   0x30000058  no answer within 2000 ms
 *   0x30000105  the same for functions that only wait for an acknowledgement: its more precise code is replaced
 *   212         0xD4: the answers were locked for 10000 ms
 *   0x40..0x99  the device refused: its own status code
 *   0x30000113  the device was released while the call ran
 * and every function that needs an active device:
 *   0x30000100  the device number is 40..255 (kept in one slot shared by all these numbers)
 *   0x30000113  the device is not active
 * Checks are made in this order unless a function says otherwise: device number, arguments, active device.
 */
#ifndef TORVIK_H
#define TORVIK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Library and errors */

/*
 * Tells the library's version. Works at any time, needs no device and stores no error.
 *   version    out  0x00010011 (major 1 in the high half, minor 17 in the low half); must not be null, not checked
 *   result     0
 *   sends      nothing
 */
int32_t TORVIKDllVersion(uint32_t* version);

/*
 * Turns the device's last error into text and clears it.
 * The text is "no error exists" with code 0 when there is none. A few numbers are shared by a device status and an
 * adapter status (0x40, 0x80); the text is then the adapter's.
 *   deviceNo   in   device number 0..39; 40..255 read the slot that keeps errors of such numbers
 *   text       out  at least 128 bytes; at most 127 characters and a zero are written; null is refused
 *   code       out  the error code; null is refused
 *   result     0; -1 only for a null pointer, and then nothing else happens
 *   sends      nothing
 */
int32_t TORVIKgetLastErrorText(int32_t deviceNo, char* text, uint32_t* code);

/*
 * Reads one protocol error, as a number.
 *   deviceNo   in   device number 1..39
 *   kind       in   1: the library's last error of this device, which is cleared by reading; 2: ask the device
 *   index      in   number of the device's error entry, any value (kind 2 only)
 *   code       out  the error code; null is refused
 *   result     0 or -1
 *   errors     0x30000100  code is null (checked first), kind is neither 1 nor 2, or device number above 39
 *              0x30000113  device not active
 *   sends      kind 1: nothing; kind 2: 0x42 with the byte index
 */
int32_t TORVIKgetLastProtocolError(int32_t deviceNo, uint32_t kind, uint8_t index, uint32_t* code);

/*
 * Reads the device's last error on measured values.
 *   deviceNo   in   device number 1..39
 *   index      in   number of the entry, any value
 *   data       out  6 bytes as the device sends them; null is refused
 *   result     0 or -1
 *   errors     0x30000100  data is null
 *   sends      0x43 with the byte index
 */
int32_t TORVIKgetLastValueError(int32_t deviceNo, uint8_t index, uint8_t* data);

/*
 * Resets the device's error status.
 *   deviceNo   in   device number 1..39
 *   result     0 or -1
 *   sends      0x00
 */
int32_t TORVIKresetStatus(int32_t deviceNo);

/* Activation and release */

/* flags of TORVIKactivateExtended; they count only when the call opens the adapter */
#define TORVIK_FLAG_DEBUG_OUTPUT 0x02u     /* print debug lines to standard output */
#define TORVIK_FLAG_PCAN_LOG 0x04u         /* switch the adapter library's own log on */
#define TORVIK_FLAG_PROTOCOL_KIND_16 0x10u /* wire encoding 16; wins when both kinds are given */
#define TORVIK_FLAG_PROTOCOL_KIND_32 0x20u /* wire encoding 32 */

/* adapterType of TORVIKactivateExtended */
#define TORVIK_ADAPTER_USB 1u
#define TORVIK_ADAPTER_PCI 2u
#define TORVIK_ADAPTER_PC_CARD 3u
#define TORVIK_ADAPTER_CHANNEL_1 4u

/*
 * Opens a device with the usual settings: USB adapter, 1 Mbit/s, 65534 values per channel, command identifier 0x100,
 * answer identifier 0x101, protocol kind 16, no debug output. The first activation opens the adapter.
 *   deviceNo      in   device number 1..39
 *   channelCount  out  number of measuring channels, 1..8; null is refused
 *   result        0 or -1
 *   errors        0x30000100  channelCount is null, or device number above 39
 *                 243         0xF3: the device is active already
 *                 0x10000     no adapter library; any other adapter status: the adapter could not be opened
 *                 244         0xF4: no receive event
 *                 0x30000109  no receive thread (stored for device 0)
 *                 0x30000111  no mutex
 *                 0x30000101  device number 0, or 40 devices are set up
 *                 0x30000114  one of the identifiers is 0 or belongs to another device
 *                 0x300000F3  not enough memory for the value buffers
 *                 0x30000112  the answers or the values were locked for 10000 ms
 *                 249         0xF9: the device did not tell its value identifier
 *                 0x30000105  the device refused to tell its mode (firmware below 0x0003000B)
 *                 246         0xF6: the device tells no usable channel count; it stays set up, and channelCount is 0
 *   sends         0x8C with the byte 2, 0x2B, 0x49 with the byte 0 (firmware below 0x0003000B: 0x26),
 *                 0x80 with the byte 0
 */
int32_t TORVIKactivateStd(int32_t deviceNo, uint32_t* channelCount);

/*
 * Opens a device with chosen settings.
 *   deviceNo      in   device number 1..39
 *   adapterType   in   1 USB, 2 PCI, 3 PC card, 4 channel handle 1; ignored while the adapter is open
 *   baudRate      in   bit/s: 1000000, 800000, 500000, 250000, 125000, 100000, 95000, 83000, 50000, 47000, 33000,
 *                      25000, 20000, 12500, 10000 or 5000; ignored while the adapter is open
 *   bufferSize    in   values per channel, limited to 1..65534; holds for all devices from now on, but a device
 *                      activated earlier never gets more than it was activated with
 *   channelCount  out  number of measuring channels, 1..8; null is refused
 *   commandCanId  in   identifier of commands, 1..2047
 *   answerCanId   in   identifier of answers, 1..2047, another than commandCanId
 *   flags         in   TORVIK_FLAG_...; ignored while the adapter is open
 *   result        0 or -1
 *   errors        those of TORVIKactivateStd, and
 *                 248         0xF8: an identifier is above 2047 or both are equal
 *                 247         0xF7: flags name no protocol kind
 *                 242         0xF2: the baud rate is not in the list
 *                 0           (no code) the adapter type is unknown; the result is -1 all the same
 *   sends         what TORVIKactivateStd sends
 */
int32_t TORVIKactivateExtended(int32_t deviceNo, uint8_t adapterType, uint32_t baudRate, uint32_t bufferSize,
                               uint32_t* channelCount, uint32_t commandCanId, uint32_t answerCanId, uint32_t flags);

/*
 * Closes one device, or everything. Calls that run on a device being released end with -1 and 0x30000113.
 *   deviceNo   in   0: all devices and the adapter; 1..40: that device, the adapter stays open; other values do nothing
 *   result     0
 *   sends      nothing
 */
int32_t TORVIKrelease(int32_t deviceNo);

/*
 * Reads an identification number of the device's interface.
 *   deviceNo   in   device number 1..39
 *   index      in   which number; its low two bits are sent
 *   ident      out  the number; null is refused
 *   result     0 or -1
 *   errors     0x30000100  ident is null
 *   sends      0x01 with the byte index & 3
 */
int32_t TORVIKgetInterfaceIdent(int32_t deviceNo, uint8_t index, uint32_t* ident);

/* Measured values */

/*
 * Takes the oldest unread value of one channel from the library's buffer.
 * A buffer that overflows is not re-synchronised: the newest value stands in the place of the oldest unread one and is
 * read next, then the older ones that follow it.
 *   deviceNo   in   device number 1..39
 *   channel    in   measuring channel 1..8
 *   value      out  fraction of full scale for integer formats (2.1/65535 and 2.1/16777215 per count), the device's
 *                   float unchanged for float format; 0.0 when nothing is waiting; null is refused
 *   result     1: one value; 0: nothing waiting; -1: failure
 *   errors     0x30000113  device not active (checked before the arguments)
 *              0x30000100  channel outside 1..8, or value is null
 *              0x30000112  the values were locked for 10000 ms
 *              0x30000106  the device has no value buffer
 *              0x30000063  the device's value format is unknown; the value is consumed
 *   sends      nothing
 */
int32_t TORVIKread(int32_t deviceNo, uint32_t channel, double* value);

/*
 * Takes several values at once: of one channel, or of all channels, set by set.
 *   deviceNo   in   device number 1..39
 *   channel    in   0: all channels interleaved (one set after the other); 1..7: that channel; 8 is refused
 *   values     out  array of count values, scaled like those of TORVIKread; null is refused
 *   count      in   most values to deliver, at least 1; with channel 0 a multiple of the number of channels
 *   countRead  out  number of values delivered; 0 after a failure behind the argument checks; null is refused
 *   status     out  array of count numbers: the low four bits of each value's status; null: not wanted
 *   result     1: values delivered (countRead may be 0); 0: nothing waiting; -1: failure
 *   errors     0x30000100  channel above 7 (checked before the active device); count below 1 or not a whole number
 *                          of sets; values or countRead is null
 *              0x30000113  device not active, or it tells no channel count
 *              0x30000112  the values were locked for 10000 ms
 *              0x30000106  the device has no value buffer
 *              0x30000063  the device's value format is unknown; the values taken so far are lost
 *   sends      nothing
 */
int32_t TORVIKreadMultiple(int32_t deviceNo, uint32_t channel, double* values, int32_t count, int32_t* countRead,
                           uint32_t* status);

/*
 * Tells how many values are waiting in the library's buffer.
 *   deviceNo   in   device number 1..39
 *   channel    in   0: the smallest count of all channels; 1 up to the number of channels: that channel; above that, up
 *                   to 9: the largest count of all channels
 *   count      out  number of values; 0x7FFFFFFF for channel 0 of a device without channels; null: not written
 *   result     0 or -1
 *   errors     none        device number above 39: -1 without a code
 *              0x30000100  channel above 9
 *              0x30000113  device not active
 *              0x30000112  the values were locked for 10000 ms
 *   sends      nothing
 */
int32_t TORVIKreceived(int32_t deviceNo, uint32_t channel, int32_t* count);

/*
 * Throws away all values waiting in the library's buffer of this device.
 *   deviceNo   in   device number 1..39
 *   result     0; 229: not cleared, because the device is not active, the values were locked for 10000 ms (no error is
 *              stored for these two), or the device is being released
 *   errors     0x30000113  the device was released while the call ran
 *   sends      nothing
 */
int32_t TORVIKclearDLLbuffer(int32_t deviceNo);

/*
 * Asks the device for one set of values, which arrives in the library's buffer like a streamed one.
 *   deviceNo   in   device number 1..39
 *   result     0 as soon as the request is written; -1
 *   sends      0x3B, no answer awaited, not delayed by other commands
 */
int32_t TORVIKgetValue(int32_t deviceNo);

/*
 * Reads one raw value directly from the device.
 *   deviceNo   in   device number 1..39
 *   channel    in   measuring channel 1..8
 *   value      out  counts as the device tells them; null is refused
 *   result     0 or -1
 *   errors     0x30000100  channel outside 1..8, or value is null
 *   sends      0x3A with the byte channel
 */
int32_t TORVIKgetRawValue(int32_t deviceNo, uint32_t channel, uint32_t* value);

/*
 * Switches the device's value stream on.
 *   deviceNo   in   device number 1..39
 *   result     0 or -1
 *   errors     48          device number above 39
 *   sends      0x24
 */
int32_t TORVIKstartTX(int32_t deviceNo);

/*
 * Switches the device's value stream off.
 *   deviceNo   in   device number 1..39
 *   result     0 or -1; 220: device number above 39 (no error is stored)
 *   sends      0x23
 */
int32_t TORVIKstopTX(int32_t deviceNo);

/*
 * Clears the device's own value buffer; the library's stays as it is.
 *   deviceNo   in   device number 1..39
 *   result     0 or -1
 *   sends      0x25
 */
int32_t TORVIKclearDeviceBuf(int32_t deviceNo);

/*
 * Clears the maximum values that the device keeps.
 *   deviceNo   in   device number 1..39
 *   channel    in   measuring channel 1..8; what 0 selects is the device's decision
 *   result     0 or -1
 *   errors     0x30000100  channel above 8
 *   sends      0x3C with the byte channel
 */
int32_t TORVIKclearMaximumValue(int32_t deviceNo, uint32_t channel);

#ifdef __cplusplus
}
#endif

#endif
