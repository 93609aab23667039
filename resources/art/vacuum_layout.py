"""Where everything stands on the mnemonic diagram of the vacuum plant.

One description for the form and for the pictures: the form takes its rectangles from here, the pictures
take their sizes. Pixels, the origin in the panel's upper left corner. Devices and bends are given by their
centre, straight pipes by their two ends; `check` refuses a layout in which a pipe ends in the air.
"""
from dataclasses import dataclass, field

SIZE = 900        # the panel's side
PIPE = 16         # width of a pipe
BEND = 28         # side of a bend or branch
FACE = 60         # side of a device's picture, and of the target for the finger
TUCK = 4          # what a straight pipe reaches under the symbol at its end

# Pictures by stem: width and height. The straight pipes are stretched along their axis by the form.
STEMS = {
    "NP": (FACE, FACE), "NW": (FACE, FACE), "NL": (FACE, FACE), "NZ": (FACE, FACE), "ND": (100, 110),
    "NW2": (FACE, FACE), "VT": (FACE, FACE), "vv": (FACE, FACE), "vh": (FACE, FACE), "TMN": (FACE, FACE),
    "VE": (FACE, FACE),
    "vpipe": (PIPE, PIPE), "hpipe": (PIPE, PIPE),
    "lbpipe": (BEND, BEND), "ltpipe": (BEND, BEND), "rbpipe": (BEND, BEND), "rtpipe": (BEND, BEND),
    "lpipe": (BEND, BEND), "rpipe": (BEND, BEND),
    "hlt": (36, BEND), "vbt": (BEND, 36),
    "w": (28, 28), "t": (28, 28),
}
PIPES = {"vpipe", "hpipe", "lbpipe", "ltpipe", "rbpipe", "rtpipe", "lpipe", "rpipe", "hlt", "vbt"}
STILL = ("plant", "gun", "door")          # pictures of one state
FIRST = {"w": "w_none", "t": "t_none"}    # shown until the first reading; all others begin with _0
# Which sides of a bend are open. A bend is named by the corner in which it lies, a branch by the side that
# stays closed, an open end by its open side.
OPEN_SIDES = {
    "lbpipe": "tr", "ltpipe": "br", "rbpipe": "tl", "rtpipe": "bl", "lpipe": "tbr", "rpipe": "tbl",
    "hlt": "r", "vbt": "t",
}


@dataclass
class Part:
    """A widget of the form."""
    kind: str
    name: str
    x: int
    y: int
    width: int
    height: int
    stem: str = ""      # the picture, for sprites
    text: str = ""
    props: dict = field(default_factory=dict)


PARTS = []   # in the order in which they lie on one another
ENDS = []    # (pipe, point): open ends of pipes
DEVICE_SIDES = []    # points at which a pipe may meet a device
PORTS = []   # points at which a pipe may end: the chamber's wall, the jacket, the exhausts
LINES = []   # (kind, points): what is drawn on the ground and never changes: "tap", "water", "exhaust"


def put(kind, name, x, y, width, height, **more):
    PARTS.append(Part(kind, name, x, y, width, height, **more))


def sprite(name, stem, x, y):
    width, height = STEMS[stem]
    left, top = x - width // 2, y - height // 2
    put("PoSprite", name, left, top, width, height, stem=stem)
    return {"l": (left, y), "r": (left + width, y), "t": (x, top), "b": (x, top + height)}


def device(name, stem, x, y):
    DEVICE_SIDES.extend(sprite(name, stem, x, y).values())


def bend(name, stem, x, y):
    sides = sprite(name, stem, x, y)
    ENDS.extend((name, sides[side]) for side in OPEN_SIDES[stem])


def vertical(name, x, top, bottom):
    put("PoSprite", name, x - PIPE // 2, top, PIPE, bottom - top, stem="vpipe")
    ENDS.extend([(name, (x, top)), (name, (x, bottom))])


def horizontal(name, left, right, y):
    put("PoSprite", name, left, y - PIPE // 2, right - left, PIPE, stem="hpipe")
    ENDS.extend([(name, (left, y)), (name, (right, y))])


def tuck():
    """Straight pipes end under the round symbols of their devices, and all pipes lie below all devices."""
    sides = set(DEVICE_SIDES)
    for pipe in PARTS:
        if pipe.stem == "vpipe":
            x = pipe.x + PIPE // 2
            above, below = ((x, y) in sides for y in (pipe.y, pipe.y + pipe.height))
            pipe.y -= TUCK * above
            pipe.height += TUCK * (above + below)
        elif pipe.stem == "hpipe":
            y = pipe.y + PIPE // 2
            before, behind = ((x, y) in sides for x in (pipe.x, pipe.x + pipe.width))
            pipe.x -= TUCK * before
            pipe.width += TUCK * (before + behind)
    PARTS.sort(key=lambda part: 0 if part.kind == "QFrame" or part.stem == "plant"
               else 1 if part.stem in PIPES else 2)


def text(name, words, x, y, width, height=24, points=13, align="Left", bold=True, kind="QLabel", solid=False):
    """`solid`: drawn without what lies under it, for numbers that change all the time."""
    put(kind, name, x, y, width, height, text=words,
        props={"points": points, "align": align, "bold": bold, "solid": solid})


# --- the plant ------------------------------------------------------------------------------------------

CHAMBER = (90, 104, 570, 226)           # x, y, width, height of its walls
WALL = 14
RIGHT = CHAMBER[0] + CHAMBER[2]
FLOOR = CHAMBER[1] + CHAMBER[3]
JACKET = 10                             # the double wall around the chamber
DOOR = (42, 90, 48, 250)                # closed and pressed; open it stands at y 340, released at x 30
GUN_LINE = 56                           # height of the line from the gun to the turbopump
GUN = (400, 460)                        # its left and right side
GUN_PICTURE = (GUN[0] - 90, 6, GUN[1] - GUN[0] + 180, 310)    # reaches into the chamber
GROUND = 830                            # below it stand the buttons

COLUMN_B, COLUMN_ND, COLUMN_E, COLUMN_F, COLUMN_J, COLUMN_H = 140, 232, 520, 630, 740, 846
ROW_VP1, ROW_ND_OUT, ROW_VP2, ROW_GATE, ROW_JOIN = 388, 500, 562, 430, 540
ROW_ROOTS, ROW_BRANCH, ROW_ROTARY, EXHAUST = 634, 690, 746, 804
ROW_FAST, ROW_SLOW, ROW_BLEED = 140, 190, 266    # outlets of the two bleed lines, and their valves
HALF, JOINT = FACE // 2, BEND // 2


def chamber():
    x, y, width, height = CHAMBER
    put("QFrame", "Chamber", x, y, width, height, props={"fill": (255, 192, 192), "line": True})
    put("QFrame", "frmChamber", x + 6, y + WALL, width - 6 - WALL, height - 2 * WALL,
        props={"fill": (214, 210, 208), "line": True})
    top, bottom, right = y - JACKET - 2, FLOOR + 2, RIGHT + 2
    gap = 12
    across = [(x, GUN[0] - 4), (GUN[1] + 4, right + JACKET)]
    down = [(top + JACKET, ROW_FAST - gap), (ROW_FAST + gap, ROW_SLOW - gap), (ROW_SLOW + gap, bottom)]
    foot = [(x, COLUMN_B - gap), (COLUMN_B + gap, COLUMN_E - gap), (COLUMN_E + gap, COLUMN_F - JOINT),
            (COLUMN_F - JOINT, right + JACKET)]
    strips = [(left, top, end - left, JACKET) for left, end in across]
    strips += [(right, start, JACKET, end - start) for start, end in down]
    strips += [(left, bottom, end - left, JACKET) for left, end in foot]
    for number, strip in enumerate(strips):
        put("QFrame", f"pipeI{number}", *strip, props={"fill": (0, 174, 224), "hidden": True})
        LINES.append(("jacket", strip))


def gun_line():
    y = GUN_LINE
    bend("pipeO0", "hlt", 78, y)
    device("VPT", "vh", 126, y)
    horizontal("pipeO1", 156, 190, y)
    device("TMN", "TMN", 220, y)
    horizontal("pipeP0", 250, 340, y)
    device("VE1", "VE", 370, y)


def diffusion_line():
    x = COLUMN_B
    vertical("pipeA0", x, FLOOR, ROW_VP1 - JOINT)
    PORTS.append((x, FLOOR))
    bend("pipeA1", "lbpipe", x, ROW_VP1)
    horizontal("pipeA2", x + JOINT, COLUMN_ND - HALF, ROW_VP1)
    device("VP1", "VT", COLUMN_ND, ROW_VP1)
    device("ND1", "ND", COLUMN_ND, ROW_VP1 + HALF + 55)
    DEVICE_SIDES.append((COLUMN_ND - 50, ROW_ND_OUT))
    horizontal("pipeB0", x + JOINT, COLUMN_ND - 50, ROW_ND_OUT)
    bend("pipeB1", "ltpipe", x, ROW_ND_OUT)
    vertical("pipeB2", x, ROW_ND_OUT + JOINT, ROW_VP2 - HALF)
    device("VP2", "vv", x, ROW_VP2)
    vertical("pipeB3", x, ROW_VP2 + HALF, ROW_ROOTS - HALF)
    device("NZ1", "NZ", x, ROW_ROOTS)
    vertical("pipeB4", x, ROW_ROOTS + HALF, ROW_BRANCH - JOINT)
    bend("pipeBC", "rpipe", x, ROW_BRANCH)
    bleed_branch("C", "VP7", x)
    vertical("pipeB5", x, ROW_BRANCH + JOINT, ROW_ROTARY - HALF)
    device("NL1", "NL", x, ROW_ROTARY)
    vertical("pipeB6", x, ROW_ROTARY + HALF, EXHAUST)
    exhaust(x)


def bleed_branch(letter, valve, x):
    horizontal(f"pipe{letter}1", x - 26, x - JOINT, ROW_BRANCH)
    device(valve, "vh", x - 26 - HALF, ROW_BRANCH)
    bend(f"pipe{letter}0", "hlt", x - 26 - FACE - 18, ROW_BRANCH)
    LINES.append(("air", [(x - 26 - FACE - 29, ROW_BRANCH)]))


def exhaust(x):
    PORTS.append((x, EXHAUST))
    LINES.append(("exhaust", [(x, EXHAUST)]))


def roughing_line():
    x = COLUMN_E
    vertical("pipeE0", x, FLOOR, ROW_GATE - HALF)
    PORTS.append((x, FLOOR))
    device("VP3", "vv", x, ROW_GATE)
    vertical("pipeE1", x, ROW_GATE + HALF, ROW_JOIN - JOINT)
    bend("pipeEF", "lpipe", x, ROW_JOIN)
    vertical("pipeE2", x, ROW_JOIN + JOINT, ROW_ROOTS - HALF)
    device("NZ2", "NZ", x, ROW_ROOTS)
    vertical("pipeE3", x, ROW_ROOTS + HALF, ROW_BRANCH - JOINT)
    bend("pipeEG", "rpipe", x, ROW_BRANCH)
    bleed_branch("G", "VP6", x)
    vertical("pipeE4", x, ROW_BRANCH + JOINT, ROW_ROTARY - HALF)
    device("NL2", "NL", x, ROW_ROTARY)
    vertical("pipeE5", x, ROW_ROTARY + HALF, EXHAUST - JOINT)
    vertical("pipeE6", x, EXHAUST - JOINT, EXHAUST)
    exhaust(x)


def jacket_line():
    x, top = COLUMN_F, FLOOR + 2 + JACKET
    vertical("pipeF0", x, top, ROW_GATE - HALF)
    PORTS.append((x, top))
    device("VP5", "vv", x, ROW_GATE)
    vertical("pipeF1", x, ROW_GATE + HALF, ROW_JOIN - JOINT)
    bend("pipeF2", "rbpipe", x, ROW_JOIN)
    horizontal("pipeF3", COLUMN_E + JOINT, x - JOINT, ROW_JOIN)


def bleed_lines():
    PORTS.extend([(RIGHT, ROW_FAST), (RIGHT, ROW_SLOW)])
    middle = (RIGHT + COLUMN_H) // 2
    horizontal("pipeH0", RIGHT, middle, ROW_FAST)
    horizontal("pipeH1", middle, COLUMN_H - JOINT, ROW_FAST)
    bend("pipeH2", "rtpipe", COLUMN_H, ROW_FAST)
    vertical("pipeH3", COLUMN_H, ROW_FAST + JOINT, ROW_BLEED - HALF)
    device("VP4", "vv", COLUMN_H, ROW_BLEED)
    vertical("pipeH4", COLUMN_H, ROW_BLEED + HALF, ROW_BLEED + HALF + 12)
    bend("pipeH5", "vbt", COLUMN_H, ROW_BLEED + HALF + 12 + 18)
    horizontal("pipeJ0", RIGHT, COLUMN_J - JOINT, ROW_SLOW)
    bend("pipeJ1", "rtpipe", COLUMN_J, ROW_SLOW)
    vertical("pipeJ2", COLUMN_J, ROW_SLOW + JOINT, ROW_BLEED - HALF)
    device("VP8", "vv", COLUMN_J, ROW_BLEED)
    bend("pipeJ3", "vbt", COLUMN_J, ROW_BLEED + HALF + 18)
    LINES.append(("rising air", [(COLUMN_J, ROW_BLEED + HALF + 29)]))
    LINES.append(("rising air", [(COLUMN_H, ROW_BLEED + HALF + 12 + 29)]))


# --- names, numbers, buttons ----------------------------------------------------------------------------

def gauge(number, x, y, name_at, tap=(), value=118, unit=90, height=48, points=16, unit_points=12):
    """A pressure with its unit. (x, y): upper left corner of the number; `tap`: where it measures."""
    name = f"PT{number}"
    text(f"lbl{name}", name, *name_at, 44, points=14)
    put("PoLabel", name, x, y, value, height, text="1.0E+05",
        props={"points": points, "align": "Center", "bold": True, "reading": True})
    put("PoLabel", f"lbl{name}u", x + value, y, unit, height, text="Па",
        props={"points": unit_points, "align": "Center", "bold": True, "reading": True})
    if tap:
        LINES.append(("tap", tap))


def gauges():
    foreline, roughing = (ROW_VP2 + ROW_ROOTS) // 2, 580
    gauge(1, 222, foreline - 24, (176, foreline - 12), [(COLUMN_B, foreline), (172, foreline)])
    gauge(3, 606, roughing - 24, (560, roughing - 12), [(COLUMN_E, roughing), (556, roughing)])
    gauge(2, 294, 480, (294, 456), [(COLUMN_ND, 490), (294, 490)])
    gauge(4, 680, 378, (680, 354), [(COLUMN_F, 386), (680, 386)])
    gauge(5, 114, 172, (114, 144), value=184, unit=116, height=72, points=26, unit_points=14)
    text("lblPT5n", "(Камера)", 162, 144, 120, points=14, bold=False)
    gauge(6, 500, 36, (500, 10), [(GUN[1], 56), (500, 56)])
    text("lblPT6n", "(ЭЛП)", 548, 10, 90, points=14, bold=False)


def names():
    left = {"NZ2": (COLUMN_E, ROW_ROOTS)}
    right = {"VP1": (COLUMN_ND + 4, ROW_VP1 - 24), "VP2": (COLUMN_B, ROW_VP2 - 10),
             "NZ1": (COLUMN_B, ROW_ROOTS + 4), "NL1": (COLUMN_B, ROW_ROTARY),
             "VP3": (COLUMN_E - 2, ROW_GATE), "VP5": (COLUMN_F - 2, ROW_GATE + 14)}
    above = {"VPT": (126, GUN_LINE), "TMN": (220, GUN_LINE), "VE1": (370, GUN_LINE)}
    below = {"VP7": (COLUMN_B - 26 - HALF, ROW_BRANCH), "VP6": (COLUMN_E - 26 - HALF, ROW_BRANCH),
             "NW1": (NW1[0], NW1[1]), "NW2": (NW2[0], NW2[1])}
    for name, (x, y) in left.items():
        text(f"lbl{name}", name, x - HALF - 52, y - 12, 48, align="Right")
    for name, (x, y) in right.items():
        text(f"lbl{name}", name, x + HALF + 4, y - 12, 48)
    for name, (x, y) in above.items():
        text(f"lbl{name}", "ТМН" if name == "TMN" else name, x - 30, y - HALF - 24, 60, align="Center")
    for name, (x, y) in below.items():
        text(f"lbl{name}", name, x - 30, y + HALF, 60, align="Center")
    text("lblNL2", "NL2", COLUMN_E - HALF - 52, ROW_ROTARY + 8, 48, align="Right")
    for name, x in (("VP8", COLUMN_J), ("VP4", COLUMN_H)):
        text(f"lbl{name}", name, x - 62, 212, 48, align="Right")
    text("lblND1", "ND1", 292, 398, 46, kind="PoLabel")
    text("lblNP1", "NP1\n(Компрессор КВ7)", 735, 66, 165, 42, 12, "Center", bold=False)
    for caption, name, y in [("Масло", "ND1temp", 398), ("Корпус", "ND1CorpTemp", 424)]:
        text(f"lbl{name}n", caption, 340, y, 66, points=12, bold=False)
        text(name, "23.1", 404, y, 60, align="Right", kind="PoLabel", solid=True)
        text(f"lbl{name}u", "°C", 467, y, 22, points=12, bold=False)
    text("FreqTMN", "0", 250, 68, 54, align="Right", kind="PoLabel")
    text("lblFreqTMN", "Гц", 308, 68, 28, points=12, bold=False)


NW1, NW2, NP1 = (722, 490), (822, 490), (818, 36)
WATER_TOP, WATER_STEP = 628, 29
SUPPLY, RETURN = 890, 557               # the headers of the cooling water
CONSUMERS = ["NW2", "ND1", "ND1", "ND1", "ND1", "NZ2", "NL1"]


def water():
    """Supply from the pumps on the right, seven circuits, flow and temperature on their return."""
    device("NW1", "NW", *NW1)
    device("NW2", "NW2", *NW2)
    device("NP1", "NP", *NP1)
    rows = [WATER_TOP + WATER_STEP * i for i in range(len(CONSUMERS))]
    LINES.append(("water", [NW1, NW2, (SUPPLY, NW2[1]), (SUPPLY, rows[-1])]))
    LINES.append(("inlet", [(NW1[0] - 42, NW1[1])]))
    LINES.append(("drain", [(RETURN, rows[0]), (RETURN, 824)]))
    LINES.append(("outlet", [(RETURN, 824)]))
    for number, (consumer, y) in enumerate(zip(CONSUMERS, rows), 1):
        LINES.append(("water", [(SUPPLY, y), (880, y)]))
        LINES.append(("consumer", (835, y - 12, 44, 24)))
        LINES.append(("drain", [(564, y), (RETURN, y)]))
        sprite(f"W{number}", "w", 577, y)
        text(f"lblW{number}", f"W{number}", 593, y - 12, 30, points=12, bold=False)
        text(f"W{number}disch", "—", 624, y - 12, 45, points=12, align="Right", kind="PoLabel", solid=True)
        text(f"lblW{number}u", "л/м", 672, y - 12, 32, points=12, bold=False)
        sprite(f"T{number}", "t", 716, y)
        text(f"lblT{number}", f"T{number}", 731, y - 12, 26, points=12, bold=False)
        text(f"T{number}temp", "23.1", 755, y - 12, 56, points=12, align="Right", kind="PoLabel", solid=True)
        text(f"lblT{number}u", "°C", 812, y - 12, 22, points=12, bold=False)
        text(f"lblW{number}n", consumer, 834, y - 12, 47, points=12, align="Center")


REGIMES = [
    ("Adjust", 100), ("Manual", 128), ("Prepare", 122), ("Forepump", 150), ("Pumping", 112), ("Filling", 112),
    ("Shutdown", 136),
]


def regimes():
    x = 4
    for name, width in REGIMES:
        put("StateButton", f"sbVac{name}", x, 834, width, 62, props={"points": 12, "bold": True})
        x += width + 5


def check():
    points = [point for _, point in ENDS] + DEVICE_SIDES + PORTS
    for name, point in ENDS:
        if points.count(point) < 2:
            raise SystemExit(f"{name} ends in the air at {point}")
    seen = set()
    for part in PARTS:
        if part.name in seen:
            raise SystemExit(f"{part.name} stands twice")
        seen.add(part.name)
        if part.x < 0 or part.y < 0 or part.x + part.width > SIZE or part.y + part.height > SIZE:
            raise SystemExit(f"{part.name} leaves the panel")


def build():
    """Fills PARTS and LINES."""
    put("QLabel", "lblPlant", 0, 0, SIZE, GROUND, stem="plant")
    chamber()
    put("QLabel", "lblGun", *GUN_PICTURE, stem="gun")
    for lines in (diffusion_line, roughing_line, jacket_line, bleed_lines, gun_line):
        lines()
    water()
    put("PoSprite", "Door", *DOOR, stem="door", props={"fill": (255, 192, 192)})
    gauges()
    names()
    regimes()
    check()
    tuck()
