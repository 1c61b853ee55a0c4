"""The package as such: names and signatures, documentation, types, metadata, and the tool behind it."""
import inspect
import pydoc
import unittest

import hdnt


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
        for item, expected in ((hdnt.load, "(path, parent=None, *, check=False)"), (hdnt.common, "()"),
                               (hdnt.set_parameter, "(name, value)"), (hdnt.Block.pin_tuples, "(self)"),
                               (hdnt.common().find, "(name)"),
                               (hdnt.common()["FLOP_RISE"].expand, "(values=None, *, connected=(), deep=False, "
                                                                   "architecture='', functions=None, **more)"),
                               (hdnt.Property.digits, "(self, value, keep_leading_zeros=True)")):
            self.assertEqual(str(inspect.signature(item)), expected)
        self.assertIn("find(self, name)", pydoc.plain(pydoc.render_doc(hdnt.Library)))


if __name__ == "__main__":
    unittest.main()
