"""usage: manager.py <file> <command>...

Starts a simulator with -w, connects to it as its manager and hears it to the end. What it said goes to <file>, one message a
line: the bytes in hexadecimal, without the process id and the processor time. The simulator's output is passed on; its
status is this program's.
"""

import re
import socket
import struct
import subprocess
import sys
import time

PATIENCE = 60  # seconds for the simulator to be there


def connect(port):
    deadline = time.monotonic() + PATIENCE
    while True:
        try:
            return socket.create_connection(("127.0.0.1", port), timeout=PATIENCE)
        except ConnectionRefusedError:
            # It tells its port before it listens there.
            if time.monotonic() > deadline:
                raise
            time.sleep(0.01)


def hear(connection):
    """All messages up to the simulator's end."""
    said = b"".join(iter(lambda: connection.recv(1 << 16), b""))
    while said:
        length, kind = struct.unpack_from(">iB", said)
        if length == 12 and kind == 254:
            yield said[:8].hex() + " <seconds>"
            said = said[16:]
        elif length == 10 and kind >= 254:
            yield said[:6].hex() + " <process>"
            said = said[10:]
        else:
            yield said[:length].hex()
            said = said[length:]


def main():
    with subprocess.Popen(sys.argv[2:], stdout=subprocess.PIPE, text=True) as simulator:
        for line in simulator.stdout:
            sys.stdout.write(line)
            registered = re.match(r"REGISTER:  Port: \[(\d+)\]", line)
            if registered:
                break
        else:
            sys.exit("the simulator told no port")
        with connect(int(registered[1])) as connection, open(sys.argv[1], "w", encoding="ascii") as file:
            file.writelines(message + "\n" for message in hear(connection))
        sys.stdout.write(simulator.stdout.read())
    sys.exit(simulator.returncode)


if __name__ == "__main__":
    main()
