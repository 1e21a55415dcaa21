#!/usr/bin/env python3
"""Does what docs/publishing.md says, block by block, in a temporary place: makes the releases, offers
them by the web server's configuration, compares what the commands print ("…" stands for anything).
   page_test.py TMPUBLISH JETSQL LIBRARY PAGE    (LIBRARY: one that can be registered)"""
import os, re, shutil, socket, subprocess, sys, tempfile
import xml.dom.minidom

tmpublish, jetsql, library, page = (os.path.abspath(argument) for argument in sys.argv[1:])
work = tempfile.mkdtemp()
os.chmod(work, 0o755)  # the web server has a user of its own
os.chdir(work)
os.environ["PATH"] = os.path.dirname(tmpublish) + ":" + os.environ["PATH"]
os.environ["TMPDIR"] = work


def fail(line, text):
    sys.exit(f"FAILED: {page}:{line}: {text}")


def run(line, command):
    result = subprocess.run(["bash", "-euo", "pipefail", "-c", command], text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
    return result.returncode, result.stdout.replace("\r", "")


def write(name, text):
    os.makedirs(os.path.dirname(os.path.abspath(name)), exist_ok=True)
    with open(name, "w") as file:
        file.write(text)


# The page's addresses become addresses of this machine.
mirrors = {}
for mirror in "one", "two":
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        mirrors[mirror] = f"127.0.0.1:{free.getsockname()[1]}"
text = re.sub(r"https://(one|two)\.example", lambda at: "http://" + mirrors[at[1]], open(page, encoding="utf-8").read())
blocks = [(text[:at.start()].count("\n") + 1, at[1], at[2])
          for at in re.finditer(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S)]

# What the page takes for granted.
description = next(block for _, kind, block in blocks if kind == "xml" and "<Release" in block)
write("release.xml", description)
write("newer.xml", description.replace("3.6.0.2", "3.6.0.3"))
for name in ("tm/TmWebUpdate.exe", "tm/UnTmz.dll", "tm/Core.dll", "tm/Large.dll", "tm/Core.pdb", "tm/Schet.dll",
             "templates/Бланк.rtf", "templates/Счёт.rtf"):
    write("product/" + name, name * 100)
shutil.copy(library, "product/tm/Calc.ocx")
for number, start, end in (1, "3.5.0", "3.5.7"), (2, "3.5.7", "3.6.0"):
    write(f"db/updates/{number}.xml", f'<?xml version="1.0"?>\n<TMW_Database_Update db_version_from="{start}" '
          f'db_version_to="{end}"><Action type="sql">delete from Ставки</Action></TMW_Database_Update>')
tables = ("create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long);"
          "insert into DBVersion values (3, 5, %s); create table Ставки (Ид long primary key);"
          "create table [Документы 2026] (Ид long primary key); create table TempLog (a long)")
os.makedirs("old")
for database, build in ("reference.mdb", 0), ("old/Tamrin-3.5.0.mdb", 0), ("old/Tamrin-3.5.7.mdb", 7):
    run(0, f"'{jetsql}' create {database}; '{jetsql}' run {database} '{tables % build}'")
write("password", "слово\n")
# A package as an archiver makes it: that of an earlier release.
first = re.sub(' Package="[^"]*"', "", description)
write("first.xml", first)
code, output = run(0, "tmpublish publish first.xml --product product --database reference.mdb --scripts db/updates "
                   "--output first && mkdir packed && cp first/TMW_3.6.0.2/files/tm/Large.dll.tmz packed/Large.rar")
if code:
    fail(0, output)
for mirror in mirrors:
    os.makedirs(f"mirrors/{mirror}/tmw")


def start_server(line, text):
    servers = ""
    for mirror, address in mirrors.items():
        mine = re.sub(r"ssl_.*;\n", "", text).replace("443 ssl", address)
        servers += mine.replace("/srv/one", f"{work}/mirrors/{mirror}")
    folders = "".join(f"{kind}_temp_path {work}/{kind};" for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
    write("nginx.conf", f"pid {work}/nginx.pid; error_log {work}/nginx.log; events {{}}\n"
          f"http {{ access_log off; {folders}\n{servers} }}")
    code, output = run(line, f"nginx -e {work}/nginx.log -p {work} -c {work}/nginx.conf")
    if code:
        fail(line, output)


def compare(line, text):
    for part in re.split(r"^\$ ", text, flags=re.M)[1:]:
        command, _, wanted = part.partition("\n")
        output = run(line, command)[1].replace(work + "/", "")
        pattern = "".join(".*" if piece == "…" else re.escape(piece) for piece in re.split("(…)", wanted.strip()))
        if not re.fullmatch(pattern, output.strip(), re.S):
            fail(line, f"{command}\nprinted:\n{output}instead of:\n{wanted}")


known = run(0, "tmpublish --help")[1]
try:
    for option in re.findall(r"(?<=[ `\[])--[a-z-]+", text):
        if option not in known:
            fail(0, f"there is no option {option}")
    # The server comes first: the examples before its configuration ask it.
    for line, kind, block in sorted(blocks, key=lambda block: block[1] != "nginx"):
        if kind == "nginx":
            start_server(line, block)
        elif kind == "apache" or "<configuration" in block:
            if kind == "xml":
                xml.dom.minidom.parseString(block)
            for ending in ".tmz", ".dat", ".minisig", ".exe", ".dll":
                if ending not in block:
                    fail(line, f"the configuration does not name {ending}")
        elif kind == "sh" and "…" not in block:
            code, output = run(line, block)
            if code:
                fail(line, f"exit code {code}\n{output}")
        elif kind == "console":
            compare(line, block)
    # The server hands out what it should, and as it should.
    for name, wanted in ("TMW_version.dat", "no-cache"), ("TMW_3.6.0.3/_DBUpdates.tmz", "immutable"):
        if wanted not in run(0, f"curl -sI http://{mirrors['one']}/tmw/{name}")[1]:
            fail(0, f"{name} is not {wanted}")
    kinds = [kind for _, kind, _ in blocks]
    if kinds.count("console") < 5 or not {"sh", "nginx", "apache", "xml"} <= set(kinds):
        fail(0, f"blocks are missing: {kinds}")
    print("page_test: done")
finally:
    if os.path.exists("nginx.pid"):
        run(0, "kill $(cat nginx.pid)")
    shutil.rmtree(work, ignore_errors=True)
