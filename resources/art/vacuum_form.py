#!/usr/bin/env python3
"""Writes the form of the vacuum panel from its layout: vacuum_form.py FILE."""
import pathlib
import sys
from xml.sax.saxutils import escape

import vacuum_layout as layout

GROUPS = ("active", "inactive", "disabled")


def prop(name, value):
    return f'   <property name="{name}">{value}</property>\n'


def palette(roles):
    body = "".join(
        f'<colorrole role="{role}"><brush brushstyle="SolidPattern"><color alpha="255"><red>{r}</red>'
        f'<green>{g}</green><blue>{b}</blue></color></brush></colorrole>' for role, (r, g, b) in roles.items())
    return prop("palette", "<palette>" + "".join(f"<{g}>{body}</{g}>" for g in GROUPS) + "</palette>")


def font(points, bold):
    weight = "<weight>75</weight><bold>true</bold>" if bold else ""
    return prop("font", f"<font><pointsize>{points}</pointsize>{weight}</font>")


def rect(part):
    return prop("geometry", f"<rect><x>{part.x}</x><y>{part.y}</y><width>{part.width}</width>"
                            f"<height>{part.height}</height></rect>")


def picture(part):
    file = part.stem if part.stem in layout.STILL else layout.FIRST.get(part.stem, part.stem + "_0")
    stretched = prop("scaledContents", "<bool>true</bool>") if part.stem in ("vpipe", "hpipe") else ""
    stem = ""
    if part.stem not in layout.STILL:  # the panel finds the images of all states by it
        stem = f'   <property name="stem" stdset="0"><string>{part.stem}</string></property>\n'
    return prop("pixmap", f"<pixmap>:/images/{file}.png</pixmap>") + stretched + stem


def widget(part):
    props = part.props
    out = f'  <widget class="{part.kind}" name="{part.name}">\n' + rect(part)
    if props.get("reading"):
        out += palette({"WindowText": (0, 0, 0), "Window": (122, 128, 142)})
    elif "fill" in props:
        out += palette({"Window": props["fill"]})
    if props.get("reading") or props.get("solid") or "fill" in props:
        out += prop("autoFillBackground", "<bool>true</bool>")
    if "points" in props:
        out += font(props["points"], props["bold"])
    if part.kind == "StateButton":
        out += prop("focusPolicy", "<enum>Qt::NoFocus</enum>")
    if part.kind == "QFrame":
        shape = "Box" if props.get("line") else "NoFrame"
        out += prop("frameShape", f"<enum>QFrame::{shape}</enum>")
        out += prop("lineWidth", "<number>2</number>") if props.get("line") else ""
    if part.stem:
        out += picture(part)
    if part.text:
        out += prop("text", f"<string>{escape(part.text)}</string>")
    if "align" in props:
        side = "Qt::AlignCenter" if props["align"] == "Center" else f"Qt::Align{props['align']}|Qt::AlignVCenter"
        out += prop("alignment", f"<set>{side}</set>")
    if props.get("hidden"):
        out += prop("visible", "<bool>false</bool>")
    return out + "  </widget>\n"


def main():
    layout.build()
    side = layout.SIZE
    form = ('<?xml version="1.0" encoding="UTF-8"?>\n<!-- Written by resources/art/vacuum_form.py -->\n'
            '<ui version="4.0">\n <class>KVS</class>\n <widget class="QWidget" name="KVS">\n'
            f'  <property name="geometry"><rect><x>0</x><y>0</y><width>{side}</width><height>{side}</height>'
            '</rect></property>\n'
            + palette({"Window": (255, 192, 192)}).replace("   <", "  <", 1)
            + '  <property name="font"><font><family>DejaVu Sans</family><pointsize>12</pointsize></font>'
              '</property>\n  <property name="autoFillBackground"><bool>true</bool></property>\n'
            + "".join(widget(part) for part in layout.PARTS)
            + ' </widget>\n <customwidgets>\n')
    for name, base, header in (("PoLabel", "QLabel", "widgets.h"), ("PoSprite", "QLabel", "widgets.h"),
                               ("StateButton", "QPushButton", "statebutton.h")):
        form += (f'  <customwidget><class>{name}</class><extends>{base}</extends><header>{header}</header>'
                 '</customwidget>\n')
    form += ' </customwidgets>\n <resources/>\n <connections/>\n</ui>\n'
    pathlib.Path(sys.argv[1]).write_text(form, encoding="utf-8")


if __name__ == "__main__":
    main()
