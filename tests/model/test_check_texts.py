#!/usr/bin/env python3
"""Runs check_texts (the argument) on small sources and files, and expects it to find what is wrong with them."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = sys.argv.pop(1)


def entry(identifier="ok", english="OK", german="OK", parent="general"):
    localizations = {"de": german, "es": "a", "fr": "b", "ja": "c"}
    return {"parent": parent, "identifier": identifier, "source_value": english, "localizations": localizations}


class CheckTexts(unittest.TestCase):
    def check(self, source, entries):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "src").mkdir()
            (folder / "src" / "a.cpp").write_text(source, encoding="utf-8")
            (folder / "texts.json").write_text(json.dumps(entries), encoding="utf-8")
            result = subprocess.run([TOOL, folder / "src", folder / "texts.json"], capture_output=True, text=True)
            return result.returncode, result.stderr

    def test_accepts_what_is_complete(self):
        source = r"""
            m.text(u"general"_s, u"ok"_s, u"OK"_s);
            const BWLocalizableString long{QStringLiteral("general"), QStringLiteral("quoted"),
                u"Say \"\u00e4\" // "
                u"twice"_s, true};
            // m.text(u"general"_s, u"not code"_s, u"No"_s);
            m.text(u"camera_product"_s, product->identifier(), product->name());
        """
        entries = [entry(), entry("quoted", 'Say "\u00e4" // twice')]
        self.assertEqual(self.check(source, entries), (0, ""))

    def test_finds_faults(self):
        known = 'm.text(u"general"_s, u"ok"_s, u"OK"_s);'
        cases = {
            "is not in the file": ('BWLocalizableString(u"general"_s,\n u"new"_s, u"New"_s);', [entry()]),
            "'OK', but 'Okay' in the file": (known, [entry(english="Okay")]),
            "'OK', but 'Okay' at": ('m.text(u"general"_s, u"ok"_s, u"Okay"_s);' + known, [entry(english="Okay")]),
            "no translation in 'de'": (known, [entry(german=" ")]),
            "listed twice": (known, [entry(), entry()]),
            "out of order": (known, [entry(), entry(parent="a")]),
        }
        for fault, (source, entries) in cases.items():
            with self.subTest(fault):
                code, output = self.check(source, entries)
                self.assertEqual(code, 1)
                self.assertIn(fault, output)


unittest.main()
