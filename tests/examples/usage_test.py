#!/usr/bin/env python3
"""The sample programs say what is wrong with a command line, and are short. usage: usage_test.py BIN"""

import json
import signal
import subprocess
import sys
import tempfile
import unittest
import urllib.error
import urllib.request
from pathlib import Path

bin_folder = Path(sys.argv.pop(1))
HOST_OPTIONS = (
    "--bundle-id --url --cloud-container --cloud-base --cloud-environment --cloud-token --host-views "
    "--view-size --defaults --applications --languages --quit-after --screenshot --help"
).split()

SERVER_OPTIONS = (
    "--port --until-input-ends --cloud-container --cloud-environment --cloud-token --help"
).split()


def run(program, *arguments):
    return subprocess.run(
        [bin_folder / program, *arguments],
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=30,
    )


class Length(unittest.TestCase):
    def test_a_host_in_another_language_is_short(self):
        hosts = list((Path(__file__).resolve().parent.parent.parent / "examples").glob("*/host.*"))
        self.assertEqual(len(hosts), 4)
        for host in hosts:
            self.assertLessEqual(len(host.read_text().splitlines()), 60, host.name)


class Usage(unittest.TestCase):
    def assert_refused(self, program, *arguments, because):
        result = run(program, *arguments)
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertTrue(result.stderr.startswith(f"{program}: "), result.stderr)
        self.assertIn(because, result.stderr)

    def test_help_names_every_option(self):
        result = run("qorix-sample-host", "--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for option in HOST_OPTIONS:
            self.assertIn(f"  {option} ", result.stdout)
        result = run("qorix-sample-server", "--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for option in SERVER_OPTIONS:
            self.assertIn(f"  {option} ", result.stdout)

    def test_host_refuses_what_it_does_not_understand(self):
        self.assert_refused("qorix-sample-host", "--colour", because="--colour")
        self.assert_refused("qorix-sample-host", "stray", because="stray")
        self.assert_refused("qorix-sample-host", "--url", because="--url")
        self.assert_refused("qorix-sample-host", "--host-views", "-1", because="'-1'")
        self.assert_refused("qorix-sample-host", "--host-views", "two", because="'two'")
        self.assert_refused("qorix-sample-host", "--view-size", "800", because="800x600")
        self.assert_refused("qorix-sample-host", "--view-size", "0x500", because="--view-size")
        self.assert_refused("qorix-sample-host", "--quit-after", "nan", because="'nan'")
        self.assert_refused("qorix-sample-host", "--url", "http://a/", "--cloud-container", "b",
                            because="excludes")

    def test_server_refuses_what_it_does_not_understand(self):
        self.assert_refused("qorix-sample-server", because="FOLDER")
        self.assert_refused("qorix-sample-server", "/no/such/folder", because="/no/such/folder")
        self.assert_refused("qorix-sample-server", "--port", "65536", because="65536")
        self.assert_refused("qorix-sample-server", "--port", because="--port")
        self.assert_refused("qorix-sample-server", "--cloud-container", because="--cloud-container")


class Server(unittest.TestCase):
    options = ()

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        (Path(self.folder) / "a.xml").write_text("<a/>")
        self.start()

    def start(self, *more, stdin=subprocess.DEVNULL):
        self.server = subprocess.Popen(
            [bin_folder / "qorix-sample-server", "--port", "0", *self.options, *more, self.folder],
            stdin=stdin,
            stdout=subprocess.PIPE,
            text=True,
        )
        self.addCleanup(self.end, self.server)
        event = json.loads(self.server.stdout.readline())
        self.assertEqual(event["event"], "listening")
        self.base = f"http://127.0.0.1:{event['port']}"
        self.url = f"{self.base}/a.xml"

    @staticmethod
    def end(server):
        server.kill()
        server.wait()
        for stream in (server.stdin, server.stdout):
            if stream:
                stream.close()

    def assert_serves(self):
        self.assertEqual(urllib.request.urlopen(self.url, timeout=60).read(), b"<a/>")

    def test_serves_though_its_input_is_at_its_end(self):
        for _ in range(20):
            self.assert_serves()
        self.assertIsNone(self.server.poll())

    def test_ends_when_asked_to(self):
        self.server.send_signal(signal.SIGTERM)
        self.assertEqual(self.server.wait(60), 0)

    def test_its_input_is_not_read(self):
        self.start(stdin=subprocess.PIPE)
        self.server.stdin.write("bytes\n")
        self.server.stdin.close()
        for _ in range(20):
            self.assert_serves()
        self.server.send_signal(signal.SIGINT)
        self.assertEqual(self.server.wait(60), 0)

    def test_ends_with_its_input_when_told_to(self):
        self.start("--until-input-ends", stdin=subprocess.PIPE)
        self.server.stdin.write("bytes\n")
        self.server.stdin.flush()
        self.assert_serves()
        self.assertIsNone(self.server.poll())
        self.server.stdin.close()
        self.assertEqual(self.server.wait(60), 0)

    def test_ends_at_once_when_told_to_and_there_is_no_input(self):
        self.start("--until-input-ends")
        self.assertEqual(self.server.wait(60), 0)


class CloudService(Server):
    options = ("--cloud-container", "iCloud.a", "--cloud-token", "t")

    def query(self, name="a", token="t"):
        """The status and the answer of a query for that file name."""
        value = {"value": name, "type": "STRING"}
        filters = [{"comparator": "EQUALS", "fieldName": "filename", "fieldValue": value}]
        body = {"query": {"recordType": "macadfiles", "filterBy": filters}}
        request = urllib.request.Request(
            f"{self.base}/database/1/iCloud.a/production/public/records/query?ckAPIToken={token}",
            json.dumps(body).encode(),
            {"Content-Type": "application/json"},
        )
        try:
            with urllib.request.urlopen(request, timeout=10) as answer:
                return answer.status, json.load(answer)
        except urllib.error.HTTPError as error:
            with error:
                return error.code, json.load(error)

    def test_a_file_of_the_folder_is_a_record(self):
        status, answer = self.query()
        self.assertEqual(status, 200)
        [record] = answer["records"]
        asset = record["fields"]["filecontents"]["value"]
        self.assertEqual(asset["size"], 4)
        url = asset["downloadURL"].replace("${f}", "any")
        self.assertEqual(urllib.request.urlopen(url, timeout=10).read(), b"<a/>")

    def test_other_names_have_no_record(self):
        self.assertEqual(self.query("b"), (200, {"records": []}))

    def test_another_token_is_refused(self):
        status, answer = self.query(token="u")
        self.assertEqual((status, answer["serverErrorCode"]), (401, "AUTHENTICATION_FAILED"))


if __name__ == "__main__":
    unittest.main()
