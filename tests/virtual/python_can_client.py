"""Uses the virtual adapter through python-can's "pcan" interface, as any client of the adapter library would."""

import logging
import time

logging.disable(logging.WARNING)
import can  # noqa: E402  (its warning about a missing optional package is of no use here)

COMMAND, ANSWER, VALUE = 0x100, 0x101, 0x102
CHANNELS = 6


def command(code, *parameters):
    data = [0x80 | len(parameters), code, *parameters]
    return can.Message(arbitration_id=COMMAND, is_extended_id=False, data=data)


def receive(bus, identifier, seconds=2.0):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        message = bus.recv(timeout=0.2)
        if message is not None and message.arbitration_id == identifier:
            return message
    raise AssertionError(f"no frame with identifier {identifier:#x} within {seconds} s")


def ask(bus, code, *parameters):
    bus.send(command(code, *parameters))
    answer = receive(bus, ANSWER)
    assert answer.dlc == 8 and not answer.is_extended_id, answer
    assert 0x40 <= answer.data[0] <= 0x7F, answer
    return answer.data[1], bytes(answer.data[2:])


def check_commands(bus):
    status, data = ask(bus, 0x8C, 2)
    assert status == 0 and int.from_bytes(data[:4], "big") == VALUE, (status, data)
    status, data = ask(bus, 0x2B)
    assert status == 0 and int.from_bytes(data[:4], "big") == 0x00040000, (status, data)
    status, data = ask(bus, 0x49, 0)
    assert status == 0 and data[1] == CHANNELS, (status, data)
    status, _ = ask(bus, 0xFE)
    assert status == 0x40, status
    return 4


def check_stream(bus, sets):
    first = receive(bus, VALUE)
    while first.data[0] != 0:
        first = receive(bus, VALUE)
    sequence = int.from_bytes(first.data[2:4], "big")
    previous = first
    for number in range(1, sets * CHANNELS):
        frame = receive(bus, VALUE)
        assert frame.data[0] == number % CHANNELS, (number, frame)
        assert frame.data[1] >> 4 == 2, frame
        expected = (sequence + number // CHANNELS) & 0xFFFF
        assert int.from_bytes(frame.data[2:4], "big") == expected, (expected, frame)
        assert frame.timestamp >= previous.timestamp
        previous = frame
    elapsed = previous.timestamp - first.timestamp
    assert abs(elapsed - (sets - 1) * 0.01) < 0.001, elapsed
    return sets * CHANNELS


def check_refusals():
    for channel in ("PCAN_USBBUS2", "PCAN_LANBUS1"):
        try:
            can.Bus(interface="pcan", channel=channel, bitrate=1000000)
        except can.CanInitializationError as error:
            assert "not valid" in str(error), error
        else:
            raise AssertionError(f"{channel} was opened")


def main():
    check_refusals()
    with can.Bus(interface="pcan", channel="PCAN_USBBUS1", bitrate=1000000) as bus:
        assert bus.status_is_ok()
        answers = check_commands(bus)
        values = check_stream(bus, 20)
        assert bus.reset()
        status, _ = ask(bus, 0x23)
        assert status == 0, status
        assert bus.recv(timeout=0.1) is None, "a value came after the stream was stopped"
    print(f"python-can {can.__version__}: {answers + 1} answers and {values} values received, all as expected")


main()
