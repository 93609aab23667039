"""Palette, strokes and shapes of the console's images, and the table of the images drawn so far."""
import math

INK = "#1b2243"
PAPER = "#ffffff"
GREEN, GREEN_RIM = "#22b14c", "#0c5c25"
YELLOW, YELLOW_RIM = "#ffc814", "#7a5a00"
RED, RED_RIM = "#e02b33", "#7d0c12"
BLUE, BLUE_RIM = "#3f6fe0", "#1d3a86"
GRAY, GRAY_RIM = "#c9cdd8", "#6c7286"

IMAGES = {}


def image(path, size, body):
    width, height = size if isinstance(size, tuple) else (size, size)
    IMAGES[path] = svg(width, height, f"0 0 {width} {height}", body)


def svg(width, height, view, body):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'viewBox="{view}">\n{body}\n</svg>\n')


# --- strokes and shapes -------------------------------------------------------------------------------

def line(d, colour=INK, width=4.0):
    return (f'<path d="{d}" fill="none" stroke="{colour}" stroke-width="{width}" '
            f'stroke-linecap="round" stroke-linejoin="round"/>')


def solid(d, colour=INK, rim=None, width=2.0):
    """A filled shape whose corners are rounded by a line of its own colour or of `rim`."""
    return (f'<path d="{d}" fill="{colour}" stroke="{rim or colour}" stroke-width="{width}" '
            f'stroke-linejoin="round"/>')


def disc(x, y, r, colour, rim=None, width=2.0):
    edge = f' stroke="{rim}" stroke-width="{width}"' if rim else ""
    return f'<circle cx="{x}" cy="{y}" r="{r}" fill="{colour}"{edge}/>'


def block(x, y, width, height, fill, rim, edge=2.0, r=0.0):
    """A rectangle with a rim."""
    return (f'<rect x="{x}" y="{y}" width="{width}" height="{height}" rx="{r}" fill="{fill}" '
            f'stroke="{rim}" stroke-width="{edge}"/>')


def stroke(d, colour, width):
    """A line with blunt ends, for what goes on at the picture's edge."""
    return f'<path d="{d}" fill="none" stroke="{colour}" stroke-width="{width}"/>'


def polygon(points):
    return "M" + " L".join(f"{x:.2f} {y:.2f}" for x, y in points) + " Z"


def regular(n, x, y, r, turn=0.0):
    """Corners of a regular figure; the first stands at `turn` degrees from the right, downwards."""
    return [(x + r * math.cos(math.radians(turn + 360 * i / n)),
             y + r * math.sin(math.radians(turn + 360 * i / n))) for i in range(n)]


def cross(x, y, r):
    return f"M{x - r} {y - r} L{x + r} {y + r} M{x + r} {y - r} L{x - r} {y + r}"


def check(x, y, r):
    return f"M{x - r} {y + 0.05 * r} L{x - 0.3 * r} {y + 0.75 * r} L{x + r} {y - 0.7 * r}"


def plate(x, y, half, r):
    """A square with corners of radius r."""
    side = 2 * (half - r)
    return (f"M{x - half + r} {y - half} h{side} a{r} {r} 0 0 1 {r} {r} v{side} a{r} {r} 0 0 1 {-r} {r} "
            f"h{-side} a{r} {r} 0 0 1 {-r} {-r} v{-side} a{r} {r} 0 0 1 {r} {-r} Z")


def turned(angle, x, y, body):
    return f'<g transform="rotate({angle} {x} {y})">{body}</g>'


def gloss(clip, top):
    """A soft light on the upper half of a lamp's glass."""
    return (f'<defs><linearGradient id="g" x1="0" y1="0" x2="0" y2="1">'
            f'<stop offset="0" stop-color="#fff" stop-opacity="{top}"/>'
            f'<stop offset="0.6" stop-color="#fff" stop-opacity="0"/></linearGradient></defs>'
            f'<path d="{clip}" fill="url(#g)"/>')


def circle_path(x, y, r):
    return f"M{x - r} {y} a{r} {r} 0 1 1 {2 * r} 0 a{r} {r} 0 1 1 {-2 * r} 0 Z"
