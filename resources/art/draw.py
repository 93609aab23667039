#!/usr/bin/env python3
"""Draws the console's images as SVG, one file for each PNG: draw.py FOLDER.

Every image is an entry of IMAGES: its path below resources/ without suffix, its size in pixels and its
drawing. One palette, round ends and one weight of line hold the set together; shape and mark differ
wherever colour carries a meaning, so that the screen can be read by everyone.
"""
import pathlib
import sys

import vacuum_art
from strokes import *


# --- lamps --------------------------------------------------------------------------------------------
# Off is a hollow ring, good a disc with a check, motion a diamond with a pointer, fault a square with
# a cross.

def lamps():
    image("po/indicator_gray", 44,
          f'<circle cx="22" cy="22" r="14.5" fill="none" stroke="{GRAY_RIM}" stroke-width="8"/>'
          f'<circle cx="22" cy="22" r="14.5" fill="none" stroke="{GRAY}" stroke-width="4"/>')
    glass = circle_path(22, 22, 18)
    image("po/indicator_green", 44,
          solid(glass, GREEN, GREEN_RIM, 2.5) + gloss(circle_path(22, 22, 16.5), 0.45)
          + line(check(22, 22, 9), PAPER, 5))
    glass = polygon(regular(4, 22, 22, 18.5, 0))
    image("po/indicator_yellow", 44,
          solid(glass, YELLOW_RIM, YELLOW_RIM, 5) + solid(glass, YELLOW, YELLOW, 1)
          + gloss(polygon(regular(4, 22, 22, 18, 0)), 0.5)
          + solid("M18.5 14.5 L28.5 22 L18.5 29.5 Z", INK, INK, 3))
    image("po/indicator_red", 44,
          solid(plate(22, 22, 17, 5), RED, RED_RIM, 2.5) + gloss(plate(22, 22, 15.5, 4), 0.35)
          + line(cross(22, 22, 7), PAPER, 5))


# --- journal ------------------------------------------------------------------------------------------
# Twenty pixels, drawn on the pixel grid; the same shapes as the lamps where the meaning is the same.

def journal():
    image("po/icon-error-mini", 20,
          solid(plate(10, 10, 7.5, 2), RED, RED_RIM, 1)
          + line(cross(10, 10, 3.2), PAPER, 2.4))
    image("po/icon-info-mini", 20,
          disc(10, 10, 8, BLUE, BLUE_RIM, 1) + disc(10, 6, 1.5, PAPER)
          + f'<rect x="8.7" y="9" width="2.6" height="6" rx="1" fill="{PAPER}"/>')
    image("po/icon-run-mini", 20,
          disc(10, 10, 8, GREEN, GREEN_RIM, 1) + solid("M8 6.5 L13.5 10 L8 13.5 Z", PAPER, PAPER, 1.4))
    image("po/icon-warning-mini", 20,
          solid("M10 3 L18 17 L2 17 Z", YELLOW_RIM, YELLOW_RIM, 3)
          + solid("M10 3 L18 17 L2 17 Z", YELLOW, YELLOW, 1)
          + f'<rect x="8.9" y="6.5" width="2.2" height="6" rx="1" fill="{INK}"/>' + disc(10, 15, 1.3, INK))
    image("po/icon-basic-mini", 20,
          f'<rect x="2.5" y="3.5" width="15" height="11" rx="2.5" fill="{GRAY}" stroke="{GRAY_RIM}"/>'
          + solid("M6 14.5 L6 18 L10 14.5 Z", GRAY_RIM, GRAY_RIM, 0.8)
          + line("M6 7.5 H14 M6 10.5 H11", INK, 1.6))


# --- marks on buttons and lines -----------------------------------------------------------------------

def marks():
    image("po/close", 40, line(cross(20, 20, 10), INK, 5.5))
    # Seen on pure green and pure red lines, and small in menus.
    image("po/ok", 32, disc(16, 16, 13, PAPER, GREEN_RIM, 2.5) + line(check(16, 16, 6.6), GREEN_RIM, 4.2))
    image("po/no", 32, disc(16, 16, 13, PAPER, RED_RIM, 2.5) + line(cross(16, 16, 5), RED_RIM, 4.2))


# --- button faces -------------------------------------------------------------------------------------
# A face of 30 by 30 cut into nine tiles; light and shade lie over the button's own colour. Whatever
# crosses a cut is constant along it, so the edges tile without a seam.

FACE, TILE, ROUND = 30, 10, 8


def face(up):
    def fade(name, y1, y2, colour, opacity):
        return (f'<linearGradient id="{name}" gradientUnits="userSpaceOnUse" x1="0" y1="{y1}" x2="0" y2="{y2}">'
                f'<stop offset="0" stop-color="{colour}" stop-opacity="{opacity}"/>'
                f'<stop offset="1" stop-color="{colour}" stop-opacity="0"/></linearGradient>')

    def rounded(inset, paint):
        side = FACE - 2 * inset
        return f'<rect x="{inset}" y="{inset}" width="{side}" height="{side}" rx="{ROUND - inset}" {paint}/>'

    if up:
        defs = (fade("top", 1, 10, "#fff", 0.50) + fade("foot", 29, 20, "#000", 0.22)
                + fade("glint", 1, 9, "#fff", 0.70))
        layers = (rounded(0.5, 'fill="url(#top)"') + rounded(0.5, 'fill="url(#foot)"')
                  + rounded(1.5, 'fill="none" stroke="url(#glint)"')
                  + rounded(0.5, 'fill="none" stroke="#0a1030" stroke-opacity="0.55"'))
    else:
        defs = (fade("top", 1, 10, "#000", 0.36) + fade("foot", 29, 21, "#fff", 0.20)
                + fade("glint", 29, 22, "#fff", 0.45))
        layers = (rounded(0.5, 'fill="#000" fill-opacity="0.16"') + rounded(0.5, 'fill="url(#top)"')
                  + rounded(0.5, 'fill="url(#foot)"')
                  + rounded(1.5, 'fill="none" stroke="url(#glint)"')
                  + rounded(0.5, 'fill="none" stroke="#0a1030" stroke-opacity="0.75"'))
    return f"<defs>{defs}</defs>{layers}"


def faces():
    tiles = {"top_left": (0, 0), "top": (1, 0), "top_right": (2, 0),
             "left": (0, 1), "mid": (1, 1), "right": (2, 1),
             "bottom_left": (0, 2), "bottom": (1, 2), "bottom_right": (2, 2)}
    for state in ("up", "down"):
        for name, (column, row) in tiles.items():
            IMAGES[f"po/style/{state}_{name}"] = svg(
                TILE, TILE, f"{column * TILE} {row * TILE} {TILE} {TILE}", face(state == "up"))


# --- arrows and the signs of the jog buttons ----------------------------------------------------------

def arrows():
    for name, angle in (("right", 0), ("down", 90), ("left", 180)):
        image(f"arrows/{name}", 40, turned(angle, 20, 20, solid("M13 8.5 L29 20 L13 31.5 Z", INK, INK, 4)))
    image("arrows/plus", 40, line("M20 8 V32 M8 20 H32", INK, 6))
    image("arrows/minus", 40, line("M8 20 H32", INK, 6))


# --- keypad -------------------------------------------------------------------------------------------

def numpad():
    image("numpad/delete", 40,
          line("M14 9 H33 A2.5 2.5 0 0 1 35.5 11.5 V28.5 A2.5 2.5 0 0 1 33 31 H14 L4.5 20 Z", INK, 3.6)
          + line(cross(23, 20, 4.8), INK, 3.6))
    image("numpad/clear", 40, line("M29 12.5 A12 12 0 1 0 29 27.5", INK, 5))
    image("numpad/enter", 40, line("M33 9 V17 A5 5 0 0 1 28 22 H9", INK, 5) + line("M16 14 L8 22 L16 30", INK, 5))
    image("numpad/sign", 40, line("M20 6 V24 M11 15 H29 M11 32 H29", INK, 5))
    image("numpad/decimal", 40, disc(20, 29, 4.2, INK))


# --- the console's own sign: a beam that meets the seam between two plates --------------------------------

def emblem(extra=""):
    return (
        '<defs>'
        '<linearGradient id="sky" x1="0" y1="0" x2="0" y2="1"><stop offset="0" stop-color="#26305e"/>'
        '<stop offset="1" stop-color="#11162f"/></linearGradient>'
        '<linearGradient id="beam" x1="0" y1="0" x2="0" y2="1"><stop offset="0" stop-color="#8fd8ff" stop-opacity="0.25"/>'
        '<stop offset="1" stop-color="#ffffff"/></linearGradient>'
        '<linearGradient id="plate" x1="0" y1="0" x2="0" y2="1"><stop offset="0" stop-color="#c3cad9"/>'
        '<stop offset="1" stop-color="#7f889e"/></linearGradient>'
        '<radialGradient id="glow"><stop offset="0" stop-color="#fff6c8"/>'
        '<stop offset="0.35" stop-color="#ffc814" stop-opacity="0.85"/>'
        '<stop offset="1" stop-color="#ff7a14" stop-opacity="0"/></radialGradient></defs>'
        '<rect x="1" y="1" width="62" height="62" rx="11" fill="url(#sky)"/>'
        '<path d="M6 41 H31 V57 H10 A4 4 0 0 1 6 53 Z" fill="url(#plate)"/>'
        '<path d="M33 41 H58 V53 A4 4 0 0 1 54 57 H33 Z" fill="url(#plate)"/>'
        '<path d="M30 41 L34 41 L32.6 57 L31.4 57 Z" fill="#ff9a1f"/>'
        '<path d="M20 6 H44 L39 14 H25 Z" fill="#9eacff"/>'
        '<path d="M27 14 H37 L33.2 42 H30.8 Z" fill="url(#beam)"/>'
        '<circle cx="32" cy="41" r="13" fill="url(#glow)"/>'
        '<circle cx="32" cy="41" r="2.6" fill="#fff"/>'
        '<path d="M21 32 L17 27 M43 32 L47 27 M17.5 38 L12 36.5 M46.5 38 L52 36.5" stroke="#ffc814" '
        'stroke-width="2" stroke-linecap="round"/>' + extra)


def signs():
    image("po/mirta", 64, emblem())
    IMAGES["po/logo"] = svg(256, 256, "0 0 64 64", emblem())


def main():
    target = pathlib.Path(sys.argv[1])
    for draw in (lamps, journal, marks, faces, arrows, numpad, signs, vacuum_art.draw):
        draw()
    for path, text in IMAGES.items():
        file = target / (path + ".svg")
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
