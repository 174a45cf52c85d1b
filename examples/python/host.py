#!/usr/bin/python3
"""Shows a window and, on top of its text, the advertisement of a document. usage: host.py URL SETTINGS

URL is the address of the document, SETTINGS the file that keeps this host's settings.
"""

import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Qorix", "2.0")
from gi.repository import Gtk, Qorix


def will_show(manager, info, host, is_popup, frame):
    kind = "popup" if is_popup else "banner"
    print(f"will-show {info.get_ad_id()} {kind} {info.get_width()}x{info.get_height()}", flush=True)


def did_close(manager, info, host, is_popup, frame):
    print(f"did-close {info.get_ad_id()}", flush=True)


def open_iap(manager, info, host, is_popup, frame, url):
    print(f"open-iap {url}", flush=True)


def triggering_navigation(manager, element):
    print(f"triggering-navigation {element}", flush=True)


if len(sys.argv) != 3:
    sys.exit("usage: host.py URL SETTINGS")
url, settings = sys.argv[1:]
manager = Qorix.start(Qorix.InstallOptions(
    bundle_identifier="com.example.editor", default_ad_file_url=url, settings_path=settings))
if manager is None:
    sys.exit(1)  # it has logged why
manager.connect("will-show", will_show)
manager.connect("did-close", did_close)
manager.connect("open-iap", open_iap)
manager.connect("triggering-navigation", triggering_navigation)

overlay = Gtk.Overlay()  # a banner can lie on top of its child
overlay.add(Gtk.TextView())
window = Gtk.Window(title="Host in Python", default_width=600, default_height=300)
window.add(overlay)
window.connect("destroy", Gtk.main_quit)
window.show_all()

manager.show_ad_of_default_url(overlay)
Gtk.main()
