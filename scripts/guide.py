#!/usr/bin/env python3
"""Keeps docs/guide.md at one with the programs that it shows.

guide.py                                  puts the programs' texts into the guide
guide.py --check                          fails unless they are there, every link of the documents leads somewhere, and
                                          every picture is made from its source as it is
guide.py --run DOCUMENT FOLDER [EMULATOR...]
                                          runs the commands of a document with the programs that were built in FOLDER
"""
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
GUIDE = ROOT / 'docs/guide.md'
PROGRAMS = ROOT / 'examples/guide'
PICTURES = ROOT / 'docs/pictures'
# <!-- shows PATH [FUNCTION] --> and what stands there up to the end of the block of code.
SHOWN = re.compile(r'(<!-- shows (\S+)(?: (\w+))? -->\n)(?:```c\n.*?^```\n)?', re.DOTALL | re.MULTILINE)
# A block of commands, and what they have to print if a block of text follows.
COMMANDS = re.compile(r'^```sh\n(.*?)^```\n(?:\n?```text\n(.*?)^```\n)?', re.DOTALL | re.MULTILINE)


def text_of(path, function):
    """Returns the text of a file, or of one function in it with the comment above."""
    text = (ROOT / path).read_text(encoding='utf-8')
    if function is None:
        return text
    found = re.search(r'(?:^(?:/\*| \*).*\n)*^\S[^\n;]*\b%s\((?:[^;{]|\n)*\{\n.*?^\}\n' % function, text,
                      re.DOTALL | re.MULTILINE)
    if found is None:
        sys.exit(f'{path} has no function {function}')
    return found.group()


def with_programs(guide):
    return SHOWN.sub(lambda found: f'{found[1]}```c\n{text_of(found[2], found[3])}```\n', guide)


def anchors_of(path):
    """Returns the anchors that a document's headings get."""
    text = re.sub(r'^```.*?^```', '', path.read_text(encoding='utf-8'), flags=re.DOTALL | re.MULTILINE)
    headings = re.findall(r'^#+ (.*)$', text, re.MULTILINE)
    return {re.sub(r'[^\w\- ]', '', heading.lower()).replace(' ', '-') for heading in headings}


def broken_links():
    for document in sorted([*ROOT.glob('*.md'), *ROOT.glob('docs/*.md')]):
        text = re.sub(r'^```.*?^```', '', document.read_text(encoding='utf-8'), flags=re.DOTALL | re.MULTILINE)
        for target in re.findall(r'\]\(([^)\s]+)\)', text):
            if target.startswith(('https://', 'http://', 'mailto:')):
                continue
            name, _, anchor = target.partition('#')
            path = document.parent / name if name else document
            if not path.exists():
                yield f'{document.name}: {target} leads to no file'
            elif anchor and anchor not in anchors_of(path):
                yield f'{document.name}: {target} leads to no heading'


def stale():
    """Says what is not as it should be."""
    guide = GUIDE.read_text(encoding='utf-8')
    if with_programs(guide) != guide:
        yield f'{GUIDE.name} shows other programs than there are: run scripts/guide.py'
    shown = {found[2] for found in SHOWN.finditer(guide)}
    for program in sorted(PROGRAMS.glob('**/*.c')):
        if str(program.relative_to(ROOT)) not in shown:
            yield f'{GUIDE.name} does not show {program.name}'
    for source in sorted(PICTURES.glob('*.dot')):
        picture = source.with_suffix('.svg')
        digest = hashlib.sha256(source.read_bytes()).hexdigest()
        if not picture.exists() or digest not in picture.read_text(encoding='utf-8'):
            yield f'{picture.name} is not made from {source.name} as it is: run scripts/pictures.sh'
    yield from broken_links()


def is_as_told(got, told):
    """Compares what commands printed with the document, where ... stands for anything: in a line, or some lines."""
    lines = (r'(?:.*\n)*' if line == '...\n' else re.escape(line).replace(r'\.\.\.', '.*')
             for line in told.splitlines(keepends=True))
    return re.fullmatch(''.join(lines), got) is not None


def run(document, folder, emulator):
    """Runs a document's commands in one shell, in a folder of their own, and compares what they print."""
    blocks = COMMANDS.findall(document.read_text(encoding='utf-8'))
    work = folder / 'run'
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir()
    for program in folder.iterdir():
        if program.is_file() and os.access(program, os.X_OK):
            command = ' '.join([*emulator, str(program)])
            (work / program.name).write_text(f'#!/bin/sh\nexec {command} "$@"\n', encoding='utf-8')
            (work / program.name).chmod(0o755)
    end = '=== end of the block'
    script = 'set -eu\n' + ''.join(f'{commands}\necho "{end}"\n' for commands, _ in blocks)
    environment = os.environ | {'PATH': f'{work}:{os.environ["PATH"]}'}
    done = subprocess.run(['sh', '-c', script], cwd=work, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          encoding='utf-8', errors='replace', check=False)
    printed = done.stdout.split(f'{end}\n')
    for (commands, told), got in zip(blocks, printed):
        print(commands + got, end='')
        if told and not is_as_told(got, told):
            sys.exit(f'{document.name} tells something else:\n{told}')
    if done.returncode != 0:
        sys.exit(f'{blocks[len(printed) - 1][0]}failed with status {done.returncode}')
    print(f'{len(blocks)} blocks of commands did what {document.name} says')


if sys.argv[1:] == []:
    GUIDE.write_text(with_programs(GUIDE.read_text(encoding='utf-8')), encoding='utf-8')
elif sys.argv[1:] == ['--check']:
    sys.exit('\n'.join(stale()) or None)
elif sys.argv[1] == '--run' and len(sys.argv) > 3:
    run(ROOT / sys.argv[2], pathlib.Path(sys.argv[3]).resolve(), sys.argv[4:])
else:
    sys.exit(__doc__)
