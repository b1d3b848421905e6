"""What the results depend on, and what is measured without running it."""

import os
import pathlib
import platform
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


def first_line(*command):
    """Of what a command writes, wherever it writes it."""
    done = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=True)
    return done.stdout.partition("\n")[0].strip()


def field(path, name):
    """A field of one of /proc's files of names and values."""
    match = re.search(rf"^{name}\s*:\s*(.*)$", pathlib.Path(path).read_text(), re.MULTILINE)
    return match.group(1) if match else "unknown"


def load():
    return " ".join(f"{value:.2f}" for value in os.getloadavg())


def commit():
    """The commit that was measured, and whether anything that is built differs from it."""
    changed = first_line("git", "status", "--porcelain", "--", "src", "bench", "cmake", "CMakeLists.txt")
    return first_line("git", "rev-parse", "HEAD") + (" and changes" if changed else "")


def facts():
    return {
        "commit": commit(),
        "processor": field("/proc/cpuinfo", "model name"),
        "processors": os.cpu_count(),
        "memory": field("/proc/meminfo", "MemTotal"),
        "kernel": platform.release(),
        "file system": first_line("stat", "--file-system", "--format=%T", "build"),
        "Wine": first_line("/usr/lib/wine/wine64", "--version"),
        "compiler": first_line("x86_64-w64-mingw32-g++-posix", "--version"),
        "server": first_line("/usr/sbin/nginx", "-v"),
        "curl": first_line("curl", "--version"),
        "load average before": load(),
    }


def module_sizes():
    return {width: (ROOT / "build" / width / "norvik.dll").stat().st_size for width in ("x64", "x86")}
