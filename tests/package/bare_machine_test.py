#!/usr/bin/env python3
"""Installs the Debian packages on a bare Debian 12 and runs their test there.
usage: bare_machine_test.py FOLDER [--pictures FOLDER]

FOLDER holds the packages. The bare machine is a folder that debootstrap fills; the packages bring
with them what they need, and debian/tests/control names what their test needs. As root only, with
an archive of Debian's packages within reach.
"""

import argparse
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
RELEASE = "bookworm"
NEEDED = ("debian", "docs", "examples", "tests/package")  # of the repository, for the test


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
    for name in NEEDED:
        shutil.copytree(ROOT / name, machine / "qorix" / name, symlinks=True)


def packages_of_the_test():
    text = (ROOT / "debian/tests/control").read_text()
    names = re.search(r"^Depends:(.*?)^\S", text, re.MULTILINE | re.DOTALL)[1]
    return [name for name in re.split(r"[,\s]+", names) if name not in ("", "@")]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=Path)
    parser.add_argument("--pictures", type=Path, help="a folder for a picture of each host")
    arguments = parser.parse_args()
    packages = sorted(p for p in arguments.folder.glob("*.deb") if "-dbgsym_" not in p.name)
    if not packages:
        sys.exit(f"there are no packages in {arguments.folder}")
    with tempfile.TemporaryDirectory(prefix="qorix-bare-") as temporary:
        machine = Path(temporary) / "machine"
        make_machine(machine)
        (machine / "packages").mkdir()
        for package in packages:
            shutil.copy(package, machine / "packages")
        files = [f"/packages/{package.name}" for package in packages]
        tell("install the packages, and what their test needs")
        install = ["apt-get", "install", "-y", "-qq", "--no-install-recommends"]
        inside(machine, "sh", "-c", 'apt-get update -qq && "$@" >/install.log || { tail /install.log; exit 1; }',
               "sh", *install, *files, *packages_of_the_test())
        tell("run debian/tests/hosts")
        (machine / "pictures").mkdir()
        inside(machine, "sh", "-c", "cd /qorix && debian/tests/hosts --pictures /pictures")
        if arguments.pictures:
            shutil.copytree(machine / "pictures", arguments.pictures, dirs_exist_ok=True)
    tell("done")


if __name__ == "__main__":
    main()
