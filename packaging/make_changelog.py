#!/usr/bin/env python3
"""Makes a Debian changelog out of CHANGELOG.md:
    make_changelog.py CHANGELOG PACKAGE MAINTAINER OUTPUT"""
import datetime
import pathlib
import re
import sys
import textwrap

source, package, maintainer, output = sys.argv[1:]
releases = re.findall(r"^## (\S+) \((\S+)\)\n(.*?)(?=^## |\Z)", pathlib.Path(source).read_text(),
                      re.M | re.S)
if not releases:
    sys.exit(f"{source}: no line like '## 3.12.1 (2026-11-22)'")
text = ""
for version, day, changes in releases:
    date = datetime.date.fromisoformat(day).strftime("%a, %d %b %Y 12:00:00 +0000")
    items = [" ".join(item.split()) for item in re.split(r"^- ", changes, flags=re.M)[1:]]
    lines = "\n".join(textwrap.fill(item, 76, initial_indent="  * ", subsequent_indent="    ")
                      for item in items)
    text += f"{package} ({version}) stable; urgency=medium\n\n{lines}\n\n -- {maintainer}  {date}\n\n"
pathlib.Path(output).write_text(text)
