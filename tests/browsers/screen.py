"""What is to be seen: the windows of norvikopen.exe, and pictures of the screen."""

import os
import subprocess

from workplace import DIALOGS, PART, ROOT, run_windows, wait_until

def windows_shown():
    """The windows of the program that are to be seen now, as the screen numbers them."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Norvik$"], capture_output=True, text=True)
    return found.stdout.split()


def texts():
    """The texts in the windows of the program, as a screen reader gets them."""
    return run_windows(DIALOGS)[1].splitlines()


def wait_for_text(text):
    """All texts, once this one is among them. The progress dialog may be there before the one that is meant."""
    return wait_until(lambda: text in (shown := texts()) and shown, f"'{text}' was not shown")


def press(button):
    code, _ = run_windows(DIALOGS, "press", button)
    if code:
        raise AssertionError(f"there is no button '{button}'")


def picture(name, window="root"):
    """A window as a file, or the whole screen."""
    file = PART / f"{name}.png"
    subprocess.run(["import", "-window", window, str(file)], check=True)
    return file


def brightness_at(x, y):
    """How bright a place of the screen is, from 0 to 1."""
    shown = subprocess.run(["convert", str(picture("now")), "-format", f"%[fx:p{{{x},{y}}}.intensity]", "info:"],
                           capture_output=True, text=True, check=True)
    return float(shown.stdout)


def keep_picture(name, window="root"):
    """Keeps a picture for the pages below docs/, when that is what the run is for."""
    shown = picture(name, window)
    if os.environ.get("NORVIK_WRITE_PICTURES"):
        (ROOT / "docs" / "pictures").mkdir(exist_ok=True)
        kept = ROOT / "docs" / "pictures" / f"{name}.png"
        small = ["-crop", "x400+0+0", "+repage", "-strip", "+dither", "-colors", "64"]
        subprocess.run(["convert", str(shown), *small, str(kept)], check=True)
