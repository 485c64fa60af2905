"""What a library shows: its visible symbols, and the declarations of its headers."""

import re
import subprocess
from pathlib import Path


def visible_symbols(library):
    """Names that a program can link to."""
    lines = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--format=posix", library], check=True, capture_output=True, text=True
    ).stdout.splitlines()
    return {line.split()[0].split("@")[0] for line in lines}


def header_text(path):
    """The text of a header, or of all headers below a directory."""
    headers = sorted(Path(path).rglob("*.h")) if Path(path).is_dir() else [Path(path)]
    return "\n".join(header.read_text() for header in headers)


def declarations(text):
    """(name, documented) of each function in the text of a header.

    A declaration is documented by the comment right above it, or as a member of a group whose name says what it does.
    """
    for match in re.finditer(r"^QEL_API\s[^;(]*?(\w+)\s*\(", text, re.MULTILINE):
        before = text[: match.start()].rstrip()
        opened = before.rfind("/** @{ */")
        if opened > before.rfind("/** @} */"):
            before = before[:opened].rstrip()
            documented = before.endswith("*/") and "@name" in before[before.rfind("/**") :]
        else:
            documented = before.endswith("*/") and not before.endswith("@} */")
        yield match[1], documented
