"""The table and the picture that are made of what the benchmark program writes."""

import unittest
import xml.etree.ElementTree

import report
from picture import Scale, picture, size_text, time_text


def entry(name, label="query|peer", **fields):
    return {"name": name + "/iterations:3/manual_time", "label": label, **fields}


def row(**fields):
    return entry("a/b", ours=2e-6, peer=4e-6, ratio=0.5, low=0.4, high=0.6, **fields)


def curve(power, sizes=(10, 100, 1000), peer=None, **fields):
    ours = {f"ours/{n}": 1e-9 * n**power for n in sizes}
    theirs = {f"peer/{n}": 2e-9 * n**peer for n in sizes} if peer else {}
    return entry("growth/c", "cost by size|", **ours, **theirs, **fields)


def read(*entries):
    return report.read({"benchmarks": list(entries)})


def cells(text, what):
    """The cells of the first table line that begins with `what`."""
    lines = [line for line in text.splitlines() if line.startswith(f"| {what} |")]
    return [cell.strip() for cell in lines[0].strip("|").split("|")]


class Rows(unittest.TestCase):
    def test_a_row_says_both_times_the_ratio_and_its_spread(self):
        lines, curves, errors = read(row(at_most=0.5))
        text = report.page(lines, curves, errors, {}, "2026-01-02")
        self.assertEqual(cells(text, "query"), ["query", "2.00 µs", "peer", "4.00 µs",
                                               "0.500 [0.400 to 0.600]", "at most 0.5", "yes"])

    def test_a_figure_says_its_unit_and_no_ratio(self):
        lines, curves, errors = read(entry("m", "memory|the data|MB above", value=4.5, at_most=16))
        text = report.page(lines, curves, errors, {}, "2026-01-02")
        self.assertEqual(cells(text, "memory"), ["memory", "4.50 MB above", "the data", "", "",
                                                 "at most 16", "yes"])

    def test_a_row_whose_results_disagree_is_not_in_the_table_but_said(self):
        lines, curves, errors = read(row(), {"name": "x/y/iterations:3/manual_time",
                                             "error_occurred": True,
                                             "error_message": "results disagree: a by 3"})
        self.assertEqual(len(lines), 1)
        self.assertEqual(errors, ["x/y: results disagree: a by 3"])
        self.assertIn("- x/y: results disagree", report.page(lines, curves, errors, {}, ""))


class Goals(unittest.TestCase):
    CASES = [
        ({"at_most": 0.5}, 0.5, "yes"),
        ({"at_most": 0.5}, 0.51, "**no**"),
        ({"at_most": 0.5, "step": 0.35}, 0.4, "first step"),
        ({"at_most": 0.5, "step": 0.35}, 0.35, "yes"),
        ({"at_most": 0.5, "step": 0.35}, 0.6, "**no**"),
        ({"at_least": 200}, 200, "yes"),
        ({"at_least": 200}, 199, "**no**"),
        ({"at_least": 4, "step": 5}, 4.5, "first step"),
        ({}, 7, ""),
    ]

    def test_verdicts(self):
        for fields, ratio, wanted in self.CASES:
            with self.subTest(fields=fields, ratio=ratio):
                self.assertEqual(report.verdict(report.goal_of(fields), ratio), wanted)

    def test_texts(self):
        self.assertEqual(report.goal_text(report.goal_of({"at_least": 4, "step": 5})),
                         "at least 4, then 5")
        self.assertEqual(report.goal_text(report.goal_of({})), "")


class Growth(unittest.TestCase):
    def exponent(self, points):
        return report.exponent([report.Point(size, cost, None) for size, cost in points])

    def test_exponent_of_a_power_is_the_power(self):
        self.assertAlmostEqual(self.exponent([(n, 3e-6 * n**2) for n in (1, 10, 100, 1000)]), 2)

    def test_costs_of_a_start_are_left_out(self):
        points = [(1, 1.0), (10, 1.0), (100, 1.0), (1000, 10.0), (10000, 100.0)]
        self.assertAlmostEqual(self.exponent(points), 1)  # of 100, 1000 and 10000

    def test_one_point_has_none(self):
        self.assertIsNone(self.exponent([(10, 1.0)]))

    def test_sizes_are_sorted_as_numbers(self):
        _, curves, _ = read(curve(1, sizes=(1000, 10, 100)))
        self.assertEqual([p.size for p in curves[0].points], [10, 100, 1000])

    def test_a_curve_is_judged_by_its_exponent(self):
        for power, wanted in ((1, "yes"), (1.5, "**no**")):
            _, curves, _ = read(curve(power, at_most=1.1))
            self.assertEqual(report.curve_verdict(curves[0]), wanted)

    def test_what_grows_no_faster_than_its_peer_is_said_to(self):
        for peer, wanted in ((1.6, "as the peer"), (1.4, "**no**")):
            _, curves, _ = read(curve(1.5, peer=peer, at_most=1.1))
            self.assertEqual(report.curve_verdict(curves[0]), wanted)


class Words(unittest.TestCase):
    def test_times_have_three_digits_that_count(self):
        for seconds, wanted in ((1.5e-8, "15.0 ns"), (2.36e-4, "236 µs"), (0.0123, "12.3 ms"),
                                (7, "7.00 s"), (None, "")):
            self.assertEqual(report.time(seconds), wanted)

    def test_ticks(self):
        self.assertEqual([size_text(n) for n in (1, 10, 1e3, 1e6)], ["1", "10", "1k", "1M"])
        self.assertEqual([time_text(s) for s in (1e-9, 1e-7, 1e-6, 1e-3, 10)],
                         ["1 ns", "100 ns", "1 µs", "1 ms", "10 s"])


class Picture(unittest.TestCase):
    def test_a_decade_is_as_long_as_another(self):
        scale = Scale(1, 100, 0, 200)
        self.assertEqual([scale(v) for v in (1, 10, 100)], [0, 100, 200])

    def test_every_point_has_its_dot(self):
        _, curves, _ = read(curve(1))
        root = xml.etree.ElementTree.fromstring(picture(curves))
        dots = [e for e in root.iter() if e.tag.endswith("circle")]
        self.assertEqual(len(dots), 3)

    def test_words_are_escaped(self):
        _, curves, _ = read(entry("growth/c", "a < b & c|", **{"ours/1": 1.0}))
        texts = [e.text for e in xml.etree.ElementTree.fromstring(picture(curves)).iter()]
        self.assertIn("a < b & c", texts)


if __name__ == "__main__":
    unittest.main()
