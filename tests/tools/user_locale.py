"""The user's locale that the tests run the program in has to be there, with its comma: the program
would be run in none otherwise, without a word."""

import locale
import os

NAME = os.environ.get("KORVO_TEST_LOCALE")
if NAME:
    locale.setlocale(locale.LC_ALL, NAME)
    if locale.localeconv()["decimal_point"] != ",":
        raise locale.Error(NAME + " has no comma")
    locale.setlocale(locale.LC_ALL, "C")
