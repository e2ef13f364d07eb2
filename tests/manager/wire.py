"""The conversation and the result files, read strictly: whatever is not exactly as told raises WireError.

Written against the format alone and sharing no code with the simulator, so that the two check each other.
"""

import dataclasses
import struct

ACKNOWLEDGEMENT = 255
QUIT_OR_CPU = 254
STATUS_LENGTH = 10
CPU_LENGTH = 12  # of what follows the length field
HEADER_SIZE = 256

GREETING = (255, 1)
ALIVE = (255, 1)
DETACHED = (255, 3)
QUITTING = (254, 2)


class WireError(Exception):
    """Bytes that no simulator may send or write."""


def require(condition, what):
    if not condition:
        raise WireError(what)


@dataclasses.dataclass(frozen=True)
class Status:
    """An answer, or the greeting."""

    code: tuple
    process: int


@dataclasses.dataclass(frozen=True)
class CpuTime:
    """Processor seconds so far, ahead of each data message."""

    client: int
    experiment: int
    seconds: float


@dataclasses.dataclass(frozen=True)
class Data:
    """One report. `raw` is the message as it came, `rows` its observations by variable."""

    client: int
    experiment: int
    rows: dict
    raw: bytes


def read_data(body):
    """The data message that `body` holds, all of it."""
    length, client, experiment, records = struct.unpack_from(">iBhh", body)
    require(length == len(body), f"a data message of {len(body)} bytes says {length}")
    offset = 9
    rows = {}
    for _ in range(records):
        require(offset + 7 <= length, "a record's head goes beyond its message")
        variable, kind, count = struct.unpack_from(">hbi", body, offset)
        offset += 7
        require(kind == 1, f"record of kind {kind}")
        require(count > 0, "a record without observations")
        require(variable >= 0 and (not rows or variable > max(rows)), "records out of order")
        require(offset + 8 * count <= length, "a record goes beyond its message")
        rows[variable] = struct.unpack_from(f">{count}d", body, offset)
        offset += 8 * count
    require(offset == length, "bytes behind the last record")
    return Data(client, experiment, rows, bytes(body))


def read_message(read):
    """The next message; `read` gives exactly as many bytes as asked for."""
    head = read(5)
    length, kind = struct.unpack(">iB", head)
    if kind == ACKNOWLEDGEMENT or (kind == QUIT_OR_CPU and length == STATUS_LENGTH):
        require(length == STATUS_LENGTH, f"a status message says {length}")
        code, process = struct.unpack(">Bi", read(5))
        require((kind, code) in {GREETING, DETACHED, QUITTING}, f"status {kind}, {code}")
        return Status((kind, code), process)
    if kind == QUIT_OR_CPU:
        require(length == CPU_LENGTH, f"a processor time message says {length}")
        return CpuTime(*struct.unpack(">Bhd", read(11)))
    require(length >= 9, f"a data message says {length}")
    return read_data(head + read(length - 5))


@dataclasses.dataclass(frozen=True)
class BinaryFile:
    """A binary result file. `rest` is what stands behind the last whole message."""

    header: dict
    messages: list
    rest: bytes


def read_binary(data):
    """The parts of a binary result file."""
    require(len(data) >= HEADER_SIZE, f"{len(data)} bytes are no header")
    text, zeros = data[:HEADER_SIZE].split(b"\0", 1)
    require(not zeros.strip(b"\0"), "text behind the header's zeros")
    entries = text.decode("ascii").split(",")
    require(entries[:2] == ["QUORVA_SIM_BIN_FILE", "256"], f"header {entries[:2]}")
    require(entries[-2:] == ["", ""], "the header does not end in two commas")
    header = dict(entry.split("=", 1) for entry in entries[2:-2])
    names = ["QUORVA_VER", "FILE_VER", "EXPERIMENTS", "SEED", "RANDOMGEN", "BATCHES"]
    require(list(header) == names, f"header entries {list(header)}")
    messages = []
    offset = HEADER_SIZE
    while len(data) - offset >= 4:
        length = struct.unpack_from(">i", data, offset)[0]
        require(length >= 9, f"a data message says {length}")
        if offset + length > len(data):
            break
        messages.append(read_data(data[offset : offset + length]))
        offset += length
    return BinaryFile(header, messages, data[offset:])


@dataclasses.dataclass(frozen=True)
class AsciiFile:
    """An ASCII result file. `batches` is None while the closing line is missing."""

    lines: list
    batches: int | None


def read_ascii(data):
    """The parts of an ASCII result file."""
    require(b"\r" not in data, "a carriage return")
    require(data.endswith(b"\n"), "the last line has no end")
    lines = data.decode("ascii").split("\n")[:-1]
    require(lines[0].startswith("#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,"), f"first line {lines[0]}")
    require(lines[1] == "#FORMAT: (PV ID Number),(PV Value)", f"second line {lines[1]}")
    batches = None
    if lines[-1].startswith("#META_DATA,BATCHES="):
        batches = int(lines.pop().split("=")[1])
    return AsciiFile(lines[2:], batches)


def ascii_lines(message):
    """The lines of the ASCII file that tell the same as `message`."""
    return [f"{variable},{ascii_value(value)}" for variable in message.rows for value in message.rows[variable]]


def ascii_value(value):
    """Ten decimals, without the zeros at the end but for the one behind the point."""
    whole, decimals = f"{value:.10f}".split(".")
    return whole + "." + (decimals.rstrip("0") or "0")
