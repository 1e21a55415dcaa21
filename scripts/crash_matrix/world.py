"""A small product in two releases, the server of the newer one, and homes to install it in.

A home is one folder with everything that an installation has: the product and its database, the
folder for temporary files, the log, the locks and what registered libraries have left.
"""

import hashlib
import os
import re
import shutil
import socket
import subprocess
import time
import zipfile
from pathlib import Path

OLD, NEW = "3.6.0.4", "3.6.2.1"

COMPONENT = """
#include <stdio.h>
#include <stdlib.h>
static const char *Place(void) {
  static char place[4096];
  snprintf(place, sizeof(place), "%s/NAME", getenv("REGISTERED"));
  return place;
}
int DllRegisterServer(void) {
  FILE *file = fopen(Place(), "w");
  if (file == NULL) return 1;
  fputs("VERSION", file);
  return fclose(file);
}
int DllUnregisterServer(void) {
  return remove(Place());
}
"""

DATABASE = """
create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long);
insert into DBVersion values (NUMBERS);
create table Ставки (Ид long primary key, Название text(40));
insert into Ставки values (1, 'Основная');
insert into Ставки values (2, 'Льготная');
create table Документы (Ид long primary key, Ставка long, Сумма currency);
insert into Документы values (1, 1, 10.5);
insert into Документы values (2, 2, 2000);
alter table Документы add constraint ДокументыСтавки
  foreign key (Ставка) references Ставки on update cascade
"""

STEP = """<?xml version="1.0" encoding="utf-8"?>
<TMW_Database_Update db_version_from="{}" db_version_to="{}">
  <Action type="{}</Action>
</TMW_Database_Update>
"""

RELEASE = """<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="{version}" Date="2026-11-20">
  <Updater MinVersion="{updater}">
    <Component File="tm/TmWebUpdate"/><Component File="tm/UnTmz.so"/>
  </Updater>
  <Servers><Server Url="{url}"/></Servers>
  <Files>
    <Folder Source="" Target="{{p}}"/>
    <File Mask="*.ocx" IsCom="yes"/>
    <File Mask="Tamrin" Executable="yes"/>
    <File Mask="TmWebUpdate" Executable="yes"/>
    <File Mask="TmRollback" Executable="yes"/>
  </Files>
  <Database><Dict Mask="Ставки"/><User Mask="Документы"/></Database>
</Release>
"""

NGINX = """
pid nginx.pid; worker_processes 1; events {{}} {user}
http {{
  access_log off; types {{}}
  client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
  server {{ listen 127.0.0.1:{port}; root server; }}
}}
"""

SETTINGS = """REGEDIT4

[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Soft\\Tamrin\\General]
"RootPath"="{home}/product/"
"DataBasePath"="{home}/product/db/"

[HKEY_CLASSES_ROOT\\Tm_Version.VersionInfo]
"VersionEx"="{version}"
"""


def call(*words, **options):
    """Runs a program that must succeed and returns what it printed."""
    done = subprocess.run([str(word) for word in words], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, **options)
    if done.returncode != 0:
        raise SystemExit(f"{words[0]} failed ({done.returncode}): {done.stdout}{done.stderr}")
    return done.stdout


class World:
    def __init__(self, folder: Path, programs: Path):
        self.folder = folder
        self.jetsql = programs / "jetsql"
        self.server = None
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.port = free.getsockname()[1]
        self.url = f"http://127.0.0.1:{self.port}/"
        self.start = folder / "start"  # a home with the older release
        for name in ("product/db", "tmp", "registered"):
            (self.start / name).mkdir(parents=True)
        self._make_product(self.start / "product", OLD, programs / "TmWebUpdate", programs)
        self._make_database(self.start / "product/db/Tamrin.mdb", "3, 6, 0")
        for name in ("Calc", "Exchange"):
            (self.start / "registered" / name).write_text(OLD)
        self._publish(programs)

    def _make_product(self, folder, version, updater, programs):
        (folder / "tm").mkdir(parents=True, exist_ok=True)
        (folder / "Шаблоны").mkdir()
        for number in range(1, 5):
            (folder / f"tm/Module{number}.dll").write_text(f"{number}, {version}\n" * 1000)
        for number in (1, 2):
            (folder / f"Шаблоны/Форма {number}.txt").write_text(f"Форма {number}, {version}\n")
        for name in ("Calc", "Exchange"):
            source = COMPONENT.replace("NAME", name).replace("VERSION", version)
            call("cc", "-s", "-shared", "-fPIC", "-o", folder / f"tm/{name}.ocx", "-x", "c", "-",
                 input=source)
        (folder / "tm/Tamrin").write_text(f"#!/bin/sh\n# {version}\n")
        (folder / "tm/Tamrin").chmod(0o755)
        call("strip", "-o", folder / "tm/TmWebUpdate", updater)
        for name in ("TmRollback", "UnTmz.so"):
            call("strip", "-o", folder / "tm" / name, programs / name)

    def _make_database(self, file, numbers):
        call(self.jetsql, "create", file)
        call(self.jetsql, "run", file, DATABASE.replace("NUMBERS", numbers))

    def _publish(self, programs):
        newer, scripts = self.folder / "newer", self.folder / "scripts"
        self._make_product(newer, NEW, programs / "newer_updater", programs)
        reference = self.folder / "reference.mdb"
        self._make_database(reference, "3, 6, 2")
        call(self.jetsql, "run", reference, "alter table Документы add column Примечание text(100)")
        scripts.mkdir()
        (scripts / "1.xml").write_text(STEP.format(
            "3.6.0", "3.6.1", 'addfield" Table="Документы" FieldName="Примечание" Type="text" '
            'Size="100" AllowZeroString="yes">'))
        (scripts / "2.xml").write_text(STEP.format(
            "3.6.1", "3.6.2", "sql\">update Документы set Примечание = 'Крупный' where Сумма = 2000"))
        versions = [call(programs / name, "--version").split()[-1].rpartition(".")[0]
                    for name in ("TmWebUpdate", "newer_updater")]
        (self.folder / "release.xml").write_text(
            RELEASE.format(version=NEW, url=self.url, updater=versions[0]))
        call(programs / "tmpublish", "publish", self.folder / "release.xml", "--product", newer,
             "--database", reference, "--scripts", scripts, "--output", self.folder / "server")
        # tmpublish knows of no updater newer than its own release.
        digest = self.folder / "server/TMW_version.dat"
        digest.write_bytes(digest.read_bytes().replace(versions[0].encode(), versions[1].encode()))

    def serve(self):
        """Until close()."""
        user = "; user root;" if os.geteuid() == 0 else ";"  # who owns the folder may read it
        (self.folder / "nginx.conf").write_text(
            NGINX.format(port=self.port, user=user.lstrip(";")))
        self.server = subprocess.Popen(
            ["nginx", "-p", self.folder, "-e", "error.log", "-c", "nginx.conf",
             "-g", "daemon off;"], env=dict(os.environ, PATH=os.environ["PATH"] + ":/usr/sbin"))
        for _ in range(500):
            try:
                socket.create_connection(("127.0.0.1", self.port)).close()
                return
            except OSError:
                if self.server.poll() is not None:
                    break
                time.sleep(0.05)
        raise SystemExit("nginx does not answer: " + (self.folder / "error.log").read_text())

    def close(self):
        if self.server is not None:
            self.server.terminate()
            self.server.wait()

    def tables(self, file: Path):
        """Structure and rows of a database as text; nothing if they cannot be read."""
        done = subprocess.run([self.jetsql, "dump", file], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL)
        return done.stdout if done.returncode == 0 else None


def fill(home: Path, state: Path):
    """Makes the home anew with the content of another one."""
    if home.exists():
        shutil.rmtree(home)
    shutil.copytree(state, home, symlinks=True)
    (home / "machine.reg").write_text(SETTINGS.format(home=home, version=OLD))
    kept = home / "product/Предыдущая версия/TMW_Kept.txt"
    if kept.exists():  # it knows where the product stood
        text = kept.read_bytes().rpartition(b"end|")[0]
        root = re.search(rb"root\|(.*)/product\r\n", text)[1]
        text = text.replace(root, bytes(home))
        digest = hashlib.sha256(text[3:]).hexdigest()  # behind the mark of UTF-8
        kept.write_bytes(text + f"end|{digest}\r\n".encode())


def environment(home: Path):
    return {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(home),
            "TAMRIN_MACHINE_REG": f"{home}/machine.reg", "TAMRIN_USER_REG": f"{home}/none.reg",
            "TMPDIR": f"{home}/tmp", "TMW_LOCK_FOLDER": f"{home}/locks",
            "XDG_STATE_HOME": f"{home}/state", "REGISTERED": f"{home}/registered"}


def backup(archive: Path):
    """The one file of an archive; nothing if that cannot be had whole."""
    try:
        with zipfile.ZipFile(archive) as opened:
            names = opened.namelist()
            return opened.read(names[0]) if len(names) == 1 else None
    except (zipfile.BadZipFile, OSError):
        return None
