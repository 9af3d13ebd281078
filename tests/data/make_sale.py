#!/usr/bin/env python3
"""Writes sale.csv: 2,500 rows, so that pages of 1024 are crossed, with nulls, extremes and awkward text.

Every row is a function of its number; the file is committed, and this says how it came about.
"""
import csv
import datetime
import random
import sys

random.seed(20260101)
regions = ["north", "south", "east", "west", "Ünterland", None]
products = ["bolt", "nut", "washer", "gear", "cam", "shaft, long", 'rod "B"', "spring", "pin", "rivet"]
notes = [None, "", "plain", "comma, inside", 'quote " inside', "semi;colon", "späte Lieferung", "日本語", "𝒳 beyond the BMP",
         " leading blank", "trailing blank "]
first = datetime.date(2019, 12, 28)

with open(sys.argv[1] if len(sys.argv) > 1 else "sale.csv", "w", newline="", encoding="utf-8") as out:
    writer = csv.writer(out, lineterminator="\n", quoting=csv.QUOTE_MINIMAL)
    writer.writerow(["id", "region", "product", "price", "quantity", "day", "at", "returned", "note", "rank"])
    for number in range(1, 2501):
        region = random.choices(regions, [30, 25, 20, 15, 5, 5])[0]
        product = random.choice(products)
        price = None if random.random() < 0.03 else round(random.uniform(-5, 500), 2)
        quantity = None if random.random() < 0.02 else random.randint(0, 60)
        day = None if random.random() < 0.02 else first + datetime.timedelta(days=random.randint(0, 900))
        at = None
        if day is not None and random.random() < 0.97:
            at = datetime.datetime.combine(day, datetime.time(random.randint(0, 23), random.randint(0, 59), random.randint(0, 59)))
        returned = None if random.random() < 0.05 else random.random() < 0.2
        note = random.choice(notes)
        rank = random.choice([-2**62, 2**62, 0, None]) if random.random() < 0.02 else random.randint(-10**12, 10**12)
        row = [number, region, product, "" if price is None else "%.2f" % price, quantity,
               day, at.strftime("%Y-%m-%d %H:%M:%S") if at else None,
               None if returned is None else str(returned).lower(), note, rank]
        # The writer has no way to tell an empty text from a null, so an empty note is written as a null here.
        writer.writerow(["" if cell is None else cell for cell in row])
