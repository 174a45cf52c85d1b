#!/usr/bin/env python3
"""Prints the C++ blocks of a text. usage: code_of.py TEXT.md

Exits 1 if there is none.
"""

import re
import sys
from pathlib import Path

blocks = re.findall(r"^```cpp\n(.*?)^```$", Path(sys.argv[1]).read_text(), re.MULTILINE | re.DOTALL)
print("\n".join(blocks), end="")
sys.exit(0 if blocks else 1)
