#!/usr/bin/env python3
"""An exported CSV, read by LibreOffice: the same rows and values. Not among the tests, because of LibreOffice's size; see
scripts/test-libreoffice."""
import csv
import os
import subprocess
import unittest
import xml.etree.ElementTree
import zipfile

from history_case import HistoryTest, known
from histories import Week, by_day_alone

AWKWARD = (0.0, 100.0, 0.1, 100 / 3, 99.99999999999999, 0.30000000000000004, 0.00001, 1e-300)
SHEETS = {"x": "http://schemas.openxmlformats.org/spreadsheetml/2006/main"}


class LibreOffice(HistoryTest):
    week = Week(["session", "weekly_all", "weekly_scoped"], is_watched=by_day_alone)
    for sample, percent in zip(week.samples, AWKWARD):
        sample["percents"]["session"] = percent
    accounts = (known("ana", "Ana", week.answer("Opus"), samples=week.samples),)

    def setUp(self):
        super().setUp()
        self.open_history("Ana")

    def test_it_has_the_same_rows_and_values(self):
        file = self.documents / "week.csv"
        self.export("Export CSV", file)
        with open(file, encoding="utf-8", newline="") as text:
            exported = [(at, kind, float(percent)) for at, kind, percent in list(csv.reader(text))[1:]]
        self.assertEqual(len(exported), 3 * len(self.week.samples))
        read = self.cells(self.convert(file, "xlsx"))
        self.assertEqual(read[0], ["at", "kind", "percent"])
        self.assertEqual([(at, kind) for at, kind, _ in read[1:]], [(at, kind) for at, kind, _ in exported])
        for (_, _, there), (_, _, here) in zip(read[1:], exported):
            self.assertIsInstance(there, float, "a number became a text")
            self.assertAlmostEqual(there, here, delta=abs(here) * 1e-14)  # it keeps 15 digits
        print(f"LibreOffice: {len(exported)} rows of three columns, the same")

    def convert(self, file, kind):
        environment = {**os.environ, "HOME": str(self.desktop.folder / "office")}
        subprocess.run(["timeout", "120", "soffice", "--headless", "--convert-to", kind, "--outdir", str(file.parent),
                        str(file)], env=environment, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        return file.with_suffix(f".{kind}")

    @staticmethod
    def cells(file):
        """Of its one sheet, row by row: texts and numbers."""
        with zipfile.ZipFile(file) as parts:
            texts = ["".join(text.itertext()) for text in
                     xml.etree.ElementTree.fromstring(parts.read("xl/sharedStrings.xml")).findall("x:si", SHEETS)]
            sheet = xml.etree.ElementTree.fromstring(parts.read("xl/worksheets/sheet1.xml"))
        return [[texts[int(cell.findtext("x:v", "", SHEETS))] if cell.get("t") == "s"
                 else float(cell.findtext("x:v", "", SHEETS)) for cell in row.findall("x:c", SHEETS)]
                for row in sheet.iterfind(".//x:row", SHEETS)]


if __name__ == "__main__":
    unittest.main(verbosity=2)
