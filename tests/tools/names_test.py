"""Names and paths that are not ASCII: elements, files and folders, of UTF-8 and of other bytes."""
import json
import os
import struct
import subprocess
import tempfile
import unittest

from command_line_test import ANSWERED, KORVO, TABLE_AC, USAGE, validate

TABLE_BODY = TABLE_AC.replace("C,z,0,0,0,0,0", "C,z,0,0,0,0,0,$ZRN_MACHINE_DEF/%s")
TRIANGLE = b"x" * 80 + struct.pack("<I12fH", 1, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 10, 0, 0)
OTHER_TRIANGLE = TRIANGLE[:-6] + struct.pack("<fH", 5, 0)

# Three linear and two rotary axes, each with its number, so that any name will do.
MACHINE = """\
frame
rotation={3},4,x,0,0,0,0,50
rotation={4},5,z,0,0,0,0,0
part=x,y,0,0,0
lien=BATI
axis={0},1,x
axis={1},2,y
axis={2},3,z
tool=z,0,0,150
limits={0},-100,100
limits={3},-120,30
limits={2},-500,500
collisions=tool,{3}
"""
UTF8_NAMES = ["Länge", "axe_é", "日本", "😀", "Ω"]
LATIN1_NAMES = ["Länge", "axe_é", "ñ", "Größe", "ÿØ"]


class NotAscii(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = os.fsencode(folder.name)

    def at(self, *names):
        return os.path.join(self.folder, *(os.fsencode(n) for n in names))

    def write(self, name, content):
        path = self.at(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return path

    def read(self, *names):
        with open(self.at(*names), "rb") as file:
            return file.read()

    def run_korvo(self, *arguments):
        return subprocess.run([KORVO, *arguments], capture_output=True, timeout=120, check=False)

    def answer(self, *arguments):
        run = self.run_korvo(*arguments)
        self.assertEqual(run.returncode, ANSWERED, run.stderr)
        return run.stdout.decode("utf-8")  # strictly

    def json(self, *arguments):
        answer = json.loads(self.answer(*arguments, "--json"))
        validate(answer)
        return answer


class NamesOfFiles(NotAscii):
    # As bytes of the file system, and as they are shown.
    NAMES = ((b"two words", "two words"), ("Größe".encode(), "Größe"), ("日本語".encode(), "日本語"),
             ("😀".encode(), "😀"), (b"caf\xe9", "café"), ("Maß ".encode() + b"\xe9", "Maß é"))

    # What every verb makes of the files of one folder, all of them with the folder's own name.
    VERBS = (
        "info {f}.def", "info {f}.def --json", "info {f}.def --trace {f}.trace",
        "forward {f}.def --at X=1 --json", "forward {f}.def --positions {f}.csv",
        "forward {f}.def --positions {f}.csv --json",
        "inverse {f}.def --point 0,0,200 --dir 0,0,1 --json",
        "inverse {f}.def --targets {f}.targets.csv", "limits {f}.def --at X=1 --json",
        "limits {f}.def --positions {f}.csv",
        "interpolate {f}.def --from X=1 --to X=2 --steps 2 --json",
        "translate {f}.def --at X=1 --by 1,2,3 --json",
        "mesh {f}.def -o {f}.out.stl --json", "mesh {f}.def -o {f}.out.glb",
        "mesh {f}.def -o {f}.out.obj", "mesh {f}.def -o {f}.out.png --size 40x30",
        "path {f}.def {f}.targets.csv -o {f}.out.csv --report {f}.html --json",
        "path {f}.def {f}.targets.csv -o {f}.out.csv --report {f}.html",
        "geometry {f}.stl --json", "geometry {f}.stl -o {f}.copy.stl",
        "geometry {f}.zrn", "geometry {f}.zrn --json",
        "check {f}.def --json", "check {f}.def --sarif", "check {f}.def", "check {f}.faulty.def",
        "check {f}.faulty.def --fix",
        "info {f}.none.def", "forward {f}.def --positions {f}.none.csv", "geometry {f}.none.stl",
        "mesh {f}.def -o {f}.none/a.stl", "info {f}.def --trace {f}.none/a.trace")

    def fill(self, name):
        for end, content in ((b".def", TABLE_BODY % "body.stl"), (b".stl", TRIANGLE),
                             (b".csv", "X,C\n1,2\nx,1\n"),
                             (b".targets.csv", "x,y,z,i,j,k\n0,0,200,0,0,1\n1,0,200,0,0,1\n"),
                             (b".zrn", "0 0 99\n"), (b".faulty.def", TABLE_AC + "axis= W,x\n")):
            self.write(os.path.join(name, name + end), content)
        self.write(os.path.join(name, b"body.stl"), TRIANGLE)

    def outcome(self, name, shown):
        """Codes, both outputs and all files, with PLACE where the name is said."""
        self.fill(name)
        spelled = [(name, b"PLACE"), (shown.encode(), b"PLACE")]
        spelled += [(json.dumps(shown)[1:-1].encode(), b"PLACE")]
        outcome = {}

        def plain(data):
            for said, word in spelled:
                data = data.replace(said, word)
            return data

        for line in self.VERBS:
            verb, *words = line.split()
            place = os.path.join(self.folder, name, name)
            arguments = [place.join(w.encode().split(b"{f}")) for w in words]
            run = self.run_korvo(verb, *arguments)
            run.stdout.decode("utf-8")  # whatever the name is
            outcome[line] = (run.returncode, plain(run.stdout), plain(run.stderr))
        for file in os.listdir(self.at(name)):
            outcome[plain(file)] = plain(self.read(name, file))
        return outcome

    def assert_same(self, found, wanted):
        """Says where long outputs differ, not all of both."""
        if isinstance(wanted, tuple):
            self.assertEqual(found[0], wanted[0])
            self.assert_same(found[2], wanted[2])
            found, wanted = found[1], wanted[1]
        at = len(os.path.commonprefix([found, wanted]))
        self.assertEqual(found[max(at - 60, 0):at + 60], wanted[max(at - 60, 0):at + 60])

    def test_play_no_part_in_what_is_answered_and_written(self):
        wanted = self.outcome(b"seven", "seven")
        answered = [line for line, run in wanted.items()
                    if isinstance(line, str) and run[0] == ANSWERED]
        self.assertGreaterEqual(len(answered), 22)
        for end in (b".out.stl", b".out.glb", b".out.obj", b".out.mtl", b".out.png", b".out.csv",
                    b".html", b".copy.stl", b".trace"):
            self.assertIn(b"PLACE" + end, wanted)
        for name, shown in self.NAMES:
            found = self.outcome(name, shown)
            with self.subTest(shown):
                self.assertEqual(sorted(map(str, found)), sorted(map(str, wanted)))
            for what, value in wanted.items():
                with self.subTest(shown, of=what):
                    self.assert_same(found[what], value)

    def test_are_shown_in_json(self):
        for name, shown in self.NAMES:
            self.fill(name)
            with self.subTest(shown):
                info = self.json("info", self.at(name, name + b".def"))
                self.assertTrue(info["machine"]["file"].endswith(f"/{shown}/{shown}.def"))
                mesh = self.json("mesh", self.at(name, name + b".def"), "-o",
                                 self.at(name, b"out.stl"))
                self.assertTrue(mesh["output"].endswith(f"/{shown}/out.stl"))

    def test_of_bodies_are_found_as_the_definition_file_spells_them(self):
        for folder, _ in self.NAMES:
            for body in ("Körper.stl".encode(), "日本.stl".encode(), "😀.stl".encode(),
                         b"K\xf6rper.stl"):
                with self.subTest(folder, body=body):
                    text = TABLE_BODY.encode() % body
                    machine = self.write(os.path.join(folder, b"m.def"), text)
                    self.write(os.path.join(folder, body), TRIANGLE)
                    answer = self.json("mesh", machine, "-o", self.at(folder, b"out.stl"))
                    self.assertEqual((answer["triangles"], answer["withoutBody"]), (1, []))
                    found = self.json("info", machine)["geometryFiles"]
                    shown = "Körper.stl" if body.startswith(b"K") else body.decode()
                    self.assertTrue(found[0]["file"].endswith("/" + shown), found)
                    self.assertTrue(found[0]["found"])

    def test_of_bodies_that_are_read_are_never_written_over(self):
        for folder, _ in self.NAMES:
            for body, written in (("Körper.stl".encode(),) * 2, ("日本.stl".encode(),) * 2,
                                  (b"K\xf6rper.stl",) * 2, (b"body.stl", b"Body.STL")):
                with self.subTest(folder, body=body):
                    machine = self.write(os.path.join(folder, b"m.def"),
                                         TABLE_BODY.encode() % written)
                    read = self.write(os.path.join(folder, body), TRIANGLE)
                    run = self.run_korvo("mesh", machine, "-o", read)
                    self.assertEqual(run.returncode, USAGE, run.stderr)
                    self.assertIn(b"expected a file of its own after -o", run.stderr)
                    self.assertEqual(self.read(folder, body), TRIANGLE)
                    os.remove(read)  # or it would be found for its name in other bytes

    def test_of_machines_that_are_read_are_never_written_over(self):
        for name, shown in self.NAMES:
            with self.subTest(shown):
                machine = self.write(os.path.join(name, name), TABLE_AC)
                targets = self.write(os.path.join(name, b"t.csv"), "x,y,z,i,j,k\n0,0,200,0,0,1\n")
                run = self.run_korvo("path", machine, targets, "-o", machine)
                self.assertEqual(run.returncode, USAGE, run.stderr)
                self.assertEqual(self.read(name, name).decode(), TABLE_AC)

    def test_that_are_long_are_cut_between_characters_in_messages(self):
        for name in ("ää" * 25, "xä" + "ä" * 50, "日日" * 15, "x😀" + "😀" * 20, "😀x" + "😀" * 20,
                     "x日" + "日" * 30):
            with self.subTest(name):
                run = self.run_korvo("mesh", self.write("m.def", TABLE_AC), "-o", name + ".abc")
                self.assertEqual(run.returncode, USAGE)
                self.assertRegex(run.stderr.decode("utf-8"), rf"found '{name[:2]}{name[2]}+\.\.\.'")


class NamesOfElements(NotAscii):
    KINDS = (("utf-8", UTF8_NAMES), ("latin-1", LATIN1_NAMES))

    def machines(self):
        for encoding, names in self.KINDS:
            text = "# Größe\n" + MACHINE.format(*names)
            yield self.write(encoding + ".def", text.encode(encoding)), names

    def test_are_shown_as_written(self):
        for machine, names in self.machines():
            info = self.json("info", machine)
            self.assertEqual([a["name"] for a in info["axes"]], names)
            self.assertEqual(info["machine"]["format"], 1)
            text = self.answer("info", machine)
            for place, name in enumerate(names):
                kind = "linear" if place < 3 else "rotary"
                self.assertIn(f"\n  {place}  {name:5} {kind}  number {place + 1}, ", text)
            self.assertIn(f"{names[4]} and {names[3]} turn the tool, {names[0]}, {names[1]} and "
                          f"{names[2]} carry it", text)

    # Columns of the table of Denavit-Hartenberg numbers stand below each other.
    def test_take_their_place_in_tables(self):
        for machine, names in self.machines():
            rows = [line for line in self.answer("info", machine).splitlines()
                    if line.startswith("      ") and line.split()[0] in ["PIECE", *names]
                    and len(line.split()) == 5]
            self.assertEqual(len(rows), 6)
            self.assertEqual({len(row) for row in rows}, {6 + 8 + 4 * 16})

    def test_are_asked_for_in_any_case(self):
        for machine, names in self.machines():
            for spelled in (str, str.upper, str.lower):
                at = ",".join(f"{spelled(n)}={i + 1}" for i, n in enumerate(names[:3]))
                position = self.json("forward", machine, "--at", at)["position"]
                self.assertEqual([(v["axis"], v["value"]) for v in position],
                                 list(zip(names, (1, 2, 3, 0, 0))))
            locked = self.json("info", machine, "--lock", names[3])
            self.assertEqual([a["locked"] for a in locked["axes"]], [0, 0, 0, 1, 0])

    def test_head_the_columns_of_tables(self):
        for machine, names in self.machines():
            table = self.write("t.csv", ",".join(names) + "\n1,2,3,-20,40\n101,2,3,50,0\n")
            lines = self.answer("forward", machine, "--positions", table).splitlines()
            self.assertEqual(lines[2].split(",")[-1], f"{names[0]} {names[3]}")
            targets = self.write("x.csv", "tip_x,tip_y,tip_z,i,j,k\n1,2,300,0,0,1\n")
            head = self.answer("inverse", machine, "--targets", targets).splitlines()[0]
            self.assertEqual(head.split(",")[2:7], names)

    def test_are_in_answers(self):
        for machine, names in self.machines():
            run = self.run_korvo("limits", machine, "--at", f"{names[0]}=101", "--json")
            self.assertEqual(json.loads(run.stdout)["outsideLimits"], [names[0]])
            asked = ("inverse", machine, "--point", "1,2,300", "--dir", "0,0,1")
            position = self.json(*asked)["positions"][0]["position"]
            self.assertEqual([v["axis"] for v in position], names)
            self.assertIn(f"{names[0]}=1 {names[1]}=2", self.answer(*asked))
            run = self.run_korvo("inverse", machine, "--point", "5000,2,300", "--dir", "0,0,1")
            self.assertIn(names[0], run.stdout.decode("utf-8"))
            run = self.run_korvo("forward", machine, "--at", "Grösse=1")
            self.assertIn("'Grösse'", run.stderr.decode("utf-8"))
            self.assertIn(", ".join(names), run.stderr.decode("utf-8"))

    def test_are_in_reports_of_paths(self):
        for machine, names in self.machines():
            targets = self.write("x.csv", "x,y,z,i,j,k\n1,2,300,0,0,1\n3,4,300,0,0,1\n")
            out, page = self.at("out.csv"), self.at("page.html")
            report = self.json("path", machine, targets, "-o", out, "--report", page)
            self.assertEqual([a["axis"] for a in report["axes"]], names)
            self.assertIn(",".join(names), self.read("out.csv").decode("utf-8"))
            for name in names:
                self.assertIn(name, self.read("page.html").decode("utf-8"))

    def test_are_in_the_trace(self):
        for machine, names in self.machines():
            self.answer("info", machine, "--trace", self.at("trace.txt"))
            trace = self.read("trace.txt").decode("utf-8")
            for name in names:
                self.assertIn(name, trace)

    def test_are_those_of_bodies(self):
        body = self.write("body.stl", TRIANGLE)
        for machine, names in self.machines():
            encoding = os.path.basename(machine)[:-4].decode()
            with open(machine, "rb") as file:
                text = file.read().replace(b",2,y\n", b",2,y,$ZRN_MACHINE_DEF/body.stl\n")
            machine = self.write("bodies.def", text)
            answer = self.json("mesh", machine, "-o", self.at("out.obj"))
            self.assertEqual([b["name"] for b in answer["bodies"]], [names[1]], encoding)
            self.assertIn(f"\no {names[1]}\n", self.read("out.obj").decode("utf-8"))
            self.answer("mesh", machine, "-o", self.at("out.glb"))
            glb = self.read("out.glb")
            length = struct.unpack_from("<I", glb, 12)[0]
            nodes = json.loads(glb[20:20 + length])["nodes"]
            self.assertIn(names[1], [n.get("name") for n in nodes])
        self.assertTrue(os.path.exists(body))

    # The library puts names of format 2 in upper case: byte by byte, which takes characters of
    # three and four bytes apart, and leaves small letters of two.
    def test_of_format_2_come_back_from_upper_case(self):
        for encoding, name, shown in (("utf-8", "日本", "日本"), ("utf-8", "x😀y", "X😀Y"),
                                      ("utf-8", "größe", "GRößE"), ("latin-1", "größe", "GRÖßE"),
                                      ("utf-8", "à", "à"), ("utf-8", "ก็", "ก็")):
            with self.subTest(name, encoding=encoding):
                text = TABLE_AC + f"lien=BATI\naxis={name},x\n"
                machine = self.write("m.def", text.encode(encoding))
                names = [n["name"] for n in self.json("info", machine)["tree"]]
                self.assertEqual(names[-1], shown)
                checked = self.run_korvo("check", machine).stdout.decode("utf-8")
                self.assertIn(f"found '{shown}', which never moves", checked)


if __name__ == "__main__":
    unittest.main()
