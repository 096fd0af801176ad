"""Bytes of phone-book files: alpha fields, numbers, records (TS 31.102 4.4.2, TS 51.011 10.5)."""

GSM = ("@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x1bÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
       "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà")
ESCAPED = {"^": 0x14, "{": 0x28, "}": 0x29, "\\": 0x2F, "[": 0x3C, "~": 0x3D, "]": 0x3E,
           "|": 0x40, "€": 0x65}
BCD = {**{str(n): n for n in range(10)}, "*": 0xA, "#": 0xB, "p": 0xC}


def gsm(text):
    """One septet a byte; None when a character is in neither table."""
    out = bytearray()
    for c in text:
        if c in ESCAPED:
            out += bytes([0x1B, ESCAPED[c]])
        elif c in GSM and c != "\x1b":
            out.append(GSM.index(c))
        else:
            return None
    return bytes(out)


def ucs2(text):
    return b"\x80" + text.encode("utf-16-be")


def half_page(text, base, head):
    """The body of forms 81 and 82: a GSM septet, or 80 plus the distance from the base."""
    out = bytearray(head)
    for c in text:
        if 0 <= ord(c) - base < 0x80 and gsm(c) is None:
            out.append(0x80 | (ord(c) - base))
        elif gsm(c) is not None and len(gsm(c)) == 1:
            out += gsm(c)
        else:
            return None
    return bytes(out)


def form81(text):
    far = [ord(c) for c in text if gsm(c) is None]
    if not far or max(far) >= 0x8000:
        return None
    return half_page(text, far[0] & ~0x7F, [0x81, len(text), far[0] >> 7])


def form82(text):
    far = [ord(c) for c in text if gsm(c) is None]
    if not far or max(far) > 0xFFFF:
        return None
    return half_page(text, min(far), [0x82, len(text), min(far) >> 8, min(far) & 0xFF])


def alpha(text, size, form=None):
    """The alpha field in the form asked for, else in the shortest that holds the text."""
    if form:
        out = {"gsm": gsm, "80": ucs2, "81": form81, "82": form82}[form](text)
    else:
        out = gsm(text)
        if out is None:
            out = min((o for o in (form81(text), form82(text), ucs2(text)) if o is not None),
                      key=len)
    if out is None or len(out) > size:
        raise ValueError(f"{text!r} does not fit {size} bytes in form {form}")
    return out.ljust(size, b"\xff")


def fits(text, size):
    try:
        alpha(text, size)
    except ValueError:
        return False
    return True


def digits(number):
    """Two a byte, low nibble first, an odd one padded with F."""
    nibbles = [BCD[c] for c in number] + [0xF] * (len(number) % 2)
    return bytes(low | high << 4 for low, high in zip(nibbles[::2], nibbles[1::2]))


class Extensions:
    """The records of an EXT file, given out one after the other."""

    def __init__(self, count, free=b"\x00"):
        self.count = count
        self.fill = free.ljust(13, b"\xff")
        self.records = []

    def add(self, rest):
        """The number of the record that takes these digits; chained when they are many."""
        if not rest:
            return 0xFF
        self.records.append(None)
        own = len(self.records)
        if own > self.count:
            raise ValueError("out of extension records")
        part = digits(rest[:20])
        self.records[own - 1] = (bytes([2, len(part)]) + part.ljust(10, b"\xff") +
                                 bytes([self.add(rest[20:])]))
        return own


def number_part(number, ext):
    """Length, TON/NPI and ten bytes of digits; then the extension record that has the rest."""
    ton = 0x91 if number.startswith("+") else 0x81
    plain = number.lstrip("+")
    if not plain:
        return b"\xff" * 12, 0xFF
    bcd = digits(plain[:20])
    return (bytes([len(bcd) + 1, ton]) + bcd.ljust(10, b"\xff"),
            ext.add(plain[20:]) if len(plain) > 20 else 0xFF)


def adn(name, number, alpha_size, ext, form=None, ccp=0xFF):
    part, extension = number_part(number, ext)
    return alpha(name, alpha_size, form) + part + bytes([ccp, extension])


def anr(number, ext, name_id=0, owner=b""):
    """`owner`: short id of the ADN file and record, for a file of type 2."""
    part, extension = number_part(number, ext)
    return bytes([name_id]) + part + bytes([0xFF, extension]) + owner


def text_record(text, size, owner=b""):
    return alpha(text, size - len(owner)) + owner


def tlv(tag, value):
    return bytes([tag, len(value)]) + value


def dir_record(aid, label, size):
    return tlv(0x61, tlv(0x4F, aid) + tlv(0x50, label.encode("ascii"))).ljust(size, b"\xff")


def bits(services, size):
    """A table of one bit a service (EF_UST)."""
    out = bytearray(size)
    for service in services:
        out[(service - 1) // 8] |= 1 << (service - 1) % 8
    return bytes(out)


def pairs(services, size):
    """A table of two bits a service, allocated and activated (EF_SST)."""
    out = bytearray(size)
    for service in services:
        out[(service - 1) // 4] |= 3 << 2 * ((service - 1) % 4)
    return bytes(out)


def iccid(body):
    """Eighteen digits and the check digit (Luhn)."""
    total = 0
    for place, c in enumerate(reversed(body)):
        value = int(c) * (2 if place % 2 == 0 else 1)
        total += value // 10 + value % 10
    return digits(body + str(-total % 10))


def imsi(number):
    """Length, then parity nibble and digits."""
    return bytes([8]) + digits("9" + number)


def septets(text):
    """The GSM alphabet packed, as messages carry it."""
    value = 0
    for place, septet in enumerate(gsm(text)):
        value |= septet << 7 * place
    count = len(gsm(text))
    return bytes([count]) + value.to_bytes((count * 7 + 7) // 8, "little")


def sms(state, sender, text):
    """A received message (TS 51.011 10.5.3, TS 23.040 9.2.2.1), 2026-03-14 09:26:53 UTC."""
    plain = sender.lstrip("+")
    centre = digits("447700900000")
    body = (bytes([len(centre) + 1, 0x91]) + centre + b"\x04" +
            bytes([len(plain), 0x91 if sender.startswith("+") else 0x81]) + digits(plain) +
            b"\x00\x00" + digits("26031409265300") + septets(text))
    return (bytes([state]) + body).ljust(176, b"\xff")
