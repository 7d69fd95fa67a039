#!/usr/bin/python3
"""Kelpdex's text files against LibreOffice: our CSV with a header line, read by soffice and
written again as CSV, holds the values `kpx dump` shows, and the CSV LibreOffice writes imports
into the same values. (Calc alone cannot open .dbf files here: that needs LibreOffice's database
drivers, so the xBase peers are python3-dbf and dbfread in exchange_interop.py.) Skips (exit 0 with
a message) when soffice is not installed.

Usage: office_interop.py KPX
"""
import csv
import os
import sys
import tempfile

from office_peer import Peer, skip_without_soffice

peer = Peer(sys.argv[1])
kpx, soffice, check = peer.kpx, peer.soffice, peer.check

skip_without_soffice("office_interop")

# UTF-8 (76), comma (44), double quote (34), first line 1, every column as text.
CSV_FILTER = "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,false,-1"


def dump_rows(path):
    return [line.split("\t") for line in kpx("dump", path, "--tsv").splitlines()]


def read_csv(folder):
    # The filter names each sheet's file after the document and the sheet.
    names = sorted(n for n in os.listdir(folder) if n.endswith(".csv"))
    if len(names) != 1:
        raise AssertionError(f"soffice wrote {names} in {folder}")
    with open(os.path.join(folder, names[0]), newline="", encoding="utf-8") as f:
        return [row for row in csv.reader(f)]


def main():
    with tempfile.TemporaryDirectory() as folder:
        database = os.path.join(folder, "people.kpx")
        kpx("new", database, "--table", "People", "--field", "Name:Text", "--field",
            "Age:Number", "--field", "Town:Text")
        people = [("Ann, Jr.", "31", "Bergen"), ("Bob \"B\"", "4.5", ""), ("Ca line", "-2", "Oslo")]
        for record, values in enumerate(people, start=1):
            for field, value in zip(("Name", "Age", "Town"), values):
                if value:
                    kpx("set", database, "--table", "People", "--record", str(record), "--field", field,
                        value)
        want = dump_rows(database)

        # Our CSV with a header line, read by LibreOffice and written again as CSV.
        exported = os.path.join(folder, "people.csv")
        kpx("convert", database, exported, "--header")
        sheet = os.path.join(folder, "sheet")
        os.mkdir(sheet)
        soffice(sheet, CSV_FILTER, exported, infilter=CSV_FILTER[4:])
        rows = read_csv(sheet)
        check("LibreOffice's reading of our CSV", [r[:len(w)] for r, w in zip(rows[1:], want)],
              [w for w in want])
        check("the header line LibreOffice saw", rows[0][:3], ["Name", "Age", "Town"])

        # LibreOffice's CSV imported by us, the first line naming the fields.
        reread = os.path.join(folder, "reread.kpx")
        written = [os.path.join(sheet, n) for n in os.listdir(sheet) if n.endswith(".csv")][0]
        kpx("convert", written, reread, "--header", "--numbers")
        check("LibreOffice's CSV imported", dump_rows(reread), want)
        check("fields of LibreOffice's CSV",
              [line.strip() for line in kpx("info", reread).splitlines() if line.startswith("  ")],
              ["Name\tText / Link", "Age\tNumber", "Town\tText / Link"])

    peer.finish("office_interop: LibreOffice read our CSV, and we read its CSV the same")


main()
