#!/usr/bin/python3
"""Kelpdex's text and xBase exchange against real peers: python3-dbf writes the .dbf files kpx
reads, dbfread and the csv module read what kpx writes. Values are compared, not just files.

Usage: exchange_interop.py KPX
"""
import csv
import datetime
import os
import subprocess
import sys
import tempfile

# The interpreter of the Debian packages, whatever python3 comes first on the PATH.
if sys.executable != "/usr/bin/python3" and os.path.exists("/usr/bin/python3"):
    os.execv("/usr/bin/python3", ["/usr/bin/python3"] + sys.argv)

import dbf  # noqa: E402
import dbfread  # noqa: E402

KPX = sys.argv[1]
failures = []


def kpx(*args):
    done = subprocess.run([KPX, *args], capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"kpx {' '.join(args)}: {done.returncode} {done.stderr.strip()}")
    return done.stdout


def check(what, got, want):
    if got != want:
        failures.append(f"{what}: got {got!r}, want {want!r}")


def read_csv(path):
    with open(path, newline="", encoding="utf-8") as f:
        return list(csv.reader(f))


def write_peer_table(path, dbf_type):
    table = dbf.Table(path, "name C(12); amount N(8,2); born D; ok L; note M", dbf_type=dbf_type,
                      codepage="cp1252")
    table.open(dbf.READ_WRITE)
    table.append(("Ann, Jr.", 12.5, datetime.date(2006, 1, 31), True, "first memo\nline two"))
    table.append(("Bob", -3, None, False, ""))
    table.append(("Cé", 0.25, datetime.date(1999, 12, 1), None, "x" * 700))
    with table[1] as record:
        dbf.delete(record)
    table.close()


def peer_files_read(folder):
    for dbf_type, kind in (("db3", "dbase3"), ("clp", "clipper"), ("fp", "foxpro")):
        source = os.path.join(folder, f"peer_{dbf_type}.dbf")
        write_peer_table(source, dbf_type)
        out = os.path.join(folder, f"peer_{dbf_type}.csv")
        kpx("convert", source, out, "--from", kind, "--header")
        rows = read_csv(out)
        check(f"{kind} header", rows[0][:4], ["NAME", "AMOUNT", "BORN", "OK"])
        check(f"{kind} record 1", rows[1][:4], ["Ann, Jr.", "12.5", "2006-01-31", "1"])
        check(f"{kind} deleted record kept", rows[2][:4], ["Bob", "-3", "", "0"])
        check(f"{kind} record 3", rows[3][:3], ["Cé", "0.25", "1999-12-01"])
        # The memos through a native copy; FoxPro memos are not read and stay empty.
        native = os.path.join(folder, f"peer_{dbf_type}.kpx")
        kpx("convert", source, native, "--from", kind)
        note = subprocess.run([KPX, "get-text", native, "--table", f"peer_{dbf_type}", "--record",
                               "1", "--field", "NOTE"], capture_output=True, text=True).stdout
        want = "" if kind == "foxpro" else "first memo\nline two"
        check(f"{kind} memo", note.rstrip("\n"), want)


def our_files_read(folder):
    source = os.path.join(folder, "ours.csv")
    with open(source, "w", newline="", encoding="utf-8") as f:
        writer = csv.writer(f)
        writer.writerow(["Name", "Amount", "Note"])
        writer.writerow(["Ann, \"Jr.\"", "12.75", "é"])
        writer.writerow(["Bob", "-3", ""])
    for kind, numeric in (("dbase3", ("N", 18)), ("dbase4", ("F", 20)), ("foxpro", ("F", 20)),
                          ("clipper", ("N", 18))):
        out = os.path.join(folder, f"ours_{kind}.dbf")
        kpx("convert", source, out, "--header", "--numbers", "--to", kind)
        table = dbfread.DBF(out, encoding="cp1252")
        fields = [(f.name, f.type, f.length) for f in table.fields]
        check(f"{kind} fields", fields,
              [("Name", "C", 128), ("Amount", numeric[0], numeric[1]), ("Note", "C", 128)])
        records = list(table)
        check(f"{kind} count", len(records), 2)
        check(f"{kind} names", [r["Name"] for r in records], ['Ann, "Jr."', "Bob"])
        # dBase III's N field of no decimals rounds, as the default field list says.
        want = [13, -3] if numeric[0] == "N" else [12.75, -3]
        check(f"{kind} amounts", [r["Amount"] for r in records], want)
        check(f"{kind} note", records[0]["Note"], "é")

    # Memos written by us and read by dbfread, from a table whose memos came from python3-dbf.
    write_peer_table(os.path.join(folder, "memo_src.dbf"), "db3")
    native = os.path.join(folder, "memo_src.kpx")
    kpx("convert", os.path.join(folder, "memo_src.dbf"), native, "--from", "dbase3")
    for kind in ("dbase3", "dbase4"):
        out = os.path.join(folder, f"memo_{kind}.dbf")
        kpx("convert", native, out, "--to", kind)
        records = list(dbfread.DBF(out, encoding="cp1252"))
        # dbfread takes a dBase IV entry's length as the text's alone, while the length counts the
        # entry's own eight bytes too: it reads eight bytes of padding behind the text.
        check(f"{kind} memo 1", records[0]["NOTE"].rstrip("\x00"), "first memo\nline two")
        # dbfread leaves the deleted record out of the live ones.
        check(f"{kind} memo 3", records[1]["NOTE"].rstrip("\x00"), "x" * 700)
        deleted = list(dbfread.DBF(out, encoding="cp1252", load=True).deleted)
        check(f"{kind} deleted", [r["NAME"] for r in deleted], ["Bob"])
        check(f"{kind} empty memo", deleted[0]["NOTE"] in (None, "") if deleted else None, True)

    # Our text export through the csv module: quotes, separators, an empty record.
    out = os.path.join(folder, "back.csv")
    kpx("convert", source, out, "--header", "--numbers")
    check("csv rows", read_csv(out),
          [["Name", "Amount", "Note"], ['Ann, "Jr."', "12.75", "é"], ["Bob", "-3"]])
    out = os.path.join(folder, "back.tsv")
    kpx("convert", source, out, "--header")
    with open(out, newline="", encoding="utf-8") as f:
        check("tsv rows", list(csv.reader(f, delimiter="\t"))[1], ['Ann, "Jr."', "12.75", "é"])


def main():
    with tempfile.TemporaryDirectory() as folder:
        try:
            peer_files_read(folder)
            our_files_read(folder)
        except AssertionError as e:
            failures.append(str(e))
    for failure in failures:
        print("FAIL", failure)
    print("exchange interop:", "failed" if failures else "passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
