"""Says what is wrong with a home, right after a run was stopped and after the run that mends it."""

import hashlib
import re
from pathlib import Path

import world

DATABASE = "product/db/Tamrin.mdb"
KEPT = "product/Предыдущая версия/"  # what an update has replaced, in a folder with a number
REFERENCE = "product/db/Tamrin_LastVer.mdb"
UPDATER = ("product/tm/TmWebUpdate", "product/tm/UnTmz.so")
# Files that only the updater knows, and endings of what it has not finished.
OWN_FILES = ("product/TMW_Installing.txt", "product/TmWebUpdate.lock", "product/TmWebUpdate.serial",
             "product/TMW_Rollback.txt", "product/TMW_LastRollback.txt")
UNFINISHED = (".copying", ".tmp", ".new", ".unpacking", "/TmWebUpdate.probe")


def files(home: Path, rights):
    """Content and the given rights of everything that a run may leave, by path."""
    facts = {}
    for top in ("product", "registered", "tmp"):
        for path in (home / top).rglob("*"):
            name = re.sub(f"^{KEPT}\\d+", KEPT + "N", str(path.relative_to(home)))
            name = re.sub(r"\d{4}-\d\d-\d\d \d\d-\d\d-\d\d", "DATE", name)
            kind = oct(path.lstat().st_mode & (0o170000 | rights))
            content = path.read_bytes() if path.is_file() else b""
            if name in OWN_FILES:
                content = b""
            if name == KEPT + "TMW_Kept.txt":
                content = b"\n".join(kept(home, content))
            facts[name] = kind, hashlib.sha256(content).hexdigest()
    return facts


def kept(home, text):
    """The lines of the list of what has been replaced that are the same for every run."""
    lines = text.replace(bytes(home), b"").split(b"\r\n")
    changing = (b"folder|", b"root|", b"date|", b"content|", b"backup|", b"end|")
    return [line for line in lines if not line.startswith(changing)]


def kept_faults(home):
    """The list ends with the hash of its beginning, and goes with whole files."""
    file = home / KEPT / "TMW_Kept.txt"
    if not file.exists():
        return []
    text, _, end = file.read_bytes()[3:].rpartition(b"end|")  # behind the mark of UTF-8
    if hashlib.sha256(text).hexdigest().encode() != end.strip():
        return ["the list of what was replaced is torn"]
    faults, folder = [], ""
    for line in text.decode().split("\r\n"):
        kind, _, rest = line.partition("|")
        if kind == "folder":
            folder = rest
        if kind == "file":
            _, digest, _, name, _ = rest.split("|")
            path = home / KEPT / folder / name
            if not path.exists() or hashlib.sha256(path.read_bytes()).hexdigest() != digest:
                faults.append(f"{name} was replaced and has not been kept")
    return faults


class Judge:
    """Knows the state before a run, and the one after it when nothing has disturbed it."""

    rights = 0o7777  # to be compared

    def __init__(self, made: world.World, before: Path, after: Path, codes):
        self.world, self.codes = made, codes  # of a run that mends, or has nothing to mend
        self.known = {}  # the text of databases by their hash
        self.before, self.after = files(before, self.rights), files(after, self.rights)
        self.old_tables, self.new_tables = self._tables(before / DATABASE), self._tables(after / DATABASE)
        self.tables = (self.old_tables, self.new_tables)
        self.reference = (self._tables(before / REFERENCE), self._tables(after / REFERENCE))
        self.old_rows = (before / DATABASE).read_bytes()
        if None in self.tables or self.old_tables == self.new_tables:
            raise SystemExit("an undisturbed run has not made a new database of the old one")

    def _tables(self, file):
        if not file.exists():
            return b""
        key = hashlib.sha256(file.read_bytes()).digest()
        if key not in self.known:
            self.known[key] = self.world.tables(file)
        return self.known[key]

    def _backups(self, home):
        folder = home / "product/db"
        return {path: world.backup(path) for path in folder.glob("*.zip")} | \
            {path: path.read_bytes() for path in folder.glob("Tamrin (*).mdb")}

    def stopped(self, home):
        """What is lost and what is torn at this moment."""
        lost, torn, facts = [], [], files(home, self.rights)
        rows = self._tables(home / DATABASE)
        if rows == b"":
            rows = self._tables(home / (DATABASE + ".new"))
            if rows != self.new_tables:
                lost.append("there is no whole database")
        elif rows not in self.tables:
            torn.append("the database is neither the old one nor the new one")
        if rows != self.old_tables and self.old_rows not in self._backups(home).values():
            lost.append("the old database is gone and there is no backup of it")
        for name in UPDATER:
            if facts.get(name) not in (self.before[name], self.after[name]):
                lost.append(f"{name} is neither the old one nor the new one")
        if self._tables(home / REFERENCE) not in (*self.reference, b""):
            torn.append("the reference database is neither the old one nor the new one")
        torn += [f"{path.name} is no whole backup"
                 for path, content in self._backups(home).items() if content is None]
        lost += kept_faults(home)
        for name, fact in facts.items():
            named = name.startswith("product/") and not name.startswith(KEPT) and not name.endswith((".mdb", ".zip", *UNFINISHED))
            if named and name not in OWN_FILES and fact not in (self.before.get(name), self.after.get(name)):
                torn.append(f"{name} is neither the old one nor the new one")
        return lost, torn

    def mended(self, home, code, shown):
        """What differs from the end of an undisturbed run, further backups excepted."""
        faults = [] if code in self.codes else [f"exit code {code}: {shown[-600:]}"]
        if self._tables(home / DATABASE) != self.new_tables:
            faults.append("the database differs")
        if self._tables(home / REFERENCE) != self.reference[1]:
            faults.append("the reference database differs")
        backups = self._backups(home)
        if self.old_rows not in backups.values() or None in backups.values():
            faults.append("there is no whole backup")
        faults += kept_faults(home)
        facts = files(home, self.rights)
        for name in sorted(facts.keys() | self.after.keys()):
            if name.endswith(".zip") or (name.endswith(".mdb") and name in facts and name in self.after):
                continue
            if facts.get(name) != self.after.get(name):
                faults.append(f"{name}: {facts.get(name)}, not {self.after.get(name)}")
        return faults
