"""Prints what cameras say of themselves, register by register. Usage: read_cameras.py ADDRESS..."""
import socket
import struct
import sys

CONFIGURATION, ADDRESS, STORED_ADDRESS, STORED_MASK, STORED_GATEWAY = 0x14, 0x24, 0x64C, 0x65C, 0x66C
MAC_HIGH, MAC_LOW = 0x08, 0x0C


def registers(address, *numbers):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as channel:
        channel.settimeout(2)
        # READREG_CMD, to be acknowledged
        channel.sendto(struct.pack(">BBHHH", 0x42, 1, 0x80, 4 * len(numbers), 1) + struct.pack(f">{len(numbers)}I", *numbers),
                       (address, 3956))
        return struct.unpack(f">{len(numbers)}I", channel.recv(600)[8:])


def line(address):
    try:
        high, low, word, now, *stored = registers(address, MAC_HIGH, MAC_LOW, CONFIGURATION, ADDRESS, STORED_ADDRESS,
                                                  STORED_MASK, STORED_GATEWAY)
    except OSError:
        return f"{address} does not answer"
    dotted = [socket.inet_ntoa(struct.pack(">I", value)) for value in [now, *stored]]
    mode = "static" if word & 1 else "dhcp" if word & 2 else "auto"
    return f"{high & 0xFFFF:04x}{low:08x} {mode} now {dotted[0]} stored {' '.join(dotted[1:])}"


print("\n".join(sorted(map(line, sys.argv[1:]))))
