"""Reads the public headers: declarations, and what the comments say about each.

A comment is about all declarations below it up to a blank line or the next comment. A comment with a blank line below
it is about all that follow it, up to the next such comment.
"""

import re
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
HEADERS = ROOT / 'include/karil'
WIDTH = 120  # of a comment's line
# Macros that are the headers' own.
INTERNAL = {'KARIL_STATIC_ASSERT', 'KARIL_SIZE_32', 'KARIL_STATUS_NAME', 'KARIL_STATUS_TEXT'}


@dataclass
class Entry:
    """A declaration with the comment at its end."""
    code: str
    name: str
    parameters: list  # names, of a function
    exported: bool
    note: str = ''


@dataclass
class Group:
    """Declarations that share a comment. `section` is a comment above several groups."""
    comment: str
    section: str
    entries: list = field(default_factory=list)


@dataclass
class Header:
    name: str
    intro: str
    includes: list
    groups: list


# Reading headers.

def token_end(text, at):
    """The end of the comment, directive or declaration that begins at `at`."""
    if text.startswith('/*', at):
        return text.index('*/', at) + 2
    if text[at] == '#':
        return re.compile(r'(?:\\\n|(?!/\*)[^\n])*').match(text, at).end()
    depth = 0
    end = at
    while True:
        if text.startswith('/*', end):
            end = text.index('*/', end) + 2
            continue
        depth += {'{': 1, '(': 1, '}': -1, ')': -1}.get(text[end], 0)
        end += 1
        if depth < 0 or text[at:end] == 'extern "C" {':
            return end
        if depth == 0 and (text[end - 1] == ';' or text[end - 1] == '}' and text.startswith('static inline', at)):
            return end


def tokens(text):
    """The tokens of a C header, each with the number of line ends before it."""
    found = []
    at = 0
    while text[at:].strip():
        start = re.compile(r'\s*').match(text, at).end()
        end = token_end(text, start)
        found.append((text.count('\n', at, start), text[start:end].rstrip()))
        at = end
    return found


def declaration(code):
    """What a token declares, or None if that is nothing for the reference."""
    plain = re.sub(r'/\*.*?\*/', '', code, flags=re.S)
    macro = re.match(r'#define (\w+)(\(.*?\))? +\S', plain)
    function = re.match(r'(?:KARIL_API |static inline |typedef )[^({]*?(?:\(\*)?(\w+)\)?\(([^)]*)\)', plain)
    other = re.search(r'(\w+)(?:\[\])?(?: = .*)?;$', plain, re.S)
    if macro:
        return Entry(code, macro[1], [], False) if macro[1] not in INTERNAL else None
    if plain.startswith(('#', 'extern', '}', *INTERNAL)):
        return None
    if function:
        names = [re.search(r'(\w+)\W*$', each)[1] for each in re.findall(r'[^,]*\w', function[2])]
        return Entry(code, function[1], names, code.startswith('KARIL_API'))
    return Entry(code, other[1] if other else '', [], False)


def read_header(path):
    text = path.read_text()
    if path.suffix == '.hpp':
        intro = re.match(r'(//.*\n)*', text)[0]
        return Header(path.name, intro, ['karil.h'], [])
    header = Header(path.name, '', re.findall(r'#include "karil/(.*)"', text), [])
    parts = tokens(text)
    section, group, last = '', None, None
    for (lines, part), (gap, _) in zip(parts, [*parts[1:], (2, '')]):
        if not part.startswith('/*'):
            last = declaration(part)
            if last is None:
                continue
            if group is None or lines > 1:
                group = Group('', section)
            if not group.entries:
                header.groups.append(group)
            group.entries.append(last)
        elif not header.intro:
            header.intro = part
        elif lines == 0:
            last.note = part
        elif gap > 1:
            section, group = part, None
        else:
            group = Group(part, section)
    return header


# What comments say.

def blocks(comment):
    """A comment as blocks: ('text', words), ('item', words) and ('pre', lines)."""
    found = []
    room = 0  # left in the line before; a paragraph ends there if the next word had fitted
    for raw in comment.splitlines():
        line = re.sub(r'^\s*(/\*|\*(?= |$)|//) ?|\s*\*/$', '', raw)
        words = line.strip()
        kind = found[-1][0] if found else None
        if not words:
            room = WIDTH if found else 0
            continue
        ended = room == WIDTH or kind == 'text' and found[-1][1][-1] in '.:' and len(words.split()[0]) < room
        if words.startswith('- '):
            found.append(['item', words[2:]])
        elif line.startswith('  ') and (kind != 'item' or room == WIDTH):
            if kind == 'pre':
                found[-1][1] += '\n' + line
            else:
                found.append(['pre', line])
        elif kind is None or ended or kind == 'pre' or kind == 'item' and not line.startswith('  '):
            found.append(['text', words])
        else:
            found[-1][1] += ' ' + words
        room = WIDTH - len(raw)
    return found


def note_text(comment):
    """The comment at the end of a line, or above members, as a sentence."""
    text = ' '.join(re.sub(r'^/\*|\*/$|\n *\*(?= )', ' ', comment).split())
    text = text if text[-1] in '.:' else text + '.'
    return text[0].upper() + text[1:] if re.match(r'[a-z]+\b', text) else text


def refers_back(brief):
    return re.match(r'The same|Does the same|Do the same|As (?:those|the functions) ', brief) is not None


def sentences(text):
    return re.split(r'(?<=\.)\s+(?=[A-Z`_(])', text)


def intro_of(header):
    """What the first comment of a header says: a title, and the rest as blocks."""
    first, *rest = blocks(header.intro)
    title, *more = sentences(first[1])
    return re.sub('^karil: ', '', title), [('text', ' '.join(more))] * bool(more) + rest


def parts_of(comment, entries):
    """A comment as (brief, body, returns): the body of blocks, of which ('parameter', words, names) is one more."""
    names = set(entries[0].parameters).intersection(*(each.parameters for each in entries)) if entries else set()
    brief, body, returns = '', [], []
    for kind, text in blocks(comment):
        if kind != 'text':
            body.append((kind, text))
            continue
        rest = sentences(text)
        if not brief:
            brief = rest.pop(0)
        plain = []
        for index, sentence in enumerate(rest):
            if re.match(r'Returns? ', sentence):
                returns.append(' '.join(rest[index:]))
                break
            described = re.match(r'((?:`\*?\w+`(?:, | and )?)+): (.*)', sentence)
            found = re.findall(r'\w+', described[1].replace(' and ', ' ')) if described else []
            if found and names.issuperset(found):
                body += [('text', ' '.join(plain))] * bool(plain)
                plain = []
                body.append(('parameter', described[2], found))
            else:
                plain.append(sentence)
        body += [('text', ' '.join(plain))] * bool(plain)
    return brief, body, returns
