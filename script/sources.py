"""What the checks of this folder share: the sources of a checkout, and their text without comments and strings."""

import pathlib
import re
import subprocess
import sys

_beside_code = re.compile(r'''//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+\'''', re.S)


def root():
    """The folder given as argument, else this checkout."""
    return pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)


def files(*patterns):
    """The files below the root that git knows or would add, sorted."""
    listed = subprocess.run(
        ["git", "-c", "safe.directory=*", "ls-files", "-co", "--exclude-standard", "--", *patterns],
        cwd=root(), check=True, capture_output=True, text=True).stdout.splitlines()
    return [name for name in sorted(set(listed)) if (root() / name).is_file()]


def read(name):
    return (root() / name).read_text(encoding="utf-8")


def code(name):
    """The text of a file, its comments and the insides of its strings made blanks: every line stays where it is."""
    def blank(match):
        text = re.sub(r"[^\n]", " ", match[0])
        return match[0][0] + text[1:-1] + match[0][-1] if match[0][0] in "\"'" else text
    return _beside_code.sub(blank, read(name))


def line_of(text, position):
    return text.count("\n", 0, position) + 1


def end(found, holds):
    """Tells what was found, one line each, and ends the program."""
    for line in found:
        print(line)
    if found:
        sys.exit(f"{pathlib.Path(sys.argv[0]).name}: {len(found)} violations")
    print(holds)
