#!/usr/bin/env python3
"""Writes the sample cards, res/cards/*.json. The same every time; run from anywhere.

With --check nothing is written: fails on a card that the script would write otherwise.
"""
import pathlib
import sys

import card_damage
import card_people
from card_encoding import (Extensions, adn, alpha, anr, bits, dir_record, fits, iccid, imsi, pairs,
                           sms, text_record, tlv)
from card_json import Directory, File, Records, image

USIM = bytes.fromhex("A0000000871002FF49FF0589")
ISIM = bytes.fromhex("A0000000871004FF49FF0589")
TELECOM, PHONEBOOK, GSM = b"\x7f\x10", b"\x5f\x3a", b"\x7f\x20"
ISSUER = {"update": "ADM"}
PUBLIC = {"read": "ALW", "update": "ADM"}


def answer_to_reset(*interface):
    historical = bytes.fromhex("8031E073FE2113") + b"\x56KELPIN"
    body = bytes([interface[0] | len(historical)]) + bytes(interface[1:]) + historical
    check = 0
    for byte in body:
        check ^= byte
    return b"\x3b" + body + bytes([check])


ATR_T0 = answer_to_reset(0x90, 0x96, 0x80, 0x1F, 0xC7)
ATR_T1 = answer_to_reset(0x90, 0x96, 0x81, 0x31, 0xFE, 0x45)
ATR_SIM = bytes.fromhex("3B16940109") + b"KELP"


def fid(value):
    return value.to_bytes(2, "big")


class Person:
    """What one entry says; `group`: numbers of EF_GAS records."""

    def __init__(self, name="", number="", form=None, **more):
        self.name, self.number, self.form = name, number, form
        self.office, self.other = more.get("office"), more.get("other")
        self.email, self.nickname = more.get("email"), more.get("nickname")
        self.groups, self.hidden = more.get("groups", ()), more.get("hidden", False)


def specials(size):
    """The entries every phone-book reader must get right, for alpha fields of `size` bytes."""
    return [
        Person("Notruf", "112"),
        Person("Voicemail", "*86"),
        Person("IMEI", "*#06#"),
        Person("Konto", "*100#"),
        Person("Call divert", "**21*+4930231250".replace("+", "00") + "#"),
        Person("Conference", "+442079460111p4711p#"),
        Person("Calling card", "+12125550142p0123456789p5566"),  # more than 20 digits
        Person("Two extensions", "4930231251234567890123456789012345678901234"),  # 43 digits
        Person("Exactly twenty", "49302312500123456789"),
        Person("Plus and twenty", "+49302312500123456789"),
        Person("Twenty-one", "493023125001234567891"),
        Person("Name only"),
        Person("", "+493023125999"),
        Person("1", "1"),
        Person("@home {€}", "+447700900321"),
        Person("_x_", "+447700900322"),
        Person("Fills the field whole"[:size].ljust(size, "!"), "+447700900323"),
        Person("Zoë ✆", "+447700900324", "80"),
        Person("🙂🚕", "+447700900325", "80"),
        Person("Ωmega ½", "+447700900326", "80"),
        Person("Пётр", "+447700900327", "82"),
        Person("Άννα Ζ", "+447700900328", "81"),
    ]


def crowd(count, size, skip=0):
    """`count` people whose names fit the alpha field, each with a number."""
    source = card_people.names()
    people = []
    index = 0
    while len(people) < count:
        name = next(source)
        if fits(name, size):
            index += 1
            if index > skip:
                people.append(Person(name, card_people.number(index)))
    return people


def adn_records(entries, count, size, ext):
    """`entries`: by location."""
    records = [None] * max(entries, default=0)
    for location, person in entries.items():
        if person.name or person.number:
            records[location - 1] = adn(person.name, person.number, size, ext, person.form)
    return Records(size + 14, count, records)


def extension_file(name, ident, ext, **more):
    fill = None if ext.fill == b"\xff" * 13 else ext.fill
    return File(name, fid(ident), Records(13, ext.count, ext.records, fill), **more)


def own_numbers(size, *numbers):
    ext = Extensions(0)
    return Records(size + 14, 4, [adn(name, number, size, ext) for name, number in numbers])


def service_numbers(size, ext):
    rows = [("Emergency", "112"), ("Balance", "*100#"), ("Service desk", "+493023125100"),
            ("Flight info", "+442079460700"), ("Directory", "+12125550100"),
            ("Service card", "+4930231251009876543210p1")]
    return Records(size + 14, 10, [adn(name, number, size, ext) for name, number in rows])


def messages(count):
    return Records(176, count, [
        sms(1, "+447700900111", "Dinner at eight? Bring the big pot."),
        sms(3, "+493023125042", "Ihr Rezept liegt bereit. Apotheke Süd"),
        None,
        sms(1, "22044", "Code 4711. Do not tell it to anybody.")],
                   fill=bytes(1).ljust(176, b"\xff"))


class Set:
    """One set of the phone book: its entries by location, and which files it has."""

    def __init__(self, number, entries):
        self.number = number
        self.entries = entries


class Book:
    """DF_PHONEBOOK: sets of 250 and the files they share.

    files: which of IAP ANRA ANRB EMAIL SNE PBC GRP UID AAS GAS CCP1 there are. ANRA is of type 1;
    ANRB, EMAIL and SNE of type 2. shared: the type-2 files all sets have in common.
    """

    ADN, ANRA, ANRB, EMAIL, SNE = 0x4F3A, 0x4F40, 0x4F48, 0x4F50, 0x4F58
    IAP, PBC, GRP, UID = 0x4F60, 0x4F68, 0x4F70, 0x4F78
    EXT1, AAS, GAS, CCP1 = 0x4F80, 0x4F81, 0x4F82, 0x4F83
    PER_SET = 250
    NAMES = {"EMAIL": EMAIL, "ANRB": ANRB, "SNE": SNE}
    TAGS = {"EMAIL": 0xCA, "ANRB": 0xC4, "SNE": 0xC3}

    def __init__(self, sets, alpha_size, files, shared=(), counts=None, ext=20):
        self.sets, self.size, self.shared = sets, alpha_size, shared
        self.has = set(files)
        self.type2 = [name for name in ("EMAIL", "ANRB", "SNE") if name in self.has]
        self.counts = counts or {}
        self.ext = Extensions(ext)
        self.linked = {}  # records of type-2 files by file id
        self.iap = {}

    def link(self, kind, number, record):
        ident = self.NAMES[kind] + (0 if kind in self.shared else number)
        rows = self.linked.setdefault(ident, [])
        if record is None:
            return 0xFF
        rows.append(record)
        return len(rows)

    def records_of(self, person, number, location):
        owner = bytes([number + 1, location])
        return {
            "EMAIL": text_record(person.email, 42, owner) if person.email else None,
            "ANRB": anr(person.other, self.ext, 2, owner) if person.other else None,
            "SNE": text_record(person.nickname, 20, owner) if person.nickname else None,
        }

    def reference(self, number):
        """The record of EF_PBR."""
        def ident(base, own=True):
            return fid(base + (number if own else 0))

        type1 = tlv(0xC0, ident(self.ADN) + bytes([number + 1]))
        for kind, tag, base in (("IAP", 0xC1, self.IAP), ("ANRA", 0xC4, self.ANRA),
                                ("PBC", 0xC5, self.PBC), ("GRP", 0xC6, self.GRP),
                                ("UID", 0xC9, self.UID)):
            if kind in self.has or (kind == "IAP" and self.type2):
                type1 += tlv(tag, ident(base))
        out = tlv(0xA8, type1)
        if self.type2:
            out += tlv(0xA9, b"".join(
                tlv(self.TAGS[kind], ident(self.NAMES[kind], kind not in self.shared))
                for kind in self.type2))
        type3 = tlv(0xC2, fid(self.EXT1))
        for kind, tag, base in (("AAS", 0xC7, self.AAS), ("GAS", 0xC8, self.GAS),
                                ("CCP1", 0xCB, self.CCP1)):
            if kind in self.has:
                type3 += tlv(tag, fid(base))
        return out + tlv(0xAA, type3)

    def set_files(self, part, first_uid):
        number, entries = part.number, part.entries
        adn_file = File(f"EF_ADN {number + 1}", fid(self.ADN + number),
                        adn_records(entries, self.PER_SET, self.size, self.ext), sfi=number + 1)
        table = {"IAP": [], "ANRA": [], "PBC": [], "GRP": [], "UID": []}
        for location in range(1, max(entries, default=0) + 1):
            person = entries.get(location)
            if person is None:
                for rows in table.values():
                    rows.append(None)
                continue
            linked = self.records_of(person, number, location)
            table["IAP"].append(bytes(self.link(kind, number, linked[kind])
                                      for kind in self.type2))
            table["ANRA"].append(anr(person.office, self.ext, 1) if person.office else None)
            table["PBC"].append(b"\x02\x01" if person.hidden else None)
            table["GRP"].append(bytes(person.groups).ljust(3, b"\0"))
            table["UID"].append(first_uid.to_bytes(2, "big"))
            first_uid += 1
        layout = {"IAP": (self.IAP, len(self.type2), None), "ANRA": (self.ANRA, 15, None),
                  "PBC": (self.PBC, 2, b"\0\0"), "GRP": (self.GRP, 3, b"\0\0\0"),
                  "UID": (self.UID, 2, b"\0\0")}
        files = [adn_file]
        for kind, (base, length, fill) in layout.items():
            if kind in self.has or (kind == "IAP" and self.type2):
                files.append(File(f"EF_{kind} {number + 1}", fid(base + number),
                                  Records(length, self.PER_SET, table[kind], fill), sfi=0))
        return files, first_uid

    def directory(self, note=""):
        files = [File("EF_PBR", b"\x4f\x30",
                      Records(100, 4, [self.reference(part.number).ljust(100, b"\xff")
                                       for part in self.sets]), update="ADM")]
        uid = 1
        for part in self.sets:
            more, uid = self.set_files(part, uid)
            files += more
        lengths = {"EMAIL": 42, "ANRB": 17, "SNE": 20}
        for kind in self.type2:
            for part in self.sets[:1] if kind in self.shared else self.sets:
                ident = self.NAMES[kind] + part.number
                files.append(File(f"EF_{kind} {part.number + 1}", fid(ident),
                                  Records(lengths[kind], self.counts.get(kind, 60),
                                          self.linked.get(ident, [])), sfi=0))
        files.append(extension_file("EF_EXT1", self.EXT1, self.ext, sfi=0))
        if "AAS" in self.has:
            rows = ["Office", "Mobile 2", "Home", "Fax", "Büro", "Дача"]
            files.append(File("EF_AAS", fid(self.AAS),
                              Records(14, 10, [alpha(row, 14) for row in rows]), sfi=0))
        if "GAS" in self.has:
            rows = ["Family", "Work", "Friends", "Chorus", "Ärzte"]
            files.append(File("EF_GAS", fid(self.GAS),
                              Records(16, 10, [alpha(row, 16) for row in rows]), sfi=0))
        if "CCP1" in self.has:
            files.append(File("EF_CCP1", fid(self.CCP1),
                              Records(15, 5, [b"\x01\xa0".ljust(15, b"\xff")]), sfi=0))
        if "UID" in self.has:
            last = (uid - 1).to_bytes(2, "big")
            files += [File("EF_PSC", b"\x4f\x22", bytes.fromhex("0A1B2C3D"), sfi=0),
                      File("EF_CC", b"\x4f\x23", last, sfi=0),
                      File("EF_PUID", b"\x4f\x24", last, sfi=0)]
        return Directory("DF_PHONEBOOK", PHONEBOOK, files, note)


def application(services, own, extra=()):
    sdn_ext = Extensions(4)
    files = [
        File("EF_LI", b"\x6f\x05", b"ende", sfi=2, **PUBLIC),
        File("EF_IMSI", b"\x6f\x07", imsi("001010123456789"), sfi=7, **ISSUER),
        File("EF_AD", b"\x6f\xad", bytes.fromhex("00000002"), sfi=3, **PUBLIC),
        File("EF_UST", b"\x6f\x38", bits(services, 17), sfi=4, **ISSUER),
        File("EF_SPN", b"\x6f\x46", b"\x01" + alpha("Kelpin", 16), sfi=0, **PUBLIC),
        File("EF_HIDDENKEY", b"\x6f\xc3", bytes.fromhex("2143FFFF"), sfi=0),
        File("EF_SMS", b"\x6f\x3c", messages(20), sfi=0),
        File("EF_MSISDN", b"\x6f\x40", own, sfi=0),
        File("EF_SDN", b"\x6f\x49", service_numbers(16, sdn_ext), sfi=0, **ISSUER),
        extension_file("EF_EXT3", 0x6F4C, sdn_ext, sfi=0, **ISSUER),
    ]
    return Directory("ADF_USIM", USIM, files + list(extra))


def master(card_number, *directories):
    directory = Records(32, 4, [dir_record(ISIM, "ISIM", 32), None, dir_record(USIM, "USIM", 32)])
    return [File("EF_ICCID", b"\x2f\xe2", iccid(card_number), sfi=2, read="ALW", update="NEV"),
            File("EF_PL", b"\x2f\x05", b"ende", sfi=5, read="ALW"),
            File("EF_DIR", b"\x2f\x00", directory, sfi=30, **PUBLIC), *directories]


def gsm_directory():
    services = pairs([1, 2, 4, 9, 10, 18, 19], 10)
    return Directory("DF_GSM", GSM, [
        File("EF_LP", b"\x6f\x05", bytes([0, 1]), read="ALW"),
        File("EF_IMSI", b"\x6f\x07", imsi("001010123456789"), **ISSUER),
        File("EF_SST", b"\x6f\x38", services, **ISSUER),
        File("EF_AD", b"\x6f\xad", bytes(3), **PUBLIC),
        File("EF_PHASE", b"\x6f\xae", b"\x03", **PUBLIC)])


def telecom(book_directory):
    """DF_TELECOM of a USIM: the phone book, and what an old telephone sees of it."""
    path = "3F00/7F10/5F3A/"
    adf = f"3F00/{USIM.hex().upper()}/"
    return Directory("DF_TELECOM", TELECOM, [
        File("EF_ADN", b"\x6f\x3a", path + "4F3A", sfi=0),
        File("EF_EXT1", b"\x6f\x4a", path + "4F80", sfi=0),
        File("EF_SMS", b"\x6f\x3c", adf + "6F3C", sfi=0),
        File("EF_MSISDN", b"\x6f\x40", adf + "6F40", sfi=0), book_directory])


def usim(card_number, book, note, own=(("My No.", "+491712345678"),), **options):
    files = master(card_number, telecom(book.directory()),
                   application([4, 5, 10, 12, 19, 21], own_numbers(16, *own)),
                   Directory("ADF_ISIM", ISIM, []), gsm_directory())
    return image(files, atr=ATR_T0, note=note, **options)


def spread(people, places):
    return dict(zip(places, people))


def enrich(entries, every):
    """Gives some entries more: every: how often each field occurs."""
    for turn, location in enumerate(sorted(entries)):
        person = entries[location]
        if not person.name or person.office or person.email:
            continue
        word = "".join(c for c in person.name.lower() if c.isascii() and c.isalpha())[:14] or "info"
        if turn % every.get("office", 999) == 1:
            person.office = card_people.number(700 + turn)
        if turn % every.get("other", 999) == 2:
            person.other = card_people.number(900 + turn)
        if turn % every.get("email", 999) == 3:
            person.email = f"{word}@example.org" if turn % 2 else f"{word}.{turn}@example.com"
        if turn % every.get("nickname", 999) == 4:
            person.nickname = person.name.split()[0].rstrip(",")[:8]
        if turn % 5 == 0:
            person.groups = (1 + turn % 5,) if turn % 2 else (1 + turn % 5, 1 + (turn + 2) % 5)
    return entries


def sim_250():
    ext = Extensions(10, b"\xff")
    people = specials(16) + crowd(98, 16)
    places = list(range(1, 101)) + list(range(131, 143)) + [150, 170, 199, 200, 201, 222, 249, 250]
    sdn_ext = Extensions(4, b"\xff")
    book = adn_records(spread(people, places), 250, 16, ext)
    files = [
        File("EF_ICCID", b"\x2f\xe2", iccid("890010123456700250"), read="ALW", update="NEV"),
        Directory("DF_TELECOM", TELECOM, [
            File("EF_ADN", b"\x6f\x3a", book),
            File("EF_SMS", b"\x6f\x3c", messages(10)),
            File("EF_MSISDN", b"\x6f\x40", own_numbers(16, ("Own", "+491712345678"))),
            extension_file("EF_EXT1", 0x6F4A, ext),
            File("EF_SDN", b"\x6f\x49", service_numbers(16, sdn_ext), **ISSUER),
            extension_file("EF_EXT3", 0x6F4C, sdn_ext, **ISSUER)]),
        gsm_directory()]
    return image(files, atr=ATR_SIM, classes="A0",
                 note="A SIM of 250 entries, 120 of them used; knows class A0 alone.")


def usim_sample():
    """The card of the demonstration: what a reader sees first stands in places 1 to 20."""
    mueller = Person("Müller, Jörg", "+491711234567", office="+49301234567",
                     email="joerg@example.org", nickname="Jojo", groups=(1, 2))
    known = {3: Person("Dr. Ødegård", "+4722123456", groups=(5,)), 5: Person("Voicemail", "*86"),
             7: Person("Kowalski, Małgorzata", "+48601234567", email="malgorzata@example.org"),
             9: Person("Σωκράτης", "+302101234567", nickname="Σωκ"),
             12: Person("Ana Sofía Núñez", "+34612345678", other="+34911234567"), 41: mueller,
             42: Person("Müller, Jörg /w", "+49301234567"), 77: Person("Taxi", "+442079460123"),
             118: Person("Иван Петров", "+74951234567", office="+74957654321"),
             250: Person("Notruf", "112")}
    places = [n for n in range(1, 131) if n not in known and n % 17 != 0]
    odd = [p for p in specials(24) if p.name not in ("Notruf", "Voicemail")]
    first = spread(crowd(len(places) - len(odd), 24), places)
    first.update(spread(odd, places[-len(odd):]))
    first.update(known)
    first[20].hidden = first[60].hidden = True
    left = 180 - len(first)
    second = spread(crowd(left, 24, skip=200), list(range(1, left - 4)) + [101, 150, 200, 249, 250])
    assert len(first) + len(second) == 180
    second[8].hidden = True
    every = {"office": 3, "other": 7, "email": 4, "nickname": 6}
    book = Book([Set(0, enrich(first, every)), Set(1, enrich(second, every))], 24,
                ["ANRA", "ANRB", "EMAIL", "SNE", "PBC", "GRP", "UID", "AAS", "GAS", "CCP1"],
                shared=("EMAIL",), counts={"EMAIL": 100, "ANRB": 40, "SNE": 50})
    return usim("890010123456702250", book,
                "A USIM: phone book of 2 sets of 250, 180 used, with every extended file. EF_EMAIL "
                "serves both sets, the other files one each.")


def usim_empty():
    book = Book([Set(0, {}), Set(1, {})], 16, ["ANRA", "EMAIL", "SNE", "PBC", "UID", "AAS", "GAS"])
    return usim("890010123456700000", book, "A USIM with nothing in its phone book.", own=())


def usim_full():
    people = specials(18) + crowd(228, 18)
    entries = enrich(spread(people, range(1, 251)), {"office": 3, "email": 5})
    mails = sum(1 for person in entries.values() if person.email)
    book = Book([Set(0, entries)], 18, ["ANRA", "EMAIL", "PBC", "AAS"], counts={"EMAIL": mails},
                ext=6)
    return usim("890010123456700999", book, "A USIM without a free place: 250 of 250, and no "
                "EF_EMAIL record free either.", classes="first")


def usim_1000():
    people = specials(16) + crowd(878, 16)
    sets = []
    for number, count in enumerate((240, 230, 220, 210)):
        part, people = people[:count], people[count:]
        sets.append(Set(number, enrich(spread(part, range(1, 251)),
                                       {"office": 4, "email": 6})))
    book = Book(sets, 16, ["ANRA", "EMAIL", "PBC", "AAS"], counts={"EMAIL": 60})
    return usim("890010123456701000", book, "A USIM of 4 sets of 250, 900 used.")


def usim_local():
    people = specials(15) + crowd(59, 15)
    entries = enrich(spread(people, list(range(1, 61)) + list(range(80, 101))), {"office": 4})
    book = Book([Set(0, entries)], 15, ["ANRA", "PBC", "UID"])
    files = master("890010123456700077",
                   application([1, 4, 5, 10, 12, 19, 21],
                               own_numbers(16, ("Own", "+491712345678")), [book.directory()]))
    return image(files, atr=ATR_T1, note="A USIM with its phone book under the application alone; "
                 "speaks T=1 and class 00, and has no SEARCH RECORD.", protocol="T1", classes="00",
                 search_record=False)


def damaged():
    return card_damage.build(sys.modules[__name__])


CARDS = {"sim-250": sim_250, "usim": usim_sample, "usim-empty": usim_empty,
         "usim-full": usim_full, "usim-1000": usim_1000, "usim-local": usim_local,
         "damaged": damaged}


def main():
    folder = pathlib.Path(__file__).resolve().parent.parent / "res" / "cards"
    differing = []
    for name, make in CARDS.items():
        path = folder / (name + ".json")
        text = make()
        if "--check" not in sys.argv[1:]:
            folder.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
            print(f"{path.name}: {len(text.encode())} bytes")
        elif not path.exists() or path.read_text(encoding="utf-8") != text:
            differing.append(path.name)
    for name in differing:
        print(f"{name}: not what the script writes; run scripts/make_card_images.py")
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
