"""Reads the #include lines of all sources and reports those against the direction of the folders.

    tools -> toolkit -> adapter, geometry -> kinematics -> platform

Usage: includes.py ROOT. Prints one line per fault (file:line: what) and exits 1 when there is one.
"""

import re
import sys
from pathlib import Path

# What the sources of a folder may include, as folders; its own folder always. The longest match of
# a path counts. "interface" stands for the installed headers of all but the toolkit, "installed" for all of them.
MAY_INCLUDE = {
    "platform/rotations": [],
    "platform/text": [],
    "platform/os": ["platform/text"],
    "platform/zgeo": ["platform/rotations", "platform/text", "platform/os"],
    "platform/solidra": ["platform/os"],
    "platform/ombra": ["platform/rotations"],
    "kinematics": ["platform"],
    "geometry": ["platform", "kinematics"],
    "adapter": ["platform", "kinematics", "interface"],
    "toolkit": ["interface", "platform/text", "platform/rotations"],
    "tools": ["installed", "platform/text", "platform/rotations"],
    "examples": ["toolkit"],
    "benchmarks": ["platform", "kinematics", "geometry", "adapter", "toolkit", "tests/support",
                   "tests/solidra"],
    "fuzz": ["platform", "kinematics", "geometry", "adapter", "toolkit", "tests/support"],
    "tests": ["platform", "kinematics", "geometry", "adapter", "toolkit", "tools"],
}

# The one list of installed headers, and how its entries look.
INSTALL_LIST = "cmake/KorvoInstall.cmake"
HEADER = re.compile(r"\b(?:adapter|geometry|kinematics|platform|toolkit)/[\w/]+\.h\b")
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')


def folder_of(path):
    """The entry of MAY_INCLUDE that `path` (from the root, with "/") lies in, or None."""
    matches = [f for f in MAY_INCLUDE if path.startswith(f + "/")]
    return max(matches, key=len, default=None)


def is_allowed(source, header, installed):
    own = folder_of(source)
    if header.startswith(own + "/"):
        return True
    for target in MAY_INCLUDE[own]:
        if target == "installed" and header in installed:
            return True
        if target == "interface" and header in installed and not header.startswith("toolkit/"):
            return True
        if header.startswith(target + "/"):
            return True
    return False


def fault(root, installed, source, bracket, header):
    """What is wrong with one include of `source`, or None."""
    ours = folder_of(header) is not None
    if bracket == "<":
        return f"<{header}> is ours: write it in quotes" if ours else None
    if not ours or ".." in header.split("/"):
        return f'"{header}" is not a path from the root'
    if not (root / header).is_file():
        return f'"{header}" does not exist'
    if not is_allowed(source, header, installed):
        return f'{folder_of(source)} must not include "{header}"'
    if source in installed and header not in installed:
        return f'an installed header must not include "{header}", which is not installed'
    return None


def sources(root):
    for folder in sorted({f.split("/")[0] for f in MAY_INCLUDE}):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path


def faults(root):
    """All faults below `root` and the number of files read."""
    found = []
    count = 0
    installed = set(HEADER.findall((root / INSTALL_LIST).read_text(encoding="utf-8")))
    for path in sources(root):
        name = path.relative_to(root).as_posix()
        if folder_of(name) is None:
            found.append(f"{name}: lies in no folder of the architecture")
            continue
        count += 1
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            include = INCLUDE.match(line)
            what = include and fault(root, installed, name, *include.groups())
            if what:
                found.append(f"{name}:{number}: {what}")
    return found, count


def main():
    found, count = faults(Path(sys.argv[1]))
    print(*found, sep="\n")
    print(f"{count} files read, {len(found)} faults")
    return 1 if found or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
