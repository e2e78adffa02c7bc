#!/usr/bin/env python3
"""Compares the listing of ZONES with what it should show of tzdata's zone1970.tab.

    check_zones.py ZONE1970.TAB LISTING

A zone's line holds its first country, its name, latitude and longitude in degrees with four places, and the number of its countries; a country's last line
"CC ZONES n". Zones come sorted by country, then name.
"""
import re
import sys


def degrees(text):
    """±DDMM, ±DDDMM, ±DDMMSS or ±DDDMMSS in ten-thousandths of a degree, rounded half away from zero."""
    whole = len(text) - 1 - (4 if len(text) > 6 else 2)
    parts = [int(text[1:1 + whole])] + [int(text[at:at + 2]) for at in range(1 + whole, len(text), 2)] + [0]
    value = (2 * (parts[0] * 3600 + parts[1] * 60 + parts[2]) * 10000 + 3600) // 7200
    return -value if text[0] == "-" else value


zones = []
with open(sys.argv[1], encoding="utf-8") as file:
    for line in file:
        if not line.startswith("#"):
            countries, place, name = line.rstrip("\n").split("\t")[:3]
            latitude, longitude = re.fullmatch(r"([+-]\d+)([+-]\d+)", place).groups()
            zones.append((countries[:2], name, degrees(latitude), degrees(longitude), countries.count(",") + 1))
zones.sort()

listed, totals = [], {}
with open(sys.argv[2], encoding="latin-1") as file:
    for line in file:
        zone = re.fullmatch(r"([A-Z]{2}) +(\S+) +(-?\d+\.\d{4}) +(-?\d+\.\d{4}) +(\d+)\s*", line)
        total = re.fullmatch(r"([A-Z]{2}) ZONES +(\d+)\s*", line)
        if zone:
            listed.append((zone[1], zone[2], int(zone[3].replace(".", "")), int(zone[4].replace(".", "")), int(zone[5])))
        elif total:
            totals[total[1]] = int(total[2])

for wanted, got in zip(zones, listed):
    if wanted != got:
        sys.exit(f"  zones: {wanted} here, {got} there")
if len(zones) != len(listed):
    sys.exit(f"  zones: {len(zones)} here, {len(listed)} there")
wanted = {country: sum(zone[0] == country for zone in zones) for country in {zone[0] for zone in zones}}
if totals != wanted:
    sys.exit(f"  countries: {len(wanted)} here, {len(totals)} there")
print(f"{len(zones)} zones of {len(wanted)} countries agree")
