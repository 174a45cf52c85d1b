#!/usr/bin/env python3
"""Runs every fuzzer for a while and tells what it did. usage: fuzz.py SECONDS PROGRAMS FOUND

Starts from corpus/ and from what earlier runs have found in FOUND, as many fuzzers at once as there
are processors. Exits with 1 if an input broke something: it lies in FOUND/TARGET/broken-*, and
belongs to corpus/TARGET with the mend.
"""

import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

CORPUS = Path(__file__).parent / "corpus"
PREFIX = "qorix-fuzz-"


def run(program, seconds, found):
    """Returns a line of figures, and the inputs that broke something."""
    target = program.name.removeprefix(PREFIX)
    folder = found / target
    folder.mkdir(parents=True, exist_ok=True)
    log = found / f"{target}.log"
    with open(log, "w") as output:
        status = subprocess.run(
            [program, f"-max_total_time={seconds}", "-timeout=30", "-rss_limit_mb=3072", "-print_final_stats=1",
             "-verbosity=1", f"-artifact_prefix={folder}/broken-", folder, CORPUS / target],
            stdout=output, stderr=output, stdin=subprocess.DEVNULL, check=False).returncode
    text = log.read_text(errors="replace")
    progress = re.findall(r"^#\d+\s.*cov: (\d+) ft: (\d+) corp: (\d+)", text, re.MULTILINE)
    executions = re.findall(r"^stat::number_of_executed_units:\s*(\d+)", text, re.MULTILINE)
    edges, features, inputs = progress[-1] if progress else ("?", "?", "?")
    broken = re.findall(r"Test unit written to (\S+)", text)
    if status != 0 and not broken:
        broken = [f"status {status}, see {log}"]
    return (f"{target:16} {executions[-1] if executions else '?':>12} {edges:>8} {features:>9} {inputs:>7}", broken)


def main(seconds, programs, found):
    fuzzers = sorted(Path(programs).glob(PREFIX + "*"))
    if {each.name.removeprefix(PREFIX) for each in fuzzers} != {each.name for each in CORPUS.iterdir()}:
        sys.exit("fuzz: a target has no corpus, or a corpus no target")
    all_broken = []
    print(f"{'target':16} {'executions':>12} {'edges':>8} {'features':>9} {'inputs':>7}", flush=True)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for line, broken in pool.map(lambda each: run(each, seconds, Path(found)), fuzzers):
            print(line, flush=True)
            all_broken += broken
    for each in all_broken:
        print(f"broken by {each}")
    return 1 if all_broken else 0


if __name__ == "__main__":
    sys.exit(main(int(sys.argv[1]), sys.argv[2], sys.argv[3]))
