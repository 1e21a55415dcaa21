#!/usr/bin/env python3
"""Makes the manual page of a program from what it answers to --help and from a file of sections:
    make_man_page.py PROGRAM SECTIONS VERSION PAGE
The file of sections: "== TITLE" begins one, indented lines are printed as they are, "@help" stands for
the answer's commands and options, "@examples FILE" for the examples of a page of docs/."""
import os
import pathlib
import re
import subprocess
import sys

HELP_COLUMN = 40  # where the tools' help puts what a command or option does


def plain(text):
    """Text that troff prints as it stands."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text[:1] in (".", "'") else text


def entry(line):
    """(indent, what is typed, what it does) of a line of help; nothing for other lines."""
    body = line.lstrip(" ")
    indent = len(line) - len(body)
    if indent == 0 or not body:
        return None
    if indent >= HELP_COLUMN:
        return indent, "", body
    parts = re.split(r" {2,}", body, maxsplit=1)
    if len(parts) == 1 and line[HELP_COLUMN - 1:HELP_COLUMN] == " ":
        parts = [line[:HELP_COLUMN].strip(), line[HELP_COLUMN:]]  # what is typed fills its column
    return indent, parts[0], parts[1] if len(parts) > 1 else ""


def help_lines(answer):
    """Commands and options as tagged paragraphs, the options of a command set in below it."""
    lines, level = [], None
    for line in answer.splitlines():
        found = entry(line)
        if found is None:
            if level:
                lines += [".RE"] * (level > 2)
                level = None
            lines += [".PP"] if not line else [plain(line), ".br"]
            continue
        indent, typed, does = found
        if not typed:
            lines.append(plain(does))
            continue
        if level is not None and (indent > 2) != (level > 2):
            lines.append(".RS" if indent > 2 else ".RE")
        elif level is None and indent > 2:
            lines.append(".RS")
        level = indent
        lines += [".TP", ".B " + plain(typed), plain(does)]
    return lines + [".RE"] * (level is not None and level > 2)


def examples(page):
    text = re.search(r"## Examples\n+```\n(.*?)```", page.read_text(), re.S)[1]
    return [".nf", *map(plain, text.splitlines()), ".fi"]


def main():
    program, sections, version, page = sys.argv[1:]
    answer = subprocess.run([program, "--help"], check=True, capture_output=True, text=True,
                            env={**os.environ, "TMW_FRONT_END": "terminal"}).stdout
    name = pathlib.Path(program).stem
    lines = [f'.TH {name.upper()} 1 "" "TmWebUpdate {version}"']
    is_verbatim = False
    for line in pathlib.Path(sections).read_text().splitlines():
        if is_verbatim != line.startswith("    "):
            is_verbatim = not is_verbatim
            lines.append(".nf" if is_verbatim else ".fi")
        if line.startswith("== "):
            lines.append(".SH " + line[3:])
        elif line == "@help":
            # Its first paragraph is what the page's own sections say.
            lines += help_lines(answer.partition("\n\n")[2])
        elif line.startswith("@examples "):
            lines += examples(pathlib.Path(sections).parent.parent / line.split()[1])
        else:
            lines.append(plain(line) if line else ".PP")
    pathlib.Path(page).write_text("\n".join(lines) + "\n")


main()
