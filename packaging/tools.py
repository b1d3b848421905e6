"""Running the tools that packages are made with."""

import os
import subprocess

from product import Failure


def run(*command, complains=True, **options):
    """What a tool writes. A complaint is a failure, even with a good exit code: wixl drops what it does not know. Where a tool
    does not complain, what it writes beside its output is no failure."""
    words = [str(word) for word in command]
    environment = {**os.environ, "TZ": "UTC", "LC_ALL": "C.UTF-8"}
    done = subprocess.run(words, capture_output=True, check=False, env=environment, **options)
    if done.returncode != 0 or (complains and done.stderr.strip()):
        told = (done.stdout + done.stderr).decode(errors="replace").strip()
        raise Failure(f"{words[0]} failed with the exit code {done.returncode}: {told}")
    return done.stdout.decode(errors="replace")
