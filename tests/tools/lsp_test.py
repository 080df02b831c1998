"""The language server as an editor meets it: frames in, frames out, nothing else."""
import json
import os
import pathlib
import queue
import subprocess
import tempfile
import threading
import unittest

import user_locale  # fails where it is not there

KORVO = os.environ["KORVO"]
TIMEOUT = 60
PARSE_ERROR, INVALID_REQUEST, METHOD_NOT_FOUND, INVALID_PARAMS = -32700, -32600, -32601, -32602
NOT_INITIALIZED = -32002
ERROR, INFORMATION = 1, 3

MILL = """\
frame=z
part=x,y,0,0,0
lien=BATI
axis=X,+x
axis=Y,+y
axis=Z,+z
tool=z,0,0,110
"""
URI = "file:///nowhere/m.def"


def utf16(text):
    """How many units of UTF-16 `text` has."""
    return len(text.encode("utf-16-le")) // 2


def position(line, character):
    return {"line": line, "character": character}


def span(line, begin, end):
    return {"start": position(line, begin), "end": position(line, end)}


def frame(body):
    return b"Content-Length: %d\r\n\r\n" % len(body) + body


class Client:
    """An editor: writes what a test says, and takes what the server writes apart, strictly."""

    def __init__(self, *arguments, env=None):
        self.server = subprocess.Popen([KORVO, "lsp", *arguments], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0,
                                       env=env)
        self.messages = queue.Queue()
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        self.ids = 0

    def _read(self):
        stream = os.fdopen(os.dup(self.server.stdout.fileno()), "rb")
        with stream:
            while header := stream.readline():
                name, length = header.split(b": ")
                blank = stream.readline()
                if name != b"Content-Length" or blank != b"\r\n":
                    self.messages.put({"broken": header + blank})
                    return
                self.messages.put(json.loads(stream.read(int(length)).decode("utf-8")))

    def write(self, data):
        self.server.stdin.write(data)

    def send(self, message):
        self.write(frame(json.dumps({"jsonrpc": "2.0", **message}).encode()))

    def notify(self, method, params=None):
        self.send({"method": method, "params": params or {}})

    def receive(self):
        return self.messages.get(timeout=TIMEOUT)

    def request(self, method, params=None):
        """The answer; it is the next message, since the server answers in order."""
        self.ids += 1
        self.send({"id": self.ids, "method": method, "params": params or {}})
        answer = self.receive()
        assert answer["jsonrpc"] == "2.0" and answer.get("id") == self.ids, answer
        return answer

    def result(self, method, params=None):
        answer = self.request(method, params)
        assert "error" not in answer, answer
        return answer["result"]

    def error(self, method, params=None):
        answer = self.request(method, params)
        assert "result" not in answer, answer
        return answer["error"]["code"]

    def initialize(self, **options):
        result = self.result("initialize", {"processId": None, "rootUri": None, "capabilities": {},
                                            "initializationOptions": options})
        self.notify("initialized")
        return result

    def published(self):
        message = self.receive()
        assert message.get("method") == "textDocument/publishDiagnostics", message
        return message["params"]

    def open(self, text, uri=URI, version=1):
        document = {"uri": uri, "languageId": "korvo", "version": version, "text": text}
        self.notify("textDocument/didOpen", {"textDocument": document})
        return self.published()

    def change(self, text, uri=URI, version=2):
        self.notify("textDocument/didChange",
                    {"textDocument": {"uri": uri, "version": version},
                     "contentChanges": [{"text": text}]})

    def hover(self, line, character, uri=URI):
        return self.result("textDocument/hover", {"textDocument": {"uri": uri},
                                                  "position": position(line, character)})

    def complete(self, line, character, uri=URI):
        return self.result("textDocument/completion", {"textDocument": {"uri": uri},
                                                       "position": position(line, character)})

    def actions(self, where, uri=URI, **context):
        return self.result("textDocument/codeAction",
                           {"textDocument": {"uri": uri}, "range": where,
                            "context": {"diagnostics": [], **context}})

    def end(self):
        """Ends the input: (exit code, standard error)."""
        self.server.stdin.close()
        code = self.server.wait(timeout=TIMEOUT)
        self.reader.join(timeout=TIMEOUT)
        errors = self.server.stderr.read().decode()
        self.server.stdout.close()
        self.server.stderr.close()
        return code, errors


class Server(unittest.TestCase):
    def client(self, *arguments, **settings):
        client = Client(*arguments, **settings)
        self.addCleanup(self.finish, client)
        return client

    def finish(self, client):
        if not client.server.stdin.closed:
            client.end()
        self.assertTrue(client.messages.empty(), "a message that no test asked for")

    def started(self, *arguments, **options):
        client = self.client(*arguments)
        client.initialize(**options)
        return client

    def coded(self, published, code):
        found = [d for d in published["diagnostics"] if d["code"] == code]
        self.assertEqual(len(found), 1, published)
        return found[0]

    def labels(self, items):
        return [item["label"] for item in items]


class LspLifecycle(Server):
    def test_says_what_it_can(self):
        result = self.client().result("initialize", {"capabilities": {}})
        self.assertEqual(result["serverInfo"]["name"], "korvo")
        can = result["capabilities"]
        self.assertEqual(can["positionEncoding"], "utf-16")
        self.assertEqual(can["textDocumentSync"], {"openClose": True, "change": 1})
        self.assertIs(can["hoverProvider"], True)
        self.assertEqual(can["completionProvider"], {"triggerCharacters": ["=", ","]})
        self.assertEqual(can["codeActionProvider"], {"codeActionKinds": ["quickfix"]})

    def test_ends_with_0_after_shutdown_and_exit(self):
        client = self.started()
        self.assertIsNone(client.result("shutdown"))
        client.notify("exit")
        self.assertEqual(client.server.wait(timeout=TIMEOUT), 0)
        self.assertEqual(client.end(), (0, ""))

    def test_ends_with_1_at_exit_without_shutdown(self):
        client = self.started()
        client.notify("exit")
        self.assertEqual(client.server.wait(timeout=TIMEOUT), 1)

    def test_ends_with_1_at_exit_before_initialize(self):
        client = self.client()
        client.notify("exit")
        self.assertEqual(client.server.wait(timeout=TIMEOUT), 1)

    def test_ends_with_its_client(self):
        self.assertEqual(self.client().end(), (1, ""))
        client = self.started()
        self.assertIsNone(client.result("shutdown"))
        self.assertEqual(client.end(), (0, ""))

    def test_wants_initialize_first(self):
        client = self.client()
        for method in ("textDocument/hover", "shutdown", "no/such"):
            self.assertEqual(client.error(method), NOT_INITIALIZED)
        client.notify("textDocument/didOpen", {"textDocument": {"uri": URI, "text": "axxis=\n"}})
        client.initialize()
        self.assertIsNone(client.hover(0, 0))  # it was not opened

    def test_wants_initialize_once(self):
        client = self.started()
        self.assertEqual(client.error("initialize", {"capabilities": {}}), INVALID_REQUEST)

    def test_takes_nothing_but_exit_after_shutdown(self):
        client = self.started()
        client.open(MILL)
        client.result("shutdown")
        self.assertEqual(client.error("textDocument/hover"), INVALID_REQUEST)
        client.change("axxis=\n")
        client.notify("exit")
        self.assertEqual(client.server.wait(timeout=TIMEOUT), 0)

    def test_takes_the_flag_of_editors(self):
        self.assertIn("capabilities", self.client("--stdio").initialize())
        self.assertEqual(self.client("--stdio=false").end()[0], 2)

    def test_refuses_other_languages_and_formats(self):
        for arguments, message in ((["--lang", "de"], "expected en or fr after --lang, found 'de'"),
                                   (["--format", "3"],
                                    "expected auto, 1 or 2 after --format, found '3'")):
            code, errors = self.client(*arguments).end()
            self.assertEqual(code, 2)
            self.assertIn(message, errors)

    def test_refuses_other_options_and_waits_for_better_ones(self):
        client = self.client()
        for options in ({"language": "de"}, {"language": 1}, {"format": 3}, {"format": "1"}):
            self.assertEqual(client.error("initialize", {"initializationOptions": options}),
                             INVALID_PARAMS)
        client.initialize(language="en", format="auto", unknown=[1])


class LspProtocol(Server):
    def test_answers_unknown_requests(self):
        client = self.started()
        self.assertEqual(client.error("textDocument/definition"), METHOD_NOT_FOUND)
        self.assertEqual(client.error("$/no/such"), METHOD_NOT_FOUND)

    def test_ignores_unknown_notifications_and_responses(self):
        client = self.started()
        client.notify("$/setTrace", {"value": "off"})
        client.notify("textDocument/didSave", {"textDocument": {"uri": URI}})
        client.send({"id": 7, "result": None})
        client.send({"id": 8, "error": {"code": 1, "message": "no"}})
        self.assertEqual(client.error("no/such"), METHOD_NOT_FOUND)

    def test_says_that_a_message_is_no_json(self):
        client = self.started()
        for body in (b"{", b"", b"[1,", b'{"a": "\xff"}', b"\x00", b'{"a": "\\ud800"}'):
            client.write(frame(body))
            answer = client.receive()
            self.assertEqual((answer["id"], answer["error"]["code"]), (None, PARSE_ERROR), body)
        self.assertEqual(client.error("no/such"), METHOD_NOT_FOUND)

    def test_says_that_a_message_is_no_request(self):
        client = self.started()
        for message, answered in (
                ("5", None), ("[]", None), ('"text"', None), ("null", None), ("{}", None),
                ('{"jsonrpc": "2.0"}', None), ('{"method": "shutdown", "id": 3}', 3),
                ('{"jsonrpc": "1.0", "method": "shutdown", "id": 4}', 4),
                ('{"jsonrpc": "2.0", "method": 5, "id": "a"}', "a"),
                ('{"jsonrpc": "2.0", "method": "shutdown", "id": [1]}', None),
                ('{"jsonrpc": "2.0", "method": "shutdown", "id": null}', None)):
            client.write(frame(message.encode()))
            answer = client.receive()
            self.assertEqual((answer["id"], answer["error"]["code"]), (answered, INVALID_REQUEST))
        self.assertIsNone(client.hover(0, 0))  # still running

    def test_names_of_requests_may_be_texts(self):
        client = self.started()
        client.send({"id": "first", "method": "no/such"})
        self.assertEqual(client.receive()["id"], "first")

    def test_says_that_parameters_are_wrong(self):
        client = self.started()
        client.open(MILL)
        document = {"uri": URI}
        for params in ({}, [], {"textDocument": 3}, {"textDocument": document},
                       {"textDocument": document, "position": {"line": "0", "character": 0}},
                       {"textDocument": document, "position": {"line": 0, "character": 1.5}},
                       {"textDocument": {"uri": 4}, "position": position(0, 0)}):
            for method in ("textDocument/hover", "textDocument/completion"):
                self.assertEqual(client.error(method, params), INVALID_PARAMS, params)
            self.assertEqual(client.error("textDocument/codeAction", params), INVALID_PARAMS)
        client.send({"id": 99, "method": "textDocument/hover", "params": 5})
        self.assertEqual(client.receive()["error"]["code"], INVALID_PARAMS)

    def test_logs_notifications_with_wrong_parameters(self):
        client = self.started()
        for method in ("textDocument/didOpen", "textDocument/didChange", "textDocument/didClose"):
            for params in ({}, [], {"textDocument": {}}, {"textDocument": {"uri": 5}},
                           {"textDocument": {"uri": 5, "text": 5}, "contentChanges": 5}):
                client.send({"method": method, "params": params})
                message = client.receive()
                self.assertEqual(message["method"], "window/logMessage")
                self.assertEqual(message["params"],
                                 {"type": 1, "message": "expected the parameters of " + method})
        self.assertEqual(client.error("no/such"), METHOD_NOT_FOUND)

    def test_reads_messages_that_come_in_pieces(self):
        client = self.started()
        message = frame(json.dumps({"jsonrpc": "2.0", "id": 1, "method": "é𝔘"},
                                   ensure_ascii=False).encode())
        for byte in message:
            client.write(bytes([byte]))
        self.assertIn("é𝔘", client.receive()["error"]["message"])

    def test_reads_messages_that_come_together(self):
        client = self.started()
        client.write(b"".join(frame(json.dumps({"jsonrpc": "2.0", "id": i, "method": "a"}).encode())
                              for i in range(20)))
        self.assertEqual([client.receive()["id"] for _ in range(20)], list(range(20)))

    def test_reads_other_headers_too(self):
        client = self.started()
        body = b'{"jsonrpc": "2.0", "id": 1, "method": "a"}'
        kind = b"Content-Type: application/vscode-jsonrpc; charset=utf-8\r\n"
        for header in (kind + b"Content-Length: %d\r\n\r\n", b"content-length:%d\n\n",
                       b"Content-Length: %d\r\n" + kind + b"\r\n"):
            client.write(header % len(body) + body)
            self.assertEqual(client.receive()["id"], 1)

    def test_ends_with_3_at_a_header_without_a_length(self):
        for header, found in (
                (b"Content-Type: x\r\n\r\n{}", "found none"),
                (b"\r\n{}", "found none"),
                (b"Content-Length: -1\r\n\r\n", "found '-1'"),
                (b"Content-Length: 67108865\r\n\r\n", "found '67108865'"),
                (b"Content-Length: 99999999999999999999\r\n\r\n", "found '99999999999999999999'"),
                (b"Content-Length: 1.5\r\n\r\n", "found '1.5'"),
                (b"Content-Length: two\r\n\r\n", "found 'two'"),
                (b"Content-Length:\r\n\r\n", "found ''"),
                (b"Content-Length\r\n\r\n", "found ''"),
                (b"x" * 5000, "expected a header line"),
                (b"Content-Length: 2\r\n", "expected an empty line behind the header"),
                (b"Content-Len", "expected a whole header line"),
                (b"Content-Length: 3\r\n\r\n{}", "expected a message of 3 bytes, found 2")):
            with self.subTest(header[:40]):
                client = self.started()
                client.write(header)
                code, errors = client.end()
                self.assertEqual(code, 3)
                self.assertTrue(errors.startswith("korvo lsp: expected "), errors)
                self.assertIn(found, errors)
                self.assertEqual(errors.count("\n"), 1)

    def test_reads_a_message_of_the_greatest_length(self):
        client = self.started()
        head, tail = b'{"jsonrpc": "2.0", "id": 1, "method": "a"', b"}"
        blanks = 64 * 1024 * 1024 - len(head) - len(tail)
        client.write(frame(head + b" " * blanks + tail))
        self.assertEqual(client.receive()["error"]["code"], METHOD_NOT_FOUND)


class LspDiagnostics(Server):
    def test_a_good_document_has_none(self):
        published = self.started().open(MILL)
        self.assertEqual((published["uri"], published["version"]), (URI, 1))
        self.assertEqual([d for d in published["diagnostics"] if d["severity"] < INFORMATION], [])

    def test_says_what_where_and_how_to_mend_it(self):
        found = self.coded(self.started().open(MILL + "rotationpoint=1,b,3\n"),
                           "rotation-point-number")
        self.assertEqual(found["range"], span(7, 16, 17))
        self.assertEqual((found["severity"], found["source"]), (ERROR, "korvo"))
        self.assertRegex(found["message"], "^expected a number .*, found 'b'.*; write numbers only")

    def test_columns_are_units_of_utf16(self):
        # A statement reads what stands in front of its "#" alone: only there may columns differ.
        # "é" is one unit and two bytes, "\U0001d518" two units and four bytes.
        for name in ("e", "é", "\u2014", "\U0001d518", "\U0001d518é\U0001f600"):
            line = f"rotationpoint = {name}, 2"
            with self.subTest(name):
                found = self.coded(self.started().open(MILL + line + "\n"), "rotation-point-number")
                self.assertEqual(found["range"], span(7, 16, 16 + utf16(name)))
                other = self.coded(self.started().open(MILL + f"rotationpoint=1,,{name}\n"),
                                   "rotation-point-number")
                self.assertEqual(other["range"]["start"], position(7, 16))

    def test_lines_end_as_the_editor_counts_them(self):
        bad = "rotationpoint=b"
        for text, line, character in ((MILL.replace("\n", "\r\n") + bad + "\r\n", 7, 14),
                                      ("\ufeff" + bad, 0, 15), (bad, 0, 14)):
            with self.subTest(text):
                found = self.coded(self.started().open(text), "rotation-point-number")
                self.assertEqual(found["range"], span(line, character, character + 1))

    def test_a_finding_without_a_column_marks_the_line(self):
        # No part, no tool: about the file, so its first line is marked.
        line = "frame=z   # \U0001f600"
        published = self.started().open(line + "\r\n")
        whole = [d for d in published["diagnostics"] if d["range"]["start"] == position(0, 0)]
        self.assertTrue(whole)
        self.assertEqual({d["range"]["end"]["character"] for d in whole}, {utf16(line)})

    def test_an_empty_document_is_answered(self):
        published = self.started().open("")
        self.assertTrue(published["diagnostics"])
        for found in published["diagnostics"]:
            self.assertEqual(found["range"], span(0, 0, 0))

    def test_follow_the_changes(self):
        client = self.started()
        self.coded(client.open(MILL + "rotationpoint=b\n"), "rotation-point-number")
        client.change(MILL, version=2)
        published = client.published()
        self.assertEqual(published["version"], 2)
        self.assertNotIn("rotation-point-number", [d["code"] for d in published["diagnostics"]])
        client.notify("textDocument/didChange",
                      {"textDocument": {"uri": URI, "version": 3},
                       "contentChanges": [{"text": MILL}, {"text": MILL + "\nrotationpoint=b"}]})
        found = self.coded(client.published(), "rotation-point-number")
        self.assertEqual(found["range"], span(8, 14, 15))

    def test_are_cleared_when_the_document_closes(self):
        client = self.started()
        client.open("rotationpoint=b\n")
        client.notify("textDocument/didClose", {"textDocument": {"uri": URI}})
        self.assertEqual(client.published(), {"uri": URI, "diagnostics": []})
        self.assertIsNone(client.hover(0, 3))
        self.assertEqual(client.complete(0, 0), [])

    def test_documents_do_not_touch_each_other(self):
        client = self.started()
        other = "file:///nowhere/other.def"
        client.open(MILL)
        self.coded(client.open("rotationpoint=b\n", other), "rotation-point-number")
        self.assertIn("number", client.hover(0, 3, other)["contents"]["value"])
        client.notify("textDocument/didClose", {"textDocument": {"uri": other}})
        self.assertEqual(client.published(), {"uri": other, "diagnostics": []})
        self.assertIn("frame", client.hover(0, 3)["contents"]["value"])

    def test_a_document_that_is_not_open_is_left_alone(self):
        client = self.started()
        client.change("rotationpoint=b\n")
        client.notify("textDocument/didClose", {"textDocument": {"uri": URI}})
        self.assertIsNone(client.hover(0, 0))
        self.assertEqual(client.complete(0, 0), [])
        self.assertEqual(client.actions(span(0, 0, 1)), [])

    def test_a_change_of_a_part_is_not_taken(self):
        client = self.started()
        client.open(MILL)
        client.notify("textDocument/didChange",
                      {"textDocument": {"uri": URI, "version": 2},
                       "contentChanges": [{"range": span(0, 0, 5), "text": "x"}]})
        self.assertIn("frame", client.hover(0, 3)["contents"]["value"])

    def test_french(self):
        english = self.coded(self.started().open("rotationpoint=b\n"), "rotation-point-number")
        texts = set()
        for client in (self.started(language="fr"), self.started("--lang", "fr"),
                       self.started("--lang", "en", language="fr")):
            found = self.coded(client.open("rotationpoint=b\n"), "rotation-point-number")
            self.assertEqual(found["range"], english["range"])
            self.assertRegex(found["message"],
                             "attendu.*, trouvé : 'b'.* ; n'écrivez que des nombres")
            texts.add(found["message"])
        self.assertEqual(len(texts), 1)

    def test_the_format_is_that_of_the_options(self):
        # An axis of format 1 has a number; in format 2, W is no axis that moves.
        text = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=W,1,+z\ntool=z,0,0,0\n"
        bad = [[d for d in client.open(text)["diagnostics"] if d["severity"] < INFORMATION]
               for client in (self.started(), self.started(format=1), self.started("--format", "1"),
                              self.started("--format", "2", format=1))]
        self.assertEqual(bad, [[], [], [], []])
        for client in (self.started(format=2), self.started("--format", "2")):
            found = [d for d in client.open(text)["diagnostics"] if d["severity"] < INFORMATION]
            self.assertTrue(found)

    def test_geometry_files_lie_beside_the_document(self):
        with tempfile.TemporaryDirectory() as folder:
            home = pathlib.Path(folder, "a b é%41")
            home.mkdir()
            (home / "cube.stl").write_text("solid a\n facet normal 0 0 1\n  outer loop\n"
                                           "   vertex 0 0 0\n   vertex 900 0 0\n   vertex 0 900 0\n"
                                           "  endloop\n endfacet\nendsolid a\n", encoding="ascii")
            text = MILL.replace("axis=Z,+z", "axis=Z,+z,$ZRN_MACHINE_DEF/cube.stl")
            self.assertEqual(self.geometry_findings((home / "m.def").as_uri(), text), [])

    def geometry_findings(self, uri, text):
        published = self.started().open(text, uri)
        return [d["message"] for d in published["diagnostics"] if "cube" in d["message"]]

    def test_says_when_it_cannot_check(self):
        # The text is checked as a file in the folder for temporary files.
        client = self.client(env={**os.environ, "TMPDIR": "/nonexistent"})
        client.initialize()
        client.notify("textDocument/didOpen", {"textDocument": {"uri": URI, "text": MILL}})
        message = client.receive()
        self.assertEqual(message["method"], "window/showMessage")
        self.assertEqual(message["params"]["type"], 1)
        self.assertTrue(message["params"]["message"])
        self.assertIn("frame", client.hover(0, 0)["contents"]["value"])

    def test_a_long_document_is_answered(self):
        lines = 10000
        text = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\n" + "geom=a.stl\n" * lines
        client = self.started(format=1)
        published = client.open(text + "tool=z,0,0,0\nrotationpoint=b\n")
        found = self.coded(published, "rotation-point-number")
        self.assertEqual(found["range"], span(4 + lines + 1, 14, 15))

    def test_other_uris_are_taken(self):
        for uri in ("untitled:Untitled-1", "file://localhost/a%20b.def", "file:", "file://x", "",
                    "file:///%zz%4", "file:///%00%ff", "http://x/y"):
            with self.subTest(uri):
                published = self.started().open("rotationpoint=b\n", uri)
                self.assertEqual(published["uri"], uri)
                self.coded(published, "rotation-point-number")


class LspHover(Server):
    def test_every_keyword_has_one(self):
        client = self.started()
        client.open("\n")
        words = self.labels(client.complete(0, 0))
        for line, word in enumerate(words):
            client.change("\n" * line + word.upper() + "=1\n")
            client.published()
            hover = client.hover(line, 1)
            self.assertIn(word.upper() + "=", hover["contents"]["value"])
            self.assertEqual(hover["contents"]["kind"], "plaintext")
            self.assertEqual(hover["range"], span(line, 0, len(word)))

    def test_say_operands_and_meaning(self):
        client = self.started()
        client.open("limits=X,0,1\nrotation=C,z,0,0,0,0,0\n")
        text = client.hover(0, 2)["contents"]["value"]
        self.assertEqual(text.split("\n")[0], "limits=axis,minimum,maximum")
        self.assertIn("mm or degrees", text)
        lines = client.hover(1, 2)["contents"]["value"].split("\n")
        self.assertTrue(lines[0].startswith("format 1: rotation=name,number,direction,0,0,x,y,z"))
        self.assertTrue(lines[1].startswith("format 2: rotation=A|B|C,direction,0,0,x,y,z"))

    def test_stand_on_the_keyword_alone(self):
        client = self.started()
        client.open("\t lim its = X,0,1 # limits\n# limits=\nno=1\n")
        for character in (2, 5, 9):
            self.assertEqual(client.hover(0, character)["range"], span(0, 2, 9))
        for line, character in ((0, 0), (0, 1), (0, 10), (0, 12), (0, 24), (1, 3), (2, 0), (3, 0),
                                (9, 9), (0, 999), (4000000000, 4000000000)):
            self.assertIsNone(client.hover(line, character), (line, character))

    def test_lines_end_as_the_editor_counts_them(self):
        # A CR ends a line for the editor; for the library it is a blank.
        client = self.started()
        client.open("\rlimits=X,0,1\r\nmode=1")
        self.assertEqual(client.hover(1, 0)["range"], span(1, 0, 6))
        self.assertEqual(client.hover(2, 4)["range"], span(2, 0, 4))
        self.assertIsNone(client.hover(0, 0))

    def test_french(self):
        client = self.started(language="fr")
        client.open("limites=X,0,1\n")
        text = client.hover(0, 0)["contents"]["value"]
        self.assertEqual(text.split("\n")[0], "limites=axe,minimum,maximum")
        self.assertIn("course", text)


class LspCompletion(Server):
    DOCUMENT = """\
frame=z
part=x,y,0,0,0
lien=BATI
axis=AXE_X,+x
rotation=C,z,0,0,0,0,0
tool=z,0,0,0
tool=z,0,0,9
{line}
axis=Y,+y
"""

    def at_end_of(self, line):
        client = self.started()
        client.open(self.DOCUMENT.format(line=line))
        return client.complete(7, utf16(line))

    def test_keywords_at_the_start_of_a_line(self):
        for line, begin in (("", 0), ("  ", 2), ("\tli", 1), ("é", 0)):
            items = self.at_end_of(line)
            some = {"lien", "axe", "axis", "limites", "limits", "rotation", "bati", "frame",
                    "courseminimum", "pointderotation", "rotationpoint"}
            self.assertEqual(some - set(self.labels(items)), set())
            self.assertEqual(len(items), len(set(self.labels(items))))
            axis = next(item for item in items if item["label"] == "axis")
            self.assertEqual(axis["kind"], 14)
            self.assertEqual(axis["textEdit"],
                             {"range": span(7, begin, utf16(line)), "newText": "axis"})
            self.assertIn("axis=", axis["detail"])
            self.assertIn("linear axis", axis["documentation"])

    def test_axes_where_travels_are_said(self):
        for word in ("limites", "limits", "courseminimum", "COURSE MAXIMUM"):
            self.assertEqual(self.labels(self.at_end_of(word + "=")), ["AXE_X", "C"])

    def test_elements_where_elements_are_named(self):
        names = ["BATI", "PIECE", "AXE_X", "C", "OUTIL"]
        for word in ("lien", "loop", "boucle"):
            self.assertEqual(self.labels(self.at_end_of(word + "=")), names)
        for line in ("collision=", "collisions=C,", "collisions=C , P"):
            self.assertEqual(self.labels(self.at_end_of(line)), names + ["tool", "gun", "gundrill"])

    def test_names_say_the_line_that_declares_them(self):
        name = self.at_end_of("limits = A")[0]
        self.assertEqual(name["detail"], "axis=AXE_X,+x")
        self.assertEqual(name["textEdit"], {"range": span(7, 9, 10), "newText": "AXE_X"})

    def test_names_are_those_of_the_lines_above(self):
        client = self.started()
        client.open(self.DOCUMENT.format(line="") + "limits=")
        self.assertEqual(self.labels(client.complete(9, 7)), ["AXE_X", "C", "Y"])

    def test_names_keep_their_characters(self):
        client = self.started()
        client.open("axis=\U0001d518é,1,x\nlimits=\U0001d518")
        item = client.complete(1, 9)[0]
        self.assertEqual(item["label"], "\U0001d518é")
        self.assertEqual(item["textEdit"]["range"], span(1, 7, 9))

    def test_nothing_where_a_number_or_a_remark_stands(self):
        for line in ("limits=X,", "lien=C,", "axis=", "no=", "# l", "axis=X # l", "* l", " / l",
                     "limits=X=", "limits#=", "strategy="):
            self.assertEqual(self.at_end_of(line), [], line)


class LspFixes(Server):
    def test_a_misspelt_keyword_is_mended(self):
        text = MILL.replace("axis=Y", "axsi=Y")
        client = self.started()
        published = client.open(text)
        fixable = [a for a in client.actions(span(4, 0, 3)) if a["kind"] == "quickfix"]
        self.assertEqual(len(fixable), 1, published)
        action = fixable[0]
        self.assertIn(action["diagnostics"][0], published["diagnostics"])
        self.assertTrue(action["title"])
        edits = action["edit"]["changes"][URI]
        self.assertEqual(edits, [{"range": span(4, 0, 4), "newText": "axis"}])

    def test_stand_where_they_are_asked_for(self):
        client = self.started()
        client.open(MILL.replace("axis=Y", "axsi=Y"))
        for where in (span(0, 0, 5), span(3, 0, 9), span(5, 0, 1), span(99, 0, 0)):
            self.assertEqual(client.actions(where), [])
        whole = {"start": position(0, 0), "end": position(99, 0)}
        self.assertEqual(len(client.actions(whole)), 1)

    def test_come_when_quick_fixes_are_wanted(self):
        client = self.started()
        client.open(MILL.replace("axis=Y", "axsi=Y"))
        for only, count in ((["quickfix"], 1), ([""], 1), (["refactor", "quickfix"], 1),
                            (["refactor"], 0), ([], 0), ("quickfix", 0)):
            self.assertEqual(len(client.actions(span(4, 0, 4), only=only)), count, only)

    def test_columns_are_units_of_utf16(self):
        client = self.started()
        client.open(MILL.replace("axis=Y,+y", "\taxsi=Y,+y # \U0001d518"))
        edits = client.actions(span(4, 1, 1))[0]["edit"]["changes"][URI]
        self.assertEqual(edits, [{"range": span(4, 1, 5), "newText": "axis"}])


if __name__ == "__main__":
    unittest.main()
