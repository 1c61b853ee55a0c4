"""Loading, errors, threads and the end of libraries."""
import faulthandler
import gc
import json
import os
import pathlib
import pickle
import subprocess
import sys
import tempfile
import textwrap
import threading
import unittest
import warnings

import hdnt

EXAMPLES = pathlib.Path(os.environ["NTL_SOURCE_DIR"], "data", "examples")
GOOD = 'library "good" {\n  block "FLOP_RISE" { pin "D[1:0]" input; pin "Q" output; property int "N" { min = 0, max = 9, default = 3 } }\n}\n'
SYNTAX = 'library "bad" {\n  block "FLOP_RISE" { pin "D" inputt; }\n}\n'
CONTENT = 'library "bad" {\n  block "FLOP_RISE" { pin "D" input; pin "D" input; }\n}\n'


class Folder(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text)
        return path


class Errors(Folder):
    def test_error_has_every_diagnostic(self):
        with self.assertRaises(hdnt.LoadError) as caught:
            hdnt.load(EXAMPLES / "three_faults.btl", check=True)
        error = caught.exception
        self.assertEqual([(one.line, one.column, one.end_column) for one in error.errors],
                         [(10, 5, 38), (17, 5, 32), (26, 5, 75)])
        self.assertEqual({one.file for one in error.errors}, {str(EXAMPLES / "three_faults.btl")})
        self.assertEqual(error.errors[0].message, "Pin D[3] is being redefined.")
        self.assertIn('pin "D[3]"', error.errors[0].text)
        self.assertEqual(error.path, str(EXAMPLES / "three_faults.btl"))
        self.assertEqual(str(error).count("\n"), 2)

    def test_columns_are_the_same_wherever_they_are_told(self):
        path = self.write("c.btl", 'library "l" {\n\tblock "HOLD" { /* \u00e4\t\u20ac */ pin "A" input;\tpin "A" input; }\n}\n')
        expected = [(2, 42, 56)]
        with self.assertRaises(hdnt.LoadError) as caught:
            hdnt.load(path)
        self.assertEqual([(one.line, one.column, one.end_column) for one in caught.exception.errors], expected)
        self.assertEqual([one.location.column for one in caught.exception.errors[0].related], [27])
        self.assertEqual([(one.line, one.column, one.end_column) for one in hdnt.check(path).errors], expected)
        log = json.loads(subprocess.run([os.environ["NTL_TOOL"], "check", "--format=sarif", str(path)],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False).stdout)
        region = log["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["region"]
        self.assertEqual([(region["startLine"], region["startColumn"], region["endColumn"])], expected)

    def test_files_of_someone_else(self):
        (self.folder / "own").mkdir()
        self.write("own/near.btl", 'block "NEAR_GATE" { pin "I" input; }\n')
        self.write("far.btl", 'block "FAR_GATE" { pin "I" input; }\n')
        hdnt.add_search_directory(self.folder / "own")
        path = self.write("own/main.btl", f'library "l" {{\nINCLUDE near.btl;\nINLINE ../far.btl;\nINLINE {self.folder}/far.btl;\n}}\n')
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            self.assertEqual([block.name for block in hdnt.load(path, untrusted=True).blocks], ["NEAR_GATE"])
        self.assertEqual([str(one.message).count("(limit ownFolderOnly)") for one in caught], [1, 1])

    def test_a_load_prints_nothing(self):
        self.write("part.btl", 'block "FLOP_RISE" { pin "Q" output; }\n')
        self.write("main.btl", 'library "l" {\nINCLUDE part.btl;\nINCLUDE none.btl;\n"open\n')
        script = ("import hdnt, sys, warnings\nwarnings.simplefilter('ignore')\nhdnt.add_search_directory('.')\n"
                  "try: hdnt.load('main.btl')\nexcept hdnt.LoadError: print('refused')")
        done = subprocess.run([sys.executable, "-c", script], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(done.stdout, "refused\n")

    def test_a_table_of_cells_comes_before_the_first_load(self):
        self.write("own.csv", "1800,GLUE\n")
        self.write("wrong.csv", "1801,GLUE\n")
        self.write("l.btl", 'library "l" { block "GLUE" { } }')
        script = ("import hdnt\n"
                  "def add(path):\n try: hdnt.register_cells(path)\n except Exception as error: print(repr(error))\n"
                  "add('none.csv'); add('own.csv'); add('wrong.csv')\n"
                  "block = hdnt.load('l.btl')['GLUE']\nprint(block.cellview, block.is_registered); add('own.csv')")
        done = subprocess.run([sys.executable, "-c", script], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(done.stdout.splitlines(),
                         ["FileNotFoundError(2, 'No such file or directory')",
                          "Error('wrong.csv:1: cell GLUE has the value 1800 already, not 1801')", "1800 True",
                          "Error('own.csv: too late to register cells: some have been looked up')"])

    def test_a_bad_file_does_not_poison_the_next(self):
        good, bad = self.write("good.btl", GOOD), [self.write("s.btl", SYNTAX), self.write("c.btl", CONTENT)]
        before = hdnt.error_count()
        for path in bad * 3:
            with self.assertRaises(hdnt.LoadError) as caught:
                hdnt.load(path)
            self.assertEqual(len(caught.exception.errors), 1)
            self.assertEqual(caught.exception.errors[0].line, 2)
            with hdnt.load(good) as library:
                self.assertEqual(list(library), ["FLOP_RISE"])
        self.assertEqual(hdnt.error_count(), before)
        self.assertEqual(len(hdnt.common()["FLOP_RISE"].pins), 3)

    def test_what_cannot_be_opened(self):
        with self.assertRaises(FileNotFoundError) as caught:
            hdnt.load(self.folder / "none.btl")
        self.assertEqual(caught.exception.filename, self.folder / "none.btl")
        with self.assertRaises(FileNotFoundError):
            hdnt.load(self.folder / "none.btl", parent=hdnt.common())
        damaged = self.folder / "damaged.btl"
        damaged.write_bytes(b"\x1f\x8b\x08nonsense")
        with self.assertRaises(hdnt.LoadError) as caught:
            hdnt.load(damaged)
        self.assertNotEqual(caught.exception.errors[0].detail, "")
        for wrong in (None, 3, "a\0b"):
            with self.assertRaises((TypeError, ValueError)):
                hdnt.load(wrong)

    def test_skipped_include_is_a_warning(self):
        self.write("part.btl", 'block "FLOP_RISE" { pin "Q" output; }\n')
        hdnt.add_search_directory(self.folder)
        main = self.write("main.btl", 'library "main" {\nINCLUDE part.btl;\nblock "FLOP_FALL" { pin "Q" output; }\n}\n')
        twice = self.write("twice.btl", 'library "l" {\nINCLUDE part.btl;\n\tINCLUDE part.btl;\n}\n')
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            loads = [hdnt.load(main) for _ in range(3)]
        for library in loads:
            self.assertEqual((list(library), library.warnings), (["FLOP_RISE", "FLOP_FALL"], ()))
        with self.assertWarns(hdnt.LoadWarning) as caught:
            skipping = hdnt.load(twice)
        self.assertEqual(caught.filename, __file__)
        self.assertEqual(list(skipping), ["FLOP_RISE"])
        self.assertEqual([(one.code, one.severity, one.line, one.column) for one in skipping.warnings],
                         [("include-skipped", "warning", 3, 9)])

    def test_bytes_that_are_no_text(self):
        path = self.folder / "bytes.btl"
        path.write_bytes(b'library "l" { block "FLOP_RISE" { pin "Q" output; property string "S" { default = "\xff\xe4" } } }')
        library = hdnt.load(path)
        value = library["FLOP_RISE"].properties["S"].default
        self.assertEqual(value.encode("utf-8", "surrogateescape"), b"\xff\xe4")
        self.assertIn(value, library.source())

    def test_errors_can_be_pickled(self):
        with self.assertRaises(hdnt.LoadError) as caught:
            hdnt.load(self.write("s.btl", SYNTAX))
        copy = pickle.loads(pickle.dumps(caught.exception))
        self.assertEqual(copy.diagnostics, caught.exception.diagnostics)

    def test_check_runs_beside_the_script(self):
        good, bad = self.write("good.btl", GOOD), self.write("bad.btl", CONTENT)
        before = hdnt.error_count()
        results = hdnt.check_all([good, bad])
        self.assertEqual([(one.ok, one.block_count, len(one.errors)) for one in results], [(True, 1, 0), (False, None, 1)])
        self.assertEqual(results[1].errors[0].line, 2)
        self.assertEqual(hdnt.error_count(), before)
        self.assertFalse(hdnt.check(bad))
        self.assertEqual([one.code for one in hdnt.check(EXAMPLES / "unregistered.btl").diagnostics],
                         ["unregistered-block"])
        with self.assertRaises(hdnt.Error):
            hdnt.check(good, parent=self.folder / "none.btl", tool="/bin/false")


class Ends(Folder):
    def test_close_ends_everything(self):
        library = hdnt.load(self.write("good.btl", GOOD))
        block = library["FLOP_RISE"]
        nodes = [library, block, block.pins[0], block.buses[0], block.properties[0]]
        views = [library.blocks, library.all_blocks, block.pins, block.buses, block.properties]
        iterators = [iter(view) for view in views] + [iter(library)]
        uses = ([lambda node=node: node.location for node in nodes] + [lambda view=view: len(view) for view in views] +
                [lambda view=view: view[0] for view in views] + [lambda it=it: next(it) for it in iterators] +
                [lambda: list(library), lambda: library["X"], lambda: "X" in library, lambda: library.source(),
                 lambda: library.print(), lambda: library.diff(library), lambda: library.find("X"),
                 lambda: block.expand(), lambda: block.pin_tuples(), lambda: block.accept(hdnt.Visitor()),
                 lambda: nodes[4].accepts(3), lambda: hdnt.load(EXAMPLES / "first.btl", parent=library)])
        self.assertFalse(library.closed)
        library.close()
        library.close()
        self.assertTrue(library.closed)
        self.assertEqual([node.alive for node in nodes], [False] * len(nodes))
        for use in uses:
            with self.assertRaises(hdnt.DeadObjectError):
                use()
        for node in nodes:
            self.assertIn("gone", repr(node))

    def test_objects_keep_their_library(self):
        pin = hdnt.load(self.write("good.btl", GOOD))["FLOP_RISE"].pins[0]
        gc.collect()
        self.assertEqual((pin.name, pin.library.name), ("D[1]", "good"))

    def test_children_end_with_their_parent(self):
        parent = hdnt.load(self.write("good.btl", GOOD))
        child = hdnt.load(EXAMPLES / "first.btl", parent=parent)
        block = child.blocks[0]
        self.assertIs(child.parent, parent)
        self.assertIs(child.find("FLOP_RISE"), parent["FLOP_RISE"])
        parent.close()
        self.assertEqual((child.alive, block.alive), (False, False))
        with self.assertRaises(hdnt.DeadObjectError):
            block.name

    def test_release_ends_what_the_manager_has(self):
        common, simulation = hdnt.common(), hdnt.simulation()
        own = hdnt.load(self.write("good.btl", GOOD))
        over = hdnt.load(self.write("over.btl", GOOD), parent=common)
        pins = [library.blocks[0].pins[0] for library in (common, simulation, own, over)]
        with self.assertRaises(hdnt.Error):
            common.close()
        hdnt.release()
        self.assertEqual([pin.alive for pin in pins], [False, False, True, False])
        self.assertIsNot(hdnt.common(), common)
        self.assertEqual(len(hdnt.common()), 152)

    def test_a_visitor_may_end_the_library_it_walks(self):
        library = hdnt.load(EXAMPLES / "first.btl")

        class Closing(hdnt.Visitor):
            seen = 0

            def visit_block(self, node):
                Closing.seen += 1
                library.close()
        with self.assertRaises(hdnt.DeadObjectError):
            library.accept(Closing())
        self.assertEqual((Closing.seen, library.alive), (1, False))

    def test_release_waits_for_no_visitor(self):
        class Releasing(hdnt.Visitor):
            def visit_library(self, node):
                hdnt.release()
        with self.assertRaises(hdnt.Error):
            hdnt.common().accept(Releasing())
        self.assertTrue(hdnt.common().alive)

    def test_no_visitor_replaces_what_it_walks(self):
        parent = hdnt.load(self.write("p.btl", 'library "p" { block "FLOP_RISE" { pin "Q" output; } mapsto '
                                               '{ inst "one" "FLOP_FALL"; inst "two" "FLOP_FALL"; } }'))
        path = self.write("c.btl", 'library "c" { block "FLOP_RISE" mapsto { inst "three" "FLOP_FALL"; } }')
        own = self.write("good.btl", GOOD)

        class Loading(hdnt.Visitor):
            def visit_instance(self, node):
                hdnt.load(own).close()
                hdnt.load(path, parent=parent)
        with self.assertRaises(hdnt.Error):
            parent.accept(Loading())
        self.assertEqual([one.name for one in parent["FLOP_RISE"].netlist.instances], ["one", "two"])

    def test_a_replaced_mapping_is_gone(self):
        parent = hdnt.load(self.write("p.btl", 'library "p" { block "FLOP_RISE" { pin "Q" output; } mapsto '
                                               '{ inst "one" "FLOP_FALL"; } }'))
        netlist = parent["FLOP_RISE"].netlist
        instance = netlist.instances[0]
        hdnt.load(self.write("c.btl", 'library "c" { block "FLOP_RISE" mapsto { inst "two" "FLOP_FALL"; } }'),
                  parent=parent)
        self.assertEqual(parent["FLOP_RISE"].netlist.instances[0].name, "two")
        self.assertEqual((netlist.alive, instance.alive), (False, False))
        with self.assertRaises(hdnt.DeadObjectError):
            instance.name


class Threads(Folder):
    def test_eight_threads_load(self):
        paths = [self.write("%d.btl" % i, SYNTAX if i % 3 == 0 else GOOD) for i in range(12)]
        wrong = []

        def work(number):
            try:
                for i in range(40):
                    path = paths[(number + i) % len(paths)]
                    expected = int(path.stem) % 3 != 0
                    try:
                        with hdnt.load(path) as library:
                            good = library["FLOP_RISE"].pins["D[0]"].bit == 0 and hdnt.common()["FLOP_RISE"].netlist
                            library.source()
                    except hdnt.LoadError as error:
                        good = not expected and len(error.errors) == 1 and error.errors[0].file == str(path)
                    if not good:
                        wrong.append(path)
            except BaseException as error:
                wrong.append(error)
        threads = [threading.Thread(target=work, args=(i,)) for i in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])
        self.assertEqual(hdnt.error_count(), 0)

    def test_others_run_while_one_loads(self):
        # The text comes from this thread, so that a load which kept others from running would never end.
        faulthandler.dump_traceback_later(60, exit=True)
        self.addCleanup(faulthandler.cancel_dump_traceback_later)
        path, names = self.folder / "pipe.btl", []
        os.mkfifo(path)
        thread = threading.Thread(target=lambda: names.extend(hdnt.load(path)))
        thread.start()
        with open(path, "w") as pipe:
            pipe.write(GOOD)
        thread.join()
        self.assertEqual(names, ["FLOP_RISE"])

    def test_the_interpreter_ends_while_a_daemon_loads(self):
        path = self.write("good.btl", GOOD)
        script = textwrap.dedent("""
            import hdnt, sys, threading, time
            class Slow(hdnt.Visitor):
                def visit_pin(self, node):
                    time.sleep(0)
            def work():
                while True:
                    hdnt.load(sys.argv[1]).accept(Slow())
            kept = hdnt.load(sys.argv[1])
            for _ in range(3):
                threading.Thread(target=work, daemon=True).start()
            time.sleep(float(sys.argv[2]))
            """)
        for i in range(10):
            done = subprocess.run([sys.executable, "-c", script, path, str(0.02 + i * 0.003)], check=False, timeout=60,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            self.assertEqual((done.returncode, done.stdout), (0, b""))


if __name__ == "__main__":
    unittest.main()
