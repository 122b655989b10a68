#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes what the previous generation kept, and what merely claims to be that.

Usage: make_archives.py OUTPUT HOME

OUTPUT/cameras.*, albums.*   the two keyed archives, as binary and as XML property lists
OUTPUT/defaults.*        files with both of them
OUTPUT/hostile/KIND-*    files that must be refused, by the kind of refusal
OUTPUT/reasons.json      words of the reasons, where another one would hide that a check is missing
"""

import json
import plistlib
import struct
import sys
from pathlib import Path
from plistlib import FMT_BINARY, FMT_XML, UID

CAMERAS, ALBUMS = "brimwellProCameraConfigs49", "brimwellProAlbumStats30"


def product(values, resolution, names, norm=None):
    record = {"cp": {name: {"value": value, "unit": "none"} for name, value in values.items()},
              "currentResolution": resolution, "resolutionNames": names}
    return record if norm is None else {**record, "currentVideoNorm": norm}


def settings(home):
    old = "hue contrast saturation brightness sharpness gamma whiteBalance autoWhite gain backlight autoExposure " \
          "exposureAbsolute zoom".split()
    every = dict(zip(old, range(101, 114)))
    return {
        "cameras": {
            "cameraCurrentProducts": {
                "Brimwell Camera": "Digitales Iris Scope DX14",
                "Brimwell High Resolution Camera": "Digital Microscope MX50/MX40",
                "Brimwell Wireless Camera": "Drahtloses Otoskop DX17 / DX18",
                "Brimwell Ultra Resolution Camera": "Microscope of tomorrow",
                "Somebody's Camera": "Digital Camera MX24"},
            "productsByName": {
                "Polarisationsmikroskop MX62": product(every, 1, ["640x480", "800x600"]),
                "Digitales Iris Scope DX14": product(every, 2, ["640x480", "800x600", "1280x1024"], norm=2),
                "Drahtloses Otoskop DX17 / DX18": product({"hue": 12.5, "gamma": 7}, 2, ["640x480", "720x480"], norm=0),
                "Wireless Dermatoscope DX12": product({}, 0, ["1024x768", "720x480"]),  # a size it does not offer
                "Microscope of tomorrow": product(every, 0, ["640x480"], norm=1)}},
        "albums": {"albums": [
            {"name": "Pictures", "path": f"{home}/Pictures"},
            {"name": "Default Album", "path": f"{home}/BrimwellPro/Standardalbum/"},
            {"name": "Straße é", "path": f"{home}/gone/Straße é"}]}}


class Archiver:
    """Writes objects as a keyed archiver does: each once, referred to by its position."""

    def __init__(self):
        self.objects = ["$null"]
        self.known = {}

    def add(self, key, make):
        if key not in self.known:
            self.known[key] = UID(len(self.objects))
            self.objects.append(None)
            self.objects[self.known[key].data] = make()
        return self.known[key]

    def class_of(self, name):
        return self.add(("class", name), lambda: {"$classname": name, "$classes": [name, "NSObject"]})

    def encode(self, value, is_record=lambda path: False, path=()):
        def inner(child, step):
            return self.encode(child, is_record, path + (step,))
        if isinstance(value, dict) and is_record(path):
            return self.add(id(value), lambda: {
                "$class": self.class_of("OldRecord"),
                **{key: child if isinstance(child, (int, float)) else inner(child, key)
                   for key, child in value.items()}})
        if isinstance(value, dict):
            return self.add(id(value), lambda: {
                "$class": self.class_of("NSMutableDictionary"), "NS.keys": [self.encode(key) for key in value],
                "NS.objects": [inner(child, "*" if path else key) for key, child in value.items()]})
        if isinstance(value, list):
            return self.add(id(value), lambda: {"$class": self.class_of("NSArray"),
                                                "NS.objects": [inner(child, "*") for child in value]})
        return self.add((type(value), value), lambda: value)


def is_record(path):
    """A product, an album, or a value of a product: objects of classes that no longer exist."""
    return path in {("productsByName", "*"), ("productsByName", "*", "cp", "*"), ("albums", "*")}


def in_xml(value):
    """References have no form of their own in XML."""
    if isinstance(value, UID):
        return {"CF$UID": value.data}
    if isinstance(value, dict):
        return {key: in_xml(child) for key, child in value.items()}
    return [in_xml(child) for child in value] if isinstance(value, list) else value


def whole(objects, root=1, form=FMT_BINARY):
    archived = {"$archiver": "NSKeyedArchiver", "$version": 100000, "$objects": objects, "$top": {"root": UID(root)}}
    return plistlib.dumps(archived if form == FMT_BINARY else in_xml(archived), fmt=form)


def archive(value, form=FMT_BINARY):
    archiver = Archiver()
    root = archiver.encode(value, is_record)
    return whole(archiver.objects, root.data, form)


REASONS = {
    "foreign-xml-nested": "nested too deeply", "foreign-xml-laughs": "plain XML", "foreign-xml-attributes": "plain XML",
    "foreign-xml-quoted-end": "plain XML", "foreign-xml-attribute-lists": "plain XML", "foreign-xml-encoding": "UTF-8",
    "foreign-xml-within-true": "character data", "foreign-laughs": "too many values",
    "foreign-nested": "nested too deeply", "foreign-overlap": "overlap", "foreign-many-bytes": "too many values",
    "damaged-laughs": "too many values", "damaged-nested": "nested too deeply", "damaged-cycle": "contains itself"}


def raw(objects, root=0):
    """A binary property list of objects given in bytes, with references of two bytes. An object that is a number lies
    where that other one lies."""
    offsets, data = [], b"bplist00"
    for item in objects:
        offsets.append(offsets[item] if isinstance(item, int) else len(data))
        data += b"" if isinstance(item, int) else item
    return data + b"".join(struct.pack(">I", offset) for offset in offsets) + \
        struct.pack(">6xBBQQQ", 4, 2, len(objects), root, len(data))


def raw_array(*references):
    return bytes([0xA0 + len(references)]) + b"".join(struct.pack(">H", reference) for reference in references)


def array(*items):
    return {"$class": UID(2), "NS.objects": list(items)}


def hostile(home):
    """Name -> the archive of cameras, or a whole file."""
    def objects(*items):
        return whole(["$null", {"$class": UID(3), "NS.keys": [UID(4)], "NS.objects": [UID(5)]},
                      {"$classname": "NSArray"}, {"$classname": "NSDictionary"}, *items])

    def with_product(**fields):
        good = settings(home)["cameras"]
        good["productsByName"]["Wireless Dermatoscope DX12"].update(fields)
        return archive(good)

    nested, deep = 20000, 1000
    attributes = b"".join(b'a%x="" ' % i for i in range(5000))
    laughs = [raw_array(*[level + 1] * 10) for level in range(40)] + [b"\x09"]
    broken = {
        "foreign-empty": b"",
        "foreign-text": b"These are no settings.\n",
        "foreign-xml-nested": b"<plist>" + b"<array>" * nested + b"</array>" * nested + b"</plist>",
        "foreign-xml-laughs": b"<!DOCTYPE plist [<!ENTITY a \"ha\">" + b"".join(
            b'<!ENTITY %c "%s">' % (98 + i, b"&%c;" % (97 + i) * 10) for i in range(20)) +
            b"]><plist><dict><key>x</key><string>&u;</string></dict></plist>",
        # Ten times as many would take hours.
        "foreign-xml-attributes": b"<plist><dict " + attributes + b"/></plist>",
        "foreign-xml-quoted-end": b"<plist><dict x='\"' y=\">\" " + attributes + b"/></plist>",
        "foreign-xml-attribute-lists": b"<!DOCTYPE plist [" + b"".join(
            b'<!ATTLIST true a%x CDATA "">' % i for i in range(2000)) + b"]><plist><dict/></plist>",
        "foreign-xml-within-true": b"<plist><true>" + b"<a>" * nested + b"</a>" * nested + b"</true></plist>",
        "foreign-xml-encoding": b'<?xml version="1.0" encoding="UTF-7"?>+ADw-plist><dict/></plist>',
        "foreign-xml-two-roots": b"<plist><dict/><dict/></plist>",
        "foreign-xml-bad-data": f"<plist><dict><key>{CAMERAS}</key><data>#</data></dict></plist>".encode(),
        "foreign-laughs": raw(laughs),
        "foreign-cycle": raw([raw_array(1), raw_array(0)]),
        "foreign-nested": raw([raw_array(level + 1) for level in range(nested)] + [b"\x09"]),
        "foreign-reference": raw([raw_array(7)]),
        "foreign-overlap": raw([raw_array(1, 2), b"\x5f\x11\x01\x00" + b"x" * 256, 1]),
        "foreign-length": raw([b"\x5f\x12\x7f\xff\xff\xff"]),
        "foreign-many-bytes": raw([b"\xaf\x11\x04\x00" + b"\0\x01" * 1024, b"\x4f\x11\x80\x00" + bytes(32768)]),
        "foreign-key-with-nul": raw([b"\xd1\x00\x01\x00\x02", b"\x61\x00\x00", b"\x09"]),
        "foreign-array": plistlib.dumps([1], fmt=FMT_BINARY),
        "nothing-at-all": plistlib.dumps({}, fmt=FMT_BINARY),
        "nothing-of-ours": plistlib.dumps({"NSWindow Frame main": "0 0 1 1"}),
        "damaged-type": plistlib.dumps({ALBUMS: "albums"}),
        "damaged-other": plistlib.dumps({CAMERAS: archive(settings(home)["cameras"]), ALBUMS: b"bplist00"}),
    }
    damaged = {
        "no-archive": plistlib.dumps({"a": 1}, fmt=FMT_BINARY),
        "foreign": b"\xff\xd8\xff\xe0 JPEG",
        "root-out-of-range": whole(["$null"], 7),
        "root-a-text": whole(["$null", "root"]),
        "cycle": objects("productsByName", array(UID(5))),
        "cycle-not-needed": objects("x", "y", array(UID(6))),
        "reference-out-of-range": objects("productsByName", array(UID(99))),
        "class-out-of-range": whole(["$null", {"$class": UID(9)}]),
        "array-without-elements": whole(["$null", {"$class": UID(2)}, {"$classname": "NSArray"}]),
        "keys-without-values": whole(["$null", {"$class": UID(2), "NS.keys": [UID(2)], "NS.objects": []},
                                      {"$classname": "NSDictionary"}]),
        "laughs": objects("cameraCurrentProducts",
                          *[array(*[UID(6 + level)] * 10) for level in range(15)], "ha"),
        "nested": objects("x", *[array(UID(6 + level)) for level in range(deep)], "x"),
        "products-a-list": archive({"productsByName": [1]}),
        "product-a-text": archive({"productsByName": {"Wireless Dermatoscope DX12": "x"}}),
        "chosen-a-number": archive({"cameraCurrentProducts": {"Brimwell Camera": 3}}),
        "values-a-text": with_product(cp="x"),
        "value-a-text": with_product(cp={"hue": {"value": "x"}}),
        "norm-a-list": with_product(currentVideoNorm=[1]),
        "resolution-a-number": with_product(resolutionNames=[1, 2]),
    }
    for name, data in damaged.items():
        broken["damaged-" + name] = plistlib.dumps({CAMERAS: data}, fmt=FMT_BINARY)
    for name, value in {"many-albums": [{"name": "x", "path": f"/{i}"} for i in range(1001)],
                        "path-with-nul": [{"name": "x", "path": "/tmp\0/x"}], "path-a-number": [{"path": 1}],
                        "album-a-text": ["/tmp"]}.items():
        broken["damaged-" + name] = plistlib.dumps({ALBUMS: archive({"albums": value})}, fmt=FMT_BINARY)
    return broken


def main():
    output, home = Path(sys.argv[1]), sys.argv[2]
    (output / "hostile").mkdir(parents=True, exist_ok=True)
    values = settings(home)
    (output / "reasons.json").write_text(json.dumps(REASONS))
    parts = {name: {form: archive(values[name], form) for form in (FMT_BINARY, FMT_XML)}
             for name in ("cameras", "albums")}
    for name, forms in parts.items():
        (output / f"{name}.binary").write_bytes(forms[FMT_BINARY])
        (output / f"{name}.xml").write_bytes(forms[FMT_XML])
    for name, inner, outer in [("binary", FMT_BINARY, FMT_BINARY), ("xml", FMT_BINARY, FMT_XML),
                               ("all-xml", FMT_XML, FMT_XML)]:
        (output / f"defaults.{name}").write_bytes(plistlib.dumps(
            {CAMERAS: parts["cameras"][inner], ALBUMS: parts["albums"][inner], "Other program's": [1.5, True]},
            fmt=outer))
    few = {"cameraCurrentProducts": {"Brimwell Camera": "Digital Camera DX70"},
           "productsByName": {"Digital Camera DX70": product({"hue": 1, "gain": 2}, 1, ["640x480", "800x600"], norm=1)}}
    (output / "defaults.small").write_bytes(plistlib.dumps(
        {CAMERAS: archive(few), ALBUMS: archive({"albums": [{"name": "x", "path": "/tmp"}]})}, fmt=FMT_BINARY))
    for name, data in hostile(home).items():
        (output / "hostile" / name).write_bytes(data)


if __name__ == "__main__":
    main()
