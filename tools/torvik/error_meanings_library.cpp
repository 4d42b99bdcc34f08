#include <array>

#include "error_meanings.h"

namespace torvik::tool {

namespace {

constexpr std::string_view kept =
    "Kept for programs that know it: this version of the library does not report it itself";
constexpr std::string_view asForDevice = "check supply, cable and bit rate, then activate the device again";
constexpr std::string_view freeResources = "close other programs or restart the process, then activate again";

constexpr auto libraryRows = std::to_array<ErrorMeaning>({
    {0xE1, "the kind of an error could not be told", "read the error again after repeating the call"},
    {0xF1, kept, "choose the adapter with --adapter usb, pci, pccard or handle1"},
    {0xF2, "the bit rate asked for is none of those that the adapter can be opened with",
     "choose one of the listed bit rates (--baud), the one that the device is set to"},
    {0xF3, "this device number is in use: the device has been activated already and not released since",
     "release it first, or use another device number"},
    {0xF4, "the system refused the event that wakes the library when frames arrive", freeResources},
    {0xF5, kept, "activate the device again"},
    {0xF6, "the device was reached, but the number of measuring channels it told is 0 or above 8",
     "check the device's configuration and its firmware; the device stays activated"},
    {0xF7, "neither protocol kind 16 nor 32 was chosen at activation", "choose --protocol 16 or --protocol 32"},
    {0xF8, "an identifier is above 2047, or command and answer identifier are the same",
     "give two different identifiers of 1..2047 (--command-id, --answer-id)"},
    {0xF9, "the device did not tell on which identifier it sends its values: nothing usable answered at all",
     "check that the device has supply, that bit rate and identifiers are those it is set to, and the bus "
     "termination (120 ohms at both ends)"},
    {0x20000000, kept, "repeat the call"},
    {0x300000F3, "there was not enough memory for the value buffers", "choose a smaller buffer (--buffer)"},
    {0x30000100,
     "an argument of the call is outside its range, a needed pointer is null, or the device number is "
     "above 39",
     "compare the arguments with the ranges that TORVIK.h states for the function"},
    {0x30000064, "the frequency asked for does not fit the device's sampling frequency",
     "choose a frequency between 0 and half the sampling frequency"},
    {0x30000101, "the device number cannot be set up: it is 0, or all devices of the table are in use",
     "use a device number of 1..39 and release devices that are not needed"},
    {0x30000105, "a step inside the call failed, mostly because the acknowledgement of a command did not arrive",
     asForDevice},
    {0x30000106, "the device has no buffer for measured values", "release the device and activate it again"},
    {0x30000108, "the file holds something that cannot be used", "check the file against its documentation"},
    {0x30000109, "the thread that receives frames could not be started", freeResources},
    {0x30000110, kept, "restart the program"},
    {0x30000111, "the system refused a lock that the library needs", freeResources},
    {0x30000112, "another call kept the answers or the values locked for 10 seconds",
     "look for a call that hangs in another thread of the program"},
    {0xD1, kept, "choose the bit rate that the device is set to"},
    {0xD2, kept, "activate the device again"},
    {0xD3, kept, "activate the device again"},
    {0xD4, "an answer arrived but stayed locked by another call for 10 seconds",
     "look for a call that hangs in another thread of the program"},
    {0xD5, kept, asForDevice},
    {0xD6, kept, asForDevice},
    {0xD7, kept, asForDevice},
    {0xD8, kept, asForDevice},
    {0xD9, kept, asForDevice},
    {0xDA, kept, asForDevice},
    {0xDB, kept, asForDevice},
    {0xDC, "result of TORVIKstopTX for a device number above 39; it is returned, not stored",
     "use a device number of 1..39"},
    {0xDD, kept, asForDevice},
    {0xDE, kept, asForDevice},
    {0xDF, "the adapter did not take the command, or it is not open",
     "check that the adapter is plugged in, that the bus is connected and that another participant acknowledges "
     "frames; then activate again"},
    {0xE1, "receiving from the adapter stopped because of an adapter fault; the fault's own code tells more",
     "check adapter, cable, bit rate and termination"},
    {0xE2, kept, asForDevice},
    {0xE3, kept, asForDevice},
    {0xE4, "there was no room given to put an answer into", "repeat the call with valid pointers"},
    {0xE5,
     "result of TORVIKclearDLLbuffer: the values were not cleared, as the device is not active or its values "
     "stayed locked; it is returned, not stored",
     "activate the device first"},
    {0xE6, kept, asForDevice},
    {0xE7, kept, asForDevice},
    {0xE8, kept, asForDevice},
    {0xE9, kept, asForDevice},
    {0xEB, "another command held this device for 4 seconds; its hold has been broken to let others pass",
     "repeat the call; when it happens again, check that the device answers at all"},
    {0x30000113, "the device is not active: never activated, or released while the call ran",
     "activate the device before the call"},
    {0x30000058, "the device did not answer the command within 2 seconds", asForDevice},
    {0x30000114, "another active device uses one of these identifiers already",
     "give every device a pair of identifiers of its own"},
});

}  // namespace

std::span<const ErrorMeaning> libraryMeanings() {
    return libraryRows;
}

}  // namespace torvik::tool
