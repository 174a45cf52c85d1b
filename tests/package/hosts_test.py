#!/usr/bin/env python3
"""Builds hosts against an installation of the library, as their developers would, and uses them.
usage: hosts_test.py [--prefix PREFIX [--static]]

Each host must build with nothing but what is installed, show its banner on a real screen, and print
the user's click on it. Without a prefix the installation is the system's own.
"""

import argparse
import http.server
import os
import shutil
import subprocess
import sys
import tempfile
import threading
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "examples/demo"))
import demo  # noqa: E402  how a display is started and looked at

COLOUR, SIZE = "#e6007e", "300x100"
PAGE = f"""<html><body style="margin:0"><a id="cocoa_close_web" href="https://www.example.com/"
style="display:block;width:300px;height:100px;background:{COLOUR}"></a></body></html>"""
MOST_SECONDS = 300


@dataclass(frozen=True)
class Host:
    """A host in a language, whose files are copied into a folder of its own."""

    name: str
    files: tuple  # in the repository
    build: tuple  # the commands, in the folder
    command: tuple  # what runs it from there, without its arguments
    is_example: bool = False  # it takes a settings file, and prints what it hears by other names

    def arguments(self, address, folder):
        return [address, folder / f"{self.name}.settings"] if self.is_example else [address]

    def printed(self):
        if self.is_example:
            return "will-show 1 banner 300x100", "cocoa_close_web", "did-close 1"
        return "WillShow", "cocoa_close_web", "DidClose"


CONSUMERS, EXAMPLES = ROOT / "tests/package/consumers", ROOT / "examples"
MAIN = CONSUMERS / "main.cpp"
COMPILED = (
    Host("cmake", (CONSUMERS / "cmake/CMakeLists.txt", MAIN),
         (["cmake", "-B", "build"], ["cmake", "--build", "build"]), ("build/editor",)),
    Host("pkg-config", (CONSUMERS / "pkg-config/Makefile", MAIN), (["make"],), ("./editor",)),
    Host("meson", (CONSUMERS / "meson/meson.build", MAIN),
         (["meson", "setup", "build"], ["meson", "compile", "-C", "build"]), ("build/editor",)),
    Host("c", (EXAMPLES / "c/host.c",),
         (["sh", "-c", "cc host.c -o host $(pkg-config --cflags --libs qorix-gtk3-2.0)"],), ("./host",), True),
)
INTROSPECTING = (
    Host("vala", (EXAMPLES / "vala/host.vala",), (["valac", "--pkg", "qorix-gtk3-2.0", "host.vala"],),
         ("./host",), True),
    Host("python", (EXAMPLES / "python/host.py",), (), ("/usr/bin/python3", "host.py"), True),
    Host("javascript", (EXAMPLES / "javascript/host.js",), (), ("gjs", "host.js"), True),
)


def build(host, folder, environment):
    place = folder / host.name
    place.mkdir()
    for file in host.files:
        shutil.copy(file, place)
    for command in host.build:
        result = subprocess.run(command, cwd=place, env=environment, capture_output=True, text=True)
        if result.returncode != 0:
            raise demo.Failure(f"{host.name}: {command} failed:\n{result.stdout}{result.stderr}")


def serve(folder):
    """Serves a document with one banner until this process ends; returns its address."""
    text = (ROOT / "examples/documents/minimal.xml").read_text()
    text = text.replace("Hello!", f"<![CDATA[{PAGE}]]>").replace(">50<", ">100<")
    (folder / "ad.xml").write_text(text)

    class Quiet(http.server.SimpleHTTPRequestHandler):
        def __init__(self, *arguments):
            super().__init__(*arguments, directory=folder)

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Quiet)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return f"http://127.0.0.1:{server.server_port}/ad.xml"


def place_seen(picture):
    """The rectangle of the banner in a picture, as WIDTHxHEIGHT+X+Y."""
    return subprocess.run(
        ["convert", picture, "-alpha", "off", "-fill", "black", "+opaque", COLOUR, "-format", "%@", "info:"],
        capture_output=True, text=True).stdout


def look(folder):
    picture = folder / "look.png"
    subprocess.run(["import", "-silent", "-window", "root", picture], check=True)
    return place_seen(picture)


def close_window(process):
    """Closes the window of a process as its user does."""
    for line in subprocess.run(["wmctrl", "-l", "-p"], capture_output=True, text=True).stdout.splitlines():
        window, _, owner = line.split()[:3]
        if int(owner) == process.pid:
            subprocess.run(["wmctrl", "-i", "-c", window], check=True)


def use(host, address, folder, environment):
    """Runs a host until its banner was seen and clicked, and both were printed."""
    name = host.name
    home = folder / f"{name}-home"  # the counts of its showings
    home.mkdir()
    printed, complaints = folder / f"{name}.out", folder / f"{name}.log"
    with open(printed, "w") as out, open(complaints, "w") as log:
        process = subprocess.Popen([*host.command, *host.arguments(address, folder)], cwd=folder / name,
                                   stdout=out, stderr=log, stdin=subprocess.DEVNULL,
                                   env={**environment, "HOME": str(home), "XDG_CONFIG_HOME": str(home)})
    patience = demo.Patience(name, MOST_SECONDS)

    def until(awaited, condition):
        while True:
            found = condition()
            if found:
                return found
            if process.poll() is not None:
                raise demo.Failure(f"{name} ended with {process.returncode}: {complaints.read_text()}")
            patience.look_again(f"{awaited} (printed: {printed.read_text()!r}, seen: {look(folder)})")

    seen = until("its banner", lambda: next((p for p in [look(folder)] if p.startswith(SIZE)), None))
    shutil.copy(folder / "look.png", folder / f"{name}.png")
    x, y = (int(number) for number in seen.split("+")[1:])
    subprocess.run(["xdotool", "mousemove", str(x + 150), str(y + 50), "click", "1"], check=True)
    for word in host.printed():
        until(word, lambda: word in printed.read_text())
    until("the banner's end", lambda: not look(folder).startswith(SIZE))
    if "cannot be asked anything" in complaints.read_text():
        raise demo.Failure(f"{name} has not found the module for web processes")
    close_window(process)
    if process.wait(MOST_SECONDS) != 0:
        raise demo.Failure(f"{name} ended with {process.returncode} when its window was closed")
    if "-CRITICAL **" in complaints.read_text():
        raise demo.Failure(f"{name} has complained: {complaints.read_text()}")
    demo.tell(f"{name}: built, shown, clicked")


def environment_of(prefix):
    """The environment in which an installation with that prefix is found."""
    found = dict(os.environ)
    if prefix:
        libraries = next(prefix.glob("lib/**/libqorix.*")).parent
        found.update(CMAKE_PREFIX_PATH=str(prefix), PKG_CONFIG_PATH=str(libraries / "pkgconfig"),
                     LD_LIBRARY_PATH=str(libraries),
                     GI_TYPELIB_PATH=str(libraries / "girepository-1.0"),
                     XDG_DATA_DIRS=f"{prefix}/share:/usr/local/share:/usr/share")
    return found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--prefix", type=Path)
    parser.add_argument("--static", action="store_true",
                        help="static libraries, which have nothing for introspection")
    parser.add_argument("--pictures", type=Path, help="a folder for a picture of each host")
    arguments = parser.parse_args()
    hosts = COMPILED if arguments.static else COMPILED + INTROSPECTING
    demo.adopt_orphans()
    with tempfile.TemporaryDirectory(prefix="qorix-hosts-") as temporary:
        folder = Path(temporary)
        try:
            address = serve(folder)
            environment = environment_of(arguments.prefix and arguments.prefix.resolve())
            with ThreadPoolExecutor(os.cpu_count()) as pool:
                list(pool.map(lambda host: build(host, folder, environment), hosts))
            demo.start_display(folder)
            environment.update(DISPLAY=os.environ["DISPLAY"], GDK_BACKEND="x11", NO_AT_BRIDGE="1")
            for host in hosts:
                use(host, address, folder, environment)
                if arguments.pictures:
                    shutil.copy(folder / f"{host.name}.png", arguments.pictures)
        except demo.Failure as failure:
            print(failure)
            return 1
        finally:
            demo.end_all()
    return 0


if __name__ == "__main__":
    sys.exit(main())
