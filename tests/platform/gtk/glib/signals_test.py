#!/usr/bin/python3
"""A host in Python reads every argument of every signal, by its type. usage: signals_test.py DEMO

DEMO is the folder of demo.py, which starts a display. The host shows a banner with two links on it, which
are clicked one after the other.
"""

import http.server
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

sys.path.insert(0, sys.argv.pop(1))
import demo  # noqa: E402

BUY = "https://www.example.com/buy?zamopeniap=1"
BUY_COLOUR, CLOSE_COLOUR, SIZE = "#e6007e", "#00a3ad", "300x50"
LINK = '<a id="%s" class="%s" href="%s" style="display:block;width:300px;height:50px;background:%s"></a>'
PAGE = ('<html><body style="margin:0">' + LINK % ("buy", "cta", BUY, BUY_COLOUR)
        + LINK % ("cocoa_close_web", "", "https://www.example.com/", CLOSE_COLOUR) + "</body></html>")


def document():
    minimal = Path(__file__).resolve().parents[4] / "examples/documents/minimal.xml"
    text = minimal.read_text().replace(">50<", ">100<")
    return text.replace("Hello!", f"<![CDATA[{PAGE}]]>").encode()


class Document(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200)
        self.end_headers()
        self.wfile.write(document())

    def log_message(self, *_):
        pass


class Signals(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Document)
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.address = f"http://127.0.0.1:{server.server_port}/ad.xml"
        self.heard = {}

    def pass_until(self, awaited, condition):
        """Runs the main loop until the condition holds; returns its value."""
        patience = demo.Patience("the host", demo.MOST_SECONDS)
        while True:
            while Gtk.events_pending():
                Gtk.main_iteration()
            found = condition()
            if found:
                return found
            patience.look_again(awaited)

    def hear(self, name, arguments):
        # A rectangle belongs to the emission.
        self.heard[name] = [(a.x, a.y, a.width, a.height) if isinstance(a, Qorix.Rect) else
                            (a.get_ad_id(), a.get_title("default")) if isinstance(a, Qorix.AdInfo) else a
                            for a in arguments]

    def place_of(self, colour):
        look = self.folder / "look.png"
        subprocess.run(["import", "-silent", "-window", "root", look], check=True)
        return subprocess.run(
            ["convert", look, "-alpha", "off", "-fill", "black", "+opaque", colour, "-format", "%@", "info:"],
            capture_output=True, text=True).stdout

    def click(self, colour):
        def seen():
            place = self.place_of(colour)
            return place if place.startswith(SIZE) else None

        x, y = (int(number) for number in self.pass_until(colour, seen).split("+")[1:])
        subprocess.run(["xdotool", "mousemove", str(x + 150), str(y + 25), "click", "1"], check=True)

    def test_every_argument_is_read(self):
        manager = Qorix.start(Qorix.InstallOptions(
            bundle_identifier="com.example.editor", default_ad_file_url=self.address,
            settings_path=str(self.folder / "settings")))
        for name in ("will-show", "did-close", "open-iap", "triggering-navigation"):
            manager.connect(name, lambda sender, *arguments, name=name: self.hear(name, arguments))
        overlay = Gtk.Overlay()
        overlay.add(Gtk.TextView())
        window = Gtk.Window(default_width=600, default_height=300)
        window.add(overlay)
        window.show_all()
        manager.show_ad_of_default_url(overlay)

        # The banner is in the upper right corner, 300 wide and 100 high, and y grows upwards.
        self.pass_until("will-show", lambda: "will-show" in self.heard)
        right, top = overlay.get_allocated_width(), overlay.get_allocated_height()
        showing = [(1, "Hello"), overlay, False, (right - 300, top - 100, 300, 100)]
        self.assertEqual(self.heard.pop("will-show"), showing)

        self.click(BUY_COLOUR)
        self.pass_until("open-iap", lambda: len(self.heard) == 2)
        self.assertEqual(self.heard.pop("open-iap"), [*showing, BUY])
        self.assertEqual(self.heard.pop("triggering-navigation"), ["{(idName is buy)(className is cta)}"])

        self.click(CLOSE_COLOUR)
        self.pass_until("did-close", lambda: len(self.heard) == 2)
        self.assertEqual(self.heard.pop("did-close"), showing)
        window.destroy()


if __name__ == "__main__":
    demo.adopt_orphans()
    with tempfile.TemporaryDirectory() as temporary:
        try:
            demo.start_display(Path(temporary))
            import gi

            gi.require_version("Gtk", "3.0")
            gi.require_version("Qorix", "2.0")
            from gi.repository import Gtk, Qorix

            unittest.main()
        finally:
            demo.end_all()
