#!/usr/bin/env python3
"""The check of the include direction finds what it is there for."""
import unittest

from include_direction import breaches


class IncludeDirection(unittest.TestCase):
    def test_a_clean_tree_has_no_breach(self):
        self.assertEqual(breaches({
            "base/A.h": "#include <string>\n",
            "store/B.h": '#include "base/A.h"\n#include "store/C.h"\n',
            "store/C.h": "",
            "app/main.cpp": '#include "platform/linux/D.h"\n#include <QCoreApplication>\n',
            "platform/linux/D.h": '#include "platform/E.h"\n',
            "platform/E.h": "",
        }), [])

    def test_an_include_upwards_is_a_breach(self):
        self.assertEqual(len(breaches({"base/A.h": '#include "store/B.h"\n', "store/B.h": ""})), 1)

    def test_a_platform_header_outside_its_folder_is_a_breach(self):
        self.assertEqual(len(breaches({"usage/A.cpp": '#include "platform/linux/B.h"\n'})), 1)

    def test_qt_in_the_core_is_a_breach(self):
        for header in ("QString", "QtCore/QString", "QCoroTask"):
            self.assertEqual(len(breaches({"accounts/A.h": f"#include <{header}>\n"})), 1, header)

    def test_a_seam_that_needs_qt_is_closed_to_the_core(self):
        self.assertEqual(len(breaches({"accounts/A.h": '#include "platform/HttpTransport.h"\n'})), 1)

    def test_qt_by_a_detour_is_a_breach_where_a_program_is_to_have_none(self):
        files = {"app/state/A.h": '#include "app/state/B.h"\n', "app/state/B.h": "#include <QObject>\n",
                 "app/state/C.h": "", "status/sources/D.cpp": '#include "app/state/C.h"\n'}
        self.assertEqual(breaches(files), [])
        self.assertEqual(len(breaches({**files, "status/sources/E.cpp": '#include "app/state/A.h"\n'})), 1)
        self.assertEqual(len(breaches({"cli/F.cpp": "#include <QString>\n"})), 1)

    def test_a_cycle_is_a_breach_however_long(self):
        found = breaches({"base/A.h": '#include "base/B.h"\n', "base/B.h": '#include "base/C.h"\n',
                          "base/C.h": '#include "base/A.h"\n'})
        self.assertEqual(len(found), 1)
        self.assertIn("cycle", found[0])

    def test_a_new_folder_must_be_given_a_layer(self):
        self.assertEqual(len(breaches({"novel/A.h": ""})), 1)


if __name__ == "__main__":
    unittest.main()
