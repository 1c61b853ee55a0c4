#!/usr/bin/env python3
"""Holds `ntl compare-models` and `ntl import verilog` against what `ntl export verilog` writes, and against a model with
a body, whole and with one thing changed at a time.

    models.py NTL models
"""
import json
import os
import shutil

import export
from export import NTL, run, written

LIBRARY = """library "small" {
  block "QUEUE" {
    pin "CLOCK" input; pin "D[7:0]" input; pin "Q[0:7]" output; pin "WIRE" bidir; pin "SENSE" bidir abstract;
    pin "DEEP" internal;
    property 16'h "START" { default = 16'h00AB } property int "DEPTH" { default = 8 } property int "SHIFT" { default = -3 }
    property bool "FAST" { default = true } property double "DELAY" { default = 0.123456789012 }
    property string "MODE" { default = "SLOW" } property string "MARK" { default = "0101" }
    property 8'b "CODE" { default = 8'b01000001 }
  }
  block "OTHER" { pin "A" input; property int "A" { default = 1 } property int "MUST" { min = 1, max = 2 } }
}
"""
MODEL = """`timescale 1ns / 1ps
`begin_keywords "1364-2005"
`define BITS(n) (n)-1:0 // a comment; parameter NONE = 1;
primitive invert(o, i); output o; input i; table 0 : 1; 1 : 0; endtable endprimitive
module QUEUE (CLOCK, D, Q, WIRE, SENSE);
  parameter real DELAY = 0.123_456_789_012;
  parameter [15:0] START = 'hAB;
  parameter integer DEPTH = 4 * 2;
  parameter signed [31:0] SHIFT = -3;
  parameter FAST = 1'b1, MARK = "0101";
  parameter [8*4:1] MODE = "SLOW";
  parameter [7:0] CODE = 8'd65;
  localparam WIDTH = log2(200), HALF = WIDTH / 2;
  localparam HARD = $realtobits(DELAY);
  input CLOCK;
  input [`BITS(WIDTH)] D;
  output reg [0:7] Q;
  inout tri1 WIRE;
  inout SENSE;
`ifdef NEVER
  input NEVER; initial begin
`else
  real last; event go; initial begin : named
`endif
    last = $realtime; wait (CLOCK); fork #1; join -> go; force WIRE = 1; $finish; disable fork;
    begin : inner parameter INNER = 3; "endmodule"; end
  end
  function integer log2; input integer v; begin for (log2 = 0; v > 0; log2 = log2 + 1) v = v >> 1; end endfunction
  function real hard; input v; hard = last; endfunction
  task step; input v; output w; #1 w = v; endtask
  specify (CLOCK => Q) = (1.0, 2.0); $setup(D, posedge CLOCK, 1); endspecify
  always @(posedge CLOCK) Q <= #(DELAY) D;
  invert i(a, b); defparam i.x = 1;
endmodule
"""
ODD_MODULES = """module M(input a, input [40000:39999] b, input [1:-1] c, input \\d.e , input \\$f , input \\1g , input \\é );
  parameter low = 1, LOW = 2, TEXT = "a \\" b", OPEN = 4'b1x01, KEPT = 70'h2_0000_0000_0000_0001, SUM = 1.0 / 3;
  parameter NONE = "", NOT_ASCII = "é~", BLANK = "01 ";
endmodule
module m(input a); endmodule
module EMPTY; endmodule
module WIDE(input [32767:0] a, input [32767:0] b, input c); endmodule
module BRANCH(input a); localparam L
`ifdef NEVER
  = 1; endmodule
`elsif EVER
  = 2; endmodule
`else
  = 3; endmodule
`endif
"""
ODD_REFUSALS = """M: b: bits above 32767
M: c: bits below 0
M: d.e: names of NTL are letters, digits and _
M: $f: names of NTL are letters, digits and _
M: é: names of NTL are letters, digits and _
M: LOW: a parameter of that name is there before, case aside
M: TEXT: its default has a character that no text of NTL has
M: OPEN: its default has bits that are no number
m: a module of that name is there before, case aside
EMPTY: a block has a pin at least
WIDE: c: more than 65536 pins"""

SYSTEM = """module OTHER #(parameter int DEPTH = 8, parameter bit FAST = 1'b1, parameter logic [7:0] INIT = 8'h3C)
  (input logic CLOCK, input wire logic [7:0] D, output var logic [7:0] Q);
  typedef enum logic [1:0] {ONE, TWO} state_t;
  class Inner; function void set(input int a); endfunction endclass
  property steady; @(posedge CLOCK) D |-> Q; endproperty
  assert property (steady);
  import "DPI-C" function int outside(input int a);
  clocking ticks @(posedge CLOCK); input D; endclocking
  always_ff @(posedge CLOCK) unique case (D) 1: Q <= D; default: ; endcase
  parameter BIG = 64'd5;
endmodule : OTHER
module DEFERRED #(parameter int DEPTH) (input A);
endmodule
"""
SYSTEM_AS_NTL = """    pin "CLOCK"  input;
    pin "D[7:0]" input;
    pin "Q[7:0]" output;
    property int "DEPTH" { default = 8 }
    property bool "FAST" { default = true }
    property 8'h "INIT" { default = 8'h3C }
    property 64'h "BIG" { default = 64'h0000000000000005 }
  }
}
"""

# What is changed in the model, and the codes, some with a part of the message, of what is said at the line of the change;
# an empty one is at the module's.
CHANGES = [
    ("", "", []),
    (", WIRE, ", ", ", ["missing-port"], ("  inout tri1 WIRE;\n", "")),
    (", SENSE)", ")", [], ("  inout SENSE;\n", "")),
    ("  inout SENSE;", "  inout SENSE, EXTRA;", ["extra-port"], ("SENSE);", "SENSE, EXTRA);")),
    ("  inout SENSE;", "  inout SENSE, DEEP;", ["extra-port"], ("SENSE);", "SENSE, DEEP);")),
    ("input CLOCK;", "inout CLOCK;", ["port-direction"]),
    ("input CLOCK;", "input [3:3] CLOCK;", []),
    ("input CLOCK;", "input [3:2] CLOCK;", ["port-width: CLOCK has 2 bits, not 1"]),
    ("[`BITS(WIDTH)] D", "D", ["port-width: D has 1 bit, not 8"], None, "input D;"),
    ("[`BITS(WIDTH)] D", "[`BITS(HALF)] D", ["port-width"]),
    ("[0:7] Q", "[7:0] Q", ["port-range"]),
    ("[0:7] Q", "[1:8] Q", ["port-range"]),
    ("  parameter integer DEPTH = 4 * 2;\n", "", ["missing-parameter"]),
    ("MARK =", "MORE = 1, MARK =", ["extra-parameter"]),
    ("0.123_456_789_012", "0.123_456_789_013", ["parameter-default"]),
    ("real DELAY = 0.123_456_789_012", "integer DELAY = 1", ["parameter-type"]),
    ("real DELAY = 0.123_456_789_012", 'DELAY = "0.12"', ["parameter-type: is a text, not a real"]),
    ("real DELAY = 0.123_456_789_012", "DELAY = 1", ["parameter-default: is 1 by default, not 0.123456789012"]),
    ("real DELAY = 0.123_456_789_012", "DELAY = 0.1 + 0.023_456_789", []),
    ("real DELAY = 0.123_456_789_012", "DELAY = 0.1 + 0.03", ["parameter-default: is 0.13 "]),
    ("[15:0] START", "[16:0] START", ["parameter-width"]),
    ("'hAB", "16'b1010_1011", []),
    ("'hAB", "'hAx", ["parameter-default: is 16'b000000001010xxxx "]),
    ("'hAB", "'hAC", ["parameter-default: is 16'h00AC by default, not 16'h00AB"]),
    ("8'd65", '"A"', []),
    ("8'd65", '"B"', ["parameter-default: is \"B\" by default, not 8'b01000001"]),
    ("DEPTH = 4 * 2", "DEPTH = 4 * 3", ["parameter-default: is 12 "]),
    ("SHIFT = -3", "SHIFT = 3", ["parameter-default"]),
    ("[31:0] SHIFT", "[39:0] SHIFT", ["parameter-width"]),
    ("[31:0] SHIFT = -3", "[39:0] SHIFT = 40'hFFFFFFFD", ["parameter-default", "parameter-width: has 40 bits, not 32"]),
    ("FAST = 1'b1", "FAST = 1", []),
    ("FAST = 1'b1", "FAST = 2'b1", ["parameter-width"]),
    ("FAST = 1'b1", 'FAST = "TRUE"', ["parameter-type"]),
    ('"0101"', "4'b0101", ["parameter-type"]),
    ('"SLOW"', '"FAST"', ["parameter-default"]),
    ('"SLOW"', "32'h534C_4F57", []),
    ('"SLOW"', "32'h4641_5354", ["parameter-default"]),
    ('[8*4:1] MODE = "SLOW"', "MODE = 1.5", ["parameter-type: is a real number, not a text"]),
    ("module QUEUE", "module Queue", ["extra-module"]),
    ("input [`", "input [[`", ["unreadable-verilog"]),
    ("endmodule", "endmodule\n\0", ["unreadable-verilog"], None, "\0"),
    ("define BITS", "define OTHER", ["unreadable-verilog"], None, "D;"),
    ("1;\nendmodule\n", "1;\nendmodule", []),
    ("1;\nendmodule\n", "1;\nendmodule // the end", []),
    ("1;\nendmodule\n", "1;\nendmodule config c; design d; endconfig", []),
    ("1;\nendmodule\n", "1;\nmodule LAST; endmodule\n", ["unreadable-verilog"], None, "module LAST"),
    ('"endmodule"; end', '"\\"endmodule"; end', []),
    ("begin : inner", 'begin : inner\n`include "none.vh"\n`default_nettype none\n', []),
    ("`define BITS", "`define TOP HALF + 3\n`define BITS", [], ("[`BITS(WIDTH)] D", "[`TOP:0] D")),
    ("`timescale", "module QUEUE; endmodule\n`timescale", ["unreadable-verilog"], None, "module QUEUE (CLOCK"),
]
STATUS = {"extra-module": 0, "unreadable-verilog": 2}


def compared(*words):
    """Status, and the document."""
    outcome = run(NTL, "compare-models", "--format", "json", *words, check=False)
    return outcome.returncode, json.loads(outcome.stdout)


def said(document):
    return [(one["code"], one["location"]["line"]) for one in document["inputs"][0]["diagnostics"]]


def check_changes(folder):
    library = written(os.path.join(folder, "small.btl"), LIBRARY)
    path = os.path.join(folder, "-a b'\n$(c).v")
    for old, new, codes, *more in CHANGES:
        other, where = (more + [None, None])[:2]
        text = MODEL.replace(old, new, 1)
        text = text.replace(*other, 1) if other else text
        assert not old or text != MODEL, old
        where = where or (new.strip() if new and codes != ["missing-port"] else "module QUEUE")
        line = text[:text.index(where)].count("\n") + 1
        codes, parts = [code.split(": ")[0] for code in codes], [code.partition(": ")[2] for code in codes]
        status, document = compared("-l", library, "--", written(path, text))
        assert said(document) == [(code, line) for code in codes], (old, new, said(document), line)
        messages = [one["message"] for one in document["inputs"][0]["diagnostics"]]
        assert all(part in message for part, message in zip(parts, messages)), (old, new, messages)
        assert status == (STATUS.get(codes[0], 1) if codes else 0), (old, new, status)
        assert status or document["inputs"][0]["blockCount"] == document["modelledBlockCount"], (old, new, document)


def check_including(folder):
    library = written(os.path.join(folder, "small.btl"), LIBRARY)
    os.makedirs(os.path.join(folder, "in here"))
    written(os.path.join(folder, "in here", "wide.vh"), "parameter WIDE = 1;\n")
    model = written(os.path.join(folder, "in here", "other.v"), 'module OTHER(input A);\nparameter MUST = 3;\n`include "wide.vh"\nendmodule\n')
    status, document = compared("-l", library, "--missing", model)
    found = document["inputs"][0]["diagnostics"][0]
    assert found["code"] == "extra-parameter" and found["location"]["file"].endswith("in here/wide.vh"), found
    assert [one["message"] for one in document["inputs"][1]["diagnostics"]] == ["block QUEUE has no model"]
    assert status == 1 and (document["ownBlockCount"], document["modelledBlockCount"]) == (2, 1)
    status, document = compared("-l", library, "--no-rule", "extra-parameter", model)
    assert status == 0 and not said(document)
    deferred = written(os.path.join(folder, "other.sv"), "\nmodule OTHER #(parameter int MUST) (input A); endmodule\n")
    status, document = compared("-l", library, "--missing", deferred)
    assert status == 1 and said(document) == [("unreadable-verilog", 2)] and document["modelledBlockCount"] == 1, document
    alone = {**os.environ, "PATH": folder}
    for command in ["compare-models", model], ["import", "verilog", model]:
        outcome = export.subprocess.run([NTL, *command], env=alone, capture_output=True, check=False)
        assert outcome.returncode == 2 and outcome.stderr.startswith(b"ntl: yosys, ") and not outcome.stdout, outcome


def check_exported(folder):
    modules, again = os.path.join(folder, "all.v"), os.path.join(folder, "again.btl")
    for options, blocks in export.models(folder):
        run(NTL, "export", "verilog", "-o", modules, *options, check=False)
        without = [item["name"] for block in blocks for item in block["properties"]
                   if item["defaultRefusal"] and not any(item[flag] for flag in export.HIDDEN)]
        status, document = compared(*options, modules)
        names = {export.escaped(block["name"]) for block in blocks}
        assert document["modelledBlockCount"] == len(names), document["modelledBlockCount"]
        assert {code for code, _ in said(document)} <= {"missing-parameter"}, said(document)
        assert len(said(document)) == len(without) * len(names) // len(blocks), said(document)
        assert status == (1 if without else 0)
        taken = run(NTL, "import", "verilog", modules, "-o", again, check=False)
        run(NTL, "check", again)
        assert not run(NTL, "format", "--check", again).stdout
        if "-l" in options:
            continue
        run(NTL, "export", "verilog", "-l", again, "-o", modules)
        assert not said(compared(*options, modules)[1])
        imported = [block["name"] for block in json.loads(run(NTL, "list", "--json", "-l", again).stdout)["blocks"]]
        assert set(imported) ^ names == {"PAD_ANALOG_IN"} and b": PAD_ANALOG_IN: a block has a pin at least\n" in taken.stderr


def check_refusals(folder):
    modules = written(os.path.join(folder, "odd.v"), ODD_MODULES)
    outcome = run(NTL, "import", "verilog", modules, check=False)
    assert [line.split(": ", 2)[2] for line in outcome.stderr.decode().splitlines()] == ODD_REFUSALS.splitlines(), outcome
    assert outcome.returncode == 1
    for default in "70'h020000000000000001", "0.3333333", '""', '"é~"', '"01 "':
        assert f"default = {default} }}".encode() in outcome.stdout, default
    system = run(NTL, "import", "verilog", written(os.path.join(folder, "a.sv"), SYSTEM), check=False)
    assert system.stdout.decode().endswith('  block "OTHER" {\n' + SYSTEM_AS_NTL), system
    assert system.stderr.endswith(b"a.sv:12: DEFERRED: the ports are not known, for a parameter has no default\n"), system
    assert system.returncode == 1
    widths = b"TODO: widths follow from parameters"
    assert widths in run(NTL, "import", "verilog", written(modules, MODEL)).stdout and widths not in system.stdout
    empty = run(NTL, "import", "verilog", written(modules, "// nothing\n"), check=False)
    assert (empty.returncode, empty.stderr) == (1, f"ntl: {modules}: has no module\n".encode()), empty
    broken = run(NTL, "import", "verilog", written(modules, "module M(input a;\nendmodule"), check=False)
    assert broken.returncode == 2 and broken.stderr.startswith(f"ntl: {modules}:1: ".encode()), broken


if __name__ == "__main__":
    for action in check_changes, check_including, check_exported, check_refusals:
        export.check(not shutil.which("yosys"), action)
