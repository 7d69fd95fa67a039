#!/usr/bin/python3
"""Cases for the financial functions with their values from LibreOffice Calc.

Draws argument sets with a fixed seed, writes one flat OpenDocument sheet with the LibreOffice
spelling of each formula, has soffice (headless, with a profile of its own) compute it and write
it out as CSV, and prints one line per case: the Kelpdex formula and LibreOffice's value,
separated by a tab. Prints nothing and exits 0 when soffice is not installed.

Left out on purpose, because the two definitions differ: db (LibreOffice rounds the rate to
three places), irr and xirr with a negative rate (Kelpdex's search keeps the rate above 0), and
the guesses of irr, xirr and rate, which only pick among several roots.

Usage: financial_office.py FOLDER
"""
import os
import random
import shutil
import subprocess
import sys
from datetime import date, timedelta
from xml.sax.saxutils import quoteattr

SOFFICE = shutil.which("soffice") or shutil.which("libreoffice")
rng = random.Random(20240614)
cases = []  # (Kelpdex formula, LibreOffice formula)


def num(x):
    return repr(float(x))


def add(name, args, office=None, office_args=None):
    k = "=" + name + "(" + ", ".join(a if isinstance(a, str) else num(a) for a in args) + ")"
    o_args = office_args if office_args is not None else args
    o = "of:=" + (office or name.upper()) + "(" + ";".join(
        a if isinstance(a, str) else num(a) for a in o_args) + ")"
    cases.append((k, o))


def array(values, office=False):
    return "{" + (";" if office else ", ").join(num(v) for v in values) + "}"


def annuity():
    for _ in range(40):
        r = rng.choice([0.0, rng.uniform(-0.05, 0.15)])
        # (1+r)^n kept below about e^6: further out, pmt - ipmt and its like cancel to noise in
        # LibreOffice's way of computing them.
        n = rng.randrange(1, min(400, int(6 / abs(r)) if r else 400) + 1)
        pv, fv = rng.uniform(-1e5, 1e5), rng.uniform(-1e4, 1e4)
        t = rng.randrange(2)
        pmt = rng.uniform(-2000, -1)
        add("pmt", [r, n, pv, fv, t])
        add("pv", [r, n, pmt, fv, t])
        add("fv", [r, n, pmt, pv, t])
        add("nper", [r, pmt, abs(pv), 0, t])
        p = rng.randrange(1, n + 1)
        add("ipmt", [r, p, n, pv, fv], "IPMT", [r, p, n, pv, fv, 0])
        add("ppmt", [r, p, n, pv, fv, t])
        if r > 0 and pv > 0:
            first = rng.randrange(1, n + 1)
            last = rng.randrange(first, n + 1)
            add("cumIPMT", [r, n, pv, first, last], "CUMIPMT", [r, n, pv, first, last, 0])
            add("cumPRINC", [r, n, pv, first, last], "CUMPRINC", [r, n, pv, first, last, 0])
        # A rate with one root: a loan paid back by level payments at a positive rate.
        if r > 0.001 and pv > 0:
            add("rate", [n, -pv / n * (1 + r * n / 2), pv])


def quotes_and_depreciation():
    for _ in range(30):
        nominal, m = rng.uniform(0.001, 0.4), rng.randrange(1, 366)
        add("effect", [nominal, m])
        add("nominal", [nominal, m])
        d = rng.choice([2, 4, 8, 16, 32, 10, 100, 12])
        x = round(rng.uniform(-50, 50), 2)
        add("dollarDe", [x, d])
        add("dollarFr", [x, d])
        cost, salvage = rng.uniform(1000, 1e6), rng.uniform(0, 500)
        life = rng.randrange(1, 30)
        period = rng.randrange(1, life + 1)
        add("sln", [cost, salvage, life])
        add("syd", [cost, salvage, life, period])
        add("ddb", [cost, salvage, life, period, rng.choice([2.0, 1.5, 3.0])])


def cash_flows():
    for _ in range(30):
        count = rng.randrange(3, 15)
        flows = [-rng.uniform(1000, 10000)] + [rng.uniform(0, 3000) for _ in range(count - 1)]
        if sum(flows) <= 0:  # no positive rate of return
            flows[-1] += -sum(flows) + 100
        rate = rng.uniform(-0.2, 0.5)
        add("npv", [rate, array(flows)], "NPV", [rate, array(flows, True)])
        add("irr", [array(flows)], "IRR", [array(flows, True)])
        add("mirr", [array(flows), rate], "MIRR", [array(flows, True), rate, rate])
        add("fvSchedule", [rng.uniform(1, 1000), array([rng.uniform(-0.1, 0.2) for _ in flows])],
            "FVSCHEDULE", None)
        cases[-1] = (cases[-1][0], cases[-1][0].replace("=fvSchedule(", "of:=FVSCHEDULE(")
                     .replace(", ", ";"))
        start = date(1990, 1, 1) + timedelta(days=rng.randrange(0, 10000))
        days = sorted(rng.sample(range(1, 3000), count - 1))
        when = [start] + [start + timedelta(days=d) for d in days]
        generic = "{" + ", ".join('"' + w.isoformat() + '"' for w in when) + "}"
        serials = "{" + ";".join(str((w - date(1899, 12, 30)).days) for w in when) + "}"
        add("xnpv", [rate, array(flows), generic], "XNPV", [rate, array(flows, True), serials])
        add("xirr", [array(flows), generic], "XIRR", [array(flows, True), serials])


def fods(path):
    rows = "".join(f'<table:table-row><table:table-cell table:formula={quoteattr(o)}/>'
                   "</table:table-row>\n" for _, o in cases)
    with open(path, "w", encoding="utf-8") as f:
        f.write('<?xml version="1.0" encoding="UTF-8"?>\n<office:document '
                'xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0" '
                'xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0" '
                'xmlns:of="urn:oasis:names:tc:opendocument:xmlns:of:1.2" office:version="1.2" '
                'office:mimetype="application/vnd.oasis.opendocument.spreadsheet"><office:body>'
                '<office:spreadsheet><table:table table:name="S">\n' + rows +
                "</table:table></office:spreadsheet></office:body></office:document>\n")


def value(text):
    # Rates come back in a percent format.
    text = text.strip().strip('"')
    return repr(float(text[:-1]) / 100) if text.endswith("%") else repr(float(text))


def main():
    if SOFFICE is None:
        return
    folder = sys.argv[1]
    annuity()
    quotes_and_depreciation()
    cash_flows()
    source = os.path.join(folder, "cases.fods")
    fods(source)
    profile = "file://" + os.path.join(folder, "profile")
    subprocess.run([SOFFICE, f"-env:UserInstallation={profile}", "--headless", "--convert-to",
                    "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,false,-1",
                    "--outdir", folder, source], check=True, capture_output=True, timeout=300)
    with open(os.path.join(folder, "cases-S.csv"), encoding="utf-8") as f:
        values = f.read().splitlines()
    assert len(values) == len(cases), (len(values), len(cases))
    for (formula, _), text in zip(cases, values):
        print(formula + "\t" + (value(text) if not text.startswith("Err") and text != "#NUM!"
                                else text))


main()
