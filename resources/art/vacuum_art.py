"""The pictures of the vacuum panel: symbols of pumps and valves, pipes, lamps of the cooling water.

A state is told by form as well as by colour. Valves: a bar across the passage is closed, a free passage
open, a slanting bar on the way. Pumps wear the marks of the console's lamps: check, pointer, cross. A pipe
is hollow when unlit and has a bright core when lit.
"""
import vacuum_layout as layout
from strokes import *

OFF, ON, MOVING, FAULT = "0", "1", "23", "4"
FACES = {OFF: (PAPER, INK), ON: (GREEN, PAPER), MOVING: (YELLOW, INK), FAULT: (RED, PAPER)}
RIMS = {OFF: INK, ON: GREEN_RIM, MOVING: YELLOW_RIM, FAULT: RED_RIM}

VACUUM, VACUUM_CORE = "#00aee0", "#c4f6ff"
HOLLOW, HOLLOW_RIM = "#f4f5f8", "#8a90a4"
WATER = "#2f7fd6"


def states(stem, drawing):
    """The four pictures of a device: drawing(state, fill, mark, rim)."""
    for state, (fill, mark) in FACES.items():
        image(f"vacuum/{stem}_{state}", layout.STEMS[stem], drawing(state, fill, mark, RIMS[state]))


# --- marks of state -----------------------------------------------------------------------------------

def badge(state, x, y):
    """The lamp's mark in small at the symbol's corner."""
    if state == ON:
        return disc(x, y, 10, PAPER, GREEN_RIM, 2.5) + line(check(x, y, 4.6), GREEN_RIM, 3.4)
    if state == MOVING:
        return (solid(polygon(regular(4, x, y, 11)), PAPER, YELLOW_RIM, 3)
                + solid(f"M{x - 2.5} {y - 4.5} L{x + 5} {y} L{x - 2.5} {y + 4.5} Z", INK, INK, 1.5))
    if state == FAULT:
        return solid(plate(x, y, 9.5, 2), PAPER, RED_RIM, 2.5) + line(cross(x, y, 4.4), RED_RIM, 3.4)
    return ""


# --- pumps ----------------------------------------------------------------------------------------------

def pump(stem, marks):
    def drawing(state, fill, mark, rim):
        return disc(30, 30, 28, fill, rim, 3) + marks(mark) + badge(state, 49, 49)
    states(stem, drawing)


def rotary(mark):
    """An eccentric rotor with its vane."""
    return (f'<circle cx="30" cy="34" r="15" fill="none" stroke="{mark}" stroke-width="3.2"/>'
            + line("M30 5 V55", mark, 3.2))


def roots(mark):
    """Two waisted rotors that roll on one another."""
    def rotor(x):
        return line(f"M{x} 26 C{x + 3} 21 {x + 13} 20 {x + 13} 30 C{x + 13} 40 {x + 3} 39 {x} 34 "
                    f"C{x - 3} 39 {x - 13} 40 {x - 13} 30 C{x - 13} 20 {x - 3} 21 {x} 26 Z", mark, 3.2)
    return turned(90, 17, 30, rotor(17)) + rotor(39)


def turbine(mark):
    """Rows of blades on a shaft."""
    return (line("M6 30 H54", mark, 3.2)
            + line("M17 17 L11 43 M27 11 L21 49 M33 11 L39 49 M43 17 L49 43", mark, 3.2))


def impeller(mark):
    return line("M19 10 L54 30 L19 50 Z", mark, 3.2)


def booster(mark):
    return line("M12 16 L32 30 L12 44 Z M30 14 L52 30 L30 46 Z", mark, 3.2)


def compressor(mark):
    return line("M12 11 L54 23 M12 49 L54 37", mark, 3.2)


def diffusion(state, fill, mark, rim):
    body = "M6 1 H94 V12 H84 V70 L78 108 H22 L16 70 V12 H6 Z"
    jets = "".join(line(f"M{50 - w} {y + w * 0.55} L50 {y} L{50 + w} {y + w * 0.55}", mark, 4)
                   for y, w in ((22, 14), (40, 18), (58, 22)))
    return (block(-4, 74, 24, 16, fill, rim, 3)
            + solid(body, fill, rim, 3) + line("M50 22 V90", mark, 4) + jets
            + line("M30 98 L36 90 L42 98 L48 90 L54 98 L60 90 L66 98", mark, 3) 
            + f'<g transform="translate(81 91) scale(1.6)">{badge(state, 0, 0)}</g>')


# --- valves ---------------------------------------------------------------------------------------------

def passage(state, angle, way, lit):
    """The bar in the valve's middle, turned against the flow; `way` is the free passage, lit as its pipes."""
    if state == OFF:
        return turned(angle, 30, 30, line("M9 30 H51", PAPER, 9) + line("M9 30 H51", INK, 6))
    if state == ON:
        layers = ((INK, 11), (VACUUM, 8), (VACUUM_CORE, 4)) if lit else ((PAPER, 6),)
        return "".join(stroke(way, colour, width) for colour, width in layers)
    if state == MOVING:
        return turned(angle + 45, 30, 30, line("M9 30 H51", PAPER, 9) + line("M9 30 H51", INK, 6))
    return solid(plate(30, 30, 13, 3), RED, PAPER, 3) + line(cross(30, 30, 6), PAPER, 4.6)


def valve(stem, angle, base, way, actuator="", lit=True):
    def drawing(state, fill, _, rim):
        return ((line(actuator, rim, 4) if actuator else "") + solid(base, fill, rim, 3)
                + passage(state, angle, way, lit))
    states(stem, drawing)


# --- pipes ----------------------------------------------------------------------------------------------

def pipe(ways, lit):
    """Pipes along the given ways; what meets joins without a seam."""
    rim, fill, core, edge = (INK, VACUUM, VACUUM_CORE, 5) if lit else (HOLLOW_RIM, HOLLOW, HOLLOW, 4)
    layers = ((rim, layout.PIPE), (fill, layout.PIPE - edge), (core, 4))
    return "".join(stroke(way, colour, width) for colour, width in layers for way in ways)


def pipes():
    half = layout.BEND / 2
    side = layout.BEND
    out = {"t": f"M{half} 0", "b": f"M{half} {side}", "l": f"M0 {half}", "r": f"M{side} {half}"}
    end = {"t": f"{half} 0", "b": f"{half} {side}", "l": f"0 {half}", "r": f"{side} {half}"}
    ways = {"vpipe": [f"M{layout.PIPE / 2} 0 V{layout.PIPE}"],
            "hpipe": [f"M0 {layout.PIPE / 2} H{layout.PIPE}"]}
    for stem in ("lbpipe", "ltpipe", "rbpipe", "rtpipe"):
        a, b = layout.OPEN_SIDES[stem]
        ways[stem] = [f"{out[a]} Q{half} {half} {end[b]}"]
    for stem, side_open in (("lpipe", "r"), ("rpipe", "l")):
        ways[stem] = [f"M{half} 0 V{side}", f"{out[side_open]} L{half} {half}"]
    for lit in (0, 1):
        for stem, way in ways.items():
            image(f"vacuum/{stem}_{lit}", layout.STEMS[stem], pipe(way, lit))
        ink = INK if lit else HOLLOW_RIM
        image(f"vacuum/hlt_{lit}", layout.STEMS["hlt"],
              pipe([f"M36 {half} H16"], lit) + line("M15 2 V26", ink, 4))
        image(f"vacuum/vbt_{lit}", layout.STEMS["vbt"],
              pipe([f"M{half} 0 V20"], lit) + line("M2 21 H26", ink, 4))


# --- cooling water ----------------------------------------------------------------------------------------

DROP = "M14 5 C17 10 20 13 20 17 A6 6 0 0 1 8 17 C8 13 11 10 14 5 Z"


def thermometer(colour):
    return line("M14 7 V15", colour, 5) + disc(14, 19, 4.4, colour) + line("M18.5 8 H21 M18.5 12 H21", colour, 2)


def water_lamps():
    good = disc(14, 14, 12.5, GREEN, GREEN_RIM, 2)
    bad = solid(plate(14, 14, 12.5, 3), RED, RED_RIM, 2)
    warning = solid("M14 3 L26 25 H2 Z", YELLOW, YELLOW_RIM, 2.5)
    size = layout.STEMS["w"]
    unknown = disc(14, 14, 12, PAPER, GRAY_RIM, 2)
    image("vacuum/w_none", size, unknown + solid(DROP, GRAY_RIM, GRAY_RIM, 1))
    image("vacuum/t_none", size, unknown + thermometer(GRAY_RIM))
    image("vacuum/w_1", size, good + solid(DROP, PAPER, PAPER, 1))
    image("vacuum/w_0", size, bad + solid(DROP, PAPER, PAPER, 1) + line("M5 23 L23 5", RED_RIM, 3))
    image("vacuum/t_1", size, good + thermometer(PAPER))
    image("vacuum/t_0", size, bad + thermometer(PAPER) + line("M6.5 6 V16 M4 9 L6.5 6 L9 9", PAPER, 2))
    image("vacuum/t_2", size, warning + line("M14 11 V17", INK, 3.4) + disc(14, 21.6, 1.9, INK))


# --- what does not change -----------------------------------------------------------------------------------

def door():
    _, _, width, height = layout.DOOR
    return (block(1, 1, width - 2, height - 2, "none", INK, 2, 4)
            + "".join(disc(width / 2, y, 6, GRAY, INK, 2) for y in (24, height - 24))
            + f'<text x="{-height / 2}" y="{width / 2 + 6}" transform="rotate(-90)" text-anchor="middle" fill="{INK}" '
              'font-family="DejaVu Sans" font-weight="bold" font-size="18">Дверь</text>')


def gun():
    """The gun on the chamber's roof, its beam, and the table with the work; (0, 0) is the picture's corner."""
    left, top, _, height = layout.GUN_PICTURE
    roof = layout.CHAMBER[1] - top
    x = layout.GUN[0] - left
    middle = x + 30
    table = height - 12
    cables = line(f"M{middle - 12} 2 V12 M{middle} 0 V12 M{middle + 12} 2 V12", INK, 4)
    neck = f"M{x + 12} {roof - 18} L{x + 18} {roof + 16} H{x + 42} L{x + 48} {roof - 18} Z"
    body = (block(x, 12, 60, roof - 30, GRAY, INK, 3, 6)
            + f'<path d="{neck}" fill="{GRAY}" stroke="{INK}" stroke-width="3"/>'
            + block(x - 6, roof - 9, 72, 9, GRAY, INK, 3))
    beam = (f'<path d="M{middle} {roof + 22} V{table - 34}" stroke="{INK}" stroke-width="3" '
            'stroke-dasharray="9 7"/>')
    work = "".join(block(edge, table - 32, 34, 20, GRAY, INK, 2.5) for edge in (middle - 34, middle))
    legs = (line(f"M{middle - 90} {table - 10} H{middle + 90}", INK, 4)
            + line(f"M{middle - 74} {table - 8} V{table + 6} M{middle + 74} {table - 8} V{table + 6}", INK, 4))
    return cables + body + beam + work + legs


def way(points):
    return "M" + " L".join(f"{x} {y}" for x, y in points)


def jacket(strips):
    """The empty double wall; where two strips meet there is no seam."""
    rims = (block(x - 0.5, y - 0.5, width + 1, height + 1, HOLLOW_RIM, HOLLOW_RIM, 1)
            for x, y, width, height in strips)
    return "".join(rims) + "".join(block(*strip, HOLLOW, HOLLOW, 0) for strip in strips)


def ground(kind, value):
    if kind == "consumer":
        return block(*value, PAPER, WATER, 2, 4)
    x, y = value[0]
    if kind == "tap":
        return line(way(value), INK, 3) + disc(x, y, 5, INK)
    if kind == "exhaust":
        return (line(f"M{x - 14} {y} H{x + 14}", INK, 4)
                + line(f"M{x - 9} {y + 9} L{x} {y + 18} L{x + 9} {y + 9}", INK, 4))
    if kind == "air":
        return line(f"M{x - 4} {y - 6} L{x + 2} {y} L{x - 4} {y + 6}", INK, 3.4)
    if kind == "rising air":
        return line(f"M{x - 6} {y + 4} L{x} {y - 2} L{x + 6} {y + 4}", INK, 3.4)
    if kind == "inlet":
        return line(f"M{x - 8} {y - 8} L{x} {y} L{x - 8} {y + 8} M{x} {y} H{x + 20}", WATER, 5)
    if kind == "outlet":
        return line(f"M{x - 7} {y - 8} L{x} {y} L{x + 7} {y - 8}", WATER, 3.4)
    return line(way(value), WATER, 5 if kind == "water" else 3.4)


def plant():
    strips = [value for kind, value in layout.LINES if kind == "jacket"]
    return jacket(strips) + "".join(ground(kind, value) for kind, value in layout.LINES if kind != "jacket")


def draw():
    layout.build()
    for stem, marks in (("NL", rotary), ("NZ", roots), ("TMN", turbine), ("NW", impeller), ("NW2", booster),
                        ("NP", compressor)):
        pump(stem, marks)
    states("ND", diffusion)
    valve("vv", 0, "M9 2 H51 L9 58 H51 Z", "M30 0 V60")
    valve("vh", 90, "M2 9 V51 L58 9 V51 Z", "M0 30 H60")
    valve("VE", 90, "M2 14 V46 L58 14 V46 Z", "M0 30 H60", "M30 30 V4 M20 4 H40", lit=False)
    valve("VT", 135, "M2 12 L30 30 L48 59 H12 L30 30 L2 48 Z", "M0 30 H18 Q30 30 30 42 V60",
          "M30 30 L50 10 M43 3 L57 17")
    pipes()
    water_lamps()
    image("vacuum/door", layout.DOOR[2:], door())
    image("vacuum/plant", (layout.SIZE, layout.GROUND), plant())
    image("vacuum/gun", layout.GUN_PICTURE[2:], gun())
