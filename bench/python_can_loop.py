"""Drains and decodes value frames with python-can. Used by the benchmark program.

Standard input: the number of frames (8 bytes) and the frames as the adapter library lays them out; then a line for every
round. Standard output: for every round the number of frames, the sum of their values and the seconds that it took.
"""

import struct
import sys
import time

import can

FRAME = struct.Struct("<IBB8s")
FRAME_SIZE = 16
TYPES = {1: (struct.Struct(">h"), 0), 2: (struct.Struct(">i"), 8), 3: (struct.Struct(">f"), 0)}


def read_messages(stream):
    count = int.from_bytes(stream.read(8), sys.byteorder)
    for _ in range(count):
        identifier, _, length, data = FRAME.unpack_from(stream.read(FRAME_SIZE))
        yield can.Message(arbitration_id=identifier, data=data[:length], is_extended_id=False, check=False)


def drain(bus, values):
    """Decodes all that is waiting into values[identifier][channel]."""
    count = 0
    while (message := bus.recv(timeout=0)) is not None:
        data = message.data
        decoder, shift = TYPES[data[1] >> 4]
        values[message.arbitration_id][data[0]].append(decoder.unpack_from(data, 4)[0] >> shift
                                                       if shift else decoder.unpack_from(data, 4)[0])
        count += 1
    return count


def main():
    stream = sys.stdin.buffer
    messages = list(read_messages(stream))
    identifiers = {message.arbitration_id for message in messages}
    with can.Bus(interface="virtual", channel="bench") as sender, can.Bus(
        interface="virtual", channel="bench"
    ) as receiver:
        while stream.readline():
            for message in messages:
                sender.send(message)
            values = {identifier: [[] for _ in range(8)] for identifier in identifiers}
            start = time.perf_counter()
            count = drain(receiver, values)
            seconds = time.perf_counter() - start
            total = sum(sum(channel) for channels in values.values() for channel in channels)
            print(count, float(total), seconds, flush=True)


if __name__ == "__main__":
    main()
