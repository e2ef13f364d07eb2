"""What a manager may send, at the first report of a run, amid it and at the last.

A railway looks for one signal at each report. Signals that wait for it before the run begins are thus read one at each
report from the first on, so that a signal behind k - 1 others is the one of report k.
"""

import time

from peer import NOT_CONNECTED, RailwayCase
import wire

LOSSY = "-Od:netNotDeliveryProb:0.8"
FIVE_REPORTS = ["-N", "50", "-n", "10", LOSSY]
FIRST_MIDDLE_LAST = [1, 3, 5]
ALIVE, QUIT, DETACH = b"\1", b"\2", b"\3"


class SignalCase(RailwayCase):
    def start(self, options, waiting, ends=False):
        """A railway for which the bytes `waiting` wait before its run begins, and its manager. With `ends` the
        manager's side is closed behind them."""
        railway = self.railway(*options)
        manager = self.connect_paused(railway)
        manager.send(waiting)
        if ends:
            manager.half_close()
        railway.resume()
        return railway, manager

    def for_each_position(self, check):
        for report in FIRST_MIDDLE_LAST:
            with self.subTest(report=report):
                check(report, ALIVE * (report - 1), {number: wire.ALIVE for number in range(1, report)})

    def wait_for(self, condition):
        deadline = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)

    def messages_in(self, name):
        """Whole messages in a file that may be growing."""
        path = self.folder / name
        return self.binary(name).messages if path.exists() and path.stat().st_size >= wire.HEADER_SIZE else []


class AreYouThere(SignalCase):
    def test_is_answered_and_changes_nothing(self):
        reports = self.reference(*FIVE_REPORTS)

        def check(report, before, answers):
            railway, manager = self.start([*FIVE_REPORTS, "-b", "own.bin"], before + ALIVE)
            self.expect_stream(manager.messages(), railway, reports, answers | {report: wire.ALIVE})
            self.expect_end(railway)
            self.assertEqual(self.binary("own.bin").messages, reports)

        self.for_each_position(check)

    def test_more_signals_than_reports_are_left_unread(self):
        reports = self.reference(*FIVE_REPORTS)
        railway, manager = self.start(FIVE_REPORTS, ALIVE * 9)
        answers = {number: wire.ALIVE for number in range(1, 6)}
        self.expect_stream(manager.messages_of_a_poor_listener(), railway, reports, answers)
        self.expect_end(railway)

    def test_one_at_a_time_amid_a_run_without_end(self):
        railway = self.railway("-n", "10", LOSSY)
        manager = self.manager(railway)
        self.expect_status(manager.message(), railway, wire.GREETING)
        for _ in range(5):
            manager.send(ALIVE)
            message = manager.message()
            while not isinstance(message, wire.Status):
                message = manager.message()
            self.expect_status(message, railway, wire.ALIVE)
        manager.send(QUIT)
        statuses = [message for message in manager.messages() if isinstance(message, wire.Status)]
        self.assertEqual([status.code for status in statuses], [wire.QUITTING])
        self.expect_end(railway)


class Quit(SignalCase):
    def test_ends_the_run_behind_the_report_that_reads_it(self):
        reports = self.reference(*FIVE_REPORTS)

        def check(report, before, answers):
            options = [*FIVE_REPORTS, "-a", "own.csv", "-b", "own.bin"]
            railway, manager = self.start(options, before + QUIT)
            self.expect_stream(manager.messages(), railway, reports[:report], answers | {report: wire.QUITTING})
            self.expect_end(railway)
            self.assertEqual(railway.lines[-4], "SOCKET::Quit")
            file = self.binary("own.bin")
            self.assertEqual((file.messages, file.rest), (reports[:report], b""))
            self.assertEqual(file.header["BATCHES"], str(10 * report))
            self.assertEqual(self.ascii("own.csv").batches, 10 * report)
            self.assertEqual(len(self.ascii("own.csv").lines), 11 * 10 * report)

        self.for_each_position(check)

    def test_what_comes_with_it_is_left_unread(self):
        reports = self.reference(*FIVE_REPORTS)

        def check(report, before, answers):
            for behind in [ALIVE, QUIT, DETACH + b"other.bin;70;;", b"x"]:
                railway, manager = self.start([*FIVE_REPORTS, "-b", "own.bin"], before + QUIT + behind)
                messages = manager.messages_of_a_poor_listener()
                self.expect_stream(messages, railway, reports[:report], answers | {report: wire.QUITTING})
                self.expect_end(railway)
                self.assertEqual(self.binary("own.bin").messages, reports[:report])
                self.assertFalse((self.folder / "other.bin").exists())

        self.for_each_position(check)

    def test_of_a_manager_that_does_not_wait_for_the_answer(self):
        railway = self.railway("-n", "10", LOSSY, "-a", "own.csv", "-m", pipesize=4096)
        manager = self.manager(railway)
        self.expect_status(manager.message(), railway, wire.GREETING)
        railway.hold_in_batch(5)
        manager.send(QUIT)
        manager.reset()
        railway.let_go()
        self.expect_end(railway, at_close=NOT_CONNECTED)
        self.assertEqual(self.ascii("own.csv").batches, 10)

    def test_drops_the_reports_held_back(self):
        reports = self.reference("-n", "1", "-N", "15", LOSSY)
        railway, manager = self.start(["-n", "1", LOSSY, "-a", "own.csv", "-b", "own.bin"], ALIVE * 14 + QUIT)
        answers = {number: wire.ALIVE for number in range(1, 15)} | {15: wire.QUITTING}
        messages = manager.messages()
        self.need_held_reports(railway)
        self.expect_stream(messages, railway, reports[:10], answers)
        self.expect_end(railway)
        file = self.binary("own.bin")
        self.assertEqual(file.messages, reports[:10])  # the first ten are never held
        self.assertEqual(file.header["BATCHES"], "15")
        self.assertEqual((len(self.ascii("own.csv").lines), self.ascii("own.csv").batches), (110, 15))

    def test_at_the_last_report_drops_the_reports_held_back(self):
        reports = self.reference("-n", "1", "-N", "15", LOSSY)
        railway, manager = self.start(["-n", "1", "-N", "15", LOSSY, "-b", "own.bin"], ALIVE * 14 + QUIT)
        answers = {number: wire.ALIVE for number in range(1, 15)} | {15: wire.QUITTING}
        messages = manager.messages()
        self.need_held_reports(railway)
        self.expect_stream(messages, railway, reports[:10], answers)
        self.expect_end(railway)
        self.assertEqual(self.binary("own.bin").messages, reports[:10])


class Detach(SignalCase):
    def expect_detached(self, railway, manager, reports, answers, report):
        """Checks the conversation of a railway that a manager leaves at `report`."""
        self.expect_stream(manager.messages(), railway, reports[: report - 1], answers | {report: wire.DETACHED})

    def test_with_a_file_and_a_limit_goes_on_to_the_limit(self):
        reports = self.reference("-N", "70", "-n", "10", LOSSY)

        def check(report, before, answers):
            name = f"alone{report}.bin"
            railway, manager = self.start([*FIVE_REPORTS, "-a", "own.csv"], before + DETACH + f"{name};70;;".encode())
            self.expect_detached(railway, manager, reports, answers, report)
            self.expect_end(railway)
            # At its last report a run is about to end, and no limit can hold that up.
            end = 5 if report == 5 else 7
            file = self.binary(name)
            self.assertEqual((file.messages, file.rest), (reports[report - 1 : end], b""))
            self.assertEqual(file.header["BATCHES"], str(10 * end))
            self.assertEqual(len(self.ascii("own.csv").lines), 11 * 10 * end)

        self.for_each_position(check)

    def test_with_a_limit_already_passed_ends_with_the_next_batch(self):
        reports = self.reference("-N", "31", "-n", "10", LOSSY)
        railway, manager = self.start(FIVE_REPORTS, ALIVE * 2 + DETACH + b"alone.bin;5;;")
        self.expect_detached(railway, manager, reports, {1: wire.ALIVE, 2: wire.ALIVE}, 3)
        self.expect_end(railway)
        self.assertEqual(self.binary("alone.bin").messages, reports[2:])
        self.assertEqual(len(reports[3].rows[0]), 1)

    def test_with_a_file_alone_goes_on_without_limit(self):
        reports = self.reference("-N", "100", "-n", "10", LOSSY)

        def check(report, before, answers):
            name = f"alone{report}.bin"
            railway, manager = self.start(FIVE_REPORTS, before + DETACH + f"{name};;".encode())
            self.expect_detached(railway, manager, reports, answers, report)
            if report == 5:
                self.expect_end(railway)
                self.assertEqual(self.binary(name).messages, reports[4:5])
                return
            self.wait_for(lambda: len(self.messages_in(name)) >= 10)  # the limit was five reports
            self.assertTrue(railway.is_running())
            railway.kill()
            self.assertEqual(self.messages_in(name)[: 11 - report], reports[report - 1 :])

        self.for_each_position(check)

    def test_without_a_file_goes_on_without_limit_into_the_ascii_file(self):
        def check(report, before, answers):
            railway, manager = self.start([*FIVE_REPORTS, "-a", "own.csv"], before + DETACH + b";;")
            self.expect_detached(railway, manager, self.reference(*FIVE_REPORTS), answers, report)
            if report == 5:
                self.expect_end(railway)
                self.assertEqual(len(self.ascii("own.csv").lines), 11 * 50)
                return
            self.wait_for(lambda: self.file("own.csv").count(b"\n") > 11 * 200)
            self.assertTrue(railway.is_running())
            railway.kill()
            self.assertEqual([path.name for path in self.folder.glob("*.bin")], ["reference.bin"])

        self.for_each_position(check)

    def test_leaves_a_file_and_a_limit_of_the_command_line(self):
        reports = self.reference(*FIVE_REPORTS)

        def check(report, before, answers):
            railway, manager = self.start([*FIVE_REPORTS, "-b", "own.bin"], before + DETACH + b"other.bin;70;;")
            self.expect_detached(railway, manager, reports, answers, report)
            self.expect_end(railway)
            self.assertEqual(self.binary("own.bin").messages, reports)
            self.assertEqual(self.binary("own.bin").header["BATCHES"], "50")
            self.assertFalse((self.folder / "other.bin").exists())

        self.for_each_position(check)

    def test_reports_held_back_go_to_the_file_alone(self):
        reports = self.reference("-n", "1", "-N", "40", LOSSY)
        railway, manager = self.start(["-n", "1", LOSSY], ALIVE * 19 + DETACH + b"alone.bin;40;;")
        answers = {number: wire.ALIVE for number in range(1, 20)} | {20: wire.DETACHED}
        messages = manager.messages()
        self.need_held_reports(railway)
        self.expect_stream(messages, railway, reports[:10], answers)
        self.expect_end(railway)
        self.assertEqual(self.binary("alone.bin").messages, reports[10:])  # 11 to 19 were held when the manager left

    def test_the_text_may_come_in_any_two_pieces(self):
        reports = self.reference("-N", "3", "-n", "2", LOSSY)
        signal = DETACH + b"alone.bin;3;;"
        for cut in range(1, len(signal) + 1):
            with self.subTest(cut=cut):
                railway, manager = self.start(["-n", "2", LOSSY], signal[:cut])
                self.expect_status(manager.message(), railway, wire.GREETING)
                time.sleep(0.02)
                manager.send(signal[cut:])
                self.expect_status(manager.message(), railway, wire.DETACHED)
                self.assertEqual(manager.messages(), [])
                self.expect_end(railway)
                self.assertEqual(self.binary("alone.bin").messages, reports)

    def test_the_text_may_come_byte_by_byte(self):
        reports = self.reference("-N", "70", "-n", "10", LOSSY)

        def check(report, before, answers):
            for text in [b";70;;", b";;"]:
                name = f"alone{report}.bin"
                limit = [] if text == b";70;;" else ["-N", "50"]
                railway, manager = self.start(["-n", "10", LOSSY, *limit], before + DETACH)
                manager.send_bytewise(name.encode() + text)
                self.expect_detached(railway, manager, reports, answers, report)
                if report < 5 and limit:  # without a limit from here on
                    self.wait_for(lambda: len(self.messages_in(name)) >= 8 - report)
                    railway.kill()
                    self.assertEqual(self.messages_in(name)[: 8 - report], reports[report - 1 :])
                else:
                    self.expect_end(railway)
                    self.assertEqual(self.binary(name).messages, reports[report - 1 : 5 if limit else 7])

        self.for_each_position(check)

    def test_what_comes_with_the_text_is_left_unread(self):
        reports = self.reference("-N", "70", "-n", "10", LOSSY)

        def check(report, before, answers):
            for behind in [ALIVE, QUIT, DETACH + b"other.bin;20;;", b";", b"x"]:
                name = f"alone{report}.bin"
                railway, manager = self.start(["-n", "10", LOSSY], before + DETACH + f"{name};70;;".encode() + behind)
                messages = manager.messages_of_a_poor_listener()
                self.expect_stream(messages, railway, reports[: report - 1], answers | {report: wire.DETACHED})
                self.expect_end(railway)
                self.assertNotIn("SOCKET::Quit", railway.lines)
                self.assertEqual(self.binary(name).messages, reports[report - 1 :])
                self.assertFalse((self.folder / "other.bin").exists())

        self.for_each_position(check)

    def test_of_a_manager_that_does_not_wait_for_the_answer_ends_the_run(self):
        reports = self.reference("-n", "10", "-N", "10", LOSSY)
        railway = self.railway("-n", "10", LOSSY, "-m", pipesize=4096)
        manager = self.manager(railway)
        self.expect_status(manager.message(), railway, wire.GREETING)
        railway.hold_in_batch(5)
        manager.send(DETACH + b"alone.bin;40;;")
        manager.reset()
        railway.let_go()
        self.expect_end(railway, errors=NOT_CONNECTED)
        self.assertEqual(self.binary("alone.bin").messages, reports)  # the report that met the signal


class UnknownBytes(SignalCase):
    def test_are_told_and_change_nothing(self):
        reports = self.reference(*FIVE_REPORTS)
        told = "!! Invalid Response Received by Client \n!! Simulation\n"
        for value in [b"\0", b"\4", b"1", b"2", b"3", b";", b"\xfe", b"\xff"]:
            with self.subTest(value=value):
                railway, manager = self.start(FIVE_REPORTS, value + ALIVE + value + ALIVE + value)
                self.expect_stream(manager.messages(), railway, reports, {2: wire.ALIVE, 4: wire.ALIVE})
                self.expect_end(railway, errors=told * 3)
