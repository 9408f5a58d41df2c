# Reads sales as CSV, sums them up per region and prints the report as JSON.
import csv
import io
import json
from collections import defaultdict

SALES = """\
region,product,units,price
north,lamp,3,19.90
south,"chair, folding",2,45.00
north,table,1,120.00
east,lamp,10,19.90
south,lamp,4,19.90
"""


def read(text):
    for row in csv.DictReader(io.StringIO(text)):
        yield row["region"], row["product"], int(row["units"]), float(row["price"])


totals = defaultdict(lambda: {"units": 0, "revenue": 0.0})
for region, product, units, price in read(SALES):
    totals[region]["units"] += units
    totals[region]["revenue"] = round(totals[region]["revenue"] + units * price, 2)

report = {"regions": totals, "best": max(totals, key=lambda region: totals[region]["revenue"])}
text = json.dumps(report, indent=2, sort_keys=True)
print(text)

assert json.loads(text)["regions"]["north"] == {"units": 4, "revenue": 179.7}
assert report["best"] == "east"

table = io.StringIO()
writer = csv.writer(table, quoting=csv.QUOTE_NONNUMERIC)
writer.writerows(sorted((region, total["revenue"]) for region, total in totals.items()))
print(table.getvalue(), end="")
