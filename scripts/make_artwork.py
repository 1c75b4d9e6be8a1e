#!/usr/bin/env python3
"""Draws the console's artwork.

Writes the SVG sources to src/resources/images/, then renders the PNG files that item delegates load by
path (1x and @2x) with rsvg-convert, and assembles the wait-wheel GIFs with ImageMagick.

Icons are drawn on a 16-unit grid with straight edges on whole or half units, so that they stay sharp at
16 and 32 pixels, which are the sizes a device pixel ratio of 1 and 2 asks for.

Usage: python3 scripts/make_artwork.py        (needs librsvg2-bin and imagemagick, see scripts/setup)
"""

import math
import os
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
OUT = os.path.join(ROOT, "src", "resources", "images")

FONT = "DejaVu Sans, Verdana, sans-serif"

BLUE = "#2b74c9"
BLUE_DARK = "#1c559a"
TEAL = "#179683"
TEAL_DARK = "#0f6d5f"
GREEN = "#2e9d3a"
AMBER = "#e8a317"
RED = "#d93a2e"
GREY = "#6d6d6d"
INK = "#4a4a4a"


def svg(size, body, width=None, height=None):
    w = width or size
    h = height or size
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{w}" height="{h}" viewBox="0 0 {w} {h}">\n'
        f"{body}\n</svg>\n"
    )


# A cloud that fills the upper left of the 16 grid, leaving the lower right corner to a badge.
CLOUD = (
    "M4 13.5h8a3.5 3.5 0 0 0 .4-6.98A4.5 4.5 0 0 0 3.88 7.5 3 3 0 0 0 4 13.5z"
)


def plan_glyph(fill, stroke, up):
    arrow = (
        "M7 6.5l-3 3h2.25v3h1.5v-3h2.25z" if up else "M7 12l-3-3h2.25v-3h1.5v3h2.25z"
    )
    return (
        f'<path d="{CLOUD}" fill="{fill}" stroke="{stroke}" stroke-width="1"/>\n'
        f'<path d="{arrow}" fill="#ffffff"/>'
    )


def badge(kind):
    """A 7-unit disc at the lower right with a white ring, so that it reads over any glyph."""
    cx, cy, r = 12, 12, 4
    ring = f'<circle cx="{cx}" cy="{cy}" r="{r + 0.75}" fill="#ffffff"/>'
    if kind == "running":
        mark = f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{BLUE}"/><path d="M10.5 9.5v5l4-2.5z" fill="#ffffff"/>'
    elif kind == "success":
        mark = (
            f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{GREEN}"/>'
            '<path d="M10 12l1.5 1.5 2.75-3" fill="none" stroke="#ffffff" stroke-width="1.3" '
            'stroke-linecap="round" stroke-linejoin="round"/>'
        )
    elif kind == "warning":
        mark = (
            f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{AMBER}"/>'
            '<rect x="11.25" y="9" width="1.5" height="3.5" fill="#3a2a00"/>'
            '<rect x="11.25" y="13.5" width="1.5" height="1.5" fill="#3a2a00"/>'
        )
    elif kind == "fail":
        mark = (
            f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{RED}"/>'
            '<path d="M10.25 10.25l3.5 3.5M13.75 10.25l-3.5 3.5" stroke="#ffffff" stroke-width="1.3" stroke-linecap="round"/>'
        )
    else:
        raise ValueError(kind)
    return ring + mark


def document(fill="#ffffff", stroke=GREY):
    return (
        f'<path d="M3.5 1.5h6l3 3v10h-9z" fill="{fill}" stroke="{stroke}" stroke-linejoin="round"/>'
        f'<path d="M9.5 1.5v3h3" fill="none" stroke="{stroke}" stroke-linejoin="round"/>'
    )


def tile(color, label, dark=None, size=16):
    """A storage tile: a rounded square in the back-end's colour with a short white label."""
    dark = dark or color
    font_size = 8.5 if len(label) == 1 else (6.4 if len(label) == 2 else 4.9)
    return (
        f'<rect x="0.5" y="1.5" width="15" height="13" rx="2.5" fill="{color}" stroke="{dark}"/>'
        f'<text x="8" y="{8 + font_size * 0.36:.2f}" font-family="{FONT}" font-weight="bold" '
        f'font-size="{font_size}" fill="#ffffff" text-anchor="middle">{label}</text>'
    )


ICONS = {}

# Plan icons by last run: idle, fail, running, warning, success (numbers 29 to 38).
for base, (fill, stroke, up) in (("backup", (BLUE, BLUE_DARK, True)), ("restore", (TEAL, TEAL_DARK, False))):
    glyph = plan_glyph(fill, stroke, up)
    ICONS[f"plan_{base}"] = svg(16, glyph)
    for kind in ("running", "success", "warning", "fail"):
        ICONS[f"plan_{base}_{kind}"] = svg(16, glyph + "\n" + badge(kind))

# The plan-kind column of the plan table shows the bare glyphs.
ICONS["backup"] = ICONS["plan_backup"]
ICONS["restore"] = ICONS["plan_restore"]

# Run status column: run and stop.
ICONS["plan_state_start"] = svg(
    16, f'<circle cx="8" cy="8" r="6.5" fill="{GREEN}"/><path d="M6.5 5v6l5-3z" fill="#ffffff"/>'
)
ICONS["plan_state_no"] = svg(
    16, f'<circle cx="8" cy="8" r="6.5" fill="#9a9a9a"/><rect x="5.5" y="5.5" width="5" height="5" fill="#ffffff"/>'
)

# List buttons.
ICONS["add"] = svg(16, f'<path d="M7 3h2v4h4v2h-4v4h-2v-4h-4v-2h4z" fill="{INK}"/>')
ICONS["remove"] = svg(16, f'<rect x="3" y="7" width="10" height="2" fill="{INK}"/>')
ICONS["edit"] = svg(
    16,
    f'<path d="M11 2.5l2.5 2.5-7.5 7.5-3.5 1 1-3.5z" fill="#f2c24f" stroke="{INK}" stroke-linejoin="round"/>'
    f'<path d="M9.5 4l2.5 2.5" stroke="{INK}"/>',
)
ICONS["warning"] = svg(
    16,
    f'<path d="M8 1.5l7 12.5h-14z" fill="{AMBER}" stroke="#b77a00" stroke-linejoin="round"/>'
    '<rect x="7.25" y="5.5" width="1.5" height="5" fill="#3a2a00"/>'
    '<rect x="7.25" y="11.5" width="1.5" height="1.5" fill="#3a2a00"/>',
)

# History of files: uploaded, deleted at the source, purged from the storage.
ICONS["file_uploaded"] = svg(
    16,
    document()
    + f'<circle cx="12" cy="12" r="4.25" fill="#ffffff"/><circle cx="12" cy="12" r="3.5" fill="{BLUE}"/>'
    '<path d="M12 9.5l-2 2h1.3v2.5h1.4v-2.5h1.3z" fill="#ffffff"/>',
)
ICONS["file_deleted"] = svg(
    16,
    document()
    + f'<circle cx="12" cy="12" r="4.25" fill="#ffffff"/><circle cx="12" cy="12" r="3.5" fill="{RED}"/>'
    '<rect x="10" y="11.35" width="4" height="1.3" fill="#ffffff"/>',
)
ICONS["file_purged"] = svg(
    16,
    document("#f4f4f4", "#9a9a9a")
    + f'<path d="M9.5 9.5h5M10.25 9.5l.5 5h2.5l.5-5M11 8.5h2" fill="#ffffff" stroke="{INK}" '
    'stroke-linejoin="round"/>',
)

ICONS["right_arrow"] = svg(16, f'<path d="M6 3.5l4.5 4.5-4.5 4.5" fill="none" stroke="{GREY}" stroke-width="1.5"/>')
ICONS["symlink_icon32"] = svg(
    32,
    '<rect x="0.5" y="18.5" width="13" height="13" rx="2" fill="#ffffff" stroke="#5a5a5a"/>'
    f'<path d="M4 28v-3.5a3 3 0 0 1 3-3h3.5" fill="none" stroke="{INK}" stroke-width="1.6"/>'
    f'<path d="M9 19l3 2.5-3 2.5z" fill="{INK}"/>',
)

# Storage back-ends, by IconManager::Storage number.
STORAGES = {
    0: ("storage_amazon_s3", tile("#e07b12", "S3", "#b86200")),
    1: ("storage_azure", tile("#1f7fd6", "Az", "#13609f")),
    2: ("storage_google", tile("#3f7ee8", "G", "#2a5fba")),
    3: ("storage_openstack", tile("#d8322b", "OS", "#a82019")),
    4: ("storage_oracle", tile("#c9402f", "Or", "#9a2c1f")),
    5: ("storage_rackspace", tile("#2b2b2b", "Rs", "#000000")),
    6: ("storage_softlayer", tile("#3d4a57", "SL", "#222c35")),
    7: ("storage_hp_cloud", tile("#0e8fc0", "HP", "#096a8e")),
    8: ("storage_hp_helion", tile("#12a06c", "He", "#0b7650")),
    12: ("storage_sftp", None),
    13: ("storage_s3_compatible", tile("#7a8793", "S3", "#56626c")),
    14: ("storage_amazon_s3_china", tile("#c9471a", "S3", "#992f0c")),
    15: ("storage_centurylink", tile("#4c9a2a", "CL", "#35721b")),
    16: ("storage_cloudian", tile("#5b6ab0", "Cn", "#414f8d")),
    17: ("storage_dreamobjects", tile("#1a80a8", "DO", "#0f5f80")),
    18: ("storage_scality", tile("#d1452f", "Sc", "#a3301d")),
    19: ("storage_thinkon", tile("#2f4f8f", "TO", "#1f3769")),
    20: ("storage_verizon", tile("#cd040b", "Vz", "#9b0006")),
    21: ("storage_wasabi", tile("#3cb04a", "W", "#2a8535")),
    22: ("storage_backblaze", tile("#e0322d", "B2", "#ad1f1b")),
    24: ("storage_minio", tile("#c72c48", "Mi", "#981c33")),
    25: ("storage_alibaba", tile("#ff6a00", "Al", "#c85200")),
}
for number, (name, body) in STORAGES.items():
    if body is not None:
        ICONS[name] = svg(16, body)
ICONS["storage_sftp"] = svg(
    16,
    '<rect x="0.5" y="1.5" width="15" height="13" rx="2" fill="#2f3640" stroke="#1a1f25"/>'
    '<path d="M3 5.5l2.5 2.5-2.5 2.5" fill="none" stroke="#7ee08a" stroke-width="1.3"/>'
    '<rect x="7" y="10" width="5" height="1.3" fill="#7ee08a"/>',
)
ICONS["storage_file_system"] = svg(
    16,
    '<path d="M1.5 3.5h5l1.5 1.5h6.5v8.5h-13z" fill="#e9b949" stroke="#a9801f" stroke-linejoin="round"/>'
    '<path d="M1.5 6.5h13" stroke="#a9801f"/>',
)


def cloud_shape(x, y, s, fill, opacity):
    """A soft cloud of width about 100*s whose base line is at y."""
    return (
        f'<g transform="translate({x} {y}) scale({s})" fill="{fill}" fill-opacity="{opacity}">'
        '<path d="M10 0h78a16 16 0 0 0 2-31.9A24 24 0 0 0 45-44 19 19 0 0 0 14-27 14 14 0 0 0 10 0z"/></g>'
    )


IMAGES = {}

IMAGES["background"] = svg(
    0,
    '<defs><linearGradient id="sky" x1="0" y1="0" x2="0" y2="1">'
    '<stop offset="0" stop-color="#dcecfb"/><stop offset="1" stop-color="#f7fbff"/></linearGradient></defs>'
    '<rect width="400" height="240" fill="url(#sky)"/>'
    + cloud_shape(20, 90, 1.1, "#ffffff", 0.95)
    + cloud_shape(250, 70, 0.8, "#ffffff", 0.85)
    + cloud_shape(150, 200, 1.5, "#ffffff", 0.9)
    + cloud_shape(300, 235, 1.0, "#eaf3fc", 1),
    400,
    240,
)


def logo(color, dark, caption, mark):
    return svg(
        0,
        f'<rect x="16.5" y="0.5" width="47" height="47" rx="8" fill="{color}" stroke="{dark}"/>'
        f'<g transform="translate(16 0)">{mark}</g>'
        f'<text x="40" y="64" font-family="{FONT}" font-size="11" fill="#333333" text-anchor="middle">'
        f"{caption}</text>",
        80,
        70,
    )


CLOUD48 = '<path d="M14 34h21a8 8 0 0 0 1-15.9A11 11 0 0 0 15.2 20.5 7 7 0 0 0 14 34z" fill="#ffffff"/>'
IMAGES["s3"] = logo(
    "#e07b12",
    "#b86200",
    "Amazon S3",
    '<path d="M13 15h22l-3 20a3 3 0 0 1-3 2.5h-10a3 3 0 0 1-3-2.5z" fill="#ffffff"/>'
    '<ellipse cx="24" cy="15" rx="11" ry="3.5" fill="#f6c48d" stroke="#ffffff" stroke-width="2"/>',
)
IMAGES["google"] = logo("#3f7ee8", "#2a5fba", "Google Cloud", CLOUD48)
IMAGES["azure"] = logo(
    "#1f7fd6",
    "#13609f",
    "Azure",
    '<path d="M12 35l10-22h5l9 22z" fill="#ffffff"/><path d="M22 35l6-9 3 9z" fill="#9cc8f0"/>',
)

IMAGES["wizard_background"] = svg(
    0,
    '<defs><linearGradient id="g" x1="0" y1="0" x2="0" y2="1">'
    '<stop offset="0" stop-color="#2b74c9"/><stop offset="1" stop-color="#173f70"/></linearGradient></defs>'
    '<rect width="170" height="620" fill="url(#g)"/>'
    + cloud_shape(18, 120, 1.3, "#ffffff", 0.95)
    + '<path d="M85 62l-17 17h11v22h12v-22h11z" fill="#2b74c9"/>'
    + cloud_shape(-30, 490, 1.2, "#ffffff", 0.12)
    + cloud_shape(80, 560, 1.0, "#ffffff", 0.10)
    + cloud_shape(10, 620, 1.6, "#ffffff", 0.08),
    170,
    620,
)

IMAGES["logo"] = svg(
    0,
    f'<rect x="1" y="1" width="62" height="62" rx="12" fill="{BLUE}" stroke="{BLUE_DARK}" stroke-width="2"/>'
    + cloud_shape(6, 46, 0.52, "#ffffff", 1)
    + f'<path d="M32 27l-7 7h4.5v8h5v-8h4.5z" fill="{BLUE}"/>',
    64,
    64,
)

# PNG files that delegates load by path; each also at @2x.
PNG_FILES = ("backup", "restore", "plan_state_start", "plan_state_no")


def wheel_frame(size, step, steps=8):
    """One frame of the wait wheel: eight dots, the lead one darkest, fading behind it."""
    c = size / 2
    radius = size * 0.34
    dot = size * 0.1
    dots = []
    for i in range(steps):
        angle = 2 * math.pi * i / steps - math.pi / 2
        age = (step - i) % steps
        shade = int(0x44 + (0xd8 - 0x44) * min(age, steps - 1) / (steps - 1))
        color = f"#{shade:02x}{shade:02x}{shade:02x}"
        x = c + radius * math.cos(angle)
        y = c + radius * math.sin(angle)
        dots.append(f'<circle cx="{x:.3f}" cy="{y:.3f}" r="{dot:.3f}" fill="{color}"/>')
    return svg(0, "".join(dots), size, size)


def write(path, text):
    with open(path, "w", encoding="utf-8") as f:
        f.write(text)


def run(*args):
    subprocess.run(args, check=True)


def main():
    os.makedirs(OUT, exist_ok=True)
    for name, text in list(ICONS.items()) + list(IMAGES.items()):
        write(os.path.join(OUT, name + ".svg"), text)

    rsvg = shutil.which("rsvg-convert")
    # /usr/local may shadow ImageMagick's convert with something else; Debian's is in /usr/bin.
    magick = shutil.which("convert-im6.q16") or "/usr/bin/convert"
    if not rsvg or not os.path.exists(magick):
        sys.exit("make_artwork: needs rsvg-convert (librsvg2-bin) and ImageMagick (imagemagick)")

    for name in PNG_FILES:
        source = os.path.join(OUT, name + ".svg")
        run(rsvg, "-w", "16", "-h", "16", "-o", os.path.join(OUT, name + ".png"), source)
        run(rsvg, "-w", "32", "-h", "32", "-o", os.path.join(OUT, name + "@2x.png"), source)

    # The GIFs are drawn at their own pixel sizes, 16 and 32, so that the wheel is never rescaled.
    for size, name in ((16, "process32.gif"), (32, "process32@2x.gif")):
        with tempfile.TemporaryDirectory() as tmp:
            frames = []
            for step in range(8):
                svg_path = os.path.join(tmp, f"f{step}.svg")
                png_path = os.path.join(tmp, f"f{step}.png")
                write(svg_path, wheel_frame(size, step))
                run(rsvg, "-w", str(size), "-h", str(size), "-o", png_path, svg_path)
                frames.append(png_path)
            run(magick, "-delay", "10", "-dispose", "Background", "-loop", "0", *frames,
                "-channel", "A", "-threshold", "40%", "+channel", os.path.join(OUT, name))


    # The resource file lists every picture, so that a new drawing cannot be forgotten there.
    names = sorted(os.listdir(OUT))
    lines = ['<!DOCTYPE RCC><RCC version="1.0">', '<qresource prefix="/">']
    lines += [f"    <file>images/{name}</file>" for name in names]
    lines += ["</qresource>", "</RCC>", ""]
    write(os.path.join(ROOT, "src", "resources", "twbconsole.qrc"), "\n".join(lines))


if __name__ == "__main__":
    main()
