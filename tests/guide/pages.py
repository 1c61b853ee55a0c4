#!/usr/bin/env python3
"""Reads the pages of guides back: HTML without a fault, links that lead somewhere, and what the model says.

    pages.py NTL
"""
import json
import os
import re
import subprocess
import sys
import tempfile
import urllib.parse

try:
    import html5lib
except ImportError:
    print("no html5lib")
    sys.exit(77)

NTL = sys.argv[1]
HTML = "{http://www.w3.org/1999/xhtml}"
SVG = "{http://www.w3.org/2000/svg}"
PIN_COLUMNS = ["name", "range", "width", "direction", "type"]

# Names that a careless writer would let out of their places. \xe9 is no UTF-8.
HOSTILE_NAMES = [b"<script>alert(1)</script>", b"..", b"CON", b"con.b", b"A&B 'C'", b"caf\xe9", b"a/../../b", b"A_" + b"B" * 200,
                 b"same", b"_same", b"x#y?z%41", b"{{name}}", b"]]>"]
HOSTILE = b'library "odd & <b>" {\n' + b"".join(b"""  block "%s" {
    primgroup = "G<i>:H&amp;";
    pin "A[3:0]" input data tieLow;
    pin "C<K" input clock active;
    pin "O" output data;
    property string "P\\<u>" { values { "<b>", "x\\ty" }, default = "<b>" }
    property 4'h "Q" { default = 4'hA }
  }
""" % name for name in HOSTILE_NAMES) + b"}\n"


def guide(folder, *options):
    subprocess.run([NTL, "guide", folder, *options], check=True, stdout=subprocess.DEVNULL)


def pages_of(folder):
    """Every page by its name below the folder, as a tree; a fault of its HTML ends the test."""
    pages = {}
    for directory, _, names in os.walk(folder):
        for name in names:
            if not name.endswith(".html"):
                continue
            path = os.path.join(directory, name)
            with open(path, "rb") as file:
                parser = html5lib.HTMLParser(tree=html5lib.getTreeBuilder("etree"))
                tree = parser.parse(file.read(), transport_encoding="utf-8")
            assert not parser.errors, (path, parser.errors[:3])
            pages[os.path.relpath(path, folder)] = tree
    return pages


def texts(element):
    return "".join(element.itertext())


def check_links(folder, pages):
    ids = {}
    for name, tree in pages.items():
        found = [one.get("id") for one in tree.iter() if one.get("id")]
        assert len(found) == len(set(found)), (name, sorted(one for one in found if found.count(one) > 1))
        ids[name] = set(found)
    seen = 0
    for name, tree in pages.items():
        for element in tree.iter():
            for address in (element.get("href"), element.get("src")):
                if address is None:
                    continue
                seen += 1
                assert not urllib.parse.urlsplit(address).scheme, (name, address)
                path, _, anchor = address.partition("#")
                target = os.path.normpath(os.path.join(os.path.dirname(name), urllib.parse.unquote(path))) if path else name
                assert os.path.isfile(os.path.join(folder, target)), (name, address)
                if anchor:
                    assert urllib.parse.unquote(anchor) in ids[target], (name, address)
            for label in (element.get("aria-labelledby") or "").split():
                assert label in ids[name], (name, label)
    assert seen > 100, seen


def check_file_names(folder):
    names = [os.path.relpath(os.path.join(d, n), folder) for d, _, files in os.walk(folder) for n in files]
    assert len({name.lower() for name in names}) == len(names)
    assert all(re.fullmatch(r"[A-Za-z0-9_./-]{1,110}", name) for name in names), names
    stems = {os.path.basename(name).split(".")[0].upper() for name in names}
    assert not stems & {"CON", "PRN", "AUX", "NUL", ""}


def rows_of(tree, table):
    for element in tree.iter(HTML + "table"):
        if element.get("id") == table:
            return [[texts(cell).strip() for cell in row] for row in element.find(HTML + "tbody")]
    return []


def shown(value):
    if value is None:
        return ""
    return value if isinstance(value, str) else json.dumps(value)


def range_of(bus):
    return "[%d:%d]" % tuple(bus["range"]) if bus["range"] else ""


def check_pins(block, tree):
    rows = rows_of(tree, "table-of-pins")
    expected = [[bus["baseName"], range_of(bus), str(bus["width"]), bus["direction"]] for bus in block["buses"]]
    assert [row[:4] for row in rows] == expected, (block["name"], rows)
    assert all(row[4].startswith(bus["type"]) for row, bus in zip(rows, block["buses"])), rows
    assert [row[6] for row in rows] == [shown(bus["function"]) for bus in block["buses"]], rows


def check_properties(block, tree):
    rows = rows_of(tree, "table-of-properties")
    of_pins = [one for bus in block["buses"] for one in bus["properties"]]
    properties = block["properties"] + of_pins
    assert len(rows) == len(properties), (block["name"], rows)
    for row, one in zip(rows, properties):
        assert row[0].split(" ")[0] == one["name"].split(" ")[0] and row[1].split(",")[0] == one["type"], (block["name"], row)
        assert row[3].split(" ")[0] == shown(one["values"][0]).split(" ")[0] if one["values"] else row[3], row
        quote = '"' if one["type"] == "string" else ""
        if one["default"] is not None:
            assert row[4] == quote + shown(one["default"]) + quote, (block["name"], row)
        assert row[5] == shown(one["units"]) and row[6].startswith(shown(one["description"])), (block["name"], row)


def check_facts(block, tree):
    page = texts(tree)
    for label, key in (("Group", "group"), ("Earlier group", "legacyGroup"), ("Maturity", "maturity"),
                       ("Pin of the master driver", "masterDriverPin"), ("Shadow pins", "shadowPins")):
        assert (label in page) == bool(block[key]), (block["name"], label)
        for value in block[key] if isinstance(block[key], list) else [block[key] or ""]:
            assert value in page, (block["name"], label, value)


def check_symbol(block, tree):
    """Each pin once, inputs on the left, in the directions and with the ties of the model."""
    symbol = next(one for one in tree.iter(SVG + "svg") if one.get("class") == "symbol")
    box = next(one for one in symbol.iter(SVG + "rect"))
    left, right = float(box.get("x")), float(box.get("x")) + float(box.get("width"))
    title = next(one for one in symbol.iter(SVG + "text") if one.get("class") == "title")
    assert abs(float(title.get("x")) - (left + right) / 2) < 1, block["name"]
    drawn = {}
    for group in symbol.iter(SVG + "g"):
        drawn[group.get("data-pin")] = group
    assert len(drawn) == len(block["buses"]) == len(list(symbol.iter(SVG + "g"))), block["name"]
    ties = {"tieLow": "0", "tieHigh": "1"}
    rows = set()
    for bus in block["buses"]:
        group = drawn[bus["name"]]
        assert group.get("data-direction") == bus["direction"]
        line = next(group.iter(SVG + "line"))
        x, y = float(line.get("x2")), float(line.get("y2"))
        assert x < left if bus["direction"] == "input" else x > right, (block["name"], bus["name"])
        assert (x < left, y) not in rows, (block["name"], bus["name"])
        rows.add((x < left, y))
        assert ("bus" in line.get("class").split()) == (bus["range"] is not None)
        labels = [one.text for one in group.iter(SVG + "text")]
        assert labels[0] == bus["baseName"] + range_of(bus), labels
        assert labels[1:] == ([ties[bus["required"]]] if bus["required"] in ties else labels[1:]), labels
        wedges = [one for one in group.iter(SVG + "polyline") if one.get("class") == "wedge"]
        assert len(wedges) == (1 if bus["type"] == "clock" else 0), (block["name"], bus["name"])


def check_legend(tree):
    """The pin of each sample leads out of the middle of an edge."""
    samples = [one for one in tree.iter(SVG + "svg") if one.get("class") == "symbol"]
    assert samples
    for edge, stub in (list(one.iter(SVG + "line")) for one in samples):
        assert float(stub.get("y1")) == float(stub.get("y2")) == float(edge.get("y2")) / 2


def check_graph(tree):
    """As many lines as the table beside it has, and each leads to the right: no shipped mapping leads in a circle."""
    graph = next(one for one in tree.iter(SVG + "svg") if one.get("class") == "graph")
    lines = [re.findall(r"[\d.]+", one.get("d")) for one in graph.iter(SVG + "path") if one.get("class") == "edge"]
    assert lines and all(float(line[0]) < float(line[-2]) for line in lines), lines
    rows = next(one for one in tree.iter(HTML + "table") if one.get("id") == "mappings").find(HTML + "tbody")
    assert len(lines) == sum(len(list(row[1].iter(HTML + "a"))) for row in rows)


def check_model(folder, pages, *library):
    listed = json.loads(subprocess.run([NTL, "list", "--json", *library], check=True, capture_output=True).stdout)
    names = [block["name"] for block in listed["blocks"]]
    sheets = json.loads(subprocess.run([NTL, "show", "--json", *library, *names], check=True, capture_output=True).stdout)
    of_blocks = {texts(next(tree.iter(HTML + "h1"))): tree for name, tree in pages.items() if name.startswith("blocks/")}
    assert sorted(of_blocks) == sorted(names)
    for block in sheets["blocks"]:
        tree = of_blocks[block["name"]]
        check_facts(block, tree)
        check_pins(block, tree)
        check_properties(block, tree)
        check_symbol(block, tree)
        assert block["netlist"] is None or any(one.get("id") == "mapping" for one in tree.iter()), block["name"]
    assert sorted(row[0] for row in rows_of(pages["blocks.html"], "all-blocks")) == sorted(names)


def bytes_of(folder):
    result = {}
    for directory, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(directory, name)
            with open(path, "rb") as file:
                result[os.path.relpath(path, folder)] = file.read()
    return result


def check_hostile(folder, library):
    with open(library, "wb") as file:
        file.write(HOSTILE)
    guide(folder, "-l", library)
    pages = pages_of(folder)
    check_links(folder, pages)
    check_file_names(folder)
    assert len([name for name in pages if name.startswith("blocks/")]) == len(HOSTILE_NAMES)
    headings = {texts(next(tree.iter(HTML + "h1"))) for tree in pages.values()}
    for name in HOSTILE_NAMES:
        assert name.replace(b"\xe9", b"\\xe9").decode() in headings, name
    for name, tree in pages.items():
        scripts = [one.get("src") for one in tree.iter(HTML + "script")]
        assert [os.path.basename(one) for one in scripts] == ["guide.js"], (name, scripts)


def main():
    with tempfile.TemporaryDirectory() as top:
        common = os.path.join(top, "common")
        guide(common)
        pages = pages_of(common)
        check_links(common, pages)
        check_file_names(common)
        check_model(common, pages)
        check_legend(pages["index.html"])
        check_graph(pages["mappings.html"])
        before = bytes_of(common)
        guide(common)
        assert bytes_of(common) == before
        check_hostile(os.path.join(top, "odd"), os.path.join(top, "odd.btl"))


main()
