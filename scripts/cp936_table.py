#!/usr/bin/env python3
"""Makes src/ka_low/cp936_table.cc from data/cp936.txt; with --check, fails unless it is what the data gives."""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / 'data/cp936.txt'
TABLE = ROOT / 'src/ka_low/cp936_table.cc'
NO_PLACE = ord('?')


def read_data():
    """Returns the code points by octets (one, or two as a 16-bit number), and (mark, base, letter) triples."""
    page = {octet: octet for octet in range(0x80)}
    private = {}
    compositions = []
    for line in DATA.read_text(encoding='utf-8').splitlines():
        if not line or line.startswith('#'):
            continue
        kind, key, text = line.split(' ', 2)
        if kind == 'octet':
            page[int(key, 16)] = ord(text)
        elif kind == 'private':
            private[key] = int(text, 16)
        elif kind == 'pairs':
            trails = [trail for trail in range(0x40, 0xFF) if trail != 0x7F]
            assert len(text) == len(trails), f'row {key} has {len(text)} characters'
            for trail, character in zip(trails, text):
                code = private.get(character, ord(character))
                if character in private:
                    private[character] += 1
                assert code > 0x80, f'row {key}: {character}'
                page[int(key, 16) << 8 | trail] = code
        elif kind == 'mark':
            compositions += [(int(key, 16), ord(text[at]), ord(text[at + 1])) for at in range(0, len(text), 2)]
        else:
            sys.exit(f'{DATA}: no kind {kind}')
    assert len(page) == 129 + 126 * 190, 'a row is missing'
    assert len(set(page.values())) == len(page), 'a character stands twice'
    # Marks are looked up only for units that have no place.
    assert not {mark for mark, _, _ in compositions} & set(page.values()), 'a mark has a place'
    assert {code for row in compositions for code in row[1:]} <= set(page.values()), 'a letter has no place'
    return page, sorted(compositions)


def braces(values):
    return '{' + ','.join(f'0x{value:X}' for value in values) + '}'


def make_table():
    page, compositions = read_data()
    octets = {code: key for key, code in page.items()}
    used = sorted({code >> 8 for code in octets})
    marks = sorted({row[0] for row in compositions})
    places = [used.index(high) + 1 if high in used else 0 for high in range(256)]
    lines = [
        '// Made by scripts/cp936_table.py from data/cp936.txt.',
        '// clang-format off',
        '#include "cp936_table.h"',
        '',
        'namespace karil {',
        '',
        f'const uint16_t OctetUnits[256] = {braces((page.get(octet, NO_PLACE) for octet in range(256)))};',
        '',
        'const uint16_t PairUnits[126][192] = {',
        *(braces((page.get(lead << 8 | trail, NO_PLACE) for trail in range(0x40, 0x100))) + f', // {lead:X}'
          for lead in range(0x81, 0xFF)),
        '};',
        '',
        f'const uint8_t UnitPages[256] = {braces(places)};',
        '',
        'const uint16_t UnitOctets[][256] = {',
        braces([NO_PLACE] * 256) + ', // no character of the page',
        *(braces((octets.get(high << 8 | low, NO_PLACE) for low in range(256))) + f', // {high:02X}'
          for high in used),
        '};',
        '',
        'const Composition Compositions[] = {',
        *(','.join(braces(row) for row in compositions if row[0] == mark) + f', // {mark:04X}' for mark in marks),
        '};',
        'const uint32_t CompositionCount = sizeof Compositions / sizeof *Compositions;',
        '',
        '} // namespace karil',
        '',
    ]
    return '\n'.join(lines)


if sys.argv[1:] not in ([], ['--check']):
    sys.exit('usage: cp936_table.py [--check]')
made = make_table()
if not sys.argv[1:]:
    TABLE.write_text(made, encoding='utf-8')
elif TABLE.read_text(encoding='utf-8') != made:
    sys.exit(f'{TABLE} is not what scripts/cp936_table.py makes of {DATA}')
