"""What is tried: programs that change an installation, each with the state that it begins with."""

from dataclasses import dataclass
from pathlib import Path

import judge
import tracing
import world


@dataclass
class Stage:
    name: str
    start: Path    # the home that it begins with
    command: list  # {home} stands for the home; the run that mends is started by it too
    judge: judge.Judge


def _undisturbed(made, start, command, end, nothing_to_do=0):
    world.fill(end, start)
    code, shown = tracing.run(end, command)
    if code != 0:
        raise SystemExit(f"an undisturbed run failed ({code}): {shown}")
    return judge.Judge(made, start, end, {0, nothing_to_do})


def stages(made: world.World, folder: Path):
    """All of them, in the order in which a user would meet them."""
    update = ["{home}/product/tm/TmWebUpdate", "-y", "-w", made.url]
    updated = folder / "updated"
    yield Stage("update", made.start, update, _undisturbed(made, made.start, update, updated))
    back = ["{home}/product/tm/TmRollback", "--yes"]
    yield Stage("rollback", updated, back,
                _undisturbed(made, updated, back, folder / "rolled_back", nothing_to_do=3))
