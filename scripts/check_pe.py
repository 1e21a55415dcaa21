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

SHIPPED = {  # name -> the description that Explorer shows; who it is for
    "TmWebUpdate.exe": ("Web-обновление Tamrin", "users"),
    "TmRollback.exe": ("Возврат к предыдущей версии Tamrin", "users"),
    "TmSupport.exe": ("Сведения для поддержки Tamrin", "users"),
    "UnTmz.dll": ("Библиотека Tamrin для пакетов", "programs"),
    "jetsql.exe": ("Запросы к базам данных Tamrin", "the maker"),
    "tmpublish.exe": ("Публикация обновлений Tamrin", "the maker"),
}
DESCRIBED = {"CompanyName": "Kestrel Soft", "ProductName": "Tamrin",
             "LegalCopyright": "© 2026 The TmWebUpdate authors"}
EMBEDDED_ENGINE = [b"TMW_TEST_DATABASE_ENGINE", b"SQLite format"]
LARGE_ADDRESS, HIGH_ENTROPY, DYNAMIC_BASE, NX = 0x20, 0x20, 0x40, 0x100
WRITE, EXECUTE = 0x80000000, 0x20000000
VERSION, MANIFEST, ICON = 16, 24, 14

failures = []


class Image:
    def __init__(self, path):
        self.bytes = path.read_bytes()
        head = struct.unpack_from("<I", self.bytes, 0x3C)[0] + 4
        (_, count, self.made, strings, self.symbols, size, self.flags) = struct.unpack_from(
            "<HHIIIHH", self.bytes, head)
        head += 20
        self.is_64 = struct.unpack_from("<H", self.bytes, head)[0] == 0x20B
        self.base = int.from_bytes(
            self.bytes[head + 24:head + 32] if self.is_64 else self.bytes[head + 28:head + 32], "little")
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


def check(path, symbols, allowed, own_version):
    name = path.name
    image = Image(path)
    description, audience = SHIPPED[name]
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
    expected = {**DESCRIBED, "FileDescription": description, "OriginalFilename": name,
                "FileVersion": own_version, "ProductVersion": own_version}
    resource = image.resource(VERSION)
    for value, text in expected.items():
        found = version_text(resource, value)
        expect(found == text, f"{name}: {value} is {found!r}")
    manifest = image.resource(MANIFEST).decode()
    expect('level="asInvoker"' in manifest, f"{name}: manifest without a level")
    expect(f'name="{path.stem}"' in manifest, f"{name}: the manifest has another name")
    expect("activeCodePage" not in manifest, f"{name}: another code page than the system's")
    expect(bool(image.resource(ICON)) == (audience == "users"), f"{name}: icon")
    expect(image.made == 0, f"{name}: holds the time of its building")
    source = str(pathlib.Path(__file__).resolve().parent.parent).encode()
    expect(source not in image.bytes, f"{name}: holds the folder of its building")
    for mark in EMBEDDED_ENGINE if audience != "the maker" else []:
        expect(mark not in image.bytes, f"{name}: holds the database engine of the tests")
    # A crash is reported by its distance from the image's beginning.
    place = re.search(r"^([0-9a-f]+) T _?(main|Sha256_GetHashLength)(@0)?$", names, re.M)
    offset = hex(int(place[1], 16) - image.base)
    reader = pathlib.Path(__file__).with_name("crash_address.sh")
    line = subprocess.run([reader, symbols, offset], capture_output=True, text=True).stdout
    expect(re.match(rf"{place[2]}\S*\n(\./)?src/\S+\.cpp:[1-9]", line),
           f"{name}: {offset} is read as {line!r}")
    print(f"{name}: {'64' if image.is_64 else '32'} bits, {len(image.bytes)} bytes")


def main():
    build = pathlib.Path(sys.argv[1])
    allowed = {}
    project = (pathlib.Path(__file__).parent.parent / "CMakeLists.txt").read_text()
    own_version = re.search(r"project\(\w+ VERSION ([0-9.]+)", project)[1]
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
            check(path, build / "symbols" / (name + ".debug"), allowed, own_version)
        else:
            expect(False, f"{path} is not there")
    for failure in failures:
        print("FAILED:", failure)
    sys.exit(1 if failures else 0)


main()
