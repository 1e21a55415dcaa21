#!/usr/bin/env python3
"""Holds the pages against the code:
    check_docs.py [JETSQL]
Every message that docs/ru quotes is one of a texts header; links lead to files; docs/architecture.md
names each room of src/; docs/formats.md has the types that the code reads, and a sample that it reads,
which is tried with JETSQL if it is given."""
import pathlib
import re
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
BREAK = re.compile(r"^[\s+]*((kBreak|kCrLf|std::string\(kCrLf\))[\s+]*)+$")
GAP = "\0"  # where a value is put in
failures = []


def expressions():
    """The texts of the headers, an expression each, with a gap for every value."""
    for path in sorted(TOP.glob("src/**/*texts.h")) + sorted(TOP.glob("src/**/box_titles.h")):
        code = re.sub(r"^\s*//.*$", "", path.read_text(), flags=re.M)
        text, end = "", None
        for found in LITERAL.finditer(code):
            between = code[end:found.start()] if end is not None else ""
            if end is None or ";" in between:
                yield text
                text = ""
            elif BREAK.match(between):
                text += " "
            elif between.strip():
                # Quoted(x) brings its quotes along.
                text += GAP
            text += found[1].replace("\\r", " ").replace("\\n", " ").replace('\\"', '"')
            end = found.end()
        yield text


def plain(text):
    return re.sub(r"\s+", " ", text).strip()


KNOWN = [plain(text) for text in expressions() if text]
# Words by themselves: buttons and the like.
WORDS = {part.strip(" &<>:").replace("&", "") for text in KNOWN for part in text.split(GAP)}


def is_known(quote):
    parts = [part.strip(' "') for part in plain(quote).split("…")]
    parts = [part for part in parts if part.strip(" .,:;()")]
    if len(parts) == 1 and len(parts[0]) < 16:
        return parts[0].strip(" :") in WORDS

    def holds(text):
        at = 0
        for part in parts:
            at = text.find(part, at)
            if at < 0:
                return False
            at += len(part)
        return True

    return bool(parts) and any(holds(text) for text in KNOWN)


def check_quotes():
    count = 0
    for page in sorted(TOP.glob("docs/ru/*.md")):
        for quote in re.findall(r"«([^»]*)»", page.read_text()):
            count += 1
            if not is_known(quote):
                failures.append(f"{page.relative_to(TOP)}: no program shows «{plain(quote)}»")
    if count < 50:
        failures.append(f"{count} messages in docs/ru only")
    for wrong in ("Освободите место на столе.", "Да нет", "этап … за …"):
        if is_known(wrong):
            failures.append(f"anything counts as a message: «{wrong}»")
    return count


def check_links():
    pages = [TOP / "README.md", TOP / "CONTRIBUTING.md", *TOP.glob("docs/**/*.md")]
    for page in pages:
        text = re.sub(r"```.*?```|`[^`\n]*`", "", page.read_text(), flags=re.S)
        for target in re.findall(r"\]\(([^)#:]+)[^)]*\)", text):
            if not (page.parent / target).exists():
                failures.append(f"{page.relative_to(TOP)}: there is no {target}")


def check_rooms():
    page = (TOP / "docs/architecture.md").read_text()
    rooms = {path.parent.name for path in TOP.glob("src/*/CMakeLists.txt")} | {"ports"}
    named = set(re.findall(r"^src/(\w+)/ ", page, re.M))
    if rooms != named:
        failures.append(f"docs/architecture.md: rooms differ: {sorted(rooms ^ named)}")


def check_formats(jetsql):
    page = (TOP / "docs/formats.md").read_text()

    def compare(what, listed, file, table):
        code = re.search(table + r".*?\}\};", (TOP / file).read_text(), re.S)[0]
        known = set(re.findall(r'"(\w+)"', code))
        if set(listed) != known:
            failures.append(f"docs/formats.md: {what} differ: {sorted(set(listed) ^ known)}")

    compare("types of fields", re.findall(r"`(\w+)`", re.search(r"^Types: (.*?)\.$", page, re.M | re.S)[1]),
            "src/database/db_string.cpp", "kTypeTokens")
    compare("types of scripts", re.findall(r"`(\w+)`", re.search(r"`Type` \((.*?)\)", page)[1]),
            "src/database/wu_db_upd_node.cpp", "kTypeWords")
    if jetsql:
        sample = re.search(r"```\n(Table:.*?)```", page, re.S)[1]
        with tempfile.TemporaryDirectory() as folder:
            table = pathlib.Path(folder) / "Ставки.table"
            table.write_bytes(sample.replace("\n", "\r\n").encode("cp1251"))
            again = table.with_suffix(".again")
            database = str(table.with_suffix(".mdb"))
            for command in (["create", database], ["import", database, str(table)],
                            ["export", database, "Ставки", str(again)]):
                done = subprocess.run([jetsql, *command], capture_output=True, text=True)
                if done.returncode:
                    failures.append(f"docs/formats.md, the table: {done.stderr}")
                    return
            if again.read_bytes() != table.read_bytes():
                failures.append("docs/formats.md: the table is exported in another form")


quotes = check_quotes()
check_links()
check_rooms()
check_formats(sys.argv[1] if len(sys.argv) > 1 else None)
for failure in failures:
    print("FAILED:", failure)
if failures:
    sys.exit(1)
print(f"docs: {quotes} quoted messages are the programs' own")
