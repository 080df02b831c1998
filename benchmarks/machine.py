"""What a figure depends on beside the code: processor, system, compiler, flags, packages."""

import json
import os
import platform
import re
import shlex
import subprocess
from pathlib import Path

# Of the packages that the benchmarks install, those whose code runs in them.
PEERS = ["libbenchmark-dev", "liborocos-kdl-dev", "libassimp-dev", "libocct-modeling-algorithms-dev"]


def said_by(*command, folder=None):
    """What a command prints, or "" where there is no such command."""
    try:
        done = subprocess.run(command, capture_output=True, encoding="utf-8", cwd=folder, check=False)
    except OSError:
        return ""
    return done.stdout.strip() if done.returncode == 0 else ""


def field_of(text, name):
    """The value of the first line "name : value" or "name=value" of `text`, or ""."""
    match = re.search(rf"^{re.escape(name)}\s*[:=]\s*(.*)$", text, re.MULTILINE)
    return match[1].strip().strip('"') if match else ""


def read(path):
    try:
        return Path(path).read_text(encoding="utf-8")
    except OSError:
        return ""


def versions(packages):
    """Versions of Debian packages; "" for one that is not installed."""
    return {name: said_by("dpkg-query", "-W", "-f", "${Version}", name) for name in packages}


def compiler_of(build):
    """Name and version of the compiler of a build, as it says them itself, without its path."""
    path = field_of(read(build / "CMakeCache.txt").replace(":FILEPATH", ""), "CMAKE_CXX_COMPILER")
    line = (said_by(path or "c++", "--version").splitlines() or [""])[0]
    return re.sub(r"^\S*/", "", line)


def flags_in(command):
    """The words of a compile command that change the code that comes out of it."""
    wanted = re.compile(r"-(O|f|m|std=|g|DNDEBUG)")
    return " ".join(word for word in shlex.split(command) if wanted.match(word))


def flags_of(build, source="kinematics/KMachine_forward.cpp"):
    entries = json.loads(read(build / "compile_commands.json") or "[]")
    commands = [e["command"] for e in entries if e["file"].endswith(source)]
    return flags_in(commands[0]) if commands else ""


def commit_of(root):
    name = said_by("git", "rev-parse", "--short=10", "HEAD", folder=root)
    changed = said_by("git", "status", "--porcelain", "--untracked-files=no", folder=root)
    # The results themselves are what a run changes.
    others = [line for line in changed.splitlines() if "benchmarks/results." not in line]
    return name + (" with changes" if others else "")


def facts(root, build):
    """Names and values, in the order in which they are said. No path, no name of a host."""
    cpu = read("/proc/cpuinfo")
    kilobytes = field_of(read("/proc/meminfo"), "MemTotal").split()
    memory = f"{int(kilobytes[0]) / 2**20:.0f} GiB" if kilobytes else ""
    return {
        "commit": commit_of(root),
        "processor": field_of(cpu, "model name") or platform.machine(),
        "cores": str(len(os.sched_getaffinity(0))),
        "memory": memory,
        "system": field_of(read("/etc/os-release"), "PRETTY_NAME"),
        "kernel": f"{platform.system()} {platform.release()}",
        "compiler": compiler_of(build),
        "flags": flags_of(build),
        **versions(PEERS),
    }
