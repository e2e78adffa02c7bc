#!/usr/bin/env python3
"""clang-tidy over source files, several in one go where they allow it.

    scripts/tidy.py BUILD FILE...

Most of clang-tidy's time goes into the headers that a source includes, again for every source. So
files that are compiled alike are looked at in batches: a batch is a source that includes them. Two
files may use one name for things of their own: those of a batch that have errors become a batch by
themselves, and a finding counts when it is one of a file alone. Files with using-declarations are
looked at one by one: whether those are used is told of a main file only. Exit status 1 with a finding.
"""
import concurrent.futures
import itertools
import json
import os
import re
import shlex
import subprocess
import sys

BATCH = 18
# What clang-tidy gets in addition: differences between the compilers that are no findings.
EXTRA = ['-Wno-char-subscripts', '-Wno-return-type-c-linkage']
DECLARES_USE = re.compile(r'^\s*using\s+[\w:]+::\w+\s*;', re.M)
NAMED = re.compile(r'^(/.*?):\d+:\d+: (?:fatal )?error:', re.M)
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
    """Up to BATCH files that have, but for their names, one command; neighbours first."""
    def key(path):
        with open(path) as stream:
            alone = path if DECLARES_USE.search(stream.read()) else ''
        return alone, [word for word in known[path] if word != path and not word.endswith('.o')]
    for _, group in itertools.groupby(sorted(sorted(files), key=key), key):
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

    def command(path, group):
        """What compiles a group's batch, without what names the output."""
        words = [path if word == group[0] else word for word in known[group[0]]]
        output = words.index('-o')
        return words[:output] + words[output + 2:]

    # A batch's files are headers to clang-tidy, which tells nothing of a header that the filter leaves out.
    with open('.clang-tidy') as stream:
        headers = re.search(r"^HeaderFilterRegex: '(.*)'", stream.read(), re.M).group(1)

    numbers = itertools.count()

    def look(group):
        """The findings in a group of files: a list of exit status and text for each batch that it takes."""
        path = group[0]
        if len(group) > 1:
            path = os.path.abspath(os.path.join(here, f'batch{next(numbers)}.cpp'))
            with open(path, 'w') as stream:
                stream.writelines(f'#include "{member}"\n' for member in group)
        words = command(path, group) + extra
        if len(group) > 1:
            result = subprocess.run(['clang++', *words[1:], '-fsyntax-only', '-ferror-limit=0'],
                                    cwd=build, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
            if result.returncode != 0:
                return split(group, result.stderr)
        shown = '|'.join([headers, *(re.escape(member) + '$' for member in group)])
        result = subprocess.run(['clang-tidy', '--quiet', '--header-filter=' + shown, path, '--', *words[1:]],
                                cwd=build, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        if len(group) > 1 and result.returncode != 0:
            return split(group, result.stdout)
        errors = ''.join(line + '\n' for line in result.stderr.splitlines() if line.strip() and not NOISE.match(line))
        return [(result.returncode, result.stdout + errors)]

    def split(group, said):
        """Looks at a batch with errors again, without the sources that are named and at those after it. A source's own errors are told of it alone."""
        named = set(NAMED.findall(said)) & set(group[1:])
        later = [path for path in group if path in named] or group[len(group) // 2:]
        return look([path for path in group if path not in later]) + look(later)

    groups = sorted(batches(files, known), key=lambda group: -sum(map(os.path.getsize, group)))  # the longest first
    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for status, output in itertools.chain.from_iterable(pool.map(look, groups)):
            failed = failed or status != 0
            print(output, end='', flush=True)
    sys.exit(1 if failed else 0)


main()
