#!/usr/bin/env python3
"""Draws the floors of the house, as check_seam.sh knows them, into docs/floors*.svg: the rooms of
src/, and the rooms within jet/. An arrow leads to what a room may include; what another
arrow implies is left out.
    draw_floors.py            writes the pictures
    draw_floors.py --check    fails if they are not what it would write"""
import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
PICTURES = {"floors.svg": "", "floors-jet.svg": "jet/"}
WIDTH, HEIGHT, GAP, STEP = 13.5, 30, 18, 84  # of a letter's box, of a box, between boxes, a floor


def table():
    text = (TOP / "scripts/check_seam.sh").read_text()
    lines = re.search(r"^floors='\n(.*?)^'", text, re.M | re.S)[1].splitlines()
    return {words[0]: set(words[1:]) for words in map(str.split, lines)}


def within(rooms, prefix):
    """The rooms below the prefix, each standing for all that lies in it, and what they include."""
    def name_of(room):
        return room[len(prefix):].split("/")[0] if room.startswith(prefix) else None

    result = {}
    for room, below in rooms.items():
        if name_of(room):
            included = {name_of(other) for other in below} - {None, name_of(room)}
            result.setdefault(name_of(room), set()).update(included)
    # A single header that a room may know of another one.
    return {room: {other for other in below if other in result} for room, below in result.items()}


def reachable(rooms, start):
    found, todo = set(), list(rooms[start])
    while todo:
        room = todo.pop()
        if room not in found:
            found.add(room)
            todo.extend(rooms[room])
    return found


def floor_of(rooms, room):
    return 1 + max((floor_of(rooms, other) for other in rooms[room]), default=-1)


def arrows(rooms):
    for room, below in rooms.items():
        implied = set().union(*(reachable(rooms, other) for other in below)) if below else set()
        for other in sorted(below - implied):
            yield room, other


def draw(rooms):
    floors = {}
    for room in rooms:
        floors.setdefault(floor_of(rooms, room), []).append(room)
    wide = {room: max(60, 20 + WIDTH * 0.62 * len(room)) for room in rooms}
    total = max(sum(wide[room] + GAP for room in row) for row in floors.values()) + GAP
    highest = max(floors)
    place, leads = {}, {room: [] for room in rooms}
    for room, other in arrows(rooms):
        leads[room].append(other)
    for floor, row in sorted(floors.items()):
        # Above the middle of what a room leads to, so that few arrows cross.
        row.sort(key=lambda room: (sum(place[other][0] for other in leads[room]) /
                                   max(1, len(leads[room])), room))
        spare = (total - sum(wide[room] for room in row)) / (len(row) + 1)
        x = spare
        for room in row:
            place[room] = (x, 20 + (highest - floor) * STEP)
            x += wide[room] + spare
    height = 40 + highest * STEP + HEIGHT
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{total:.0f}" height="{height}" '
             'font-family="DejaVu Sans, sans-serif" font-size="13">',
             '<defs><marker id="tip" viewBox="0 0 8 8" refX="8" refY="4" markerWidth="7" '
             'markerHeight="7" orient="auto"><path d="M0 0L8 4L0 8z" fill="#789"/></marker></defs>',
             f'<rect width="{total:.0f}" height="{height}" fill="#fff"/>']
    for room, other in arrows(rooms):
        (x, y), (to_x, to_y) = place[room], place[other]
        lines.append(f'<line x1="{x + wide[room] / 2:.0f}" y1="{y + HEIGHT}" '
                     f'x2="{to_x + wide[other] / 2:.0f}" y2="{to_y}" stroke="#789" '
                     'marker-end="url(#tip)"/>')
    for room, (x, y) in place.items():
        lines.append(f'<rect x="{x:.0f}" y="{y}" width="{wide[room]:.0f}" height="{HEIGHT}" rx="4" '
                     'fill="#eef3f8" stroke="#456"/>')
        lines.append(f'<text x="{x + wide[room] / 2:.0f}" y="{y + 20}" '
                     f'text-anchor="middle">{room}</text>')
    return "\n".join(lines) + "\n</svg>\n"


def main():
    rooms = table()
    old = False
    for name, prefix in PICTURES.items():
        picture = draw(within(rooms, prefix))
        path = TOP / "docs" / name
        if sys.argv[1:] != ["--check"]:
            path.write_text(picture)
        elif path.read_text() != picture:
            print(f"FAILED: docs/{name} is not what scripts/check_seam.sh knows: run {sys.argv[0]}")
            old = True
    sys.exit(old)


main()
