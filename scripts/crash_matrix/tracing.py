"""Runs a chain of processes under strace: records the calls that change files, and stops at one.

strace counts the calls of every process anew, so that "the n-th write" means one in each of them. The
chain is therefore cut into links, one for each program that it starts, and every link gets the state
of the disk in which the one before it has left it.
"""

import os
import re
import signal
import subprocess
from dataclasses import dataclass
from pathlib import Path

import world

# Calls that change a file through a descriptor, and calls that name what they change.
BY_DESCRIPTOR = ("write pwrite64 writev pwritev pwritev2 copy_file_range sendfile ftruncate fallocate "
                 "fsync fdatasync sync_file_range fchmod").split()
BY_NAME = ("rename renameat renameat2 unlink unlinkat rmdir link linkat symlink symlinkat mkdir "
           "mkdirat truncate chmod fchmodat").split()
OPENING = ["open", "openat", "creat"]
CHANGING = BY_DESCRIPTOR + BY_NAME + OPENING

QUICK = "--seccomp-bpf"  # stops at the traced calls only; signals are not injected then

# A process that waits for a lock tries ten times, which must not be over at once.
NO_WAITS = ["-e", "inject=clock_nanosleep,nanosleep:retval=0:delay_exit=30000"]
LIMIT = 120  # seconds for one run

LINE = re.compile(r"(\d+) +(?:(\w+)\((.*)|<\.\.\. (\w+) resumed>(.*)|\+\+\+ (.*) \+\+\+)$")
QUOTED = re.compile(r'"((?:[^"\\]|\\.)*)"')
DESCRIPTOR = re.compile(r"^[^,<]*<((?:[^>\\]|\\.)*)>")
PROGRAM = re.compile(r'^"((?:[^"\\]|\\.)*)", \[(.*?)\], 0x')


@dataclass(frozen=True)
class Call:
    name: str
    number: int  # among the calls of that name by its process
    path: str    # in its home, without what is made up anew in every run
    turn: int    # among those of them with that path


@dataclass(frozen=True)
class Link:
    state: Path    # of the disk when its program starts
    command: tuple  # the program first; {home} stands for the home
    calls: tuple    # that change a file, in their order


def _text(quoted):
    return quoted.encode("latin-1").decode("unicode_escape").encode("latin-1").decode("utf-8")


def _events(trace):
    """Yields process, name, arguments and result ("" if the process died in the call)."""
    begun = {}
    for line in trace.read_text(encoding="latin-1").splitlines():
        match = LINE.match(line)
        if not match:
            continue
        process, name, rest, resumed, tail, end = match.groups()
        if end is not None:
            if process in begun:
                yield (process, *begun.pop(process), "")
            yield process, "", "", end
        elif name and rest.endswith("<unfinished ...>"):
            begun[process] = name, rest.removesuffix("<unfinished ...>")
        else:
            if resumed:
                name, rest = resumed, begun.pop(process, ("", ""))[1] + tail
            arguments, _, result = rest.rpartition(" = ")
            yield process, name, arguments, result


def _changed(home, name, arguments):
    """The paths of a call that lie in the home, relative to it."""
    folder = DESCRIPTOR.match(arguments)
    folder = _text(folder[1]) if folder else ""
    if name == "copy_file_range":  # its target is its third argument
        folder = _text(DESCRIPTOR.match(arguments.split(", ", 2)[2])[1])
    if name in BY_DESCRIPTOR:
        paths = [folder]
    else:
        paths = [os.path.join(folder, _text(path)) for path in QUOTED.findall(arguments)]
    prefix = f"{home}/"
    return [re.sub(r"\d{6,}", "#", path[len(prefix):]) for path in paths if path.startswith(prefix)]


def _start(home, command, options, member):
    """Runs a command in a home under strace and returns its exit code; nothing if it hung."""
    command = [word.format(home=home) for word in command]
    variables = world.environment(home)
    reading, writing = os.pipe()
    if member:  # as a program in the middle of the chain, which leaves the waiting to its parent
        variables["TMW_UPDATER_CHAIN"] = str(writing)
    folder, program = os.path.split(command[0])
    running = subprocess.Popen(
        ["strace", "-f", "-qq", *options, f"./{program}", *command[1:]],
        cwd=folder, env=variables, pass_fds=[writing], stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
    os.close(writing)
    try:
        shown, _ = running.communicate(timeout=LIMIT)
    except subprocess.TimeoutExpired:
        os.killpg(running.pid, signal.SIGKILL)
        running.communicate()
        return None, "it hung"
    finally:
        os.close(reading)
    return running.returncode, shown.decode(errors="replace")


def run(home, command):
    """The whole chain without its waits: its exit code and what it showed."""
    return _start(home, command, [QUICK, "-e", "trace=clock_nanosleep,nanosleep", "-o", "/dev/null", *NO_WAITS],
                  member=False)


def stop(home, link, call, number, how):
    """Runs a link and all that follows it, with a signal or an error at a call of that number.

    Returns the path and the turn of the call that it met, if it met one, the number that the wanted
    call had in this run, if it came, and that of the last one before it with the same path: a
    download may come in other pieces than when it was recorded."""
    trace = home.parent / f"{home.name}.trace"
    is_kill = how.startswith("signal")
    options = [*([] if is_kill else [QUICK]), "-y", "-o", trace,
               "-e", f"trace={call.name},clock_nanosleep,nanosleep", *NO_WAITS,
               "-e", f"inject={call.name}:{how}:when={number}"]
    _start(home, link.command, options, member=True)
    first, count, exact, near, turns = None, 0, 0, 0, {}
    for process, name, arguments, result in _events(trace):
        first = first or process
        if process != first or name != call.name:
            continue
        count += 1
        path = (_changed(home, name, arguments) or [""])[0]
        turns[path] = turns.get(path, 0) + (0 if result.startswith("-1") and "INJ" not in result else 1)
        if count == number:
            has_met = result == "?" if is_kill else "INJECTED" in result
            return (path, turns[path]) if has_met else None, exact, near
        if path == call.path:
            near = count
            exact = count if turns[path] == call.turn else exact
    return None, exact, near


def explore(start, command, home, folder, codes=(0,)):
    """Cuts a chain into its links. Their states are kept in the folder. It must end with a code of
    these."""
    links, state = [], start
    while True:
        calls, following = _record(state, command, home, folder, codes)
        links.append(Link(state, tuple(command), tuple(calls)))
        if following is None:
            return links
        # The next program is killed when it starts; this one goes on to its end.
        world.fill(home, state)
        program = following[0].format(home=home)
        _start(home, command, ["-o", "/dev/null", "-e", "trace=execve", "-P", program,
                               "-e", "inject=execve:signal=KILL"], member=True)
        state, command = folder / f"link{len(links)}", following
        world.fill(state, home)


def _record(state, command, home, folder, codes):
    world.fill(home, state)
    trace = folder / "trace"
    code, shown = _start(home, command, [QUICK, "-y", "-s", "512", "-o", trace, "-e",
                                         f"trace={','.join(CHANGING)},execve,clock_nanosleep,nanosleep",
                                         *NO_WAITS], member=True)
    if code not in codes:
        raise SystemExit(f"an undisturbed run failed ({code}): {shown}")
    calls, numbers, turns, first, following = [], {}, {}, None, None
    for process, name, arguments, result in _events(trace):
        first = first or process
        if process != first:
            if name == "execve" and following is None:
                words = [_text(word).replace(str(home), "{home}")
                         for word in QUOTED.findall(PROGRAM.match(arguments)[2])]
                following = [_text(PROGRAM.match(arguments)[1]).replace(str(home), "{home}"), *words[1:]]
            continue
        numbers[name] = numbers.get(name, 0) + 1
        if name not in CHANGING or result.startswith("-1"):
            continue
        paths = _changed(home, name, arguments)
        if not paths:
            continue
        turn = turns[name, paths[0]] = turns.get((name, paths[0]), 0) + 1
        if name in OPENING and "O_TRUNC" not in arguments and "O_EXCL" not in arguments:
            if "O_CREAT" not in arguments or turn > 1 or (state / paths[0]).exists():
                continue
        calls.append(Call(name, numbers[name], paths[0], turn))
    return calls, following
