"""Each fault, met by an ordinary client."""

import ftplib
import http.client
import io
import os
import socket
import unittest

from running_simulator import SharedSimulatorTest, fetch, listing
from faults import Fault, FaultError, parse_fault

APPLICATION = "K5902-041A-0300.out"
APPLICATION_BYTES = 307200
SILENCE_SECONDS = 0.3  # how long a test listens to a silence that is said to have no end


class FaultTest(SharedSimulatorTest):
    def with_fault(self, *fault_texts):
        """The client, and the faults in force from now on."""
        for fault_text in fault_texts:
            self.assertEqual(self.simulator.tell({"fault": fault_text}), {"event": "fault", "fault": fault_text})
        return self.client

    def receive(self, client, command):
        """The bytes of a transfer up to the end of its data connection; the last reply is still to be read."""
        client.voidcmd("TYPE I")
        data = []
        with client.transfercmd(command) as channel:
            while block := channel.recv(65536):
                data.append(block)
        return b"".join(data)

    def assert_link_is_cut(self, client):
        with self.assertRaises((EOFError, ConnectionError)):
            client.getresp()

    def sent_until_cut(self, client, command, size):
        """Send data until the other side cuts."""
        client.voidcmd("TYPE I")
        with client.transfercmd(command) as channel:
            try:
                channel.sendall(b"x" * size)
                channel.shutdown(socket.SHUT_WR)
                while channel.recv(1024):
                    pass
            except ConnectionError:
                pass

    def stored_size(self, name):
        return os.path.getsize(self.simulator.path("ata0a/" + name))


class FaultTexts(unittest.TestCase):
    def test_accepted(self):
        for fault_text, fault in (("refuse=DELE", Fault("refuse", "DELE", 550)),
                            ("refuse:552=stor", Fault("refuse", "STOR", 552)),
                            ("refuse-552=STOR@3x2", Fault("refuse", "STOR", 552, first=3, count=2)),
                            ("cut-after=RETRx*", Fault("cut-after", "RETR", count=None)),
                            ("stall=CONNECT@2", Fault("stall", "CONNECT", first=2)),
                            ("http-status=RtuSetup.xml", Fault("http-status", "rtusetup.xml", 500)),
                            ("http-cut=profileC.xmlx3", Fault("http-cut", "profilec.xml", count=3))):
            with self.subTest(fault_text):
                self.assertEqual(parse_fault(fault_text), fault)

    def test_rejected(self):
        for fault_text in ("", "refuse", "refuse=", "=RETR", "explode=RETR", "refuse=FLY", "truncate=DELE", "cut-after=CONNECT",
                     "refuse=RETR@0", "refuse=RETRx0", "refuse=RETR@x", "stall:550=RETR", "refuse:99=RETR",
                     "refuse:100=RETR", "refuse:600=RETR", "refuse =RETR", "wrong-address=PORT"):
            with self.subTest(fault_text), self.assertRaises(FaultError) as caught:
                parse_fault(fault_text)
            self.assertTrue(str(caught.exception))


class Counting(FaultTest):
    def test_strikes_once_by_default(self):
        client = self.with_fault("refuse=NOOP")
        self.assertEqual([self.reply(client, "NOOP") for _ in range(2)], ["550", "200"])

    def test_first_and_count(self):
        client = self.with_fault("refuse=NOOP@2x2")
        replies = [self.reply(client, "NOOP") for _ in range(5)]
        self.assertEqual(replies, ["200", "550", "550", "200", "200"])

    def test_always(self):
        client = self.with_fault("refuse=NOOPx*")
        self.assertEqual([self.reply(client, "NOOP") for _ in range(3)], ["550"] * 3)

    def test_counts_over_all_sessions(self):
        client = self.with_fault("refuse=NOOP@2")
        other = self.login(self.simulator)
        self.assertEqual([self.reply(client, "NOOP"), self.reply(other, "NOOP")], ["200", "550"])

    def test_counts_from_when_it_was_added(self):
        self.client.voidcmd("NOOP")
        client = self.with_fault("refuse=NOOP@2")
        self.assertEqual([self.reply(client, "NOOP") for _ in range(2)], ["200", "550"])

    def test_faults_can_be_cleared(self):
        client = self.with_fault("refuse=NOOPx*")
        self.assertEqual(self.reply(client, "NOOP"), "550")
        self.assertEqual(self.simulator.tell({"clear": "faults"}), {"event": "cleared"})
        self.assertEqual(self.reply(client, "NOOP"), "200")

    @staticmethod
    def reply(client, command):
        try:
            return client.sendcmd(command)[:3]
        except ftplib.error_perm as error:
            return str(error)[:3]


class Refusals(FaultTest):
    def test_refuse_leaves_everything_as_it_was(self):
        client = self.with_fault("refuse=DELE")
        with self.assertRaisesRegex(ftplib.error_perm, "^550 "):
            client.delete(self.file("old"))
        self.assertTrue(self.is_there("old"))

    def test_code_in_both_spellings(self):
        client = self.with_fault("refuse:552=STOR", "refuse-451=DELE")
        with self.assertRaisesRegex(ftplib.error_perm, "^552 "):
            client.storbinary("STOR x", io.BytesIO(b"x"))
        with self.assertRaisesRegex(ftplib.error_temp, "^451 "):
            client.delete(self.file("old"))

    def test_421_closes(self):
        client = self.with_fault("refuse:421=NOOP")
        with self.assertRaisesRegex(ftplib.error_temp, "^421 "):
            client.voidcmd("NOOP")
        self.assert_link_is_cut(client)

    def test_quote_repeats_the_command_line(self):
        self.with_fault("quote=PASS")
        with self.assertRaisesRegex(ftplib.error_perm, "^530 .*PASS rtu"):
            self.simulator.login()

    def test_refuse_during_a_receive(self):
        client = self.with_fault("refuse-during=RETR")
        self.assertEqual(len(self.receive(client, "RETR " + APPLICATION)), APPLICATION_BYTES // 2)
        with self.assertRaisesRegex(ftplib.error_temp, "^426 "):
            client.voidresp()
        client.voidcmd("NOOP")

    def test_refuse_during_a_send(self):
        client = self.with_fault("refuse-during:552=STOR")
        self.sent_until_cut(client, "STOR new", 4 << 20)
        with self.assertRaisesRegex(ftplib.error_perm, "^552 "):
            client.voidresp()
        self.assertLess(self.stored_size("new"), 4 << 20)

    def test_refuse_a_connection(self):
        self.with_fault("refuse:421=CONNECT")
        with self.assertRaisesRegex(ftplib.error_temp, "^421 "):
            self.simulator.login()
        self.login(self.simulator)


class Cuts(FaultTest):
    def test_cut_before(self):
        client = self.with_fault("cut-before=DELE")
        with self.assertRaises(EOFError):
            client.delete(self.file("old"))
        self.assertTrue(self.is_there("old"))

    def test_cut_after(self):
        client = self.with_fault("cut-after=DELE")
        with self.assertRaises(EOFError):
            client.delete(self.file("old"))
        self.assertFalse(self.is_there("old"))

    def test_cut_after_a_receive(self):
        client = self.with_fault("cut-after=RETR")
        self.assertEqual(len(self.receive(client, "RETR " + APPLICATION)), APPLICATION_BYTES)
        self.assert_link_is_cut(client)

    def test_cut_after_a_send(self):
        client = self.with_fault("cut-after=STOR")
        with self.assertRaises(EOFError):
            client.storbinary("STOR new", io.BytesIO(b"x" * 2000000))
        self.assertEqual(self.stored_size("new"), 2000000)

    def test_cut_during_a_receive(self):
        client = self.with_fault("cut-during=RETR")
        self.assertEqual(len(self.receive(client, "RETR " + APPLICATION)), APPLICATION_BYTES // 2)
        self.assert_link_is_cut(client)

    def test_cut_during_a_listing(self):
        client = self.with_fault("cut-during=LIST@2")
        whole = listing(client)
        self.assertEqual(self.receive(client, "LIST"), whole[:len(whole) // 2])
        self.assert_link_is_cut(client)

    def test_cut_during_a_send(self):
        client = self.with_fault("cut-during=STOR")
        self.sent_until_cut(client, "STOR new", 4 << 20)
        self.assert_link_is_cut(client)
        self.assertLess(self.stored_size("new"), 4 << 20)

    def test_cut_at_connect(self):
        self.with_fault("cut-before=CONNECT")
        with self.assertRaises((EOFError, ConnectionError)):
            self.simulator.login()
        self.login(self.simulator)


class Silences(FaultTest):
    def assert_silence(self, sock):
        sock.settimeout(SILENCE_SECONDS)
        with self.assertRaises(TimeoutError):
            sock.recv(1)

    def test_a_reply_that_never_comes(self):
        client = self.with_fault("stall=DELE")
        client.putcmd("DELE " + self.file("old"))
        self.assert_silence(client.sock)
        self.assertTrue(self.is_there("old"))
        self.assertEqual(self.simulator.commands()[-1]["reply"], None)
        self.login(self.simulator).delete("old")

    def test_a_receive_that_stops(self):
        client = self.with_fault("stall=RETR")
        client.voidcmd("TYPE I")
        with client.transfercmd("RETR " + APPLICATION) as channel:
            got = 0
            while got < APPLICATION_BYTES // 2:
                got += len(channel.recv(65536))
            self.assert_silence(channel)
        self.assertEqual(got, APPLICATION_BYTES // 2)
        self.assert_silence(client.sock)

    def test_a_send_that_stops(self):
        client = self.with_fault("stall=STOR")
        client.voidcmd("TYPE I")
        with client.transfercmd("STOR new") as channel:
            channel.settimeout(SILENCE_SECONDS)
            with self.assertRaises(TimeoutError):
                channel.sendall(b"x" * (64 << 20))
        self.assert_silence(client.sock)

    def test_a_greeting_that_never_comes(self):
        self.with_fault("stall=CONNECT")
        with self.assertRaises(TimeoutError):
            self.simulator.login(timeout=SILENCE_SECONDS)


class WrongData(FaultTest):
    def test_truncated_receive(self):
        client = self.with_fault("truncate=RETR")
        self.assertEqual(len(fetch(client, APPLICATION)), APPLICATION_BYTES // 2)
        self.assertEqual(len(fetch(client, APPLICATION)), APPLICATION_BYTES)

    def test_truncated_send(self):
        client = self.with_fault("truncate=STOR")
        client.storbinary("STOR new", io.BytesIO(b"x" * 1000001))
        self.assertEqual(self.stored_size("new"), 500000)

    def test_truncated_listing(self):
        client = self.with_fault("truncate=LIST@2")
        whole = listing(client)
        self.assertEqual(listing(client), whole[:len(whole) // 2])

    def test_nonsense_listing(self):
        client = self.with_fault("garbage=LIST")
        nonsense = listing(client)
        self.assertTrue(nonsense)
        self.assertNotIn(b"vxworks", nonsense)

    def test_nonsense_reply(self):
        client = self.with_fault("garbage=PWD")
        with self.assertRaises(ftplib.error_proto):
            client.pwd()

    def test_listing_that_breaks_off(self):
        client = self.with_fault("listing-error=LIST")
        data = self.receive(client, "LIST")
        self.assertIn(b"bootline.xml", data)
        self.assertNotIn(b"webfiles", data)
        self.assertTrue(data.endswith(b"error reading entry: 16\r\n"))
        with self.assertRaisesRegex(ftplib.error_perm, "^550 .*error reading entry: 16"):
            client.voidresp()

    def test_folder_that_cannot_be_opened(self):
        client = self.with_fault("cant-open=LIST")
        self.assertEqual(listing(client), b'Can\'t open "/ata0a".\r\n')

    def test_wrong_address(self):
        client = self.with_fault("wrong-address=PASV")
        self.assertIn("(192,0,2,1,", client.sendcmd("PASV"))
        self.assertEqual(len(fetch(client, APPLICATION)), APPLICATION_BYTES)


class WebFaults(FaultTest):
    SETUP = "/cs/xml/rtusetup.xml"

    def test_status(self):
        self.with_fault("http-status:503=rtusetup.xml")
        self.assertEqual(self.simulator.get("/fs/profileC.xml")[0], 200)
        self.assertEqual(self.simulator.get(self.SETUP)[0], 503)
        self.assertEqual(self.simulator.get(self.SETUP)[0], 200)

    def test_garbage(self):
        self.with_fault("http-garbage=rtusetup.xml")
        status, body = self.simulator.get(self.SETUP)
        self.assertEqual(status, 200)
        self.assertNotIn(b"<CPU>", body)

    def test_cut(self):
        self.with_fault("http-cut=rtusetup.xml")
        with self.assertRaises(http.client.IncompleteRead):
            self.simulator.get(self.SETUP)

    def test_stall(self):
        self.with_fault("http-stall=profilec.xml")
        with socket.create_connection((self.simulator.ready["address"], self.simulator.ready["http"])) as client:
            client.sendall(b"GET /fs/profileC.xml HTTP/1.0\r\n\r\n")
            client.settimeout(SILENCE_SECONDS)
            got = b""
            with self.assertRaises(TimeoutError):
                while True:
                    got += client.recv(65536)
        self.assertIn(b"200 OK", got)
        self.assertNotIn(b"</PROFILE>", got)


if __name__ == "__main__":
    unittest.main()
