"""The rooms of the house, read from rooms.txt."""

from pathlib import Path

# Who builds a program may know every room.
PROGRAMS = ("examples", "tools", "tests", "bench")


class Rooms:
    def __init__(self, root):
        self.root = Path(root)
        self.listed = {}  # the rooms that each room names, lowest first
        for line in (self.root / "rooms.txt").read_text().splitlines():
            if line and not line.startswith("#"):
                room, _, below = line.partition(":")
                self.listed[room] = below.split()

    def known_to(self, room):
        """The room, the rooms that it names, and what those know."""
        known = {room}
        for below in self.listed[room]:
            known |= self.known_to(below)
        return known

    def of(self, path):
        """The room or program that a file, given relative to the root, belongs to."""
        for folder in path.parents:
            if str(folder) in self.listed:
                return str(folder)
        return path.parts[0]

    def folders(self):
        """The folders at the top that hold the project's sources."""
        return ["include", *dict.fromkeys(Path(room).parts[0] for room in self.listed), *PROGRAMS]

    def sources(self, suffixes=(".h", ".cpp")):
        """The project's sources, relative to the root."""
        for folder in self.folders():
            for path in sorted((self.root / folder).rglob("*")):
                if path.suffix in suffixes and path.is_file():
                    yield path.relative_to(self.root)
