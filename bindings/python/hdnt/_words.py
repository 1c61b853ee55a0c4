"""The words that fields of a fixed set answer with, as types."""
from typing import Literal

PinType = Literal["data", "clear", "clock", "enable", "mixed", "preset", "reset", "set", "setreset", "writeEnable"]
Direction = Literal["input", "output", "bidir", "internal"]
Required = Literal["active", "mustConnect", "tieLow", "tieHigh", "tieSpecial", "untie"]
Maturity = Literal["early", "beta", "production", "deprecated"]
ValueType = Literal["bool", "int", "double", "string", "bithex", "bitbinary"]
Section = Literal["mapsto", "expandsto", "modifiedby", "retargetsto"]
Operator = Literal["+", "-", "*", "/", "%", "&&", "||", "!", ">", "<", "<=", ">=", "!=", "=="]

Severity = Literal["error", "warning", "note"]
Code = Literal["error", "syntax-error", "parser-depth", "unrecognized-character", "long-identifier", "empty-name",
               "invalid-name", "array-name", "invalid-array-name", "range-elements", "pin-bit", "pin-count",
               "pin-redefined", "property-redefined", "block-redefined", "tie-of-output", "default-not-in-list",
               "default-not-in-range", "bit-width", "precision", "connect-without-signal", "invalid-operands",
               "function-missing", "function-argument-count", "function-argument-type", "cannot-open",
               "missing-libraries", "block-without-pins", "invalid-netlist-entity", "string-unterminated",
               "comment-unterminated", "folder-entry", "configuration", "refused", "too-many-diagnostics",
               "missing-token", "unexpected-token", "misspelt-word", "wrong-token", "wrong-order", "number-form", "trailing-comma", "unclosed-brace",
               "stray-brace", "nested-too-deep", "outside-language", "carriage-return", "byte-order-mark",
               "typographic-quote", "open-string", "open-comment", "open-file-statement", "long-word",
               "unreadable-verilog", "missing-model", "extra-module", "missing-port", "extra-port", "port-direction",
               "port-width", "port-range", "missing-parameter", "extra-parameter", "parameter-type", "parameter-width",
               "parameter-default",
               "include-skipped", "include-not-found", "include-not-opened", "include-text", "unterminated-string",
               "unterminated-comment", "dropped-mapping", "map-library-refused", "include-trailing-text",
               "number-overflow", "repeated-option", "ignored-option", "function-redeclared", "mapping-replaced",
               "statement-dropped", "inversion-dropped", "default-outside", "min-above-max", "text-too-wide",
               "bit-text-form", "needless-bound", "pin-lower-case", "pin-property-case", "similar-names",
               "unregistered-block", "no-group", "no-description", "similar-group", "unknown-block", "unknown-instance",
               "unknown-pin", "unknown-property", "property-type", "value-refused", "duplicate-instance",
               "duplicate-signal", "pin-on-two-signals", "width-mismatch", "opposite-order", "lower-maturity",
               "deprecated-block", "test-block", "other-architecture", "broken-map-library", "mapping-problem",
               "two-drivers", "undriven-signal", "single-pin-signal", "open-input", "undriven-output", "unused-input",
               "branch-never-taken", "condition-always-true", "property-without-effect", "mapping-circle",
               "config-unknown-key", "config-wrong-type", "config-unknown-cell", "config-unknown-pin",
               "config-unknown-property", "config-unknown-architecture", "config-unknown-function",
               "config-unknown-pin-type", "config-no-effect", "waiver-form", "waiver-expired", "waiver-unused"]

Effect = Literal["breaking", "compatible", "text only"]
Change = Literal["added", "removed", "changed"]
Element = Literal["library", "function", "block", "pin", "property", "mapping", "pre call", "instance", "signal",
                  "connect", "pin assign", "block assign", "if", "branch", "statements", "call", "expression"]
Facet = Literal["whole", "order", "name", "type", "formals", "test", "internal", "maturity", "group", "subgroup",
                "legacy group", "legacy subgroup", "direction", "range", "required value", "abstract", "width",
                "minimum", "maximum", "values", "default", "precision", "units", "simulation", "constraints only",
                "mux control", "description", "section", "pins", "value", "arguments", "condition", "disabled"]
