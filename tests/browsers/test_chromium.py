import unittest

from browsers import Chromium
from link_cases import LinkCases


class ChromiumTest(LinkCases, unittest.TestCase):
    browser_class = Chromium
