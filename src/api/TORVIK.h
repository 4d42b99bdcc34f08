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
 *                 0x30000112  the answers or the values were locked for 10000 ms, another call opened or closed the
 *                             adapter for that long, or a call on a record to be opened did not leave it
 *                 0x30000113  a release ended the activation; a call that an earlier release gave up is still using
 *                             this device; or the process is a forked child (see TORVIKrelease)
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
 *                      activated earlier never gets more than it was activated with. Set by every call that passes the
 *                      checks of device number, channelCount and 243, even one that fails later. Where a device's
 *                      buffers become shorter or longer by it, the newest unread values that fit stay, in order of
 *                      arrival, even after an overflow (see TORVIKread); values that do not fit are lost and counted
 *                      in valuesCleared (TORVIKgetStatistics). Not changed when the values are locked for 10000 ms:
 *                      the call fails with 0x30000112
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
 * It returns within 10000 ms, unless the adapter library blocks it. A call that has not ended by then keeps its device:
 * every other call with that device, an activation too, fails with 0x30000113 until it has ended. An activation that is
 * still opening the adapter when the 10000 ms are over fails with 0x30000113 once the adapter is open.
 * A forked child of the process that opened the adapter cannot use the library: this function returns at once and does
 * nothing, and every call with a device, an activation too, fails with 0x30000113. While a Windows process ends, this
 * function does nothing either.
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
 * A buffer that overflows is not re-synchronised: the newest value takes the place of the oldest unread one and is read
 * next, then the older ones that follow it. Clearing the buffer, and an activation that changes its length, puts it in
 * order again (see bufferSize of TORVIKactivateExtended).
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

/* Identity, mode and device settings */

/*
 * Checks in this section and the two that follow: device number, active device, arguments.
 */

/*
 * Reads the serial number.
 *   deviceNo  in   device number 1..39
 *   serial    out  the number; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or serial is null
 *             0x30000113  device not active
 *   sends     0x1F
 */
int32_t TORVIKgetSerialNo(int32_t deviceNo, uint32_t* serial);

/*
 * Writes the serial number.
 *   deviceNo  in   device number 1..39
 *   serial    in   any number but 0
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or serial is 0
 *             0x30000113  device not active
 *   sends     0x20 with serial as 4 bytes
 */
int32_t TORVIKsetSerialNo(int32_t deviceNo, int32_t serial);

/*
 * Reads one of the transmit modes.
 *   deviceNo  in   device number 1..39
 *   index     in   number of the mode, any value
 *   mode      out  0..65535; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or mode is null
 *             0x30000113  device not active
 *   sends     0x80 with the byte index
 */
int32_t TORVIKgetTXmode(int32_t deviceNo, uint8_t index, uint32_t* mode);

/*
 * Writes one of the transmit modes.
 *   deviceNo  in   device number 1..39
 *   index     in   0 or 1
 *   mode      in   its low 16 bits are sent
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or index above 1
 *             0x30000113  device not active
 *   sends     0x81 with the byte index and mode as 2 bytes
 */
int32_t TORVIKsetTXmode(int32_t deviceNo, uint32_t index, int32_t mode);

/*
 * Reads the mode word.
 *   deviceNo  in   device number 1..39
 *   mode      out  the word; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or mode is null
 *             0x30000113  device not active
 *             0x30000105  the device refused; its own status is replaced
 *   sends     0x26
 */
int32_t TORVIKgetMode(int32_t deviceNo, uint32_t* mode);

/*
 * Writes the mode word and restarts the device.
 *   deviceNo  in   device number 1..39
 *   mode      in   the word
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *             0x30000062  stored although the result is 0: the setting was made, but firmware below 0x00030009 knows
 *                         no restart
 *   sends     0x27 with mode as 4 bytes, then the restart of TORVIKresetDevice
 */
int32_t TORVIKsetMode(int32_t deviceNo, int32_t mode);

/*
 * Reads the firmware version.
 *   deviceNo  in   device number 0..39; whether it is active is not checked: an inactive one does not answer
 *   version   out  e.g. 0x00040000; null is refused
 *   result    0 or -1
 *   errors    0x30000100  version is null
 *             48          device number above 39
 *   sends     0x2B
 */
int32_t TORVIKgetFirmwareVersion(int32_t deviceNo, uint32_t* version);

/*
 * Reads the hardware version.
 *   deviceNo  in   device number 1..39
 *   version   out  the version; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or version is null
 *             0x30000113  device not active
 *   sends     0x36
 */
int32_t TORVIKgetHardwareVersion(int32_t deviceNo, uint32_t* version);

/*
 * Reads the software configuration.
 *   deviceNo  in   device number 1..39
 *   config    out  the word; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or config is null
 *             0x30000113  device not active
 *   sends     0x2A
 */
int32_t TORVIKgetSoftwareConfiguration(int32_t deviceNo, uint32_t* config);

/*
 * Asks whether the device knows a command.
 *   deviceNo  in   device number 1..39
 *   query     in   2 bytes, passed on in their order; null is refused
 *   result    0: the device accepts the query; -1, with its status as the last error when it does not
 *   errors    0x30000100  device number above 39, or query is null
 *             0x30000113  device not active
 *   sends     0x93 with the two bytes
 */
int32_t TORVIKgetCommandAvailable(int32_t deviceNo, uint8_t* query);

/*
 * Switches the blocking of settings.
 *   deviceNo  in   device number 1..39
 *   value     in   4 bytes, a little-endian number; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or value is null
 *             0x30000113  device not active
 *   sends     0x92 with the four bytes, the last one first
 */
int32_t TORVIKswitchBlocking(int32_t deviceNo, uint8_t* value);

/*
 * Loads a stored set of settings and restarts the device. Set 1 is stored as set 0 as well, 300 ms after it was
 * loaded.
 *   deviceNo  in   device number 1..39
 *   set       in   number of the set; its low 8 bits are sent
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    none        device number above 39, or device not active: -1 without a code
 *             0x30000062  stored although the result is 0: the setting was made, but firmware below 0x00030009 knows
 *                         no restart
 *   sends     0x09 with the byte set; for set 1 then 0x0A with the byte 0, then the restart of TORVIKresetDevice
 */
int32_t TORVIKloadSettings(int32_t deviceNo, uint32_t set);

/*
 * Stores the present settings.
 *   deviceNo  in   device number 1..39
 *   set       in   number of the set
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x0A with the byte set
 */
int32_t TORVIKstoreSettings(int32_t deviceNo, uint8_t set);

/*
 * Restarts the device: waits 700 ms for it, clears the library's value buffers and brings the value stream back to
 * what it was (a failure of that is not reported).
 *   deviceNo  in   device number 1..39
 *   result    0; 229: the value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *             0x30000062  firmware below 0x00030009
 *   sends     0x78, no answer awaited; then 0x24, or 0x23 when the stream was stopped
 */
int32_t TORVIKresetDevice(int32_t deviceNo);

/*
 * Reads one of the operating-hours counters.
 *   deviceNo  in   device number 1..39
 *   index     in   number of the counter, any value
 *   hours     out  hours; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or hours is null
 *             0x30000113  device not active
 *   sends     0x56 with the byte index
 */
int32_t TORVIKreadDeviceHours(int32_t deviceNo, uint8_t index, double* hours);

/*
 * Writes the operating-hours counter that the device lets be written.
 *   deviceNo  in   device number 1..39
 *   hours     in   hours, sent as a float
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x57 with the float
 */
int32_t TORVIKwriteDeviceHours(int32_t deviceNo, double hours);

/*
 * Reads which channels have an active sensor memory (TEDS).
 *   deviceNo  in   device number 1..39
 *   bit       in   0: the whole word; 1..32: that bit of it, 1 the lowest; above 32 it begins anew with bit 1
 *   result    out  the word, or 0 or 1; null is refused
 *   result    0 or -1; 0 also when result is null, and then nothing is sent
 *   errors    0x30000100  device number above 39, or result is null
 *             0x30000113  device not active
 *   sends     0x68
 */
int32_t TORVIKgetTEDSactive(int32_t deviceNo, uint32_t bit, uint32_t* result);

/*
 * Reads the sensor memory (TEDS). The word address begins at offset / 4 and goes up by 4 from word to word. What
 * was read before a failure stays in the buffer.
 *   deviceNo  in   device number 1..39
 *   selector  in   of the memory; its low 8 bits are sent
 *   buffer    out  length bytes; null is refused
 *   length    in   1 and more
 *   offset    in   0..0x7FFFFFFC, a multiple of 4
 *   result    0 or -1
 *   errors    0x30000100  buffer is null, length below 1, or a wrong offset (checked first); device number above 39
 *             0x30000113  device not active
 *   sends     0x65 with the byte selector and the address as 2 bytes, once for each 4 bytes begun
 */
int32_t TORVIKreadTEDSrawData(int32_t deviceNo, uint32_t selector, uint8_t* buffer, int32_t length, uint32_t offset);

/* Zero, scaling, offsets and analogue output */

/*
 * Makes the present value the zero signal.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *   sends     0x0C with the byte channel
 */
int32_t TORVIKsetZero(int32_t deviceNo, uint32_t channel);

/*
 * Writes the zero signal.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   zero      in   raw counts
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *   sends     0x03 with the byte channel and zero as 4 bytes
 */
int32_t TORVIKwriteZero(int32_t deviceNo, uint32_t channel, int32_t zero);

/*
 * Reads the zero signal.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   zero      out  raw counts, to be taken as a signed number; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..8, or zero is null
 *             0x30000113  device not active
 *   sends     0x02 with the byte channel
 */
int32_t TORVIKreadZero(int32_t deviceNo, uint32_t channel, uint32_t* zero);

/*
 * Reads the offset of the analogue output.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   offset    out  in the unit of the output; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..8, or offset is null
 *             0x30000113  device not active
 *   sends     0x04 with the byte channel
 */
int32_t TORVIKreadAoutOffset(int32_t deviceNo, uint32_t channel, double* offset);

/*
 * Writes the offset of the analogue output and restarts the device.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   offset    in   in the unit of the output, sent as a float
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *             0x30000062  stored although the result is 0: the setting was made, but firmware below 0x00030009 knows
 *                         no restart
 *   sends     0x05 with the byte channel and the float, then the restart of TORVIKresetDevice
 */
int32_t TORVIKwriteAoutOffset(int32_t deviceNo, uint32_t channel, double offset);

/*
 * Reads the scale of the analogue output.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   scale     out  factor; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..8, or scale is null
 *             0x30000113  device not active
 *   sends     0x06 with the byte channel
 */
int32_t TORVIKreadAoutScale(int32_t deviceNo, uint32_t channel, double* scale);

/*
 * Writes the scale of the analogue output.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   scale     in   factor, sent as a float
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *   sends     0x07 with the byte channel and the float
 */
int32_t TORVIKwriteAoutScale(int32_t deviceNo, uint32_t channel, double scale);

/*
 * Puts a value on the analogue output directly.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   value     in   its low 16 bits are sent
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *   sends     0x08 with the byte channel and value as 2 bytes
 */
int32_t TORVIKwriteAoutDirect(int32_t deviceNo, uint32_t channel, int32_t value);

/*
 * Reads the type of the analogue output. The two bytes come exchanged compared with the order in which
 * TORVIKsetAoutType sends them.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   typeA     out  second byte of the answer; null is refused
 *   typeB     out  first byte of the answer; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..8, or a null pointer
 *             0x30000113  device not active
 *   sends     0x0D with the byte channel
 */
int32_t TORVIKgetAoutType(int32_t deviceNo, uint32_t channel, uint8_t* typeA, uint8_t* typeB);

/*
 * Writes the type of the analogue output and restarts the device.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   typeA     in   sent first
 *   typeB     in   sent second
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *             0x30000062  stored although the result is 0: the setting was made, but firmware below 0x00030009 knows
 *                         no restart
 *   sends     0x0E with the bytes channel, typeA, typeB, then the restart of TORVIKresetDevice
 */
int32_t TORVIKsetAoutType(int32_t deviceNo, uint32_t channel, uint8_t typeA, uint8_t typeB);

/*
 * Reads the user offset.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   offset    out  in the unit of the channel; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..8, or offset is null
 *             0x30000113  device not active
 *   sends     0x9A with the byte channel
 */
int32_t TORVIKreadUserOffset(int32_t deviceNo, uint32_t channel, double* offset);

/*
 * Writes the user offset.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   offset    in   in the unit of the channel, sent as a float
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *   sends     0x9B with the byte channel and the float
 */
int32_t TORVIKwriteUserOffset(int32_t deviceNo, uint32_t channel, double offset);

/*
 * Reads the user scale.
 *   deviceNo  in   device number 1..39; whether it is active is not checked: an inactive one does not answer
 *   channel   in   1..8
 *   scale     out  factor; null is refused
 *   result    0 or -1; a refusal of its arguments gives 0
 *   errors    0x30000100  channel outside 1..8, or scale is null; the result is 0
 *             none        device number above 39; the result is 0
 *   sends     0x14 with the byte channel
 */
int32_t TORVIKreadUserScale(int32_t deviceNo, int32_t channel, double* scale);

/*
 * Writes the user scale.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   scale     in   factor, sent as a float
 *   result    0 or -1; 0 also when channel is above 8
 *   errors    0x30000100  device number above 39; channel above 8, and then the result is 0
 *             0x30000113  device not active
 *   sends     0x15 with the byte channel and the float
 */
int32_t TORVIKwriteUserScale(int32_t deviceNo, uint32_t channel, double scale);

/*
 * Reads the threshold below which values count as zero.
 *   deviceNo   in   device number 1..39
 *   channel    in   1..8
 *   threshold  out  in the unit of the channel; null is refused
 *   result     0 or -1
 *   errors     0x30000100  device number above 39, channel outside 1..8, or threshold is null
 *              0x30000113  device not active
 *   sends      0x94 with the byte channel
 */
int32_t TORVIKgetNoiseCutThreshold(int32_t deviceNo, uint32_t channel, double* threshold);

/*
 * Writes the threshold below which values count as zero.
 *   deviceNo   in   device number 1..39
 *   channel    in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   threshold  in   in the unit of the channel, sent as a float
 *   result     0 or -1
 *   errors     0x30000100  device number above 39, or channel above 8
 *              0x30000113  device not active
 *   sends      0x95 with the byte channel and the float
 */
int32_t TORVIKsetNoiseCutThreshold(int32_t deviceNo, uint32_t channel, double threshold);

/*
 * Reads the stored maximum or minimum value.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   value     out  the value; null is refused
 *   second    out  always 0.0; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..8, or a null pointer
 *             0x30000113  device not active
 *             0x30000105  the second answer did not come
 *   sends     0x53 with the byte channel; two answers
 */
int32_t TORVIKreadMaxMinVal(int32_t deviceNo, uint32_t channel, double* value, double* second);

/* Input types, ranges, sensitivity and calibration values */

/*
 * Reads a channel's present input type and measuring range. Channel 0 reads the first entry of channel 1 from
 * firmware 0x0003002F on.
 *   deviceNo  in   device number 1..39
 *   channel   in   0..8
 *   type      out  number of the type; null is refused
 *   range     out  in the unit of the type (mV/V, V, ...); null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel above 8, or a null pointer
 *             0x30000113  device not active
 *   sends     0xA2 with the bytes channel, 0; for channel 0 of firmware 0x0003002F and later with the bytes 1, 1
 */
int32_t TORVIKgetInTypeRange(int32_t deviceNo, uint32_t channel, uint32_t* type, double* range);

/*
 * Reads all input types and ranges that a channel offers. The device ends its list with an error status, which
 * stays as the last error although the result is 0.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8
 *   count     out  number of entries, 1..10; null: not written
 *   types     out  array of 10 numbers; null: not written
 *   ranges    out  array of 10 ranges; null: not written
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or channel outside 1..8
 *             0x30000113  device not active
 *   sends     0xA2 with the bytes channel, 1, then channel, 2 and so on: up to 10, with protocol kind 16 and firmware
 *             below 0x0003002F only 1
 */
int32_t TORVIKgetAllInTypesRanges(int32_t deviceNo, uint32_t channel, uint32_t* count, uint32_t* types, double* ranges);

/*
 * Selects the input type and restarts the device.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8; 0: every active channel, and then only the last acknowledgement counts
 *   type      in   number of the type
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39, or channel above 8
 *             0x30000113  device not active
 *             0x30000062  firmware below 0x0003002F
 *   sends     0xA3 with the bytes channel, type (for channel 0 once for each active channel), then the restart of
 *             TORVIKresetDevice
 */
int32_t TORVIKsetInType(int32_t deviceNo, uint32_t channel, uint8_t type);

/*
 * Writes a measuring range and restarts the device. The factor of a thousand that reading applies to type 3 is not
 * applied.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   entry     in   0..5; 0 the present one
 *   range     in   0..21474836.47, rounded to hundredths
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39, channel above 8, entry above 5, or range negative, too large or not
 *                         a number
 *             0x30000113  device not active
 *             0x30000062  stored although the result is 0: the setting was made, but firmware below 0x00030009 knows
 *                         no restart
 *   sends     0x34 with the bytes channel, entry and range x 100 as 4 bytes, then the restart of TORVIKresetDevice
 */
int32_t TORVIKFABwriteInputRange(int32_t deviceNo, uint32_t channel, uint32_t entry, double range);

/*
 * Reads the input sensitivity: measuring range divided by the scale of the analogue output.
 *   deviceNo     in   device number 1..39
 *   channel      in   1..8
 *   sensitivity  out  in the unit of the range; null: not written
 *   result       the input type, 0..255, or -1
 *   errors       0x30000100  channel outside 1..8 (checked first), or device number above 39
 *                0x30000113  device not active
 *                0x30000065  range or scale is not above 2.22e-16 in magnitude
 *   sends        0xA2 with the bytes channel, 0; then 0x06 with the byte channel
 */
int32_t TORVIKreadInputSensitivity(int32_t deviceNo, uint32_t channel, double* sensitivity);

/*
 * Writes the input sensitivity: chooses the first of the channel's first four ranges that is at most twice as large
 * (or the last), writes it, restarts the device and sets the scale of the analogue output to range / sensitivity.
 *   deviceNo     in   device number 1..39
 *   channel      in   1..8; 0: the list of channel 1 counts, and the device takes 0 as it likes
 *   mode         in   0
 *   sensitivity  in   above 2.22e-16, at most the channel's first range
 *   result       0 or -1; -1 without a code, too: the value buffers could not be cleared in the restart
 *   errors       0x30000100  mode negative or sensitivity not above 2.22e-16 (checked first); device number above 39,
 *                            channel above 8, or sensitivity above the first range
 *                0x30000113  device not active
 *                0x30000062  mode above 0 (checked first); also stored although the result is 0: firmware below
 *                            0x00030009 knows no restart
 *   sends        the list of TORVIKgetAllInTypesRanges, 0x34 with the bytes channel, 0 and range x 100 as 4 bytes,
 *                the restart of TORVIKresetDevice, then 0x07 with the byte channel and the float
 */
int32_t TORVIKwriteInputSensitivity(int32_t deviceNo, uint32_t channel, int32_t mode, double sensitivity);

/*
 * Reads a factory calibration value. Some numbers carry no value: the device is asked and the result is 0, but
 * value is not written.
 *   deviceNo  in   device number 1..39
 *   index     in   0..48
 *   channel   in   0..7
 *   value     out  the value; null is refused
 *   result    0 or -1
 *   errors    0x30000100  index outside 0..48, channel above 7, or value is null (checked first); device number above
 *                         39
 *             0x30000113  device not active
 *             0x30000058  no answer; also when the command could not be sent, as the answer is waited for all the same
 *   sends     0x17 with the bytes index, channel
 */
int32_t TORVIKreadCal(int32_t deviceNo, int32_t index, uint32_t channel, double* value);

/*
 * Writes a factory calibration value, as a float or truncated to a whole number as the index demands.
 *   deviceNo  in   device number 1..39
 *   index     in   0..48, but not those that carry no value
 *   channel   in   0..7
 *   value     in   whole numbers: -2147483648..2147483647
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, index without a value, channel above 7, or a value that is no
 *                         32-bit number
 *             0x30000113  device not active
 *   sends     0x18 with the bytes index, channel and the value as 4 bytes
 */
int32_t TORVIKFABwriteCal(int32_t deviceNo, uint32_t index, uint32_t channel, double value);

/* Units */

/*
 * Unit numbers: 0..46 stand for the texts of the unit table, 255 and 254 for the user texts 1 and 2 that the device
 * keeps. unitTextMode: bits 0..7 the request, bits 8..23 the character set of the table: 1 ASCII, 437 code page
 * 437, any other Windows-1252.
 */

/*
 * Reads a channel's unit number.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..7
 *   unitNo    out  0..255; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel outside 1..7, or unitNo is null
 *             0x30000113  device not active
 *   sends     0x0F with the byte channel
 */
int32_t TORVIKgetUnitNo(int32_t deviceNo, int32_t channel, uint32_t* unitNo);

/*
 * Sets a channel's unit number.
 *   deviceNo  in   device number 1..39
 *   channel   in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   unitNo    in   0..255
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, channel above 8, or unitNo above 255
 *             0x30000113  device not active
 *   sends     0x10 with the bytes channel, unitNo
 */
int32_t TORVIKsetUnitNo(int32_t deviceNo, uint32_t channel, uint32_t unitNo);

/*
 * Reads a channel's unit as text, or one of the user texts.
 *   deviceNo      in   device number 1..39
 *   channel       in   1..7; any for a user text
 *   unitTextMode  in   request 0: the channel's unit; 1, 2: that user text
 *   text          out  at least 10 bytes; up to 8 characters and a zero are written; null is refused
 *   result        0 or -1
 *   errors        0x30000100  device number above 39, text is null, unitTextMode negative or its request above 2;
 *                             for request 0, checked after the activity: channel outside 1..7
 *                 0x30000113  device not active
 *                 0x30000105  the channel's unit number has no text
 *   sends         0x0F with the byte channel; for a user text 0x11 with the byte 0 or 1, which draws two answers
 */
int32_t TORVIKgetUnitText(int32_t deviceNo, uint32_t channel, int32_t unitTextMode, char* text);

/*
 * Sets a channel's unit by its text. When a user text is written, at most its first 7 characters arrive.
 *   deviceNo      in   device number 1..39
 *   channel       in   1..8, or 0, which the device takes as it likes (usually all channels)
 *   unitTextMode  in   request 0: the unit of the table with this text, or user text 1 when there is none; 16: the
 *                      unit of the table only; 1, 2 (or 17, 18): that user text
 *   text          in   at most 10 characters and a zero; null is refused
 *   result        0 or -1
 *   errors        0x30000100  device number above 39, channel above 8, text null or too long, a wrong unitTextMode,
 *                             or with request 16 no unit of the table
 *                 0x30000113  device not active
 *   sends         0x10 with the bytes channel, unit number; before it, for a user text, 0x12 twice with the bytes
 *                 text 0 or 1, part 1 or 2 and 4 characters
 */
int32_t TORVIKsetUnitText(int32_t deviceNo, uint32_t channel, int32_t unitTextMode, const char* text);

/* Data rate, frequency, counter modes and analogue filter */

/*
 * Reads the sampling frequency.
 *   deviceNo  in   device number 1..39
 *   freq      out  Hz; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or freq is null
 *             0x30000113  device not active
 *   sends     0x8A
 */
int32_t TORVIKgetFrequency(int32_t deviceNo, double* freq);

/*
 * Sets the sampling frequency and restarts the device.
 *   deviceNo  in   device number 1..39
 *   freq      in   Hz, sent as a float
 *   result    0; 229: the device was restarted, but the library's value buffers could not be cleared; -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *             0x30000062  stored although the result is 0: the setting was made, but firmware below 0x00030009 knows
 *                         no restart
 *   sends     0x8B with the float, then the restart of TORVIKresetDevice
 */
int32_t TORVIKsetFrequency(int32_t deviceNo, double freq);

/*
 * Reads the smallest and the largest sampling frequency.
 *   deviceNo  in   device number 1..39
 *   min       out  Hz; null: not asked for
 *   max       out  Hz; null: not asked for
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x63 with the byte 0 for min, then 0x63 with the byte 1 for max
 */
int32_t TORVIKgetDataRateRange(int32_t deviceNo, double* min, double* max);

/*
 * Reads a setting of a counter or frequency input.
 *   deviceNo  in   device number 0..39; whether it is active is not checked: an inactive one does not answer
 *   input     in   0..2; negative ones are passed on as they are
 *   sub       in   0..15
 *   value     out  the setting; null is refused
 *   result    0 or -1
 *   errors    none        device number above 39: -1 without a code
 *             0x30000100  input above 2, sub above 15, or value is null
 *   sends     0x69 with the byte input x 16 + sub
 */
int32_t TORVIKgetCounterFreqMode(int32_t deviceNo, int32_t input, uint32_t sub, uint32_t* value);

/*
 * Writes a setting of a counter or frequency input. The mode (sub 0) can change the number of channels, which is
 * then asked for; one above 8 is not taken over.
 *   deviceNo  in   device number 1..39
 *   input     in   0..2; negative ones are passed on as they are
 *   sub       in   0..15
 *   value     in   the setting
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, input above 2, or sub above 15
 *             0x30000113  device not active
 *   sends     0x6A with the byte input x 16 + sub and value as 4 bytes; for sub 0 then 0x49 with the byte 0
 */
int32_t TORVIKsetCounterFreqMode(int32_t deviceNo, int32_t input, uint32_t sub, uint32_t value);

/*
 * Reads the setting of the analogue input filter.
 *   deviceNo  in   device number 1..39
 *   setting   out  0..65535; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or setting is null
 *             0x30000113  device not active
 *   sends     0x90 with the byte 0
 */
int32_t TORVIKreadAnalogueFilter(int32_t deviceNo, uint32_t* setting);

/*
 * Writes the setting of the analogue input filter.
 *   deviceNo  in   device number 1..39
 *   setting   in   its low 16 bits are sent
 *   result    0 or -1; 0 also for a wrong device number and a device that is not active
 *   errors    0x30000100  device number above 39; the result is 0
 *             0x30000113  device not active; the result is 0
 *   sends     0x91 with setting as 2 bytes
 */
int32_t TORVIKwriteAnalogueFilter(int32_t deviceNo, int32_t setting);

/* CAN settings, identifiers and transmit mapping */

/*
 * Reads a CAN setting.
 *   deviceNo  in   device number 1..39
 *   index     in   number of the setting, any value; 2: identifier of the value frames
 *   value     out  the setting; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or value is null
 *             0x30000113  device not active
 *   sends     0x8C with the byte index
 */
int32_t TORVIKgetCANSettings(int32_t deviceNo, uint8_t index, uint32_t* value);

/*
 * Writes a CAN setting. The library goes on with the identifiers it knows until the device is activated again.
 *   deviceNo  in   device number 1..39
 *   index     in   number of the setting, any value
 *   value     in   the setting
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x8D with the byte index and value as 4 bytes
 */
int32_t TORVIKsetCANSettings(int32_t deviceNo, uint8_t index, int32_t value);

/*
 * Sends the identifier-setting command.
 *   deviceNo  in   device number 1..39
 *   code      in   4 bytes, passed on in their order; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or code is null
 *             0x30000113  device not active
 *   sends     0x19 with the four bytes
 */
int32_t TORVIKsetID(int32_t deviceNo, uint8_t* code);

/*
 * Reads the state of the identifier setting.
 *   deviceNo  in   device number 1..39
 *   state     out  the device's own; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or state is null
 *             0x30000113  device not active
 *   sends     0x1A
 */
int32_t TORVIKgetIDState(int32_t deviceNo, uint8_t* state);

/*
 * Reads the transmit mapping. An entry does not come in the form in which it is written: its byte a stands in bits
 * 16..23, the high half of its byte b in bits 8..11 and the low half in bits 0..3.
 *   deviceNo  in   device number 1..39
 *   index     in   0: number of channels in a set; 1..16: one entry
 *   value     out  the number or the entry; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, index above 16, or value is null
 *             0x30000113  device not active
 *   sends     0x49 with the byte index
 */
int32_t TORVIKgetTXMapping(int32_t deviceNo, uint8_t index, uint32_t* value);

/*
 * Writes the transmit mapping. A number of channels whose low byte is at most 8 counts for the library at once, by
 * that byte; a higher one is left to the device.
 *   deviceNo  in   device number 1..39
 *   index     in   0: number of channels in a set; 1..16: one entry
 *   value     in   its low 16 bits are sent; not 0 for index 0
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, index above 16, or index and value both 0
 *             0x30000113  device not active
 *   sends     0x4A with the byte index and value as 2 bytes
 */
int32_t TORVIKsetTXMapping(int32_t deviceNo, uint8_t index, int32_t value);

/* Digital filters */

/*
 * Each device runs up to eight IIR and eight FIR filters. Filter type: bits 0..3 the order, bits 4..6 the kind
 * (0x00 low pass, 0x10 high pass, 0x20 band pass, 0x30 band stop), bit 7 the FIR bank.
 */

/*
 * Reads which filters are on.
 *   deviceNo  in   device number 1..39
 *   mask      out  bits 0..7 the IIR filters 1..8, bits 8..15 the FIR filters; null is refused
 *   result    0; 255: the device refused, its status is the last error; -1
 *   errors    0x30000100  device number above 39, or mask is null
 *             0x30000113  device not active
 *   sends     0x51
 */
int32_t TORVIKgetDfilterOnOff(int32_t deviceNo, uint32_t* mask);

/*
 * Switches a filter on or off: reads the mask, changes it and writes it back. When the device refuses to tell its
 * mask, its status is the last error and all other filters are switched off.
 *   deviceNo  in   device number 1..39
 *   filterNo  in   1..8; 0: all FIR filters, or the IIR filters 1..6
 *   flags     in   bit 0x80: the FIR bank, else the IIR bank
 *   on        in   0 off, anything else on
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x51, then 0x52 with the mask as 4 bytes
 */
int32_t TORVIKsetDfilterOnOff(int32_t deviceNo, uint32_t filterNo, int32_t flags, int32_t on);

/*
 * Reads the type and the cut-off frequencies of a filter.
 *   deviceNo  in   device number 1..39
 *   filterNo  in   1..8
 *   flags     in   bit 0x80: the FIR bank, else the IIR bank
 *   type      out  filter type; left as it is when the device does not answer; null is refused
 *   cutoffs   out  array of 2, in Hz; the second is written for band pass and band stop only; null is refused
 *   result    0; 255: the device refused, its status is the last error; -1
 *   errors    0x30000100  device number above 39, filterNo outside 1..8, or a null pointer
 *             0x30000113  device not active
 *             none        the device's sampling frequency is not above 0: -1 without a code
 *   sends     0x8A; 0x4B with the bytes filterNo, bank; 0x4D with the bytes filterNo, bank + 0 and for band kinds
 *             bank + 1
 */
int32_t TORVIKgetDfilterInfo(int32_t deviceNo, uint32_t filterNo, int32_t flags, uint32_t* type, double* cutoffs);

/*
 * Asks for the type of a filter, but never delivers it: use TORVIKgetDfilterInfo.
 *   deviceNo  in   device number 1..39
 *   filterNo  in   1..8
 *   flags     in   bit 0x80: the FIR bank, else the IIR bank
 *   type      out  never written; null is refused
 *   result    -1
 *   errors    0x30000100  device number above 39, filterNo outside 1..8, or type is null
 *             0x30000113  device not active
 *             0x30000105  the device answered
 *   sends     0x4B with the bytes filterNo, bank
 */
int32_t TORVIKgetDigiFiltType(int32_t deviceNo, uint32_t filterNo, int8_t flags, uint32_t* type);

/*
 * Reads the coefficients of a filter of the device, or of the last design of TORVIKcalcSetDfilterParams. Negative
 * coefficients of the device are not delivered: their elements are left as they are.
 *   deviceNo  in   device number 1..39
 *   filterNo  in   1..8; negative: the last design for this device
 *   flags     in   0: x and y of an IIR filter; otherwise only x, of the FIR bank with bit 0x80
 *   x         out  array of 5 input coefficients (4 with flags other than 0); null is refused
 *   y         out  array of 4 feedback coefficients; null is refused with flags 0
 *   result    0 or -1; of the last coefficient when some did not come
 *   errors    0x30000100  device number above 39, filterNo 0 or above 8, or a null pointer
 *             0x30000113  device not active
 *             0x30000201  filterNo is negative and there is no valid design, even with a null pointer
 *   sends     0x4F with the bytes filterNo and index (y: index + 0x10) for each coefficient; nothing for a design
 */
int32_t TORVIKgetDfilterCoeff(int32_t deviceNo, int32_t filterNo, uint32_t flags, double* x, double* y);

/*
 * Stores digital filters on the device.
 *   deviceNo  in   device number 1..39
 *   a         in   0..8, passed on as it is
 *   b         in   0..8, passed on as it is
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or a or b above 8
 *             0x30000113  device not active
 *   sends     0x7E with the bytes a, b
 */
int32_t TORVIKstoreDigitalFilter(int32_t deviceNo, uint32_t a, uint32_t b);

/*
 * Loads a filter with given coefficients and stores the settings.
 *   deviceNo  in   device number 1..39
 *   filterNo  in   0..8; 0 is passed on
 *   type      in   filter type; negative: the FIR form, without y
 *   cutoffs   in   array of 2, as fractions of the sampling frequency, above 0; the second for band pass and band
 *                  stop only; null is refused
 *   x         in   order + 1 input coefficients; null is refused
 *   y         in   order feedback coefficients; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, filterNo above 8, a null pointer, a cut-off not above 0, or a kind
 *                         of 0x40 and more
 *             0x30000113  device not active
 *   sends     0x4C with the bytes filterNo, type; 0x4E with the bytes filterNo, 0 or 1 and the float for each cut-
 *             off; 0x50 with the bytes filterNo, index (y: index + 0x10, FIR: index + 0x80) and 4 bytes for each
 *             coefficient, a float with protocol kind 16, sign and magnitude with 24 fraction bits with 32; then 0x0A
 *             with the byte 0
 */
int32_t TORVIKsetDfilterParams(int32_t deviceNo, uint32_t filterNo, int32_t type, double* cutoffs, double* x,
                               double* y);

/*
 * Designs a filter of fourth order for the device's sampling frequency and loads it.
 *   deviceNo        in   device number 1..39
 *   filterNo        in   0..8 as for TORVIKsetDfilterParams; above 8: design only
 *   mode            in   bit 0 must be 0
 *   kind            in   0 low pass, 1 high pass, 2 band pass, 3 band stop
 *   characteristic  in   1 Bessel, 2 Butterworth
 *   orderBits       in   order for the filter type; 4
 *   f1              in   lower or only cut-off frequency in Hz, at most half the sampling frequency; NaN is rejected by
 *                        the designer, with 0x30000207
 *   f2              in   upper cut-off frequency of a band in Hz, as f1; ignored for other kinds
 *   result          0 or -1
 *   errors          0x30000100  device number above 39, or kind, characteristic or a cut-off frequency out of range
 *                   0x30000113  device not active
 *                   0x30000062  mode with bit 0
 *                   0x30000064  the device's sampling frequency could not be read
 *                   0x30000207  the cut-off frequencies give no real coefficients: one is NaN or has another sign than
 *                               the other, or both are equal
 *                   0x30000208  the coefficients are too large for the device (cut-off too low)
 *                   0x30000209  the gain is too large for the device (cut-off too low)
 *                   0x30000105  not enough memory
 *   sends           0x8A, then what TORVIKsetDfilterParams sends
 */
int32_t TORVIKcalcSetDfilterParams(int32_t deviceNo, uint32_t filterNo, uint32_t mode, uint32_t kind,
                                   uint32_t characteristic, uint32_t orderBits, double f1, double f2);

/*
 * Writes the response of the last design of TORVIKcalcSetDfilterParams to a text file with tab-separated columns.
 *   deviceNo  in   device number 1..39
 *   mode      in   bit 0: amplitude in dB over frequency; else bit 1: step response over time; bit 0x80: of a FIR
 *                  filter, which there never is
 *   f1        in   lowest frequency in Hz, not below fs / 250; for a step its level before (not used)
 *   f2        in   highest frequency in Hz, not above fs / 2; for a step its level after (not used)
 *   fs        in   sampling frequency in Hz; below 1: the device is asked
 *   points    in   number of lines: frequencies 1 and more; step 20 and more, of which at most 1000 are written
 *   fileName  in   file to be written, in the process's code page; null is refused. A pipe needs a reader, and the call
 *                  waits while the reader takes nothing
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, fileName is null, or mode without bits 0 and 1
 *             0x30000113  device not active, or released meanwhile: the file then ends after some of its lines
 *             0x30000064  the device's sampling frequency could not be read
 *             0x30000201  there is no valid design
 *             0x30000202  points too few, or f1 not below fs
 *             0x31......  0x31000000 | the system's error code: the file cannot be written
 *             0x30000105  not enough memory
 *   sends     nothing; 0x8A when fs is below 1
 */
int32_t TORVIKsimulateDfilter(int32_t deviceNo, int32_t mode, double f1, double f2, double fs, int32_t points,
                              const char* fileName);

/* Six-axis calibration */

/*
 * A device keeps calibrations of six-axis sensors in numbered slots. Array codes: 1 output scale, 2 matrix (row
 * after row), 3 geometric offsets X Y Z, 4 maximum of each output, 5 input scale, 6 zero signal of each input, 7
 * format word, 8 matrix B, 9 and 10 its factor indices, 11 unit numbers, 12 date (year, month, day); bit 7 is
 * passed on. Format word: low byte 0 a 6 x 6 matrix, 1 with matrix B, 2 other dimensions: inputs = (word >> 16) +
 * 1, outputs = (word >> 12 & 15) + 1. While several elements are read or written, the value stream is stopped; the
 * first element that fails ends the function, and the stream goes on.
 */

/*
 * Reads one element of the selected slot.
 *   deviceNo      in   device number 1..39
 *   arrayCode     in   1..12, with or without bit 7
 *   elementIndex  in   any
 *   value         out  the value; null is refused
 *   result        0 or -1
 *   errors        0x30000100  device number above 39, arrayCode out of range, or value is null
 *                 0x30000113  device not active
 *   sends         0x47 with the bytes arrayCode, elementIndex
 */
int32_t TORVIKreadFTSensorCalValue(int32_t deviceNo, uint32_t arrayCode, uint8_t elementIndex, double* value);

/*
 * Selects the slot whose arrays are read next.
 *   deviceNo  in   device number 1..39
 *   slot      in   passed on as it is
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x7D with the byte slot
 */
int32_t TORVIKsetFTarrayToRead(int32_t deviceNo, uint8_t slot);

/*
 * Reads the sensor's serial number.
 *   deviceNo  in   device number 1..39
 *   calSlot   in   0..255: bits 0..6 the slot; bit 7 goes out as bit 7 of the serial number's array code
 *   text      out  9 bytes: eight digits and a zero; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, calSlot above 255, or text is null
 *             0x30000113  device not active
 *             0x30000065  the device holds a number above 99999999
 *   sends     0x7D with the slot (from firmware 0x0003000B on), then 0x47 with the bytes calSlot & 0x80, 0
 */
int32_t TORVIKreadFTSensorSerNo(int32_t deviceNo, uint32_t calSlot, char* text);

/*
 * Reads a calibration of a 6 x 6 sensor. What is not wanted may be null.
 *   deviceNo    in   device number 1..39
 *   calSlot     in   0..255: bits 0..6 the slot; bit 7 goes out as bit 7 of the serial number's array code
 *   serialText  out  9 bytes
 *   outScale    out  output scale factor
 *   inScale     out  input scale factor
 *   matrix      out  36 elements, row after row
 *   offsets     out  3 geometric offsets
 *   maxima      out  6 maximum values
 *   result      0 or -1
 *   errors      0x30000100  device number above 39, or calSlot above 255 with serialText
 *               0x30000113  device not active
 *               0x30000065  the device holds a serial number above 99999999
 *   sends       the slot as TORVIKreadFTSensorSerNo, then 0x47 for each element
 */
int32_t TORVIKreadFTSensorCalArray(int32_t deviceNo, uint32_t calSlot, char* serialText, double* outScale,
                                   double* inScale, double* matrix, double* offsets, double* maxima);

/*
 * Writes a calibration of a 6 x 6 sensor without storing it: TORVIKstoreFTSensorCal does.
 *   deviceNo    in   device number 1..39
 *   calSlot     in   0..255, otherwise not used
 *   serialText  in   digits up to 99999999, other characters before them are passed over; a text without digits is 0;
 *                    null is refused
 *   outScale    in   not 0 and not smaller than single precision holds
 *   inScale     in   as outScale
 *   matrix      in   36 elements, row after row; null is refused
 *   offsets     in   3 geometric offsets; null: zeros are written
 *   maxima      in   6 maximum values; null is refused
 *   result      0 or -1
 *   errors      0x30000100  device number above 39, a null pointer, a scale factor too near to 0, calSlot above 255,
 *                           or a serial number above 99999999
 *               0x30000113  device not active
 *   sends       0x48 for each element, the serial number last
 */
int32_t TORVIKwriteFTSensorCalArray(int32_t deviceNo, uint32_t calSlot, char* serialText, double outScale,
                                    double inScale, double* matrix, double* offsets, double* maxima);

/*
 * Reads a calibration of any dimensions. What is not wanted may be null: call it first with matrixFormat alone, and
 * then with arrays of the size that it tells (at most 256 elements).
 *   deviceNo      in   device number 1..39
 *   calSlot       in   0..255: bits 0..6 the slot; bit 7 goes out as bit 7 of the serial number's array code
 *   serialText    out  9 bytes
 *   scales        out  array of 2: output and input scale factor
 *   matrix        out  inputs x outputs elements, row after row
 *   offsets       out  3 geometric offsets
 *   maxima        out  one maximum value for each output
 *   zeroSignals   out  one for each input; not written by firmware below 0x0003002F
 *   matrixFormat  out  format word; 0 for firmware below 0x0003002F
 *   result        0 or -1
 *   errors        0x30000100  device number above 39, or calSlot above 255 with serialText
 *                 0x30000113  device not active
 *                 0x30000065  the device holds a serial number above 99999999
 *                 0x30000060  the device tells dimensions that no calibration can have
 *   sends         the slot as TORVIKreadFTSensorSerNo, then 0x47 for each element; the input scale in any case
 */
int32_t TORVIKreadFTsensorCalArrayA(int32_t deviceNo, uint32_t calSlot, char* serialText, double* scales,
                                    double* matrix, double* offsets, double* maxima, double* zeroSignals,
                                    uint32_t* matrixFormat);

/*
 * Writes a calibration of the dimensions of its format word and stores it. Firmware below 0x0003002F takes 6 x 6
 * only.
 *   deviceNo      in   device number 1..39
 *   calSlot       in   slot to store to; its low 8 bits are sent
 *   serialText    in   as for TORVIKwriteFTSensorCalArray; null is refused
 *   scales        in   array of 2: output and input scale factor, neither too near to 0; null is refused
 *   matrix        in   inputs x outputs elements, row after row; null is refused
 *   offsets       in   3 geometric offsets; null: zeros are written
 *   maxima        in   one maximum value for each output; null is refused
 *   zeroSignals   in   one for each input; null: zeros are written
 *   matrixFormat  in   format word, 0 or above, of at most 256 elements
 *   result        0 or -1
 *   errors        0x30000100  device number above 39, a null pointer, a scale factor too near to 0, a serial number
 *                             above 99999999, or a wrong format word
 *                 0x30000113  device not active
 *                 0x30000062  matrixFormat is not 0 and the firmware below 0x0003002F
 *   sends         0x48 for each element, the serial number last, then 0x7F with the slot
 */
int32_t TORVIKwriteFTsensorCalArrayA(int32_t deviceNo, uint32_t calSlot, char* serialText, double* scales,
                                     double* matrix, double* offsets, double* maxima, double* zeroSignals,
                                     int32_t matrixFormat);

/*
 * Writes the extension of a calibration: format word, matrix B and the sensor's model name (from firmware
 * 0x00030032 on).
 *   deviceNo      in   device number 1..39
 *   matrixFormat  in   format word, 0 or above
 *   matrixB       in   36 elements; null: not written
 *   facB1         in   6 indices 0..5; null: neither list is written
 *   facB2         in   6 indices 0..5; null: neither list is written
 *   model         in   up to 15 characters are taken; null: not written
 *   result        0 or -1; when a model name is written, of its last part alone
 *   errors        0x30000100  device number above 39, matrixFormat negative, or an index above 5
 *                 0x30000113  device not active
 *                 0x30000062  firmware below 0x0003002F
 *   sends         0x48 for each element; 0x1C four times with a part 1..4 and 4 characters
 */
int32_t TORVIKwriteFTsensorCalArrExt(int32_t deviceNo, int32_t matrixFormat, double* matrixB, uint32_t* facB1,
                                     uint32_t* facB2, char* model);

/*
 * Reads the extension of a calibration. Matrix B and its indices are read when the format word says that there is
 * one and all three are wanted; the model name from firmware 0x00030032 on.
 *   deviceNo      in   device number 1..39
 *   matrixFormat  out  format word; null is refused
 *   matrixB       out  36 elements; may be null
 *   facB1         out  6 indices; may be null
 *   facB2         out  6 indices; may be null
 *   model         out  16 bytes; may be null
 *   result        0 or -1
 *   errors        0x30000100  device number above 39, or matrixFormat is null
 *                 0x30000113  device not active
 *                 0x30000062  firmware below 0x0003002F
 *                 0x30000060  the device answered with no whole number or with a wrong part of the name
 *   sends         0x47 for each element; 0x1B, which draws four answers
 */
int32_t TORVIKreadFTsensorCalArrExt(int32_t deviceNo, uint32_t* matrixFormat, double* matrixB, uint32_t* facB1,
                                    uint32_t* facB2, char* model);

/*
 * Writes unit numbers and date of a calibration.
 *   deviceNo  in   device number 1..39
 *   units     in   6 unit numbers; null: not written
 *   date      in   year, month, day; null: not written
 *   info      in   array of 2: info[0] < 0 stores into the slot -info[0] - 1 at last; info[1] > 0 is written as the
 *                  format word first; null: neither
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, or info[0] is no slot
 *             0x30000113  device not active
 *             0x30000062  firmware below 0x0003002F
 *   sends     0x48 for each element; 0x7F with the slot
 */
int32_t TORVIKwriteFTsensorCalArrInfo(int32_t deviceNo, int32_t* units, int32_t* date, double* info);

/*
 * Stores the written arrays.
 *   deviceNo  in   device number 1..39
 *   slot      in   passed on as it is
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x7F with the byte slot
 */
int32_t TORVIKstoreFTSensorCal(int32_t deviceNo, uint8_t slot);

/*
 * Reads the calibration array number.
 *   deviceNo  in   device number 1..39
 *   ignored   in   any
 *   out       out  3 bytes; a zero byte is the last that is written; null is refused
 *   result    0 or -1; 0 also when out is null, and then nothing is sent
 *   errors    0x30000100  device number above 39, or out is null
 *             0x30000113  device not active
 *   sends     0x54
 */
int32_t TORVIKgetFTSensorCalArrNo(int32_t deviceNo, uint32_t ignored, uint8_t* out);

/*
 * Sets the calibration array number.
 *   deviceNo  in   device number 1..39
 *   number    in   passed on as it is
 *   result    0 or -1
 *   errors    0x30000100  device number above 39
 *             0x30000113  device not active
 *   sends     0x55 with the byte number
 */
int32_t TORVIKsetFTSensorCalArrNo(int32_t deviceNo, uint8_t number);

/*
 * Reads a calibration file and the matrix files it names, and writes and stores what they say: extension (from
 * firmware 0x0003002F on), date, units and the arrays. A file for a smaller sensor written to firmware below
 * 0x0003002F fills a 6 x 6 matrix, which such a device takes for one: do not do that.
 *   deviceNo  in   device number 1..39
 *   calSlot   in   slot to store to; its low 8 bits are sent
 *   path      in   the file, in the process's code page; null is refused
 *   result    0 or -1
 *   errors    0x30000100  device number above 39, path is null, a serial number above 99999999, a factor index above
 *                         5, a scale factor too near to 0, or a unit text of more than 10 characters
 *             0x30000113  device not active, or released (or released and activated again) while the files were read
 *             0x30000108  the file's content breaks a rule, or it is a folder, a pipe or a device; nothing has been
 *                         sent, unless it is a third unit text of its own
 *             0x2.......  0x20000000 | the system's error code: a file cannot be read
 *   sends     what TORVIKwriteFTsensorCalArrExt sends, 0x48 for date and units, 0x11, 0x12 and 0x10 for unit texts of
 *             no table, what TORVIKwriteFTsensorCalArrayA sends
 */
int32_t TORVIKwriteFTSensorCalFromFile(int32_t deviceNo, uint32_t calSlot, const char* path);

#ifdef __cplusplus
}
#endif

#endif
