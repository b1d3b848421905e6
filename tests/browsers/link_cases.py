"""What holds for links in every browser. A module for each browser makes tests of it (test_chromium.py, test_firefox.py)."""

import time

import screen
from browsers import QUIETLY, REGISTERED, numbers, write_sample
from scripted_server import ScriptedServer
from workplace import (INSTALLED, NEVER_SECONDS, PART, PORTAL, REFUSED, SAMPLE, SECURE, STRANGER, Application, Requests, copy_of,
                       install, run_windows, wait_until)

ROUNDS = 20
ROUNDS_OF_A_BROWSER = 5
MANIFEST = f"norvik:{PORTAL}{SAMPLE}"
PLACE = (500, 600)  # where pages are white
DIMMED = 0.9

# What a link says, and the exit code of the program that gets it. 2: the link itself is refused; 1: the permission file refuses.
HOSTILE = {
    "2,001 characters": (f"{MANIFEST}?{'x' * (2001 - len(PORTAL + SAMPLE) - 1)}", 2),
    "a local file": ("norvik:file:///C:/windows/win.ini", 2),
    "a path": (r"norvik:C:\windows\start.xml", 2),
    "a share": (r"norvik:\\server\share\start.xml", 2),
    "a share as a URL": ("norvik:file://server/share/start.xml", 2),
    "a host of the scheme's own": (f"norvik://{PORTAL[7:]}{SAMPLE}", 2),
    "the scheme twice": (f"norvik:{MANIFEST}", 2),
    "a script": ("norvik:javascript:alert(1)", 2),
    "another scheme": (f"norvik:ftp{PORTAL[4:]}{SAMPLE}", 2),
    "an option": (f"norvik:--permit=C:\\permit.xml {PORTAL}{SAMPLE}", 2),
    "an option of Windows": (f"norvik:/quiet {PORTAL}{SAMPLE}", 2),
    "an option behind a quote": (f'norvik:" --permit "{PORTAL}{SAMPLE}', 2),
    "a folder above": (f"norvik:{PORTAL}/stockroom/../stockroom/start.xml", 2),
    "a variable": (f"norvik:%OS%{PORTAL}{SAMPLE}", 2),
    "nothing": ("norvik:", 2),
    "a server that is not permitted": (f"norvik:{STRANGER}{SAMPLE}", 1),
    "a permitted server as a user's name": (f"norvik:{PORTAL}@127.0.0.1{STRANGER[16:]}{SAMPLE}", 1),
    "not ASCII": (f"norvik:{PORTAL}\N{FULLWIDTH SOLIDUS}stockroom/start.xml", 1),
}

# What a link says behind the manifest's URL, and what is asked for there: no second argument, and nothing that was decoded.
ODD = {
    '?a=" --permit "b"': "?a=%22%20--permit%20%22b%22",
    "?a=b\\\\c\\": "?a=b%5C%5Cc%5C",
    "?a=%22%20/quiet%0A": "?a=%22%20/quiet%0A",
    "?a=\n\tb": "?a=b",
    "?\N{LATIN SMALL LETTER A WITH DIAERESIS}\N{SNOWMAN}": "?%C3%A4%E2%98%83",
    "?&;$()!~*,=@+:|<>^`{}": "?&;$()!~*,=@+:%7C%3C%3E%5E%60%7B%7D",
}


class LinkCases:
    """`browser_class` comes from who uses this."""

    def setUp(self):
        install()
        self.application = Application()
        self.application.remove()

    def listed(self, *origins):
        """The policy that norvik.exe makes to let these origins start links without a question."""
        folder = PART / "kit" / str(next(numbers))
        folder.parent.mkdir(exist_ok=True)
        words = [word for origin in origins for word in ("--origin", origin)]
        code, text = self.run_norvik("kit", *words, "--out", "Z:" + str(folder).replace("/", "\\"))
        self.assertEqual(0, code, text)
        return (folder / self.browser_class.kit_file).read_text()

    def run_norvik(self, *words):
        return run_windows(str(INSTALLED / "norvik.exe"), "browser", *words)

    def assert_in_place(self):
        self.application.wait_until_opened()
        self.assertEqual(self.application.served_files(), self.application.files())

    def test_a_click_puts_the_application_in_place(self):
        for number in range(0, ROUNDS, ROUNDS_OF_A_BROWSER):
            is_headless = number // ROUNDS_OF_A_BROWSER % 2 == 1
            with self.browser_class(self.listed(PORTAL), is_headless) as browser:
                for lap in range(number, number + ROUNDS_OF_A_BROWSER):
                    self.go_round(browser, lap)

    def go_round(self, browser, number):
        """The sample page, with its script and without it in turns."""
        has_script = number % 2 == 0
        self.application.remove()
        began = time.monotonic()
        browser.open(PORTAL + write_sample(f"?round={number}", has_script))
        browser.click()
        self.assertEqual(0, browser.home.wait_for_code(), f"round {number}")
        self.assert_in_place()
        self.assertEqual(has_script, browser.state().startswith("Stockroom will open in a moment."))
        print(f"round {number}: {time.monotonic() - began:.1f} s", flush=True)

    def assert_asks(self, origin, policy):
        """The page is dimmed by a question, and nothing starts."""
        requests = Requests()
        with self.browser_class(policy, is_headless=False) as browser:
            browser.prepare(origin, MANIFEST)
            self.assertLess(DIMMED, screen.brightness_at(*PLACE))
            browser.click()
            wait_until(lambda: screen.brightness_at(*PLACE) < DIMMED, "the browser does not ask")
            time.sleep(NEVER_SECONDS)
            screen.keep_picture("question-" + self.browser_class.__name__.lower())
            self.assertEqual([], browser.home.links())
        self.assertEqual([], requests.of_programs())

    def test_an_origin_that_is_not_listed_asks_first(self):
        self.assert_asks(STRANGER, self.listed(PORTAL))

    def test_without_a_policy_the_browser_asks_first(self):
        self.assert_asks(PORTAL, self.browser_class.no_policy)

    def test_where_nobody_can_be_asked_nothing_starts(self):
        requests = Requests()
        with self.browser_class(self.browser_class.no_policy, is_headless=True) as browser:
            browser.follow(PORTAL, MANIFEST)
            time.sleep(NEVER_SECONDS)
            self.assertEqual([], browser.home.links())
        self.assertEqual([], requests.of_programs())

    def test_a_refused_manifest_is_told(self):
        with self.browser_class(self.listed(PORTAL), is_headless=False) as browser:
            browser.follow(PORTAL, f"norvik:{PORTAL}{REFUSED}")
            screen.wait_for_text("Static: 4 of 5 steps failed.")
            screen.press("Close")
            self.assertEqual(1, browser.home.wait_for_code())

    def test_hostile_links_fetch_nothing(self):
        requests = Requests()
        with self.browser_class(self.listed(PORTAL), is_headless=True, command=QUIETLY) as browser:
            for name, (link, code) in HOSTILE.items():
                with self.subTest(name):
                    browser.follow(PORTAL, link)
                    self.assertEqual(code, browser.home.wait_for_code(), browser.home.links()[-1])
        self.assertEqual([], requests.of_programs())
        self.assertEqual({}, self.application.files())

    def test_what_arrives_is_what_is_fetched(self):
        with self.browser_class(self.listed(PORTAL), is_headless=True, command=QUIETLY) as browser:
            for text, asked in ODD.items():
                with self.subTest(text):
                    requests = Requests()
                    browser.follow(PORTAL, MANIFEST + text)
                    self.assertEqual(0, browser.home.wait_for_code())
                    self.assertEqual(MANIFEST + asked, browser.home.links()[-1])
                    self.assertEqual(f"GET {SAMPLE}{asked}", requests.of_programs()[0])

    def test_a_site_with_a_private_authority_is_trusted_as_others_are(self):
        with self.browser_class(self.browser_class.with_authority(self.listed(SECURE)), is_headless=True) as browser:
            browser.follow(SECURE, f"norvik:{SECURE}{SAMPLE}")
            self.assertEqual(0, browser.home.wait_for_code())
            self.assert_in_place()

    def test_what_is_registered_is_what_starts(self):
        self.addCleanup(self.switch, "off")
        self.assertEqual(0, self.switch("on"))
        with self.browser_class(self.listed(PORTAL), is_headless=True, command=REGISTERED) as browser:
            browser.follow(PORTAL, MANIFEST)
            self.assertEqual(0, browser.home.wait_for_code())
            self.assert_in_place()
            self.assertEqual(1, self.switch("off"))
            requests = Requests()
            browser.follow(PORTAL, f"{MANIFEST}?again")
            browser.home.wait_for_code()
            time.sleep(NEVER_SECONDS)
            self.assertEqual(2, len(browser.home.links()))
            self.assertEqual([], requests.of_programs())

    def switch(self, word):
        """What `status` answers then."""
        code, text = self.run_norvik(word)
        self.assertEqual(0, code, text)
        return self.run_norvik("status")[0]

    def test_a_second_click_does_not_run_it_twice(self):
        server = ScriptedServer()
        self.addCleanup(server.close)
        install(server.address + "/apps/")
        server.answer("/apps/start.xml", copy_of(server.address + "/apps/slow.csv").encode())
        server.answer("/apps/slow.csv", b"slow", held=True)
        with self.browser_class(self.listed(PORTAL), is_headless=True) as browser:
            browser.follow(PORTAL, f"norvik:{server.address}/apps/start.xml")
            server.wait_until_held("/apps/slow.csv")
            browser.click()
            self.assertEqual(0, browser.home.wait_for_code())
            self.assertEqual(["/apps/start.xml", "/apps/slow.csv"], server.asked())
            self.assertEqual(1, server.release("/apps/slow.csv"))
            self.assertEqual(0, browser.home.wait_for_code())
        self.assertEqual({"slow.csv": b"slow"}, self.application.files())
