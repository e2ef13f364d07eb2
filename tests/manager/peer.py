"""The railway as a process of its own, and a manager that talks to it."""

import os
import pathlib
import re
import shlex
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import threading
import time
import unittest

import wire

RAILWAY = shlex.split(os.environ["QUORVA_RAILWAY"])
# Started through another program, the railway has a process id of that program's making.
IS_WRAPPED = len(RAILWAY) > 1
LONGEST = 240  # seconds after which a test gives up
ENDED_WELL = "SIMULATOR::MAIN()-GOOD EXIT"
# Closing what the other side has broken off tells so.
NOT_CONNECTED = "error in shutdown.  errno=107\n"


def first_port():
    """Where to look for a free port; tests that run at the same time begin in different places."""
    return 12000 + os.getpid() * 7 % 7000


class Manager:
    """One connection to a railway, as its manager."""

    def __init__(self, port, receive_buffer=None, patience=20):
        deadline = time.monotonic() + patience
        self.is_connected = self.connect(port, receive_buffer)
        while not self.is_connected and time.monotonic() < deadline:
            time.sleep(0.002)  # the railway tells its port before it listens there
            self.is_connected = self.connect(port, receive_buffer)
        if not self.is_connected:
            if patience:
                raise AssertionError(f"nobody listens at {port}")
            return
        self.piece = 1 << 16
        self.bytes_read = 0
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def connect(self, port, receive_buffer):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        if receive_buffer is not None:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.settimeout(LONGEST)
        try:
            self.socket.connect(("127.0.0.1", port))
        except ConnectionRefusedError:
            self.socket.close()
            return False
        return True

    def send(self, text):
        self.socket.sendall(text)

    def send_bytewise(self, text, pause=0.002):
        """Each byte by itself, with a pause in which it can be read alone."""
        for value in text:
            self.socket.sendall(bytes([value]))
            time.sleep(pause)

    def read(self, count):
        """Exactly `count` bytes; EOFError when the railway closes ahead of them, WireError when it does amid them."""
        data = bytearray()
        while len(data) < count:
            part = self.socket.recv(min(self.piece, count - len(data)))
            if not part:
                if data:
                    raise wire.WireError("the connection ends within a message")
                raise EOFError
            data += part
        self.bytes_read += count
        return bytes(data)

    def message(self):
        return wire.read_message(self.read)

    def messages(self):
        """All messages up to the railway's end."""
        found = []
        while True:
            try:
                found.append(self.message())
            except EOFError:
                return found

    def rest(self):
        """All bytes up to the railway's end."""
        data = bytearray()
        while part := self.socket.recv(self.piece):
            data += part
        return bytes(data)

    def messages_of_a_poor_listener(self):
        """All messages up to the end of a railway that leaves bytes unread, so that its system resets the connection."""
        found = []
        while True:
            try:
                found.append(self.message())
            except (EOFError, ConnectionResetError):  # it has said first, in good order, that there is no more
                return found

    def close(self):
        self.socket.close()

    def half_close(self):
        """Says in good order that nothing more will be sent, and can still read."""
        self.socket.shutdown(socket.SHUT_WR)

    def reset(self):
        """Breaks the connection off."""
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()


class Railway:
    """A railway waiting for its manager, or `alone` without one."""

    def __init__(self, folder, options, port=None, alone=False, **popen):
        self.folder = folder
        if not alone:
            options = ["-w", "-p" + str(first_port() if port is None else port), *options]
        self.error_file = open(folder / f"stderr{time.monotonic_ns()}", "wb")
        environment = {name: value for name, value in os.environ.items() if name != "SIMTEST"}
        self.process = subprocess.Popen(
            [*RAILWAY, *options], cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=self.error_file, **popen)
        self.lines = []
        self.reader = None
        self.watchdog = threading.Timer(LONGEST, self.process.kill)
        self.watchdog.start()
        self.port = None if alone else self.registered_port()
        self.begun = time.monotonic()

    def registered_port(self):
        while True:
            line = self.next_line()
            if line is None:
                raise AssertionError(f"no registration: {self.lines} {self.errors()}")
            if line.startswith("REGISTER"):
                found = re.fullmatch(r"REGISTER:  Port: \[(\d+)\]", line)
                if not found:
                    raise AssertionError(f"registration {line!r}")
                return int(found.group(1))

    def next_line(self):
        line = self.process.stdout.readline()
        if not line:
            return None
        if IS_WRAPPED:
            line = line.replace(b"\r\n", b"\n")
        self.lines.append(line.decode().removesuffix("\n"))
        return self.lines[-1]

    def hold_in_batch(self, number):
        """Reads its trace up to the beginning of this batch, counted from 1. As it then finds no room for more, it waits
        in this batch or the next one, until it is let go."""
        while number > 0:
            number -= self.next_line() == "##### NEW BATCH #####"

    def let_go(self):
        """Reads on in its trace, up to its end."""
        self.reader = threading.Thread(target=self.read_on)
        self.reader.start()

    def read_on(self):
        while self.next_line() is not None:
            pass

    def errors(self):
        # Not through the file that is open already: it shares its place with the process that writes there.
        written = pathlib.Path(self.error_file.name).read_bytes()
        return written.decode(errors="replace").replace("\r\n", "\n")

    def wait(self):
        """Status of its end."""
        if self.reader:
            self.reader.join()
        self.read_on()
        status = self.process.wait()
        self.watchdog.cancel()
        return status

    def cpu_seconds(self):
        """Processor time used so far, by user and system."""
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def is_running(self):
        return self.process.poll() is None

    def pause(self):
        """Stops it, and waits until it has stopped, or has ended meanwhile."""
        self.process.send_signal(signal.SIGSTOP)
        while pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()[0] not in "TZ":
            time.sleep(0.001)

    def resume(self):
        self.process.send_signal(signal.SIGCONT)

    def kill(self):
        if self.is_running():
            self.process.kill()
        self.process.wait()
        self.watchdog.cancel()
        if self.reader:
            self.reader.join()
        self.process.stdout.close()
        self.error_file.close()


class RailwayCase(unittest.TestCase):
    """Tests in an empty folder of their own; whatever they have started ends with them."""

    maxDiff = 2000

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="quorva_manager_"))
        self.addCleanup(shutil.rmtree, self.folder)

    def connect_paused(self, railway, **more):
        """A connection to a railway that is stopped before it can accept it; its resume() lets the run begin."""
        while True:
            railway.pause()
            manager = Manager(railway.port, patience=0, **more)
            self.addCleanup(manager.close)
            if manager.is_connected:
                return manager
            railway.resume()
            time.sleep(0.005)

    def railway(self, *options, **more):
        railway = Railway(self.folder, list(options), **more)
        self.addCleanup(railway.kill)
        return railway

    def manager(self, railway, **more):
        manager = Manager(railway.port, **more)
        self.addCleanup(manager.close)
        return manager

    def file(self, name):
        return (self.folder / name).read_bytes()

    def file_size(self, name):
        return (self.folder / name).stat().st_size

    def binary(self, name):
        return wire.read_binary(self.file(name))

    def ascii(self, name):
        return wire.read_ascii(self.file(name))

    def reference(self, *options):
        """Data messages of the same command line run alone: what every run of it must tell."""
        railway = self.railway(*options, "-b", "reference.bin", alone=True)
        self.assertEqual(railway.wait(), 0, railway.errors())
        file = self.binary("reference.bin")
        self.assertEqual(file.rest, b"")
        return file.messages

    def expect_end(self, railway, errors="", at_close=""):
        """Waits for the end of a run, which must be a good one with exactly these words on standard error: `errors` in
        the run, `at_close` when the simulator is taken down."""
        status = railway.wait()
        written = railway.errors()
        self.assertEqual(status, 0, written)
        expected = errors + ENDED_WELL + "\n" + at_close
        if IS_WRAPPED:
            # Under Wine a connection that was broken off can be shut down, and a listening socket cannot.
            expected = expected.replace(NOT_CONNECTED, "")
            if railway.port is not None:
                expected += "error in shutdown.  errno=10057\n"
        self.assertEqual(written, expected)
        self.assertEqual(railway.lines[-1], ENDED_WELL)
        self.assertRegex(railway.lines[-3], r"^Actions fired: \d+$")
        self.assertRegex(railway.lines[-2], r"^CPU time \(s\): [0-9.e+-]+$")

    def expect_status(self, message, railway, code):
        self.assertIsInstance(message, wire.Status)
        self.assertEqual(message.code, code)
        if not IS_WRAPPED:
            self.assertEqual(message.process, railway.process.pid)

    def expect_reports(self, messages, reports, client=0, experiment=0):
        """Checks that `messages` are these data messages, byte for byte, each behind its processor time."""
        self.assertEqual(len(messages), 2 * len(reports))
        seconds = 0.0
        for cpu, data, report in zip(messages[0::2], messages[1::2], reports):
            self.assertIsInstance(cpu, wire.CpuTime)
            self.assertEqual((cpu.client, cpu.experiment), (client, experiment))
            self.assertGreaterEqual(cpu.seconds, seconds)
            seconds = cpu.seconds
            self.assertIsInstance(data, wire.Data)
            self.assertEqual(data.raw, report.raw)

    def expect_stream(self, messages, railway, reports, answers):
        """Checks a whole conversation: the greeting, then for each report the answer, if any, to the signal read at it,
        and the report. `reports` are the data messages; `answers` maps a report's number, from 1, to a status. An
        answer beyond the last report stands by itself."""
        messages = list(messages)
        self.expect_status(messages.pop(0), railway, wire.GREETING)
        for number in range(1, max([len(reports), *answers]) + 1):
            if number in answers:
                self.expect_status(messages.pop(0), railway, answers[number])
            if number <= len(reports):
                self.expect_reports(messages[:2], [reports[number - 1]])
                del messages[:2]
        self.assertEqual(messages, [])

    def need_held_reports(self, railway):
        """For Windows, whose clock counts the waiting too: reports are held only in the first two seconds of a run."""
        if IS_WRAPPED and time.monotonic() - railway.begun > 2:
            self.skipTest("this machine is too busy for reports to be held")

    def expect_stalled(self, railway, seconds=2.0):
        """Checks that the railway waits, and that it does so without using the processor."""
        deadline = time.monotonic() + 60  # by then it must have come to the wait
        used = seconds
        while used > 0.05 * seconds and time.monotonic() < deadline:
            before = railway.cpu_seconds()
            time.sleep(seconds)
            self.assertTrue(railway.is_running())
            used = railway.cpu_seconds() - before
        self.assertLessEqual(used, 0.05 * seconds)
