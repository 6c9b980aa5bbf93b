"""The man page of the program karil, out of what its --help prints."""

import re
import subprocess
from dataclasses import dataclass, field

from man import roff

CLOSING = '''\
.SH EXIT STATUS
.TP
0
Done; a verdict is good.
.TP
1
A verdict is bad: a signature, a date, a password.
.TP
2
The command line asks for what cannot be done.
.TP
3
A file cannot be read or written, or is not what it should be.
.PP
What is wrong is said on standard error, with the name of the library\\(aqs status and its sentence.
.SH ENVIRONMENT
.TP
NO_COLOR
If it is set, nothing is coloured. Without it names are coloured on a terminal.
.TP
TZ
The zone in which times are shown.
.SH SEE ALSO
.BR openssl (1ssl),
.BR karil (3karil)
'''


@dataclass
class Help:
    text: list  # paragraphs
    usage: str = ''
    sections: dict = field(default_factory=dict)  # title -> [(what, words)]


def read_help(program, command):
    output = subprocess.run([program, *command, '--help'], capture_output=True, text=True, check=True).stdout
    found = Help([])
    section = None
    for line in output.splitlines():
        row = re.match(r'  (\S.*?)(?:  +(.*))?$', line)
        title = re.match(r'(\S.*):$', line)
        if line.startswith('Usage: '):
            found.usage = line[7:]
        elif title:
            section = found.sections.setdefault(title[1], [])
        elif section is not None and line.startswith(' ' * 10):
            section[-1] = (section[-1][0], f'{section[-1][1]} {line.strip()}'.strip())
        elif section is not None and row:
            section.append((row[1], row[2] or ''))
        elif line.strip():
            section = None
            found.text.append(line.strip())
    return found


def item(what, words):
    """`-o,--out TEXT:{a,b}=a REQUIRED` and its words as the lines of an entry."""
    name, kind, choices, default, many, required = re.match(
        r'(\S+)(?: ([A-Z]+)(?::(?:\{(.*?)\}|[^ =]+))?(?:=(\S+))?)?( \.\.\.)?( REQUIRED)?$', what).groups()
    option = name.startswith('-')
    tag = ', '.join(f'\\fB{roff(each)}\\fP' if option else f'\\fI{roff(each)}\\fP' for each in name.split(','))
    if option and kind:
        tag += f' \\fI{kind}\\fP'
    said = [words.rstrip('.') + '.'] * bool(words)
    choices = choices.split(',') if choices else []
    said += [f'One of {", ".join(choices)}.'] * any(each not in words for each in choices)
    said += [f'Without it {default}.'] * bool(default)
    said += ['Required.'] * bool(required and option)
    return ['.TP', tag + ' ...' * bool(many), roff(' '.join(said)) or '\\&']


def items(found):
    return [line for title, rows in found.sections.items() if title != 'Subcommands' for what, words in rows
            if '--help' not in what for line in item(what, words)]


def commands(program, command=()):
    """The commands that have none below them, each with its help."""
    found = read_help(program, command)
    below = [name for name, _ in found.sections.get('Subcommands', [])]
    if not below:
        yield command, found
    for name in below:
        yield from commands(program, (*command, name))


def make_tool_page(folder, program, version):
    about = read_help(program, ())
    brief = about.text[0].rstrip('.')
    lines = [f'.TH KARIL 1 "" "karil {version}" "karil"', '.nh', '.ad l', '.SH NAME',
             roff('karil - ' + brief[0].lower() + brief[1:]), '.SH SYNOPSIS', '.B karil',
             '.I COMMAND', '[\\fIOPTION\\fP|\\fIFILE\\fP]...', '.br', '.B karil', '.I COMMAND', '\\-\\-help']
    if about.text[1:]:
        lines += ['.SH DESCRIPTION', *(line for text in about.text[1:] for line in ('.PP', roff(text)))]
    lines += ['.SH COMMANDS']
    for command, found in commands(program):
        lines += ['.SS "' + roff(' '.join(('karil', *command))) + '"', roff(found.usage), '.PP']
        lines += [line for text in found.text for line in (roff(text), '.PP')] + items(found)
    man = folder / 'man/man1'
    man.mkdir(parents=True, exist_ok=True)
    (man / 'karil.1').write_text('\n'.join(lines) + '\n' + CLOSING)
