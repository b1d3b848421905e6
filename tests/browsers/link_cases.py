"""What holds for links in every browser. A module for each browser makes tests of it (test_chromium.py, test_firefox.py)."""

import time

from browsers import DIRECTLY, write_page
from workplace import PORTAL, SAMPLE, STRANGER, Application, Requests, install

DIMMED = 0.9


def listed(*origins):
    """The policy that lets these origins start links without a question."""
    return {"AutoLaunchProtocolsFromOrigins": [{"protocol": "norvik", "allowed_origins": list(origins)}]}


class LinkCases:
    """`browser_class` comes from who uses this."""

    def setUp(self):
        install()

    def browser(self, policies, is_headless=False, command=DIRECTLY):
        browser = self.browser_class(policies, is_headless, command)
        self.addCleanup(browser.end)
        return browser

    def test_a_click_puts_the_application_in_place(self):
        for number in range(2):
            with self.subTest(round=number):
                began = time.monotonic()
                application = Application()
                application.remove()
                with self.browser_class(listed(PORTAL), number % 2 == 1) as browser:
                    browser.follow(PORTAL, f"norvik:{PORTAL}{SAMPLE}?round={number}")
                    clicked = time.monotonic()
                    self.assertEqual([0], browser.home.wait_for_code())
                    ended = time.monotonic()
                    application.wait_until_opened()
                    self.assertEqual(application.served_files(), application.files())
                print(f"round {number}: {clicked - began:.1f} s to the click, {ended - clicked:.1f} s to the files, {time.monotonic() - began:.1f} s in all", flush=True)
