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
# Which sides of a bend are open. A bend is named by the corner in which it lies, a branch by the side that
# stays closed, an open end by the side on which the air comes in.
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


PARTS = []
ENDS = []    # (pipe, point): open ends of pipes
PORTS = []   # points at which a pipe may end: sides of devices and the chamber's wall


def put(kind, name, x, y, width, height, **more):
    PARTS.append(Part(kind, name, x, y, width, height, **more))


def sprite(name, stem, x, y):
    width, height = STEMS[stem]
    left, top = x - width // 2, y - height // 2
    put("PoSprite", name, left, top, width, height, stem=stem)
    return {"l": (left, y), "r": (left + width, y), "t": (x, top), "b": (x, top + height)}


def device(name, stem, x, y):
    PORTS.extend(sprite(name, stem, x, y).values())


def bend(name, stem, x, y):
    sides = sprite(name, stem, x, y)
    ENDS.extend((name, sides[side]) for side in OPEN_SIDES[stem])


def vertical(name, x, top, bottom):
    put("PoSprite", name, x - PIPE // 2, top, PIPE, bottom - top, stem="vpipe")
    ENDS.extend([(name, (x, top)), (name, (x, bottom))])


def horizontal(name, left, right, y):
    put("PoSprite", name, left, y - PIPE // 2, right - left, PIPE, stem="hpipe")
    ENDS.extend([(name, (left, y)), (name, (right, y))])


def text(name, words, x, y, width, height, points=12, align="Left", bold=True, kind="QLabel"):
    put(kind, name, x, y, width, height, text=words, props={"points": points, "align": align, "bold": bold})


# --- the chamber --------------------------------------------------------------------------------------

CHAMBER = (72, 104, 608, 226)           # x, y, width, height of its walls
WALL = 14
RIGHT = CHAMBER[0] + CHAMBER[2]
FLOOR = CHAMBER[1] + CHAMBER[3]
JACKET = 10                             # the double wall around the chamber
DOOR = (42, 90, 30, 250)                # closed and pressed; open it stands at y 340, released at x 30
GUN_LINE = 56                           # height of the line from the gun to the turbopump
GUN = (400, 460)                        # its left and right side

COLUMN_B, COLUMN_E, COLUMN_F, COLUMN_J, COLUMN_H = 150, 540, 650, 745, 852
ROW_VP1, ROW_GATE, ROW_BLEED = 388, 430, 260
ROW_ROOTS, ROW_BRANCH, ROW_ROTARY, EXHAUST = 634, 690, 746, 806


def chamber():
    x, y, width, height = CHAMBER
    put("QFrame", "Chamber", x, y, width, height, props={"fill": (255, 192, 192), "line": True})
    put("QFrame", "frmChamber", x + 6, y + WALL, width - 6 - WALL, height - 2 * WALL,
        props={"fill": (214, 210, 208), "line": True})
    top, bottom, right = y - JACKET - 2, FLOOR + 2, RIGHT + 2
    gun_left, gun_right = GUN
    strips = [
        (x, top, gun_left - 4 - x, JACKET), (gun_right + 4, top, right + JACKET - gun_right - 4, JACKET),
        (right, y - 2, JACKET, 140 - 12 - y + 2), (right, 152, JACKET, 190 - 12 - 152),
        (right, 202, JACKET, bottom - 202),
        (x, bottom, COLUMN_B - 12 - x, JACKET),
        (COLUMN_B + 12, bottom, COLUMN_E - 24 - COLUMN_B, JACKET),
        (COLUMN_E + 12, bottom, COLUMN_F - 8 - COLUMN_E - 12, JACKET),
        (COLUMN_F - 8, bottom, right + JACKET - COLUMN_F + 8, JACKET),
    ]
    for number, strip in enumerate(strips):
        put("QFrame", f"pipeI{number}", *strip, props={"fill": (0, 200, 232), "hidden": True})
    return strips


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
    vertical("pipeA0", x, FLOOR, ROW_VP1 - BEND // 2)
    PORTS.append((x, FLOOR))
    bend("pipeA1", "lbpipe", x, ROW_VP1)
    horizontal("pipeA2", x + BEND // 2, 212, ROW_VP1)
    device("VP1", "VT", 242, ROW_VP1)
    device("ND1", "ND", 242, ROW_VP1 + 30 + 55)
    outlet = 500
    PORTS.append((192, outlet))
    horizontal("pipeB0", x + BEND // 2, 192, outlet)
    bend("pipeB1", "ltpipe", x, outlet)
    vertical("pipeB2", x, outlet + BEND // 2, 532)
    device("VP2", "vv", x, 562)
    vertical("pipeB3", x, 592, ROW_ROOTS - 30)
    device("NZ1", "NZ", x, ROW_ROOTS)
    vertical("pipeB4", x, ROW_ROOTS + 30, ROW_BRANCH - BEND // 2)
    bend("pipeBC", "rpipe", x, ROW_BRANCH)
    horizontal("pipeC1", x - 26, x - BEND // 2, ROW_BRANCH)
    device("VP7", "vh", x - 56, ROW_BRANCH)
    bend("pipeC0", "hlt", x - 104, ROW_BRANCH)
    vertical("pipeB5", x, ROW_BRANCH + BEND // 2, ROW_ROTARY - 30)
    device("NL1", "NL", x, ROW_ROTARY)
    vertical("pipeB6", x, ROW_ROTARY + 30, EXHAUST)
    PORTS.append((x, EXHAUST))


def roughing_line():
    x = COLUMN_E
    vertical("pipeE0", x, FLOOR, ROW_GATE - 30)
    PORTS.append((x, FLOOR))
    device("VP3", "vv", x, ROW_GATE)
    vertical("pipeE1", x, ROW_GATE + 30, 540 - BEND // 2)
    bend("pipeEF", "lpipe", x, 540)
    vertical("pipeE2", x, 540 + BEND // 2, ROW_ROOTS - 30)
    device("NZ2", "NZ", x, ROW_ROOTS)
    vertical("pipeE3", x, ROW_ROOTS + 30, ROW_BRANCH - BEND // 2)
    bend("pipeEG", "rpipe", x, ROW_BRANCH)
    horizontal("pipeG1", x - 26, x - BEND // 2, ROW_BRANCH)
    device("VP6", "vh", x - 56, ROW_BRANCH)
    bend("pipeG0", "hlt", x - 104, ROW_BRANCH)
    vertical("pipeE4", x, ROW_BRANCH + BEND // 2, ROW_ROTARY - 30)
    device("NL2", "NL", x, ROW_ROTARY)
    vertical("pipeE5", x, ROW_ROTARY + 30, 790)
    vertical("pipeE6", x, 790, EXHAUST)
    PORTS.append((x, EXHAUST))
    x = COLUMN_F
    jacket = FLOOR + 2 + JACKET
    vertical("pipeF0", x, jacket, ROW_GATE - 30)
    PORTS.append((x, jacket))
    device("VP5", "vv", x, ROW_GATE)
    vertical("pipeF1", x, ROW_GATE + 30, 540 - BEND // 2)
    bend("pipeF2", "rbpipe", x, 540)
    horizontal("pipeF3", COLUMN_E + BEND // 2, x - BEND // 2, 540)


def bleed_lines():
    y = 140
    PORTS.extend([(RIGHT, 140), (RIGHT, 190)])
    horizontal("pipeH0", RIGHT, 766, y)
    horizontal("pipeH1", 766, COLUMN_H - BEND // 2, y)
    bend("pipeH2", "rtpipe", COLUMN_H, y)
    vertical("pipeH3", COLUMN_H, y + BEND // 2, ROW_BLEED - 30)
    device("VP4", "vv", COLUMN_H, ROW_BLEED)
    vertical("pipeH4", COLUMN_H, ROW_BLEED + 30, 310)
    bend("pipeH5", "vbt", COLUMN_H, 328)
    y = 190
    horizontal("pipeJ0", RIGHT, COLUMN_J - BEND // 2, y)
    bend("pipeJ1", "rtpipe", COLUMN_J, y)
    vertical("pipeJ2", COLUMN_J, y + BEND // 2, ROW_BLEED - 30)
    device("VP8", "vv", COLUMN_J, ROW_BLEED)
    bend("pipeJ3", "vbt", COLUMN_J, ROW_BLEED + 30 + 18)


# --- names, numbers, buttons ----------------------------------------------------------------------------

def gauge(number, x, y, value=104, unit=80, height=40, points=17):
    """A pressure with its unit; its name stands above. (x, y): upper left corner of the number."""
    name = f"PT{number}"
    text(f"lbl{name}", name, x, y - 22, 46, 22)
    put("PoLabel", name, x, y, value, height, text="1.0E+05",
        props={"points": points, "align": "Center", "bold": True, "reading": True})
    put("PoLabel", f"lbl{name}u", x + value, y, unit, height, text="Па",
        props={"points": 12, "align": "Center", "bold": True, "reading": True})


def gauges():
    gauge(1, 190, 578)
    gauge(2, 580, 578 - 14)
    gauge(3, 312, 424)
    gauge(4, 690, 376)
    gauge(5, 330, 190, 180, 110, 60, 26)
    text("lblPT5n", "(Камера)", 380, 168, 110, 22)
    gauge(6, 492, 30)
    text("lblPT6n", "(ЭЛП)", 538, 8, 80, 22)


def names():
    for name, x, y in [("VPT", 106, 4), ("TMN", 194, 4), ("VE1", 350, 4),
                       ("VP1", 276, 366), ("VP2", 184, 550), ("NZ1", 184, 634), ("NL1", 184, 735),
                       ("VP7", 74, 722), ("VP6", 464, 722), ("VP3", 574, 419), ("VP5", 684, 419),
                       ("NZ2", 468, 623), ("NL2", 468, 760), ("VP4", 780, 249), ("VP8", 676, 249),
                       ("NW1", 716, 520), ("NW2", 816, 520)]:
        text(f"lbl{name}", "ТМН" if name == "TMN" else name, x, y, 40, 22)
    text("lblND1", "ND1", 300, 474, 46, 22, kind="PoLabel")
    text("lblNP1", "NP1\n(Компрессор КВ7)", 746, 14, 150, 40, 11)
    for caption, name, y in [("Масло", "ND1temp", 498), ("Корпус", "ND1CorpTemp", 524)]:
        text(f"lbl{name}n", caption, 300, y, 74, 24, bold=False)
        text(name, "23.1", 376, y, 60, 24, 13, "Right", kind="PoLabel")
        text(f"lbl{name}u", "°C", 440, y, 30, 24, bold=False)
    text("FreqTMN", "0", 252, 70, 54, 24, 13, "Right", kind="PoLabel")
    text("lblFreqTMN", "Гц", 310, 70, 30, 24, bold=False)


WATER_TOP, WATER_STEP = 626, 29
CONSUMERS = ["NW2", "ND1", "ND1", "ND1", "ND1", "NZ2", "NL1"]


def water():
    device("NW1", "NW", 735, 480)
    device("NW2", "NW2", 835, 480)
    device("NP1", "NP", 712, 44)
    for number, consumer in enumerate(CONSUMERS, 1):
        y = WATER_TOP + WATER_STEP * (number - 1)
        text(f"lblW{number}", f"W{number}", 592, y - 11, 32, 22, 11)
        sprite(f"W{number}", "w", 640, y)
        text(f"W{number}disch", "—", 656, y - 11, 46, 22, 12, "Right", kind="PoLabel")
        text(f"lblW{number}u", "л/м", 706, y - 11, 34, 22, 11, bold=False)
        text(f"lblW{number}n", consumer, 744, y - 11, 42, 22, 11)
        sprite(f"T{number}", "t", 802, y)
        text(f"T{number}temp", "23.1", 818, y - 11, 46, 22, 12, "Right", kind="PoLabel")
        text(f"lblT{number}u", "°C", 868, y - 11, 28, 22, 11, bold=False)


REGIMES = [("Adjust", "Наладка", 100), ("Manual", "Ручное\nуправление", 128), ("Prepare", "Подготовка", 122),
           ("Forepump", "Форвакуумная\nоткачка", 150), ("Pumping", "Откачка\nкамеры", 112),
           ("Filling", "Напуск\nв камеру", 112), ("Shutdown", "Завершение\nработы", 136)]


def regimes():
    x = 8
    for name, words, width in REGIMES:
        put("StateButton", f"sbVac{name}", x, 834, width, 62, text=words,
            props={"points": 11, "bold": True})
        x += width + 4


def check():
    points = [point for _, point in ENDS] + PORTS
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
    """Fills PARTS in the order in which they lie on one another; returns the strips of the jacket."""
    put("QLabel", "lblPlant", 0, 0, SIZE, 830, stem="plant")
    strips = chamber()
    for lines in (diffusion_line, roughing_line, bleed_lines, gun_line):
        lines()
    water()
    put("PoSprite", "Door", *DOOR, stem="door", props={"fill": (255, 192, 192)})
    gauges()
    names()
    regimes()
    check()
    return strips
