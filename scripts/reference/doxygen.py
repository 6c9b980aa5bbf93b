"""Headers as Doxygen wants them, and the HTML that it makes of them."""

import re
import shutil
import subprocess
import sys
import textwrap

from headers import HEADERS, ROOT, Group, blocks, intro_of, note_text, parts_of, refers_back, sentences

SOURCES = ROOT / 'docs/reference'


def escaped(text):
    text = re.sub(r'[\\@&<>#%$]', lambda found: '\\' + found[0], text)
    return re.sub(r'-{2,}', lambda found: r'\---' * (len(found[0]) // 3) + ['', '-', r'\--'][len(found[0]) % 3], text)


def linked(text, names):
    """Text for Doxygen: code in backticks, the names of the headers as links."""
    pieces = text.split('`')
    for index, piece in enumerate(pieces):
        if index % 2:
            pieces[index] = '<code>' + escaped(piece) + '</code>'
        else:
            pieces[index] = re.sub(r'\b[A-Za-z]\w+\b', lambda found: '#' + found[0] if found[0] in names else found[0],
                                   escaped(piece))
    return ''.join(pieces)


def doxygen_blocks(found, names):
    """Blocks as the lines of a comment of Doxygen's."""
    lines = []
    for index, (kind, text, *parameters) in enumerate(found):
        if kind == 'pre':
            lines += ['@verbatim', *textwrap.dedent(text).split('\n'), '@endverbatim', '']
        elif kind == 'item':
            lines += ['<ul>'] if index == 0 or found[index - 1][0] != 'item' else []
            lines += ['<li>' + linked(text, names) + '</li>']
            lines += ['</ul>', ''] if index + 1 == len(found) or found[index + 1][0] != 'item' else []
        elif kind == 'parameter':
            lines += ['@param ' + ','.join(parameters[0]) + ' ' + linked(text, names), '']
        else:
            lines += [linked(text, names), '']
    return lines


def doxygen_comment(lines):
    return '/**\n' + '\n'.join(lines) + '\n*/\n'


def doxygen_members(code, names):
    """A record or an enumeration: a comment above members is about all of them up to a blank line."""
    lines = []
    section = None
    # A line of code with the comment at its end; a comment of its own; a blank line.
    for found in re.finditer(r'[^\S\n]*(?:(?P<above>/\*.*?\*/)|(?P<code>[^\n]*?)[^\S\n]*(?P<note>/\*.*?\*/)?)(?:\n|$)',
                             code, re.S):
        if found['above'] or not found['code']:
            section = found['above']
            continue
        said = [note_text(each) for each in (found['note'], section) if each]
        member = re.search(r'[;,]$|\w$', found['code'])
        lines.append(found['code'] + (f' /**< @brief {linked(" ".join(said), names)} */' if said and member else ''))
    return '\n'.join(lines)


def doxygen_entry(group, entry, before, names):
    """A declaration under its comment. `before`: the functions that the comment before this one is about."""
    brief, body, returns = parts_of(group.comment, [entry])
    above, more, also = parts_of(group.section, [entry])
    lines = ['@brief ' + linked(brief, names), ''] if brief else []
    if entry.note:
        lines += [f'@par {entry.name}', linked(note_text(entry.note), names), '']
    lines += doxygen_blocks(body, names)
    if above:
        lines += doxygen_blocks([('text', above), *more], names)
    for text in returns + also:
        lines += ['@return ' + linked(re.sub(r'^Returns? ', '', text), names), '']
    others = ['#' + other.name for other in group.entries if other is not entry and other.name]
    if others and brief:
        lines += ['@see ' + ', '.join(others) + ', of which the same is said.', '']
    if refers_back(brief):
        lines += ['@see ' + ', '.join('#' + other.name for other in before) + ', above.', '']
    code = re.sub(r'^KARIL_API ', '', entry.code)
    if re.match(r'(typedef struct|enum)\b.*\{\n', code):
        code = doxygen_members(code, names)
    return (doxygen_comment(lines) if lines else '') + code + '\n'


def doxygen_cpp(text, names):
    """karil.hpp: a comment reaches the declarations below it up to a blank line."""
    lines = []
    comment, indent = [], ''
    open_ = False  # the comment is still to be given to a declaration
    for line in text[re.match(r'(//.*\n)*', text).end():].splitlines():
        found = re.match(r'( *)// (.*)', line)
        if found:
            comment = comment + [found[2]] if open_ and found[1] == indent else [found[2]]
            indent, open_ = found[1], True
        else:
            if not line.strip():
                comment = []
            elif comment and open_:
                brief, *rest = sentences(' '.join(comment))
                lines.append(doxygen_comment(['@brief ' + linked(brief, names), '', linked(' '.join(rest), names)]))
                open_ = False
            lines.append(line)
            open_ = open_ or bool(comment) and re.match(indent + r'(\S.*)?[};]$', line) is not None
    return '\n'.join(lines) + '\n'


def doxygen_header(header, family, names):
    title, intro = intro_of(header)
    title = title if title.startswith('karil') else title[0].upper() + title[1:]
    said = [linked(title, names), '', *doxygen_blocks(intro, names)]
    output = doxygen_comment(['@file', '@brief ' + said[0], *said[1:]])
    output += doxygen_comment(['@addtogroup ' + family, f'<h3>karil/{header.name}</h3>', *said, '@{'])
    output += ''.join(f'#include "karil/{each}"\n' for each in header.includes)
    if header.name.endswith('.hpp'):
        output += doxygen_cpp((HEADERS / header.name).read_text(), names)
    for before, group in zip([Group('', ''), *header.groups], header.groups):
        output += '\n'.join(['', *(doxygen_entry(group, entry, before.entries, names) for entry in group.entries)])
    return output + '\n/** @} */\n'


def graph(families, headers):
    """The families and which of them needs which, without edges that follow from others."""
    home = {each: key for key, (_, members) in families.items() for each in members}
    needs = {key: {home[each] for member in members for each in headers[member].includes} - {key, 'base'}
             for key, (_, members) in families.items()}
    needs['base'] = needs['cpp'] = set()

    def reach(key):
        return needs[key].union(*(reach(each) for each in needs[key]))

    lines = ['digraph families {', 'rankdir=RL;', 'bgcolor=transparent;',
             'node [shape=box, style="rounded,filled", fillcolor="#e8eef7", color="#5b7aa8", fontsize=11];',
             'edge [color="#5b7aa8", arrowsize=0.7];']
    for key, (title, _) in families.items():
        lines.append(f'{key} [label="{title}", URL="\\ref {key}"];')
        direct = needs[key] - {far for each in needs[key] for far in reach(each)}
        lines += [f'{key} -> {each};' for each in sorted(direct or ({'base'} - {key}))]
    return '\n'.join([*lines, '}'])


def main_page(families, headers, names):
    intro = doxygen_blocks(blocks((SOURCES / 'intro.txt').read_text()), names)
    rows = [f'<tr><td>@ref {key}</td><td>' + ', '.join(members) + '</td></tr>'
            for key, (_, members) in families.items()]
    groups = [doxygen_comment([f'@defgroup {key} {escaped(title)}']) for key, (title, _) in families.items()]
    return doxygen_comment([
        '@mainpage karil', '', *intro, '<h2>The families</h2>', '<table>', '<tr><th>Family</th><th>Headers</th></tr>',
        *rows, '</table>', '', 'An arrow leads from a family to what its headers include.', '', '@dot',
        graph(families, headers), '@enddot']) + ''.join(groups)


def make_html(folder, families, headers, version):
    """Runs Doxygen and returns the names of the functions that it found."""
    names = {entry.name for header in headers.values() for group in header.groups for entry in group.entries}
    names |= {name for header in headers.values() for group in header.groups for entry in group.entries
              if entry.code.startswith('enum') for name in re.findall(r'(\w+) = ', entry.code)}
    names -= {''}
    source = folder / 'source'
    shutil.rmtree(source, ignore_errors=True)
    shutil.rmtree(folder / 'html', ignore_errors=True)
    (source / 'karil').mkdir(parents=True)
    (source / 'main.dox').write_text(main_page(families, headers, names))
    inputs = [source / 'main.dox']
    for key, (_, members) in families.items():
        for each in members:
            inputs.append(source / 'karil' / each)
            inputs[-1].write_text(doxygen_header(headers[each], key, names))
    settings = (SOURCES / 'Doxyfile').read_text() + '\n'.join([
        f'PROJECT_NUMBER = {version}', 'INPUT = ' + ' '.join(f'"{each}"' for each in inputs),
        f'STRIP_FROM_PATH = "{source}"', f'STRIP_FROM_INC_PATH = "{source}"', f'OUTPUT_DIRECTORY = "{folder}"',
        f'GENERATE_TAGFILE = "{folder}/karil.tag"'])
    if subprocess.run(['doxygen', '-'], input=settings, text=True).returncode != 0:
        sys.exit('doxygen has warnings')
    shutil.rmtree(source)
    return set(re.findall(r'<member kind="function">.*?<name>(\w+)</name>', (folder / 'karil.tag').read_text(), re.S))
