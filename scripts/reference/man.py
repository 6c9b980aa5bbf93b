"""Man pages: one for each comment about functions, one for each header, and karil(3karil)."""

import re
import shutil
import textwrap

from headers import ROOT, blocks, intro_of, note_text, parts_of, refers_back

SECTION = '3karil'


def roff(text):
    text = text.replace('\\', '\\e').replace('-', '\\-').replace("'", '\\(aq')
    text = re.sub(r'`(.*?)`', r'\\fI\1\\fP', text)
    return re.sub(r'^([.])', r'\\&\1', text)


def roff_blocks(found):
    lines = []
    for kind, text, *parameters in found:
        if kind == 'pre':
            lines += ['.PP', '.nf', *map(roff, text.split('\n')), '.fi']
        elif kind == 'item':
            lines += ['.IP \\(bu 2', roff(text)]
        elif kind == 'parameter':
            lines += ['.TP', '\\fI' + ', '.join(parameters[0]) + '\\fP', roff(text)]
        else:
            lines += ['.PP', roff(text)]
    return lines


def page_head(names, brief, version):
    title = names.split(',')[0]
    return [f'.TH "{title}" "{SECTION}" "" "karil {version}" "karil"', '.nh', '.ad l', '.SH NAME',
            roff(f'{names} - {brief_text(brief)}')]


def header_page(header):
    return {'karil.h': 'karil', 'karil.hpp': 'karil_hpp'}.get(header.name, 'karil_' + header.name.split('.')[0])


def brief_text(text):
    text = re.sub(r'\.$', '', text)
    return text[0].lower() + text[1:] if re.match(r'[A-Z][a-z]', text) else text


def functions_of(group):
    return [entry for entry in group.entries if entry.parameters and not entry.code.startswith('typedef')]


def group_page(header, group, functions, before, version):
    brief, body, returns = parts_of(group.comment, functions)
    lines = page_head(', '.join(each.name for each in functions), brief, version)
    lines += ['.SH SYNOPSIS', '.nf', f'\\fB#include <karil/{header.name}>\\fP']
    for each in functions:
        code = re.sub(r'\s+', ' ', re.sub(r'^KARIL_API |\{.*', '', each.code, flags=re.S)).strip()
        # A parameter stays on one line.
        code = re.sub(r'(?<!,) ', '\0', code)
        lines += ['.PP', *(roff(line.replace('\0', ' ')) for line in textwrap.wrap(code, 76, subsequent_indent='    '))]
    lines += ['.fi', '.SH DESCRIPTION', roff(brief), *roff_blocks(body)]
    for each in functions:
        if each.note:
            lines += ['.TP', f'\\fB{each.name}\\fP', roff(note_text(each.note))]
    if returns:
        lines += ['.SH RETURN VALUE', *roff_blocks([('text', each) for each in returns])]
    notes = blocks(group.section) + intro_of(header)[1]
    if notes:
        lines += ['.SH NOTES', *roff_blocks(notes)]
    seen = [each.name for each in before] * refers_back(brief) + [header_page(header), 'karil']
    lines += ['.SH SEE ALSO', *(f'.BR {each} ({SECTION}){"," * (each != "karil")}' for each in seen)]
    return '\n'.join(lines) + '\n'


def header_text(header, families, headers, version):
    """The page of a header: its text, its functions, and its records and constants as they stand."""
    name = header_page(header)
    title, intro = intro_of(header)
    lines = page_head(name, title, version)
    lines += ['.SH SYNOPSIS', f'\\fB#include <karil/{header.name}>\\fP', '.SH DESCRIPTION', *roff_blocks(intro)]
    groups = [(functions_of(group), group) for group in header.groups]
    if any(functions for functions, _ in groups):
        lines += ['.SH FUNCTIONS']
    for functions, group in groups:
        if functions:
            lines += ['.TP', roff(', '.join(f'`{each.name}`' for each in functions)),
                      roff(parts_of(group.comment, functions)[0])]
    code = []
    for functions, group in groups:
        if not functions:
            code += [group.comment] * bool(group.comment)
            code += [*(f'{each.code} {each.note}'.rstrip() for each in group.entries), '']
    if code:
        lines += ['.SH RECORDS AND CONSTANTS', '.nf', *map(roff, '\n'.join(code).split('\n')), '.fi']
    if header.name == 'karil.h':
        lines += roff_blocks(blocks((ROOT / 'docs/reference/intro.txt').read_text()))
        for family, members in families.values():
            pages = [header_page(headers[each]) for each in members]
            lines += ['.SH ' + family.upper(), *(f'.BR {each} ({SECTION})' for each in pages if each != 'karil')]
    return '\n'.join(lines) + '\n'


def make_man(folder, families, headers, version):
    """Writes the pages and returns the names of the functions that have one."""
    man = folder / 'man/man3'
    shutil.rmtree(man, ignore_errors=True)
    man.mkdir(parents=True)
    written = set()
    for _, members in families.values():
        for header in (headers[each] for each in members):
            (man / f'{header_page(header)}.{SECTION}').write_text(
                header_text(header, families, headers, version))
            before = []
            for functions, group in zip(map(functions_of, header.groups), header.groups):
                for each in functions[1:]:
                    (man / f'{each.name}.{SECTION}').write_text(f'.so man3/{functions[0].name}.{SECTION}\n')
                if functions:
                    (man / f'{functions[0].name}.{SECTION}').write_text(
                        group_page(header, group, functions, before, version))
                    written.update(each.name for each in functions)
                    before = functions
    return written
