"""`korvo check` as its user meets it: what it says of files, in which forms and languages."""
import json
import os
import pty
import re
import stat
import subprocess
import unittest

import jsonschema

from command_line_test import (ANSWERED, KORVO, NO, REFUSED, SCHEMAS, USAGE, CommandLine, validate)

ROOT = os.path.join(os.path.dirname(SCHEMAS), "..")
EXAMPLES = os.path.join(ROOT, "examples", "machines")

GOOD = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n"
# One error at line 6, columns 19 to 22.
BAD = GOOD + "rotationpoint=0,0,zero\n"
BAD_TEXT = ("expected a number in each of the first 12 operands of a rotation point, found 'zero' "
            "as operand 3")
# One warning: X is numbered twice.
DOUBTFUL = GOOD.replace("tool=", "axis=Y,1,y\ntool=")
# A keyword that only one other is near to.
MISSPELT = GOOD.replace("frame", "frme")


def is_colour(text):
    return "\x1b[" in text


class Check(CommandLine):
    def check(self, *arguments, code=ANSWERED, env=None):
        run = self.run_korvo("check", *arguments, env=env)
        self.assertEqual(run.returncode, code, run.stdout + run.stderr)
        self.assertEqual(run.stderr, "")
        return run.stdout

    def lines_of(self, text, code=NO, arguments=()):
        """What is said of a file with that text, its name left out."""
        path = self.write("m.def", text)
        return self.check(path, "--format", "1", *arguments, code=code).replace(
            path, "m.def").splitlines()

    def finding(self, text, code):
        """The finding of a rule in a file, as data."""
        path = self.write("m.def", text)
        run = self.run_korvo("check", path, "--format", "1", "--json")
        diagnostics = json.loads(run.stdout)["files"][0]["diagnostics"]
        return next(d for d in diagnostics if d["code"] == code)


class CheckText(Check):
    def test_a_good_file_has_no_findings(self):
        self.assertEqual(self.lines_of(GOOD, ANSWERED)[-1], "0 errors, 0 warnings, 0 notes")
        self.assertEqual(len(self.lines_of(GOOD, ANSWERED)), 1)

    def test_no_example_has_an_error_or_a_warning(self):
        names = [n[:-4] for n in os.listdir(EXAMPLES) if n.endswith(".def")]
        self.assertGreaterEqual(len(names), 10)
        last = self.check(*names).splitlines()[-1]
        self.assertTrue(last.startswith("0 errors, 0 warnings, "), last)

    def test_an_error_stands_at_its_place(self):
        self.assertEqual(self.lines_of(BAD), [
            f"m.def:6:19: error: {BAD_TEXT} [rotation-point-number]",
            "  rotationpoint=0,0,zero",
            "                    ^~~~",
            "  write numbers only, separated by commas",
            "1 error, 0 warnings, 0 notes"])

    def test_a_warning_leaves_the_exit_code(self):
        self.assertIn("1 warning", self.lines_of(DOUBTFUL, ANSWERED)[-1])

    def test_suggests_the_keyword_that_was_meant(self):
        lines = self.lines_of(MISSPELT)
        at = next(i for i, line in enumerate(lines) if line.startswith("m.def:1:1: error: "))
        self.assertEqual(lines[at + 1:at + 4], ["  frme", "  ^~~~", "  did you mean 'frame'?"])
        self.assertIn("--fix mends 1", lines[-1])

    def test_a_finding_about_the_whole_file_has_no_line(self):
        lines = self.lines_of("frame\n")
        self.assertTrue(any(line.startswith("m.def: error: expected one part line, found none")
                            for line in lines), lines)

    def test_several_files_are_counted_together(self):
        paths = [self.write(f"{i}.def", text) for i, text in enumerate((BAD, GOOD, BAD))]
        lines = self.check(*paths, "--format", "1", code=NO).splitlines()
        self.assertTrue(lines[0].startswith(paths[0] + ":6:19: error: "))
        self.assertTrue(lines[4].startswith(paths[2] + ":6:19: error: "))
        self.assertEqual(lines[8:], ["2 errors, 0 warnings, 0 notes"])

    def test_what_cannot_be_read_is_a_finding_and_the_others_are_checked(self):
        path = self.write("m.def", BAD)
        lines = self.check("nowhere", self.folder, path, "--format", "1", code=NO).splitlines()
        self.assertEqual(
            lines[0], "nowhere: error: expected a readable file, found none [file-unreadable]")
        self.assertIn("found a folder [file-unreadable]", lines[1])
        self.assertEqual(lines[-1], "3 errors, 0 warnings, 0 notes")

    def test_format_is_what_the_file_is_read_as(self):
        path = self.write("m.def", GOOD.replace("X,1,x", "X,x"))
        self.assertEqual(self.check(path, "--format", "2"), self.check(path))
        self.assertIn("error:", self.check(path, "--format", "1", code=NO))


class CheckColumns(Check):
    """The caret stands below what is meant, whatever stands in front of it."""

    def marked(self, line, text="rotation-point-number"):
        """The line as shown, with what is underlined between brackets."""
        lines = self.lines_of(GOOD.encode() + line + b"\n")
        at = next(i for i, shown in enumerate(lines) if f"[{text}]" in shown)
        shown, caret = lines[at + 1:at + 3]
        self.assertEqual(re.sub("[^\t]", " ", shown[:caret.index("^")]), caret[:caret.index("^")])
        begin, end = caret.index("^"), len(caret)
        return f"{shown[:begin]}[{shown[begin:end]}]{shown[end:]}"

    def test_tabs_stay(self):
        self.assertEqual(self.marked(b"\trotationpoint\t=\t0,zero # why"),
                         "  \trotationpoint\t=\t0,[zero] # why")

    def test_a_tab_inside_stays_too(self):
        lines = self.lines_of(GOOD + "rotationpoint=0,ze\tro\n")
        self.assertEqual(lines[1:3], ["  rotationpoint=0,ze\tro", "                  ^~\t~~"])

    def test_utf8_counts_characters(self):
        line = "rotationpoint=é€🔧,0".encode()
        self.assertEqual(self.marked(line), "  rotationpoint=[é€🔧],0")
        self.assertEqual(self.finding(GOOD.encode() + line, "rotation-point-number")["length"], 3)

    def test_latin1_counts_bytes_and_is_shown_as_utf8(self):
        line = "rotationpoint=0,é".encode("latin-1")
        self.assertEqual(self.marked(line), "  rotationpoint=0,[é]")
        found = self.finding(GOOD.encode() + line, "rotation-point-number")
        self.assertEqual((found["column"], found["length"]), (17, 1))
        self.assertEqual(found["source"], "rotationpoint=0,é")

    def test_messages_quote_what_the_line_says(self):
        for encoding in ("utf-8", "latin-1"):
            with self.subTest(encoding):
                text = GOOD.encode() + "rotationpoint=0,été\n".encode(encoding)
                self.assertIn("found 'été' as operand 2",
                              self.finding(text, "rotation-point-number")["text"])

    def test_control_characters_are_spelled(self):
        self.assertEqual(self.marked(b"rotationpoint=\x1b[31m,0"),
                         r"  rotationpoint=[\x1b[31m],0")

    def test_control_characters_of_latin1_are_spelled(self):
        # 0x9B alone begins an escape sequence as ESC [ does.
        self.assertEqual(self.marked(b"rotationpoint=0,\x9b31m"), r"  rotationpoint=0,[\x9b31m]")

    def test_the_return_of_a_line_is_not_shown(self):
        self.assertEqual(self.marked(b"rotationpoint=0,zero\r"), "  rotationpoint=0,[zero]")

    def test_the_mark_of_utf8_is_no_column(self):
        lines = self.lines_of(b"\xef\xbb\xbf" + MISSPELT.encode())
        self.assertTrue(any(line.startswith("m.def:1:1: ") for line in lines), lines)


class CheckFrench(Check):
    def test_everything_is_french(self):
        self.assertEqual(self.lines_of(BAD, arguments=["--lang", "fr"]), [
            "m.def:6:19: erreur: un nombre attendu dans chacun des 12 premiers opérandes d'un "
            "point de rotation, trouvé : 'zero' comme opérande 3 [rotation-point-number]",
            "  rotationpoint=0,0,zero",
            "                    ^~~~",
            "  n'écrivez que des nombres, séparés par des virgules",
            "1 erreur, 0 avertissement, 0 note"])

    def test_a_warning_is_french(self):
        lines = self.lines_of(DOUBTFUL, ANSWERED, ["--lang", "fr"])
        self.assertTrue(any(": avertissement: " in line for line in lines), lines)

    def test_words_agree_with_what_they_say(self):
        for text, said in (("frame\n", "une ligne de pièce attendue, trouvé : aucune"),
                           (GOOD + "frame\n",
                            "une ligne de bâti attendue, trouvé : une autre, après la ligne 1"),
                           ("#\n", "trouvé : aucune sur 1 ligne ["),
                           (GOOD + "lien=Q\n", "lien vers un élément du fichier attendu")):
            with self.subTest(said):
                self.assertIn(said, "\n".join(self.lines_of(text, NO, ["--lang", "fr"])))

    def test_two_are_plural(self):
        twice = [self.write(f"{i}.def", BAD) for i in range(2)]
        self.assertTrue(self.check(*twice, "--format", "1", "--lang", "fr", code=NO).endswith(
            "\n2 erreurs, 0 avertissement, 0 note\n"))

    def test_the_offer_to_fix_is_french(self):
        self.assertIn(" ; --fix en corrige 1", self.lines_of(MISSPELT, NO, ["--lang", "fr"])[-1])

    def test_english_is_the_default(self):
        self.assertEqual(self.lines_of(BAD), self.lines_of(BAD, arguments=["--lang", "en"]))


class CheckColour(Check):
    def on_terminal(self, *arguments, **env):
        """Standard output of `check` when that is a terminal."""
        ours, theirs = pty.openpty()
        clean = {k: v for k, v in os.environ.items() if k != "NO_COLOR"}
        with subprocess.Popen([KORVO, "check", self.write("m.def", BAD), *arguments],
                              stdout=theirs, env={**clean, **env}) as child:
            os.close(theirs)
            seen = b""
            while True:
                try:
                    piece = os.read(ours, 65536)
                except OSError:
                    break
                if not piece:
                    break
                seen += piece
            self.assertEqual(child.wait(timeout=120), NO)
        os.close(ours)
        return seen.decode()

    def test_a_terminal_has_colour(self):
        self.assertIn("\x1b[1;31merror:\x1b[0m", self.on_terminal())

    def test_no_color_is_respected(self):
        self.assertFalse(is_colour(self.on_terminal(NO_COLOR="1")))

    def test_an_empty_no_color_says_nothing(self):
        self.assertTrue(is_colour(self.on_terminal(NO_COLOR="")))

    def test_the_option_decides(self):
        self.assertFalse(is_colour(self.on_terminal("--colour", "never")))
        self.assertTrue(is_colour(self.on_terminal("--colour", "always", NO_COLOR="1")))
        self.assertTrue(is_colour("\n".join(self.lines_of(BAD, arguments=["--colour=always"]))))

    def test_a_pipe_has_none(self):
        self.assertFalse(is_colour("\n".join(self.lines_of(BAD))))
        self.assertFalse(is_colour("\n".join(self.lines_of(BAD, arguments=["--colour=auto"]))))

    def test_colour_changes_nothing_else(self):
        coloured = "\n".join(self.lines_of(BAD, arguments=["--colour", "always"]))
        self.assertEqual(re.sub("\x1b\\[[0-9;]*m", "", coloured), "\n".join(self.lines_of(BAD)))


class CheckJson(Check):
    def test_json_has_every_field(self):
        path = self.write("m.def", BAD)
        answer = json.loads(self.check(path, "--format", "1", "--json", code=NO))
        validate(answer)
        self.assertEqual([answer[k] for k in ("language", "errors", "warnings", "notes", "fixes")],
                         ["en", 1, 0, 0, 0])
        self.assertEqual(answer["files"], [{
            "file": path, "format": 1, "formatReason": "as asked", "likelyFormat": 1,
            "diagnostics": [{
                "file": path, "line": 6, "column": 19, "length": 4,
                "code": "rotation-point-number", "severity": "error", "text": BAD_TEXT,
                "suggestion": "write numbers only, separated by commas",
                "source": "rotationpoint=0,0,zero", "fix": None, "isEndless": True}]}])

    def test_json_has_the_fix(self):
        found = self.finding(MISSPELT, "keyword-unknown")
        self.assertEqual(found["fix"], {"line": 1, "column": 1, "length": 4, "text": "frame"})

    def test_json_of_every_kind_of_file_is_valid(self):
        paths = [self.write("a.def", BAD), self.write("b.def", b"\xe9\x9b\0\xff\r"),
                 self.write("c.def", MISSPELT), "nowhere", "table-ac"]
        for language in ("en", "fr"):
            answer = json.loads(self.check(*paths, "--json", "--lang", language, code=NO))
            validate(answer)
            self.assertEqual(answer["language"], language)
            self.assertEqual(len(answer["files"]), 5)

    def test_json_of_a_good_file_answers_zero(self):
        answer = json.loads(self.check("table-ac", "--json"))
        validate(answer)
        self.assertEqual(answer["errors"], 0)
        self.assertEqual(answer["files"][0]["format"], 2)


class CheckSarif(Check):
    def sarif(self, *arguments, code=NO):
        answer = json.loads(self.check(*arguments, "--sarif", code=code))
        schema = os.path.join(os.path.dirname(os.path.abspath(__file__)), "sarif-2.1.0.json")
        with open(schema, encoding="utf-8") as file:
            jsonschema.Draft7Validator(json.load(file)).validate(answer)
        return answer["runs"][0]

    def one(self, text, code):
        """The result of a rule in one file."""
        run = self.sarif(self.write("m.def", text), "--format", "1")
        return next(r for r in run["results"] if r["ruleId"] == code)

    def test_a_result_has_its_region(self):
        result = self.one(BAD, "rotation-point-number")
        place = result["locations"][0]["physicalLocation"]
        self.assertEqual(place["artifactLocation"]["uri"], f"file://{self.folder}/m.def")
        self.assertEqual(place["region"], {
            "startLine": 6, "startColumn": 19, "endColumn": 23,
            "snippet": {"text": "rotationpoint=0,0,zero"}})
        self.assertEqual(result["level"], "error")
        self.assertIn(BAD_TEXT, result["message"]["text"])

    def test_columns_are_code_points(self):
        # The wrench is two units of UTF-16 and four bytes of UTF-8.
        result = self.one(GOOD + "rotationpoint=🔧,0\n", "rotation-point-number")
        region = result["locations"][0]["physicalLocation"]["region"]
        self.assertEqual((region["startColumn"], region["endColumn"]), (15, 16))
        self.assertEqual(self.sarif("table-ac", code=ANSWERED)["columnKind"], "unicodeCodePoints")

    def test_a_finding_about_the_file_has_no_region(self):
        result = self.one("frame\n", "one-part")
        self.assertEqual(list(result["locations"][0]["physicalLocation"]), ["artifactLocation"])

    def test_a_fix_is_a_replacement(self):
        change = self.one(MISSPELT, "keyword-unknown")["fixes"][0]["artifactChanges"][0]
        self.assertEqual(change["replacements"], [{
            "deletedRegion": {"startLine": 1, "startColumn": 1, "endColumn": 5},
            "insertedContent": {"text": "frame"}}])

    def test_rules_are_those_of_the_table(self):
        run = self.sarif(self.write("m.def", BAD), self.write("n.def", MISSPELT))
        rules = run["tool"]["driver"]["rules"]
        table = json.loads(self.check("--explain", "all", "--json"))["rules"]
        self.assertEqual([(r["id"], r["defaultConfiguration"]["level"]) for r in rules],
                         [(r["code"], r["severity"]) for r in table])
        for result in run["results"]:
            self.assertEqual(rules[result["ruleIndex"]]["id"], result["ruleId"])

    def test_names_of_files_are_escaped(self):
        path = self.write("ä b:c%.def", BAD)
        run = self.sarif(path, "--format", "1")
        uri = run["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"]
        self.assertEqual(uri, f"file://{self.folder}/%C3%A4%20b%3Ac%25.def")

    def test_a_relative_name_stays_relative(self):
        run = self.sarif("no where:1")
        uri = run["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"]
        self.assertEqual(uri, "no%20where%3A1")

    def test_french_says_so(self):
        driver = self.sarif("table-ac", "--lang", "fr", code=ANSWERED)["tool"]["driver"]
        self.assertEqual(driver["language"], "fr")
        rule = next(r for r in driver["rules"] if r["id"] == "axis-number")
        self.assertEqual(rule["shortDescription"]["text"],
                         "numéros d'axe attendus jusqu'à 10000, trouvé : ...")

    def test_every_kind_of_file_is_valid(self):
        self.sarif(self.write("b.def", b"\xe9\x9b\0\xff\r\n\n=,=\n"), "nowhere", self.folder)


class CheckFix(Check):
    def fixed(self, text, *arguments, code=ANSWERED):
        """What is said, and the bytes of the file afterwards."""
        path = self.write("m.def", text)
        said = self.check(path, "--fix", "--format", "1", *arguments, code=code)
        with open(path, "rb") as file:
            return said.replace(path, "m.def").splitlines(), file.read()

    def test_shows_the_difference_and_writes_the_file(self):
        lines, after = self.fixed(MISSPELT)
        self.assertEqual(lines, [
            "--- m.def", "+++ m.def", "@@ -1,4 +1,4 @@", "-frme", "+frame", " part=x,y,0,0,0",
            " lien=BATI", " axis=X,1,x", "0 errors, 0 warnings, 0 notes"])
        self.assertEqual(after, GOOD.encode())

    def test_reports_what_is_left(self):
        lines, after = self.fixed(BAD.replace("frame", "frme"), code=NO)
        self.assertIn("+frame", lines)
        self.assertIn("[rotation-point-number]", "".join(lines))
        self.assertEqual(lines[-1], "1 error, 0 warnings, 0 notes")
        self.assertEqual(after, BAD.encode())

    def test_line_ends_and_other_bytes_stay(self):
        def spoilt(keyword):
            return (b"\xef\xbb\xbf" + keyword + b"\t# \xe9\r\n\r\n" +
                    GOOD.encode().split(b"\n", 1)[1].replace(b"\n", b"\r\n") + b"# \xff\n# end")
        _, after = self.fixed(spoilt(b"frme"))
        self.assertEqual(after, spoilt(b"frame"))

    def test_changes_far_apart_are_two_hunks(self):
        lines, _ = self.fixed(MISSPELT + "#\n" * 10 + "limts=X,0,1\n")
        self.assertEqual([line for line in lines if line.startswith("@@")],
                         ["@@ -1,4 +1,4 @@", "@@ -13,4 +13,4 @@"])

    def test_changes_near_each_other_are_one_hunk(self):
        lines, _ = self.fixed(MISSPELT.replace("axis=", "axiss="))
        self.assertEqual(lines[2:-1], ["@@ -1,5 +1,5 @@", "-frme", "+frame", " part=x,y,0,0,0",
                                       " lien=BATI", "-axiss=X,1,x", "+axis=X,1,x",
                                       " tool=z,0,0,0"])

    def test_control_characters_of_the_difference_are_spelled(self):
        lines, _ = self.fixed(MISSPELT.replace("frme", "frme # \x1b[31m"))
        self.assertIn(r"-frme # \x1b[31m", lines)

    def test_without_a_fix_the_file_is_not_touched(self):
        for text, code in ((GOOD, ANSWERED), (BAD, NO)):
            path = self.write("m.def", text)
            os.utime(path, ns=(1, 1))
            before = os.stat(path)
            said = self.check(path, "--fix", "--format", "1", code=code)
            after = os.stat(path)
            self.assertNotIn("---", said)
            self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, 1))

    # The check itself reads by `fread`, which this fault leaves alone.
    def test_a_file_that_fails_to_be_read_is_not_replaced_by_its_beginning(self):
        text = MISSPELT + "# a comment to the end of the line\n" * 1000
        path = self.write("m.def", text)
        env = {**os.environ, "LD_PRELOAD": os.environ["KORVO_READ_FAULT"]}
        run = self.run_korvo("check", path, "--fix", env=env)
        self.assertEqual(run.returncode, REFUSED, run.stdout)
        self.assertIn(path + ": expected a readable file", run.stderr)
        with open(path, encoding="utf-8") as file:
            self.assertEqual(file.read(), text)

    def test_permissions_stay_and_nothing_is_left_beside(self):
        path = self.write("m.def", MISSPELT)
        os.chmod(path, 0o640)
        before = set(os.listdir(self.folder))
        self.check(path, "--fix")
        self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o640)
        self.assertEqual(set(os.listdir(self.folder)), before)

    def test_a_link_stays_one(self):
        path = self.write("m.def", MISSPELT)
        link = os.path.join(self.folder, "link.def")
        os.symlink("m.def", link)
        self.check(link, "--fix")
        self.assertTrue(os.path.islink(link))
        with open(path, encoding="utf-8") as file:
            self.assertEqual(file.read(), GOOD)

    def test_several_files_are_fixed(self):
        paths = [self.write(f"{i}.def", text) for i, text in enumerate((MISSPELT, GOOD, MISSPELT))]
        said = self.check(*paths, "--fix")
        self.assertEqual(said.count("+frame"), 2)

    def test_a_second_run_has_nothing_to_do(self):
        path = self.write("m.def", MISSPELT)
        self.check(path, "--fix")
        self.assertEqual(self.check(path, "--fix"), self.check(path))

    def test_a_file_that_cannot_be_written_stays(self):
        path = self.write("m" * 251 + ".def", MISSPELT)  # the longest name: none beside it fits
        self.assert_fails(REFUSED, "expected room and permission to write a file beside it",
                          "check", path, "--fix")
        with open(path, encoding="utf-8") as file:
            self.assertEqual(file.read(), MISSPELT)

    def test_answers_in_french(self):
        lines, _ = self.fixed(MISSPELT, "--lang", "fr")
        self.assertEqual(lines[-1], "0 erreur, 0 avertissement, 0 note")


class CheckExplain(Check):
    def test_says_all_of_a_rule(self):
        self.assertEqual(self.check("--explain", "rotation-point-number"), """\
rotation-point-number (error)
expected a number in each of the first 12 operands of a rotation point, found ... as operand ...

The reader tries an operand that is no number again and again: loading the file would never end.

How to mend it: write numbers only, separated by commas

Wrong:
    rotationpoint=0,0,zero
Right:
    rotationpoint=0,0,0
Of the wrong one it is said:
    example.def:1:19: error: expected a number in each of the first 12 operands of a rotation \
point, found 'zero' as operand 3 [rotation-point-number]
      rotationpoint=0,0,zero
                        ^~~~
      write numbers only, separated by commas
""")

    def test_says_it_in_french(self):
        page = self.check("--explain", "rotation-point-number", "--lang", "fr")
        for words in ("rotation-point-number (erreur)\n", "\nComment corriger : n'écrivez que",
                      "\nFaux :\n", "\nJuste :\n", "\nMessage pour l'exemple faux :\n",
                      ": erreur: un nombre attendu"):
            self.assertIn(words, page)

    def test_a_rule_without_lines_has_no_examples(self):
        self.assertNotIn("Wrong", self.check("--explain", "file-unreadable"))

    def test_all_is_every_rule(self):
        rules = json.loads(self.check("--explain", "all", "--json"))["rules"]
        page = self.check("--explain", "all")
        for rule in rules:
            self.assertIn(f"{rule['code']} ({rule['severity']})\n{rule['sentence']}\n", page)

    def test_json_is_valid_and_leaves_no_placeholder(self):
        for language in ("en", "fr"):
            answer = json.loads(self.check("--explain", "all", "--json", "--lang", language))
            validate(answer)
            self.assertEqual(answer["language"], language)
            for rule in answer["rules"]:
                self.assertNotRegex(rule["sentence"] + rule["suggestion"], r"\{\d\}")

    def test_no_control_character_reaches_the_terminal(self):
        self.assertNotRegex(self.check("--explain", "all"), r"[\x00-\x08\x0b-\x1f\x7f-\x9f]")

    def test_an_unknown_code_says_the_nearest(self):
        self.assert_fails(USAGE, "found 'rotation-point-numbr' (did you mean "
                          "'rotation-point-number'?)", "check", "--explain", "rotation-point-numbr")
        self.assert_fails(USAGE, "(vouliez-vous dire 'axis-number' ?)",
                          "check", "--explain", "axis-nummer", "--lang", "fr")
        run = self.run_korvo("check", "--explain", "xxx")
        self.assertEqual(run.returncode, USAGE)
        self.assertIn("found 'xxx'", run.stderr)
        self.assertNotIn("did you mean", run.stderr)

    def test_is_answered_without_a_folder_for_temporary_files(self):
        env = {**os.environ, "TMPDIR": "/nonexistent"}
        page = self.check("--explain", "axis-number", env=env)
        self.assertIn("\nRight:\n    translation=X,2,x\n", page)
        self.assertNotIn("example.def", page)

    def test_the_format_of_examples_is_said(self):
        self.assertIn("\nWrong (format 1):\n", self.check("--explain", "element-cycle"))
        self.assertIn("\nFaux (format 1) :\n",
                      self.check("--explain", "element-cycle", "--lang", "fr"))

    def test_colour_on_demand(self):
        self.assertTrue(is_colour(self.check("--explain", "axis-number", "--colour", "always")))


class CheckUsage(Check):
    def test_bad_command_lines(self):
        rows = [
            ((), "expected a MACHINE to check, or --explain CODE, found none"),
            (("table-ac", "--format", "3"), "expected auto, 1 or 2 after --format, found '3'"),
            (("table-ac", "--lang", "de"), "expected en or fr after --lang, found 'de'"),
            (("table-ac", "--colour", "red"),
             "expected auto, always or never after --colour, found 'red'"),
            (("table-ac", "--json", "--sarif"), "expected one of --json and --sarif, found both"),
            (("table-ac", "--fix", "--json"), "expected --fix alone"),
            (("table-ac", "--fix", "--sarif"), "expected --fix alone"),
            (("table-ac", "--explain", "all"), "expected --explain without a MACHINE"),
            (("--explain", "all", "--fix"), "expected --explain without --fix and --sarif"),
            (("--explain", "all", "--sarif"), "expected --explain without --fix and --sarif"),
            (("-",), "no machine is read from standard input"),
            (("",), "expected a definition file or the name of an example, found ''"),
            (("table-ac", "--tool", "1"), "--tool"),
        ]
        for arguments, message in rows:
            with self.subTest(arguments):
                self.assert_fails(USAGE, message, "check", *arguments)

    def test_help_says_the_options(self):
        help_text = self.check("--help")
        for option in ("--format", "--json", "--sarif", "--fix", "--lang", "--colour", "--explain"):
            self.assertIn(option, help_text)


class NoCheck(Check):
    """`--no-check` of the other verbs."""

    def test_leaves_the_rules_out(self):
        # The library passes over a line that it does not know; to the rules it is an error.
        path = self.write("m.def", GOOD + "limts=X,0,1\n")
        self.assert_fails(REFUSED, "m.def:6:1: error: ", "forward", path)
        run = self.run_korvo("forward", path, "--no-check")
        self.assertEqual((run.returncode, run.stderr), (ANSWERED, ""))

    def test_a_machine_without_axes_is_refused_where_it_is_asked(self):
        path = self.write("m.def", GOOD.replace("axis=X,1,x\n", ""))
        self.assert_fails(REFUSED, "[axis-count]", "forward", path)
        self.assert_fails(REFUSED, "a machine of 0 axes has no positions", "forward", path,
                          "--no-check")

    def test_warnings_are_left_out_too(self):
        path = self.write("m.def", DOUBTFUL)
        self.assertIn("[axis-number-twice]", self.run_korvo("info", path).stderr)
        self.assertEqual(self.run_korvo("info", path, "--no-check").stderr, "")

    def test_what_would_never_end_is_refused_still(self):
        path = self.write("m.def", BAD)
        self.assert_fails(REFUSED, "[rotation-point-number]", "info", path, "--no-check")

    def test_what_the_library_refuses_is_refused_still(self):
        path = self.write("m.def", "axis=X,1,x\n")
        self.assert_fails(REFUSED, "error: ", "info", path, "--no-check")
        self.assert_fails(REFUSED, "[file-unreadable]", "info", self.folder, "--no-check")

    def test_the_trace_holds_nothing_of_the_checks(self):
        trace = os.path.join(self.folder, "trace.txt")
        traces = []
        for arguments in ([], ["--no-check"]):
            self.answer("info", "arm-puma560", "--trace", trace, *arguments)
            with open(trace, encoding="utf-8") as file:
                traces.append(file.read())
        self.assertEqual(traces[0], traces[1])
        self.assertNotEqual(traces[0], "")


class CheckPages(Check):
    def script(self, *arguments):
        return subprocess.run([os.path.join(ROOT, "scripts", "check-pages"), *arguments],
                              capture_output=True, text=True, timeout=300, check=False)

    def test_are_those_of_the_table(self):
        run = self.script("--check", KORVO)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))

    def test_no_page_is_a_wall(self):
        folder = os.path.join(ROOT, "docs", "checks")
        for name in os.listdir(folder):
            if name == "README.md":
                continue
            with self.subTest(name), open(os.path.join(folder, name), encoding="utf-8") as file:
                self.assertLess(len(file.read().splitlines()), 70)
                self.assertLess(os.path.getsize(os.path.join(folder, name)), 3000)

    def test_bad_arguments_say_how(self):
        self.assertEqual(self.script("--wrong").returncode, 2)


if __name__ == "__main__":
    unittest.main()
