"""Ports that are taken, and ports that are none."""

import os
import pathlib
import socket

from peer import IS_WRAPPED, RailwayCase

OPTIONS = ["-N", "10", "-n", "5", "-Od:netNotDeliveryProb:0.8"]


def occupy(port):
    """A socket that holds `port`, None if another does."""
    holder = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    # To Windows a port is free as soon as its connections have ended, and to Linux some time later.
    holder.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, IS_WRAPPED)
    try:
        holder.bind(("", port))
        holder.listen()
    except OSError:
        holder.close()
        return None
    return holder


def first_free(port):
    """The first port from `port` on that nobody holds; behind 65535 comes 0, which is always free."""
    while port:
        holder = occupy(port)
        if holder:
            holder.close()
            return port
        port = (port + 1) % 65536
    return port


def socket_holders(process):
    """Processes that hold the sockets of `process`: itself, and under Wine its server, which runs nothing else."""
    if IS_WRAPPED:
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if (folder / "comm").read_text().startswith("wineserver"):
                    yield folder
            except OSError:
                pass  # it has ended by now
    yield pathlib.Path(f"/proc/{process}")


def listening_port(process):
    """The port at which a process really listens."""
    sockets = set()
    for folder in socket_holders(process):
        for descriptor in (folder / "fd").iterdir():
            try:
                target = os.readlink(descriptor)
            except OSError:
                continue  # it is closed by now
            if target.startswith("socket:["):
                sockets.add(target[8:-1])
    with open("/proc/net/tcp", encoding="ascii") as table:
        for line in list(table)[1:]:
            fields = line.split()
            if fields[3] == "0A" and fields[9] in sockets:
                return int(fields[1].rpartition(":")[2], 16)
    return None


class Ports(RailwayCase):
    def expect_port(self, option, registered):
        """Checks the port that a railway told `option` registers, and that a manager reaches it where it listens."""
        railway = self.railway(*OPTIONS, port=option)
        self.assertEqual(railway.port, registered)
        port = registered
        while not port:  # the system chose one, of which the railway tells nothing; it listens a moment later
            self.assertTrue(railway.is_running())
            port = listening_port(railway.process.pid) or 0
        railway.port = port
        manager = self.manager(railway)
        self.expect_stream(manager.messages(), railway, self.reference(*OPTIONS), {})
        self.expect_end(railway)

    def take_in_a_row(self, base, count):
        """Takes `count` ports, behind which is a free one, from `base` on or further up; gives the first."""
        while True:
            holders = [occupy(port) for port in range(base, base + count + 1)]
            if None not in holders:
                break
            for holder in filter(None, holders):
                holder.close()
            base += count + 1
        holders.pop().close()
        for holder in holders:
            self.addCleanup(holder.close)
        return base

    def test_a_taken_port_is_passed_over(self):
        base = self.take_in_a_row(19600, 1)
        self.expect_port(base, base + 1)

    def test_fifty_taken_ports_in_a_row_are_passed_over(self):
        base = self.take_in_a_row(19000, 50)
        self.expect_port(base, base + 50)

    def test_zero_is_whatever_the_system_chooses(self):
        self.expect_port(0, 0)

    def test_ports_beyond_32767_are_told_as_they_are(self):
        self.expect_port(32768, first_free(32768))

    def test_the_last_port(self):
        self.expect_port(65535, first_free(65535))

    def test_behind_the_last_port_comes_zero(self):
        holder = occupy(65535)  # or another holds it, with the same effect
        if holder:
            self.addCleanup(holder.close)
        self.expect_port(65535, 0)

    def test_a_number_beyond_16_bits_is_cut_to_them(self):
        self.expect_port(70000, first_free(70000 - 65536))
        self.expect_port(-1, first_free(65535))
