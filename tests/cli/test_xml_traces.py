"""The railway's XML traces against the document type that docs/ ships, and the document type against faulty traces."""

import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import xml_trace  # noqa: E402

CATALOG = xml_trace.DTD.with_name("catalog.xml")


def trace(batches=1, level=1, overrides="", more=()):
    """The bytes of the XML trace of a run."""
    with tempfile.TemporaryDirectory() as folder:
        command = [os.environ["QUORVA_RAILWAY"], f"-N{batches}", "-x", "-ft", f"-l{level}", *more]
        if overrides:
            command += ["-O", overrides]
        environment = {name: value for name, value in os.environ.items() if name != "SIMTEST"}
        subprocess.run(command, cwd=folder, env=environment, check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
        return (pathlib.Path(folder) / "t.xml").read_bytes()


class EveryTrace(unittest.TestCase):
    """Each is one valid document in which every id is declared. No railway has a shared variable without a process."""

    def check(self, document):
        xml_trace.validate(document)
        self.assertEqual(xml_trace.check_references(document), set())
        self.assertEqual(document.count(b"<?xml"), 1)
        return xml.etree.ElementTree.fromstring(document)

    def test_for_each_number_of_trains_level_and_generator(self):
        for trains in 1, 2, 3, 10:
            for level in 0, 1, 2, 3, 4:
                with self.subTest(trains=trains, level=level):
                    root = self.check(trace(level=level, overrides=f"s:nTrains:{trains}:d:netNotDeliveryProb:0.5",
                                            more=[f"-r{level % 3}"]))
                    # Line, fleet, trackside and the trains; the state at the start from level 1 on.
                    self.assertEqual(len(root.findall("Process")), 3 + trains)
                    self.assertEqual(len(root.findall("Sequence/S")), min(level, 1))
                    self.assertGreater(len(root.findall("Sequence/A")), 100)

    def test_with_two_firings(self):
        # The train gets its identity and arrives, at time 0; all that follows is due behind the end of the batch.
        root = self.check(trace(overrides="d:positionUpdatePeriod:1000:d:TPRUpdatePeriod:1000"))
        self.assertEqual(len(root.findall("Sequence/A")), 2)

    def test_is_that_of_the_first_batch_whatever_comes_later(self):
        one = trace(batches=1, overrides="d:netNotDeliveryProb:0.5")
        self.check(one)
        for batches in 2, 7, 100:
            self.assertEqual(trace(batches=batches, overrides="d:netNotDeliveryProb:0.5"), one, f"{batches} batches")

    def test_is_the_same_at_every_level_but_for_the_initial_state(self):
        one = trace(level=1)
        for level in 2, 3, 4, 9:
            self.assertEqual(trace(level=level), one, f"level {level}")
        begin, end = one.index(b"<S>\n"), one.index(b"</S>\n") + len(b"</S>\n")
        self.assertEqual(trace(level=0), one[:begin] + one[end:])

    def test_is_found_valid_through_the_address_that_it_names(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "t.xml"
            file.write_bytes(trace())
            subprocess.run(["xmllint", "--noout", "--valid", str(file)], check=True,
                           env={**os.environ, "XML_CATALOG_FILES": CATALOG.as_uri()})


class FaultyTraces(unittest.TestCase):
    """Changes of a good trace that a reader must notice."""

    @classmethod
    def setUpClass(cls):
        cls.good = trace()

    def changed(self, old, new):
        self.assertIn(old, self.good)
        return self.good.replace(old, new, 1)

    def test_are_found_by_the_document_type(self):
        xml_trace.validate(self.good)
        for old, new in (
                (b"<Comment> Purpose of this trace: demonstration </Comment>\n", b""),
                (b"</Sequence>\n</Trace>\n", b""),
                (b"</Trace>\n", b"</Trace>\n<Trace/>\n"),
                (b"<S>\n", b""),
                (b' generator="manually_generated"', b""),
                (b'<Process id="p2"', b'<Process id="p3"'),
                (b'<Process id="p2"', b'<Process'),
                (b"<Interactions>\n", b'<Interactions kind="all">\n'),
                (b'<Sequence type="StateActionType">', b'<Sequence type="StateType">'),
                (b"<Touch>", b"<Touched>"),
                (b"</A>\n", b"</A>\n<S>\n</S>\n"),
                (b'  val="', b'  value="'),
                (b'<Var id="p2MAtoRBC" name="MAtoRBC" />', b'<Var id="p2MAtoRBC" name="MAtoRBC">text</Var>'),
                (b'<Action id="', b'<Var id="pX" name="X" /><Action id="')):
            with self.subTest(old=old, new=new), self.assertRaises(xml_trace.InvalidTrace):
                xml_trace.validate(self.changed(old, new))

    def test_are_found_by_the_check_of_ids(self):
        for old, new in ((b"<Touch>p2<", b"<Touch>p99<"), (b"<Touch>p2<", b"<Touch>p-1<"),
                         (b'<A id="', b'<A id="a9'), (b'<V id="p2MAtoRBC"', b'<V id="p2MAtoRBD"'),
                         (b'<Var id="p2MAtoRBC"', b'<Var id="p9MAtoRBC"')):
            with self.subTest(old=old, new=new), self.assertRaises(xml_trace.InvalidTrace):
                xml_trace.check_references(self.changed(old, new))
        self.assertEqual(xml_trace.check_references(self.changed(b'<V id="p2MAtoRBC"', b'<V id="p-1MAtoRBC"')),
                         {"p-1MAtoRBC"})


class FullDisk(unittest.TestCase):
    """The limit of a file's size stands for the end of the disk, as it lets a file grow up to a byte of our choice."""

    LIMIT = 3000

    def test_keeps_of_each_trace_what_there_was_room_for(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (self.LIMIT, self.LIMIT))

        with tempfile.TemporaryDirectory() as folder:
            def run(name, **settings):
                subprocess.run([os.environ["QUORVA_RAILWAY"], "-N2", "-m", "-x", "-l2", "-f", name, "-a", name],
                               cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **settings)
                return [(pathlib.Path(folder) / (name + suffix)).read_bytes() for suffix in (".txt", ".xml", "")]

            text, document, observations = run("whole")
            self.assertGreater(min(len(text), len(document)), self.LIMIT)
            self.assertEqual(run("cut", preexec_fn=limit), [text[:self.LIMIT], document[:self.LIMIT], observations])


if __name__ == "__main__":
    unittest.main()
