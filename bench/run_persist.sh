#!/bin/sh
# Saves and loads the standard table in binary form and runs the anchors in the same run.
# Usage: bench/run_persist.sh [build folder] [records]
set -e
build=${1:-build}
records=${2:-1000000}
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
"$build/bench/persist_bench" --records "$records" --dir "$dir" --csv "$dir/table.csv"
"$build/bench/persist_bench" --records "$records" --load "$dir/persist_bench.kpx"
"$build/bench/persist_bench" --records "$records" --load "$dir/persist_bench_gz.kpx"
"$build/bench/persist_bench" --records "$records" --load-xml "$dir/persist_bench.xml"
"$build/bench/persist_bench" --records "$records" --load-xml "$dir/persist_bench_gz.xml"
/usr/bin/python3 "$(dirname "$0")/persist_anchors.py" "$dir/table.csv" "$dir" "$dir/persist_bench.kpx" "$dir/persist_bench.xml"
