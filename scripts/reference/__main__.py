"""Makes the reference out of the comments of include/karil: HTML by Doxygen, and man pages.

Usage: python3 scripts/reference FOLDER [PROGRAM]
Writes FOLDER/html and FOLDER/man. Fails on any warning of Doxygen, if a header belongs to no family, and if a function
that the library exports is missing or has no comment. With the program karil it writes FOLDER/man/man1/karil.1 alone.
"""

import re
import sys
from pathlib import Path

import doxygen
import man
import tool
from headers import HEADERS, ROOT, read_header


def read_families():
    """Key -> (title, names of headers)."""
    rows = [line.split(' | ') for line in (ROOT / 'docs/reference/families.txt').read_text().splitlines()
            if not line.startswith('#')]
    return {key: (title, members.split()) for key, title, members in rows}


def main():
    folder = Path(sys.argv[1]).resolve()
    version = re.search(r'KARIL_VERSION "(.*)"', (HEADERS / 'version.h').read_text())[1]
    if len(sys.argv) > 2:
        tool.make_tool_page(folder, sys.argv[2], version)
        return
    families = read_families()
    listed = sorted(each for _, members in families.values() for each in members)
    there = sorted(path.name for path in HEADERS.iterdir())
    if listed != there:
        sys.exit(f'docs/reference/families.txt: not each header once: {set(listed) ^ set(there)}')
    headers = {each: read_header(HEADERS / each) for each in there}
    entries = [(header, group, entry) for header in headers.values() for group in header.groups
               for entry in group.entries]

    exports = set(re.findall(r'(\w+);', (ROOT / 'src/karil.map').read_text().split('local:')[0]))
    silent = exports - {entry.name for _, group, entry in entries if entry.exported and group.comment}
    silent |= exports - man.make_man(folder, families, headers, version)
    silent |= exports - doxygen.make_html(folder, families, headers, version)
    if silent:
        sys.exit('not in the reference: ' + ' '.join(sorted(silent)))
    print(f'{len(exports)} functions in the reference')


main()
