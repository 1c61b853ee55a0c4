#!/usr/bin/env python3
"""inputOutput.py NTL SHIM SOURCE_DIR [--seconds S] [--kills N] [--only COMMAND] [--verbose]

Each call of the tool on files fails once, in turn and in each way that such a call can, and the tool is killed before
it. What is asked of each run: a status of the tool's own; that of the undisturbed run only with its output; a line on
standard error otherwise; files old or new as a whole; nothing left behind but by a kill, and the next run is right.
Then full devices, closed pipes, limits of size, folders that cannot be written, and kills at random moments.

S: for all commands together; of more tries than fit, every so many-th. 0: all of them.
"""
import argparse
import errno
import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

NAMED = {name: str(getattr(errno, name)) for name in ("EACCES", "EIO", "ENOSPC", "EINTR", "EINVAL")}
USUAL = ("EACCES", "EIO", "ENOSPC", "EINTR")
WAYS = {"read": ("EIO", "EINTR", "short"), "write": ("EIO", "EINTR", "ENOSPC", "short"), "readdir": ("EIO",),
        "close": ("EIO", "EINTR", "ENOSPC"), "sync": ("EIO", "EINTR", "ENOSPC"), "rename": (*USUAL, "EINVAL")}
UNCLEAR = ("terminate called", "basic_", "filesystem error", "iostream", "Success", "std::")

OVER = ["in/rich.btl", "--parent", "common", "-I", "in"]
LIBRARY = ["-l", *OVER]
# A name, the arguments, and what it writes: each of these is old or new as a whole.
COMMANDS = [
    ("check", ["check", *OVER], []),
    ("check --depfile", ["check", *OVER, "--depfile", "out/depfile", "--format", "json"], ["out/depfile"]),
    ("check --baseline", ["check", *OVER, "--baseline", "out/baseline"], []),
    ("check --write-baseline", ["check", *OVER, "--write-baseline", "out/baseline"], ["out/baseline"]),
    ("check of a folder", ["check", "in/parts"], []),
    ("lint", ["lint", *OVER, "--format", "sarif"], []),
    ("list", ["list", *LIBRARY], []),
    ("show", ["show", "RICH_CELL", *LIBRARY], []),
    ("expand", ["expand", "RICH_CELL", *LIBRARY], []),
    ("print", ["print", *OVER], []),
    ("diff", ["diff", "in/rich.btl", "in/changed.btl", *OVER[1:]], []),
    ("format", ["format", "in/rich.btl"], []),
    ("format --in-place", ["format", "--in-place", "out/parts"], ["out/parts/one.btl", "out/parts/two.btl"]),
    ("export json", ["export", "json", *LIBRARY], []),
    ("export -o", ["export", "json", *LIBRARY, "-o", "out/old.json"], ["out/old.json"]),
    ("export -o, new", ["export", "verilog", *LIBRARY, "-o", "new.v"], ["new.v"]),
    ("export --split", ["export", "csv", *LIBRARY, "--split", "out/tables"],
     ["out/tables/blocks.csv", "out/tables/pins.csv", "out/tables/properties.csv"]),
    ("import", ["import", "json", "in/rich.json"], []),
    ("import -o", ["import", "json", "in/rich.json", "-o", "out/imported.btl"], ["out/imported.btl"]),
    ("guide", ["guide", "out/guide", *LIBRARY], ["out/guide"]),
    ("guide, new", ["guide", "out/new/guide", *LIBRARY], ["out/new/guide"]),
]
KILLED = ("format --in-place", "export -o", "guide")


class Tool:
    """Runs in a folder of its own, which is brought back to its first state before each run."""

    def __init__(self, arguments, scratch):
        self.ntl, self.shim = arguments.ntl, arguments.shim
        self.place = os.path.join(os.path.realpath(scratch), "place")
        self.beside = os.path.join(scratch, "beside")  # what does not count
        os.makedirs(self.beside)
        os.chmod(scratch, 0o755)
        for folder in ("in/parts", "out/parts", "data"):
            os.makedirs(f"{self.place}/{folder}")
        source = pathlib.Path(arguments.source)
        shutil.copytree(source / "data/examples/family", f"{self.place}/data", dirs_exist_ok=True)
        shutil.copytree(source / "data/guide", f"{self.place}/data/guide")
        shutil.copytree(source / "tests/harden/rich", f"{self.place}/in", dirs_exist_ok=True)
        for name in ("one", "two"):
            shutil.copy(source / "tests/harden/rich/part.btl", f"{self.place}/in/parts/{name}.btl")
            untidy = (source / "tests/harden/rich/rich.btl").read_text().replace("    ", "\t")
            pathlib.Path(self.place, "out/parts", name + ".btl").write_text(untidy)
        for old in ("old.json", "imported.btl", "depfile"):
            pathlib.Path(self.place, "out", old).write_text("an older one\n")
        for made in (["export", "json", *LIBRARY, "-o", "in/rich.json"], ["guide", "out/guide", *LIBRARY, "--title", "Older"],
                     ["check", *OVER, "--write-baseline", "out/baseline"]):
            self.start(made)
            if self.end()[0] != 0:
                sys.exit(f"cannot prepare {made}: {self.said}")
        self.first = self.files()

    def environment(self, more):
        own = {name: value for name, value in os.environ.items() if not name.startswith(("HDNT_", "NTL_", "LC_"))}
        return {**own, "HDNT_CELLVIEWS": self.place + "/in/cells.csv", "LC_ALL": "C", **more}

    def faulty(self, wish):
        return {"LD_PRELOAD": self.shim, "HDNT_IO_FOLDER": self.place, "HDNT_IO_FAULT": wish,
                "HDNT_IO_REPORT": self.beside + "/report"}

    def start(self, arguments, more=None, output=None, limits=None, before=()):
        with open(output or self.place + "/stdout", "wb") as written:
            self.process = subprocess.Popen([*before, self.ntl, "--data", "data", *arguments], cwd=self.place,
                                            stdin=subprocess.DEVNULL, stdout=written, stderr=subprocess.PIPE,
                                            preexec_fn=limits, env=self.environment(more or {}))

    def end(self):
        """Status and standard output."""
        try:
            _, said = self.process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            _, said = self.process.communicate()
        self.said = said.decode(errors="replace").splitlines()
        written = pathlib.Path(self.place, "stdout")
        text = written.read_bytes() if written.exists() else b""
        written.unlink(missing_ok=True)
        return self.process.returncode, text

    def files(self):
        """Who may read it, and its bytes or none, by path."""
        found = {}
        for folder, _, names in os.walk(self.place):
            for path in (folder, *(os.path.join(folder, name) for name in names)):
                text = None if path == folder else pathlib.Path(path).read_bytes()
                found[os.path.relpath(path, self.place)] = (os.stat(path).st_mode & 0o444, text)
        return found

    def reset(self, now):
        """Makes the folder what it was first; `now` is what files() says of it."""
        for path in sorted(now.keys() - self.first.keys(), reverse=True):
            remove = os.rmdir if now[path][1] is None else os.remove
            remove(os.path.join(self.place, path))
        for path, (_, text) in sorted(self.first.items()):
            full = os.path.join(self.place, path)
            if text is None:
                os.makedirs(full, exist_ok=True)
            elif now.get(path) != self.first[path]:
                pathlib.Path(full).write_bytes(text)
            if now.get(path) != self.first[path]:
                os.chmod(full, 0o644 if text is not None else 0o755)


def part(files, target):
    """What is at that path and below it."""
    return {path: text for path, text in files.items() if path == target or path.startswith(target + "/")}


class Command:
    def __init__(self, tool, name, arguments, targets):
        self.tool, self.name, self.arguments, self.targets = tool, name, arguments, targets
        self.findings, self.tried, self.killed = [], 0, 0
        tool.start(arguments)
        self.status, self.output = tool.end()
        self.said, self.after = set(tool.said), tool.files()
        tool.reset(self.after)
        if self.status not in (0, 1) or any(not part(self.after, target) for target in targets):
            sys.exit(f"{name}: does not work: {tool.said}")

    def faulty(self, wish):
        """Status, standard output, and kind and path of the call that failed; of each call that can, with wish 0."""
        report = pathlib.Path(self.tool.beside, "report")
        report.write_text("")
        self.tool.start(self.arguments, self.tool.faulty(wish))
        return *self.tool.end(), [line.split("\t") for line in report.read_text().splitlines()]

    def tries(self):
        _, _, calls = self.faulty("0")
        self.tool.reset(self.tool.files())
        if not calls:
            sys.exit(f"{self.name}: nothing can fail; is {self.tool.shim} loaded?")
        for number, (kind, path) in enumerate(calls, 1):
            ends = ("kill", "alarm") if self.targets and self.decides(path) else ()
            for way in WAYS.get(kind, USUAL) + ends:
                yield number, way

    def decides(self, path):
        """Whether a fault there leaves only old and new; what check writes also depends on how much it could load, and
        that is done in a process of its own."""
        return self.arguments[0] != "check" or path.startswith(self.tool.place + "/out")

    def find(self, where, what):
        self.findings.append(f"{self.name}: {where}: {what}: {' | '.join(self.tool.said)[:300]}")

    def attempt(self, number, way):
        self.tried += 1
        status, output, failed = self.faulty(f"{number} {NAMED.get(way, way)}")
        kind, path = failed[0] if failed else ("none", "")
        short = os.path.relpath(path, self.tool.place) if path else ""
        where = f"{way} at call {number}, {kind} {short}"
        if not failed:
            self.find(where, "did not come to that call")
        if (kind in ("sync", "close") and way in NAMED and status == self.status
                and short not in self.tool.first.keys() | self.after.keys() and short != "stdout"):
            self.find(where, "what may not have arrived is taken for written")
        now = self.tool.files()
        told = " ".join(self.tool.said) + str(now.get("out/baseline"))
        if short == "in/part.btl" and "include-not-opened" in told and status in (0, 1):
            return self.tool.reset(now)  # goes on without it, and says so
        self.judge(where, status, output, way, self.decides(path), kind == "remove")

    def judge(self, where, status, output, way="", isOldOrNew=True, isRemoval=False):
        now = self.tool.files()
        if way == "alarm" and status == -signal.SIGALRM and now == self.tool.first:
            return  # before there is a limit
        killed, ended = way == "kill" and status == -signal.SIGKILL, way == "alarm" and status == 2
        for target in self.targets if isOldOrNew else ():
            if part(now, target) not in (part(self.tool.first, target), part(self.after, target)):
                self.find(where, target + " is neither old nor new")
        left = now.keys() - self.tool.first.keys() - self.after.keys()
        isSaid = isRemoval or any("cannot be removed" in line for line in self.tool.said)
        if left and not killed and not ended and not isSaid:
            self.find(where, "left behind " + min(left))
        if not killed:
            self.judgeEnd(where, status, output, now.keys() >= self.after.keys() and all(
                now[path] == text for path, text in self.after.items()))
        else:
            self.again(where)
            now = self.tool.files()
        self.tool.reset(now)

    def judgeEnd(self, where, status, output, isNew):
        lines = [line for line in self.tool.said if line not in self.said]
        if status not in range(4):
            self.find(where, f"ends with {status}")
        elif status == self.status and (output != self.output or not isNew):
            self.find(where, f"status {status} with other output")
        elif status < self.status:
            self.find(where, f"status {status}, not {self.status}")
        elif status != self.status and not any(line.startswith("ntl:") or "error:" in line for line in lines):
            self.find(where, f"status {status} and no reason")
        elif any(word in line for line in lines for word in UNCLEAR):
            self.find(where, "an unclear reason")
        elif verbose and status != self.status:
            print(f"    {where}: {status}: {' | '.join(lines)}")

    def again(self, where):
        """The next run after a kill."""
        self.tool.start(self.arguments)
        status, _ = self.tool.end()
        now = self.tool.files()
        if status != self.status or any(part(now, target) != part(self.after, target) for target in self.targets):
            self.find(where, f"the next run ends with {status}")

    def special(self):
        """Places that cannot be written."""
        if self.output:
            self.tried += 2
            self.tool.start(self.arguments, output="/dev/full")
            self.judgeLost("full device", self.tool.end()[0])
            reader, writer = os.pipe()
            os.close(reader)
            self.tool.start(self.arguments, output=writer)
            self.judgeLost("closed pipe", self.tool.end()[0])
        for size in (0, 100, 1000) if self.targets or self.output else ():
            self.tried += 1
            self.tool.start(self.arguments, limits=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size)))
            status, output = self.tool.end()
            self.judge(f"files of {size} bytes at most", status, output)

    def judgeLost(self, where, status):
        """Of output that nobody gets."""
        self.judge(where, status, self.output)
        if status != 2:
            self.find(where, f"ends with {status}, not 2")

    def readOnly(self, before):
        folders = {os.path.join(self.tool.place, os.path.dirname(target)) for target in self.targets}
        folders = [folder for folder in folders if os.path.isdir(folder)] or [self.tool.place + "/out"]
        for folder in folders:
            os.chmod(folder, 0o555)
        for target in part(self.tool.first, self.targets[0]):
            os.chmod(os.path.join(self.tool.place, target), 0o777)
        self.tried += 1
        self.tool.start(self.arguments, before=before)
        status, output = self.tool.end()
        for folder in folders:
            os.chmod(folder, 0o755)
        self.judge("read-only folder", status, output)
        if status != 2:
            self.find("read-only folder", f"ends with {status}, not 2")

    def killAtRandom(self, count, dice):
        begin = time.monotonic()
        self.again("no kill")
        self.tool.reset(self.tool.files())
        usual = time.monotonic() - begin
        for _ in range(count):
            self.tried += 1
            self.tool.start(self.arguments)
            moment = dice.uniform(0, usual)
            time.sleep(moment)
            self.tool.process.kill()
            status, output = self.tool.end()
            self.killed += status == -signal.SIGKILL
            self.judge(f"killed after {moment * 1000:.1f} ms", status, output, "kill")


def unprivileged(tool):
    """What is put before a command so that modes of folders count; None when that is not possible."""
    if os.getuid() != 0:
        return []
    before = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
    try:
        works = subprocess.run([*before, tool.ntl, "--version"], stdout=subprocess.DEVNULL, check=False).returncode == 0
    except FileNotFoundError:
        works = False
    return before if works else None


def sweep(arguments, scratch):
    tool = Tool(arguments, scratch)
    commands = [Command(tool, *one) for one in COMMANDS if arguments.only in (None, one[0])]
    before = unprivileged(tool)
    for command in commands:
        command.special()
        if command.targets and before is not None:
            command.readOnly(before)
    dice = random.Random(19)
    killed = [command for command in commands if command.name in KILLED]
    for command in killed:
        command.killAtRandom(arguments.kills // len(killed), dice)
    tries = [(command, one) for command in commands for one in command.tries()]
    begin = time.monotonic()
    some = tries[::len(tries) // 50 + 1]
    for command, one in some:
        command.attempt(*one)
    each = (time.monotonic() - begin) / len(some)
    stride = max(1, round(len(tries) * each / arguments.seconds)) if arguments.seconds else 1
    for command, one in tries[arguments.seed % stride::stride]:
        command.attempt(*one)
    for command in commands:
        calls = len({one[0] for other, one in tries if other is command})
        print(f"{command.name}: {calls} calls, {command.tried} runs, {len(command.findings)} findings")
        for finding in command.findings:
            print("  " + finding)
    print(f"every {stride}th of {len(tries)} tries; {sum(command.killed for command in killed)} killed at random; "
          f"{'read-only folders too' if before is not None else 'no read-only folders: cannot become unprivileged'}")
    return any(command.findings for command in commands)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("ntl", type=os.path.abspath)
    parser.add_argument("shim", type=os.path.abspath)
    parser.add_argument("source", type=os.path.abspath)
    parser.add_argument("--seconds", type=float, default=0)
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("--seed", type=int, default=0)
    parser.add_argument("--only")
    parser.add_argument("--verbose", action="store_true")
    arguments = parser.parse_args()
    global verbose
    verbose = arguments.verbose
    with tempfile.TemporaryDirectory(prefix="ntl-io-") as scratch:
        return int(sweep(arguments, scratch))


if __name__ == "__main__":
    sys.exit(main())
