#!/usr/bin/env python3
"""The demo waits for a host that is still running. usage: demo_test.py DEMO

DEMO is the demo's folder. The host is a small program that prints what the test gives it.
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, sys.argv.pop(1))
import demo  # noqa: E402

HOST = """#!/bin/sh
exec cat "$0.says"
"""
WILL_SHOW = json.dumps({"event": demo.WILL_SHOW, "popup": False})


class Demo(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        program = self.folder / "qorix-sample-host"
        program.write_text(HOST)
        program.chmod(0o755)
        os.mkfifo(self.folder / "qorix-sample-host.says")
        for name, seconds in (("SECONDS_BETWEEN_NEWS", 0), ("SECONDS_BETWEEN_LOOKS", 0.01)):
            patched = mock.patch.object(demo, name, seconds)
            patched.start()
            self.addCleanup(patched.stop)
        self.news = []
        patched = mock.patch.object(demo, "tell", self.news.append)
        patched.start()
        self.addCleanup(patched.stop)

    def start_host(self):
        """A running host, and the file whose text it prints. It ends when the file is closed."""
        host = demo.Host(self.folder, self.folder, demo.SHOWINGS[0], [])
        speech = open(self.folder / "qorix-sample-host.says", "w")
        self.addCleanup(host.process.stdout.close)
        self.addCleanup(host.process.wait)
        self.addCleanup(speech.close)
        return host, speech

    def speak_after_news(self, count, speech, text):
        """Makes the host print `text` after the demo has printed `count` lines."""

        def tell(what):
            self.news.append(what)
            if len(self.news) == count:
                speech.write(text)
                speech.close()

        return mock.patch.object(demo, "tell", tell)

    def test_a_host_has_some_minutes(self):
        self.assertGreaterEqual(demo.MOST_SECONDS, 180)
        self.assertLessEqual(demo.MOST_SECONDS, 600)

    def test_waits_for_a_late_host_and_prints_what_for(self):
        host, speech = self.start_host()
        with self.speak_after_news(5, speech, WILL_SHOW + "\n"):
            host.wait_for_showing(demo.Patience("it", demo.MOST_SECONDS))
        self.assertEqual(self.news[:5], [f"it is running; waiting for the event {demo.WILL_SHOW}"] * 5)

    def test_does_not_give_up_after_minutes(self):
        host, speech = self.start_host()
        patience = demo.Patience("it", demo.MOST_SECONDS)
        patience.start -= 170
        with self.speak_after_news(1, speech, WILL_SHOW + "\n"):
            host.wait_for_showing(patience)

    def test_gives_up_in_the_end(self):
        host, _ = self.start_host()
        patience = demo.Patience("it", demo.MOST_SECONDS)
        patience.start -= demo.MOST_SECONDS
        with self.assertRaisesRegex(demo.Failure, f"the event .* did not come within {demo.MOST_SECONDS} s"):
            host.wait_for_showing(patience)

    def test_does_not_wait_for_a_host_that_has_ended(self):
        host, speech = self.start_host()
        speech.close()
        with self.assertRaisesRegex(demo.Failure, "ended before it showed anything"):
            host.wait_for_showing(demo.Patience("it", float("inf")))

    def see(self, sizes):
        """Looks for the banner while it has these sizes, one after the other.

        The host ends with the last one.
        """
        host, speech = self.start_host()
        speech.write(WILL_SHOW + "\n")
        speech.flush()

        def take_picture(command, **_):
            command[-1].touch()
            (self.folder / "banner.png").touch()
            if len(sizes) == 1:
                speech.close()

        def size_seen(*_):
            return sizes.pop(0) if len(sizes) > 1 else sizes[0]

        run = mock.patch.object(demo.subprocess, "run", take_picture)
        seen = mock.patch.object(demo, "size_seen", size_seen)
        with run, seen, mock.patch.object(demo, "Host", lambda *_: host):
            demo.see(self.folder, self.folder, demo.SHOWINGS[0], [])

    def test_waits_for_the_page_and_prints_what_is_seen(self):
        with mock.patch.object(subprocess.Popen, "terminate", lambda _: None):
            self.see(["0x0"] * 3 + ["728x90"])
        waiting = [line for line in self.news if "waiting for the banner: " in line]
        self.assertEqual(len(waiting), 3)
        self.assertIn("728x90 on the screen, now 0x0", waiting[0])

    def test_does_not_wait_for_the_page_of_a_host_that_has_ended(self):
        with self.assertRaisesRegex(demo.Failure, "ended before its banner was on the screen"):
            self.see(["0x0"])


if __name__ == "__main__":
    unittest.main()
