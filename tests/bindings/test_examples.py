"""The examples do what they say, and pass the type checker with the package's stubs."""
import enum
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import hdnt

ROOT = pathlib.Path(os.environ["NTL_SOURCE_DIR"])
EXAMPLES = ROOT / "examples" / "python"
DATA = ROOT / "data" / "examples"


def run(name, *arguments, status=0):
    done = subprocess.run([sys.executable, EXAMPLES / name, *map(str, arguments)], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, check=False, encoding="utf-8")
    if done.returncode != status:
        raise AssertionError("status %d: %s" % (done.returncode, done.stderr))
    return done.stdout


class Examples(unittest.TestCase):
    def test_block_table(self):
        lines = run("block_table.py").splitlines()
        rows = {line.split()[0]: [int(number) for number in line.split()[1:]] for line in lines if line.startswith("  ")}
        groups = [[int(number) for number in line.split()[1:]] for line in lines[1:] if not line.startswith(" ")]
        self.assertEqual(len(rows), len(hdnt.common()))
        self.assertEqual(rows["FLOP_RISE_CLEAR"], [4, 4, 3])
        self.assertEqual([sum(row) for row in zip(*groups)], [sum(row) for row in zip(*rows.values())])
        self.assertIn("GATE_AND_2", run("block_table.py", DATA / "first.btl"))

    def test_library_diff(self):
        with tempfile.TemporaryDirectory() as folder:
            new = pathlib.Path(folder, "new.btl")
            text = (DATA / "first.btl").read_text()
            new.write_text(text.replace('"CLK"', '"CK"'))
            said = run("library_diff.py", DATA / "first.btl", new, status=1)
            self.assertIn("breaking: pin FLOP_BANK_8_ENABLE/CLK removed", said)
            self.assertEqual(run("library_diff.py", DATA / "first.btl", DATA / "first.btl"), "no difference\n")
            run("library_diff.py", DATA / "first.btl", folder + "/none.btl", status=1)

    def test_maps_to(self):
        said = run("maps_to.py", "flop_rise_enable_setreset").split("\n")
        self.assertIn("FLOP_RISE_CLEAR", said)
        sys.path.insert(0, str(EXAMPLES))
        import maps_to
        library = hdnt.common()
        used = {block.name: set(instances(block.netlist)) for block in library.blocks}
        indirect = 0
        for name in library:
            expected, more = set(), {name}
            while more:  # the same from the lists of the mappings, a step at a time
                more = {user for user in used if user not in expected | {name} and more & used[user]}
                expected |= more
            found = maps_to.mapped_to(library, name)
            self.assertEqual(set(found), expected)
            indirect += sum(steps > 1 for steps in found.values())
        self.assertGreater(indirect, 0)
        self.assertEqual(run("maps_to.py", "NONE", status=1), "")

    def test_value_enums(self):
        made = {}
        exec(run("value_enums.py"), made)
        enumerations = {name: item for name, item in made.items() if isinstance(item, enum.EnumMeta)}
        listed = [(b.name + "_" + p.name, p) for b in hdnt.common().blocks for p in b.properties if p.values]
        self.assertEqual(len(enumerations), len(listed))
        for name, one in listed:
            self.assertEqual({item.value for item in enumerations[name]}, set(one.values))

    @unittest.skipIf("LD_PRELOAD" in os.environ, "the type checker is no program to look for faults in")
    def test_types(self):
        with tempfile.TemporaryDirectory() as cache:
            for command in (["mypy", "--strict", "--cache-dir", cache, *EXAMPLES.glob("*.py")],
                            ["mypy.stubtest", "hdnt", "--allowlist", ROOT / "tests/bindings/stubtest.allow"]):
                done = subprocess.run([sys.executable, "-m", *map(str, command)], cwd=cache, check=False,
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8")
                self.assertEqual(done.returncode, 0, done.stdout)


def instances(node):
    """Names of the blocks that a mapping, or a statement of one, has instances of."""
    if node is None:
        return []
    if isinstance(node, hdnt.Instance):
        return [node.type_name]
    if isinstance(node, hdnt.Netlist):
        return [name for item in node.instances + node.ifs for name in instances(item)]
    if isinstance(node, hdnt.If):
        return instances(node.then) + instances(node.otherwise)
    return [name for item in getattr(node, "statements", ()) for name in instances(item)]


if __name__ == "__main__":
    unittest.main()
