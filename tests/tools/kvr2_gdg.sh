#!/usr/bin/env bash
# The command over generation data groups: each subcommand once, wrong usage, and its manual.
# Catches: an option that goes to the wrong attribute, an exit status that hides a failure, a manual that lacks a command.
set -euo pipefail
export LC_ALL=C.UTF-8
tool=$1 manual=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { echo "$1"; exit 1; }
expect() { [ "$1" = "$2" ] || fail "expected '$2', got '$1'"; }
status() { local rc=0; "$@" >/dev/null 2>&1 || rc=$?; echo "$rc"; }

"$tool" create --limit=3 --days 0 --no-scratch daily
for n in 1 2 5; do echo "$n" >"daily.g000${n}v00"; done
"$tool" rebuild daily
expect "$("$tool" list daily | sed -n '3,7p' | tr -s ' ' | tr '\n' ';')" " Limit = 3; Days = 0; NoEmpty; NoScratch; Entries = 3;"
"$tool" alter -l 2 --scratch --empty daily
expect "$("$tool" list daily | sed -n '3,7p' | tr -s ' ' | tr '\n' ';')" " Limit = 2; Days = 0; Empty; Scratch; Entries = 0;"
[ ! -e daily.g0005v00 ] || fail "alter to a lower limit under Empty and Scratch leaves files"
echo 9 >daily.g0009v00
"$tool" rebuild daily
"$tool" remove 'daily(0)'
[ ! -e daily.g0009v00 ] || fail "remove leaves the file under Scratch"
"$tool" verify daily
"$tool" unlink daily
expect "$(status "$tool" list daily)" 1
expect "$(status "$tool" list)" 2
expect "$(status "$tool" frobnicate daily)" 2
expect "$(status "$tool" list --limit=3 daily)" 2
expect "$(status "$tool" create --limit=x daily)" 2
expect "$(status "$tool" create --limit=2000 daily)" 1
# A failure says for which group.
for words in "list nothing" "remove nothing" "remove daily(-3)" "verify nothing" "alter nothing" "unlink nothing" "create /proc/x"; do
    # shellcheck disable=SC2086
    "$tool" $words 2>said >/dev/null && fail "$words succeeds"
    grep -q "^kvr2-gdg: $words: ..*" said || fail "$words fails without saying so"
done
"$tool" --version | grep -q '^kvr2-gdg [0-9]' || fail "--version"
"$tool" --help >help
for command in $(sed -n '/^Commands:/,/^$/p' help | awk 'NR>1 && NF {print $1}'); do
    grep -q "^\.B $command\$" "$manual" || fail "the manual lacks $command"
done
MANWIDTH=80 man -l "$manual" 2>&1 >/dev/null | grep . && fail "the manual has faults"
echo "kvr2-gdg does what its manual says"
