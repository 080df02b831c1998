"""When instruction counts are compared, and when they differ."""

import unittest

import instructions

HERE = {"compiler": "c++ 12.2.0", "packages": {"libc6": "2.36", "gcc": "12"},
        "processor flags": "avx avx2 sse2"}


def but(**fields):
    return {**HERE, **fields}


class Machines(unittest.TestCase):
    def test_the_same_machine_fits(self):
        self.assertEqual(instructions.misfits(HERE, HERE), [])

    def test_what_differs_is_said(self):
        for record, wanted in (
                (but(compiler="c++ 13.1.0"), "compiler: recorded c++ 13.1.0, here c++ 12.2.0"),
                (but(packages={"libc6": "2.35", "gcc": "12"}),
                 "package libc6: recorded 2.35, here 2.36"),
                (but(packages={"libc6": "2.36"}), "package gcc: recorded none, here 12"),
                (but(**{"processor flags": "avx avx2 avx512f sse2"}),
                 "processor flags missing here: avx512f"),
                (but(**{"processor flags": "sse2"}),
                 "processor flags not recorded: avx avx2")):
            with self.subTest(wanted=wanted):
                self.assertEqual(instructions.misfits(record, HERE), [wanted])


class Counts(unittest.TestCase):
    def test_three_per_cent_is_within(self):
        for new, wanted in ((1030, True), (1031, False), (970, True), (969, False), (None, False)):
            self.assertEqual(instructions.is_within(1000, new), wanted)

    def test_a_call_of_one_side_alone_fails(self):
        rows = {call: good for call, _, _, good in instructions.rows({"a": 5, "b": 5}, {"b": 5, "c": 5})}
        self.assertEqual(rows, {"a": False, "b": True, "c": False})

    def test_lines_say_the_change(self):
        self.assertIn("+10.00%  BEYOND 3 %", instructions.line("a", 1000, 1100, False))
        self.assertTrue(instructions.line("a", 1000, 1000, True).endswith("+0.00%"))


class Callgrind(unittest.TestCase):
    def test_the_total_is_found(self):
        self.assertEqual(instructions.total_in("events: Ir\nfn=(1) main\n12 5\ntotals: 123456\n"), 123456)

    def test_nothing_counted_is_no_count(self):
        for text in ("", "totals: 0\n"):
            with self.assertRaises(ValueError):
                instructions.total_in(text)


if __name__ == "__main__":
    unittest.main()
