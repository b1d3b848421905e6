import unittest

from browsers import Firefox
from link_cases import LinkCases


class FirefoxTest(LinkCases, unittest.TestCase):
    browser_class = Firefox
