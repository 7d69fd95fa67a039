#!/usr/bin/env python3
"""The anchors of the document benchmarks, on the CSV that persist_bench writes: pandas to_pickle
and read_pickle of the same table, and the gzip command on a file of a given size. Prints one JSON
object per job, like the benchmark programs."""
import json
import os
import subprocess
import sys
import time

import pandas


def timed(fn):
    start = time.perf_counter()
    fn()
    return time.perf_counter() - start


def main():
    csv, folder = sys.argv[1], sys.argv[2]
    frame = pandas.read_csv(csv, dtype={"Birth": str})
    copy = os.path.join(folder, "anchor.csv")
    print(json.dumps({"op": "pandas_to_csv", "seconds": timed(lambda: frame.to_csv(copy, index=False))}))
    print(json.dumps({"op": "pandas_read_csv", "seconds": timed(lambda: pandas.read_csv(copy, dtype={"Birth": str}))}))
    os.remove(copy)
    pickle = os.path.join(folder, "anchor.pkl")
    print(json.dumps({"op": "pandas_to_pickle", "seconds": timed(lambda: frame.to_pickle(pickle))}))
    print(json.dumps({"op": "pandas_read_pickle", "seconds": timed(lambda: pandas.read_pickle(pickle))}))
    # gzip at our level on a file of the plain binary document's size.
    for path in sys.argv[3:]:
        level = "-6"
        gz = path + ".gz"
        seconds = timed(lambda: subprocess.run(f"gzip {level} -c {path} > {gz}", shell=True, check=True))
        print(json.dumps({"op": "gzip" + level, "file": path, "seconds": seconds}))
        seconds = timed(lambda: subprocess.run(f"gzip -dc {gz} > /dev/null", shell=True, check=True))
        print(json.dumps({"op": "gunzip", "file": path, "seconds": seconds}))
        os.remove(gz)
    os.remove(pickle)


if __name__ == "__main__":
    main()
