#!/usr/bin/env python3
"""Every side-by-side measurement of bench/ in one run: a table of ratios and their bounds.

  bench/run.sh [--only NAME[,NAME...]] [--rounds N] [--folder FOLDER]

Ours and the yardstick run in turn, changing places from round to round, and the ratio is the median
of the rounds' ratios; one over its bound is measured as often again before it counts. Exit code 1
if a ratio stays over its bound. The folder (default: a temporary one) takes 5 GiB.
"""

import argparse
import http.server
import os
import random
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from functools import partial
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BIN = ROOT / "build" / "linux-release" / "bin"
GROUPS = {}
over = []


def group(function):
    GROUPS[function.__name__] = function
    return function


def shell(command, **more):
    environment = dict(os.environ, PATH=f"{BIN}:{os.environ['PATH']}", **more)
    result = subprocess.run(["bash", "-euo", "pipefail", "-c", command], env=environment,
                            capture_output=True, text=True, stdin=subprocess.DEVNULL)
    if result.returncode != 0:
        sys.exit(f"bench: failed: {command}\n{result.stdout[-2000:]}{result.stderr[-2000:]}")
    return result.stdout


def seconds(command):
    start = time.monotonic()
    shell(command)
    return time.monotonic() - start


def row(name, ours, theirs, ratio, bound, remark=""):
    verdict = "OVER" if ratio > bound else "ok"
    if ratio > bound:
        over.append(name)
    print(f"{name:<44} {ours:>9} {theirs:>9} {ratio:7.3f} {bound:6.2f}  {verdict:4} {remark}",
          flush=True)


def compare(name, bound, ours, theirs, before="true", rounds=None):
    """Ours and theirs are commands; of theirs there may be several, whose times are added."""
    theirs = [theirs] if isinstance(theirs, str) else theirs
    measured = []

    def measure(count):
        for _ in range(count):
            sides = [[ours], theirs]
            took = {}
            for side in (0, 1) if len(measured) % 2 == 0 else (1, 0):
                took[side] = 0
                for command in sides[side]:
                    shell(before)
                    took[side] += seconds(command)
            measured.append((took[0], took[1]))

    def median():
        return statistics.median(a / b for a, b in measured)

    count = min(rounds or options.rounds, options.rounds)
    measure(count)
    if median() > bound:
        measure(count)
    ratios = [a / b for a, b in measured]
    row(name, f"{statistics.median(a for a, _ in measured):.3f} s",
        f"{statistics.median(b for _, b in measured):.3f} s", median(), bound,
        f"{min(ratios):.2f} to {max(ratios):.2f}, {len(ratios)} rounds")


def memory(name, bound, command):
    """The peak of a command's memory against its bound, both in MiB."""
    peak = int(shell(f"/usr/bin/time -f %M {command} 2>&1 >/dev/null | tail -n 1")) / 1024
    row(f"memory, MiB: {name}", f"{peak:.0f} MiB", f"{bound} MiB", peak / bound, 1)


def reported(name, command, pattern, runs=3):
    """Ratios that a program measures itself: the pattern finds what is appended to the name, the
    ratio and the bound. Programs that fail when they are over are judged here all the same."""
    found = {}
    for _ in range(runs):
        for what, ratio, bound in re.findall(pattern, shell(f"{command} || [ $? = 1 ]")):
            found.setdefault(name + what, (float(bound), []))[1].append(float(ratio))
    if not found:
        sys.exit(f"bench: no ratios from {command}")
    for what, (bound, ratios) in found.items():
        row(what, "", "", statistics.median(ratios), bound,
            f"{min(ratios):.2f} to {max(ratios):.2f}, {len(ratios)} runs")


@group
def packages():
    """Hashing, extraction and the zip backup beside openssl, bsdtar and zip."""
    shell("head -c 1G /dev/urandom >large.bin; packages_bench pack package.rar large.bin")
    compare("hash of 1 GiB / openssl", 1.05, "packages_bench hash large.bin",
            "openssl dgst -sha256 large.bin")
    compare("stored package of 1 GiB / bsdtar", 1.1, "packages_bench extract package.rar out",
            "bsdtar -xf package.rar -C out", before="rm -rf out; mkdir out; sync -f .", rounds=3)
    memory("hashing", 64, "packages_bench hash large.bin")
    memory("extraction", 64, "packages_bench extract package.rar out")
    shell("rm -rf out large.bin package.rar")
    draw = random.Random(1)
    words = "касса приход расход налог банк счёт авансы поставщик договор отчёт баланс".split()
    rows = "".join(f"{i}|{draw.randint(1, 10**9) / 100}|{' '.join(draw.choices(words, k=9))}|"
                   f"{draw.randbytes(12).hex()}\n" for i in range(600000))
    Path("rows.txt").write_text(rows)
    shell("sqlite3 base.mdb 'create table t(i integer primary key, a real, t text, k text)' "
          "'.import rows.txt t'; rm rows.txt")
    compare("zip of a database / zip -9", 0.6, "packages_bench zip ours.zip base.mdb",
            "zip -q -9 theirs.zip base.mdb", before="rm -f ours.zip theirs.zip", rounds=3)
    shell("rm -f ours.zip theirs.zip; zip -q -9 theirs.zip base.mdb")
    memory("zip", 64, "packages_bench zip ours.zip base.mdb")
    sizes = [Path(f"{each}.zip").stat().st_size for each in ("ours", "theirs")]
    row("size of that zip / zip -9", f"{sizes[0] >> 20} MiB", f"{sizes[1] >> 20} MiB",
        sizes[0] / sizes[1], 1.02)


@group
def update_list():
    """Deciding which of 5,000 files to fetch, beside hashing those that must be hashed."""
    reported("update list of 5,000 files / openssl", "update_list",
             r"update list()[^=]*= ([\d.]+) \(at most ([\d.]+)\)")


@group
def log():
    """An event of the run's log."""
    took = statistics.median(float(re.search(r"([\d.]+) us each", shell("run_log_bench"))[1])
                             for _ in range(options.rounds))
    row("an event of the log / 20 us", f"{took:.1f} us", "20 us", took / 20, 1)


@group
def download():
    """1 GiB from nginx beside curl, and the window's share of that."""
    reported("download of 1 GiB / curl", f"{ROOT}/bench/download.sh {os.getcwd()}",
             r"ratio() ([\d.]+) \(at most ([\d.]+)\)", runs=1)
    reported("the window's share of it, in %",
             f"TMW_FRONT_END=terminal {ROOT}/bench/window_share.sh {os.getcwd()}",
             r"window().*: ([\d.]+) % \(at most ([\d.]+)\)", runs=1)


STRUCTURE = ("create table d(a integer not null, b text, c text, d numeric, e real, f real, "
             "g integer, h integer, i integer, j real, k text, l real, m integer); "
             "create unique index p on d(a); create index n on d(b);")


def make_documents(rows):
    """Документы.table and, as plain columns with the same indexes, rows.txt and plain.db."""
    shell(f"""awk -v rows={rows} -f {ROOT}/bench/documents.awk >utf8.txt
        {{ printf '\\xEF\\xBB\\xBF'; cat utf8.txt; }} >Документы.table
        tr -d '\\r' <utf8.txt | awk '/^Rows$/ {{on = 1; next}} /^EndRows$/ {{on = 0}} on' >rows.txt
        rm -f plain.db utf8.txt
        sqlite3 plain.db '{STRUCTURE}' '.mode list' '.separator |' '.import rows.txt d'""")


@group
def texts():
    """Table texts and CSV of 200,000 rows beside sqlite3 and mdb-export."""
    make_documents(200000)
    fresh = "rm -f db.mdb p.db from_csv.mdb c.db; jetsql create db.mdb; jetsql create from_csv.mdb"
    shell(f"{fresh}; jetsql import db.mdb Документы.table; mv db.mdb csv.mdb")
    shell("jetsql export csv.mdb Документы rows.csv --mode csv")
    shell("jetsql schema csv.mdb --sql >schema.sql")
    compare("table text export / sqlite3 .dump", 1.0, "jetsql export --utf8 csv.mdb Документы o.txt",
            "sqlite3 plain.db .dump >dump.txt")
    shell("cmp o.txt Документы.table")
    compare("table text import / sqlite3 .import", 1.2, "jetsql import db.mdb Документы.table",
            f"sqlite3 p.db '{STRUCTURE}' '.mode list' '.separator |' '.import rows.txt d'", fresh)
    compare("csv export / mdb-export", 1.2, "jetsql export csv.mdb Документы o.csv --mode csv",
            "mdb-export csv.mdb Документы >mdb.csv")
    compare("csv import / sqlite3 .import", 1.3,
            "jetsql run from_csv.mdb <schema.sql; "
            "jetsql import from_csv.mdb rows.csv --into Документы",
            f"sqlite3 c.db '{STRUCTURE}' '.mode csv' '.import --skip 1 rows.csv d'", fresh)


@group
def files():
    """Reading and compacting a database file of 200,000 rows beside mdb-export and cp."""
    make_documents(200000)
    shell("""rm -f big.mdb many.mdb; jetsql create big.mdb; jetsql import big.mdb Документы.table
        jetsql create many.mdb; for i in $(seq 1 200); do
        echo "create table Таблица$i (Ид counter primary key, Имя text(40));"; done |
        jetsql run many.mdb""")
    compare("read every value / mdb-export", 1.2, "jet_file read big.mdb",
            "mdb-export big.mdb Документы >mdb.csv")
    # A compacted copy is on the disk itself when it has its name.
    compare("compact / twice cp and mdb-export", 1.0, "jet_file compact big.mdb compact.mdb",
            ["cp big.mdb copy.mdb; sync copy.mdb", "cp big.mdb copy2.mdb; sync copy2.mdb",
             "mdb-export big.mdb Документы >mdb.csv"], "rm -f copy*.mdb compact.mdb")
    shell("rm -f compact.mdb")
    memory("reading", 128, "jet_file read big.mdb")
    memory("compacting", 128, "jet_file compact big.mdb compact.mdb")
    opening = statistics.median(float(shell("jet_file list many.mdb").split()[0])
                                for _ in range(options.rounds))
    row("open and list 200 tables / 10 ms", f"{opening * 1000:.1f} ms", "10 ms", opening / 0.01, 1)


@group
def statements():
    """Statements of the dialect beside the same ones for plain SQLite."""
    reported("", "jet_statements", r"(?m)^(.*?) +\d+ rows:.*ratio ([\d.]+) \(at most ([\d.]+)\)", runs=1)


REGISTRY = ('\ufeffREGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Soft\\Tamrin\\General]\n'
            '"RootPath"="{0}/product/"\n"DataBasePath"="{0}/product/db/"\n\n'
            '[HKEY_CLASSES_ROOT\\Tm_Version.VersionInfo]\n"VersionEx"="1.0.0.0"\n')
STEP = ('<?xml version="1.0" encoding="utf-8"?>\n'
        '<TMW_Database_Update db_version_from="1.0.0" db_version_to="1.0.1">\n'
        '<Action type="addfield" Table="Документы" FieldName="Год" Type="long"/>\n'
        '</TMW_Database_Update>\n')


def make_installation(rows):
    """An installation of 1.0.0 in template, and a reference database with its step to 1.0.1."""
    make_documents(rows)
    shell(f"""rm -rf template product reference.mdb scripts
        mkdir -p template/tm template/db scripts
        cp {BIN}/TmWebUpdate {BIN}/UnTmz.so template/tm
        {{ printf '\\xEF\\xBB\\xBF'; awk -v rows=5000 -f {ROOT}/bench/documents.awk |
          sed 's/^Table:.*/Table:Справочник\\r/'; }} >Справочник.table
        {{ printf '\\xEF\\xBB\\xBF'; awk -v rows=1 -f {ROOT}/bench/documents.awk; }} >one/Документы.table
        for i in template/db/Tamrin.mdb:1,0,0:Документы.table reference.mdb:1,0,1:one/Документы.table; do
          IFS=: read -r base version table <<<"$i"
          jetsql create $base; jetsql import $base $table Справочник.table
          jetsql run $base "create table DBVersion (MajorVersion long, MinorVersion long,
            BuildNumber long); insert into DBVersion values ($version)"
        done
        jetsql run reference.mdb 'alter table Документы add column Год long'""".replace(
            "rm -rf", "mkdir -p one; rm -rf", 1))
    Path("scripts/1.0.1.xml").write_text(STEP)
    Path("machine.reg").write_text(REGISTRY.format(os.getcwd()))
    os.environ.update(TAMRIN_MACHINE_REG=os.path.abspath("machine.reg"),
                      TAMRIN_USER_REG=os.path.abspath("user.reg"),
                      TMW_LOCK_FOLDER=os.path.abspath("locks"),
                      XDG_STATE_HOME=os.path.abspath("state"), TMW_FRONT_END="terminal")


RELEASE = ('<?xml version="1.0" encoding="utf-8"?>\n'
           '<Release Product="TMW" Version="1.0.1.0" Date="2026-11-20">\n'
           '<Updater MinVersion="1.0"/><Servers><Server Url="{}"/></Servers>\n'
           '<Files><Folder Source="" Target="{{p}}"/></Files>\n'
           '{}</Release>\n')
TABLES = '<Database><Dict Mask="Справочник"/><User Mask="Документы"/></Database>\n'


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass


@group
def update():
    """A whole update of a database of 1,000,000 rows beside the sum of its floors."""
    make_installation(1000000)
    server = http.server.ThreadingHTTPServer(
        ("127.0.0.1", 0), partial(QuietHandler, directory=os.path.abspath("server")))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    url = f"http://127.0.0.1:{server.server_port}/"
    shell("rm -rf files server; mkdir files; seq 100000 >files/Данные.txt")
    Path("release.xml").write_text(RELEASE.format(url, TABLES))
    shell("tmpublish publish release.xml --product files --database reference.mdb "
          "--scripts scripts --output server")
    before = "rm -rf product copy.mdb copy.db copy.zip; cp -r template product; sync -f ."
    # The chain of processes holds the pipe until the last of them ends.
    update = f"cd product/tm; ./TmWebUpdate -y -w {url} 2>&1 | cat"
    shell(f"{before}; {update}")
    version = shell("jetsql run product/db/Tamrin.mdb 'select BuildNumber from DBVersion'")
    if version.split()[-1] != "1":
        sys.exit("bench: the update has not changed the database")
    compare("update of 1,000,000 rows / its floors", 1.5, update,
            ["cp template/db/Tamrin.mdb copy.mdb; sync copy.mdb",
             "sqlite3 plain.db .dump | sqlite3 copy.db",
             "zip -q -9 copy.zip template/db/Tamrin.mdb"], before, rounds=3)
    server.shutdown()


@group
def databases():
    """Both databases of an update, without the ordered waits, beside sqlite3 .dump | sqlite3."""
    make_installation(200000)
    shell("""rm -rf built; mkdir -p built/Loaded built/DBUpdates built/DBStruct
        cp Справочник.table built/Loaded; cp scripts/1.0.1.xml built/DBUpdates/1.xml
        sed '/^Rows/,/^EndRows/d' Документы.table >built/DBStruct/Документы.tablestruct""")
    compare("both databases / sqlite3 .dump | sqlite3", 4, "database_build built",
            "sqlite3 plain.db .dump | sqlite3 copy.db",
            "rm -rf copy.db product; cp -r template product; rm -f built/*/*.mdb")
    shell("rm -rf product; cp -r template product; rm -f built/*/*.mdb")
    memory("both databases", 256, "database_build built")


@group
def publishing():
    """Publishing 30,000 files beside a copy of them that is on the disk."""
    draw = random.Random(1)
    for i in range(30000):
        path = Path(f"many/{i % 100}/Файл {i}.dll")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(draw.randbytes(int(draw.expovariate(1 / 10000))))
    shell("rm -f r.mdb; jetsql create r.mdb; mkdir -p none")
    Path("many.xml").write_text(RELEASE.format("http://localhost/", ""))
    publish = "tmpublish publish many.xml --product many --database r.mdb --scripts none --output out"
    compare("publish 30,000 files / cp -r and sync -f", 3, publish,
            "cp -r many copy; sync -f copy", "rm -rf out copy; sync -f .", rounds=3)
    shell("rm -rf out copy")
    memory("publishing", 128, publish)
    memory("check of what was published", 128, "tmpublish check out")


@group
def unpacking():
    """Packed archives beside libarchive; needs sample archives in $TMW_RAR_SAMPLES."""
    samples = os.environ.get("TMW_RAR_SAMPLES", "")
    large = sorted(Path(samples).glob("*.rar"), key=lambda path: -path.stat().st_size)[:8]
    if not samples:
        print("unpacking: left out, without TMW_RAR_SAMPLES")
        return
    names = " ".join(f"'{path}'" for path in large)
    for name, ratio in re.findall(r"(?m)^(\S+) .* ([\d.]+) x libarchive", shell(
            f"rar_extraction {names}")):
        row(f"unpack {name[:24]} / libarchive", "", "", float(ratio), 1.3)


parser = argparse.ArgumentParser(prog="bench/run.sh", epilog="; ".join(
    f"{name}: {function.__doc__}" for name, function in GROUPS.items()))
parser.add_argument("--only", default=",".join(GROUPS), help="names, with commas between them")
parser.add_argument("--rounds", type=int, default=5)
parser.add_argument("--folder", default=None)
options = parser.parse_args()
chosen = options.only.split(",")
if unknown := [name for name in chosen if name not in GROUPS]:
    parser.error(f"no measurement {unknown[0]}; there are {', '.join(GROUPS)}")
print(f"{'':<44} {'ours':>9} {'beside':>9} {'ratio':>7} {'bound':>6}")
started = time.monotonic()
for name in chosen:
    with tempfile.TemporaryDirectory(prefix="bench.", dir=options.folder) as folder:
        os.chdir(folder)
        GROUPS[name]()
        os.chdir("/")
print(f"{time.monotonic() - started:.0f} s" + (f"; over: {', '.join(over)}" if over else ""))
sys.exit(1 if over else 0)
