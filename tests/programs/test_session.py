"""quillportctl session: every action and every effect of the protocol (docs/session.md)."""

import json
import os
import subprocess

from harness import (APPLICATION, PROGRAM, ProgramTest, connections, contents, environment, files_below, log_in, told,
                     write)

NAME = APPLICATION["K5902"]

START = """\
barTotFile.value = 0
barTotFile.visible = False
txtResult.text = Not connected to RTU
lblApp.caption =
lblAppDate.caption =
lblAppSize.caption =
lblOs.caption =
lblOsDate.caption =
lblOsSize.caption =
lblRtuName.caption =
lblPn.caption =
lblCfgName.caption =
lblCfgDate.caption =
lblGuiName.caption =
lblGuiDate.caption =
cmbFileType.items = ['Configuration']
cmbFileType.items = ['Configuration', 'Application']
cmbFileType.items = ['Configuration', 'Application', 'GUI']
cmbFileType.items = ['Configuration', 'Application', 'GUI', 'Operating System']
cmbFileType.items = ['Configuration', 'Application', 'GUI', 'Operating System', 'Templates']
lbl_ver.caption = Ver : 4.1.0"""

LOGIN = f"""\
lblHostName.caption = rtu.test
txtResult.text = Connected to RTU
cmdSendFile.enabled = True
cmdGetFile.enabled = True
cmdCancel.enabled = True
txt_username.enabled = False
txt_password.enabled = False
cmd_connect.enabled = False
lblRtuName.caption = Harbour Road Substation 12
lblPn.caption = K5902
lblRunMode.caption =
lblCfgName.caption = Harbour Road 132kV Rev C
lblCfgDate.caption = 17/03/2016 14:22:05
lblGuiName.caption = K5902-041A-0300.gui
lblGuiDate.caption = 10/02/15
lblGuiSize.caption = 24576"""


def lines(text):
    return [line + " " if line.endswith("=") else line for line in text.splitlines()]


class SessionTest(ProgramTest):
    def raw(self, text, *options):
        """The session's answer to this standard input."""
        data = text if isinstance(text, bytes) else text.encode()
        return subprocess.run([PROGRAM, "session", *options], input=data, capture_output=True, env=environment(None),
                              timeout=60, check=False)

    def logged_in(self, *simulator_options, options=()):
        """A session after its login, and its RTU."""
        rtu = self.rtu(*simulator_options)
        session = self.session(*connections(rtu), *options)
        session.do(*log_in(rtu))
        return session, rtu


class StartAndEnd(SessionTest):
    def test_the_control_is_made_before_the_first_action_is_read(self):
        done = self.raw("")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(told(map(json.loads, done.stdout.splitlines())), lines(START))
        self.assertEqual(done.stderr, b"")

    def test_keys_stand_in_their_documented_order(self):
        first = self.raw("").stdout.splitlines()[0]
        self.assertEqual(first, b'{"event":"write","control":"barTotFile","property":"value","value":0}')

    def test_effects_are_flushed_at_once(self):
        session = self.session()
        # Returns only because the effects come while the session waits for more.
        self.assertEqual(told(session.do({"call": "Connect"}))[-1], "done 1")
        effects, status, err = session.end()
        self.assertEqual((effects, status, err), ([], 0, ""))

    def test_what_the_options_give_is_put_in_first(self):
        rtu = self.rtu()
        session = self.session(*rtu.options())
        effects = told(session.do({"click": "cmd_connect"}))
        self.assertEqual(effects[:len(lines(START)) + 1], lines(START) + ["lblHostName.caption = rtu.test"])
        self.assertIn("txtResult.text = Connected to RTU", effects)

    def test_a_last_line_without_an_end_counts(self):
        done = self.raw('{"call":"Connect"}')
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.endswith(b'{"event":"done","action":1}\n'))

    def test_a_line_that_is_no_action_ends_it(self):
        for line, why in (("clik", "it is not JSON"), ("", "it is not JSON"), ("\xff", "it is not JSON"),
                          ('{"click":"cmd_conect"}', 'unknown control "cmd_conect" (did you mean "cmd_connect"?)'),
                          ('{"answer":"Maybe"}', 'unknown button "Maybe"'),
                          ('{"get":"partNumber"}', "partNumber can be set, but not read"),
                          ('{"wen":{},"click":"cmdCancel"}', 'the key "wen" does not belong in the line')):
            with self.subTest(line):
                done = self.raw('{"call":"Connect"}\n'.encode() + line.encode("latin-1") + b'\n{"call":"Connect"}\n')
                self.assertEqual(done.returncode, 2)
                self.assertEqual(done.stderr.decode(), f"quillportctl: line 2: {why}\n")
                self.assertTrue(done.stdout.endswith(b'{"event":"done","action":1}\n'))

    def test_a_line_without_end_is_refused(self):
        done = self.raw(b"x" * (1 << 21))
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"line 1: the line is longer than", done.stderr)

    def test_a_reader_that_goes_away_ends_it(self):
        session = self.session()
        session.process.stdout.readline()
        session.process.stdout.close()
        try:
            for _ in range(10):
                session.process.stdin.write('{"panel":true}\n')
            session.process.stdin.close()
        except BrokenPipeError:
            pass
        self.assertEqual(session.process.wait(60), 1)
        self.assertIn("standard output cannot be written", session.process.stderr.read())


class Members(SessionTest):
    def test_properties(self):
        session = self.session()
        effects = session.do({"set": "HostName", "value": "r\u00fc.test"}, {"get": "HostName"},
                             {"set": "partNumber", "value": "K5901"})
        self.assertEqual(told(effects)[len(lines(START)):], [
            "lblHostName.caption = r\u00fc.test", "done 1",
            '{"event": "value", "name": "HostName", "value": "r\\u00fc.test"}', "done 2", "done 3"])

    def test_get_files(self):
        for name in ("a.out", "B.OUT", "c.txt", ".hidden.out"):
            write(self.here(name), b"x")
        session = self.session()
        pattern = self.folder.replace("/", "\\") + "\\*.out"
        effects = session.do({"call": "GetFiles", "filespec": pattern, "attributes": 0},
                             {"call": "GetFiles", "filespec": pattern, "attributes": 2},
                             {"call": "GetFiles", "filespec": pattern + "x"})
        values = [effect for effect in effects if effect["event"] == "value"]
        self.assertEqual([value["name"] for value in values], ["GetFiles"] * 3)
        self.assertEqual([(value["value"][0], sorted(value["value"][1:])) for value in values],
                         [("", ["B.OUT", "a.out"]), ("", [".hidden.out", "B.OUT", "a.out"]), ("", [])])

    def test_connect_does_nothing_and_disconnect_empties_the_labels(self):
        session, _ = self.logged_in()
        self.assertEqual(told(session.do({"call": "Connect"})), ["done 6"])
        effects = told(session.do({"call": "Disconnect"}))
        self.assertEqual(effects[0], "txtResult.text = Disconnected from RTU")
        self.assertEqual(effects[-2:], ["lblGuiSize.caption = ", "done 7"])
        self.assertEqual(told(session.do({"click": "cmdGetFile"})), [
            "[Quillport] Not connected to RTU. Please refresh page. {OK} -> OK",
            "txtResult.text = Not connected to RTU", "done 8"])


class Hand(SessionTest):
    def test_login_by_click(self):
        rtu = self.rtu()
        session = self.session(*connections(rtu))
        effects = [line for line in told(session.do(*log_in(rtu))) if not line.startswith("done")]
        effects = effects[len(lines(START)):]
        self.assertEqual(effects[0], "lblHostName.caption = rtu.test")  # of the property
        self.assertEqual(effects[1:len(lines(LOGIN)) + 1], lines(LOGIN))
        self.assertEqual(effects[-1], "barTotFile.value = 0")

    def test_login_by_the_enter_key_and_no_other(self):
        rtu = self.rtu()
        session = self.session(*connections(rtu))
        session.do(*log_in(rtu)[:-1])
        self.assertEqual(told(session.do({"key": 27, "in": "txt_password"})), ["done 5"])
        self.assertEqual(told(session.do({"key": 13, "in": "txt_username"})), ["done 6"])
        self.assertIn("txtResult.text = Connected to RTU", told(session.do({"key": 13, "in": "txt_password"})))

    def test_a_failed_login_can_be_repeated(self):
        rtu = self.rtu()
        session = self.session(*connections(rtu))
        effects = told(session.do(*log_in(rtu, password="wrong")))
        self.assertTrue(effects[-3].startswith("[Quillport] Error connecting to target. Descr: '"), effects[-3])
        effects = told(session.do({"type": "txt_password", "text": "rtu"}, {"click": "cmd_connect"}))
        self.assertIn("txtResult.text = Connected to RTU", effects)

    def test_typing_is_cut_at_the_length_limit_and_writes_nothing(self):
        session = self.session()
        session.do({"type": "txt_username", "text": "\u00fc" * 50}, {"type": "txt_password", "text": "x" * 50},
                   {"type": "cmbFileType", "text": "y" * 50})
        panel = session.do({"panel": True})[0]["controls"]
        self.assertEqual(panel["txt_username"]["text"], "\u00fc" * 45)
        self.assertEqual(panel["txt_password"]["text"], "********")
        self.assertEqual(panel["cmbFileType"]["text"], "y" * 50)

    def test_a_double_click(self):
        session = self.session()
        self.assertEqual(told(session.do({"doubleclick": "lbl_Backdoor"}))[-2:],
                         ["[Quillport] Super user mode enabled {OK} -> OK", "done 1"])
        self.assertEqual(told(session.do({"doubleclick": "lblApp"})), ["done 2"])

    def test_disabled_controls_ignore_the_hand(self):
        session = self.session()
        session.do({"call": "Connect"})
        for action, word, control in (({"click": "cmdGetFile"}, "click", "cmdGetFile"),
                                      ({"doubleclick": "cmdCancel"}, "doubleclick", "cmdCancel"),
                                      ({"click": "barTotFile"}, "click", "barTotFile")):
            self.assertEqual(session.do(action)[0], {"event": "ignored", "action": word, "control": control})
        session, _ = self.logged_in()
        for action, word, control in (({"type": "txt_username", "text": "x"}, "type", "txt_username"),
                                      ({"key": 13, "in": "txt_password"}, "key", "txt_password"),
                                      ({"click": "cmd_connect"}, "click", "cmd_connect")):
            self.assertEqual(session.do(action)[0], {"event": "ignored", "action": word, "control": control})

    def test_free_text_in_the_type_moves_nothing(self):
        session, _ = self.logged_in()
        session.do({"type": "cmbFileType", "text": "application"})
        self.assertEqual(told(session.do({"click": "cmdGetFile"})),
                         ["barTotFile.value = 0", "barTotFile.visible = False", "txtResult.text = OK", "done 7"])


class Panel(SessionTest):
    def test_every_control(self):
        session, _ = self.logged_in()
        event = session.do({"panel": True})[0]
        self.assertEqual(list(event), ["event", "controls"])
        panel = event["controls"]
        self.assertEqual(len(panel), 40)
        self.assertEqual(panel["lblApp"], {"caption": NAME, "enabled": True, "visible": True})
        self.assertEqual(panel["cmbFileType"], {
            "text": "Configuration", "enabled": True, "visible": True,
            "items": ["Configuration", "Application", "GUI", "Operating System", "Templates"]})
        self.assertEqual(panel["barTotFile"], {"enabled": True, "visible": False, "value": 0})
        self.assertEqual(panel["txt_password"], {"text": "********", "enabled": False, "visible": True})
        self.assertEqual(panel["cmdGetFile"], {"caption": "Get from RTU", "enabled": True, "visible": True})


class Get(SessionTest):
    def application(self, session, *before):
        session.do({"type": "cmbFileType", "text": "Application"})
        return session.do(*before, {"click": "cmdGetFile"})

    def test_the_whole_of_a_get(self):
        session, rtu = self.logged_in("--application-size", "0")
        effects = self.application(session, {"pick": self.here("x")})
        place = self.folder.replace("/", "\\")
        self.assertEqual([line for line in told(effects) if "barTotFile.value" not in line], [
            "done 7",
            f"save picker [Select Folder to Store RTU App] -> {place}\\x",
            "barTotFile.visible = True",
            f"txtResult.text = Getting file {NAME} ...",
            "txtResult.text = Scanning: /ata0a",
            f"txtResult.text = Locating: {NAME}...",
            f"txtResult.text = Receiving {NAME}...",
            "barTotFile.visible = False",
            "barTotFile.visible = False",
            "txtResult.text = OK",
            "done 8"])
        self.assertEqual(files_below(self.here("Application")), {NAME: contents(rtu.data(NAME))})

    def test_the_picker_event(self):
        session, _ = self.logged_in()
        picker = next(effect for effect in self.application(session) if effect["event"] == "picker")
        self.assertEqual(list(picker.items()), [
            ("event", "picker"), ("dialog", "save"), ("title", "Select Folder to Store RTU App"),
            ("fileName", "Application"), ("defaultExt", ".out"), ("answer", None)])

    def test_picks_are_taken_in_order_and_without_one_a_picker_is_cancelled(self):
        session, _ = self.logged_in()
        write(self.here("Application", "old.out"), b"old")
        effects = told(self.application(session, {"pick": self.here("Application")}, {"pick": None}, {"answer": "No"}))
        pickers = [line for line in effects if "picker" in line]
        place = self.folder.replace("/", "\\")
        self.assertEqual(pickers, [f"save picker [Select Folder to Store RTU App] -> {place}\\Application",
                                   "save picker [Select Folder to Store RTU App] -> None"])
        self.assertEqual(effects[-2:], ["txtResult.text = ", "done 10"])
        effects = told(session.do({"click": "cmdGetFile"}))
        self.assertEqual(effects[0], "save picker [Select Folder to Store RTU App] -> None")

    def test_an_open_dialog(self):
        session, _ = self.logged_in()
        session.do({"type": "cmbFileType", "text": "Application"})
        picker = session.do({"click": "cmdSendFile"})[1]
        self.assertEqual((picker["event"], picker["dialog"], picker["fileName"]), ("picker", "open", "*.out"))

    def test_prompts_take_the_answers_that_fit(self):
        question = "[Folder not empty] The Application folder is not empty. Do you want to delete the application file" \
                   " before proceeding? {Yes, No, Cancel} -> "
        for answers, answer, result in (
                ([], "Cancel", ""), ([{"answer": "Yes"}], "Yes", "OK"), ([{"answer": "Cancel"}], "Cancel", ""),
                ([{"answer": "OK"}, {"answer": "Yes"}], "Yes", "OK"),
                ([{"answer": "No", "title": "File Exists"}, {"answer": "Yes", "title": "Folder not empty"}], "Yes", "OK"),
                ([{"answer": "No", "title": "Folder not"}], "Cancel", "")):
            with self.subTest(answers):
                session, _ = self.logged_in()
                write(self.here("Application", "old.out"), b"old")
                effects = told(self.application(session, {"pick": self.here("x")}, *answers))
                self.assertIn(question + answer, effects)
                self.assertIn("txtResult.text = " + result, effects)

    def test_the_prompt_event(self):
        session, _ = self.logged_in()
        write(self.here("Application", "old.out"), b"old")
        prompt = next(effect for effect in self.application(session, {"pick": self.here("x")})
                      if effect["event"] == "prompt")
        self.assertEqual(list(prompt.items()), [
            ("event", "prompt"),
            ("text", "The Application folder is not empty. Do you want to delete the application file before proceeding?"),
            ("title", "Folder not empty"), ("buttons", ["Yes", "No", "Cancel"]), ("default", 3), ("icon", "question"),
            ("answer", "Cancel")])


class When(SessionTest):
    """Actions inside a running call. The RTU sends slowly, so that a transfer is still running when they come."""

    def get(self, *whens, simulator=("--bytes-per-second", "400000"), trace=()):
        session, rtu = self.logged_in(*simulator, options=trace)
        old = write(self.here("Application", NAME), b"what stood here")
        session.do({"type": "cmbFileType", "text": "Application"}, {"pick": self.here("x")},
                   {"answer": "Yes", "title": "Folder not empty"}, *whens)
        os.remove(old)  # an empty folder: no question
        return session, rtu, session.do({"click": "cmdGetFile"})

    def assert_cancelled(self, effects):
        lines_ = told(effects)
        box = lines_.index("[Get RTU Application] Operation Cancelled {OK} -> OK")
        self.assertEqual(lines_[box + 1:-1], ["barTotFile.value = 0", "barTotFile.visible = False",
                                              "barTotFile.value = 0", "barTotFile.visible = False",
                                              "txtResult.text = Cancelled"])
        self.assertEqual(next(e for e in effects if e["event"] == "prompt")["icon"], "information")
        self.assertEqual(files_below(self.folder), {})

    def test_cancel_as_soon_as_a_file_is_received(self):
        _, _, effects = self.get({"when": {"control": "txtResult", "begins": "Receiving "}, "click": "cmdCancel"})
        self.assert_cancelled(effects)

    def test_cancel_at_a_percentage(self):
        _, _, effects = self.get({"when": {"control": "barTotFile", "atLeast": 30}, "click": "cmdCancel"})
        self.assert_cancelled(effects)
        highest = max(e["value"] for e in effects if e["event"] == "write" and e["control"] == "barTotFile"
                      and e["property"] == "value")
        self.assertGreaterEqual(highest, 30)
        self.assertLess(highest, 100)

    def test_the_next_get_runs_after_a_cancel(self):
        session, rtu, effects = self.get({"when": {"control": "barTotFile", "atLeast": 1}, "click": "cmdCancel"})
        self.assert_cancelled(effects)
        effects = told(session.do({"pick": self.here("x")}, {"click": "cmdGetFile"}))
        self.assertIn("txtResult.text = OK", effects)
        self.assertEqual(files_below(self.here("Application")), {NAME: contents(rtu.data(NAME))})

    def test_any_action_may_stand_there_and_happens_once(self):
        _, _, effects = self.get(
            {"when": {"control": "txtResult", "begins": "Receiving "}, "panel": True},
            {"when": {"control": "txtResult", "begins": "Receiving "}, "get": "HostName"},
            {"when": {"control": "lblHostName", "begins": "other"}, "doubleclick": "lbl_Backdoor"},
            {"when": {"control": "barTotFile", "atLeast": 10}, "set": "HostName", "value": "other.test"},
            simulator=())
        events = [effect["event"] for effect in effects]
        received = told(effects).index(f"txtResult.text = Receiving {NAME}...")
        self.assertEqual(events[received + 1:received + 3], ["panel", "value"])
        shown = effects[received + 1]["controls"]
        self.assertEqual(shown["txtResult"]["text"], f"Receiving {NAME}...")
        self.assertTrue(shown["barTotFile"]["visible"])
        changed = told(effects).index("lblHostName.caption = other.test")
        self.assertEqual(told(effects)[changed + 1], "[Quillport] Super user mode enabled {OK} -> OK")
        self.assertEqual(events.count("panel"), 1)
        self.assertIn("txtResult.text = OK", told(effects))

    def test_a_command_inside_a_running_call_fails_and_leaves_the_call_alone(self):
        _, rtu, effects = self.get(
            {"when": {"control": "barTotFile", "atLeast": 10}, "click": "cmdGetFile"},
            {"when": {"control": "barTotFile", "atLeast": 20}, "pick": None})
        self.assertEqual(told(effects)[-2], "txtResult.text = OK")
        self.assertEqual(files_below(self.here("Application")), {NAME: contents(rtu.data(NAME))})

    def test_a_cancel_shows_in_the_trace(self):
        _, _, effects = self.get({"when": {"control": "barTotFile", "atLeast": 1}, "click": "cmdCancel"},
                                 trace=["--trace"])
        calls = [effect for effect in effects if effect["event"] == "call"]
        self.assertIn("call ftpAbort(True) -> 0", told(calls))
        received = calls[-1]
        self.assertEqual((received["name"], received["arguments"][0], received["arguments"][2]),
                         ("ftpReceiveFiles", "*.out", False))
        self.assertLess(received["number"], 0)
        self.assertTrue(received["description"])


class Trace(SessionTest):
    def test_a_login(self):
        rtu = self.rtu(*"--user op --password geheim".split())
        session = self.session(*connections(rtu), "--trace")
        effects = session.do(*log_in(rtu, "op", "geheim"))
        calls = told(effect for effect in effects if effect["event"] == "call")
        self.assertEqual(calls[:6], [
            "call ftpServerAddress(rtu.test) -> 0", "call ftpUserName(op) -> 0", "call ftpPassword(********) -> 0",
            "call ftpServerAddress() -> 0", "call ftpConnect() -> 0",
            "call ftpChangeFolder(/ata0a/Webfiles/GUI/) -> 0"])
        self.assertEqual(calls[6:], ["call ftpListFolder() -> 0", "call ftpChangeFolder(/ata0a/) -> 0",
                                     "call ftpListFolder() -> 0", "call ftpChangeFolder(/ata0a/) -> 0",
                                     "call ftpListFolder() -> 0"])
        item = next(e for e in effects if e["event"] == "client" and e["name"] == "OnFtpListItem"
                    and e["arguments"][0] == NAME)
        self.assertEqual(item["arguments"][:4], [NAME, "2015-09-30T11:05:42", 307200, 0])
        self.assertNotIn("geheim", json.dumps(effects))

    def test_the_password_is_nowhere_when_the_server_quotes_it(self):
        rtu = self.rtu("--fault", "quote=PASS")
        session = self.session(*connections(rtu), "--trace")
        effects = session.do(*log_in(rtu, "rtu", "geheim"), {"panel": True})
        self.assertNotIn("geheim", json.dumps(effects))
        failed = next(effect for effect in effects if effect.get("name") == "ftpConnect")
        self.assertEqual(list(failed), ["event", "name", "arguments", "number", "description"])
        self.assertNotIn("geheim", session.end()[2])

    def test_a_get(self):
        session, _ = self.logged_in(options=["--trace"])
        session.do({"type": "cmbFileType", "text": "Application"}, {"pick": self.here("x")})
        effects = session.do({"click": "cmdGetFile"})
        place = self.folder.replace("/", "\\")
        self.assertEqual(told(effect for effect in effects if effect["event"] == "call"), [
            "call ftpState() -> 0", "call ftpChangeFolder(/ata0a/) -> 0", "call ftpCurrentFolder() -> 0",
            f"call ftpReceiveFiles(*.out, {place}\\Application\\, False) -> 0"])
        events = {effect["name"]: effect["arguments"] for effect in effects if effect["event"] == "client"}
        self.assertEqual(events["OnFtpScanning"][0], "/ata0a")
        query = events["OnFtpFileQuery"]
        self.assertEqual(query[:4], [f"{place}\\Application\\{NAME}", "2015-09-30T11:05:42", 307200, 0])
        self.assertEqual((len(query), query[5]), (6, False))
        self.assertEqual(events["OnFtpReceiving"], [NAME, f"{place}\\Application\\{NAME}", 307200])
        self.assertEqual(len(events["OnFtpProgress"]), 13)
        self.assertEqual(events["OnFtpProgress"][7], 100)
        self.assertIn("RETR " + NAME, [e["arguments"][0] for e in effects if e.get("name") == "OnFtpCommandSent"])
