"""Compares the vertices of two JSON shape files exactly: every ring of every shape, in order
(a closed contour and a region without holes are the same ring). With --edgelets, an edgelet
contour's whole edgelets (position, magnitude, angle) must match, not only the positions."""
import json
import sys


def rings(path):
    out = []
    for shape in json.load(open(path))["shapes"]:
        if shape["type"] == "contour" and "edgelets" in shape:
            if EDGELETS:
                out.append([shape["edgelets"]])
            else:
                out.append([[e[:2] for e in shape["edgelets"]]])
        elif shape["type"] == "contour":
            out.append([shape["points"]])
        elif shape["type"] == "region":
            out.append([shape["outer"]] + shape.get("holes", []))
        else:
            out.append([r for region in shape["regions"]
                        for r in [region["outer"]] + region.get("holes", [])])
    return out


EDGELETS = "--edgelets" in sys.argv
args = [a for a in sys.argv[1:] if a != "--edgelets"]
a, b = rings(args[0]), rings(args[1])
if a != b:
    sys.exit("vertices differ:\n%s\n%s" % (a, b))
print("ok: %d shapes" % len(a))
