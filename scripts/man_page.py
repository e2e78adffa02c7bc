#!/usr/bin/env python3
"""Makes a manual page of a page of docs/, so that both say the same.

    scripts/man_page.py docs/environment.md kvr2-environment 7 "what it is in a line" VERSION OUTPUT.gz

What the pages use is understood: headings, paragraphs, lists, tables, indented and fenced blocks, `code` and [links](...).
A table becomes a list of its first column, with the other columns under it, each after its heading.
"""

import gzip
import pathlib
import re
import sys


def inline(text):
    """A line's text in roff, code in bold and links as their words."""
    text = re.sub(r"\[([^]]*)\]\(([^)]*)\)", r"\1", text)
    text = text.replace("\\", "\\e").replace("-", "\\-")
    text = re.sub(r"`([^`]*)`", r"\\fB\1\\fR", text).replace("**", "")
    return "\\&" + text if text[:1] in (".", "'") else text


def cells(line):
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def table(rows, out):
    heads = cells(rows[0])
    for row in rows[2:]:
        columns = cells(row)
        out += [".TP", inline(columns[0]) or "\\&"]
        said = []
        for head, column in list(zip(heads, columns))[1:]:
            if column:
                said.append(f"{inline(head)}: {inline(column)}" if head and len(heads) > 2 else inline(column))
        out.append("\n.br\n".join(said) or "\\&")
    out.append(".PP")


def block(lines, out):
    out += [".PP", ".RS 4", ".nf"] + [("\\&" + line.replace("\\", "\\e").replace("-", "\\-")) for line in lines] + [".fi", ".RE"]


def body(lines):
    out, i = [], 0
    while i < len(lines):
        line = lines[i]
        end = i
        if line.startswith("```"):
            end += 1
            while not lines[end].startswith("```"):
                end += 1
            block(lines[i + 1 : end], out)
            i = end + 1
        elif line.startswith("    ") and not (i and lines[i - 1].strip()):
            while end < len(lines) and (lines[end].startswith("    ") or not lines[end].strip()):
                end += 1
            block([each[4:] for each in lines[i:end]], out)
            i = end
        elif line.startswith("|"):
            while end < len(lines) and lines[end].startswith("|"):
                end += 1
            table(lines[i:end], out)
            i = end
        elif match := re.match(r"(#+) (.*)", line):
            out.append((".SH " if len(match[1]) == 2 else ".SS ") + '"' + inline(match[2].replace("`", "")).replace('"', "\\(dq") + '"')
            i += 1
        elif not line.strip():
            if out and not out[-1].startswith((".SH", ".SS", ".PP")):
                out.append(".PP")
            i += 1
        else:  # a paragraph or an item of a list: its lines together, for code may go from one to the next
            item = re.match(r"([-*]|\d+\.) +", line)
            if item:
                out.append(".IP \\(bu 2")
            end += 1
            while end < len(lines) and lines[end].strip() and not re.match(r"[-*|#] ?|\d+\. |```", lines[end]):
                end += 1
            out.append(inline(" ".join(each.strip() for each in lines[i:end])[item.end() if item else 0 :]))
            i = end
    return out


def main():
    source, name, section, summary, version, output = sys.argv[1:]
    lines = pathlib.Path(source).read_text().splitlines()
    page = [
        f'.TH {name.upper()} {section} "" "libkvr2_64r {version}" "COBOL run time"',
        ".SH NAME",
        f"{name} \\- {inline(summary)}",
        ".SH DESCRIPTION",
    ] + body(lines[1:])
    # No name and no time in the header: the same page is the same file.
    data = gzip.compress(("\n".join(page) + "\n").encode(), 9, mtime=0)
    pathlib.Path(output).write_bytes(data)


main()
