#!/usr/bin/python3
"""Kelpdex's Excel 2003 XML against LibreOffice: a two-table database exported by kpx is converted
by soffice to CSV and must hold the values `kpx dump` shows; a file LibreOffice saves back in the
same form must import into the same tables and values. Skips (exit 0 with a message) when soffice
is not installed.

Usage: excel_interop.py KPX
"""
import csv
import glob
import os
import sys
import tempfile

from office_peer import Peer, skip_without_soffice

peer = Peer(sys.argv[1])
kpx, soffice, check = peer.kpx, peer.soffice, peer.check

skip_without_soffice("excel_interop")


def dump_rows(path, table):
    text = kpx("dump", path, "--table", table, "--tsv")
    return [line.split("\t") for line in text.splitlines()]


def table_lines(path):
    return sorted(line for line in kpx("info", path).splitlines() if line.startswith("table "))


def make_database(folder):
    path = os.path.join(folder, "shop.kpx")
    kpx("new", path, "--table", "People", "--field", "Name:Text", "--field", "Age:Number",
        "--field", "Town:Link")
    people = [("Ann, Jr.", "31", "Bergen"), ("Bob \"B\"", "4.5", ""), ("Cé <x> & y", "-2", "Oslo")]
    for record, values in enumerate(people, start=1):
        for field, value in zip(("Name", "Age", "Town"), values):
            if value:
                kpx("set", path, "--table", "People", "--record", str(record), "--field", field,
                    value)
    kpx("add-table", path, "Orders", "--field", "Item:Text", "--field", "Qty:Number")
    orders = [("tea", "3"), ("cake", "0.25")]
    for record, (item, qty) in enumerate(orders, start=1):
        kpx("set", path, "--table", "Orders", "--record", str(record), "--field", "Item", item)
        kpx("set", path, "--table", "Orders", "--record", str(record), "--field", "Qty", qty)
    return path


def main():
    with tempfile.TemporaryDirectory() as folder:
        database = make_database(folder)
        exported = os.path.join(folder, "shop.xml")
        kpx("convert", database, exported, "--to", "excel-xml")

        # Every sheet to its own CSV file: LibreOffice names them shop-<sheet>.csv.
        soffice(folder, "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,"
                "false,-1", exported)
        for table in ("People", "Orders"):
            with open(os.path.join(folder, f"shop-{table}.csv"), newline="",
                      encoding="utf-8") as f:
                rows = [row for row in csv.reader(f)]
            # LibreOffice fills a row out to the sheet's width; the dump stops at the last value.
            rows = [row[:len(want)] for row, want in zip(rows, dump_rows(database, table))]
            check(f"LibreOffice's CSV of {table}", rows, dump_rows(database, table))
        check("sheets LibreOffice found",
              sorted(os.path.basename(p) for p in glob.glob(os.path.join(folder, "shop-*.csv"))),
              ["shop-Orders.csv", "shop-People.csv", "shop-sys_Orders.csv",
               "shop-sys_People.csv"])

        # LibreOffice's own Excel 2003 XML of our file, read back as a database.
        back = os.path.join(folder, "back")
        os.mkdir(back)
        soffice(back, "xml:MS Excel 2003 XML", exported)
        saved = os.path.join(back, "shop.xml")
        reread = os.path.join(folder, "reread.kpx")
        kpx("convert", saved, reread, "--from", "excel-xml")
        check("tables after LibreOffice", table_lines(reread), table_lines(database))
        for table in ("People", "Orders"):
            check(f"{table} after LibreOffice", dump_rows(reread, table),
                  dump_rows(database, table))
    peer.finish("excel_interop: LibreOffice read our export and wrote a file we read back the same")


main()
