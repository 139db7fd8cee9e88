"""Checks a gkgeom SVG picture: well-formed XML, and the outline polyline of a closed ring drawn
as the contour draws itself (the closing segment first: last vertex, then vertex 0, 1, ...)."""
import json
import sys
import xml.etree.ElementTree as ET

svg_path, shapes_path = sys.argv[1], sys.argv[2]
root = ET.parse(svg_path).getroot()  # raises on malformed XML
ns = {"s": "http://www.w3.org/2000/svg"}
shapes = json.load(open(shapes_path))["shapes"]
for shape in shapes:
    rings = []
    if shape["type"] == "contour":
        rings.append(shape["points"])
    elif shape["type"] == "region":
        rings.append(shape["outer"])
    group_id = (shape["name"] + " outline").replace(" ", "-")
    group = root.find(".//s:g[@id='%s']" % group_id, ns)
    if group is None:
        sys.exit("no group " + group_id)
    drawn = [
        [[float(c) for c in pair.split(",")] for pair in line.get("points").split()]
        for line in group.iter("{http://www.w3.org/2000/svg}polyline")
    ]
    for ring in rings:
        walk = [ring[-1]] + ring
        if walk not in drawn:
            sys.exit("ring of %s not drawn as its walk: %s" % (shape["name"], drawn))
print("ok")
