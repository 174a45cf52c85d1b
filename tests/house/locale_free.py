#!/usr/bin/env python3
"""Checks that no code follows the user's locale where it must not. usage: locale_free.py ROOT

Letter case and kinds of characters come from platform/AsciiCase.h and numbers from <charconv>: the C
library's functions answer differently in another country. Prints one line for each use of one and
exits 1 if there is any.
"""

import re
import sys
from pathlib import Path

ROOMS = ("include", "definition", "sources", "webview", "presentation", "manager", "platform",
         "examples", "tools")

CALL = re.compile(
    r"\b(isw?(alnum|alpha|blank|cntrl|digit|graph|lower|print|punct|space|upper|xdigit)|"
    r"tow?(lower|upper)|strn?casecmp|strcasestr|"
    r"strto(d|f|ld)|ato[fil]|atoll|sto(d|f|ld))(_l)?\b"
)
HEADER = re.compile(r"#\s*include\s*<(cctype|ctype\.h|cwctype|wctype\.h|strings\.h)>")


def faults(root):
    for room in ROOMS:
        for path in sorted((root / room).rglob("*")):
            if path.suffix not in (".h", ".cpp") or not path.is_file():
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                if HEADER.search(line) or CALL.search(line.split("//")[0]):
                    yield f"{path.relative_to(root)}:{number}: {line.strip()}: follows the locale"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "nothing follows the locale")
    sys.exit(1 if found else 0)
