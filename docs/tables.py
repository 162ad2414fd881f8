"""Writes those tables of the documents anew that a program prints: docs/tables.py [--check] PROGRAM...

A comment such as <!-- kreiluge functions --markdown --> stands before each; tables of programs that are not named here
stay. With --check nothing is written, and the exit code is 1 when a table is not what its program prints; those that
say ", of one machine" are not checked. They also stay where a program that cannot measure here ends with 77.
"""

import pathlib
import re
import subprocess
import sys

TABLE = re.compile(r"^(<!-- (kreiluge\w*) (.+) -->\n)((?:\|.*\n)*)", re.MULTILINE)


def main(arguments):
    check = "--check" in arguments
    programs = {pathlib.Path(path).name: path for path in arguments if path != "--check"}

    def table(match):
        arguments, of_one_machine, _ = match[3].partition(", of one machine")
        if match[2] not in programs or (check and of_one_machine):
            return match[0]
        printed = subprocess.run([programs[match[2]], *arguments.split()], capture_output=True, text=True)
        if of_one_machine and printed.returncode == 77:
            return match[0]
        printed.check_returncode()
        return match[1] + printed.stdout

    differ = []
    for document in sorted(pathlib.Path(__file__).parent.glob("*.md")):
        old = document.read_text()
        new = TABLE.sub(table, old)
        if new != old:
            differ.append(document.name)
            if not check:
                document.write_text(new)
    if differ:
        print(("these have old tables: " if check else "written: ") + ", ".join(differ))
    return 1 if check and differ else 0


sys.exit(main(sys.argv[1:]))
