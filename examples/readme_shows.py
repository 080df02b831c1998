"""Fails unless the C++ code block of a Markdown file is, character by character, a source file.

Usage: readme_shows.py README.md SOURCE.cpp
"""

import re
import sys
from pathlib import Path

readme, source = (Path(name).read_text(encoding="utf-8") for name in sys.argv[1:])
blocks = re.findall(r"^```cpp\n(.*?)^```$", readme, re.MULTILINE | re.DOTALL)
if blocks != [source]:
    sys.exit(f"{sys.argv[1]} has {len(blocks)} C++ blocks; one, equal to {sys.argv[2]}, is wanted")
