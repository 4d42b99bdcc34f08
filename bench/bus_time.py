#!/usr/bin/python3
"""How much longer the library takes than a bare client of the adapter: bus_time.py BUILD_DIRECTORY [--strict] [ROUNDS]

The virtual bus runs in real time. All settings of an amplifier are read, then a calibration file is loaded; a bare client
then writes the same commands into the adapter, each after the answer to the one before. Both wait for the bus and are woken
once or twice a command, which takes the machine 5 to 100 us each, so that their ratio says what the library adds. The ratio
to the bus alone (all commands written at once, so that it is never idle) is printed, too; it grows with the time that the
machine needs to wake a thread. Without bus timing, loading is compared with as many of the library's plainest transactions.
Rounds alternate; the median of the ratios counts.
"""
import ctypes
import pathlib
import select
import statistics
import sys
import time

BUILD = pathlib.Path(sys.argv[1])
STRICT = "--strict" in sys.argv[2:]  # exit code 3 when a goal is missed
ROUNDS = next((int(word) for word in sys.argv[2:] if word.isdigit()), 7)
SAMPLES = pathlib.Path(__file__).resolve().parent.parent / "examples/calibration"
CHANNEL, COMMAND_ID, DEVICE, SLOT, RECEIVE_EVENT = 0x51, 0x100, 1, 3, 0x03
AMPLIFIER = b"[[amplifier]]\nstreaming = false\nreset_time_ms = 0\n"
TIMED_BUS = b"[bus]\ntiming = true\n" + AMPLIFIER


class Frame(ctypes.Structure):
    _fields_ = [("id", ctypes.c_uint32), ("type", ctypes.c_uint8), ("length", ctypes.c_uint8),
                ("data", ctypes.c_uint8 * 8)]


adapter = ctypes.CDLL(str(BUILD / "virtual/libpcanbasic.so"), mode=ctypes.RTLD_GLOBAL)
torvik = ctypes.CDLL(str(BUILD / "libTORVIK.so"))


def taken(result):
    if result < 0:
        code, text = ctypes.c_uint32(), ctypes.create_string_buffer(128)
        torvik.TORVIKgetLastErrorText(DEVICE, text, ctypes.byref(code))
        sys.exit(f"a call failed: {text.value.decode()}")


def read_everything():
    """The readable settings of a six-channel amplifier."""
    number, other, value, second = ctypes.c_uint32(), ctypes.c_uint32(), ctypes.c_double(), ctypes.c_double()
    byte_a, byte_b, text = ctypes.c_uint8(), ctypes.c_uint8(), ctypes.create_string_buffer(16)
    ref = ctypes.byref
    for name in ("SerialNo", "Mode", "FirmwareVersion", "HardwareVersion", "SoftwareConfiguration"):
        taken(getattr(torvik, "TORVIKget" + name)(DEVICE, ref(number)))
    for index in range(2):
        taken(torvik.TORVIKgetTXmode(DEVICE, index, ref(number)))
        taken(torvik.TORVIKreadDeviceHours(DEVICE, index, ref(value)))
    taken(torvik.TORVIKgetFrequency(DEVICE, ref(value)))
    taken(torvik.TORVIKgetDataRateRange(DEVICE, ref(value), ref(second)))
    taken(torvik.TORVIKreadAnalogueFilter(DEVICE, ref(number)))
    for index in range(8):
        taken(torvik.TORVIKgetCANSettings(DEVICE, index, ref(number)))
    for index in range(17):
        taken(torvik.TORVIKgetTXMapping(DEVICE, index, ref(number)))
    for channel in range(1, 7):
        taken(torvik.TORVIKreadZero(DEVICE, channel, ref(number)))
        for name in ("readAoutOffset", "readAoutScale", "readUserOffset", "readUserScale", "getNoiseCutThreshold"):
            taken(getattr(torvik, "TORVIK" + name)(DEVICE, channel, ref(value)))
        taken(torvik.TORVIKgetAoutType(DEVICE, channel, ref(byte_a), ref(byte_b)))
        taken(torvik.TORVIKgetInTypeRange(DEVICE, channel, ref(number), ref(value)))
        taken(torvik.TORVIKreadInputSensitivity(DEVICE, channel, ref(value)))
        taken(torvik.TORVIKgetUnitNo(DEVICE, channel, ref(other)))
        taken(torvik.TORVIKgetUnitText(DEVICE, channel, 0, text))
        for index in range(6):
            taken(torvik.TORVIKreadCal(DEVICE, index, channel - 1, ref(value)))


def load_calibration():
    taken(torvik.TORVIKwriteFTSensorCalFromFile(DEVICE, SLOT, str(sample()).encode()))


def sample():
    """The six-input, six-output sample that takes the most frames."""
    return max(SAMPLES.glob("*.ini"), key=lambda path: path.stat().st_size)


def open_device(bench):
    torvik.TORVIKrelease(0)
    if adapter.virtualConfigure(bench) != 0:
        sys.exit("the bench is not understood")
    taken(torvik.TORVIKactivateStd(DEVICE, ctypes.byref(ctypes.c_uint32())))
    taken(torvik.TORVIKstopTX(DEVICE))
    written()


def written():
    frames = (Frame * 4096)()
    return frames[:adapter.virtualTakeWritten(frames, len(frames))]


def answers_of(frames):
    """Commands draw one answer each, the user texts and the model name more."""
    return sum({0x11: 2, 0x1B: 4}.get(frame.data[1], 1) for frame in frames)


def open_adapter():
    torvik.TORVIKrelease(0)
    adapter.virtualConfigure(TIMED_BUS)
    if adapter.CAN_Initialize(CHANNEL, 0x0014, 0, 0, 0) != 0:
        sys.exit("the channel does not open")


def the_bus_alone(frames):
    """Writes the commands all at once; the bus is then busy from the first frame to the last answer."""
    open_adapter()
    waiting, message, stamp = answers_of(frames), Frame(), (ctypes.c_uint8 * 8)()
    begun = time.perf_counter()
    for frame in frames:
        if adapter.CAN_Write(CHANNEL, ctypes.byref(frame)) != 0:
            sys.exit("a command is not taken")
    while waiting > 0:
        if adapter.CAN_Read(CHANNEL, ctypes.byref(message), stamp) == 0:
            waiting -= message.id == COMMAND_ID + 1
        if time.perf_counter() - begun > 10:
            sys.exit(f"{waiting} answers are missing")
    elapsed = time.perf_counter() - begun
    adapter.CAN_Uninitialize(CHANNEL)
    return elapsed


def a_bare_client(frames):
    """Writes each command when the answer to the one before has come, with nothing between the adapter and this loop."""
    open_adapter()
    number, message, stamp = ctypes.c_uint32(), Frame(), (ctypes.c_uint8 * 8)()
    if adapter.CAN_GetValue(CHANNEL, RECEIVE_EVENT, ctypes.byref(number), 4) != 0:
        sys.exit("the adapter has no receive event")
    arrival = select.poll()
    arrival.register(number.value, select.POLLIN)
    begun = time.perf_counter()
    for frame in frames:
        if adapter.CAN_Write(CHANNEL, ctypes.byref(frame)) != 0:
            sys.exit("a command is not taken")
        waiting = answers_of([frame])
        while waiting > 0:
            if not arrival.poll(1000):
                sys.exit("an answer is missing")
            while adapter.CAN_Read(CHANNEL, ctypes.byref(message), stamp) == 0:
                waiting -= message.id == COMMAND_ID + 1
    elapsed = time.perf_counter() - begun
    adapter.CAN_Uninitialize(CHANNEL)
    return elapsed


def bare_transactions(frames):
    """As many commands with one answer each as `frames` are."""
    mode = ctypes.byref(ctypes.c_uint32())
    begun = time.perf_counter()
    for _ in frames:
        torvik.TORVIKgetMode(DEVICE, mode)
    elapsed = time.perf_counter() - begun
    if len(written()) != len(frames):
        sys.exit("a transaction was not made")
    return elapsed


def measure(name, action, bench, measure_of, goal, shown=None):
    """Judged by the ratio to what `measure_of` takes for the same commands; that to `shown` is only printed."""
    ratios, others = [], []
    for _ in range(ROUNDS):
        open_device(bench)
        begun = time.perf_counter()
        action()
        elapsed = time.perf_counter() - begun
        frames = written()
        ratios.append(elapsed / measure_of(frames))
        if shown:
            others.append(elapsed / shown(frames))
    ratio = statistics.median(ratios)
    print(f"{name}, {len(frames)} commands, against {measure_of.__name__.replace('_', ' ')}"
          f"  {ratio:.2f}  ({min(ratios):.2f} .. {max(ratios):.2f})  goal <= {goal}  {'met' if ratio <= goal else 'missed'}" +
          (f"; against {shown.__name__.replace('_', ' ')} {statistics.median(others):.2f}" if shown else ""))
    return ratio <= goal


met = [measure("reading all settings", read_everything, TIMED_BUS, a_bare_client, 1.25, the_bus_alone),
       measure("loading a calibration", load_calibration, TIMED_BUS, a_bare_client, 1.25, the_bus_alone),
       measure("loading a calibration without bus timing", load_calibration, AMPLIFIER, bare_transactions, 2)]
sys.exit(0 if all(met) or not STRICT else 3)
