"""Writes a card image as device/softcard/image_writer.h lays it out, byte for byte."""
import json


def quoted(value):
    if isinstance(value, (bytes, bytearray)):
        value = value.hex().upper()
    return json.dumps(value, ensure_ascii=False)


def line(members):
    return "{" + ", ".join(f'"{k}": {quoted(v)}' for k, v in members.items()) + "}"


class Records:
    """The records of a file. `notes`: by record number, counted from 1."""

    def __init__(self, length, count, records=(), fill=None, notes=None):
        self.length, self.count, self.fill = length, count, fill
        self.records = list(records)
        self.notes = notes or {}
        assert len(self.records) <= count <= 254
        for record in self.records:
            assert record is None or len(record) == length, (length, record)

    def lines(self):
        free = self.fill or b"\xff" * self.length
        out = []
        for number, record in enumerate(self.records, 1):
            data = free if record is None else record
            if number in self.notes:
                out.append(line({"hex": data, "note": self.notes[number]}))
            else:
                out.append('""' if data == free else quoted(data))
        while out and out[-1] == '""':
            out.pop()
        return out


class File:
    """An elementary file: records, bytes, or a link to another's."""

    def __init__(self, name, ident, content, *, sfi=None, read="PIN1", update="PIN1", note="",
                 fcp=b"", cyclic=False, invalidated=False):
        self.members = {"name": name, "id": ident}
        if note:
            self.members["note"] = note
        if fcp:
            self.members["fcp"] = fcp
        if sfi is not None:
            self.members["sfi"] = sfi
        self.access = {"read": read, "update": update}
        self.cyclic = cyclic
        self.invalidated = invalidated
        self.content = content

    def rows(self, indent):
        rows = [f'"{k}": {quoted(v)}' for k, v in self.members.items()]
        rows.append('"access": ' + line(self.access))
        if self.invalidated:
            rows.append('"invalidated": true')
        content = self.content
        if isinstance(content, str):
            rows.append('"link": ' + quoted(content))
        elif isinstance(content, (bytes, bytearray)):
            rows += ['"structure": "transparent"', '"data": ' + quoted(content)]
        else:
            kind = "cyclic" if self.cyclic else "linearFixed"
            rows += [f'"structure": "{kind}"', f'"recordLength": {content.length}',
                     f'"recordCount": {content.count}']
            if content.fill:
                rows.append('"fill": ' + quoted(content.fill))
            rows.append('"records": ' + listed(content.lines(), indent + "  "))
        return rows


class Directory:
    """A DF (ident of two bytes), an application (its AID) or the master file (none)."""

    def __init__(self, name, ident, files, note=""):
        self.name, self.ident, self.files, self.note = name, ident, files, note

    def rows(self, indent):
        rows = []
        if self.name:
            rows.append('"name": ' + quoted(self.name))
        if self.ident:
            rows.append(f'"{"id" if len(self.ident) == 2 else "aid"}": ' + quoted(self.ident))
        if self.note:
            rows.append('"note": ' + quoted(self.note))
        inner = indent + "    "
        rows.append('"files": ' + listed([obj(f.rows(inner), inner) for f in self.files],
                                         indent + "  "))
        return rows


def listed(items, indent):
    if not items:
        return "[]"
    return "[\n" + ",\n".join(indent + "  " + item for item in items) + "\n" + indent + "]"


def obj(rows, indent):
    return "{\n" + ",\n".join(indent + "  " + row for row in rows) + "\n" + indent + "}"


def pin(code, enabled, puk=None):
    members = {"code": code, "enabled": enabled, "tries": 3}
    if puk:
        members.update(puk=puk, pukTries=10)
    return line(members)


def image(files, *, atr, note, protocol="T0", classes="both", search_record=True):
    pins = ['"pin1": ' + pin("1234", False, "12345678"),
            '"pin2": ' + pin("5678", True, "87654321"), '"adm": ' + pin("88888888", True)]
    rows = ['"format": "kelpin card image 1"', '"note": ' + quoted(note),
            '"protocol": ' + quoted(protocol), '"classes": ' + quoted(classes),
            '"atr": ' + quoted(atr), '"delayMs": 0',
            '"searchRecord": ' + quoted(search_record), '"pathSelect": true', '"channels": 3',
            '"pins": ' + obj(pins, "  "),
            '"mf": ' + obj(Directory("", b"", files).rows("  "), "  ")]
    return obj(rows, "") + "\n"
