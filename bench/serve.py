#!/usr/bin/env python3
"""Measures `ntl serve` as an editor feels it: from a message written to its pipe to the answer read from it.

    cmake --preset bench && cmake --build --preset bench
    bench/serve.py [TOOL]

One library of 10 MB is open. Each figure is the median of some, with the smallest and the largest, in milliseconds of the
clock on the wall. The exit status is 1 when a target is missed; a limit that is met exactly is missed.
"""
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(ROOT, "build", "bench")
TOOL = sys.argv[1] if len(sys.argv) > 1 else os.path.join(BUILD, "bin", "ntl")
CORPUS = os.path.join(BUILD, "bench", "corpus", "10.btl")
REST = 300  # until a library is judged
TARGETS = {"start to the first answer": 300, "key stroke in a name": 20, "a new block, each key stroke": 20,
           "hover": 30, "hover over an expression": 30, "definition": 30, "completion": 30, "signature help": 30, "inlay hints of 100 lines": 30,
           "references": 200, "rules, behind the rest": 700}


class Server:
    def __init__(self, path, text):
        self.uri, self.text, self.version, self.number = "file://" + path, text, 1, 0
        begin = time.perf_counter()
        self.process = subprocess.Popen([TOOL, "serve"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.ask("initialize", {"capabilities": {}})
        self.start = (time.perf_counter() - begin) * 1e3
        self.send(method="initialized", params={})
        self.send(method="textDocument/didOpen", params={"textDocument": {
            "uri": self.uri, "languageId": "ntl", "version": 1, "text": text}})

    def send(self, **members):
        body = json.dumps({"jsonrpc": "2.0", **members}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(body) + body)
        self.process.stdin.flush()

    def receive(self):
        length = int(self.process.stdout.readline().split()[1])
        self.process.stdout.readline()
        return json.loads(self.process.stdout.read(length))

    def ask(self, method, params):
        self.number += 1
        begin = time.perf_counter()
        self.send(id=self.number, method=method, params=params)
        while (answer := self.receive()).get("id") != self.number:
            pass
        if "error" in answer:
            sys.exit("bench/serve.py: %s: %s" % (method, answer["error"]["message"]))
        return (time.perf_counter() - begin) * 1e3, answer["result"]

    def position(self, offset):
        line = self.text.count("\n", 0, offset)
        return {"line": line, "character": offset - self.text.rfind("\n", 0, offset) - 1}

    def ask_at(self, what, offset, **more):
        elapsed, result = self.ask("textDocument/" + what, {
            "textDocument": {"uri": self.uri}, "position": self.position(offset), **more})
        if not result:
            sys.exit("bench/serve.py: nothing for " + what)
        return elapsed

    def published(self):
        """What is said of the text, as it is now."""
        while True:
            message = self.receive()
            if message.get("method") == "textDocument/publishDiagnostics" \
                    and message["params"].get("version") == self.version:
                return message["params"]["diagnostics"]

    def edit(self, offset, length, new):
        """Until what the tree says of the changed text is there."""
        self.version += 1
        change = {"range": {"start": self.position(offset), "end": self.position(offset + length)}, "text": new}
        self.text = self.text[:offset] + new + self.text[offset + length:]
        begin = time.perf_counter()
        self.send(method="textDocument/didChange", params={
            "textDocument": {"uri": self.uri, "version": self.version}, "contentChanges": [change]})
        self.published()
        return (time.perf_counter() - begin) * 1e3

    def end(self):
        self.ask("shutdown", None)
        self.send(method="exit")
        self.process.wait()


def figures_of(path, text):
    server = Server(path, text)
    middle = re.compile(r'inst "(\w+)" "(\w+)"').search(text, len(text) // 2)
    figures = {"start to the first answer": [server.start]}
    expression = re.compile(r"if \(.*?(==|>|&&) ").search(text, len(text) // 2).start(1)
    figures["hover over an expression"] = [server.ask_at("hover", expression) for _ in range(15)]
    for what, offset in (("hover", middle.start(2)), ("definition", middle.start(2)), ("completion", middle.start(2))):
        figures[what] = [server.ask_at(what, offset) for _ in range(15)]
    call = re.compile(r"\w+Property\(").search(text, len(text) // 2)
    figures["signature help"] = [server.ask_at("signatureHelp", call.end()) for _ in range(15)]
    line = server.position(call.start())["line"]
    visible = {"start": {"line": line - 50, "character": 0}, "end": {"line": line + 50, "character": 0}}
    figures["inlay hints of 100 lines"] = [server.ask_at("inlayHint", call.end(), range=visible) for _ in range(15)]
    figures["references"] = [server.ask_at("references", middle.start(2), context={"includeDeclaration": True})
                             for _ in range(7)]
    at = middle.end(1)
    figures["key stroke in a name"] = [server.edit(at + i, 0, "x") for i in range(30)]
    server.edit(at, 30, "")
    block = text.rindex("\n", 0, re.compile(r'^ *block "', re.M).search(text, len(text) // 2).start() + 1) + 1
    typed = ('block "TYPED" {\n  primgroup = "LOGIC:GATE";\n  pin "A[3:0]" input data;\n  pin "Z" output;\n'
             '  property int "N" { min = 0, default = 1 }\n}\nmapsto {\n  inst "i" "OTHER";\n  connect "A" : "i" "B";\n}\n')
    figures["a new block, each key stroke"] = [server.edit(block + i, 0, c) for i, c in enumerate(typed)]
    server.edit(block, len(typed), "")

    figures["rules, behind the rest"] = []
    opening = text.index("{") + 1
    for i in range(5):  # each time one block more has an instance of a block that is nowhere
        wrong = 'block "WRONG_%d" { } mapsto { inst "i" "NOWHERE_%d"; }\n' % (i, i)
        begin = time.perf_counter()
        server.edit(opening, 0, "\n" + wrong)
        while not any("NOWHERE_%d" % i in one["message"] for one in server.published()):
            pass
        figures["rules, behind the rest"].append((time.perf_counter() - begin) * 1e3 - REST)
    server.end()
    return figures


def main():
    with open(CORPUS, encoding="utf-8") as file:
        text = file.read()
    folder = tempfile.mkdtemp()
    try:
        path = os.path.join(folder, "large.btl")
        shutil.copy(CORPUS, path)
        figures = figures_of(path, text)
    finally:
        shutil.rmtree(folder)
    missed = False
    print("%-32s %10s %22s %8s" % ("A library of 10 MB", "ms", "from, to", "must"))
    for name, values in figures.items():
        middle = statistics.median(values)
        missed |= middle >= TARGETS[name]
        print("%-32s %10.1f %22s %8d%s" % (name, middle, "%.1f, %.1f" % (min(values), max(values)), TARGETS[name],
                                           "  MISSED" if middle >= TARGETS[name] else ""))
    return missed


if __name__ == "__main__":
    sys.exit(main())
