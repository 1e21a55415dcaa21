#!/usr/bin/env python3
"""Reads the Windows programs and libraries that users get: what they declare to the system (the
headers' flags, version resource, manifest), and that they ask for nothing newer than Windows 7.
    check_pe.py BUILD_FOLDER
Entry points stand in windows7_imports.txt; one that is not there has to be looked up before it is
added."""
import pathlib
import re
import struct
import subprocess
import sys

SHIPPED = {  # name -> the description that Explorer shows; whether it has a manifest
    "TmWebUpdate.exe": ("Web-обновление Tamrin", True),
    "TmSupport.exe": ("Сведения для поддержки Tamrin", True),
    "UnTmz.dll": ("Библиотека Tamrin для пакетов", False),
}
FOR_TESTS = [b"TMW_TEST_DATABASE_ENGINE", b"SQLite format"]  # of the embedded engine
LARGE_ADDRESS, HIGH_ENTROPY, DYNAMIC_BASE, NX = 0x20, 0x20, 0x40, 0x100
WRITE, EXECUTE = 0x80000000, 0x20000000
VERSION, MANIFEST = 16, 24

failures = []


class Image:
    def __init__(self, path):
        self.bytes = path.read_bytes()
        head = struct.unpack_from("<I", self.bytes, 0x3C)[0] + 4
        (_, count, _, strings, self.symbols, size, self.flags) = struct.unpack_from(
            "<HHIIIHH", self.bytes, head)
        head += 20
        self.is_64 = struct.unpack_from("<H", self.bytes, head)[0] == 0x20B
        self.system = struct.unpack_from("<HH", self.bytes, head + 40)
        self.subsystem = struct.unpack_from("<HH", self.bytes, head + 48)
        self.traits = struct.unpack_from("<H", self.bytes, head + 70)[0]
        folders = head + (112 if self.is_64 else 96)
        self.folder = lambda i: struct.unpack_from("<II", self.bytes, folders + 8 * i)
        self.sections = []
        for i in range(count):
            at = head + size + 40 * i
            name = self.bytes[at:at + 8].rstrip(b"\0").decode()
            if name.startswith("/"):  # a long one stands behind the symbols
                start = strings + 18 * self.symbols + int(name[1:])
                name = self.bytes[start:self.bytes.index(b"\0", start)].decode()
            _, address, length, place = struct.unpack_from("<IIII", self.bytes, at + 8)
            traits = struct.unpack_from("<I", self.bytes, at + 36)[0]
            self.sections.append((name, address, length, place, traits))

    def place(self, address):
        for _, start, length, place, _ in self.sections:
            if start <= address < start + length:
                return place + address - start
        raise ValueError(hex(address))

    def text(self, address):
        place = self.place(address)
        return self.bytes[place:self.bytes.index(b"\0", place)].decode()

    def imports(self):
        at = self.place(self.folder(1)[0])
        width, by_number = (8, 1 << 63) if self.is_64 else (4, 1 << 31)
        while True:
            names, _, _, library, table = struct.unpack_from("<IIIII", self.bytes, at)
            if library == 0:
                return
            entry = self.place(names or table)
            while value := int.from_bytes(self.bytes[entry:entry + width], "little"):
                assert not value & by_number, "an import by number"
                yield self.text(library).lower(), self.text(value + 2)
                entry += width
            at += 20

    def resource(self, kind):
        base = self.place(self.folder(2)[0])

        def children(offset):
            named, numbered = struct.unpack_from("<HH", self.bytes, base + offset + 12)
            for i in range(named + numbered):
                yield struct.unpack_from("<II", self.bytes, base + offset + 16 + 8 * i)

        for number, offset in children(0):
            if number != kind:
                continue
            for _ in range(2):
                offset = next(children(offset & 0x7FFFFFFF))[1]
            address, length = struct.unpack_from("<II", self.bytes, base + offset)
            return self.bytes[self.place(address):][:length]
        return b""


def expect(condition, what):
    if not condition:
        failures.append(what)


def version_text(resource, name):
    text = resource.decode("utf-16-le", "replace")
    found = re.search(re.escape(name) + "\0+([^\0]*)\0", text)
    return found.group(1) if found else ""


def check(path, symbols, allowed):
    name = path.name
    image = Image(path)
    description, has_manifest = SHIPPED[name]
    for flag, what in ((DYNAMIC_BASE, "DYNAMIC_BASE"), (NX, "NX")):
        expect(image.traits & flag, f"{name}: no {what}")
    if image.is_64:
        expect(image.traits & HIGH_ENTROPY, f"{name}: no HIGH_ENTROPY_VA")
    else:
        expect(image.flags & LARGE_ADDRESS, f"{name}: no LARGE_ADDRESS_AWARE")
    expect(image.folder(5)[1] > 0, f"{name}: cannot be moved, it has no relocations")
    expect(image.system <= (6, 1) and image.subsystem <= (6, 1), f"{name}: a newer system")
    for section, *_, traits in image.sections:
        expect(not (traits & WRITE and traits & EXECUTE), f"{name}: {section} is code and data")
        expect(not section.startswith(".debug"), f"{name}: {section} is left of the symbols")
    expect(image.symbols == 0, f"{name}: not stripped")
    names = subprocess.run(["nm", str(symbols)], capture_output=True, text=True).stdout
    expect("__stack_chk_fail" in names, f"{name}: no stack protector in {symbols}")
    for library, entry in image.imports():
        expect(entry in allowed.get(library, ()), f"{name}: {library} {entry} is not in the list")
    version = image.resource(VERSION)
    found = version_text(version, "FileDescription")
    expect(found == description, f"{name}: FileDescription is {found!r}")
    found = version_text(version, "OriginalFilename")
    expect(found == name, f"{name}: OriginalFilename is {found!r}")
    manifest = image.resource(MANIFEST).decode()
    expect(not has_manifest or 'level="asInvoker"' in manifest, f"{name}: manifest without a level")
    expect("activeCodePage" not in manifest, f"{name}: another code page than the system's")
    for mark in FOR_TESTS:
        expect(mark not in image.bytes, f"{name}: holds the database engine of the tests")
    print(f"{name}: {'64' if image.is_64 else '32'} bits, {len(image.bytes)} bytes")


def main():
    build = pathlib.Path(sys.argv[1])
    allowed = {}
    library = ""
    for line in (pathlib.Path(__file__).parent / "windows7_imports.txt").read_text().splitlines():
        if line.startswith("#"):
            continue
        if not line.startswith(" "):
            library = line.strip()
        allowed.setdefault(library, set()).update(line.split() if line.startswith(" ") else ())
    for name in SHIPPED:
        path = build / "bin" / name
        if path.exists():
            check(path, build / "symbols" / (name + ".debug"), allowed)
        else:
            expect(False, f"{path} is not there")
    for failure in failures:
        print("FAILED:", failure)
    sys.exit(1 if failures else 0)


main()
