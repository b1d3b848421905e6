"""Real browsers, each start with a profile, a home and policies of its own, in which one program stands for links.

What the system would hand to norvikopen.exe goes to a script, which notes it, starts the program and notes its exit code.
"""

import html
import itertools
import json
import os
import shlex
import shutil
import subprocess
import time

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

from marionette import Marionette
from workplace import AUTHORITY, PART, PORTAL, PROGRAM, ROOT, SAMPLE, SECURE_WEB, WEB, WINE, wait_until

START_SECONDS = 60
numbers = itertools.count(1)

# A link goes straight to the program, or through what is registered for its scheme in the registry.
DIRECTLY = shlex.join([*WINE, PROGRAM]) + ' "$1"'
QUIETLY = shlex.join([*WINE, PROGRAM, "/quiet"]) + ' "$1"'
REGISTERED = shlex.join([*WINE, "start", "/wait"]) + ' "$1"'

# Wine finds its server by the folder for temporary files, and that of the browser is another one.
TEMPORARY = "export TMPDIR=" + shlex.quote(os.environ["TMPDIR"]) if "TMPDIR" in os.environ else "unset TMPDIR"

HANDLER = """#!/bin/sh
%(temporary)s
call=$(mktemp -d %(calls)s/XXXXXXXX) || exit
printf '%%s' "$1" >"$call/part" && mv "$call/part" "$call/link"
%(command)s >"$call/output" 2>&1 </dev/null
echo $? >"$call/part" && mv "$call/part" "$call/code"
"""

DESKTOP_FILE = """[Desktop Entry]
Type=Application
Name=Norvik
Exec=%s %%u
MimeType=x-scheme-handler/norvik;
NoDisplay=true
"""

DEFAULTS = """[Default Applications]
x-scheme-handler/norvik=norvik.desktop
"""


def write_page(link):
    """A page with this link; its path on the site, which no page had before."""
    name = f"page{next(numbers)}.html"
    page = (ROOT / "tests/browsers/page.html").read_text().replace("@LINK@", html.escape(link))
    for site in (WEB, SECURE_WEB):
        (site / name).write_text(page, encoding="utf-8")
    return "/" + name


def write_sample(query, has_script):
    """The sample page, whose manifest's URL ends with the query; its path on the site."""
    name = f"sample{next(numbers)}.html"
    page = (ROOT / "samples" / "page.html").read_text().replace("http://apps.example.com", PORTAL).replace(SAMPLE, SAMPLE + query)
    (WEB / name).write_text(page if has_script else page.replace('<script src="norvik.js"></script>', ""))
    shutil.copy(ROOT / "share" / "page" / "norvik.js", WEB)
    return "/" + name


def age(file):
    return file.stat().st_mtime_ns


class Home:
    """The folders of one browser, below build/: its home, where links are handled, and what became of them."""

    def __init__(self, command):
        self.folder = PART / str(next(numbers))
        self.calls = self.folder / "calls"
        self.codes_told = 0
        self.profile = self.folder / "profile"
        self.temporary = self.folder / "tmp"
        for folder in (self.calls, self.profile, self.temporary):
            folder.mkdir(parents=True)
        handler = self.folder / "handler"
        self.write(handler, HANDLER % {"temporary": TEMPORARY, "calls": shlex.quote(str(self.calls)), "command": command})
        handler.chmod(0o755)
        self.write(self.folder / ".local/share/applications/norvik.desktop", DESKTOP_FILE % handler)
        self.write(self.folder / ".config/mimeapps.list", DEFAULTS)

    @staticmethod
    def write(file, text):
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def environment(self):
        return {**os.environ, "LANG": "C.UTF-8", "HOME": str(self.folder), "TMPDIR": str(self.temporary),
                "XDG_CONFIG_HOME": str(self.folder / ".config"), "XDG_DATA_HOME": str(self.folder / ".local/share")}

    def links(self):
        """The links that arrived."""
        return [file.read_text() for file in sorted(self.calls.glob("*/link"), key=age)]

    def wait_for_code(self):
        """The exit code of the program that ended first of those that nobody has asked for yet."""
        wait_until(lambda: len(self.codes()) > self.codes_told, "no program was started for the link, or it did not end")
        self.codes_told += 1
        return int(self.codes()[self.codes_told - 1].read_text())

    def codes(self):
        return sorted(self.calls.glob("*/code"), key=age)


class Browser:
    """What both browsers have in common. To be used in a `with`; `policy` is the text of the policy file."""

    def __init__(self, policy, is_headless, command=DIRECTLY):
        self.home = Home(command)
        self.is_headless = is_headless
        self.home.write(self.home.folder / "policies" / self.policy_file, policy)
        self.start()

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.end()

    def open(self, address):
        """Opens a page, and waits until it is drawn; a click that comes at once may be lost."""
        self.go_to(address)
        wait_until(lambda: self.title() == "Stockroom", "the page was not drawn")
        time.sleep(1)

    def prepare(self, origin, link):
        """Opens a page of this origin with a link."""
        self.open(origin + write_page(link))

    def follow(self, origin, link):
        """The same, and clicks on it."""
        self.prepare(origin, link)
        self.click()

    def contained(self, policy_folder, *command):
        """A command in whose eyes the folder is the one for policies. It ends with this program."""
        return ["bwrap", "--dev-bind", "/", "/", "--bind", str(self.home.folder / "policies"), policy_folder, "--die-with-parent",
                *command]


class Chromium(Browser):
    policy_file = "policies/managed/norvik.json"
    kit_file = "chromium-policy.json"
    no_policy = "{}"

    @staticmethod
    def with_authority(policy):
        """The policy, with trust in the authority of the test certificates."""
        certificate = "".join(AUTHORITY.read_text().split("-----")[2].split())
        return json.dumps({**json.loads(policy), "CACertificates": [certificate]})

    def start(self):
        program = self.home.folder / "chromium"
        self.home.write(program, "#!/bin/sh\nexec " + shlex.join(self.contained("/etc/chromium", "chromium")) + ' "$@"\n')
        program.chmod(0o755)
        options = Options()
        options.binary_location = str(program)
        for switch in ("--no-sandbox", "--no-first-run", "--no-default-browser-check", "--disable-gpu", "--password-store=basic",
                       "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
                       "--window-position=0,0", "--window-size=1000,800", f"--user-data-dir={self.home.profile}"):
            options.add_argument(switch)
        if self.is_headless:
            options.add_argument("--headless=new")
        service = Service("/usr/bin/chromedriver", log_path=str(self.home.folder / "driver.log"), env=self.home.environment())
        self.driver = webdriver.Chrome(service=service, options=options)

    def go_to(self, address):
        self.driver.get(address)

    def title(self):
        return self.driver.title

    def click(self):
        self.driver.find_element(By.ID, "start").click()

    def state(self):
        return self.driver.find_element(By.ID, "state").text

    def end(self):
        self.driver.quit()


# What a new profile would show or ask before the page.
FIREFOX_PREFERENCES = {
    "marionette.port": 0,
    "app.normandy.enabled": False,
    "app.update.disabledForTesting": True,
    "browser.aboutwelcome.enabled": False,
    "browser.newtabpage.enabled": False,
    "browser.shell.checkDefaultBrowser": False,
    "browser.startup.homepage_override.mstone": "ignore",
    "browser.startup.page": 0,
    "datareporting.policy.dataSubmissionEnabled": False,
    "dom.security.https_first": False,
    "termsofuse.bypassNotification": True,
    "toolkit.telemetry.reportingpolicy.firstRun": False,
}


class Firefox(Browser):
    policy_file = "policies.json"
    kit_file = "firefox-policies.json"
    no_policy = '{"policies": {}}'

    @staticmethod
    def with_authority(policy):
        policies = json.loads(policy)["policies"]
        return json.dumps({"policies": {**policies, "Certificates": {"Install": [str(AUTHORITY)]}}})

    def start(self):
        preferences = (f"user_pref({json.dumps(name)}, {json.dumps(value)});\n" for name, value in FIREFOX_PREFERENCES.items())
        self.home.write(self.home.profile / "user.js", "".join(preferences))
        distribution = os.path.realpath("/usr/lib/firefox-esr/distribution")
        switches = ["--headless"] if self.is_headless else []
        command = self.contained(distribution, "firefox-esr", "--marionette", "--no-remote", "--profile", str(self.home.profile),
                                 "--width", "1000", "--height", "800", *switches)
        with open(self.home.folder / "firefox.log", "wb") as log:
            self.process = subprocess.Popen(command, env=self.home.environment(), stdin=subprocess.DEVNULL, stdout=log,
                                            stderr=subprocess.STDOUT)
        try:
            self.marionette = Marionette(wait_until(self.port, "Firefox did not start", START_SECONDS))
        except BaseException:
            self.kill()
            raise

    def port(self):
        file = self.home.profile / "MarionetteActivePort"
        return int(file.read_text() or 0) if file.exists() else 0

    def go_to(self, address):
        self.marionette.send("WebDriver:Navigate", url=address)

    def title(self):
        return self.marionette.send("WebDriver:GetTitle")["value"]

    def find(self, name):
        return self.marionette.send("WebDriver:FindElement", using="css selector", value="#" + name)["value"]

    def state(self):
        return self.marionette.send("WebDriver:GetElementText", id=next(iter(self.find("state").values())))["value"]

    def click(self):
        steps = [{"type": "pointerMove", "x": 0, "y": 0, "origin": self.find("start")}, {"type": "pointerDown", "button": 0},
                 {"type": "pointerUp", "button": 0}]
        self.marionette.send("WebDriver:PerformActions", actions=[{"type": "pointer", "id": "mouse", "actions": steps}])

    def end(self):
        try:
            self.marionette.send("Marionette:Quit", flags=["eForceQuit"])
            self.marionette.close()
            self.process.wait(20)
        finally:
            self.kill()

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
