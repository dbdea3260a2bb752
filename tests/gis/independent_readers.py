# Reads a layer written by the GIS tests with one independent reader and
# prints one line a feature: its Kind, Index and Value attributes and its
# geometry as WKT.  Usage: independent_readers.py ogrinfo|shapelib|pyshp FILE
import re
import subprocess
import sys


def g(v):
    return '%.17g' % float(v)


def wkt(shape_type, parts):  # parts of (x, y) by shape type: 0 null, 1 point, 3 line, 5 polygon, 8 multipoint
    rings = ','.join('(' + ','.join(g(x) + ' ' + g(y) for x, y in p) + ')' for p in parts)
    if shape_type == 3:
        return 'LINESTRING ' + rings if len(parts) == 1 else 'MULTILINESTRING (%s)' % rings
    points = ','.join('(%s %s)' % (g(x), g(y)) for x, y in sum(parts, []))
    return {0: '', 1: 'POINT ' + rings, 5: 'POLYGON (%s)' % rings, 8: 'MULTIPOINT (%s)' % points}[shape_type]


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def ogrinfo(name):
    for block in output('/usr/bin/ogrinfo', '-al', name).split('OGRFeature(')[1:]:
        fields = dict(re.findall(r'\n  (\w+) \(\w+\) = (.*)', block))
        geometry = re.search(r'\n  ([A-Z]+ \(.*\))', block)
        print(fields['Kind'], fields['Index'], g(fields['Value']), geometry.group(1) if geometry else '')


def shapelib(name):
    types = {'NullShape': 0, 'Point': 1, 'Arc': 3, 'Polygon': 5, 'MultiPoint': 8}
    shapes = []
    for line in output('/usr/bin/shpdump', name).splitlines():
        shape = re.match(r'Shape:\d+ \((\w+)\)', line)
        vertex = re.match(r' +(\+?) *\(([-\d.e+]+),([-\d.e+]+), 0\)', line)
        if shape:
            shapes.append((types[shape.group(1)], []))
        elif vertex and shapes:
            if vertex.group(1) or not shapes[-1][1]:  # "+" marks the start of a part
                shapes[-1][1].append([])
            shapes[-1][1][-1].append(vertex.group(2, 3))
    for (shape_type, parts), row in zip(shapes, output('/usr/bin/dbfdump', name[:-4] + '.dbf').splitlines()[1:]):
        kind, index, value = row.split()
        print(kind, index, g(value), wkt(shape_type, parts))


def pyshp(name):
    import shapefile
    for sr in shapefile.Reader(name).iterShapeRecords():
        s, r = sr.shape, sr.record
        ends = (list(getattr(s, 'parts', [])) or [0]) + [len(s.points)]
        print(r[0], r[1], g(r[2]), wkt(s.shapeType, [s.points[a:b] for a, b in zip(ends, ends[1:])]))


{'ogrinfo': ogrinfo, 'shapelib': shapelib, 'pyshp': pyshp}[sys.argv[1]](sys.argv[2])
