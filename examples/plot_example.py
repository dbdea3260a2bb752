#!/usr/bin/env python3
"""Draws the README picture from the converter's own output.

    plot_example.py MIF_DIR OUT.svg [--section NAME.csv]

MIF_DIR is a folder where `reachmap -mif river.sdf` ran (as the run-example
target leaves it in build/release/example/mif). The left panel is a plan view
of the six layers; the right one the profile of one section from its .csv.
Plain Python, no packages needed.
"""
import argparse
import csv
import html
import os


def read_mif(path):
    """Objects of a .mif as (kind, [(x, y), ...]) for Point and Pline."""
    objects = []
    with open(path, newline="") as f:
        lines = [l.rstrip("\r\n") for l in f]
    i = lines.index("Data") + 1
    while i < len(lines):
        words = lines[i].split()
        if not words:
            i += 1
        elif words[0] == "Point":
            objects.append(("point", [(float(words[1]), float(words[2]))]))
            i += 1
        elif words[0] == "Pline":
            n = int(words[1])
            pts = [tuple(map(float, lines[i + 1 + k].split())) for k in range(n)]
            objects.append(("pline", pts))
            i += 1 + n
        else:
            i += 1
    return objects


def read_csv(path):
    with open(path, newline="") as f:
        rows = list(csv.reader(f))
    head = [h.strip() for h in rows[0]]
    return head, [[float(v) for v in r] for r in rows[1:] if r]


class Frame:
    """Maps data coordinates into a box of the picture."""

    def __init__(self, box, xs, ys, equal):
        self.x0, self.y0, self.w, self.h = box
        self.xmin, self.xmax = min(xs), max(xs)
        self.ymin, self.ymax = min(ys), max(ys)
        sx = self.w / ((self.xmax - self.xmin) or 1)
        sy = self.h / ((self.ymax - self.ymin) or 1)
        if equal:
            sx = sy = min(sx, sy)
        self.sx, self.sy = sx, sy
        self.dx = self.x0 + (self.w - (self.xmax - self.xmin) * sx) / 2
        self.dy = self.y0 + self.h - (self.h - (self.ymax - self.ymin) * sy) / 2

    def __call__(self, x, y):
        return self.dx + (x - self.xmin) * self.sx, self.dy - (y - self.ymin) * self.sy


def polyline(frame, pts, style):
    d = " ".join(f"{a:.1f},{b:.1f}" for a, b in (frame(x, y) for x, y in pts))
    return f'<polyline points="{d}" fill="none" {style}/>'


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("mif_dir")
    ap.add_argument("out")
    ap.add_argument("--section", default="Avon Creek_Upper_2100.0.csv")
    a = ap.parse_args()
    layer = lambda name: read_mif(os.path.join(a.mif_dir, name + ".mif"))
    streams = layer("river.sdf_streams")
    cuts = layer("river_cut_line")
    surf = layer("1d_xs_river_surf_line")
    pts = layer("river_surf_pts")
    ends = layer("2d_zsh_river_end_pts")
    levees = layer("river_levee_pts")
    head, rows = read_csv(os.path.join(a.mif_dir, a.section))

    W, H = 1160, 520
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{W}" height="{H}" viewBox="0 0 {W} {H}" '
           'font-family="Helvetica, Arial, sans-serif" font-size="12">',
           f'<rect width="{W}" height="{H}" fill="white"/>']

    def draw(frame, keep=lambda p: True):
        for _, p in cuts:
            if keep(p):
                out.append(polyline(frame, p, 'stroke="#b0b0b0" stroke-width="5" stroke-linecap="round"'))
        for _, p in streams:
            out.append(polyline(frame, p, 'stroke="#1f6fb4" stroke-width="3"'))
        for _, p in surf:
            if keep(p):
                out.append(polyline(frame, p, 'stroke="#8a5a2b" stroke-width="2"'))
        for _, p in pts:
            if keep(p):
                x, y = frame(*p[0])
                out.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="2.5" fill="#8a5a2b" stroke="white" stroke-width="0.6"/>')
        for _, p in ends:
            if keep(p):
                x, y = frame(*p[0])
                out.append(f'<rect x="{x - 3.5:.1f}" y="{y - 3.5:.1f}" width="7" height="7" fill="black"/>')
        for _, p in levees:
            if keep(p):
                x, y = frame(*p[0])
                out.append(f'<path d="M{x:.1f},{y - 6:.1f} l5,9 h-10 z" fill="#d62728"/>')

    # Plan view of the whole example.
    allpts = [p for _, ps in streams + cuts + surf + pts + ends + levees for p in ps]
    plan = Frame((20, 40, 420, 360), [p[0] for p in allpts], [p[1] for p in allpts], True)
    out.append('<text x="20" y="24" font-size="14" font-weight="bold">Plan view</text>')
    draw(plan)

    # Detail: the section whose profile is drawn, found by its cut line record.
    station = a.section[:-4].split("_")[-1]
    mids = open(os.path.join(a.mif_dir, "river_cut_line.mid"), newline="").read().splitlines()
    cut = next(c for (_, c), m in zip(cuts, mids) if m.split(",")[-1].strip('"') == station)
    cx = [p[0] for p in cut]
    cy = [p[1] for p in cut]
    pad = 0.15 * max(max(cx) - min(cx), max(cy) - min(cy))
    box = (min(cx) - pad, min(cy) - pad, max(cx) + pad, max(cy) + pad)
    inside = lambda ps: all(box[0] <= x <= box[2] and box[1] <= y <= box[3] for x, y in ps)
    detail = Frame((480, 40, 300, 360), [box[0], box[2]], [box[1], box[3]], True)
    bx0, by0 = detail(box[0], box[3])
    bx1, by1 = detail(box[2], box[1])
    out.append(f'<rect x="{bx0:.1f}" y="{by0:.1f}" width="{bx1 - bx0:.1f}" height="{by1 - by0:.1f}" '
               'fill="none" stroke="#cccccc"/>')
    out.append(f'<text x="480" y="24" font-size="14" font-weight="bold">The section at station {html.escape(station)}</text>')
    out.append(f'<clipPath id="detail"><rect x="{bx0:.1f}" y="{by0:.1f}" width="{bx1 - bx0:.1f}" '
               f'height="{by1 - by0:.1f}"/></clipPath><g clip-path="url(#detail)">')
    draw(detail, inside)
    out.append("</g>")
    px0, py0 = plan(box[0], box[3])
    px1, py1 = plan(box[2], box[1])
    out.append(f'<rect x="{px0:.1f}" y="{py0:.1f}" width="{px1 - px0:.1f}" height="{py1 - py0:.1f}" '
               'fill="none" stroke="#666666" stroke-dasharray="2 2"/>')

    legend = [('stroke="#1f6fb4" stroke-width="3"', "reach centrelines (_streams)"),
              ('stroke="#b0b0b0" stroke-width="5"', "cut lines, as given (_cut_line)"),
              ('stroke="#8a5a2b" stroke-width="2"', "surface lines, trimmed to the levees (1d_xs_..._surf_line)")]
    for k, (style, label) in enumerate(legend):
        y = 440 + 20 * k
        out.append(f'<line x1="30" y1="{y}" x2="60" y2="{y}" {style}/>')
        out.append(f'<text x="68" y="{y + 4}">{html.escape(label)}</text>')
    out.append('<circle cx="495" cy="440" r="2.5" fill="#8a5a2b"/><text x="510" y="444">surface points kept (_surf_pts)</text>')
    out.append('<rect x="491" y="456" width="8" height="8" fill="black"/><text x="510" y="464">first and last surveyed points (2d_zsh_..._end_pts)</text>')
    out.append('<path d="M495,474 l5,9 h-10 z" fill="#d62728"/><text x="510" y="484">levee markers (_levee_pts)</text>')

    # Profile of one section.
    xs = [r[0] for r in rows]
    zs = [r[1] for r in rows]
    prof = Frame((880, 60, 250, 330), xs, zs, False)
    title = html.escape(a.section)
    out.append(f'<text x="830" y="24" font-size="14" font-weight="bold">Profile: {title}</text>')
    out.append(f'<line x1="870" y1="400" x2="1140" y2="400" stroke="black"/>')
    out.append(f'<line x1="870" y1="50" x2="870" y2="400" stroke="black"/>')
    for v in (min(xs), max(xs)):
        x, _ = prof(v, zs[0])
        out.append(f'<text x="{x:.1f}" y="415" text-anchor="middle">{v:.1f}</text>')
    for v in (min(zs), max(zs)):
        _, y = prof(xs[0], v)
        out.append(f'<text x="864" y="{y + 4:.1f}" text-anchor="end">{v:.2f}</text>')
    out.append('<text x="1005" y="434" text-anchor="middle">X: chainage from the first surveyed point (m)</text>')
    out.append('<text x="830" y="225" text-anchor="middle" transform="rotate(-90 830 225)">Z (m)</text>')
    if "N" in head:
        colours = {}
        palette = ["#2ca02c", "#1f77b4", "#ff7f0e", "#9467bd"]
        for i in range(len(rows) - 1):
            n = rows[i][2]
            c = colours.setdefault(n, palette[len(colours) % len(palette)])
            out.append(polyline(prof, [(xs[i], zs[i]), (xs[i + 1], zs[i + 1])], f'stroke="{c}" stroke-width="3"'))
        for k, (n, c) in enumerate(colours.items()):
            out.append(f'<line x1="930" y1="{458 + 18 * k}" x2="954" y2="{458 + 18 * k}" stroke="{c}" stroke-width="3"/>'
                       f'<text x="960" y="{462 + 18 * k}">Manning\'s n {n:.3f} </text>')
    else:
        out.append(polyline(prof, list(zip(xs, zs)), 'stroke="#8a5a2b" stroke-width="2"'))
    for x, z in zip(xs, zs):
        px, py = prof(x, z)
        out.append(f'<circle cx="{px:.1f}" cy="{py:.1f}" r="2.2" fill="black"/>')
    out.append("</svg>")
    os.makedirs(os.path.dirname(os.path.abspath(a.out)), exist_ok=True)
    with open(a.out, "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
