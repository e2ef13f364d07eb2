"""What a manager gets to read, against what the files of the same run hold."""

import struct

from peer import RailwayCase
import wire

LOSSY = "-Od:netNotDeliveryProb:0.8:s:nTrains:3"


class Conversation(RailwayCase):
    def converse(self, *options, client=0, **more):
        """One whole run under a manager that sends nothing; gives the data messages."""
        railway = self.railway(*options, LOSSY, "-a", "values.csv", "-b", "values.bin")
        manager = self.manager(railway, **more)
        manager.piece = self.piece
        greeting, *rest = manager.messages()
        self.expect_end(railway)
        self.expect_status(greeting, railway, wire.GREETING)
        file = self.binary("values.bin")
        self.expect_reports(rest, file.messages, client=client)
        # The binary file is the header and the messages as sent, and nothing else.
        self.assertEqual(self.file("values.bin")[256:], b"".join(message.raw for message in rest[1::2]))
        # 10 bytes of greeting, and 16 of processor time ahead of each message.
        self.assertEqual(manager.bytes_read, 10 + 16 * len(file.messages) + len(self.file("values.bin")) - 256)
        self.assertEqual(self.ascii("values.csv").lines,
                         [line for message in file.messages for line in wire.ascii_lines(message)])
        return file.messages

    piece = 1 << 16

    def test_every_byte_is_in_the_files(self):
        messages = self.converse("-N", "250", "-n", "100", "-c", "7", "-s", "5", "-r", "2", client=7)
        self.assertEqual([len(message.rows[0]) for message in messages], [100, 100, 50])
        for message in messages:
            self.assertEqual(list(message.rows), list(range(11)))
        self.assertEqual(self.ascii("values.csv").batches, 250)
        header = self.binary("values.bin").header
        self.assertEqual(header, {"QUORVA_VER": "Version 2.5", "FILE_VER": "1", "EXPERIMENTS": "0", "SEED": "5",
                                  "RANDOMGEN": "Mersenne Twister", "BATCHES": "250"})
        self.assertGreater(len({value for message in messages for row in message.rows.values() for value in row}), 1)

    def test_many_reports_some_of_them_held(self):
        messages = self.converse("-N", "100", "-n", "1")
        self.assertEqual([len(message.rows[0]) for message in messages], [1] * 100)

    def test_a_manager_that_reads_one_byte_at_a_time(self):
        self.piece = 1
        messages = self.converse("-N", "60", "-n", "20", receive_buffer=1024)
        self.assertEqual(len(messages), 3)

    def test_the_manager_gets_what_a_run_alone_writes(self):
        options = ["-N", "30", "-n", "10", LOSSY]
        reports = self.reference(*options)
        railway = self.railway(*options)
        manager = self.manager(railway)
        greeting, *rest = manager.messages()
        self.expect_status(greeting, railway, wire.GREETING)
        self.expect_reports(rest, reports)
        self.expect_end(railway)

    def test_a_client_number_travels_as_its_low_byte(self):
        messages = self.converse("-N", "2", "-c", "509", client=253)  # 509 - 256
        self.assertEqual(messages[0].client, 253)

    def test_standard_output_tells_the_run_in_order(self):
        railway = self.railway("-N", "1", "-c", "3")
        self.manager(railway).messages()
        self.expect_end(railway)
        self.assertEqual(railway.lines[0], "Wait For Socket Enabled")
        self.assertRegex(railway.lines[1], r"^Port: \d+$")
        self.assertEqual(railway.lines[2:5], ["Max Number of Batches: 1", "ClientID: 3", "GenerateConnectivityList()"])
        self.assertRegex(railway.lines[5], r"^GenerateConnectivityList\(\) Time=")
        self.assertEqual(railway.lines[6:8], ["SIMULATOR::Preparing to run()", f"REGISTER:  Port: [{railway.port}]"])
        self.assertEqual(len(railway.lines), 11)


class Parser(RailwayCase):
    """The parser refuses what it should; without that, its agreement would mean little."""

    @staticmethod
    def parse(data):
        position = 0

        def read(count):
            nonlocal position
            if position + count > len(data):
                raise wire.WireError("short")
            position += count
            return data[position - count : position]

        return wire.read_message(read)

    def test_takes_messages_made_by_hand(self):
        self.assertEqual(self.parse(bytes([0, 0, 0, 10, 255, 3, 0, 0, 1, 2])), wire.Status((255, 3), 258))
        self.assertEqual(self.parse(bytes([0, 0, 0, 12, 254, 5, 1, 2, 0x40, 4, 0, 0, 0, 0, 0, 0])),
                         wire.CpuTime(5, 258, 2.5))
        data = bytes([0, 0, 0, 24, 5, 1, 2, 0, 1, 0, 3, 1, 0, 0, 0, 1, 0xC0, 0x10, 0, 0, 0, 0, 0, 0])
        self.assertEqual(self.parse(data), wire.Data(5, 258, {3: (-4.0,)}, data))
        self.assertEqual(self.parse(bytes([0, 0, 0, 9, 0, 0, 0, 0, 0])).rows, {})

    def test_refuses_what_is_not_in_the_format(self):
        row = struct.pack(">hbid", 0, 1, 1, 1.0)
        for data in [
            bytes([0, 0, 0, 11, 255, 1, 0, 0, 0, 1, 0]),  # status of a wrong length
            bytes([0, 0, 0, 10, 255, 2, 0, 0, 0, 1]),  # unknown status
            bytes([0, 0, 0, 16, 254, 0, 0, 0]) + bytes(12),  # processor time that counts its length field
            bytes([0, 0, 0, 8, 0, 0, 0, 0]),  # shorter than a head
            struct.pack(">iBhh", 25, 0, 0, 1) + row + b"\0",  # a byte too many
            struct.pack(">iBhh", 39, 0, 0, 2) + row + row,  # one variable twice
            struct.pack(">iBhh", 24, 0, 0, 1) + struct.pack(">hbid", 0, 2, 1, 1.0),  # squared observations
            struct.pack(">iBhh", 16, 0, 0, 1) + struct.pack(">hbi", 0, 1, 0),  # an empty row
            struct.pack(">iBhh", 24, 0, 0, 1) + struct.pack(">hbid", 0, 1, 2, 1.0),  # a row beyond its message
        ]:
            with self.subTest(data=data), self.assertRaises(wire.WireError):
                self.parse(data)
