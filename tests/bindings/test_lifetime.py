"""Random sequences of everything a script can do to handles and libraries.

Handles of every type are kept while libraries are closed, released and loaded again and garbage is collected, and each
use must either answer as it did before or raise DeadObjectError, as the handle itself says.

    HDNT_SEQUENCES=10000 HDNT_SEED=1 python3 test_lifetime.py
"""
import gc
import io
import os
import pathlib
import random
import tempfile
import threading
import unittest
import warnings

import hdnt

SEQUENCES = int(os.environ.get("HDNT_SEQUENCES", "300"))
SEED = int(os.environ.get("HDNT_SEED", "1"))
TEXT = """library "%s" {
  function int steps(int);
  function int intProperty(string);
  block "FLOP_RISE" {
    primgroup = "A:B";
    pin "D[3:0]" input data { property int "LOAD" { default = 2 } }
    pin "Q" output;
    property int "N" { min = 0, max = 9, default = 3 }
    property 4'h "H" { default = 4'hA }
    property string "S" { values { "ONE", "TWO" }, default = "ONE" }
  } mapsto {
    steps(3);
    inst "one" "FLOP_FALL";
    signal "n[1:0]";
    signal "s" : "D[0]", "one" "D";
    connect "n[0]" : "one" "Q", "~Q";
    assign block property "one" "N" 1 + 2 * intProperty("N");
    assign pin property "one" "D", "LOAD" 1.5;
    if (1 == 2) { inst "two" "FLOP_FALL"; } else { if (1 < 2) { inst "three" "FLOP_FALL"; } }
    steps(1);
  }
  block "FLOP_FALL" { pin "D" input; pin "Q" output; property int "N" { default = 1 } }
}
"""
OVER = 'library "over" { block "FLOP_RISE" mapsto { inst "other" "FLOP_FALL"; } block "GATE_AND_2" { pin "O" output; } }\n'


def fields(kind):
    return [name for name in dir(kind) if not name.startswith("_") and not callable(getattr(kind, name)) and
            name not in ("alive", "path", "warnings", "closed")]


def plain(value):
    """The part of an answer that can be compared later."""
    if isinstance(value, (hdnt.Node, hdnt.View)):
        return type(value)
    return tuple(plain(item) for item in value) if isinstance(value, tuple) else value


class Player:
    def __init__(self, number, folder):
        self.random = random.Random(number)
        self.held = []
        self.files = []
        for name, text in (("one", TEXT % "one"), ("two", TEXT % "two"), ("over", OVER), ("bad", "library 3")):
            path = folder / (name + ".btl")
            path.write_text(text)
            self.files.append(path)
        self.answers = {}
        self.died = 0

    def libraries(self):
        return [node for node in self.held if isinstance(node, hdnt.Library) and node.alive]

    def hold(self, value):
        for item in value if isinstance(value, (tuple, list)) else [value]:
            if isinstance(item, (hdnt.Node, hdnt.View)):
                self.held.append(item)

    def load(self):
        parent = self.random.choice(self.libraries() or [None]) if self.random.random() < 0.4 else None
        try:
            self.hold(hdnt.load(self.random.choice(self.files), parent, check=self.random.random() < 0.5))
        except hdnt.LoadError as error:
            assert error.path.endswith("bad.btl"), error

    def managed(self):
        self.hold(self.random.choice([hdnt.common, hdnt.simulation])())

    def close(self):
        for library in self.random.sample(self.libraries(), k=min(1, len(self.libraries()))):
            if library.path:
                library.close()
                assert not library.alive

    def release(self):
        hdnt.release()

    def collect(self):
        gc.collect(self.random.randrange(3))

    def forget(self):
        self.random.shuffle(self.held)
        for node in self.held[len(self.held) // 2:]:
            self.answers.pop(id(node), None)
        del self.held[len(self.held) // 2:]

    def cycle(self):
        class Cycle:
            def __del__(self):
                for node in self.nodes:
                    repr(node)
                if self.closes and self.nodes[0].alive and self.nodes[0].library.path:
                    self.nodes[0].library.close()
        nodes = [node for node in self.held if isinstance(node, hdnt.Node)]
        if nodes:
            one = Cycle()
            one.nodes, one.me = self.random.sample(nodes, k=1), one
            one.closes = self.random.random() < 0.3

    def use(self):
        for node in self.random.choices(self.held, k=8) if self.held else []:
            self.use_one(node)

    def use_one(self, node):
        if isinstance(node, hdnt.View):
            try:
                self.hold(node[:])
            except hdnt.DeadObjectError:
                self.died += 1
            return
        alive = node.alive
        name = self.random.choice(fields(type(node)))
        try:
            value = getattr(node, name)
        except hdnt.DeadObjectError:
            assert not node.alive, (node, name)
            self.died += 1
            return
        assert alive, (node, name)
        known = self.answers.setdefault(id(node), {})
        if name in known and name not in ("netlist", "has_own_netlist", "netlist_kind"):
            assert known[name] == plain(value), (node, name)
        known[name] = plain(value)
        self.hold(value)

    def operate(self):
        nodes = [node for node in self.held if isinstance(node, (hdnt.Block, hdnt.Library, hdnt.Expression))]
        if not nodes:
            return
        node = self.random.choice(nodes)
        try:
            if isinstance(node, hdnt.Expression):
                str(node)
                if not isinstance(node, hdnt.Call):
                    node.evaluate({"intProperty": lambda name: 4})
            else:
                self.random.choice([lambda: node.print(io.StringIO()), node.source, lambda: node.diff(node),
                                    lambda: node.accept(Collecting(self)), lambda: node.accept_own(hdnt.Visitor()),
                                    lambda: isinstance(node, hdnt.Block) and node.expand(deep=True)])()
        except hdnt.DeadObjectError:
            self.died += 1
        except hdnt.Error as error:
            assert "in use" in str(error) or isinstance(node, hdnt.Expression), error

    STEPS = [load, load, managed, close, release, collect, forget, cycle] + [use] * 12 + [operate] * 3

    def play(self):
        for _ in range(30):
            self.random.choice(self.STEPS)(self)


class Collecting(hdnt.Visitor):
    """Holds what it is shown, and at times ends the library that it is shown."""

    def __init__(self, player):
        self.player = player

    def visit_block(self, node):
        self.player.hold(node)
        if self.player.random.random() < 0.02:
            self.player.close()

    def visit_operation(self, node):
        self.player.hold(node)

    def visit_signal(self, node):
        self.player.hold(node)


class Lifetime(unittest.TestCase):
    def test_random_sequences(self):
        warnings.simplefilter("ignore", hdnt.LoadWarning)
        died = 0
        with tempfile.TemporaryDirectory() as folder:
            for number in range(SEED, SEED + SEQUENCES):
                player = Player(number, pathlib.Path(folder))
                with self.subTest(number):
                    player.play()
                died += player.died
        self.assertGreater(died, SEQUENCES)
        del player
        gc.collect()
        hdnt.release()
        self.assertEqual(hdnt.live_handles(), 0)
        self.assertEqual(hdnt.error_count(), 0)

    def test_threads_share_handles(self):
        warnings.simplefilter("ignore", hdnt.LoadWarning)
        with tempfile.TemporaryDirectory() as folder:
            player = Player(SEED, pathlib.Path(folder))
            held, wrong = [hdnt.common()], []

            def work(number):
                chance = random.Random(number)
                for _ in range(SEQUENCES * 4):
                    try:
                        self.step(chance, held, player.files)
                    except hdnt.DeadObjectError:
                        pass
                    except BaseException as error:
                        if "in use" not in str(error):
                            wrong.append(error)
                    del held[400:]
            threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
        self.assertEqual(wrong, [])
        del held, player
        gc.collect()
        hdnt.release()
        self.assertEqual(hdnt.live_handles(), 0)

    @staticmethod
    def step(chance, held, files):
        node = chance.choice(held)
        what = chance.randrange(12)
        if what == 0:
            held.insert(0, hdnt.load(chance.choice(files[:2])))
            held.insert(0, hdnt.load(files[2], node.library))
        elif what == 1:
            held.insert(0, hdnt.common())
        elif what == 2 and node.library.path:
            node.library.close()
        elif what == 3 and chance.random() < 0.2:
            hdnt.release()
        elif what == 4:
            node.library.source()
        elif what == 5:
            node.library.accept(hdnt.Visitor())
        elif what == 6:
            node.library.find("FLOP_RISE").expand(deep=True)
        elif what == 7:
            node.library.diff(hdnt.common())
        else:
            value = getattr(node, chance.choice(fields(type(node))))
            held[:0] = [one for one in (value if isinstance(value, (tuple, hdnt.View)) else [value])
                        if isinstance(one, hdnt.Node)][:5]


if __name__ == "__main__":
    unittest.main()
