"""Compares the vertices of two JSON shape files exactly: every ring of every shape, in order
(a closed contour and a region without holes are the same ring)."""
import json
import sys


def rings(path):
    out = []
    for shape in json.load(open(path))["shapes"]:
        if shape["type"] == "contour":
            out.append([shape["points"]])
        elif shape["type"] == "region":
            out.append([shape["outer"]] + shape.get("holes", []))
        else:
            out.append([r for region in shape["regions"]
                        for r in [region["outer"]] + region.get("holes", [])])
    return out


a, b = rings(sys.argv[1]), rings(sys.argv[2])
if a != b:
    sys.exit("vertices differ:\n%s\n%s" % (a, b))
print("ok: %d shapes" % len(a))
