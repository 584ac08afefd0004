"""What is known of mutants: which nothing can tell from the library, and how others ended before."""

import hashlib


class Equivalents:
    """The sites of a list, one a line: file, text of the line, change, reason.

      kelvofxds/str/fxStr.cpp @ if (size < 8) @ < -> <= @ eight bytes are copied either way

    Where lines with that text offer the same change again, the change has a number, `0 -> 1 #2`.
    Lines that start with # are left out, and empty ones."""

    def __init__(self, path, sites):
        by_name = {site.name(): site for site in sites}
        self.sites = set()
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if line and not line.startswith("#"):
                try:
                    self.sites.add(self.site_of(line, by_name))
                except ValueError as problem:
                    raise SystemExit(f"mutants.py: {path.name}:{number}: {problem}") from None

    @staticmethod
    def site_of(line, by_name):
        columns = [column.strip() for column in line.split(" @ ")]
        if len(columns) != 4 or not columns[3]:
            raise ValueError("no file, text, change and reason")
        change, _, which = columns[2].partition(" #")
        start = f"{columns[0]} @ {columns[1]} @ {change} @ "
        if start + (which or "1") not in by_name:
            raise ValueError("there is no such site")
        if not which and start + "2" in by_name:
            raise ValueError("several sites are like this: # and a number say which")
        return by_name[start + (which or "1")]


class Results:
    """How mutants ended, kept in a file as long as nothing has changed that they depend on."""

    def __init__(self, path, files, resumed):
        mark = self.mark_of(files)
        lines = path.read_text().splitlines() if resumed and path.exists() else []
        self.known = dict(line.split("\t") for line in lines[1:] if lines[0] == mark)
        self.file = open(path, "w", encoding="utf-8")
        for line in [mark] + [f"{name}\t{result}" for name, result in self.known.items()]:
            print(line, file=self.file, flush=True)

    @staticmethod
    def mark_of(files):
        together = hashlib.sha256()
        for file in sorted(files):
            together.update(f"{file} {file.stat().st_size}\n".encode() + file.read_bytes())
        return together.hexdigest()

    def add(self, site, result):
        print(f"{site.name()}\t{result}", file=self.file, flush=True)
