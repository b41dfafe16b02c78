#!/usr/bin/env python3
"""soak_test.py FOLDER_OF_SOAK: a soak finds what it is there for."""
import pathlib
import random
import sys
import tempfile
import unittest

sys.path.insert(0, sys.argv.pop(1))

from endpoint import Refusal, problem_of, seconds_of  # noqa: E402
from health import Sample, file_problems, problems, quiet_points  # noqa: E402
from soak import plan  # noqa: E402


class Waits(unittest.TestCase):
    def test_a_request_before_the_end_of_its_wait_is_found_in_any_life(self):
        for life in (1, 2):
            self.assertIn("before the end", problem_of(1299.0, life, Refusal(1000.0, 1, True), 1300.0))

    def test_a_request_after_it_is_none(self):
        self.assertIsNone(problem_of(1300.0, 1, Refusal(1000.0, 1, True), 1300.0))

    def test_a_wait_must_be_noted_and_kept_within_a_life(self):
        for until in (None, 900.0):
            self.assertIn("not told", problem_of(1300.0, 1, Refusal(1000.0, 1, True), until))
        self.assertIn("59.0 s after", problem_of(1059.0, 1, Refusal(1000.0, 1, False), None))

    def test_what_could_not_be_noted_is_forgiven(self):
        self.assertIsNone(problem_of(1300.0, 1, Refusal(1000.0, 1, False), None), "there was no file")
        self.assertIsNone(problem_of(1001.0, 2, Refusal(1000.0, 1, True), None), "killed at that moment")

    def test_dates_are_read_as_they_are_written(self):
        self.assertEqual(seconds_of("1970-01-02T00:00:00.500Z"), 86400.5)


class Health(unittest.TestCase):
    @staticmethod
    def life(**figures):
        """Six quiet points, of which a figure may have six values."""
        all_figures = {"threads": 6, "descriptors": 12, "sockets": 1, "resident": 20000}
        return [Sample(**{**all_figures, **{name: values[i] for name, values in figures.items()}}) for i in range(6)]

    def test_a_life_that_stays_as_it_is_is_well(self):
        self.assertEqual(problems(self.life()), [])
        self.assertEqual(problems([]), [])

    def test_threads_and_descriptors_stay_the_same(self):
        for figure in ("threads", "descriptors"):
            self.assertEqual(len(problems(self.life(**{figure: [12, 12, 12, 12, 12, 13]}))), 1)

    def test_sockets_come_and_go_but_are_few(self):
        self.assertEqual(problems(self.life(sockets=[0, 2, 1, 8, 1, 0])), [])
        self.assertEqual(len(problems(self.life(sockets=[0, 1, 2, 4, 6, 9]))), 1)

    def test_memory_grows_by_a_tenth_at_most(self):
        self.assertEqual(problems(self.life(resident=[10000, 20000, 21000, 22000, 22000, 22000])), [])
        self.assertEqual(len(problems(self.life(resident=[10000, 20000, 21000, 22000, 22001, 22000]))), 1)

    def test_a_quiet_point_is_the_least_of_its_samples_once_it_is_warm(self):
        busy = [Sample(9, 20, 5, 90)] * 6
        samples = busy + [Sample(7, 11, 1, 50), Sample(6, 12, 0, 40), Sample(9, 13, 2, 60)] + [Sample(1, 1, 1, 1)]
        self.assertEqual(quiet_points(samples, 3), [Sample(6, 11, 0, 40)])


class Files(unittest.TestCase):
    def problems_of(self, name, data):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / name
            path.write_bytes(data)
            return file_problems([path])

    def test_whole_files_are_well(self):
        self.assertEqual(self.problems_of("a.json", b'{"a":1}'), ([], 1))
        self.assertEqual(self.problems_of("a.jsonl", b'{"a":1}\n{"a":2}\n'), ([], 1))
        self.assertEqual(self.problems_of(".lock", b"4711\n"), ([], 0))

    def test_half_a_file_is_found(self):
        for name, data in (("a.json", b'{"a":'), ("a.json", b""), ("a.jsonl", b'{"a":1}\n{"a"\n')):
            self.assertEqual(len(self.problems_of(name, data)[0]), 1, data)

    def test_a_token_is_found_anywhere(self):
        for name in ("a.json", "log"):
            self.assertEqual(self.problems_of(name, b'{"a":"soak-token.claude-1"}')[0], [f"{name} holds a token"])


class Plan(unittest.TestCase):
    def test_half_of_the_time_is_one_life_and_the_rest_is_all_used(self):
        for seed in range(50):
            lives = plan(40, random.Random(seed))
            self.assertAlmostEqual(sum(life.seconds for life in lives), 40)
            self.assertEqual(max(life.seconds for life in lives), 20)
            self.assertGreater(len(lives), 3)


if __name__ == "__main__":
    unittest.main()
