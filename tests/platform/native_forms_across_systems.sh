#!/usr/bin/env bash
# A document written by the Linux kpx opens in the Windows kpx (under Wine) and the other way
# round, in every native form: the same records come out of `dump --json` on both sides.
# Usage: native_forms_across_systems.sh LINUX_KPX WINDOWS_KPX SAMPLE.kpx
set -euo pipefail
linux_kpx=$(realpath "$1")
windows_kpx=$(realpath "$2")
sample=$(realpath "$3")
wine=${KELPDEX_WINE:-/usr/lib/wine/wine64}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"  # Wine gets relative names, which mean the same file on both sides
printf 'across the systems\n' >password

failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

# Both programs must print the same bytes, "\n" line ends included.
win() { "$wine" "$windows_kpx" "$@"; }
lin() { "$linux_kpx" "$@"; }

# Every table's records, one dump after another, by the side given (lin or win).
dump_all() {
  local side=$1 file=$2
  shift 2
  local tables
  tables=$($side info "$file" --json "$@" |
    python3 -c 'import json, sys; [print(t["name"]) for t in json.load(sys.stdin)["tables"]]')
  [ -n "$tables" ] || return 1
  while IFS= read -r table; do
    printf '== %s\n' "$table"
    $side dump "$file" --table "$table" --json "$@"
  done <<<"$tables"
}

dump_all lin "$sample" >expected.json
[ -s expected.json ] || { echo "FAIL: the Linux kpx cannot dump the sample" >&2; exit 1; }

for form in xml xml.gz binary binary.gz protected; do
  options=()
  to=$form
  if [ $form = protected ]; then
    options=(--password-file password)
    to=binary
  fi
  lin convert "$sample" "linux-$form.kpx" --to $to
  [ $form = protected ] && lin protect "linux-$form.kpx" --password-file password
  # Windows reads what Linux wrote, and writes the same form again for Linux to read.
  if ! dump_all win "linux-$form.kpx" "${options[@]}" >windows-read.json ||
     ! cmp -s expected.json windows-read.json; then
    fail "the Windows kpx reads the Linux $form file differently"
    diff expected.json windows-read.json | head -5 >&2 || true
  fi
  cp "linux-$form.kpx" "windows-$form.kpx"
  # A changed cell makes Windows write the whole file anew, in the form it was read in.
  # (ASCII only: kpx.exe gets its words in the ANSI code page, not UTF-8.)
  win set "windows-$form.kpx" --table Contacts --record 1 --field Name "${options[@]}" \
    "Set by Windows" >/dev/null || fail "the Windows kpx cannot set a cell in the $form file"
  lin dump "windows-$form.kpx" --table Contacts --json --limit 1 "${options[@]}" |
    grep -q '"Name": "Set by Windows"' || fail "Linux does not see the cell Windows set in $form"
  win set "windows-$form.kpx" --table Contacts --record 1 --field Name "${options[@]}" \
    "$(lin dump "$sample" --table Contacts --json --limit 1 |
      python3 -c 'import json, sys; print(json.load(sys.stdin)[0]["Name"])')" >/dev/null ||
    fail "the Windows kpx cannot set the cell back in the $form file"
  if ! dump_all lin "windows-$form.kpx" "${options[@]}" >linux-read.json ||
     ! cmp -s expected.json linux-read.json; then
    fail "the Linux kpx reads the Windows $form file differently"
    diff expected.json linux-read.json | head -5 >&2 || true
  fi
  # The form survives the Windows save: the first bytes say which it is.
  if ! cmp -s <(head -c 2 "linux-$form.kpx") <(head -c 2 "windows-$form.kpx"); then
    fail "the Windows kpx saved the $form file in another form"
  fi
done

# Windows converts, Linux reads: every form written by kpx.exe from the sample.
cp "$sample" sample.kpx
for form in xml xml.gz binary binary.gz; do
  win convert sample.kpx "windows-convert-$form.kpx" --to $form >/dev/null ||
    fail "the Windows kpx cannot convert to $form"
  dump_all lin "windows-convert-$form.kpx" >converted.json || true
  cmp -s expected.json converted.json || fail "the Linux kpx reads the Windows $form conversion differently"
done

[ $failures -eq 0 ] || { echo "$failures failures" >&2; exit 1; }
echo "native forms across systems: all forms agree"
