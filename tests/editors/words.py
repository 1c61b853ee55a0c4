#!/usr/bin/env python3
"""Holds the words that the packages list against the keywords of the language: words.py TOKENS_PROGRAM EDITORS_DIR.

It finds words that are none any more, too, and needs no editor.
"""

import re
import subprocess
import sys

LISTS = {
    "vim/syntax/ntl.vim": r"'[A-Z]\w+': '([\w ]+)'",
    "emacs/ntl-mode.el": r"\(font-lock-[\w-]+-face((?:\s+\"\w+\")+)\)",
    "kakoune/ntl.kak": r"\|\(((?:\w+\|)+\w+)\)\(\?!",
    "vscode/syntaxes/ntl.tmLanguage.json": r"\(\?:((?:\w+\|)+\w+)\)\(\?!",
}

program, folder = sys.argv[1:]
lines = subprocess.run([program, "words"], check=True, capture_output=True, text=True).stdout.splitlines()
keywords = sorted(line for line in lines[::2] if not line.endswith(";"))  # not INCLUDE and INLINE, which are in no list
failed = len(keywords) < 60
for file, pattern in LISTS.items():
    with open(f"{folder}/{file}", encoding="utf-8") as text:
        lists = re.findall(pattern, text.read())
    words = sorted(re.findall(r"\w+", " ".join(lists)))
    if words != keywords:
        failed = True
        print(f"{file}: missing {sorted(set(keywords) - set(words))}, not of the language {sorted(set(words) - set(keywords))}, "
              f"twice {sorted({word for word in words if words.count(word) > 1})}")
sys.exit(failed)
