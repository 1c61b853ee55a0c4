"""The package as such: names and signatures, documentation, types, metadata, and the tool behind it."""
import importlib.metadata
import inspect
import json
import os
import pathlib
import pydoc
import re
import subprocess
import sys
import tempfile
import typing
import unittest

import hdnt
from hdnt import _words

ENVIRONMENT = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, env=ENVIRONMENT, encoding="utf-8").stdout


class Words(unittest.TestCase):
    TYPES = {name: list(typing.get_args(kind)) for name, kind in vars(_words).items() if typing.get_args(kind)}

    def test_words_are_those_of_the_library(self):
        lines = [line.split("\t") for line in output(os.environ["HDNT_WORDS"]).splitlines()]
        expected = {line[0]: set(line[1:]) for line in lines}
        expected["Severity"] = {"error", "warning", "note"}
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "empty.btl")
            path.write_text('library "l" { }')
            rules = json.loads(output(os.environ["NTL_TOOL"], "check", "--format=sarif", path))["runs"][0]["tool"]
        expected["Code"] = {rule["id"] for rule in rules["driver"]["rules"]} - {"unusable-input"}
        self.assertEqual({name: set(words) for name, words in self.TYPES.items()}, expected)
        self.assertEqual([name for name, words in self.TYPES.items() if len(words) != len(set(words))], [])

    def test_types_have_words_of_their_own_nowhere_else(self):
        files = list(pathlib.Path(hdnt.__file__).parent.glob("*.py*"))
        self.assertIn("__init__.pyi", [path.name for path in files])
        self.assertEqual([path.name for path in files if re.search(r"\bLiteral\b", path.read_text(errors="replace"))],
                         ["_words.py"])

    def test_what_the_shipped_libraries_answer(self):
        blocks = hdnt.common().blocks
        pins = [pin for block in blocks for pin in block.pins]
        for name, found in (("PinType", {pin.type for pin in pins}), ("Direction", {pin.direction for pin in pins}),
                            ("Required", {pin.required for pin in pins} - {None}),
                            ("Maturity", {block.maturity for block in blocks}),
                            ("ValueType", {one.type for block in blocks for one in block.properties}),
                            ("Section", {block.netlist.section for block in blocks if block.netlist})):
            self.assertLessEqual(found, set(self.TYPES[name]))
            self.assertTrue(found, name)


class Metadata(unittest.TestCase):
    def test_version(self):
        self.assertEqual(importlib.metadata.version("hdnt"), hdnt.__version__)
        self.assertEqual(output(os.environ["NTL_TOOL"], "--version").split(), ["ntl", hdnt.__version__])
        self.assertIn("cmake", importlib.metadata.distribution("hdnt").read_text("INSTALLER"))

    def test_module_runs_the_tool(self):
        def run(*arguments):
            # The interpreter itself, which loads the package, needs what is preloaded.
            return subprocess.run([sys.executable, "-m", "hdnt", *arguments], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, check=False, encoding="utf-8")
        shown = run("show", "--json", "FLOP_RISE")
        self.assertEqual((shown.returncode, shown.stderr), (0, ""))
        self.assertEqual(shown.stdout, output(os.environ["NTL_TOOL"], "show", "--json", "FLOP_RISE"))
        for arguments in (["show", "NO SUCH  BLOCK"], ["--none"]):
            own = subprocess.run([os.environ["NTL_TOOL"], *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                 check=False, env=ENVIRONMENT, encoding="utf-8")
            done = run(*arguments)
            self.assertNotEqual(done.returncode, 0)
            self.assertEqual((done.returncode, done.stderr), (own.returncode, own.stderr))


def members(kind):
    """Public attributes of a class that are not merely those of Python's own classes."""
    own = [base for base in kind.__mro__ if base not in (object, tuple, Exception, BaseException, UserWarning, Warning,
                                                         ReferenceError)]
    return {name: getattr(kind, name) for base in own for name in vars(base) if not name.startswith("_")}


class Documentation(unittest.TestCase):
    def public(self):
        for name in hdnt.__all__:
            item = getattr(hdnt, name)
            yield name, item
            if isinstance(item, type):
                for member, value in members(item).items():
                    yield name + "." + member, value

    def test_everything_says_what_it_is_and_takes(self):
        count = 0
        for name, item in self.public():
            with self.subTest(name):
                text = inspect.getdoc(item)
                self.assertTrue(text)
                self.assertNotIn("--\n", text)
                if "." not in name:
                    self.assertEqual(item.__module__, "hdnt")
                if not callable(item):
                    continue
                signature = str(inspect.signature(item))
                self.assertNotRegex(signature, r"arg0|\*args, \*\*")
                self.assertIn(name.rpartition(".")[2], pydoc.plain(pydoc.render_doc(item)))
                count += 1
        self.assertGreater(count, 120)

    def test_signatures(self):
        for item, expected in ((hdnt.load, "(path, parent=None, *, check=False, untrusted=False)"), (hdnt.common, "()"),
                               (hdnt.set_parameter, "(name, value)"), (hdnt.Block.pin_tuples, "(self)"),
                               (hdnt.common().find, "(name)"), (hdnt.Library.get, "(self, name, default=None)"),
                               (hdnt.common()["FLOP_RISE"].expand, "(values=None, *, connected=(), deep=False, "
                                                                   "architecture='', functions=None, **more)"),
                               (hdnt.Property.digits, "(self, value, keep_leading_zeros=True)")):
            self.assertEqual(str(inspect.signature(item)), expected)
        self.assertIn("find(self, name)", pydoc.plain(pydoc.render_doc(hdnt.Library)))


if __name__ == "__main__":
    unittest.main()
