#!/usr/bin/python3
"""Measures the Python package beside the json module, on the same content, and the Tcl package beside both.

    cmake --preset bench && cmake --build --preset bench
    bench/scripting.py [ROUNDS]

A round runs each side once, in a process of its own, in turn; ratios are taken inside a round, and what is printed is the
median with the smallest and the largest. The exit status is 1 when a target is missed; Tcl has none.
"""
import json
import os
import shutil
import statistics
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(ROOT, "build", "bench")
CORPUS = os.path.join(BUILD, "bench", "corpus", "10.")


def of_json():
    begin = time.perf_counter()
    with open(CORPUS + "json", encoding="utf-8") as file:
        library = json.load(file)
    loaded = time.perf_counter()
    count = 0
    for block in library["blocks"]:
        count += len(block["name"]) > 0
        for pin in block["pins"]:
            count += bool(pin["name"] and pin["direction"])
            pin.get("range"), pin.get("type")
        for one in block.get("properties", ()):
            one["name"], one["type"], one["default"]
            count += 1
    return {"load": loaded - begin, "walk": time.perf_counter() - loaded, "count": count}


def of_package():
    import hdnt
    begin = time.perf_counter()
    library = hdnt.load(CORPUS + "btl")
    loaded = time.perf_counter()
    count = 0
    for block in library.blocks:
        count += len(block.name) > 0
        for pin in block.buses:
            count += bool(pin.base_name and pin.direction)
            pin.range, pin.type
        for one in block.properties:
            one.name, one.type, one.default
            count += 1
    walked = time.perf_counter()
    bulk = 0
    for block in library.blocks:
        bulk += len(block.name) > 0
        for name, _, direction, _, _ in block.bus_tuples():
            bulk += bool(name and direction)
        for _ in block.property_dict().items():
            bulk += 1
    in_bulk = time.perf_counter()
    return {"load": loaded - begin, "walk": walked - loaded, "bulk": in_bulk - walked, "count": count, "bulk count": bulk}


def measure(side):
    packages = [os.path.join(BUILD, "lib", name) for name in os.listdir(os.path.join(BUILD, "lib"))
                if name.startswith("python")]
    environment = {**os.environ, "PYTHONPATH": ":".join(os.path.join(one, "dist-packages") for one in packages)}
    done = subprocess.run(["/usr/bin/python3", os.path.abspath(__file__), side], check=True, stdout=subprocess.PIPE,
                          env=environment)
    return json.loads(done.stdout)


def measure_tcl():
    """None without the package or an interpreter."""
    tcl = shutil.which("tclsh8.6")
    if not tcl or not os.path.isdir(os.path.join(BUILD, "lib", "tcltk")):
        return None
    environment = {**os.environ, "TCLLIBPATH": os.path.join(BUILD, "lib", "tcltk")}
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scripting.tcl")
    done = subprocess.run([tcl, script, CORPUS + "btl"], check=True, stdout=subprocess.PIPE, env=environment)
    return json.loads(done.stdout)


def print_tcl(rounds, expected):
    if any({one["count"], one["bulk count"]} != {expected} for one in rounds):
        sys.exit("bench/scripting.py: the walks of Tcl do not see the same")
    for name in ("load", "walk", "bulk", "close"):
        print("%-36s %.0f ms" % ("Tcl: " + name, 1e3 * statistics.median(one[name] for one in rounds)))


def main():
    if sys.argv[1:2] in (["json"], ["package"]):
        print(json.dumps(of_json() if sys.argv[1] == "json" else of_package()))
        return 0
    rounds, of_tcl = [], []
    for _ in range(int(sys.argv[1]) if len(sys.argv) > 1 else 7):
        rounds.append((measure("package"), measure("json")))
        of_tcl.append(measure_tcl())
    if any(len({ours["count"], ours["bulk count"], theirs["count"]}) != 1 for ours, theirs in rounds):
        sys.exit("bench/scripting.py: the walks do not see the same")
    targets = [("load and walk / json.load and walk", 1.0,
                lambda ours, theirs: (ours["load"] + ours["walk"]) / (theirs["load"] + theirs["walk"])),
               ("bulk walk / walk over dicts", 2.0, lambda ours, theirs: ours["bulk"] / theirs["walk"])]
    missed = False
    for name, limit, ratio in targets:
        ratios = [ratio(*one) for one in rounds]
        missed |= statistics.median(ratios) > limit
        print("%-36s %.2f   %.2f to %.2f   must be <= %.1f" % (name, statistics.median(ratios), min(ratios),
                                                               max(ratios), limit))
    for name in ("load", "walk", "bulk"):
        print("%-36s %.0f ms" % (name, 1e3 * statistics.median(ours[name] for ours, _ in rounds)), end="")
        print("   json %.0f ms" % (1e3 * statistics.median(theirs[name] for _, theirs in rounds)) if name != "bulk" else "")
    if None not in of_tcl:
        print_tcl(of_tcl, rounds[0][0]["count"])
    return int(missed)


if __name__ == "__main__":
    sys.exit(main())
