#!/usr/bin/env python3
"""clang-tidy over source files, several in one go where they allow it.

    scripts/tidy.py BUILD FILE...

Most of clang-tidy's time goes into the headers that a source includes, again for every source. So the
files of a folder are looked at in batches: a batch is a source that includes them, compiled as the first
of them is. Where a batch does not compile, since two files use one name for things of their own, its
files are looked at one by one. So are files with using-declarations: whether those are used is told
of a main file only. Exit status 1 with a finding.
"""
import concurrent.futures
import itertools
import json
import os
import re
import shlex
import subprocess
import sys

BATCH = 8
# What clang-tidy gets in addition: differences between the compilers that are no findings.
EXTRA = ['-Wno-char-subscripts', '-Wno-return-type-c-linkage']
DECLARES_USE = re.compile(r'^\s*using\s+[\w:]+::\w+\s*;', re.M)
NOISE = re.compile(r'^(\d+ warnings? (and \d+ errors? )?generated|Suppressed \d+ warnings?|Use -header-filter)')


def commands(build):
    """Each source's command, without the flags that clang does not know. What the build compiles in a batch has the batch's."""
    with open(os.path.join(build, 'compile_commands.json')) as stream:
        entries = json.load(stream)
    unknown = ('-fno-gnu-unique', '-Wno-restrict')
    known = {entry['file']: [word for word in shlex.split(entry['command']) if word not in unknown] for entry in entries}
    for batch in [path for path in known if '/Unity/' in path]:
        with open(batch) as stream:
            for member in re.findall(r'^#include "(.*)"', stream.read(), re.M):
                known[member] = [member if word == batch else word for word in known[batch]]
    return known


def batches(files, known):
    """Up to BATCH files that share a folder and, but for their names, a command."""
    def key(path):
        with open(path) as stream:
            alone = path if DECLARES_USE.search(stream.read()) else ''
        return alone, os.path.dirname(path), [word for word in known[path] if word != path and not word.endswith('.o')]
    for _, group in itertools.groupby(sorted(files, key=key), key):
        group = list(group)
        parts = -(-len(group) // BATCH)
        for part in range(parts):
            yield group[part * len(group) // parts:(part + 1) * len(group) // parts]


def main():
    build, names = sys.argv[1], sys.argv[2:]
    here = os.path.join(build, 'lint')
    os.makedirs(here, exist_ok=True)
    known = commands(build)
    files = [os.path.abspath(name) for name in names]
    missing = [path for path in files if path not in known]
    if missing:
        sys.exit('scripts/tidy.py: no build knows ' + ', '.join(missing))

    gcc = subprocess.run(['gcc', '-print-file-name=include'], stdout=subprocess.PIPE, text=True, check=True).stdout.strip()
    extra = EXTRA + ['-idirafter' + gcc]
    entries = dict(known)
    units = []
    for number, group in enumerate(batches(files, known)):
        path = os.path.abspath(os.path.join(here, f'batch{number}.cpp'))
        with open(path, 'w') as stream:
            stream.writelines(f'#include "{member}"\n' for member in group)
        entries[path] = [path if word == group[0] else word for word in known[group[0]]]
        units.append((path, group))
    units.sort(key=lambda unit: -sum(os.path.getsize(member) for member in unit[1]))  # the longest first
    with open(os.path.join(here, 'compile_commands.json'), 'w') as stream:
        json.dump([{'directory': os.path.abspath(build), 'file': path, 'command': shlex.join(words)} for path, words in entries.items()], stream)

    # A batch's files are headers to clang-tidy, which tells nothing of a header that the filter leaves out.
    with open('.clang-tidy') as stream:
        headers = re.search(r"^HeaderFilterRegex: '(.*)'", stream.read(), re.M).group(1)

    def compiles(path):
        words = entries[path][1:]
        output = words.index('-o')
        words = words[:output] + words[output + 2:]
        return subprocess.run(['clang++', *words, *extra, '-w', '-fsyntax-only'], cwd=build, stderr=subprocess.DEVNULL).returncode == 0

    def look(unit):
        path, group = unit
        sources = [path] if len(group) > 1 and compiles(path) else group
        shown = '|'.join([headers, *(re.escape(member) + '$' for member in group)])
        result = subprocess.run(['clang-tidy', '--quiet', '-p', here, '--header-filter=' + shown, *['--extra-arg=' + word for word in extra], *sources],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        errors = ''.join(line + '\n' for line in result.stderr.splitlines() if line.strip() and not NOISE.match(line))
        return result.returncode, result.stdout + errors

    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for status, output in pool.map(look, units):
            failed = failed or status != 0
            print(output, end='', flush=True)
    sys.exit(1 if failed else 0)


main()
