#!/usr/bin/env python3
"""Runs check_texts (the argument) on small sources and files, and expects it to find what is wrong with them."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = sys.argv.pop(1)
KNOWN = 'm.text(u"general"_s, u"ok"_s, u"OK"_s);'


def entry(identifier="ok", english="OK", german="OK", japanese="c", parent="general"):
    return {"parent": parent, "identifier": identifier, "source_value": english,
            "localizations": {"de": german, "es": "a", "fr": "b", "ja": japanese}}


def check(source, *entries):
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(folder, "a.cpp").write_text(source, encoding="utf-8")
        pathlib.Path(folder, "texts.json").write_text(json.dumps(entries), encoding="utf-8")
        result = subprocess.run([TOOL, folder, f"{folder}/texts.json"], capture_output=True, text=True)
        return result.returncode, result.stderr


class CheckTexts(unittest.TestCase):
    def test_accepts_what_is_complete(self):
        source = KNOWN + r"""
            const BWLocalizableString long{QStringLiteral("general"), QStringLiteral("quoted"),
                u"Say \u201c\u00e4\u201d // "
                u"twice"_s, true};
            // m.text(u"general"_s, u"not code"_s, u"No"_s);
            m.text(u"camera_product"_s, product->identifier(), product->name());
        """
        self.assertEqual(check(source, entry(), entry("quoted", 'Say \u201c\u00e4\u201d // twice')), (0, ""))

    def test_finds_faults(self):
        for fault, source, *entries in [
            ("is not in the file", 'BWLocalizableString(u"general"_s,\n u"new"_s, u"New"_s);', entry()),
            ("'OK', but 'Okay' in the file", KNOWN, entry(english="Okay")),
            ("'OK', but 'Okay' at", KNOWN.replace('"OK"', '"Okay"') + KNOWN, entry(english="Okay")),
            ("no translation in 'de'", KNOWN, entry(german=" ")),
            ("quotation marks in 'de'", KNOWN, entry(german="Klick auf \"OK\"")),
            ("narrow colon in 'ja'", KNOWN, entry(japanese="\u88fd\u54c1: %1")),
            ("could break", KNOWN, entry(german="Start …")),
            ("listed twice", KNOWN, entry(), entry()),
            ("out of order", KNOWN, entry(), entry(parent="a")),
        ]:
            with self.subTest(fault):
                code, output = check(source, *entries)
                self.assertEqual(code, 1)
                self.assertIn(fault, output)


unittest.main()
