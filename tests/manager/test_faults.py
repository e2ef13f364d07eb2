"""Managers that go without a word, and disks that fill up.

A connection that has ended reads as ready and gives nothing, for ever, and a railway that looks for a signal on it
waits for the signal's byte without end. A connection that is broken off fails at the first write. Either way all that
was in the files stays readable.
"""

import io
import os
import pathlib
import resource
import signal
import subprocess
import sys
import time
import unittest

from peer import IS_WRAPPED, NOT_CONNECTED, RailwayCase
from test_signals import SignalCase, ALIVE, DETACH, LOSSY, QUIT
import wire

FILES = ["-a", "own.csv", "-b", "own.bin"]
# About ten batches in a millisecond.
SLOW = "-Od:netNotDeliveryProb:0.8:s:nTrains:20"
# Some eight events in a batch, and messages of 1.7 million bytes: more than fits in the buffers of a connection.
HUGE = ["-n", "20000", "-Od:positionUpdatePeriod:60:d:TPRUpdatePeriod:60:i:lineLength:1000"]


class FaultCase(SignalCase):
    def expect_files(self, reports, batches=None, ascii_reports=None, rest=b""):
        """Checks that the files hold these reports, and that many batches in the header and behind the ASCII lines."""
        file = self.binary("own.bin")
        self.assertEqual((file.messages, file.rest), (reports, rest))
        ascii = self.ascii("own.csv")
        lines = [line for report in (reports if ascii_reports is None else ascii_reports)
                 for line in wire.ascii_lines(report)]
        self.assertEqual(ascii.lines, lines)
        if batches is not None:
            self.assertEqual((file.header["BATCHES"], ascii.batches), (str(batches), batches))

    def expect_stream_so_far(self, manager, railway, reports, answers):
        """Checks what a railway that goes on has sent, and that nothing more comes."""
        messages = [manager.message() for _ in range(1 + len(answers) + 2 * len(reports))]
        if len(reports) == 10:  # of more that are held
            self.need_held_reports(railway)
        self.expect_stream(messages, railway, reports, answers)
        manager.socket.settimeout(0.2)
        self.assertRaises(TimeoutError, manager.message)

    def expect_files_amid_a_message(self, reports):
        """Checks files whose run ended in the write of a message of 20000 batches; gives what is in the file of it."""
        file = self.binary("own.bin")
        whole = len(file.messages)
        self.assertTrue(reports[whole].raw.startswith(file.rest))
        self.assertGreater(len(file.rest), 0)
        # The ASCII file has the report on which the write failed.
        self.expect_files(reports[:whole], 20000 * (whole + 1), reports[: whole + 1], file.rest)
        return file.rest

    def start_process(self, railway, then):
        """A manager in a process of its own, which says that it is ready once it has done `then`."""
        manager = subprocess.Popen(
            [sys.executable, "-c",
             "import sys, peer, wire\n"
             "manager = peer.Manager(int(sys.argv[1]), receive_buffer=4096)\n" + then +
             "\nprint('ready', flush=True)\n"
             "sys.stdin.read()", str(railway.port)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=pathlib.Path(__file__).parent)
        self.addCleanup(manager.wait)
        self.addCleanup(manager.kill)
        self.addCleanup(manager.stdin.close)
        self.addCleanup(manager.stdout.close)
        return manager

    def expect_stalled_and_kill(self, railway):
        self.expect_stalled(railway)
        railway.kill()
        self.assertEqual(railway.process.returncode, -signal.SIGKILL)


# A moment of a run: its options, the batch in which it is held, and the reports that it has sent by then.
BEFORE_THE_FIRST_REPORT = (["-n", "10"], 5, 0)
AMID_THE_RUN = (["-n", "10"], 25, 2)
WHILE_REPORTS_ARE_HELD = (["-n", "1"], 13, 10)


class Goes(FaultCase):
    """The manager goes in each way at each moment of a run, which is held there by the reader of its trace."""

    def start_for(self, moment):
        """A railway to be held at this moment, and all reports of its run."""
        options, _, _ = moment
        reports = self.reference("-N", "40", *options, LOSSY)
        return self.railway(*options, LOSSY, *FILES, "-m", pipesize=4096), reports

    def hold(self, railway, moment):
        railway.hold_in_batch(moment[1])
        if moment is WHILE_REPORTS_ARE_HELD:
            self.need_held_reports(railway)

    def expect_wait(self, railway, reports):
        railway.let_go()
        self.expect_stalled_and_kill(railway)
        self.expect_files(reports)

    def expect_wait_without(self, end, moment):
        """Checks a railway whose manager has read all and goes by `end`, as it would in good order."""
        sent = moment[2]
        railway, reports = self.start_for(moment)
        manager = self.manager(railway)
        self.hold(railway, moment)
        self.expect_stream([manager.message() for _ in range(1 + 2 * sent)], railway, reports[:sent], {})
        end(manager)
        self.expect_wait(railway, reports[:sent])

    def expect_wait_without_killed(self, moment):
        sent = moment[2]
        railway, reports = self.start_for(moment)
        manager = self.start_process(railway, f"for _ in range({1 + 2 * sent}): manager.message()")
        self.hold(railway, moment)
        self.assertEqual(manager.stdout.readline(), b"ready\n")
        manager.kill()
        manager.wait()
        self.expect_wait(railway, reports[:sent])

    def expect_end_at_next_write(self, railway, reports, sent):
        """Checks the end of a railway whose connection was broken off when it had sent so many reports."""
        railway.let_go()
        self.expect_end(railway, at_close=NOT_CONNECTED)
        # The report on which the write failed has gone to the ASCII file all the same.
        self.expect_files(reports[:sent], len(reports[0].rows[0]) * (sent + 1), reports[: sent + 1])

    def expect_end_at_failed_write_of_held(self, railway, reports, sent):
        """The same where each receive fails, and not the first one alone: the reports held go to the ASCII file."""
        railway.let_go()
        self.expect_end(railway, at_close=NOT_CONNECTED)
        written = len(self.ascii("own.csv").lines) // 11
        self.assertIn(written, range(sent + 3, 36))
        self.expect_files(reports[:sent], written, reports[:written])

    def expect_broken_off(self, end, moment):
        sent = moment[2]
        railway, reports = self.start_for(moment)
        manager = self.manager(railway)
        self.hold(railway, moment)
        self.expect_stream([manager.message() for _ in range(1 + 2 * sent)], railway, reports[:sent], {})
        end(manager)
        if moment is not WHILE_REPORTS_ARE_HELD:
            self.expect_end_at_next_write(railway, reports, sent)
        elif IS_WRAPPED:
            self.expect_end_at_failed_write_of_held(railway, reports, sent)
        else:
            # The first look for a signal meets the failure, and ignores it; the next one meets a connection at its end.
            self.expect_wait(railway, reports[:sent])

    def test_having_closed_its_side_before_the_first_report(self):
        self.expect_wait_without(lambda manager: manager.half_close(), BEFORE_THE_FIRST_REPORT)

    def test_having_closed_its_side_amid_the_run(self):
        self.expect_wait_without(lambda manager: manager.half_close(), AMID_THE_RUN)

    def test_having_closed_its_side_while_reports_are_held(self):
        self.expect_wait_without(lambda manager: manager.half_close(), WHILE_REPORTS_ARE_HELD)

    def test_having_closed_before_the_first_report(self):
        self.expect_wait_without(lambda manager: manager.close(), BEFORE_THE_FIRST_REPORT)

    def test_having_closed_amid_the_run(self):
        self.expect_wait_without(lambda manager: manager.close(), AMID_THE_RUN)

    def test_having_closed_while_reports_are_held(self):
        self.expect_wait_without(lambda manager: manager.close(), WHILE_REPORTS_ARE_HELD)

    def test_killed_before_the_first_report(self):
        self.expect_wait_without_killed(BEFORE_THE_FIRST_REPORT)

    def test_killed_amid_the_run(self):
        self.expect_wait_without_killed(AMID_THE_RUN)

    def test_killed_while_reports_are_held(self):
        self.expect_wait_without_killed(WHILE_REPORTS_ARE_HELD)

    def test_killed_with_reports_unread(self):
        sent = AMID_THE_RUN[2]
        railway, reports = self.start_for(AMID_THE_RUN)
        manager = self.start_process(railway, "manager.message()")
        self.hold(railway, AMID_THE_RUN)
        self.assertEqual(manager.stdout.readline(), b"ready\n")
        manager.kill()
        manager.wait()
        self.expect_end_at_next_write(railway, reports, sent)

    def test_broken_off_before_the_first_report(self):
        self.expect_broken_off(lambda manager: manager.reset(), BEFORE_THE_FIRST_REPORT)

    def test_broken_off_amid_the_run(self):
        self.expect_broken_off(lambda manager: manager.reset(), AMID_THE_RUN)

    def test_broken_off_while_reports_are_held(self):
        self.expect_broken_off(lambda manager: manager.reset(), WHILE_REPORTS_ARE_HELD)


class EndsInOrder(FaultCase):
    """The manager closes its end: the railway waits for ever, without using the processor."""

    def test_before_the_first_report(self):
        railway, manager = self.start(["-n", "10", LOSSY, *FILES], b"", ends=True)
        self.expect_stream_so_far(manager, railway, [], {})
        self.expect_stalled_and_kill(railway)
        self.expect_files([])
        self.assertEqual(self.binary("own.bin").header["BATCHES"], "0")

    def test_amid_the_run(self):
        reports = self.reference("-N", "40", "-n", "10", LOSSY)
        railway, manager = self.start(["-n", "10", LOSSY, *FILES], ALIVE * 4, ends=True)
        self.expect_stream_so_far(manager, railway, reports, {number: wire.ALIVE for number in range(1, 5)})
        manager.close()  # altogether: as nothing is sent to it, the railway does not come to know
        self.expect_stalled_and_kill(railway)
        self.expect_files(reports)
        self.assertEqual(self.binary("own.bin").header["BATCHES"], "40")

    def test_while_reports_are_held(self):
        reports = self.reference("-N", "10", "-n", "1", LOSSY)
        railway, manager = self.start(["-n", "1", LOSSY, *FILES], ALIVE * 14, ends=True)
        self.expect_stream_so_far(manager, railway, reports, {number: wire.ALIVE for number in range(1, 15)})
        self.expect_stalled_and_kill(railway)
        self.expect_files(reports)

    def test_amid_a_message_that_it_reads_to_its_end(self):
        reports = self.reference("-N", "120000", *HUGE)
        railway = self.railway(*HUGE, *FILES)
        manager = self.manager(railway, receive_buffer=4096)
        self.expect_status(manager.message(), railway, wire.GREETING)
        self.expect_stalled(railway, seconds=1.0)  # in the write
        begun = len(self.binary("own.bin").messages) + 1
        manager.half_close()
        self.expect_reports([manager.message() for _ in range(2 * begun)], reports[:begun])
        self.expect_stalled_and_kill(railway)
        self.expect_files(reports[:begun])

    def test_amid_the_text_of_a_detach(self):
        reports = self.reference("-N", "20", "-n", "10", LOSSY)
        railway, manager = self.start(["-n", "10", LOSSY, *FILES], ALIVE * 2 + DETACH + b"alone.bin;4", ends=True)
        self.expect_stream_so_far(manager, railway, reports, {1: wire.ALIVE, 2: wire.ALIVE})
        self.expect_stalled_and_kill(railway)
        self.expect_files(reports)


class BreaksOff(FaultCase):
    """The manager resets the connection: the next write fails and the run ends, unless nothing is written."""

    def test_as_the_run_begins(self):
        railway, manager = self.start([LOSSY, *FILES], b"")
        # The railway may have accepted by now or not, and be in its first report; the end is the same.
        manager.reset()
        self.assertEqual(railway.wait(), 0)
        self.assertEqual(self.binary("own.bin").messages, [])

    def test_before_the_first_report(self):
        railway = self.railway(LOSSY, *FILES)
        manager = self.connect_paused(railway)
        manager.reset()
        railway.resume()
        self.expect_end(railway, at_close=NOT_CONNECTED)
        self.assertEqual(railway.lines[-3], "Actions fired: 0")
        self.expect_files([], batches=0)

    def test_amid_a_message(self):
        reports = self.reference("-N", "120000", *HUGE)
        railway = self.railway(*HUGE, *FILES)
        manager = self.manager(railway, receive_buffer=4096)
        self.expect_status(manager.message(), railway, wire.GREETING)
        manager.read(16 + 100000)
        self.expect_stalled(railway, seconds=1.0)  # in the write
        manager.reset()
        self.expect_end(railway, at_close=NOT_CONNECTED)
        rest = self.expect_files_amid_a_message(reports)
        # Each piece of a message is written to the file only if the connection has taken some of it.
        rows = [9 + (7 + 160000) * row for row in range(12)]
        self.assertIn(len(rest), [row + part for row in rows for part in (0, 2, 3, 7)])

    def test_amid_the_text_of_a_detach_the_wait_is_without_end(self):
        reports = self.reference("-N", "10", "-n", "10", LOSSY)
        railway, manager = self.start(["-n", "10", LOSSY, *FILES], ALIVE + DETACH + b"alone.bin;4")
        self.expect_stream_so_far(manager, railway, reports, {1: wire.ALIVE})
        manager.reset()
        self.expect_stalled_and_kill(railway)
        self.expect_files(reports)


class IsKilled(FaultCase):
    """The manager's process ends without closing anything: its system closes in order, or resets over unread bytes."""

    def test_amid_a_message_the_run_ends(self):
        reports = self.reference("-N", "120000", *HUGE)
        railway = self.railway(*HUGE, *FILES)
        manager = self.start_process(railway, "manager.message(), manager.read(1000)")
        self.assertEqual(manager.stdout.readline(), b"ready\n")
        self.expect_stalled(railway, seconds=1.0)
        manager.kill()
        manager.wait()
        self.expect_end(railway, at_close=NOT_CONNECTED)
        self.expect_files_amid_a_message(reports)


class StopsReading(FaultCase):
    def test_the_railway_waits_and_goes_on_with_the_manager(self):
        options = ["-N", "160000", *HUGE]
        reports = self.reference(*options)
        railway = self.railway(*options, *FILES)
        manager = self.manager(railway, receive_buffer=4096)
        self.expect_status(manager.message(), railway, wire.GREETING)
        self.expect_stalled(railway)
        self.expect_reports([manager.message(), manager.message()], reports[:1])
        self.expect_stalled(railway, seconds=1.0)
        manager.send(ALIVE)
        rest = manager.messages()
        statuses = [message for message in rest if isinstance(message, wire.Status)]
        self.expect_reports([message for message in rest if not isinstance(message, wire.Status)], reports[1:])
        self.assertEqual([status.code for status in statuses], [wire.ALIVE])
        self.expect_end(railway)
        self.expect_files(reports, batches=160000)


class IsInterrupted(FaultCase):
    def test_a_railway_stopped_and_continued_goes_on(self):
        reports = self.reference("-N", "600", "-n", "100", SLOW)
        railway = self.railway("-N", "600", "-n", "100", SLOW)
        for _ in range(10):  # in the wait for the manager
            railway.pause()
            railway.resume()
            time.sleep(0.01)
        manager = self.manager(railway)
        messages = [manager.message()]
        while len(messages) < 13:
            if railway.is_running():  # it may have ended with messages still to be read
                railway.pause()
                railway.resume()
            messages.append(manager.message())
        self.assertRaises(EOFError, manager.message)
        self.expect_stream(messages, railway, reports, {})
        self.expect_end(railway)


    def test_a_write_that_a_stop_cuts_short_is_not_continued(self):
        if IS_WRAPPED:
            self.skipTest("the other program takes an interrupted write up again")
        reports = self.reference("-N", "160000", *HUGE)
        railway = self.railway("-N", "160000", *HUGE, *FILES)
        manager = self.manager(railway, receive_buffer=4096)
        self.expect_status(manager.message(), railway, wire.GREETING)
        self.expect_stalled(railway, seconds=1.0)  # in the write of a row
        whole = len(self.binary("own.bin").messages)
        self.assertLess(whole + 1, len(reports))
        railway.pause()
        railway.resume()
        self.expect_reports([manager.message() for _ in range(2 * whole)], reports[:whole])
        self.assertIsInstance(manager.message(), wire.CpuTime)
        rest = manager.rest()
        self.expect_end(railway)
        cut, *behind = reports[whole:]
        length_behind = sum(16 + len(report.raw) for report in behind)
        # What the write did not take is missing, at most a row; what follows stands right behind the gap.
        got = rest[:-length_behind]
        missing = len(cut.raw) - len(got)
        self.assertIn(missing, range(1, 8 * 20000))
        same = len(os.path.commonprefix([cut.raw, got]))
        self.assertEqual(got[same:], cut.raw[same + missing:])
        stream = io.BytesIO(rest[-length_behind:])
        self.expect_reports([wire.read_message(stream.read) for _ in range(2 * len(behind))], behind)
        self.expect_files(reports, batches=160000)


class HasNoDescriptor(FaultCase):
    def test_the_search_for_a_port_goes_on_without_using_the_processor(self):
        if IS_WRAPPED:
            self.skipTest("the other program needs descriptors of its own")

        def limit():
            resource.setrlimit(resource.RLIMIT_NOFILE, (4, 4))  # the fourth is the ASCII file

        railway = self.railway("-w", "-p65000", "-a", "own.csv", alone=True, preexec_fn=limit)
        self.wait_for(lambda: railway.errors().count("\n") > 1 + 65536)
        self.expect_stalled(railway)
        first, *others, _ = railway.errors().split("\n")
        self.assertEqual(first, "error in socket creation")
        for number, line in enumerate(others):
            self.assertEqual(line, f"error in bind.  errno=9 (Port={(65000 + number) % 65536})")


class NeverComes(FaultCase):
    def test_a_minute_without_a_manager_ends_the_run_before_it_begins(self):
        railway = self.railway("-N", "10", *FILES)
        started = time.monotonic()
        while time.monotonic() < started + 55:
            time.sleep(1)
            self.assertTrue(railway.is_running())
        self.assertLess(railway.cpu_seconds(), 1.0)
        self.expect_end(railway)
        self.assertGreaterEqual(time.monotonic() - started, 59)
        self.assertLess(time.monotonic() - started, 90)
        self.assertEqual(railway.lines[-4:-2], [f"REGISTER:  Port: [{railway.port}]", "Actions fired: 0"])
        self.expect_files([], batches=0)


class FullDisk(FaultCase):
    """No room under the binary file: the manager and the ASCII file get everything, the binary file a beginning."""

    OPTIONS = ["-N", "100", "-n", "10", LOSSY]  # messages of 966 bytes

    def expect_all_but_the_binary_file(self, name, **more):
        reports = self.reference(*self.OPTIONS)
        railway = self.railway(*self.OPTIONS, "-b", str(name), **more)
        manager = self.manager(railway)
        self.expect_stream(manager.messages(), railway, reports, {})
        self.expect_end(railway)
        return reports

    def expect_beginning(self, data, reports, room):
        self.assertLessEqual(len(data), room)
        file = wire.read_binary(data)
        whole = len(file.messages)
        self.assertIn(whole, range(1, 10))
        self.assertEqual(file.messages, reports[:whole])
        self.assertTrue(reports[whole].raw.startswith(file.rest))
        # The header tells of the last report that was written, and of no later one.
        self.assertEqual(file.header["BATCHES"], str(10 * whole))

    def test_of_no_size(self):
        if not os.path.exists("/dev/full"):
            self.skipTest("there is no /dev/full")
        self.expect_all_but_the_binary_file("/dev/full")

    def test_with_the_ascii_file_elsewhere(self):
        railway = self.railway(*self.OPTIONS, "-a", "own.csv", "-b", "/dev/full", alone=True)
        self.expect_end(railway)
        self.assertEqual((len(self.ascii("own.csv").lines), self.ascii("own.csv").batches), (1100, 100))

    @staticmethod
    def with_room(room):
        """Settings for a process whose files have room for so many bytes."""

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a write beyond the limit fails like one to a full disk
            resource.setrlimit(resource.RLIMIT_FSIZE, (room, resource.RLIM_INFINITY))

        return {"preexec_fn": limit, "restore_signals": False}

    def test_at_the_greatest_length_of_a_file(self):
        room = 5000
        reports = self.expect_all_but_the_binary_file("own.bin", **self.with_room(room))
        self.expect_beginning(self.file("own.bin"), reports, room)

    def test_room_that_comes_too_late_is_not_written_to(self):
        room = 5000
        reports = self.reference(*self.OPTIONS)
        railway = self.railway("-n", "10", LOSSY, *FILES, **self.with_room(room))
        manager = self.manager(railway)
        while min(self.file_size("own.bin"), self.file_size("own.csv")) < room:
            manager.message()
        for _ in range(4):  # the report that found no room is behind it then
            manager.message()
        resource.prlimit(railway.process.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
        manager.send(QUIT)
        manager.messages()
        self.expect_end(railway)
        self.expect_beginning(self.file("own.bin"), reports, room)
        self.assertEqual(self.file_size("own.csv"), room)
        lines = [line for report in reports for line in wire.ascii_lines(report)]
        *written, cut = self.file("own.csv").decode().split("\n")[2:]
        self.assertEqual(written, lines[: len(written)])
        self.assertTrue(lines[len(written)].startswith(cut))

    def test_on_a_small_file_system(self):
        room = 4096
        disk = self.folder / "disk"
        disk.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={room}", "none", disk], capture_output=True).returncode:
            self.skipTest("mounting is not allowed here")
        self.addCleanup(subprocess.run, ["umount", disk], check=True)
        reports = self.expect_all_but_the_binary_file(disk / "own.bin")
        self.expect_beginning((disk / "own.bin").read_bytes(), reports, room)


class DetachToAFullDisk(FaultCase):
    def test_the_run_goes_on_without_the_file(self):
        if not os.path.exists("/dev/full"):
            self.skipTest("there is no /dev/full")
        railway, manager = self.start(["-n", "10", LOSSY, "-a", "own.csv"], DETACH + b"/dev/full;50;;")
        self.expect_stream(manager.messages(), railway, [], {1: wire.DETACHED})
        self.expect_end(railway)
        self.assertEqual((len(self.ascii("own.csv").lines), self.ascii("own.csv").batches), (550, 50))


del SignalCase, RailwayCase  # bases alone, with no tests of their own
