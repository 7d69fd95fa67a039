#!/usr/bin/python3
"""Kelpdex's SQLite exchange against real peers: the sqlite3 shell and Python's sqlite3 module read
what kpx writes (schema, types, values, a count per table) and write files kpx reads. A database
of every field type goes through SQLite and back to the same dump and catalogue.

Usage: sqlite_interop.py KPX
"""
import json
import os
import sqlite3
import subprocess
import sys
import tempfile

# The interpreter of the Debian packages, whatever python3 comes first on the PATH.
if sys.executable != "/usr/bin/python3" and os.path.exists("/usr/bin/python3"):
    os.execv("/usr/bin/python3", ["/usr/bin/python3"] + sys.argv)

KPX = sys.argv[1]
failures = []


def kpx(*args, ok=True):
    done = subprocess.run([KPX, *args], capture_output=True, text=True)
    if ok and done.returncode != 0:
        raise AssertionError(f"kpx {' '.join(args)}: {done.returncode} {done.stderr.strip()}")
    return done


def check(what, got, want):
    if got != want:
        failures.append(f"{what}: got {got!r}, want {want!r}")


def shell(path, sql):
    done = subprocess.run(["sqlite3", "-batch", path, sql], capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"sqlite3 {sql}: {done.stderr.strip()}")
    return done.stdout


def every_type_document(folder):
    doc = os.path.join(folder, "every.kpx")
    kpx("new", doc, "--table", "Orders", "--field", "Customer:Text", "--field", "Site:Link",
        "--field", "Qty:Number", "--field", "Price:Number", "--field", "Total:Number==Qty*Price",
        "--field", "Memo:LongText", "--field", "Scan:Files", "--field", "Tag:Text=V:new")
    rows = [("Zoë Ñandú", "http://example.org", "3", "2.25"), ("Bob", "", "10", "1.5"),
            ("", "", "", "4"), ("Čapek", "x", "7", "-0.5")]
    for n, (customer, site, qty, price) in enumerate(rows, 1):
        for field, value in (("Customer", customer), ("Site", site), ("Qty", qty),
                             ("Price", price)):
            if value:
                kpx("set", doc, "--table", "Orders", "--record", str(n), "--field", field, value)
    kpx("put-text", doc, "--table", "Orders", "--record", "1", "--field", "Memo", "--text",
        "{\\rtf1\\ansi Hello {\\b world}\\par}")
    kpx("put-text", doc, "--table", "Orders", "--record", "2", "--field", "Memo", "--text",
        "plain memo " * 200)
    blob = os.path.join(folder, "scan.bin")
    with open(blob, "wb") as f:
        f.write(bytes(range(256)) * 3)
    kpx("attach", doc, "--table", "Orders", "--record", "2", "--field", "Scan", blob)
    kpx("sort", doc, "--table", "Orders", "--by", "Qty:desc")
    kpx("add-table", doc, "Notes", "--field", "Line:Text")
    kpx("set", doc, "--table", "Notes", "--record", "1", "--field", "Line", "only line")
    return doc


def dumps(path, tables):
    return {t: kpx("dump", path, "--table", t, "--json").stdout for t in tables}


def catalogue_sheets(path, folder):
    """The catalogue sheets as the Excel 2003 XML export writes them: every cell and mark."""
    out = os.path.join(folder, os.path.basename(path) + ".xml")
    kpx("convert", path, out, "--to", "excel-xml")
    with open(out, encoding="utf-8") as f:
        sheets = f.read().split("<Worksheet ")[1:]
    return [sheet for sheet in sheets if sheet.startswith('ss:Name="sys_')]


def round_trip(folder):
    doc = every_type_document(folder)
    out = os.path.join(folder, "every.sqlite")
    kpx("convert", doc, out)
    # The sqlite3 shell reads the schema and values.
    check("tables", shell(out, "SELECT name FROM sqlite_schema WHERE type='table' ORDER BY 1"),
          "Notes\nOrders\nOrders__files\nkelpdex_catalogue\n")
    check("column types", shell(out, "SELECT name || ' ' || type FROM pragma_table_info('Orders')"),
          "Customer TEXT\nSite TEXT\nQty INTEGER\nPrice REAL\nTotal REAL\nMemo TEXT\n"
          "Scan TEXT\nTag TEXT\nMemo_rtf TEXT\n")
    check("counts", shell(out, "SELECT (SELECT count(*) FROM Orders) || ' ' || "
                               "(SELECT count(*) FROM Notes)"), "4 1\n")
    # Python's module reads the values with their SQL classes.
    db = sqlite3.connect(out)
    got = db.execute("SELECT Customer, Qty, Price, Total, Memo, Scan FROM Orders ORDER BY rowid")
    got = got.fetchall()
    check("row 1", got[0][:5], ("Zoë Ñandú", 3, 2.25, 6.75, "Hello world\n"))
    check("row 2 memo", got[1][4], "plain memo " * 200)
    check("row 3 sparse", got[2], (None, None, 4.0, 0.0, None, None))
    check("row 4 total", got[3][3], -3.5)
    files = db.execute("SELECT record, field, name, size, length(bytes), hex(bytes) FROM "
                       "Orders__files").fetchall()
    check("files", [f[:5] for f in files], [(2, "Scan", "scan.bin", 768, 768)])
    check("file bytes", files[0][5], (bytes(range(256)) * 3).hex().upper())
    check("scan column", got[1][5], "scan.bin")
    db.close()
    # And back: the same dump (in the sort stored) and the same catalogue.
    back = os.path.join(folder, "back.kpx")
    kpx("convert", out, back)
    check("dump", dumps(back, ["Orders", "Notes"]), dumps(doc, ["Orders", "Notes"]))
    check("catalogue", catalogue_sheets(back, folder), catalogue_sheets(doc, folder))
    check("memo", kpx("get-text", back, "--table", "Orders", "--record", "1", "--field",
                      "Memo").stdout,
          kpx("get-text", doc, "--table", "Orders", "--record", "1", "--field", "Memo").stdout)
    # kpx reads the SQLite file in place too, told by its header whatever its name.
    renamed = os.path.join(folder, "every.data")
    os.rename(out, renamed)
    check("dump in place", kpx("dump", renamed, "--table", "Orders", "--json").stdout,
          dumps(doc, ["Orders"])["Orders"])


def peer_written(folder):
    path = os.path.join(folder, "peer.db")
    db = sqlite3.connect(path)
    db.executescript("""
        CREATE TABLE "Clients ünï"(id INTEGER PRIMARY KEY, "Prénom" TEXT, score REAL, anything,
                                   photo BLOB);
        CREATE VIEW top AS SELECT "Prénom" FROM "Clients ünï" WHERE score > 1;
    """)
    db.executemany('INSERT INTO "Clients ünï" VALUES (?, ?, ?, ?, ?)', [
        (1, "Åsa", 1.5, 12, b"\x00\x01\x02"),
        (2, None, None, "mixed", None),
        (3, "Jürgen", 2.0, 3.5, None),
    ])
    db.commit()
    db.close()
    got = json.loads(kpx("dump", path, "--json").stdout)
    check("peer rows", [(r["id"], r["Prénom"], r["score"], r["anything"]) for r in got],
          [("1", "Åsa", "1.5", "12"), ("2", "", "", "mixed"), ("3", "Jürgen", "2", "3.5")])
    check("peer blob", got[0]["photo"], "photo_1.bin")
    info = json.loads(kpx("info", path, "--json").stdout)
    check("peer table names", [t["name"] for t in info["tables"]], ["Clients ünï"])
    # A view asked for by name.
    out = os.path.join(folder, "top.csv")
    kpx("convert", path, out, "--table", "top", "--header")
    with open(out, encoding="utf-8") as f:
        check("view", f.read().split(), ["Prénom", "Åsa", "Jürgen"])
    # Names the field rules refuse stop the read with the table and column named.
    bad = os.path.join(folder, "bad.db")
    db = sqlite3.connect(bad)
    db.execute('CREATE TABLE t(ok TEXT, "1st" TEXT)')
    db.commit()
    db.close()
    done = kpx("dump", bad, "--json", ok=False)
    check("refused status", done.returncode, 1)
    check("refused names", "\"t\"" in done.stderr and "\"1st\"" in done.stderr, True)


with tempfile.TemporaryDirectory() as folder:
    round_trip(folder)
    peer_written(folder)

if failures:
    print("\n".join(failures))
    sys.exit(1)
print("sqlite interop: all checks passed")
