#!/usr/bin/env python3
"""Builds the Debian packages on a bare Debian 12, installs them on another one, and runs their test there.
usage: bare_machine_test.py FOLDER [--pictures FOLDER]

FOLDER/qorix holds the sources; the packages are left in FOLDER. A bare machine is a folder that
debootstrap fills. Nothing is installed there but what debian/control says, and what
debian/tests/control names for the test. As root only, with an archive of Debian's packages within
reach.
"""

import argparse
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

RELEASE = "bookworm"
NEEDED = ("debian", "examples", "tests/package")  # of the sources, for the test


def archive():
    """Where this machine fetches Debian's packages from."""
    sources = [Path("/etc/apt/sources.list"), *Path("/etc/apt/sources.list.d").glob("*")]
    for source in filter(Path.is_file, sources):
        found = re.search(r"^(?:deb.*? |URIs: *)(https?://\S+/debian/?)(?=\s)", source.read_text() + "\n", re.MULTILINE)
        if found:
            return found[1]
    return "http://deb.debian.org/debian"


def tell(what):
    print(f"bare machine: {what}", flush=True)


def inside(machine, *command):
    """Runs a command there, with processes, devices and mounts that end with it."""
    script = ("mount -t proc proc proc && mount --rbind /dev dev && mount --rbind /sys sys && "
              'exec chroot . env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 '
              'DEBIAN_FRONTEND=noninteractive "$@"')
    subprocess.run(["unshare", "--mount", "--pid", "--fork", "--kill-child", "sh", "-c", script, "sh", *command],
                   cwd=machine, check=True, stdin=subprocess.DEVNULL)


def make_machine(machine):
    tell(f"debootstrap {RELEASE}")
    subprocess.run(["debootstrap", "--variant=minbase", RELEASE, machine, archive()],
                   check=True, stdout=subprocess.DEVNULL)
    shutil.copy("/etc/resolv.conf", machine / "etc/resolv.conf")
    shutil.copy("/etc/hosts", machine / "etc/hosts")
    own = machine / "etc/apt/sources.list"
    for source in Path("/etc/apt/sources.list.d").glob("debian*"):
        shutil.copy(source, machine / "etc/apt/sources.list.d")
        own.unlink(missing_ok=True)  # these replace it
    inside(machine, "apt-get", "update", "-qq")


def build_packages(machine, folder):
    """Calls ./run package there, as a developer would."""
    tell("./run package")
    shutil.copytree(folder / "qorix", machine / "qorix", symlinks=True)
    inside(machine, "sh", "-c", "cd /qorix && ./run package >/build.log 2>&1 || { tail -50 /build.log; exit 1; }")
    for package in (machine / "qorix/build/package").glob("*.deb"):
        shutil.copy(package, folder)


def use_packages(machine, folder):
    """Installs them there, with what their test needs, and runs the test."""
    for name in NEEDED:
        shutil.copytree(folder / "qorix" / name, machine / "qorix" / name)
    (machine / "packages").mkdir()
    for package in folder.glob("*.deb"):
        if "-dbgsym_" not in package.name:
            shutil.copy(package, machine / "packages")
    files = [f"/packages/{package.name}" for package in (machine / "packages").iterdir()]
    tell("install the packages, and what their test needs")
    inside(machine, "sh", "-c", '"$@" >/install.log || { tail /install.log; exit 1; }', "sh", "apt-get",
           "install", "-y", "-qq", "--no-install-recommends", *files, *packages_of_the_test(folder / "qorix"))
    tell("run debian/tests/hosts")
    (machine / "pictures").mkdir()
    inside(machine, "sh", "-c", "cd /qorix && debian/tests/hosts --pictures /pictures")


def packages_of_the_test(sources):
    text = (sources / "debian/tests/control").read_text()
    names = re.search(r"^Depends:(.*?)^\S", text, re.MULTILINE | re.DOTALL)[1]
    return [name for name in re.split(r"[,\s]+", names) if name not in ("", "@")]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=Path)
    parser.add_argument("--pictures", type=Path, help="a folder for a picture of each host")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="qorix-bare-") as temporary:
        builder, user = Path(temporary) / "builder", Path(temporary) / "user"
        make_machine(user)
        subprocess.run(["cp", "--archive", user, builder], check=True)  # devices are copied as such
        build_packages(builder, arguments.folder)
        use_packages(user, arguments.folder)
        if arguments.pictures:
            shutil.copytree(user / "pictures", arguments.pictures, dirs_exist_ok=True)
    tell("done")


if __name__ == "__main__":
    main()
