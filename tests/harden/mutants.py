"""Finds what can be changed in a source text by one operator, constant, condition or statement."""
import collections
import io
import re
import tokenize

Mutant = collections.namedtuple("Mutant", "path line old new")  # the texts are whole lines; the first line is 1

_OPERATORS = {" == ": " != ", " != ": " == ", " < ": " <= ", " > ": " >= ", " <= ": " < ", " >= ": " > ",
              " && ": " || ", " || ": " && ", " + ": " - ", " - ": " + ", " += ": " -= ", " -= ": " += ",
              "++": "--", " % ": " / ", " >> ": " << ", " << ": " >> ", " & ": " | ", " | ": " & "}
_SWAPS = {
    "cpp": {**_OPERATORS, "true": "false", "false": "true", "break;": ";", "continue;": ";", "nullptr": None},
    "py": {**_OPERATORS, " and ": " or ", " or ": " and ", " is not ": " is ", " is ": " is not ", " not in ": " in ",
           " in ": None, "True": "False", "False": "True", "continue": "pass", "break": "pass"},
    "tcl": {**_OPERATORS, " eq ": " ne ", " ne ": " eq ", "++": None},
}
_SKIPPED = {"cpp": r"\s*(#|static_assert|using |template|namespace|friend |public:|private:|protected:)",
            "py": r"\s*(import |from |@|def |class )", "tcl": r"\s*(package |namespace |proc )"}
_STATEMENT = {
    "cpp": r"(\s+)(?!return\b|throw\b|case\b|default\b|delete\b|auto\b|const\b|else\b|using\b|goto\b|co_)"
           r"[a-z_]\w*(::\w+)*([.(\[]|->|\+\+;|--;| [-+*|&]?= )[^{}]*;$",
    "py": r"(\s+)[a-z_][\w.\[\]\"']*(\(| [-+]?= ).*[)\w\]]$",
    "tcl": r"(\s+)(set|lappend|incr|append) [^{}]*$",
}
_CONDITION = {"cpp": r"\b(if|while) (\()", "py": r"\b(if|elif|while) ()", "tcl": r"\b(if|while) (\{)"}


def read_judged(path):
    """The lines of a list of what was judged one by one; the lines that begin with a blank say why."""
    with open(path, encoding="utf-8") as file:
        return {line for line in file.read().splitlines() if line and not line.startswith(("#", " "))}


def kind_of(path):
    return {"cpp": "cpp", "h": "cpp", "py": "py", "tcl": "tcl"}.get(path.rpartition(".")[2])


def _blank(match):
    return re.sub(r"[^\n]", "\0", match[0])


def _code_of(text, kind):
    """The text with comments and strings blanked out, of the same shape."""
    if kind == "cpp":
        return re.sub(r'R"(\w*)\(.*?\)\1"|"(\\.|[^"\\\n])*"|\'(\\.|[^\'\\\n])+\'|//[^\n]*|/\*.*?\*/', _blank, text,
                      flags=re.DOTALL)
    if kind == "tcl":
        return re.sub(r'^\s*#[^\n]*|"(\\.|[^"\\\n])*"', _blank, text, flags=re.MULTILINE)
    lines = text.splitlines(keepends=True)
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        if token.type in (tokenize.STRING, tokenize.COMMENT):
            for row in range(token.start[0], token.end[0] + 1):
                line = lines[row - 1]
                first = token.start[1] if row == token.start[0] else 0
                last = token.end[1] if row == token.end[0] else len(line.rstrip("\n"))
                lines[row - 1] = line[:first] + "\0" * (last - first) + line[last:]
    return "".join(lines)


def _closing(code, start):
    depth = 0
    for place in range(start, len(code)):
        depth += (code[place] in "({[") - (code[place] in ")}]")
        if depth == 0:
            return place
    return -1


def _negated(line, code, kind):
    for match in re.finditer(_CONDITION[kind], code):
        start = match.end()
        end = code.rfind(":") if kind == "py" else _closing(code, match.start(2))
        if end <= start or (kind == "cpp" and re.search(r";|[\w>&*] [&*]*\w+ = ", code[start:end])):
            continue  # of several lines, or a declaration
        inner = line[start:end]
        yield line[:start] + (f"not ({inner})" if kind == "py" else f"!({inner})") + line[end:]


def _changes(line, code, kind):
    """The line, changed once in every way. `code` is the line with \0 for what is no code."""
    if re.match(_SKIPPED[kind], code) or "operator" in code:
        return
    text = '"' in line  # texts are put together, never subtracted
    for old, new in _SWAPS[kind].items():
        if text and old in (" + ", " += "):
            continue
        for match in re.finditer(rf"\b{old}\b" if old.isalnum() else re.escape(old), code) if new is not None else ():
            yield line[:match.start()] + new + line[match.end():]
    for match in re.finditer(r"(?<![\w.\"$])(\d+)(?![\w.\"])", code):
        yield line[:match.start()] + str(int(match[1]) + 1) + line[match.end():]
    if kind == "cpp":
        for match in re.finditer(r"(?<![\w)\]])!(?=[\w(:*])", code):
            yield line[:match.start()] + line[match.end():]
    yield from _negated(line, code, kind)
    statement = re.match(_STATEMENT[kind], code)
    if statement and _closing("(" + code + ")", 0) == len(code) + 1:
        yield statement[1] + {"cpp": ";", "py": "pass", "tcl": "list"}[kind]


def mutants_of(path, text):
    kind = kind_of(path)
    lines, codes = text.split("\n"), _code_of(text, kind).split("\n")
    for number, (line, code) in enumerate(zip(lines, codes), 1):
        for new in _changes(line, code, kind):
            yield Mutant(path, number, line, new)
