#!/usr/bin/env python3
"""Shows what the library does. usage: demo.py BUILD [OPTION]... (./run demo runs it)

Starts the sample server with the sample document, and the sample host twice: as the editor, which
shows a banner, and as the viewer, which shows the pop-up window. With a display, both run until their
windows are closed. Without one, the demo starts a display of its own, looks for each advertisement on it,
saves BUILD/demo/banner.png and BUILD/demo/popup.png, and succeeds only if it saw both. It waits while a host
is running, for five minutes at most, and prints what it is waiting for.

With --folder it keeps its files there instead of BUILD/demo. With --cloud the server is a cloud service,
and the hosts read the document from its record.
"""

import argparse
import ctypes
import json
import os
import queue
import re
import shutil
import signal
import subprocess
import sys
import threading
import time
from dataclasses import dataclass
from pathlib import Path

MOST_SECONDS = 300  # from the start of a program until it has done its work
SECONDS_BETWEEN_NEWS = 10  # about what is awaited
SECONDS_BETWEEN_LOOKS = 0.1
WILL_SHOW = "ZAMPushAdWillShowNotification"
CLOUD = ["--cloud-container", "iCloud.com.example.ads", "--cloud-environment", "development"]
CLOUD += ["--cloud-token", "0123456789abcdef"]


@dataclass(frozen=True)
class Showing:
    """One host, and what the sample document tells it to show."""

    name: str
    bundle_id: str
    host_views: int
    popup: bool
    size: str
    colour: str  # of the page's border, found nowhere else on the screen


SHOWINGS = (
    Showing("banner", "com.example.editor", 2, False, "728x90", "#e6007e"),
    Showing("popup", "com.example.viewer", 1, True, "600x400", "#00a3ad"),
)


def beginning():
    """The monotonic clock's seconds when ./run demo was called, or now without it."""
    called = os.environ.get("QORIX_DEMO_BEGAN")  # microseconds since 1970
    return time.monotonic() - (time.time() - int(called) / 1e6 if called else 0)


began = beginning()


def tell(what):
    print(f"{time.monotonic() - began:6.1f} s  {what}", flush=True)


class Failure(Exception):
    pass


class Patience:
    """Waits at most `most` seconds, counted from now, and prints what it is waiting for."""

    def __init__(self, name, most):
        self.name, self.most = name, most
        self.start = self.told = time.monotonic()

    def look_again(self, awaited):
        """Returns when it is time to look again for what is `awaited`."""
        now = time.monotonic()
        if now - self.start > self.most:
            raise Failure(f"{self.name} is running, but {awaited} did not come within {self.most} s")
        if now - self.told > SECONDS_BETWEEN_NEWS:
            self.told = now
            tell(f"{self.name} is running; waiting for {awaited}")
        time.sleep(SECONDS_BETWEEN_LOOKS)


class Host:
    """A running sample host. Its events are printed, and can be waited for."""

    def __init__(self, bin_folder, folder, showing, source, *more):
        self.showing = showing
        self.log = folder / f"{showing.name}.log"
        self.events = queue.Queue()
        applications = folder / "applications"  # none of the promoted ones is installed
        applications.mkdir(exist_ok=True)
        command = [bin_folder / "qorix-sample-host", "--bundle-id", showing.bundle_id]
        command += [*source, "--host-views", str(showing.host_views), "--view-size", "800x300"]
        command += ["--defaults", folder / f"{showing.name}.settings"]
        command += ["--applications", applications, "--languages", "en", *more]
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=log, text=True
            )
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()

    def read(self):
        for line in self.process.stdout:
            event = json.loads(line)
            text = event["event"]
            if event.get("frame"):
                text += f" at {event['frame']}"
            tell(f"{self.showing.bundle_id}: {text}")
            self.events.put(event)
        self.events.put(None)

    def wait_for_showing(self, patience):
        """Returns after the will-show event that the document asks for."""
        while True:
            try:
                event = self.events.get_nowait()
            except queue.Empty:
                patience.look_again(f"the event {WILL_SHOW}")
                continue
            if event is None:
                self.wait_for_end()
                raise Failure(f"{self.showing.bundle_id} ended before it showed anything")
            if event["event"] == WILL_SHOW and event["popup"] == self.showing.popup:
                return

    def wait_for_end(self):
        status = self.process.wait()
        self.reader.join()
        if status != 0:
            raise Failure(f"{self.showing.bundle_id} ended with status {status}")


def start_server(bin_folder, documents, cloud):
    """Serves `documents` until this process ends; returns the hosts' options for the sample document."""
    server = subprocess.Popen(
        [bin_folder / "qorix-sample-server", "--port", "0", "--until-input-ends"]
        + [*(CLOUD if cloud else []), documents],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
    )
    port = json.loads(server.stdout.readline() or "{}").get("port")
    if not port:
        raise Failure("the sample server did not start")
    base = f"http://127.0.0.1:{port}"
    if cloud:
        tell(f"qorix-sample-server is a cloud service at {base}, with the container {CLOUD[1]}")
        return server, ["--cloud-base", base, *CLOUD]
    tell(f"qorix-sample-server serves {base}/commonad.xml")
    return server, ["--url", f"{base}/commonad.xml"]


def start_display(folder):
    """A screen in memory with a window manager; later programs find it in the environment."""
    reading, writing = os.pipe()
    with open(folder / "display.log", "w") as log:
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
            pass_fds=[writing],
            stdin=subprocess.DEVNULL,
            stdout=log,
            stderr=log,
        )
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise Failure("Xvfb did not start")
        os.environ.update(DISPLAY=f":{number}", GDK_BACKEND="x11", NO_AT_BRIDGE="1")
        subprocess.Popen(["openbox"], stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    patience = Patience("Xvfb", MOST_SECONDS)
    asking = ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]
    while "window id" not in subprocess.run(asking, capture_output=True, text=True).stdout:
        if server.poll() is not None:
            raise Failure("Xvfb ended")
        patience.look_again("openbox, the window manager")
    tell(f"there is no display; started Xvfb and openbox on :{number}")


def size_seen(picture, colour):
    """The size, such as 728x90, of the smallest rectangle that holds all pixels of `colour`."""
    command = ["convert", picture, "-alpha", "off", "-fill", "black", "+opaque", colour]
    command += ["-format", "%@", "info:"]
    found = subprocess.run(command, capture_output=True, text=True).stdout
    return re.sub(r"[+-].*", "", found)


def see(bin_folder, folder, showing, source):
    """Runs one host until its advertisement is on the screen and its picture is saved."""
    picture = folder / f"{showing.name}.png"
    host = Host(bin_folder, folder, showing, source, "--screenshot", picture)
    patience = Patience(showing.bundle_id, MOST_SECONDS)
    host.wait_for_showing(patience)
    look = folder / "look.png"
    while True:  # until the page is painted
        subprocess.run(["import", "-silent", "-window", "root", look], check=True)
        seen = size_seen(look, showing.colour)
        if seen == showing.size:
            break
        if host.process.poll() is not None:
            raise Failure(f"{showing.bundle_id} ended before its {showing.name} was on the screen")
        patience.look_again(f"the {showing.name}: {showing.size} on the screen, now {seen} ({look})")
    look.unlink()
    tell(f"{showing.bundle_id}: the {showing.name} is on the screen, {showing.size}")
    host.process.terminate()
    host.wait_for_end()
    if size_seen(picture, showing.colour) != showing.size:
        raise Failure(f"{picture} does not show the {showing.name}")
    tell(f"saved {picture}")


def show_to_user(bin_folder, folder, source):
    """Runs both hosts until their windows are closed."""
    hosts = [Host(bin_folder, folder, showing, source) for showing in SHOWINGS]
    tell("close the windows to end the demo")
    for host in hosts:
        host.wait_for_showing(Patience(host.showing.bundle_id, float("inf")))
    for host in hosts:
        host.wait_for_end()


def descendants():
    """All processes that this one has started, directly or not."""
    children = {}
    for entry in Path("/proc").glob("[0-9]*/stat"):
        try:
            parent = int(entry.read_text().rpartition(")")[2].split()[1])
        except OSError:  # it has ended meanwhile
            continue
        children.setdefault(parent, []).append(int(entry.parent.name))
    found, waiting = [], [os.getpid()]
    while waiting:
        below = children.get(waiting.pop(), [])
        found += below
        waiting += below
    return found


def adopt_orphans():
    """Makes this process the parent of the processes that its children leave running."""
    PR_SET_CHILD_SUBREAPER = 36
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_all():
    """Ends all processes that were started here and still run."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    for number, patience in ((signal.SIGTERM, 3), (signal.SIGKILL, 3)):
        for pid in descendants():
            try:
                os.kill(pid, number)
            except ProcessLookupError:
                pass
        deadline = time.monotonic() + patience
        while time.monotonic() < deadline:
            try:
                while os.waitpid(-1, os.WNOHANG)[0]:
                    pass
            except ChildProcessError:
                return
            time.sleep(0.02)


def stop(*_):
    raise KeyboardInterrupt


def main():
    parser = argparse.ArgumentParser(prog="./run demo")
    parser.add_argument("build", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--folder", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--cloud", action="store_true", help="from a cloud record instead of a URL")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    folder = (arguments.folder or build / "demo").resolve()
    shutil.rmtree(folder, ignore_errors=True)  # with the counts of earlier showings
    folder.mkdir(parents=True)
    documents = Path(__file__).resolve().parent.parent / "documents"
    has_display = bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"))
    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGHUP, stop)
    if not has_display:
        adopt_orphans()
    try:
        server, source = start_server(build / "bin", documents, arguments.cloud)
        if has_display:
            show_to_user(build / "bin", folder, source)
        else:
            start_display(folder)
            for showing in SHOWINGS:
                see(build / "bin", folder, showing, source)
        server.stdin.close()
        server.wait()
        tell("done")
        return 0
    except Failure as failure:
        tell(f"FAILED: {failure}")
        for log in sorted(folder.glob("*.log")):
            for line in log.read_text(errors="replace").splitlines()[-20:]:
                print(f"          {log.name}: {line}")
        return 1
    except KeyboardInterrupt:
        tell("interrupted")
        return 130
    finally:
        end_all()


if __name__ == "__main__":
    sys.exit(main())
