"""What norvikopen.exe shows to people when it is started for a link, without a browser."""

import subprocess
import unittest

import screen
from scripted_server import ScriptedServer
from workplace import (DRIVE, INSTALLED, PORTAL, PROGRAM, REFUSED, SAMPLE, Application, copy_of, install, run_windows, wait_until,
                       windows)

BIG = b"x" * 2 * 98_304  # a half of it is a whole number of the pieces that are read at a time


class DialogTest(unittest.TestCase):
    def setUp(self):
        self.server = ScriptedServer()
        self.addCleanup(self.server.close)
        install(self.server.address + "/apps/")
        Application().remove()

    def start(self, *arguments):
        program = windows(PROGRAM, *arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, program)
        return program

    @staticmethod
    def end(program):
        if program.poll() is None:
            program.kill()
            program.wait()

    def start_and_fail(self, *arguments):
        """The program, and the texts that it shows in the end."""
        program = self.start(*arguments)
        return program, screen.wait_for_text("Button: Close")

    @staticmethod
    def watch(program):
        """The first windows that were to be seen before the program ended."""
        seen = []
        while program.poll() is None and not seen:
            seen = screen.windows_shown()
        return seen

    def close(self, program):
        screen.press("Close")
        return program.wait(20)


class FailureTest(DialogTest):
    def test_a_refused_step_is_told_in_plain_words(self):
        program, texts = self.start_and_fail("norvik:" + PORTAL + REFUSED)
        screen.keep_picture("failure", screen.windows_shown()[0])
        self.assertEqual(1, self.close(program))
        self.assertEqual(["#32770: Norvik", "Static: 4 of 5 steps failed."], texts[:2])
        told = texts[2]
        self.assertIn("Step 1. To be fetched: http://elsewhere.example.net/stockroom/files/prices.csv", told)
        self.assertIn(f"comes nearest is '{PORTAL}/stockroom/' on line ", told)
        self.assertEqual(["Button: Close", "Button: Show log"], sorted(texts[3:]))

    def test_a_link_that_is_refused_is_told_without_a_log(self):
        program, texts = self.start_and_fail("norvik:file:///C:/start.xml")
        self.assertEqual(2, self.close(program))
        self.assertEqual(
            ["#32770: Norvik", "Static: This link cannot be used.",
             "Static: A link can start a manifest on the web only: behind 'norvik:' stands a URL that begins with http:// or "
             "https://.", "Button: Close"], texts)

    def test_a_missing_permission_file_is_told(self):
        (INSTALLED / "permit.xml").unlink()
        program, texts = self.start_and_fail("norvik:" + PORTAL + SAMPLE)
        self.assertEqual(3, self.close(program))
        self.assertEqual("Static: Nothing was installed or opened.", texts[1])
        self.assertIn(r"C:\Program Files\Norvik\permit.xml", texts[2])

    def test_the_log_is_shown_by_the_program_for_logs(self):
        kept = DRIVE / "kept.log"
        kept.unlink(missing_ok=True)
        self.register_program_for_logs(r'cmd /c copy "%1" C:\kept.log')
        program, _ = self.start_and_fail("norvik:" + PORTAL + REFUSED)
        screen.press("Show log")
        self.assertEqual(1, program.wait(20))
        wait_until(lambda: kept.exists() and "is not permitted." in kept.read_text(), "the log was not shown")

    def register_program_for_logs(self, command):
        for key, value in ((r"HKLM\Software\Classes\.log", "shown-log"),
                           (r"HKLM\Software\Classes\shown-log\shell\open\command", command)):
            self.assertEqual(0, run_windows("reg", "add", key, "/ve", "/d", value, "/f")[0])

    def test_quiet_shows_nothing(self):
        program = self.start("/quiet", "norvik:" + PORTAL + REFUSED)
        self.assertEqual([], self.watch(program))
        self.assertEqual(1, program.wait())


class ProgressTest(DialogTest):
    def hold_a_file(self):
        self.server.answer("/apps/start.xml", copy_of(self.server.address + "/apps/big.csv").encode())
        self.server.answer("/apps/big.csv", BIG, held=True)
        program = self.start("norvik:" + self.server.address + "/apps/start.xml")
        self.server.wait_until_held("/apps/big.csv")
        return program

    def test_a_long_run_shows_its_step_and_its_bytes(self):
        program = self.hold_a_file()
        texts = screen.wait_for_text("Static: 98,304 bytes")
        screen.keep_picture("progress", screen.windows_shown()[0])
        self.server.release("/apps/big.csv")
        self.assertEqual(0, program.wait(20))
        self.assertIn("Static: Step 1: big.csv", texts)
        self.assertEqual([], screen.windows_shown())
        self.assertEqual({"big.csv": BIG}, Application().files())

    def test_a_short_run_shows_nothing(self):
        program = self.start("norvik:" + PORTAL + SAMPLE)
        self.assertEqual([], self.watch(program))
        self.assertEqual(0, program.wait())
