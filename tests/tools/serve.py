#!/usr/bin/env python3
"""serve.py TOOL

A small session with the server as an editor has it: a process of its own, messages as they come.
"""
import contextlib
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest


class Server:
    def __init__(self, *options):
        self.process = subprocess.Popen([sys.argv[1], "serve", *options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def send(self, **members):
        body = json.dumps({"jsonrpc": "2.0", **members}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(body) + body)
        self.process.stdin.flush()

    def receive(self):
        header = self.process.stdout.readline()
        self.process.stdout.readline()
        return json.loads(self.process.stdout.read(int(header.removeprefix(b"Content-Length: "))))

    def ask(self, method, params=None):
        self.send(id=method, method=method, params=params)
        while "method" in (answer := self.receive()):
            pass
        assert answer["id"] == method, answer
        return answer

    def end(self):
        out, err = self.process.communicate(timeout=60)
        return self.process.returncode, out, err


def serving(path, text):
    """A server that has a file of that text open."""
    path.write_text(text)
    server = Server()
    server.ask("initialize", {"capabilities": {}})
    server.send(method="initialized", params={})
    server.send(method="textDocument/didOpen", params={
        "textDocument": {"uri": path.as_uri(), "languageId": "ntl", "version": 1, "text": text}})
    return server


class Session(unittest.TestCase):
    uri = "untitled:a.btl"

    def open(self, server):
        capabilities = server.ask("initialize", {"capabilities": {}})["result"]["capabilities"]
        self.assertEqual(capabilities["textDocumentSync"]["change"], 2)
        server.send(method="initialized", params={})
        text = 'library "L" {\n  block "A" {\n    pin "B" input\n  }\n}\n'
        server.send(method="textDocument/didOpen", params={
            "textDocument": {"uri": self.uri, "languageId": "ntl", "version": 1, "text": text}})
        return server.receive()["params"]["diagnostics"]

    def test_a_fault_is_said_and_mended_while_it_is_typed(self):
        server = Server("--stdio")
        self.assertEqual([(each["code"], each["range"]["start"]) for each in self.open(server)],
                         [("missing-token", {"line": 2, "character": 17})])
        place = {"line": 2, "character": 17}
        server.send(method="textDocument/didChange", params={
            "textDocument": {"uri": self.uri, "version": 2},
            "contentChanges": [{"range": {"start": place, "end": place}, "text": ";"}]})
        self.assertEqual(server.receive()["params"], {"uri": self.uri, "version": 2, "diagnostics": []})
        symbols = server.ask("textDocument/documentSymbol", {"textDocument": {"uri": self.uri}})["result"]
        self.assertEqual(symbols[0]["children"][0]["children"][0]["name"], "B")
        self.assertIsNone(server.ask("shutdown")["result"])
        server.send(method="exit")
        self.assertEqual(server.end(), (0, b"", b""))

    def test_exit_alone_and_the_end_of_the_input_are_failures(self):
        server = Server()
        self.open(server)
        server.send(method="exit")
        self.assertEqual(server.end(), (1, b"", b""))
        self.assertEqual(Server().end(), (1, b"", b""))

    # As `ntl lint` judges: with tables of cells of the project, and with test features.
    def test_a_library_is_judged_with_its_project(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "a.btl")
            pathlib.Path(folder, "cells.csv").write_text("3999,OWN_CELL\n")
            pathlib.Path(folder, ".ntl.cfg").write_text(
                'cells = [ "cells.csv" ]; parents = [ "common" ]; rules = { only = [ "unregistered-block", "no-group" ]; };')
            text = 'library "L" {\n  block "OWN_CELL" { pin "B" input; }\n  block "OTHER" { pin "B" input; }\n}\n'
            server = serving(path, text)
            self.assertEqual(server.receive()["params"]["diagnostics"], [])
            found = server.receive()["params"]["diagnostics"]
            lint = subprocess.run([sys.argv[1], "lint", "--format", "short", folder], capture_output=True, text=True)
            said = [f"{path}:{one['range']['start']['line'] + 1}:{one['range']['start']['character'] + 1}: "
                    f"{['', 'error', 'warning', 'note'][one['severity']]}: {one['message']} [{one['code']}]"
                    for one in found]
            self.assertEqual(said, lint.stdout.splitlines())
            self.assertEqual([one["code"] for one in found], ["unregistered-block"])
            server.send(method="exit")
            self.assertEqual(server.end(), (1, b"", b""))

    def test_an_expansion_says_what_the_tool_says(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "a.btl")
            text = ('library "L" {\n  function int intProperty(string);\n  block "A" { pin "B" input; }\n'
                    '  block "C" {\n    pin "D" input;\n    property int "N" { min = 0, max = 3, default = 0 }\n'
                    '  } expandsto {\n    if (intProperty("N") > 2) inst "a" "A";\n  }\n}\n')
            server = serving(path, text)
            lenses = server.ask("textDocument/codeLens", {"textDocument": {"uri": path.as_uri()}})
            message = server.ask("workspace/executeCommand", lenses["result"][0]["command"])
            said = [subprocess.run([sys.argv[1], "expand", "C", "-l", folder, *options], capture_output=True, text=True,
                                   check=True).stdout for options in ([], ["--set", "N=3"])]
            self.assertEqual(message["result"]["text"],
                             f"// With the defaults\n{said[0]}\n// With N = 3\n{said[1]}")
            server.send(method="exit")
            server.end()

    def test_a_reader_that_goes_away_ends_it(self):
        server = Server()
        server.ask("initialize", {"capabilities": {}})
        server.process.stdout.close()
        with contextlib.suppress(BrokenPipeError):  # it may have seen that already
            server.send(id=1, method="none")
        self.assertEqual(server.process.wait(timeout=60), 1)
        server.process.stderr.close()
        with contextlib.suppress(BrokenPipeError):
            server.process.stdin.close()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
