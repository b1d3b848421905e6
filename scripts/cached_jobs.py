"""Runs commands in parallel, and none of them twice: what succeeded is not run again until something it reads has changed.

A job's stamp, a file below build/lint/, holds the hash of everything that the result depends on.
"""

import concurrent.futures
import functools
import hashlib
import os
import pathlib
import re
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
QUOTED_INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)
COUNT_OF_WARNINGS = re.compile(r"^\d+ (?:warnings?|errors?).* generated\.\n", re.MULTILINE)  # system headers included


class Job:
    """A command, and the files and texts on which its result depends. `name` is unique among the jobs of a check."""

    def __init__(self, name, command, files, texts=(), text=None):
        self.name = name
        self.command = command
        self.input = text
        self.key = hash_of(*map(content_of, sorted(set(files))), *texts, "\0".join(command), text or "", tool(command[0]))


def hash_of(*parts):
    digest = hashlib.sha256()
    for part in parts:
        data = part.encode() if isinstance(part, str) else part
        digest.update(b"%d:" % len(data) + data)
    return digest.hexdigest()


@functools.lru_cache(maxsize=None)
def content_of(path):
    return path.read_bytes()


@functools.lru_cache(maxsize=None)
def tool(name):
    """Tells one version of an installed program from another, without starting it."""
    path = os.path.realpath(shutil.which(name) or name)
    status = os.stat(path)
    return f"{path} {status.st_size} {status.st_mtime_ns}"


@functools.lru_cache(maxsize=None)
def direct_includes(path, folders):
    names = QUOTED_INCLUDE.findall(content_of(path))
    candidates = ((folder / name.decode()).resolve() for name in names for folder in (path.parent, *folders))
    return frozenset(candidate for candidate in candidates if candidate.is_file())


def with_includes(path, folders):
    """The file and all files of the project that it includes, however indirectly."""
    found, waiting = set(), {path}
    while waiting:
        found |= waiting
        waiting = {name for file in waiting for name in direct_includes(file, folders)} - found
    return found


def run(check, jobs):
    """Runs the jobs whose stamp is out of date; prints what the failing ones wrote. True when none failed."""
    stamps = ROOT / "build" / "lint" / check
    stamps.mkdir(parents=True, exist_ok=True)
    due = [job for job in jobs if stamp_of(stamps, job) != job.key]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda job: run_job(stamps, job), due)
        outputs = [output for output in results if output is not None]
    for message in dict.fromkeys(message for output in outputs for message in messages_of(output)):
        print(message)  # what several files say about one header is said once
    return not outputs


def messages_of(output):
    """The messages of a compiler or a checker, each with the lines that belong to it, and with paths from the root on."""
    lines = output.replace(f"{ROOT}/", "").rstrip()
    return re.split(r"\n(?=\S+:\d+:\d+: (?:error|warning): )", lines)


def stamp_of(stamps, job):
    path = stamps / job.name
    return path.read_text() if path.exists() else None


def run_job(stamps, job):
    """None when the job succeeds, else what it wrote."""
    done = subprocess.run(job.command, input=job.input, cwd=ROOT, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)
    if done.returncode:
        return COUNT_OF_WARNINGS.sub("", done.stdout) or f"{job.name}: exit code {done.returncode}"
    (stamps / job.name).write_text(job.key)
    return None
