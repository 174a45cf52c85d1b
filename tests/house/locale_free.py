#!/usr/bin/env python3
"""Checks that no code follows the user's locale where it must not. usage: locale_free.py ROOT

Letter case and kinds of characters come from text/AsciiCase.h and numbers from <charconv>: the C
library's functions answer differently in another country. Prints one line for each use of one and
exits 1 if there is any.
"""

import re
import sys
from pathlib import Path

from rooms import Rooms

CALL = re.compile(
    r"\b(isw?(alnum|alpha|blank|cntrl|digit|graph|lower|print|punct|space|upper|xdigit)|"
    r"tow?(lower|upper)|strn?casecmp|strcasestr|"
    r"strto(d|f|ld)|ato[fil]|atoll|sto(d|f|ld))(_l)?\b"
)
HEADER = re.compile(r"#\s*include\s*<(cctype|ctype\.h|cwctype|wctype\.h|strings\.h)>")


def faults(root):
    for path in Rooms(root).sources():
        if path.parts[0] in ("tests", "bench"):
            continue
        for number, line in enumerate((root / path).read_text().splitlines(), 1):
            if HEADER.search(line) or CALL.search(line.split("//")[0]):
                yield f"{path}:{number}: {line.strip()}: follows the locale"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "nothing follows the locale")
    sys.exit(1 if found else 0)
